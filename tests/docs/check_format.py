#!/usr/bin/env python3
"""Checks that clang-format would leave every source as it is.

  check_format.py [ROOT]      ROOT: the project's folder; by default the one that contains this file

Version 14 decides: other versions lay out some lines in another way. Exits with 1 if a file is laid out differently, or if
there is no such clang-format.
"""
import pathlib
import re
import shutil
import subprocess
import sys

VERSION = "14"
FOLDERS = ("BLE_kovra", "helper", "packaging", "bench", "tests")
SUFFIXES = {".cpp", ".h", ".mm"}


def formatter():
    """The path of clang-format 14, under whichever name it is installed; None where it is not."""
    for name in (f"clang-format-{VERSION}", "clang-format"):
        path = shutil.which(name)
        if path and re.search(rf"version {VERSION}\.", subprocess.run([path, "--version"], capture_output=True, text=True).stdout):
            return path
    return None


def main():
    top = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]
    program = formatter()
    if program is None:
        print(f"clang-format {VERSION} is missing")
        return 1
    sources = sorted(path for folder in FOLDERS for path in (top / folder).rglob("*") if path.suffix in SUFFIXES)
    done = subprocess.run([program, "--dry-run", "-Werror", *sources], capture_output=True, text=True)
    print(done.stderr or f"{len(sources)} sources are laid out as .clang-format says")
    return 1 if done.returncode or not sources else 0


if __name__ == "__main__":
    sys.exit(main())
