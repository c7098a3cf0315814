#!/usr/bin/env python3
"""Checks that what the pages name exists: the files and tests in docs/where.md, the tests in SECURITY.md, all links.

  check_pages.py [ROOT]      ROOT: the project's folder; by default the one that contains this file

In docs/where.md it checks every file and test. In every page it checks the targets of links, and the paths in
backquotes below BLE_kovra, tests, tools, bench and docs. It prints one line for each name that does not exist, and for
each row of docs/where.md without a file or a test. Its exit status is 1 if there is any.
"""
import pathlib
import re
import sys


def known_tests(root):
    """Returns the suites with the checks of CMake, the tests as "Suite.Name", the scenarios as "ring: sentence"."""
    suites, tests, scenarios = set(), set(), []
    for source in (root / "tests").rglob("*"):
        if source.suffix in (".cpp", ".mm", ".h"):
            text = source.read_text(encoding="utf-8")
            for suite, name in re.findall(r"^\s*(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+),\s*(\w+)\)", text, re.M):
                suites.add(suite)
                tests.add(f"{suite}.{name}")
        elif source.name == "CMakeLists.txt":
            suites.update(re.findall(r"kovra_check\(\s*(\w+)", source.read_text(encoding="utf-8")))
        elif source.suffix == ".py":
            kind = source.relative_to(root / "tests").parts[0]
            sentences = re.findall(r"@scenario\(\s*\"((?:[^\"\\]|\\.)*)\"", source.read_text(encoding="utf-8"))
            scenarios += [f"{kind}: {sentence}" for sentence in sentences]
    return suites, tests, scenarios


def dead_links(root):
    pages = [*root.glob("*.md"), *(root / "docs").rglob("*.md")]
    for page in pages:
        for target in re.findall(r"\]\(([^)#:]+)\)", page.read_text(encoding="utf-8")):
            if not (page.parent / target).exists():
                yield f"dead link in {page.relative_to(root)}: {target}"
        for path in re.findall(r"`((?:BLE_kovra|tests|tools|bench|docs)/[\w./-]+)`", page.read_text(encoding="utf-8")):
            if not (root / path).exists():
                yield f"no such file, named in {page.relative_to(root)}: {path}"


def rows(root, page, titles):
    """Returns the rows of the tables with these titles, each row as a list of cells. A missing cell is empty."""
    found, is_inside = [], False
    for line in (root / page).read_text(encoding="utf-8").splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split(" | ")]
        is_inside = line.startswith("|") and (is_inside or cells == titles)
        if is_inside and cells != titles and not line.startswith("|---"):
            found.append(cells[:len(titles)] + [""] * (len(titles) - len(cells)))
    return found


def names(cell):
    return re.findall(r"`([^`]+)`", cell)


def wrong_tests(known, cell, row):
    suites, tests, scenarios = known
    for name in names(cell):
        if name.startswith(("system: ", "hosts: ", "packages: ")):
            found = any(sentence.startswith(name) for sentence in scenarios)
        else:
            found = name in tests if "." in name else name in suites
        if not found:
            yield f"no such test: {name} ({row})"


def wrong_rows(root):
    known = known_tests(root)
    behaviours = rows(root, "docs/where.md", ["Behaviour", "File", "Test"])
    for behaviour, files, tests in behaviours:
        if not names(files) or not names(tests):
            yield f"no file or no test: {behaviour}"
        for file in names(files):
            if not (root / file).is_file():
                yield f"no such file: {file} ({behaviour})"
        yield from wrong_tests(known, tests, behaviour)
    promises = rows(root, "SECURITY.md", ["Promise", "Test"])
    for promise, tests in promises:
        if not names(tests):
            yield f"no test: {promise}"
        yield from wrong_tests(known, tests, promise)
    for page, found in (("docs/where.md", behaviours), ("SECURITY.md", promises)):
        if not found:
            yield f"{page} has no rows"


if __name__ == "__main__":
    top = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]
    found = [*wrong_rows(top), *dead_links(top)]
    print("\n".join(found) or "every file, test and link that the pages name exists")
    sys.exit(1 if found else 0)
