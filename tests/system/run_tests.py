#!/usr/bin/env python3
"""Runs the system tests: boots three virtual machines, which run the scenarios, and reports the results.

The first machine runs only the program on a kernel. The others are whole laptops, with systemd and people who log in.
One of them is for the scenarios of the installation. A fourth machine, "long", is booted only if it is named: it skips
the time in which nothing happens, and plays a long life.
"""

import argparse
import pathlib
import shutil
import signal
import sys
import tempfile

import built_packages
import kernel
from initramfs import BusyboxMissing
from machine import BARE, LAPTOP, Machine, MachineFailed
from qmp import QMPError

ROOT = pathlib.Path(__file__).resolve().parents[2]
LONG = "long"
MACHINES = {"bare": BARE, "laptop": LAPTOP, "installation": LAPTOP, LONG: LAPTOP}


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("binary", nargs="?", help="the program to test, instead of the one in the packages")
    parser.add_argument("--only", action="append", default=[], metavar="NAME", help="run this scenario; may be repeated")
    parser.add_argument("--machine", choices=list(MACHINES), help="boot this machine alone")
    parser.add_argument("--built", action="store_true", help="take the packages that were built last")
    parser.add_argument("--earlier", type=pathlib.Path, metavar="FOLDER",
                        help="the packages of another version or release, for the scenarios that upgrade and downgrade")
    parser.add_argument("--events", type=int, default=60,
                        help="how many events the scenario random_life plays, and how many plugs long_life")
    parser.add_argument("--seed", type=int, default=0, help="the seed of these two, instead of a new one")
    parser.add_argument("--keep", action="store_true", help="keep the machines' logs, also when all went well")
    arguments = parser.parse_args()
    logs = pathlib.Path(tempfile.mkdtemp(prefix="kovra-system-"))
    tally = Tally()
    try:
        if not arguments.built:
            built_packages.build()
        binary = pathlib.Path(arguments.binary or built_packages.PROGRAM).resolve()
        if not binary.is_file():
            raise built_packages.PackagesMissing(f"there is no program at {binary}")
        task = {"kind": "test", "binary": str(binary), "only": arguments.only,
                "life": {"events": arguments.events, "seed": arguments.seed}}
        machine_kernel = kernel.prepare(ROOT / "build/vm/kernel", say)
        task["modules"] = str(machine_kernel.modules)
        chosen = [arguments.machine] if arguments.machine else [name for name in MACHINES if name != LONG]
        for name in chosen:
            if MACHINES[name] == LAPTOP:
                task["packages"] = built_packages.paths()
                task["earlier"] = built_packages.paths(arguments.earlier) if arguments.earlier else []
            say(f"starting the machine {name}")
            machine = Machine(machine_kernel, logs / name, MACHINES[name], skips_idle_time=name == LONG)
            play(machine, {**task, "machine": name}, tally, name)
    except (kernel.KernelMissing, BusyboxMissing, built_packages.PackagesMissing) as failure:
        tally.fail("the machines", str(failure))
    except KeyboardInterrupt:
        tally.fail("the machines", "interrupted")
    tally.close()
    if tally.failed or arguments.keep:
        say(f"the machines' logs are in {logs}")
    else:
        shutil.rmtree(logs)
    print(f"system: {tally.passed} passed, {tally.failed} failed", flush=True)
    return 1 if tally.failed else 0


def play(machine, task, tally, name):
    try:
        with machine:
            for message in machine.messages(task):
                tally.take(message)
    except (MachineFailed, QMPError) as failure:
        tally.fail(f"the machine {name}", str(failure))


class Tally:
    def __init__(self):
        self.passed = self.failed = 0
        # Planned scenarios without a result. close() counts them as failed.
        self._open = []
        # For each machine, the names given with --only that it does not know. A name is wrong if no machine knows it.
        self._unknown = []

    def take(self, message):
        if message["kind"] == "plan":
            self._open += message["names"]
            self._unknown.append(set(message["unknown"]))
        elif message["kind"] == "result":
            self._open.remove(message["name"])
            if message["reason"]:
                self.fail(message["name"], message["reason"], message["sentence"])
            else:
                self.passed += 1
                measured = f" [{message['measured']}]" if message["measured"] else ""
                print(f"ok      {message['name']}: {message['sentence']}{measured} ({message['seconds']:.1f} s)",
                      flush=True)
        elif message["kind"] == "progress":
            say(message["text"])
        elif message["kind"] == "broken":
            self.fail("the guest", message["text"])

    def fail(self, name, reason, sentence=""):
        self.failed += 1
        print(f"FAILED  {name}: {sentence}\n        {reason}", flush=True)

    def close(self):
        for name in sorted(set.intersection(*self._unknown)) if self._unknown else []:
            self.fail(name, "there is no such scenario")
        for name in self._open:
            self.fail(name, "it did not run")
        if self.passed + self.failed == 0:
            self.fail("the system tests", "nothing ran")


def say(text):
    print(f"system: {text}", flush=True)


if __name__ == "__main__":
    # SIGTERM raises KeyboardInterrupt, so that the `with` block ends the virtual machine.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    sys.exit(main())
