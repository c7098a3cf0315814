#!/usr/bin/env python3
"""Checks that all files say the same about the versions.

  check_releases.py [ROOT]            ROOT: the project's folder; by default the one that contains this file
  check_releases.py --write [ROOT]    first writes the other files from CHANGELOG.md, except CMakeLists.txt

Every version must have the same number, date and changes in CHANGELOG.md, debian/changelog and the metainfo. The newest
one must be the version of the project in CMakeLists.txt, of the RPM spec and of the PKGBUILD. In CHANGELOG.md, a section
"[Unreleased]" belongs to no version. The check prints one line for each difference. Its exit status is 1 if there is any.
"""
import collections
import datetime
import email.utils
import pathlib
import re
import sys
import textwrap
import xml.etree.ElementTree
from xml.sax.saxutils import escape

CHANGELOG = "CHANGELOG.md"
DEBIAN = "debian/changelog"
METAINFO = "packaging/org.ble_kovra.BLEKovra.metainfo.xml"
PROJECT = "CMakeLists.txt"
# In these files, the group matches the newest version.
NEWEST = {PROJECT: re.compile(r"^project\(\S+ VERSION (\S+)", re.M),
          "packaging/rpm/ble-kovra.spec": re.compile(r"^Version:[ \t]*(\S+)$", re.M),
          "packaging/arch/PKGBUILD": re.compile(r"^pkgver=(\S+)$", re.M)}
KINDS = {"Added", "Changed", "Deprecated", "Removed", "Fixed", "Security"}
# A change has a kind and a text.
Release = collections.namedtuple("Release", "version date changes")


class Malformed(Exception):
    pass


def read(root, name):
    return (root / name).read_text(encoding="utf-8")


def changes(name, lines, title, mark):
    """Returns the changes in these lines. `title` matches the title of a kind; `mark` begins a change."""
    kind, found = None, []
    for line in lines:
        if match := re.fullmatch(title, line):
            kind = match[1]
        elif line.startswith(mark):
            found.append((kind, line.removeprefix(mark)))
        elif line.strip():
            if not found or line[:len(mark)].strip():
                raise Malformed(f"{name}: no change begins with {line!r}")
            found[-1] = (kind, f"{found[-1][1]} {line.strip()}")
    return found


def from_changelog(root):
    found = []
    for section in re.split(r"^## ", read(root, CHANGELOG), flags=re.M)[1:]:
        title, *lines = section.splitlines()
        if title == "[Unreleased]":
            continue
        match = re.fullmatch(r"\[(\d+\.\d+\.\d+)\] - (\d{4}-\d\d-\d\d)", title)
        if not match:
            raise Malformed(f'{CHANGELOG}: a title is "[1.2.3] - 2026-01-31", not "{title}"')
        found.append(Release(match[1], match[2], changes(CHANGELOG, lines, r"### (\w+)", "- ")))
    return found


def from_debian(root):
    found = []
    for entry in re.split(r"^(?=\S)", read(root, DEBIAN), flags=re.M)[1:]:
        first, *lines, last = entry.rstrip().splitlines()
        version = re.fullmatch(r"ble-kovra \((\S+)\) unstable; urgency=\w+", first)
        end = re.fullmatch(r" -- .+ <.+>  (.+)", last)
        if not version or not end:
            raise Malformed(f"{DEBIAN}: no entry begins with {first!r} and ends with {last!r}")
        date = email.utils.parsedate_to_datetime(end[1]).astimezone(datetime.timezone.utc).date()
        found.append(Release(version[1], str(date), changes(DEBIAN, lines, r"  \[ (\w+) \]", "  * ")))
    return found


def from_metainfo(root):
    found = []
    for release in xml.etree.ElementTree.fromstring(read(root, METAINFO).encode()).findall("releases/release"):
        kind, texts = None, []
        for element in release.iterfind("description//*"):
            text = " ".join((element.text or "").split())
            if element.tag == "p":
                kind = text
            elif element.tag == "li":
                texts.append((kind, text))
        found.append(Release(release.get("version"), release.get("date"), texts))
    return found


def differences(root):
    try:
        wanted = from_changelog(root)
        pages = {DEBIAN: from_debian(root), METAINFO: from_metainfo(root)}
    except Malformed as problem:
        yield str(problem)
        return
    newest = wanted[0].version if wanted else "none"
    for name, pattern in NEWEST.items():
        found = ", ".join(pattern.findall(read(root, name))) or "missing"
        if found != newest:
            yield f"{name}: the version is {found}; the newest one in {CHANGELOG} is {newest}"
    for release in wanted:
        if not release.changes:
            yield f"{CHANGELOG}: {release.version} has no changes"
        for kind in sorted({str(kind) for kind, _ in release.changes} - KINDS):
            yield f"{CHANGELOG}: {release.version} has the title {kind} instead of one of {', '.join(sorted(KINDS))}"
    versions = [release.version for release in wanted]
    for page, releases in pages.items():
        if [release.version for release in releases] != versions:
            yield f"{page}: the versions are {[release.version for release in releases]}; in {CHANGELOG} {versions}"
            continue
        for release, other in zip(wanted, releases):
            if other.date != release.date:
                yield f"{page}: {release.version} is of {other.date}; in {CHANGELOG} of {release.date}"
            for kind, text in [change for change in release.changes if change not in other.changes]:
                yield f"{page}: {release.version} lacks under {kind}: {text}"
            for kind, text in [change for change in other.changes if change not in release.changes]:
                yield f"{page}: {release.version} has, unlike {CHANGELOG}, under {kind}: {text}"
            if other.changes != release.changes and sorted(other.changes) == sorted(release.changes):
                yield f"{page}: {release.version} has its changes in another order than {CHANGELOG}"


def by_kind(release):
    """Returns each kind with its texts, in the order of the changes."""
    found = {}
    for kind, text in release.changes:
        found.setdefault(kind, []).append(text)
    return found.items()


def write(root):
    releases = from_changelog(root)
    if not releases:
        raise Malformed(f"{CHANGELOG} has no version")
    maintainer = re.search(r"^Maintainer: (.+)$", read(root, "debian/control"), re.M)[1]
    entries, elements = [], []
    for release in releases:
        # The hour is fixed. The packages take the times of their files from it.
        noon = datetime.datetime.fromisoformat(f"{release.date}T12:00:00+00:00")
        entries.append(f"ble-kovra ({release.version}) unstable; urgency=medium\n")
        elements += [f'    <release version="{release.version}" date="{release.date}">', "      <description>"]
        for kind, texts in by_kind(release):
            entries.append(f"  [ {kind} ]")
            elements += [f"        <p>{kind}</p>", "        <ul>"]
            for text in texts:
                entries.append(textwrap.fill(text, 80, initial_indent="  * ", subsequent_indent="    ",
                                             break_long_words=False, break_on_hyphens=False))
                elements.append(f"          <li>{escape(text)}</li>")
            entries[-1] += "\n"
            elements.append("        </ul>")
        entries.append(f" -- {maintainer}  {email.utils.format_datetime(noon)}\n")
        elements += ["      </description>", "    </release>"]
    (root / DEBIAN).write_text("\n".join(entries), encoding="utf-8")
    text, count = re.subn(r"(?<=\n  <releases>\n).*?(?=  </releases>\n)", lambda _: "\n".join([*elements, ""]),
                          read(root, METAINFO), flags=re.S)
    if count != 1:
        raise Malformed(f"{METAINFO} has no <releases> on lines of their own")
    (root / METAINFO).write_text(text, encoding="utf-8")
    for name in NEWEST.keys() - {PROJECT}:
        text = NEWEST[name].sub(lambda match: match[0].replace(match[1], releases[0].version), read(root, name))
        (root / name).write_text(text, encoding="utf-8")


def main(arguments):
    is_writing = arguments[:1] == ["--write"]
    folders = arguments[is_writing:]
    root = pathlib.Path(folders[0]) if folders else pathlib.Path(__file__).resolve().parents[2]
    if is_writing:
        try:
            write(root)
        except Malformed as problem:
            print(problem)
            return 1
    found = list(differences(root))
    print("\n".join(found) or "every file says the same about the versions")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
