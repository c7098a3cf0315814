#!/usr/bin/env python3
"""Checks that the files, tests and links that the pages name exist.

  check_pages.py [ROOT]      ROOT: the project's folder; by default the one that contains this file

In docs/where.md it checks every file and test. In every page it checks the targets of links, and the paths in
backquotes below BLE_kovra, tests, tools, bench and docs. It prints one line for each name that does not exist, and for
each row of docs/where.md without a file or a test. Its exit status is 1 if there is any.
"""
import pathlib
import re
import sys


def known_tests(root):
    """Returns the suites and the checks that CMake adds, the tests as Suite.Name, the scenarios as "kind: sentence"."""
    suites, tests, scenarios = set(), set(), []
    for source in (root / "tests").rglob("*"):
        if source.suffix in (".cpp", ".h"):
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


def wrong_rows(root):
    suites, tests, scenarios = known_tests(root)
    rows = 0
    for line in (root / "docs" / "where.md").read_text(encoding="utf-8").splitlines():
        cells = [cell.strip() for cell in line.strip().strip("|").split(" | ")]
        if not line.startswith("| ") or len(cells) != 3 or cells[0] == "Behaviour":
            continue
        rows += 1
        behaviour, files, named = cells[0], re.findall(r"`([^`]+)`", cells[1]), re.findall(r"`([^`]+)`", cells[2])
        if not files or not named:
            yield f"no file or no test: {behaviour}"
        for file in files:
            if not (root / file).is_file():
                yield f"no such file: {file} ({behaviour})"
        for name in named:
            if name.startswith(("system: ", "hosts: ", "packages: ")):
                found = any(sentence.startswith(name) for sentence in scenarios)
            else:
                found = name in tests if "." in name else name in suites
            if not found:
                yield f"no such test: {name} ({behaviour})"
    if rows == 0:
        yield "docs/where.md has no rows"


if __name__ == "__main__":
    top = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]
    found = [*wrong_rows(top), *dead_links(top)]
    print("\n".join(found) or "every file, test and link that the pages name exists")
    sys.exit(1 if found else 0)
