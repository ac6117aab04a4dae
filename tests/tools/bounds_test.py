"""Tests that what a line may cost is written down once. Run by tools/check."""

import pathlib
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]


def bounds(*arguments):
    return subprocess.run([str(ROOT / "bench/bounds"), *arguments], capture_output=True, text=True, check=True).stdout


class Bounds(unittest.TestCase):
    def test_the_page_shows_the_bounds_that_are_held(self):
        page = (ROOT / "docs/performance.md").read_text(encoding="utf-8")
        self.assertEqual(page.partition("<!-- bounds -->\n")[2].partition("<!-- end -->")[0], bounds())

    def test_each_figure_has_an_aim_and_those_of_the_test_run_a_bound_that_is_no_tighter(self):
        for figure in ("instructions", "allocations", "sqlite_ratio"):
            self.assertLessEqual(float(bounds(figure, "aim")), float(bounds(figure, "test")))
        self.assertGreater(float(bounds("server_ratio", "aim")), 1)

    def test_a_figure_that_is_not_there_is_an_error(self):
        with self.assertRaises(subprocess.CalledProcessError):
            bounds("no_such_figure", "aim")


if __name__ == "__main__":
    unittest.main()
