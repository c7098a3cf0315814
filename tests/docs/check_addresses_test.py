"""Tests check_addresses.py on a small artificial tree."""

import pathlib
import tempfile
import unittest

from check_addresses import SUPPORT, wrong_addresses

METAINFO = "packaging/org.ble_kovra.BLEKovra.metainfo.xml"
TREE = {
    "CMakeLists.txt": 'project(Thing VERSION 1.2.3 HOMEPAGE_URL "https://thing.example" LANGUAGES CXX)\n',
    SUPPORT: 'constexpr const char* supportAddress = "help@thing.example";\n',
    "debian/changelog": "thing (1.2.3)\n\n -- Somebody <help@thing.example>  Thu, 01 Jan 2026 12:00:00 +0000\n",
    "debian/control": "Maintainer: Somebody <help@thing.example>\nHomepage: https://thing.example\n",
    "debian/copyright": "Upstream-Contact: help@thing.example\n",
    METAINFO: '<url type="homepage">https://thing.example</url>\n<update_contact>help@thing.example</update_contact>\n',
    "helper/a.cpp": "const char* address = supportAddress;\n",
}


class CheckAddressesTest(unittest.TestCase):
    def found(self, **changes):
        """Returns what the check reports if, in each file, the first text is replaced by the second one."""
        with tempfile.TemporaryDirectory() as folder:
            root = pathlib.Path(folder)
            for name, text in TREE.items():
                if name in changes:
                    self.assertIn(changes[name][0], text)
                    text = text.replace(*changes[name])
                (root / name).parent.mkdir(parents=True, exist_ok=True)
                (root / name).write_text(text, encoding="utf-8")
            return list(wrong_addresses(root))

    def test_equal_addresses_are_right(self):
        self.assertEqual(self.found(), [])

    def test_another_support_address_is_reported_in_each_file(self):
        for name in ("debian/changelog", "debian/control", "debian/copyright", METAINFO):
            with self.subTest(name):
                self.assertEqual(self.found(**{name: ("help@", "sales@")}),
                                 [f"{name}: the support address is help@thing.example, not sales@thing.example"])

    def test_a_missing_support_address_is_reported(self):
        self.assertEqual(self.found(**{"debian/copyright": ("help@thing.example", "Somebody")}),
                         ["debian/copyright: the support address help@thing.example is missing"])

    def test_another_home_page_is_reported_in_each_file(self):
        for name in ("debian/control", METAINFO):
            with self.subTest(name):
                self.assertEqual(self.found(**{name: ("https://thing.", "https://other.")}),
                                 [f"{name}: the home page is https://thing.example, not https://other.example"])

    def test_a_missing_home_page_is_reported(self):
        self.assertEqual(self.found(**{"debian/control": ("Homepage: https://thing.example\n", "")}),
                         ["debian/control: the home page https://thing.example is missing"])

    def test_another_constant_is_reported_in_every_file(self):
        self.assertEqual(len(self.found(**{SUPPORT: ("help@", "sales@")})), 4)
        self.assertEqual(len(self.found(**{"CMakeLists.txt": ("https://thing.", "https://other.")})), 2)

    def test_a_missing_constant_is_reported(self):
        self.assertIn("the constant of the home page is missing",
                      self.found(**{"CMakeLists.txt": (' HOMEPAGE_URL "https://thing.example"', "")}))

    def test_a_source_that_repeats_the_address_is_reported(self):
        self.assertEqual(self.found(**{"helper/a.cpp": ("supportAddress", '"help@thing.example"')}),
                         ["helper/a.cpp: repeats the support address instead of using the constant"])


if __name__ == "__main__":
    unittest.main()
