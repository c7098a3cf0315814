"""Tests check_releases.py on a small artificial project with two versions."""

import pathlib
import tempfile
import unittest

from check_releases import CHANGELOG, DEBIAN, METAINFO, NEWEST, PROJECT, differences, main

TREE = {
    "CMakeLists.txt": "project(Thing VERSION 1.1.0 LANGUAGES CXX)\n",
    "packaging/rpm/ble-kovra.spec": "Name:           thing\nVersion:        1.1.0\n%setup -n thing-%{version}\n",
    "packaging/arch/PKGBUILD": 'pkgname=thing\npkgver=1.1.0\nsource=("thing-$pkgver.tar.gz")\n',
    "debian/control": "Source: ble-kovra\nMaintainer: Somebody <help@thing.example>\n",
    CHANGELOG: """# Changelog

About this page.

## [1.1.0] - 2026-02-03

### Changed

- It is faster.
- A sentence that is too long for one line of the file debian/changelog has its remaining words in
  a second line.

### Fixed

- It works with names < 8 characters & more.

## [1.0.0] - 2026-01-02

### Added

- It exists.
""",
    DEBIAN: """ble-kovra (1.1.0) unstable; urgency=medium

  [ Changed ]
  * It is faster.
  * A sentence that is too long for one line of the file debian/changelog has
    its remaining words in a second line.

  [ Fixed ]
  * It works with names < 8 characters & more.

 -- Somebody <help@thing.example>  Tue, 03 Feb 2026 12:00:00 +0000

ble-kovra (1.0.0) unstable; urgency=medium

  [ Added ]
  * It exists.

 -- Somebody <help@thing.example>  Fri, 02 Jan 2026 12:00:00 +0000
""",
    METAINFO: """<?xml version="1.0" encoding="UTF-8"?>
<component>
  <description>
    <p>Something else.</p>
  </description>
  <releases>
    <release version="1.1.0" date="2026-02-03">
      <description>
        <p>Changed</p>
        <ul>
          <li>It is faster.</li>
          <li>A sentence that is too long for one line of the file debian/changelog has its remaining words in \
a second line.</li>
        </ul>
        <p>Fixed</p>
        <ul>
          <li>It works with names &lt; 8 characters &amp; more.</li>
        </ul>
      </description>
    </release>
    <release version="1.0.0" date="2026-01-02">
      <description>
        <p>Added</p>
        <ul>
          <li>It exists.</li>
        </ul>
      </description>
    </release>
  </releases>
</component>
""",
}


class CheckReleasesTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = pathlib.Path(temporary.name)
        for name, text in TREE.items():
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            (self.root / name).write_text(text, encoding="utf-8")

    def text(self, name):
        return (self.root / name).read_text(encoding="utf-8")

    def found(self, name, old, new):
        """Returns what the check reports if the first `old` in this file becomes `new`. Restores the file."""
        self.assertIn(old, TREE[name])
        (self.root / name).write_text(TREE[name].replace(old, new, 1), encoding="utf-8")
        found = list(differences(self.root))
        (self.root / name).write_text(TREE[name], encoding="utf-8")
        return found

    def test_files_that_say_the_same_are_right(self):
        self.assertEqual(list(differences(self.root)), [])

    def test_another_version_of_the_project_or_of_a_recipe_is_reported(self):
        for name, pattern in NEWEST.items():
            line = pattern.search(TREE[name])[0]
            for new, found in ((line.replace("1.1.0", "1.2.0"), "1.2.0"), (line.replace("1.1.0", "1.1"), "1.1"),
                               (line.replace("1.1.0", ""), "missing"), ("", "missing"),
                               (f"{line}\n{line}", "1.1.0, 1.1.0")):
                with self.subTest(name, new=new):
                    self.assertEqual(self.found(name, line, new),
                                     [f"{name}: the version is {found}; the newest one in {CHANGELOG} is 1.1.0"])

    def test_another_version_is_reported_in_each_file(self):
        for name, old, new in ((DEBIAN, "1.1.0", "1.2.0"), (METAINFO, "1.1.0", "1.2.0")):
            with self.subTest(name):
                self.assertEqual(self.found(name, old, new),
                                 [f"{name}: the versions are ['1.2.0', '1.0.0']; in {CHANGELOG} ['1.1.0', '1.0.0']"])
        self.assertEqual(len(self.found(CHANGELOG, "1.1.0", "1.2.0")), 2 + len(NEWEST))

    def test_a_missing_version_is_reported(self):
        for name, begin in ((DEBIAN, "ble-kovra (1.0.0)"), (METAINFO, '    <release version="1.0.0"')):
            with self.subTest(name):
                last = TREE[name][TREE[name].index(begin):].partition("  </releases>")[0]
                self.assertEqual(self.found(name, last, ""),
                                 [f"{name}: the versions are ['1.1.0']; in {CHANGELOG} ['1.1.0', '1.0.0']"])

    def test_another_date_is_reported_in_each_file(self):
        for name, old, new in ((DEBIAN, "Fri, 02 Jan", "Sat, 03 Jan"), (METAINFO, "2026-01-02", "2026-01-03")):
            with self.subTest(name):
                self.assertEqual(self.found(name, old, new),
                                 [f"{name}: 1.0.0 is of 2026-01-03; in {CHANGELOG} of 2026-01-02"])
        self.assertEqual(len(self.found(CHANGELOG, "2026-01-02", "2026-01-03")), 2)

    def test_another_text_is_reported_in_each_file(self):
        for name in (DEBIAN, METAINFO):
            with self.subTest(name):
                self.assertEqual(self.found(name, "It is faster.", "It is slower."),
                                 [f"{name}: 1.1.0 lacks under Changed: It is faster.",
                                  f"{name}: 1.1.0 has, unlike {CHANGELOG}, under Changed: It is slower."])
        self.assertEqual(len(self.found(CHANGELOG, "It is faster.", "It is slower.")), 4)

    def test_a_missing_change_is_reported(self):
        for name, line in ((DEBIAN, "  * It is faster.\n"), (METAINFO, "          <li>It is faster.</li>\n")):
            with self.subTest(name):
                self.assertEqual(self.found(name, line, ""), [f"{name}: 1.1.0 lacks under Changed: It is faster."])

    def test_another_kind_is_reported(self):
        for name in (DEBIAN, METAINFO):
            with self.subTest(name):
                self.assertIn(f"{name}: 1.1.0 lacks under Fixed: It works with names < 8 characters & more.",
                              self.found(name, "Fixed", "Security"))

    def test_another_order_is_reported(self):
        lines = TREE[METAINFO].splitlines(keepends=True)[10:12]
        self.assertEqual(self.found(METAINFO, "".join(lines), "".join(reversed(lines))),
                         [f"{METAINFO}: 1.1.0 has its changes in another order than {CHANGELOG}"])

    def test_a_changelog_of_another_form_is_reported(self):
        for old, new in (("## [1.0.0] - 2026-01-02", "## 1.0.0"), ("- It exists.", "It exists."), ("- It exists.", "")):
            with self.subTest(new):
                self.assertTrue(self.found(CHANGELOG, old, new)[0].startswith(f"{CHANGELOG}: "))
        self.assertIn("has the title Faster instead of one of Added, Changed, ",
                      self.found(CHANGELOG, "Changed", "Faster")[0])

    def test_changes_of_no_version_yet_are_ignored(self):
        section = "## [Unreleased]\n\n### Fixed\n\n- More.\n\n"
        self.assertEqual(self.found(CHANGELOG, "## [1.1.0]", f"{section}## [1.1.0]"), [])

    def test_it_writes_the_other_files_from_the_changelog(self):
        (self.root / DEBIAN).write_text("", encoding="utf-8")
        (self.root / METAINFO).write_text(TREE[METAINFO].replace("faster", "slower"), encoding="utf-8")
        for name in NEWEST.keys() - {PROJECT}:
            (self.root / name).write_text(TREE[name].replace("1.1.0", "1.0.0"), encoding="utf-8")
        self.assertEqual(main(["--write", str(self.root)]), 0)
        for name, text in TREE.items():
            self.assertEqual(self.text(name), text)


if __name__ == "__main__":
    unittest.main()
