"""Runs the benchmarks and prints which limits are kept.

Most figures are compared with a floor: a program that does the minimum work for a fair comparison. Both run in turn in
the same run, so their ratio holds on any machine. The exit status is 1 if a limit is exceeded or a measurement fails.
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
    "plug-to-pad": lambda report, tools, options: plug_to_pad.run(report, tools, options.plugs),
}


def main():
    parser = argparse.ArgumentParser(prog="bench/run", description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--only", action="append", choices=list(SECTIONS), help="this section; may be repeated")
    parser.add_argument("--rounds", type=int, default=9, help="rounds; the median counts (9)")
    parser.add_argument("--starts", type=int, default=15,
                        help="starts of each program in the sections tray and window (15)")
    parser.add_argument("--idle", type=float, default=60, metavar="SECONDS",
                        help="how long to measure the idle cost (60)")
    parser.add_argument("--plugs", type=int, default=200, help="plugs in the virtual machine, 2.5 s each (200)")
    parser.add_argument("--changes", type=int, default=500,
                        help="changes of the flag to each value in the section helper (500)")
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
