#!/usr/bin/env python3
"""Checks that each test is named after what it tests.

  check_names.py [ROOT]      ROOT: the project's folder; by default the one that contains this file

tests/<room> mirrors the room. The tests of Name.cpp are in NameTest.cpp, or in Name<Aspect>Test.cpp if one file is not
enough. A suite is named after a source of the room in the same way: NameTest or Name<Aspect>Test. A contract runs on an
adapter under the adapter's name. In a folder that mirrors no room (contracts, journeys, model and the like) suites are
named after their file. The check prints one line for each name that breaks this rule. Its exit status is 1 if there is
any.
"""
import pathlib
import re
import sys

SUITE = re.compile(r"^\s*(?:TYPED_)?TEST(?:_F|_P)?\(\s*(\w+)", re.M)
CONTRACT = re.compile(r"^\s*INSTANTIATE_TYPED_TEST_SUITE_P\(\s*(\w+)", re.M)


def classes_of(root, folder):
    """Returns the names of the sources in the room that this test folder mirrors. The name of main is "Program".

    The result is empty if the folder mirrors no room.
    """
    found = set()
    for room in (root / "BLE_kovra" / folder, root / folder):
        found |= {path.stem for path in room.glob("*") if path.suffix in (".h", ".cpp", ".mm")}
    return {"Program" if name == "main" else name for name in found}


def wrong_names(root):
    tests = root / "tests"
    for path in sorted(tests.rglob("*.cpp")):
        text = path.read_text(encoding="utf-8")
        suites, contracts = set(SUITE.findall(text)), set(CONTRACT.findall(text))
        if not suites and not contracts:
            continue
        name = path.relative_to(root)
        subject = path.stem.removesuffix("Test")
        if subject == path.stem:
            yield f"{name}: a file of tests ends in Test.cpp"
        classes = classes_of(root, path.parent.relative_to(tests))
        if classes and not any(subject.startswith(each) for each in classes):
            yield f"{name}: {subject} begins with the name of no source in the room"
        for suite in sorted(suites):
            if not suite.endswith("Test"):
                yield f"{name}: the suite {suite} does not end in Test"
            if not any(suite.startswith(each) for each in classes or {subject}):
                yield f"{name}: the suite {suite} begins with the name of no class that is tested here"
        for contract in sorted(contracts):
            if not any(contract.startswith(each) for each in classes or {subject}):
                yield f"{name}: the contract runs as {contract}, which is no class of the room"


if __name__ == "__main__":
    top = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]
    found = list(wrong_names(top))
    print("\n".join(found) or "every test is named after what it tests")
    sys.exit(1 if found else 0)
