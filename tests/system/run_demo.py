#!/usr/bin/env python3
"""Runs the demo in a throwaway virtual machine, and prints what happens when a mouse is plugged and unplugged."""

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
BINARY = ROOT / "build/release/ble-kovra"

BEFORE = """
BLE-kovra's main job, played by the real program on a real kernel in a throwaway virtual machine.
"flag" is the content of /Library/Application Support/ble-kovra/state, watched from outside the program;
"trackpad" is what the privileged helper does with it.

  time     what happens                                            flag   trackpad   delay
  -------  ------------------------------------------------------  -----  ---------  ------------"""

AFTER = """
That was the main job: the trackpad is muted while the chosen mouse is connected, and works again two seconds
after the mouse is removed. The mouse was chosen by this file, ~/.config/ble-kovra/preferences.json:

  {"selectedDeviceIDs": ["QEMU QEMU USB Mouse#1575:1"]}

The entry is the mouse's name with the numbers of its vendor and product. Nothing was changed on this computer.
demo: done"""


def main():
    logs = pathlib.Path(tempfile.mkdtemp(prefix="kovra-demo-"))
    try:
        machine_kernel = kernel.prepare(ROOT / "build/vm/kernel", say)
        say("starting the virtual machine (some ten seconds)")
        task = {"kind": "demo", "binary": str(BINARY), "modules": str(machine_kernel.modules)}
        with Machine(machine_kernel, logs) as machine:
            show(machine.messages(task))
    except (MachineFailed, kernel.KernelMissing, BusyboxMissing, QMPError, DemoFailed) as failure:
        print(f"demo: failed: {failure} (logs in {logs})", file=sys.stderr)
        return 1
    except KeyboardInterrupt:
        print("\ndemo: interrupted", file=sys.stderr)
        return 1
    print(AFTER)
    shutil.rmtree(logs)
    return 0


class DemoFailed(Exception):
    pass


def show(messages):
    rows = 0
    for message in messages:
        if message["kind"] == "broken":
            raise DemoFailed(message["text"].strip().splitlines()[-1])
        if not rows:
            print(BEFORE)
        rows += 1
        pad = "muted" if message["flag"] == "on" else "works"
        delay = "" if message["delay"] is None else f"after {message['delay']:.2f} s"
        print(f"  {message['time']:5.1f} s  {message['event']:<54}  {message['flag']:<5}  {pad:<9}  {delay}".rstrip(),
              flush=True)
    if not rows:
        raise DemoFailed("the machine showed nothing")


def say(text):
    print(f"demo: {text}", flush=True)


if __name__ == "__main__":
    # SIGTERM raises KeyboardInterrupt, so that the `with` block ends the virtual machine.
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    sys.exit(main())
