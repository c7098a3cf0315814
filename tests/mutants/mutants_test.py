"""Tests the parts of tests/mutants/run: the scanner, the mutations, the list of equivalent mutants, the scores."""

import pathlib
import sys
import tempfile
import unittest

HERE = pathlib.Path(__file__).resolve().parent
sys.path.append(str(HERE.parent / "faults"))

import equivalents
import kept
import table
from coverage import Coverage, Suite, read_lcov
from directives import mutants_of_script, mutants_of_unit
from mutant import make
from mutations import mutants_of
from scanner import scan
from trial import CAUGHT, DOES_NOT_COMPILE, SURVIVED, Result


def changes(code, kind=None):
    """Returns the mutants of a body with this line, as texts of the line."""
    source = f"void f() {{\n{code}\n}}\n"
    return [mutant.after for mutant in mutants_of("a.cpp", source) if kind in (None, mutant.kind)]


class ScannerTest(unittest.TestCase):
    def test_leaves_out_comments_preprocessor_lines_and_assertions(self):
        source = '// 1\n#define A 2 \\\n 3\n/* 4\n5 */ static_assert(6 < 7, "8");\nint a = 9;\n'
        self.assertEqual([token.text for token in scan(source)], ["int", "a", "=", "9", ";"])

    def test_leaves_out_what_is_only_for_a_mac(self):
        source = "#if defined(__APPLE__)\nmac();\n#else\nelsewhere();\n#endif\neverywhere();\n"
        self.assertEqual([token.text for token in scan(source) if token.kind == "name"], ["elsewhere", "everywhere"])
        self.assertEqual([token.line for token in scan(source) if token.kind == "name"], [4, 6])

    def test_takes_a_string_as_one_token(self):
        texts = [token.text for token in scan(r'f("a // \" 1", R"x(" 2)x", ' + "'\\'');")]
        self.assertEqual(texts, ["f", "(", r'"a // \" 1"', ",", 'R"x(" 2)x"', ",", r"'\''", ")", ";"])

    def test_takes_a_number_with_its_suffix_and_its_separators_as_one_token(self):
        self.assertEqual([token.text for token in scan("1'000us 0x1Fu 1.5e-3 ")], ["1'000us", "0x1Fu", "1.5e-3"])

    def test_counts_lines(self):
        self.assertEqual([token.line for token in scan("a\n/* \n */ b\n\nc")], [1, 3, 5])

    def test_knows_bodies_of_functions(self):
        source = "namespace n { class C { int a = 1; C() : b{2} { three(); } }; enum class E { four }; }"
        inside = {token.text for token in scan(source) if token.is_in_body}
        self.assertLessEqual({"three"}, inside)
        self.assertFalse({"a", "1", "four", "class"} & inside)


class MutationsTest(unittest.TestCase):
    def test_negates_a_condition(self):
        self.assertIn("if (!(a && b)) c();", changes("if (a && b) c();", "condition negated"))
        self.assertIn("if (a) b();", changes("if (!a) b();", "condition negated"))
        self.assertIn("if (auto a = b(); !a) c();", changes("if (auto a = b()) c();", "condition negated"))
        self.assertIn("return !(a) ? b : c;", changes("return a ? b : c;", "condition negated"))

    def test_never_takes_a_branch(self):
        self.assertIn("if (false && (a)) b();", changes("if (a) b();", "branch never taken"))
        self.assertIn("if (auto a = b(); false) c();", changes("if (auto a = b()) c();", "branch never taken"))

    def test_ignores_an_error_but_still_calls_the_function(self):
        ignored = changes("if (open(a) < 0) return;", "error result ignored")
        self.assertEqual(ignored, ["if ((open(a) < 0) && false) return;"])
        self.assertIn("static_cast<void>(open(a, b));", changes('check(open(a, b), "open");', "error result ignored"))

    def test_replaces_operators(self):
        for before, after in (("a < b", "a <= b"), ("a >= b", "a > b"), ("a == b", "a != b"), ("a && b", "a || b"),
                              ("a + b", "a - b"), ("++a", "--a")):
            self.assertIn(f"c = {after};", changes(f"c = {before};", "operator replaced"))

    def test_leaves_templates_pointers_and_references_alone(self):
        self.assertEqual(changes("std::vector<int> a = b<c>(d);"), [])
        self.assertEqual(changes("A* a = *b;"), [])
        self.assertEqual(changes("for (auto&& a : b) {", "operator replaced"), [])

    def test_removes_a_statement(self):
        self.assertIn(";", changes("a.b(c);", "statement removed"))
        self.assertIn("else ;", changes("if (a)\nb();\nelse c();", "statement removed"))
        self.assertIn("case 1: ;", changes("switch (a) {\ncase 1: b();\n}", "statement removed"))

    def test_removes_no_branch_no_declaration_and_no_result(self):
        for code in ("if (a) b();", "int a = 1;", "const auto a = b();", "A::B<C> a(b);", "A& a = b;", "return a;"):
            self.assertEqual(changes(code, "statement removed"), [])

    def test_does_not_mutate_what_is_not_in_a_body(self):
        source = "class A {\n    virtual void f() = 0;\n    bool operator==(const A&) const;\n};\n"
        self.assertEqual(mutants_of("a.h", source), [])

    def test_swaps_adjacent_statements(self):
        self.assertEqual(changes("a();\nb();\nint c;\nd();", "statements swapped"), ["b(); / a();"])

    def test_changes_constants_also_outside_a_body(self):
        self.assertEqual([mutant.after for mutant in mutants_of("a.cpp", "constexpr auto grace = 2s;\n")],
                         ["constexpr auto grace = 1s;", "constexpr auto grace = 4s;"])
        self.assertEqual([mutant.after for mutant in mutants_of("a.h", "bool a = false;\n")], ["bool a = true;"])
        self.assertEqual(changes("f(O_RDWR | O_CLOEXEC);", "constant changed"), ["f(O_RDWR);"])
        self.assertEqual(changes("f(0600);", "constant changed"), ["f((0600 + 1));"])

    def test_swaps_arguments(self):
        self.assertEqual(changes("f(a, g(b), c);", "arguments swapped"), ["f(g(b), a, c);", "f(a, c, g(b));"])
        self.assertEqual(changes("x = std::min<int>(a, std::max(b, c));", "arguments swapped"), [])

    def test_plants_each_change_once(self):
        planted = [mutant.planted_in("void f() { if (a == b) c(); }")
                   for mutant in mutants_of("a.cpp", "void f() { if (a == b) c(); }")]
        self.assertEqual(len(planted), len(set(planted)))
        self.assertIn("void f() { if (a != b) c(); }", planted)


class DirectivesTest(unittest.TestCase):
    def test_changes_and_removes_directives_of_a_unit(self):
        source = "[Service]\nRestartSec=30\nNoNewPrivileges=yes\nSystemCallFilter=~@a @b\n# Other=1\n"
        after = [mutant.after for mutant in mutants_of_unit("a.service", source)]
        self.assertEqual(after, ["#", "RestartSec=60", "#", "NoNewPrivileges=no", "#", "SystemCallFilter=~@a"])

    def test_changes_and_removes_commands_of_a_script(self):
        source = 'if [ -n "$a" ]; then\n    run && exit 1\nfi\n# run\n'
        after = [mutant.after for mutant in mutants_of_script("a", source)]
        self.assertEqual(after, ['if [ -z "$a" ]; then', 'if ! [ -n "$a" ]; then', ":", "run || exit 1",
                                 "run && exit 0"])


class EquivalentsTest(unittest.TestCase):
    LIST = "# About.\n\na.cpp\n- int a = 1;\n+ int a = 2;\nNobody reads\nit.\n"

    def test_a_mutant_is_listed_by_its_texts_not_by_its_line(self):
        listed = equivalents.read(self.LIST)
        source = "\n\nint a = 1;\n"
        mutants = {mutant.after: mutant for mutant in mutants_of("a.cpp", source)}
        self.assertTrue(equivalents.is_listed(mutants["int a = 2;"], listed))
        self.assertFalse(equivalents.is_listed(mutants["int a = 0;"], listed))
        self.assertEqual(list(listed.values()), ["Nobody reads it."])

    def test_each_has_a_reason(self):
        with self.assertRaises(equivalents.Wrong):
            equivalents.read("a.cpp\n- int a = 1;\n+ int a = 2;\n")


class CoverageTest(unittest.TestCase):
    def setUp(self):
        self.coverage = Coverage(None, "", HERE, None)
        self.coverage._programs = {
            "test_long": [Suite("test_long", "LongTest", 2, {"a.cpp": [1]}),
                          Suite("test_long", "FirstTest", 1, {"a.cpp": [1]})],
            "test_short": [Suite("test_short", "ShortTest", 0.5, {"a.cpp": [1, 2]}),
                           Suite("test_short", "OtherTest", 0.1, {"b.cpp": [1]})]}
        self.coverage._runnable.update({"a.cpp": {1, 2, 3}, "b.cpp": {1}})

    def names(self, file, line):
        mutant = make(file, "\n" * 9, "", line - 1, line - 1, "")
        return [suite.name for suite in self.coverage.of(mutant, ["test_long", "test_short"])]

    def test_the_suites_that_run_a_line_come_in_the_order_of_their_time(self):
        self.assertEqual(self.names("a.cpp", 1), ["ShortTest", "FirstTest", "LongTest"])
        self.assertEqual(self.names("a.cpp", 2), ["ShortTest"])

    def test_nothing_runs_a_line_that_could_run_and_did_not(self):
        self.assertEqual(self.names("a.cpp", 3), [])

    def test_a_constant_counts_as_run_by_what_runs_its_file(self):
        self.assertEqual(self.names("b.cpp", 7), ["OtherTest"])
        self.assertEqual(len(self.names("c.h", 1)), 4)

    def test_reads_the_counts_of_our_sources_only(self):
        text = "SF:/x/tests/a.cpp\nDA:1,1\nend_of_record\nSF:/x/helper/b.cpp\nDA:2,0\nDA:3,4\nend_of_record\n"
        self.assertEqual(read_lcov(text, "/x/"), {"helper/b.cpp": {2: 0, 3: 4}})


class TableTest(unittest.TestCase):
    def score(self, room, *verdicts):
        return table.Score(room, 100, [Result(None, verdict, [], 1) for verdict in verdicts], 7, "2026-11-23", "all")

    def test_a_mutant_that_does_not_compile_does_not_count(self):
        score = self.score("core", CAUGHT, CAUGHT, SURVIVED, DOES_NOT_COMPILE)
        self.assertEqual((score.planted(), score.caught(), score.of_hundred()), (3, 2, "67"))

    def test_the_rows_of_other_rooms_stay(self):
        lines = table.updated("", [self.score("core", CAUGHT), self.score("app", SURVIVED)])
        lines = table.updated("\n".join(lines), [self.score("app", CAUGHT)])
        self.assertEqual(lines[2:], ["| `app` | 100 | 1 | 1 | 100 | 0 (0 of 1, seed 7) | all | 7 | 2026-11-23 |",
                                     "| `core` | 100 | 1 | 1 | 100 | – | all | 7 | 2026-11-23 |"])

    def test_the_first_score_of_a_room_stays_beside_the_newest(self):
        lines = []
        for verdicts in ([SURVIVED], [CAUGHT, SURVIVED], [CAUGHT]):
            lines = table.updated("\n".join(lines), [self.score("app", *verdicts)])
        self.assertEqual(lines[2:], ["| `app` | 100 | 1 | 1 | 100 | 0 (0 of 1, seed 7) | all | 7 | 2026-11-23 |"])


class KeptTest(unittest.TestCase):
    SOURCE = "int a = 1;\nint b = 1;\nint c = 1;\nint b = 1;\n"

    def run_of(self, **verdicts):
        """Returns a run that has tried one mutant of each of these lines, written and read again."""
        first = {mutant.before: mutant for mutant in reversed(mutants_of("a.cpp", self.SOURCE))}
        results = [Result(first[f"int {name} = 1;"], verdict, [], 1) for name, verdict in verdicts.items()]
        with tempfile.TemporaryDirectory() as folder:
            kept.write(pathlib.Path(folder), "a/b", kept.Run(7, "all", results))
            self.assertIsNone(kept.read(pathlib.Path(folder), "a/c"))
            return kept.read(pathlib.Path(folder), "a/b")

    def test_only_survivors_are_tried_again_also_if_their_lines_have_moved(self):
        run = self.run_of(a=CAUGHT, b=SURVIVED, c=DOES_NOT_COMPILE)
        self.assertEqual((run.seed, len(run.caught())), (7, 1))
        again = run.survivors_among(mutants_of("a.cpp", f"\n{self.SOURCE}"))
        self.assertEqual([(mutant.line, mutant.after) for mutant in again], [(3, "int b = 0;")])

    def test_a_survivor_whose_line_has_gone_is_not_tried_again(self):
        self.assertEqual(self.run_of(b=SURVIVED).survivors_among(mutants_of("a.cpp", "int a = 1;\n")), [])


if __name__ == "__main__":
    unittest.main()
