"""Tests tools/called-programs on trees that are made for it. Run by tools/check."""

import pathlib
import subprocess
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "called-programs"


class CalledPrograms(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.TemporaryDirectory()
        self.addCleanup(self.scratch.cleanup)
        self.folder = pathlib.Path(self.scratch.name)
        self.file("tools/packages", "# a list\nsqlite3 g++\n")

    def file(self, name, text, executable=False):
        path = self.folder / name
        path.parent.mkdir(exist_ok=True)
        path.write_text(text, encoding="utf-8")
        path.chmod(0o755 if executable else 0o644)

    def script(self, text, name="demo"):
        self.file(name, "#!/usr/bin/env bash\n" + text, executable=True)

    def offenders(self):
        """What the check finds: (file, line, program), and its exit code says the same."""
        run = subprocess.run([str(TOOL), str(self.folder)], capture_output=True, text=True)
        self.assertEqual(run.stderr, "")
        found = [tuple(line.split(": ")[0].split(":")) + (line.split(": ")[1].split(" ")[0],)
                 for line in run.stdout.splitlines()[:-1]]
        self.assertEqual(run.returncode, 1 if found else 0, run.stdout)
        return sorted((file, int(line), program) for file, line, program in found)

    def test_programs_of_essential_packages_of_apt_and_of_the_lists_pass(self):
        self.script("tools/install-packages $(cat tools/packages)\nsqlite3 x; ls | sort; c++ --version; awk 1; apt-get x\n")
        self.assertEqual(self.offenders(), [])

    def test_a_program_is_found_wherever_a_script_can_call_one(self):
        # The formatter is there where this test runs, and in no list here; the other is nowhere.
        calls = ["clang-format-14 x", "ls | clang-format-14", "x=$(clang-format-14)", "if ! clang-format-14; then :; fi",
                 "exec clang-format-14", "LC_ALL=C env -u A B=1 clang-format-14", "trap 'clang-format-14 x' EXIT",
                 "bash -c 'ls; clang-format-14'", "find . -exec clang-format-14 {} +", "cat <(clang-format-14)",
                 "f() { \"$@\"; }; f clang-format-14", "sudo clang-format-14", "/usr/bin/clang-format-14",
                 "a=(taskset --cpu-list 0); \"${a[@]}\" clang-format-14", "ls | xargs -I x clang-format-14", "no-such-program"]
        self.script("tools/install-packages $(cat tools/packages)\n" + "\n".join(calls) + "\n")
        self.assertEqual(self.offenders(), [("demo", line + 3, "clang-format-14") for line in range(len(calls) - 1)] +
                         [("demo", len(calls) + 2, "no-such-program")])

    def test_words_that_are_no_calls_pass(self):
        self.script("# clang-format-14\ntrue\nls clang-format-14 >clang-format-14\nf() { echo \"$1\"; }; f clang-format-14\n")
        self.assertEqual(self.offenders(), [])

    def test_a_list_serves_the_scripts_that_read_it(self):
        self.file("tools/packages-checks", "clang-format-14\n")
        self.script("# not tools/packages-checks\ntools/install-packages $(cat tools/packages)\nclang-format-14\n")
        self.script("tools/install-packages $(cat tools/packages-checks)\nclang-format-14\n", "test")
        self.assertEqual(self.offenders(), [("demo", 4, "clang-format-14")])

    def test_a_script_may_use_what_it_names_and_what_scripts_install_that_it_calls_or_sources(self):
        self.script("tools/install-packages clang-format-14\nclang-format-14\n", "tools/format")
        self.script("tools/format\nclang-format-14\n", "called")
        self.file("tools/servers.sh", "install_without_starting() { ls; }\nstart() { install_without_starting clang-format-14; }\n")
        self.script("source \"$here/servers.sh\"\nclang-format-14\n", "tools/sourced")
        self.script("tools/install-packages sqlite3\nclang-format-14\n", "tools/other")
        self.assertEqual(self.offenders(), [("tools/other", 3, "clang-format-14")])

    def test_whoever_calls_a_python_script_needs_python_and_the_script_its_programs(self):
        self.file("tools/spoil", "#!/usr/bin/env python3\nimport subprocess\nsubprocess.run(['clang-format-14', 'x'])\n"
                  "def run(*command): subprocess.run(command)\nrun('tools/install-packages', 'sqlite3')\nrun('ls')\n",
                  executable=True)
        self.script("tools/install-packages sqlite3\ntools/spoil\n")
        self.assertEqual(self.offenders(), [("demo", 3, "python3"), ("tools/spoil", 3, "clang-format-14")])

    def test_a_tree_without_scripts_fails(self):
        run = subprocess.run([str(TOOL), str(self.folder)], capture_output=True, text=True)
        self.assertEqual(run.returncode, 1)


if __name__ == "__main__":
    unittest.main()
