#!/usr/bin/env python3
"""Tests the Debian packages: builds them, inspects their contents, and installs them into private folders."""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile
import traceback

TREE = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(TREE / "tests/system/guest"))

import contents, equality, init_script, installing, programs, tree  # imported for their scenarios
from built import Built
from scenario import SCENARIOS
from waiting import Failed, now


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--only", action="append", default=[], metavar="NAME", help="run this scenario; may be repeated")
    parser.add_argument("--built", action="store_true", help="take the packages that were built last")
    arguments = parser.parse_args()
    if not arguments.built and subprocess.run([TREE / "tools/build-packages"]).returncode != 0:
        print("packages: 0 passed, 1 failed", flush=True)
        return 1
    if "FAKEROOTKEY" not in os.environ:
        # fakeroot simulates changes of the owner, so that an ordinary user can install packages into a private folder.
        os.execvp("fakeroot", ["fakeroot", sys.executable, "-B", __file__, "--built", *(f"--only={name}" for name in arguments.only)])
    passed = failed = 0
    with tempfile.TemporaryDirectory(prefix="kovra-packages-") as folder:
        built = Built(TREE, pathlib.Path(folder))
        for name, (sentence, function) in SCENARIOS.items():
            if arguments.only and name not in arguments.only:
                continue
            if succeeds(name, sentence, function, built):
                passed += 1
            else:
                failed += 1
    if passed + failed == 0:
        print("packages: nothing ran")
        failed = 1
    print(f"packages: {passed} passed, {failed} failed", flush=True)
    return 1 if failed else 0


def succeeds(name, sentence, function, built):
    start = now()
    try:
        function(built)
    except Failed as failure:
        reason = str(failure)
    except Exception:
        reason = traceback.format_exc()
    else:
        print(f"ok      {name}: {sentence} ({now() - start:.1f} s)", flush=True)
        return True
    print(f"FAILED  {name}: {sentence}\n        {reason}", flush=True)
    return False


if __name__ == "__main__":
    sys.exit(main())
