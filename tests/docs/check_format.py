#!/usr/bin/env python3
"""Checks that clang-format would not change any source.

  check_format.py [ROOT]      ROOT: the project's folder; by default the one that contains this file

Only version 19 counts, since other versions produce a different format. Debian 12 and 13 both have it, as the package
clang-format-19. The exit status is 1 if a file would change, if there is no source, or if this version is not installed.
"""
import pathlib
import re
import shutil
import subprocess
import sys

VERSION = "19"
FOLDERS = ("BLE_kovra", "helper", "packaging", "bench", "tests")
SUFFIXES = {".cpp", ".h", ".mm"}


def formatter():
    """Returns the path of clang-format-19, or of clang-format if that is version 19; None if neither is installed."""
    for name in (f"clang-format-{VERSION}", "clang-format"):
        path = shutil.which(name)
        if not path:
            continue
        version = subprocess.run([path, "--version"], capture_output=True, text=True).stdout
        if re.search(rf"version {VERSION}\.", version):
            return path
    return None


def main():
    top = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2]
    program = formatter()
    if program is None:
        print(f"clang-format {VERSION} is missing: install the package clang-format-{VERSION}")
        return 1
    sources = sorted(path for folder in FOLDERS for path in (top / folder).rglob("*") if path.suffix in SUFFIXES)
    done = subprocess.run([program, "--dry-run", "-Werror", *sources], capture_output=True, text=True)
    print(done.stderr or f"{len(sources)} sources are formatted according to .clang-format")
    return 1 if done.returncode or not sources else 0


if __name__ == "__main__":
    sys.exit(main())
