"""Tests tools/unpack-packages as far as it needs no network. Run by tools/check."""

import os
import pathlib
import subprocess
import tempfile
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "unpack-packages"


class UnpackPackages(unittest.TestCase):
    def test_without_a_source_of_debian_nothing_is_fetched_and_the_message_says_why(self):
        for source in ("", "deb http://127.0.0.1:9/debian other main\n"):
            with self.subTest(source), tempfile.TemporaryDirectory() as scratch:
                folder = pathlib.Path(scratch)
                (folder / "sources.list").write_text(source)
                (folder / "apt.conf").write_text(f'Dir::Etc::sourcelist "{folder}/sources.list";\nDir::Etc::sourceparts "/dev/null";\n')
                run = subprocess.run([str(TOOL), "i386", str(folder / "made"), "libmd0"], capture_output=True, text=True,
                                     env={**os.environ, "APT_CONFIG": str(folder / "apt.conf")})
                self.assertEqual(run.returncode, 1)
                self.assertIn("apt is configured with no source of Debian's suite", run.stderr)
                self.assertEqual(sorted(path.name for path in folder.iterdir()), ["apt.conf", "sources.list"])


if __name__ == "__main__":
    unittest.main()
