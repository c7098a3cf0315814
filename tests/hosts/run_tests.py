#!/usr/bin/python3
"""Tests the whole program in the trays of real panels. The tests act as a user and as a host."""

import argparse
import pathlib
import signal
import subprocess
import sys
import tempfile
import traceback

ROOT = pathlib.Path(__file__).resolve().parents[2]
sys.path.append(str(ROOT / "tests/system/guest"))

import secluded
from tally import Tally
from waiting import Failed, now


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("binary", nargs="?", help="the program to test, instead of the one in the packages")
    parser.add_argument("--only", action="append", default=[], metavar="NAME",
                        help="run this scenario, or this host's, or HOST/SCENARIO; may be repeated")
    parser.add_argument("--built", action="store_true", help="take the packages that were built last")
    parser.add_argument("--keep", action="store_true", help="keep the folders of the desktops, also when all went well")
    arguments = parser.parse_args()
    if not (arguments.built or arguments.binary) and subprocess.run([ROOT / "tools/build-packages"]).returncode != 0:
        print("hosts: the packages were not built", file=sys.stderr)
        return 1
    binary = pathlib.Path(arguments.binary or ROOT / "build/packages/program/ble-kovra").resolve()
    if not binary.is_file():
        print(f"hosts: there is no program at {binary}", file=sys.stderr)
        return 1
    folder = pathlib.Path(tempfile.mkdtemp(prefix="kovra-hosts-"))
    # sway may run as another user, who must be able to enter this folder.
    folder.chmod(0o755)
    tally = Tally("hosts", folder)
    secluded.adopt_orphans()
    try:
        secluded.seclude()
        # These modules load libraries that may be missing, so they are imported in the try block.
        import panels
        import scenarios
        import login, spoken, window_process  # imported for their scenarios
        for panel in panels.PANELS:
            run_on(panel, binary, scenarios.SCENARIOS, arguments.only, tally)
    except (secluded.NotSecluded, ImportError) as failure:
        tally.fail("the hosts", "", str(failure))
    except KeyboardInterrupt:
        tally.fail("the hosts", "", "interrupted")
    finally:
        secluded.end_descendants()
    return tally.close(arguments.keep)


def run_on(panel, binary, scenarios, only, tally):
    """Runs the chosen scenarios on one panel. They share a desktop; after a failure the next one gets a new desktop."""
    from world import World
    world = None
    for name, (sentence, only_on, function) in scenarios.items():
        full = f"{panel.name}/{name}"
        if panel.name != only_on and (only_on or not panel.takes_items) or only and not {name, panel.name, full} & set(only):
            continue
        start = now()
        try:
            if world is None:
                world = World(panel, binary, tally.folder)
                world.start_panel()
            world.prepare()
            measured = function(world)
            tally.ok(full, sentence, measured, now() - start)
        except Failed as failure:
            world = tally.fail(full, sentence, str(failure), world)
        except Exception:
            world = tally.fail(full, sentence, traceback.format_exc(), world)
    if world:
        world.end_program()
        world.close()


if __name__ == "__main__":
    # SIGTERM raises KeyboardInterrupt, so that all processes are ended.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    sys.exit(main())
