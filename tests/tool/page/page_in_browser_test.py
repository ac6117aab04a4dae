"""Tests of `vantlo page` in a real browser. Run by in_browser."""

import json
import os
import pathlib
import re
import subprocess
import tempfile
import time
import unittest

from browser import Browser, BrowserError

PROGRAM = os.environ["VANTLO_PROGRAM"]
ROOT = pathlib.Path(__file__).resolve().parents[3]

# What 50 000 rows may take in seconds. Measured: 0.7 to open, 0.1 to sort, 0.06 to search; a busy machine takes longer.
MOST_TO_OPEN = 4.0
MOST_TO_ANSWER = 1.0

HOSTILE = {
    "<script>window.evil = 1</script>": "<script>window.evil = 1</script>",
    "<img src=x onerror='window.evil = 2'>": "<img src=x onerror='window.evil = 2'>",
    "</script><script>window.evil = 3</script>": "</script><script>window.evil = 3</script>",
    "a\"b'c&amp;<!--": "a\"b'c&amp;<!--",
    "{{data}} $& \\": "{{data}} $& \\",
    "turned \u202egnp.exe": "turned \\u202Egnp.exe",
    "bell \u0007 escape \u001b[2J line \u2028 end": "bell \\u0007 escape \\u001B[2J line \\u2028 end",
    "long " + "x" * 3000: "long " + "x" * 3000,
}

# Each text of the page with its contrast: what stands on which ground, by WCAG's formula.
CONTRASTS = """(() => {
  const channel = (value) => (value /= 255) <= .03928 ? value / 12.92 : ((value + .055) / 1.055) ** 2.4;
  const parse = (colour) => { const parts = colour.match(/[\\d.]+/g).map(Number); return [...parts, 1].slice(0, 4); };
  const light = ([r, g, b]) => .2126 * channel(r) + .7152 * channel(g) + .0722 * channel(b);
  const over = (top, ground) => top.slice(0, 3).map((part, i) => part * top[3] + ground[i] * (1 - top[3]));
  const groundOf = (element) => {
    for (let at = element; at; at = at.parentElement) {
      const colour = parse(getComputedStyle(at).backgroundColor);
      if (colour[3] === 1) return colour;
    }
    return [255, 255, 255, 1];
  };
  const found = [];
  for (const element of document.querySelectorAll("body *")) {
    const hasText = [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim());
    if (!hasText || !element.getClientRects().length || element.disabled || element.closest("option,script,.skip")) continue;
    const ground = groundOf(element);
    const [a, b] = [light(over(parse(getComputedStyle(element).color), ground)), light(ground)];
    const ratio = (Math.max(a, b) + .05) / (Math.min(a, b) + .05);
    found.push([Math.round(ratio * 100) / 100, element.tagName + "." + element.className + " " + element.textContent.slice(0, 30)]);
  }
  return found;
})()"""

# What a reader with a screen reader stumbles over.
FAULTS = """(() => {
  const faults = [];
  const shown = (element) => element.getClientRects().length > 0;
  const all = (selector) => [...document.querySelectorAll(selector)];
  const ids = all("[id]").map((element) => element.id);
  if (new Set(ids).size !== ids.length) faults.push("an id is there twice");
  for (const attribute of ["aria-labelledby", "aria-controls", "for"]) {
    for (const element of all("[" + attribute + "]")) {
      for (const id of element.getAttribute(attribute).split(" ")) if (!document.getElementById(id)) faults.push(attribute + " " + id);
    }
  }
  if (all("h1").filter(shown).length !== 1 || all("main").length !== 1) faults.push("not one h1 and one main");
  let level = 0;
  for (const heading of all("h1,h2,h3,h4").filter(shown)) {
    const own = Number(heading.tagName[1]);
    if (own > level + 1) faults.push("heading " + heading.textContent);
    level = own;
  }
  for (const table of all("table").filter(shown)) {
    if (!table.caption || !table.caption.textContent) faults.push("table without a caption");
    for (const head of table.querySelectorAll("th")) if (!head.scope) faults.push("th without scope " + head.textContent);
    for (const row of table.tBodies[0].rows) if (row.cells.length !== table.tHead.rows[0].cells.length && !row.querySelector("[colspan]")) faults.push("ragged row");
  }
  for (const element of all(".scroll").filter(shown)) if (element.tabIndex !== 0 || !element.getAttribute("role")) faults.push("scroll");
  if (!document.title || !document.documentElement.lang) faults.push("title or lang");
  return faults;
})()"""


def vantlo(folder, *arguments):
    return subprocess.run([PROGRAM, *arguments], cwd=folder, capture_output=True, text=True, check=True,
                          env=os.environ | {"LC_ALL": "C.UTF-8", "TZ": "UTC"}).stdout


def sqlite(folder, statements):
    return subprocess.run(["sqlite3", "vantlo.db"], input=statements, cwd=folder, capture_output=True, text=True, check=True).stdout


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        scratch = tempfile.TemporaryDirectory()
        cls.addClassCleanup(scratch.cleanup)
        cls.folder = pathlib.Path(scratch.name)
        vantlo(cls.folder, "init")
        weeks = sorted(str(path) for path in (ROOT / "examples/shop").glob("week*.json"))
        vantlo(cls.folder, "save", str(ROOT / "examples/shop/master.json"), *weeks)
        vantlo(cls.folder, "--lang", "en", "page", "stock.html")
        vantlo(cls.folder, "--lang", "zh", "page", "库存.html")
        cls.rows = int(sqlite(cls.folder, "select count(*) from Inventory"))
        cls.browser = cls.enterClassContext(Browser()) if hasattr(cls, "enterClassContext") else Browser().__enter__()
        if not hasattr(cls, "enterClassContext"):
            cls.addClassCleanup(cls.browser.__exit__)

    def setUp(self):
        self.browser.messages.clear()
        self.browser.show_as()
        self.browser.open(self.folder / "stock.html")

    def tearDown(self):
        self.assertEqual(self.browser.messages, [])  # no error, no violation of the policy, no request

    def run_js(self, expression):
        return self.browser.run(expression)

    def count(self):
        return self.run_js("document.querySelector('#ledger-count').textContent")

    def column(self, number):
        return self.run_js(f"[...document.querySelectorAll('#ledger-table tbody tr')].map((row) => row.cells[{number}].textContent.trim())")

    def set_filter(self, name, value):
        self.run_js(f"""(() => {{ const field = document.getElementById({json.dumps(name)});
            if (field.type === 'checkbox') field.checked = {json.dumps(value)}; else if (field.options)
                field.value = [...field.options].find((option) => option.text.startsWith({json.dumps(value)})).value;
            else field.value = {json.dumps(value)};
            field.dispatchEvent(new Event('input', {{bubbles: true}})); }})()""")

    def test_the_summary_says_what_the_ledger_holds_and_what_verify_said(self):
        shown = dict(self.run_js("[...document.querySelectorAll('#summary dl div')].map((e) => [e.querySelector('dt').textContent, e.querySelector('dd').textContent])"))
        expected = sqlite(self.folder, "select count(distinct GId), count(distinct WID), count(*), sum(CurrentQty < 0) from Inventory").strip().split("|")
        self.assertEqual([shown[name] for name in ("Goods", "Warehouses", "Ledger rows", "Below zero")], expected)
        self.assertEqual(shown["Bills"], "125")
        self.assertIn("The ledger agrees with the bills: 125 bills", self.run_js("document.querySelector('.verdict.good').textContent"))
        made = self.run_js("document.querySelector('.made').textContent")
        self.assertRegex(made, r"^Made on \d{4}-\d\d-\d\d \d\d:\d\d:\d\d \(UTC\+00:00\) by vantlo \d+\.\d+\.\d+ from vantlo\.db \(SQLite ")
        self.assertEqual(len(self.run_js("[...document.querySelectorAll('#attention tbody tr')].map((e) => e.textContent)")), int(expected[3]))

    def test_the_ledger_is_sorted_by_mouse_and_by_keyboard(self):
        self.browser.click("#ledger-table th:last-child")
        ascending = [float(text.replace(",", "")) for text in self.column(9)]
        lowest = [float(text) for text in sqlite(self.folder, "select CurrentQty from Inventory order by 1 limit 50").split()]
        self.assertEqual(ascending, lowest)
        self.assertEqual(self.run_js("document.querySelector('#ledger-table th:last-child').ariaSort"), "ascending")
        self.run_js("document.querySelector('#ledger-table th:last-child').focus()")
        self.browser.press("Enter")
        self.assertEqual(self.run_js("document.querySelector('#ledger-table th:last-child').ariaSort"), "descending")
        highest = [float(text) for text in sqlite(self.folder, "select CurrentQty from Inventory order by 1 desc limit 50").split()]
        self.assertEqual([float(text.replace(",", "")) for text in self.column(9)], highest)
        self.run_js("document.querySelector('#ledger-table th:nth-child(2)').focus()")
        self.browser.press(" ")
        self.assertEqual(self.run_js("document.querySelector('#ledger-table th:nth-child(2)').ariaSort"), "ascending")
        self.assertEqual(self.run_js("document.querySelectorAll('th[aria-sort]').length"), 1)

    def test_search_and_filters_leave_the_rows_that_match_and_add_up_within_one_unit(self):
        self.assertTrue(self.count().startswith(f"{self.rows} rows · different units are not added up"), self.count())
        self.assertEqual(self.run_js("document.querySelectorAll('#ledger-table tfoot tr').length"), 0)
        for name, value, condition in [("filter-warehouse", "W03", "WID = 'W03'"), ("filter-class", "A01", "Class = 'A01'"),
                                       ("filter-status", "2", "Status = 2"), ("filter-negative", True, "CurrentQty < 0"),
                                       ("filter-nonzero", True, "CurrentQty <> 0"), ("filter-goods", "g00", "GId like 'G00%'"),
                                       ("search", "Ｇ００１ w01", "GId = 'G001' and WID = 'W01'")]:
            with self.subTest(name):
                self.set_filter(name, value)
                count = sqlite(self.folder, f"select count(*) from Inventory where {condition}").strip()
                self.assertTrue(self.count().startswith(f"{count} of {self.rows} rows"), (count, self.count()))
                self.browser.click("#filters button[type=reset]")
                self.browser.wait_for(f"document.querySelector('#ledger-count').textContent.startsWith('{self.rows} rows')")
        self.set_filter("filter-unit", "台")
        expected = sqlite(self.folder, "select count(*), sum(InQty), sum(OutQty), sum(CurrentQty) from Inventory, Goods where GId = ID and Goods.Unit = '台'")
        count, *sums = expected.strip().split("|")
        total = self.run_js("[...document.querySelectorAll('#ledger-table tfoot tr')].map((row) => [...row.cells].map((cell) => cell.textContent.trim()))")
        self.assertEqual([total[0][0], *total[0][-3:]], [f"Total in 台 ({count} rows)", *[f"{int(float(number)):,}" for number in sums]])
        self.assertEqual(len(total), 1)

    def test_a_card_is_behind_its_row_and_the_way_back_leads_to_where_one_was(self):
        self.set_filter("search", "G001 W01")
        rows = self.column(9)
        self.run_js("document.querySelector('#ledger-table tbody tr:nth-child(2) a').scrollIntoView({behavior: 'instant'})")
        place = self.run_js("scrollY")
        self.browser.click("#ledger-table tbody tr:nth-child(2) a")
        self.browser.wait_for("!document.querySelector('#card').hidden")
        self.assertEqual(self.run_js("document.activeElement.id"), "card-heading")
        lines = self.run_js("[...document.querySelectorAll('#card-table tbody tr')].map((row) => [...row.cells].map((cell) => cell.textContent.trim()))")
        key = "GId = 'G001' and WID = 'W01' and Model1 = '月光白' and Model2 = '128G' and Status = 0"
        self.assertIn("G001 晨星 A5 手机 月光白 128G, W01 主仓库, status 0", self.run_js("document.querySelector('#card-heading').textContent"))
        expected = sqlite(self.folder, f"select BillId, InChange, OutChange, CurrentAfter from StockMovement where {key} order by MovementNo")
        self.assertEqual([[line[2], float(line[4] or 0), float(line[5] or 0), float(line[6])] for line in lines],
                         [[row.split("|")[0], *map(float, row.split("|")[1:])] for row in expected.split()])
        self.assertEqual(lines[-1][6], rows[1])
        self.assertTrue(self.run_js("document.querySelector('#overview').hidden"))
        self.assertEqual(self.run_js(FAULTS), [])
        self.browser.click("#card-back")
        self.browser.wait_for("document.querySelector('#card').hidden")
        self.assertEqual(self.run_js("document.activeElement.closest('tr').cells[2].textContent"), "月光白")
        self.assertEqual(self.column(9), rows)
        self.assertLess(abs(self.run_js("scrollY") - place), 500)
        # A card has an address of its own.
        self.browser.open(self.folder / "stock.html", "#card-1")
        self.assertFalse(self.run_js("document.querySelector('#card').hidden"))

    def test_everything_is_reached_with_the_keyboard_alone(self):
        self.browser.press("Tab")
        self.assertEqual(self.run_js("document.activeElement.className"), "skip")
        self.browser.press("Enter")
        self.assertEqual(self.run_js("location.hash"), "#ledger")
        seen = []
        for _ in range(40):
            self.browser.press("Tab")
            seen.append(self.run_js("(() => { const e = document.activeElement; const o = getComputedStyle(e); return [e.id || e.closest('[id]').id, e.tagName, o.outlineStyle !== 'none']; })()"))
            if seen[-1][1] == "A":
                break
        reached = [name for name, _, _ in seen]
        for name in ("search", "filter-warehouse", "filter-goods", "filter-class", "filter-unit", "filter-status", "filter-negative", "filter-nonzero"):
            self.assertIn(name, reached)
        self.assertEqual(sum(tag == "TH" for _, tag, _ in seen), 10)
        self.assertTrue(all(outlined for _, _, outlined in seen), seen)
        self.browser.press("Enter")
        self.browser.wait_for("!document.querySelector('#card').hidden")
        self.browser.press("Tab")  # past the heading, which has the focus
        self.run_js("document.querySelector('#card-back').focus()")
        self.browser.press("Enter")
        self.browser.wait_for("document.querySelector('#card').hidden")

    def test_every_text_has_the_contrast_of_level_AA_in_light_and_dark(self):
        grounds = set()
        for dark in (False, True):
            for anchor in ("", "#card-1"):
                with self.subTest(dark=dark, anchor=anchor):
                    self.browser.show_as(dark=dark)
                    self.browser.open(self.folder / "stock.html", anchor)
                    self.run_js("document.querySelectorAll('details').forEach((details) => (details.open = true))")
                    contrasts = self.run_js(CONTRASTS)
                    self.assertGreater(len(contrasts), 40)
                    self.assertEqual([found for found in contrasts if found[0] < 4.5], [])
            grounds.add(self.run_js("getComputedStyle(document.documentElement).backgroundColor"))
        self.assertEqual(len(grounds), 2)

    def test_a_screen_reader_finds_names_headings_and_tables_in_order(self):
        for file in ("stock.html", "库存.html"):
            self.browser.open(self.folder / file)
            self.assertEqual(self.run_js(FAULTS), [])
            nodes = self.browser.call("Accessibility.getFullAXTree")["nodes"]
            spoken = {"button", "link", "textbox", "searchbox", "combobox", "checkbox", "columnheader", "table", "region", "img", "image", "heading", "navigation", "search"}
            roles = [node["role"]["value"] for node in nodes if not node["ignored"]]
            nameless = [node["role"]["value"] for node in nodes if not node["ignored"] and node["role"]["value"] in spoken and not node.get("name", {}).get("value")]
            self.assertEqual(nameless, [])
            self.assertGreaterEqual(roles.count("columnheader"), 10)
            self.assertIn("status", roles)

    def test_the_charts_are_over_true_time_and_have_colours_of_their_own_in_the_dark(self):
        points = self.run_js("(() => { const chart = Chart.getChart('stock-chart'); return [chart.options.scales.x.type, chart.data.datasets[0].stepped, chart.data.datasets[0].data.map((p) => [p.x, p.y])]; })()")
        self.assertEqual(points[:2], ["linear", "before"])
        self.assertEqual(points[2], sorted(points[2]))
        unit_total = float(sqlite(self.folder, "select sum(CurrentQty) from Inventory, Goods where GId = ID and Goods.Unit = '台'"))
        self.run_js("(() => { const s = document.querySelector('#chart-unit'); s.value = [...s.options].find((o) => o.text === '台').value; s.dispatchEvent(new Event('change')); })()")
        self.assertEqual(self.run_js("Chart.getChart('stock-chart').data.datasets[0].data.at(-1).y"), unit_total)
        light = self.run_js("Chart.getChart('stock-chart').data.datasets[0].borderColor")
        self.browser.show_as(dark=True)
        self.browser.wait_for(f"Chart.getChart('stock-chart').data.datasets[0].borderColor !== {json.dumps(light)}")

    def test_what_is_printed_has_every_row_and_is_light(self):
        self.browser.show_as(dark=True)
        self.browser.open(self.folder / "stock.html")
        self.browser.pdf(self.folder / "stock.pdf")
        text = subprocess.run(["pdftotext", "-layout", "stock.pdf", "-"], cwd=self.folder, capture_output=True, text=True, check=True).stdout
        keys = [line.split("|") for line in sqlite(self.folder, "select WID, GId from Inventory").split()]
        printed = re.findall(r"(W0\d) .*?(G0\d\d)", text[text.rindex("Ledger"):])
        self.assertEqual(sorted(map(tuple, keys)), sorted(printed))
        self.assertNotIn("Clear", text)
        self.browser.wait_for("!document.documentElement.classList.contains('printing')")
        self.assertEqual(len(self.column(0)), 50)

    def test_without_scripts_the_whole_ledger_is_there_to_be_read(self):
        self.browser.call("Emulation.setScriptExecutionDisabled", value=True)
        try:
            self.browser.call("Page.navigate", url=(self.folder / "库存.html").as_uri())
            time.sleep(.5)
            text = self.run_js("document.body.innerText")
            self.assertIn("未启用脚本", text)
            self.assertEqual(self.run_js("document.querySelectorAll('noscript tbody tr').length"), self.rows)
            self.assertIn("G026 钢化膜", text)
            self.assertEqual(self.run_js("document.querySelector('#ledger-view').hidden"), True)
        finally:
            self.browser.call("Emulation.setScriptExecutionDisabled", value=False)

    def test_both_languages_have_all_texts(self):
        texts = {}
        for language, file in (("en", "stock.html"), ("zh", "库存.html")):
            self.browser.open(self.folder / file)
            self.assertEqual(self.run_js("document.documentElement.lang"), language)
            texts[language] = self.run_js("[...document.querySelectorAll('h1,h2,h3,label,caption,thead th,dt,button,nav a,.skip,footer p')].map((e) => e.firstChild?.data?.trim() ?? '')")
        self.assertEqual(len(texts["en"]), len(texts["zh"]))
        for english, chinese in zip(texts["en"], texts["zh"]):
            if english:
                self.assertNotRegex(english, "[\u4e00-\u9fff]")
                self.assertRegex(chinese, "[\u4e00-\u9fff]")

    def test_the_policy_lets_no_other_script_or_style_in(self):
        self.run_js("(() => { const script = document.createElement('script'); script.textContent = 'window.evil = 1'; document.body.append(script); })()")
        self.run_js("document.body.insertAdjacentHTML('beforeend', '<p id=red style=\"color: red\" onclick=\"window.evil = 2\">x</p>')")
        self.run_js("document.querySelector('#red').click()")
        self.assertIsNone(self.run_js("window.evil ?? null"))
        self.assertNotEqual(self.run_js("getComputedStyle(document.querySelector('#red')).color"), "rgb(255, 0, 0)")
        self.assertGreaterEqual(len(self.browser.messages), 2)
        self.browser.messages.clear()


class OtherShops(unittest.TestCase):
    """Pages of shops made for one test each."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory()
        self.addCleanup(scratch.cleanup)
        self.folder = pathlib.Path(scratch.name)
        vantlo(self.folder, "init")
        self.browser = Browser()
        self.addCleanup(self.browser.__exit__)
        self.browser.show_as()

    def open(self, anchor=""):
        vantlo(self.folder, "--lang", "en", "page", "stock.html")
        return self.browser.open(self.folder / "stock.html", anchor)

    def test_hostile_names_are_harmless_and_seen(self):
        quoted = lambda text: "'" + text.replace("'", "''") + "'"
        for number, name in enumerate(HOSTILE):
            sqlite(self.folder, f"insert into Warehouse (ID, Name) values ({quoted('W' + name)}, {quoted(name)});"
                                f"insert into Goods (ID, Name, Unit) values ({quoted('G' + name)}, {quoted(name)}, {quoted(name)});"
                                f"insert into Inventory values ({quoted('W' + name)}, {quoted('G' + name)}, {quoted(name)}, '', 0, {quoted(name)}, '', 1, {number + 2}, {-number - 1}, '')")
        for anchor in ("", "#card-0", "#card-3"):
            self.open(anchor)
            text = self.browser.run("document.body.textContent")
            self.assertEqual(self.browser.run("document.querySelectorAll('script').length"), 5)
            self.assertEqual(self.browser.run("document.querySelectorAll('img, main [onerror]').length"), 0)
            self.assertIsNone(self.browser.run("window.evil ?? null"))
        self.browser.run("document.querySelector('#card-back').click()")
        for seen in HOSTILE.values():
            with self.subTest(seen[:40]):
                cells = self.browser.run("[...document.querySelectorAll('#ledger-table tbody td:nth-child(3)')].map((cell) => cell.textContent)")
                self.assertIn(seen, cells)
                self.assertIn(seen, text)
                self.browser.run(f"(() => {{ const f = document.querySelector('#search'); f.value = {json.dumps(seen.split()[-1][:200])}; f.dispatchEvent(new Event('input', {{bubbles: true}})); }})()")
                self.assertIn(seen, self.browser.run("[...document.querySelectorAll('#ledger-table tbody td:nth-child(3)')].map((cell) => cell.textContent)"))
                self.browser.run("document.querySelector('#filters').reset()")
                self.browser.wait_for(f"document.querySelectorAll('#ledger-table tbody tr').length === {len(HOSTILE)}")
        for width in (1200, 390):
            self.browser.show_as(width)
            self.assertLessEqual(self.browser.run("document.documentElement.scrollWidth"), width)
        self.assertEqual(self.browser.messages, [])

    def test_fifty_thousand_rows_open_sort_and_filter_quickly(self):
        sqlite(self.folder, """
            insert into Warehouse (ID, Name) select 'W' || value, 'warehouse ' || value from generate_series(1, 20);
            insert into Goods (ID, Name, Unit) select 'G' || value, 'goods ' || value, 'box' from generate_series(1, 2500);
            insert into Inventory select 'W' || (value % 20 + 1), 'G' || (value / 20 + 1), 'model', '', 0, 'C' || value % 7, '', value % 1000, value % 999,
                value % 1000 - value % 999, '' from generate_series(0, 49999);""")
        seconds = {"open": min(self.open(), self.browser.open(self.folder / "stock.html"))}
        self.assertTrue(self.browser.run("document.querySelector('#ledger-count').textContent").startswith("50,000 rows"))
        timed = "(() => {{ const begun = performance.now(); {}; document.body.getBoundingClientRect(); return (performance.now() - begun) / 1000; }})()"
        seconds["sort by name"] = self.browser.run(timed.format("document.querySelector('#ledger-table th:nth-child(2)').click()"))
        seconds["sort by quantity"] = self.browser.run(timed.format("document.querySelector('#ledger-table th:last-child').click()"))
        for word in ("g2500", "w7"):
            seconds["search " + word] = self.browser.run(timed.format(
                f"const f = document.querySelector('#search'); f.value = '{word}'; f.dispatchEvent(new Event('input', {{bubbles: true}}))"))
        self.assertTrue(self.browser.run("document.querySelector('#ledger-count').textContent").startswith("2,500 of 50,000 rows"))
        print(" ".join(f"{name}: {took:.2f} s" for name, took in seconds.items()))
        self.assertLess(seconds.pop("open"), MOST_TO_OPEN)
        for name, took in seconds.items():
            self.assertLess(took, MOST_TO_ANSWER, name)
        self.assertEqual(self.browser.messages, [])

    def test_a_card_is_printed_with_all_its_movements(self):
        sqlite(self.folder, "insert into Inventory values ('W1', 'G1', '', '', 0, '', '', 0, 0, 0, '');" +
               "update Inventory set InQty = InQty + 1, CurrentQty = CurrentQty + 1;" * 120)
        self.open("#card-0")
        self.assertEqual(self.browser.run("document.querySelectorAll('#card-table tbody tr').length"), 50)
        self.assertIn("1–50 of 121", self.browser.run("document.querySelector('#card-pager').textContent"))
        self.browser.click("#card-pager button:last-of-type")
        self.assertEqual(self.browser.run("document.querySelector('#card-table tbody td:nth-child(7)').textContent"), "50")
        self.browser.pdf(self.folder / "card.pdf")
        text = subprocess.run(["pdftotext", "-layout", "card.pdf", "-"], cwd=self.folder, capture_output=True, text=True, check=True).stdout
        self.assertEqual(text.count("without a bill (update)"), 120)
        self.assertNotIn("Needs attention", text)
        self.browser.wait_for("document.querySelectorAll('#card-table tbody tr').length === 50")
        self.assertEqual(self.browser.messages, [])

    def test_what_runs_low_is_shown_with_what_is_missing(self):
        sqlite(self.folder, "insert into Goods (ID, Name, Unit) values ('G1', 'screen', 'pc'), ('G2', 'cable', 'm');"
                            "insert into Inventory values ('W1', 'G1', '', '', 0, '', '', 3, 0, 3, ''), ('W1', 'G2', '', '', 0, '', '', 3, 0, 3, '')")
        self.open()
        self.assertIn("No minimum stock is set", self.browser.run("document.querySelector('#attention').textContent"))
        vantlo(self.folder, "minimum", "G2", "2")
        self.open()
        self.assertIn("No goods are below their minimum stock.", self.browser.run("document.querySelector('#attention').textContent"))
        vantlo(self.folder, "minimum", "G1", "5.5")
        self.open()
        rows = self.browser.run("[...document.querySelectorAll('#attention tbody tr')].map((row) => [...row.cells].map((cell) => cell.textContent))")
        self.assertEqual(rows, [["G1 screen", "", "", "", "0", "5.5", "3", "2.5", "pc"]])
        self.assertEqual(self.browser.run(FAULTS), [])
        self.assertEqual(self.browser.messages, [])

    def test_without_a_journal_there_are_neither_cards_nor_charts_and_the_page_says_why(self):
        vantlo(self.folder, "leave", "--yes")
        sqlite(self.folder, "insert into Inventory values ('W1', 'G1', '', '', 0, '', '', 1, 0, 1, '')")
        self.open("#card-0")
        self.assertIn("keeps no journal of movements", self.browser.run("document.querySelector('#over-time').textContent"))
        self.assertEqual(self.browser.run("document.querySelectorAll('a[href^=\"#card-\"]').length"), 0)
        self.assertTrue(self.browser.run("document.querySelector('#card').hidden && document.querySelector('#time-charts').hidden"))
        self.assertTrue(self.browser.run("document.querySelector('#ledger-count').textContent").startswith("1 row"))
        self.assertEqual(self.browser.messages, [])

    def test_an_empty_ledger_has_a_page_too(self):
        self.open()
        self.assertIn("No row is below zero.", self.browser.run("document.querySelector('#attention').textContent"))
        self.assertIn("No such rows", self.browser.run("document.querySelector('#ledger-table').textContent"))
        self.assertEqual(self.browser.messages, [])


if __name__ == "__main__":
    unittest.main(verbosity=2)
