#!/usr/bin/env python3
"""Checks that the devices in the pictures of the windows have names as users know them, and not as tests need them.

Usage: check_pictures.py ROOT
"""

import ast
import pathlib
import re
import sys

SOURCE = "tests/hosts/window_pictures.py"
LISTS = ("THREE", "THIRTY")
# Tests use characters such as "&" and "<", and numbers, to tell devices apart.
PLAIN = re.compile(r"[A-Za-z][A-Za-z0-9 .-]*")
NUMBERED = re.compile(r"\w+ \d{1,2}")


def names(root):
    """Returns the names of all devices in the pictures."""
    found = {}
    for statement in ast.parse((root / SOURCE).read_text(encoding="utf-8")).body:
        if isinstance(statement, ast.Assign) and statement.targets[0].id in LISTS:
            code = compile(ast.Expression(statement.value), SOURCE, "eval")
            found[statement.targets[0].id] = eval(code, {"__builtins__": {"range": range}}, dict(found))
    return sorted({name for each in found.values() for name in each})


def main():
    root = pathlib.Path(sys.argv[1])
    shown = names(root)
    wrong = [f"{name!r} is not the name of a real device" for name in shown
             if not PLAIN.fullmatch(name) or NUMBERED.fullmatch(name)]
    if not shown:
        wrong.append(f"{SOURCE} has no list of devices")
    print("\n".join(wrong) or f"the pictures show {len(shown)} devices, with names as users know them")
    return 1 if wrong else 0


if __name__ == "__main__":
    sys.exit(main())
