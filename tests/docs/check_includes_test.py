"""Tests check_includes.py on small artificial trees."""

import pathlib
import tempfile
import unittest

from check_includes import Sources


class CheckIncludesTest(unittest.TestCase):
    def found(self, **files):
        """Returns what the check reports about these files of the folder helper, of which X_h is X.h."""
        with tempfile.TemporaryDirectory() as root:
            folder = pathlib.Path(root) / "helper"
            folder.mkdir()
            for name, text in files.items():
                (folder / name.replace("_", ".")).write_text(text, encoding="utf-8")
            return list(Sources(pathlib.Path(root)).missing())

    def test_a_header_that_is_not_named_is_missing(self):
        self.assertEqual(self.found(a_cpp="#include <string>\nstd::int64_t a;\n"),
                         ["helper/a.cpp: std::int64_t needs <cstdint>"])

    def test_a_named_header_is_found(self):
        self.assertEqual(self.found(a_cpp="#include <cstdint>\nstd::int64_t a;\n"), [])

    def test_a_header_of_the_project_may_name_it(self):
        self.assertEqual(self.found(a_cpp='#include "helper/b.h"\nstd::int64_t a;\n', b_h='#include "helper/c.h"\n',
                                    c_h="#include <cstdint>\n"), [])

    def test_headers_that_include_each_other_are_read_once(self):
        self.assertEqual(self.found(a_h='#include "helper/b.h"\nstd::string a;\n', b_h='#include "helper/a.h"\n'),
                         ["helper/a.h: std::string needs <string>"])

    def test_texts_and_comments_do_not_count(self):
        self.assertEqual(self.found(a_cpp='// std::map\nconst char* a = "std::set"; /* std::list */\n'), [])

    def test_an_unknown_name_is_reported(self):
        self.assertEqual(self.found(a_cpp="#include <string>\nstd::novelty a;\n"),
                         ["helper/a.cpp: std::novelty is not in the table of this check"])


if __name__ == "__main__":
    unittest.main()
