"""Runs the benchmarks and says which limits are kept.

Everything is a ratio to a floor, a program that does the least with which the figure can be compared, taken in the same
run and in turns: such figures hold on any machine. Ends with 1 if a limit is missed or something could not be measured.
"""

import argparse
import pathlib
import sys
import traceback

HERE = pathlib.Path(__file__).resolve().parent
ROOT = HERE.parent
sys.path[:0] = [str(HERE), str(HERE / "sections"), str(ROOT / "tests" / "system")]

import flag_write
import helper
import plug_to_flag
import plug_to_pad
import publication
import start_and_idle
import tray
import tray_peers
import window
from builds import Tools
from figures import Report, say, wait_for_quiet
from private import CannotRun

SECTIONS = {
    "publication": lambda report, tools, options: publication.run(report, tools, options.rounds),
    "flag-write": lambda report, tools, options: flag_write.run(report, tools, options.rounds),
    "start-and-idle": lambda report, tools, options: start_and_idle.run(report, tools, options.rounds, options.idle),
    "tray": lambda report, tools, options: tray.run(report, tools, options.starts, options.idle),
    "tray-peers": lambda report, tools, options: tray_peers.run(report, tools, options.rounds),
    "window": lambda report, tools, options: window.run(report, tools, options.starts, options.idle),
    "helper": lambda report, tools, options: helper.run(report, tools, options.changes, options.idle),
    "plug-to-flag": lambda report, tools, options: plug_to_flag.run(report, tools, options.plugs),
    "plug-to-pad": lambda report, tools, options: plug_to_pad.run(report, options.plugs),
}


def main():
    parser = argparse.ArgumentParser(prog="bench/run", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--only", action="append", choices=list(SECTIONS), help="this section; may be repeated")
    parser.add_argument("--rounds", type=int, default=9, help="rounds in turn, of which the median counts (9)")
    parser.add_argument("--starts", type=int, default=15, help="starts in turn of the section tray (15)")
    parser.add_argument("--idle", type=float, default=60, metavar="SECONDS", help="how long to watch idling (60)")
    parser.add_argument("--plugs", type=int, default=200, help="plugs in the virtual machine, 2.5 s each (200)")
    parser.add_argument("--changes", type=int, default=500,
                        help="changes of the flag each way of the section helper (500)")
    parser.add_argument("--calm", type=float, default=60, metavar="SECONDS",
                        help="how long to wait for a quiet machine before each section (60)")
    parser.add_argument("--against", metavar="FOLDER",
                        help="also compare with the build in this folder, made by the preset bench, in the sections "
                             "publication, flag-write, start-and-idle, tray and window")
    options = parser.parse_args()
    try:
        tools, report = Tools(options.against, min(options.calm, 20)), Report()
    except CannotRun as reason:
        sys.exit(f"bench: {reason}")
    for name, section in SECTIONS.items():
        if options.only and name not in options.only:
            continue
        say(f"section {name}")
        wait_for_quiet(options.calm)
        try:
            section(report, tools, options)
        except CannotRun as reason:
            report.leave_out(name, reason)
        except Exception as failure:
            traceback.print_exc()
            report.leave_out(name, failure)
    return 0 if report.close() else 1


if __name__ == "__main__":
    sys.exit(main())
