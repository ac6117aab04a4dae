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

    def test_a_source_is_unpacked_and_its_detached_signature_left_alone(self):
        with tempfile.TemporaryDirectory() as scratch:
            folder = pathlib.Path(scratch)
            (folder / "example-1").mkdir()
            (folder / "example-1" / "example.c").write_text("int example;\n")
            # Stands for apt: knows one source of Debian, and puts the package's files where it is called.
            (folder / "apt-get").write_text(
                "#!/bin/sh\ncase \" $* \" in\n"
                f"*' indextargets '*) . /etc/os-release; echo $VERSION_CODENAME http://127.0.0.1:9/debian main ;;\n"
                f"*' source '*) tar -C {folder} -czf example_1.orig.tar.gz example-1; echo sign >example_1.orig.tar.gz.asc ;;\n"
                "esac\n")
            (folder / "apt-get").chmod(0o755)
            run = subprocess.run([str(TOOL), "source", str(folder / "made"), "example"], capture_output=True, text=True,
                                 env={**os.environ, "PATH": f"{folder}:{os.environ['PATH']}"})
            self.assertEqual((run.returncode, run.stderr), (0, f"Unpacking into {folder}/made: example\n"))
            self.assertEqual([path.name for path in (folder / "made").iterdir()], ["example.c"])


if __name__ == "__main__":
    unittest.main()
