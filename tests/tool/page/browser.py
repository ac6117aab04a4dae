"""A headless Chromium, driven over a pipe by its own DevTools protocol."""

import base64
import json
import os
import pathlib
import select
import subprocess
import tempfile
import time

PROGRAM = "chromium-headless-shell"


class BrowserError(Exception):
    """What the browser refused, or a condition that did not come true in time."""


class Browser:
    """One browser with one tab. Use it in a with statement: it ends with that."""

    def __init__(self, patience=120):
        self.patience = patience  # seconds for any one answer
        self.profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        to_browser, self.writer = os.pipe()
        self.reader, from_browser = os.pipe()

        def give_pipes():  # the browser reads from 3 and writes to 4
            reading, writing = os.dup(to_browser), os.dup(from_browser)
            os.dup2(reading, 3)
            os.dup2(writing, 4)

        # Root cannot have Chromium's sandbox; the page comes from a file of the test's own.
        self.process = subprocess.Popen(
            [PROGRAM, "--remote-debugging-pipe", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--hide-scrollbars",
             "--no-first-run", "--disable-background-networking", f"--user-data-dir={self.profile.name}", "about:blank"],
            preexec_fn=give_pipes, close_fds=False, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        os.close(to_browser)
        os.close(from_browser)
        self.unread, self.number, self.session = b"", 0, None
        self.messages = []  # what the page wrote to its console, exceptions and violations of its policy among them
        self.events = []
        tab = self.call("Target.createTarget", url="about:blank")["targetId"]
        self.session = self.call("Target.attachToTarget", targetId=tab, flatten=True)["sessionId"]
        for domain in ("Page", "Runtime", "Log", "Network"):
            self.call(domain + ".enable")

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self.session = None
            self.call("Browser.close")
            self.process.wait(self.patience)
        except (BrowserError, OSError, subprocess.TimeoutExpired):
            self.process.kill()
            self.process.wait()
        os.close(self.reader)
        os.close(self.writer)
        self.profile.cleanup()

    def read(self, until):
        while b"\0" not in self.unread:
            ready, _, _ = select.select([self.reader], [], [], max(0, until - time.monotonic()))
            chunk = os.read(self.reader, 1 << 20) if ready else b""
            if not chunk:
                raise BrowserError("the browser says nothing any more")
            self.unread += chunk
        message, _, self.unread = self.unread.partition(b"\0")
        return json.loads(message)

    def call(self, method, **parameters):
        """One command of the protocol. Returns its result."""
        self.number += 1
        message = {"id": self.number, "method": method, "params": parameters}
        if self.session:
            message["sessionId"] = self.session
        os.write(self.writer, json.dumps(message).encode() + b"\0")
        until = time.monotonic() + self.patience
        while True:
            answer = self.read(until)
            if answer.get("id") == self.number:
                if "error" in answer:
                    raise BrowserError(f"{method}: {answer['error']['message']}")
                return answer["result"]
            self.note(answer)

    def note(self, event):
        kind, details = event.get("method"), event.get("params", {})
        self.events.append(event)
        if kind == "Runtime.consoleAPICalled":
            self.messages.append(" ".join(str(argument.get("value", argument.get("description"))) for argument in details["args"]))
        elif kind == "Runtime.exceptionThrown":
            self.messages.append(details["exceptionDetails"].get("exception", {}).get("description", str(details)))
        elif kind == "Log.entryAdded":
            self.messages.append(details["entry"]["text"])
        elif kind == "Network.requestWillBeSent" and not details["request"]["url"].startswith(("file:", "data:", "about:")):
            self.messages.append("request: " + details["request"]["url"])

    def run(self, expression):
        """The value of an expression in the page; a promise's, once it has one."""
        result = self.call("Runtime.evaluate", expression=expression, awaitPromise=True, returnByValue=True)
        if "exceptionDetails" in result:
            raise BrowserError(result["exceptionDetails"].get("exception", {}).get("description", str(result)))
        return result["result"].get("value")

    def wait_for(self, expression, seconds=30):
        until = time.monotonic() + seconds
        while not self.run(expression):
            if time.monotonic() > until:
                raise BrowserError("never came true: " + expression)
            time.sleep(.02)

    def open(self, path, anchor=""):
        """Opens a file. Returns the seconds until it was there and idle."""
        begun = time.monotonic()
        self.call("Page.navigate", url="about:blank")
        self.call("Page.navigate", url=pathlib.Path(path).resolve().as_uri() + anchor)
        self.wait_for("location.protocol === 'file:' && document.readyState === 'complete'", self.patience)
        self.run("1")
        return time.monotonic() - begun

    def press(self, key, **more):
        """A key that is pressed and let go, as a user does."""
        codes = {"Enter": (13, "\r"), "Tab": (9, ""), " ": (32, " "), "ArrowDown": (40, ""), "ArrowUp": (38, "")}
        code, text = codes[key]
        self.call("Input.dispatchKeyEvent", type="keyDown" if text else "rawKeyDown", key=key, code={" ": "Space"}.get(key, key),
                  windowsVirtualKeyCode=code, text=text, **more)
        self.call("Input.dispatchKeyEvent", type="keyUp", key=key, code={" ": "Space"}.get(key, key), windowsVirtualKeyCode=code, **more)

    def type(self, text):
        self.call("Input.insertText", text=text)

    def click(self, selector):
        place = self.run(f"(() => {{ const e = document.querySelector({json.dumps(selector)}); e.scrollIntoView({{block: 'center', behavior: 'instant'}}); "
                         "const r = e.getClientRects()[0]; return [r.x + r.width / 2, r.y + r.height / 2]; })()")
        for kind in ("mousePressed", "mouseReleased"):
            self.call("Input.dispatchMouseEvent", type=kind, x=place[0], y=place[1], button="left", clickCount=1)

    def show_as(self, width=1200, height=900, dark=False, scale=1):
        self.call("Emulation.setDeviceMetricsOverride", width=width, height=height, deviceScaleFactor=scale, mobile=width < 600)
        self.call("Emulation.setEmulatedMedia", features=[{"name": "prefers-color-scheme", "value": "dark" if dark else "light"}])

    def screenshot(self, path, whole=True):
        shot = self.call("Page.captureScreenshot", format="png", captureBeyondViewport=whole)
        pathlib.Path(path).write_bytes(base64.b64decode(shot["data"]))

    def pdf(self, path):
        printed = self.call("Page.printToPDF", preferCSSPageSize=True, printBackground=False)
        pathlib.Path(path).write_bytes(base64.b64decode(printed["data"]))
