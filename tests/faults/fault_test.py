"""Tests what tests/faults/run reads from a patch."""

import pathlib
import tempfile
import unittest

from fault import Fault

DIFF = "--- a/core/A.cpp\n+++ b/core/A.cpp\n"


class FaultTest(unittest.TestCase):
    def fault(self, text):
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "core-a.patch"
            path.write_text(text, encoding="utf-8")
            return Fault(path)

    def test_has_a_sentence_and_the_patched_files(self):
        fault = self.fault(f"Something\nis wrong.\n\n{DIFF}")
        self.assertEqual((fault.sentence, fault.files, fault.desktop), ("Something is wrong.", ["core/A.cpp"], None))

    def test_may_name_the_scenario_of_a_desktop_below_the_sentence(self):
        fault = self.fault(f"Something is wrong.\nDesktop: gnome-48 title_bar\n\n{DIFF}")
        self.assertEqual((fault.sentence, fault.desktop), ("Something is wrong.", ("gnome-48", "title_bar")))

    def test_without_a_sentence_does_not_fit(self):
        self.assertIn("does not begin with a sentence", self.fault(DIFF).fits())
        self.assertIn("does not begin with a sentence", self.fault(f"Desktop: gnome-48 icon\n\n{DIFF}").fits())


if __name__ == "__main__":
    unittest.main()
