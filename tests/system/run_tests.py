#!/usr/bin/env python3
"""The system tests: boots a virtual machine, lets it run the scenarios, and says how each went."""

import argparse
import pathlib
import shutil
import signal
import sys
import tempfile

import kernel
from initramfs import BusyboxMissing
from machine import Machine, MachineFailed
from qmp import QMPError

ROOT = pathlib.Path(__file__).resolve().parents[2]


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("binary", nargs="?", default=ROOT / "build/release/ble-kovra", help="the program to test")
    parser.add_argument("--only", action="append", default=[], metavar="NAME", help="run this scenario; may be repeated")
    parser.add_argument("--keep", action="store_true", help="keep the machine's logs, also when all went well")
    arguments = parser.parse_args()
    binary = pathlib.Path(arguments.binary).resolve()
    if not binary.is_file():
        print(f"system: there is no program at {binary}", file=sys.stderr)
        return 1

    logs = pathlib.Path(tempfile.mkdtemp(prefix="kovra-system-"))
    tally = Tally()
    try:
        machine_kernel = kernel.prepare(ROOT / "build/vm/kernel", say)
        say("starting the virtual machine")
        task = {"kind": "test", "binary": str(binary), "modules": str(machine_kernel.modules), "only": arguments.only}
        with Machine(machine_kernel, logs) as machine:
            for message in machine.messages(task):
                tally.take(message)
    except (MachineFailed, kernel.KernelMissing, BusyboxMissing, QMPError) as failure:
        tally.fail("the machine", str(failure))
    except KeyboardInterrupt:
        tally.fail("the machine", "interrupted")
    tally.close()
    if tally.failed or arguments.keep:
        say(f"the machine's logs are in {logs}")
    else:
        shutil.rmtree(logs)
    print(f"system: {tally.passed} passed, {tally.failed} failed", flush=True)
    return 1 if tally.failed else 0


class Tally:
    def __init__(self):
        self.passed = self.failed = 0
        # What was announced and has not reported yet: a scenario that could not run has failed.
        self._open = []

    def take(self, message):
        if message["kind"] == "plan":
            self._open = list(message["names"])
            for name in message["unknown"]:
                self.fail(name, "there is no such scenario")
        elif message["kind"] == "result":
            self._open.remove(message["name"])
            if message["reason"]:
                self.fail(message["name"], message["reason"], message["sentence"])
            else:
                self.passed += 1
                measured = f" [{message['measured']}]" if message["measured"] else ""
                print(f"ok      {message['name']}: {message['sentence']}{measured} ({message['seconds']:.1f} s)",
                      flush=True)
        elif message["kind"] == "broken":
            self.fail("the guest", message["text"])

    def fail(self, name, reason, sentence=""):
        self.failed += 1
        print(f"FAILED  {name}: {sentence}\n        {reason}", flush=True)

    def close(self):
        for name in self._open:
            self.fail(name, "it did not run")
        if self.passed + self.failed == 0:
            self.fail("the system tests", "nothing ran")


def say(text):
    print(f"system: {text}", flush=True)


if __name__ == "__main__":
    # As at an interrupt, so that no machine is left behind.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    sys.exit(main())
