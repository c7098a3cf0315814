"""Tests what tests/faults/run --write does to the table in docs/testing.md."""

import pathlib
import tempfile
import unittest

import table

HEAD = ["| Fault | What is wrong | Caught by |", "|---|---|---|"]


class TableTest(unittest.TestCase):
    """A page with a table, and a folder with a patch for each of its rows."""

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.page = self.folder / "testing.md"
        for name in ("core-a", "core-c", "core-e"):
            self.add_patch(name)
        self.set_rows(self.row("core-a", "`ATest` (1)"), self.row("core-c"), self.row("core-e", "`ETest` (2)"))
        self.table = table.Table(self.folder, self.page)

    def add_patch(self, name, sentence="Something is wrong."):
        path = self.folder / f"{name}.patch"
        path.write_text(f"{sentence}\n\n--- a/core/A.cpp\n+++ b/core/A.cpp\n", encoding="utf-8")

    @staticmethod
    def row(name, caught="not tried yet", sentence="Something is wrong."):
        return f"| `{name}` | {sentence} | {caught} |"

    def set_rows(self, *rows, before="Before.", after="After."):
        lines = [before, "", table.BEGIN, "", *HEAD, *rows, "", table.END, "", after]
        self.page.write_text("\n".join(lines), encoding="utf-8")

    def assert_rows(self, *rows, before="Before.", after="After."):
        found = self.page.read_text(encoding="utf-8")
        self.set_rows(*rows, before=before, after=after)
        self.assertEqual(found.splitlines(), self.page.read_text(encoding="utf-8").splitlines())

    def test_replaces_the_rows_of_the_tried_faults_only(self):
        self.table.write({"core-c": ["CTest.Is"], "core-e": ["ETest.Is"]})
        self.assert_rows(self.row("core-a", "`ATest` (1)"), self.row("core-c", "`CTest` (1)"),
                         self.row("core-e", "`ETest` (1)"))

    def test_keeps_the_rows_that_were_added_or_changed_since_the_run_began(self):
        self.add_patch("core-b")
        edited = self.row("core-a", "`NewTest` (7)", "Another sentence.")
        self.set_rows(edited, self.row("core-b", "`BTest` (3)"), self.row("core-c"), self.row("core-d"),
                      self.row("core-e", "`ETest` (9)"), before="A new line.", after="Another.")
        self.table.write({"core-c": ["CTest.Is"]})
        self.assert_rows(edited, self.row("core-b", "`BTest` (3)"), self.row("core-c", "`CTest` (1)"),
                         self.row("core-d"), self.row("core-e", "`ETest` (9)"), before="A new line.", after="Another.")

    def test_keeps_them_at_each_of_several_writes(self):
        self.table.write({"core-a": ["ATest.Is"]})
        self.add_patch("core-b")
        self.set_rows(self.row("core-a", "`ATest` (1)"), self.row("core-b", "`BTest` (3)"), self.row("core-c"),
                      self.row("core-e"))
        self.table.write({"core-a": ["ATest.Is"], "core-c": ["CTest.Is"]})
        self.assert_rows(self.row("core-a", "`ATest` (1)"), self.row("core-b", "`BTest` (3)"),
                         self.row("core-c", "`CTest` (1)"), self.row("core-e"))

    def test_gives_a_row_to_each_patch_without_one(self):
        self.add_patch("core-b", "It is\nlate.")
        self.table.write({"core-a": ["ATest.Is"]})
        self.assert_rows(self.row("core-a", "`ATest` (1)"), self.row("core-b", sentence="It is late."),
                         self.row("core-c"), self.row("core-e", "`ETest` (2)"))

    def test_takes_the_sentence_of_a_tried_fault_from_its_patch(self):
        self.add_patch("core-a", "It is late.")
        self.add_patch("core-c", "It is early.")
        self.table.write({"core-c": ["CTest.Is"]})
        self.assert_rows(self.row("core-a", "`ATest` (1)"), self.row("core-c", "`CTest` (1)", "It is early."),
                         self.row("core-e", "`ETest` (2)"))

    def test_removes_the_rows_of_deleted_patches(self):
        (self.folder / "core-e.patch").unlink()
        self.table.write({"core-a": ["ATest.Is"]})
        self.assert_rows(self.row("core-a", "`ATest` (1)"), self.row("core-c"))


class WordsTest(unittest.TestCase):
    def test_counts_the_tests_of_a_suite(self):
        self.assertEqual(table.in_words(["ATest.Is", "BTest.Is", "ATest.Was", "walls"]),
                         "`ATest` (2), `BTest` (1), `walls` (1)")

    def test_names_at_most_six(self):
        self.assertEqual(table.in_words([f"{name}Test.Is" for name in "ABCDEFG"]),
                         "ATest, BTest, CTest, DTest, ETest, 2 more")


if __name__ == "__main__":
    unittest.main()
