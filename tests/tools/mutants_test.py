"""Tests tools/mutants: what it changes, where it says that is, and what it makes of survivors. Run by tools/check."""

import contextlib
import importlib.machinery
import importlib.util
import io
import pathlib
import re
import unittest

TOOL = pathlib.Path(__file__).resolve().parents[2] / "tools" / "mutants"
loader = importlib.machinery.SourceFileLoader("mutants", str(TOOL))
tool = importlib.util.module_from_spec(importlib.util.spec_from_loader("mutants", loader))
loader.exec_module(tool)


def changed(source, operator=tool.general_mutants):
    """Each mutant of a source as (what, the line after the change)."""
    code = tool.Code(source)
    found = []
    for what, start, end, replacement in operator(code):
        text = source[:start] + replacement + source[end:]
        line = source.count("\n", 0, start)
        found.append((what, text.split("\n")[line].strip()))
    return found


class Operators(unittest.TestCase):
    def test_conditions_comparisons_and_logic_are_exchanged(self):
        source = "int f(int a, int b) {\n    if (a < b && !b) return 7;\n    return a;\n}\n"
        self.assertEqual(changed(source), [
            ("negate the condition", "if (!(a < b && !b)) return 7;"),
            ("< -> <=", "if (a <= b && !b) return 7;"),
            ("&& -> ||", "if (a < b || !b) return 7;"),
            ("drop the !", "if (a < b && b) return 7;"),
            ("return a default", "if (a < b && !b) return {};"),
            ("one more", "if (a < b && !b) return 8;"),
            ("return a default", "return {};"),
        ])

    def test_statements_are_left_out_and_declarations_are_not(self):
        source = ("void f(Rows& rows) {\n    const int n = rows.size();\n    std::string text(\"x\");\n    rows->close();\n"
                  "    if (n) rows.clear();\n    else ::g(rows);\n    count += n;\n    rows.reserve(n);\n}\nint g(int);\n")
        self.assertEqual([line for what, line in changed(source) if what == "leave the statement out"],
                         ["(void)0;", "if (n) (void)0;", "(void)0;"])

    def test_comments_texts_directives_templates_and_references_are_no_operators(self):
        source = ("#if A < 1 && B\n#endif\n// if (a < b) return 1;\nconst char* s = \"a < b && c\";\n"
                  "auto r = R\"(if (a == b) return 2;)\";\nvoid f(std::vector<int>&& v, char c = '1');\n")
        self.assertEqual(changed(source), [])

    def test_texts_of_statements_lose_blanks_and_commas_and_have_signs_flipped(self):
        source = 'void f() {\n    g(u"a =b,c-1");\n    h("x y, z");\n}\n'
        self.assertEqual([line for what, line in changed(source, tool.sql_mutants)],
                         ['g(u"a=b,c-1");', 'g(u"a =bc-1");', 'g(u"a =b,c+1");'])


class Places(unittest.TestCase):
    def test_a_place_is_the_function_the_table_or_the_member(self):
        source = ("namespace a {\nnamespace {\nconstexpr Row rows[] = {\n    {1},\n    {2},\n};\n}\n"
                  "struct S {\n    int member = 3;\n    [[nodiscard]] int method() const { return 4; }\n};\n"
                  "S::S(int v) : a_(v), b_{5} {\n    go(6);\n}\n"
                  "std::optional<int> T::f(std::string s) {\n    return [&] { return 7; }();\n}\n}\n")
        code = tool.Code(source)
        self.assertEqual([code.place(source.index(number)) for number in "123467"],
                         ["rows", "rows", "S::member", "S::method", "S::S", "T::f"])

    def test_a_mutant_keeps_its_name_when_other_functions_change(self):
        before = "int f() { return 1 + 2; }\nint g() { return 3; }\n"
        after = "// new\nint e() { return 9; }\nint f() { return 1 + 2; }\n\nint g() { return 3; }\n"

        def names(source):
            code = tool.Code(source)
            return [(code.place(start), what) for what, start, _, _ in tool.general_mutants(code) if code.place(start) != "e"]
        self.assertEqual(names(before), names(after))


class Tables(unittest.TestCase):
    def test_every_swap_is_still_found_in_the_sources(self):
        text = "\n".join(tool.blanked(tool.Code((tool.ROOT / file).read_text(encoding="utf-8")))
                         for room, row in tool.ROOMS.items() if tool.sql_mutants in row.operators for file in tool.files_of(room))
        self.assertEqual([old for old, _ in tool.SWAPS if old not in text], [])

    def test_every_mutant_that_is_listed_as_equivalent_is_still_made(self):
        made = {(mutant.file, mutant.place, mutant.what, mutant.nth) for room, row in tool.ROOMS.items()
                for file in tool.files_of(room) for mutant in tool.mutants_of(file, row.operators)}
        self.assertEqual(set(tool.EQUIVALENT) - made, set())

    def test_the_rooms_have_files_and_their_programs_are_built_by_the_tests(self):
        built = "\n".join(path.read_text(encoding="utf-8") for path in (tool.ROOT / "tests").rglob("CMakeLists.txt"))
        for room, row in tool.ROOMS.items():
            self.assertGreater(len(tool.files_of(room)), 0, room)
            for program, _, _ in row.tests:
                self.assertRegex(built, r"vantlo_\w*tests?\w*\(" + re.escape(program.removeprefix("tests_")) + r"\s")


class Tree:
    """Stands for a copy of the tree: notices the first mutants, and none after them."""

    def __init__(self, noticed):
        self.noticed, self.spoilt, self.restored = noticed, [], []

    def spoil(self, mutant):
        self.spoilt.append(mutant)

    def restore(self, file):
        self.restored.append(file)

    def noticed_by(self, _):
        return "tests" if len(self.spoilt) <= self.noticed else None


class Verdicts(unittest.TestCase):
    def setUp(self):
        self.room = "posting"
        self.mutants = [mutant for file in tool.files_of(self.room) for mutant in tool.mutants_of(file, tool.ROOMS[self.room].operators)
                        if not tool.is_equivalent(mutant)]

    def verdict(self, tree, mutants, deadline=None):
        said = io.StringIO()
        with contextlib.redirect_stdout(said):
            holds, fates = tool.try_room(tree, self.room, mutants, deadline)
        return holds, fates, said.getvalue()

    def test_a_room_holds_when_all_are_noticed_and_not_with_one_survivor(self):
        self.assertTrue(self.verdict(Tree(20), self.mutants[:20])[0])
        holds, fates, said = self.verdict(Tree(19), self.mutants[:20])
        self.assertFalse(holds)
        self.assertEqual((fates["tests"], fates[None]), (19, 1))
        self.assertIn(f"SURVIVES {self.mutants[19].file}:", said)

    def test_a_mutant_that_is_listed_as_equivalent_may_survive_and_must(self):
        listed = [mutant for file in tool.files_of(self.room) for mutant in tool.mutants_of(file, tool.ROOMS[self.room].operators)
                  if tool.is_equivalent(mutant)][:1]
        self.assertTrue(self.verdict(Tree(0), listed)[0])
        self.assertFalse(self.verdict(Tree(1), listed)[0])

    def test_nothing_tried_is_no_proof(self):
        self.assertFalse(self.verdict(Tree(9), [])[0])

    def test_a_sample_tries_ten_even_when_the_time_is_over_and_every_file_is_put_right(self):
        tree = Tree(99)
        holds, fates, _ = self.verdict(tree, list(tool.sampled(self.mutants, "seed")), deadline=1)
        self.assertTrue(holds)
        self.assertEqual(fates.total(), 10)
        self.assertEqual({mutant.file for mutant in tree.spoilt}, set(tree.restored))

    def test_a_sample_is_the_same_for_the_same_sources_and_another_for_others(self):
        self.assertEqual(list(tool.sampled(self.mutants, "a")), list(tool.sampled(self.mutants, "a")))
        self.assertNotEqual(list(tool.sampled(self.mutants, "a"))[:10], list(tool.sampled(self.mutants, "b"))[:10])
        self.assertEqual(sorted(tool.sampled(self.mutants, "a")), sorted(self.mutants))


if __name__ == "__main__":
    unittest.main()
