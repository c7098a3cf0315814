"""Functions for programs that may run only inside the throwaway virtual machine."""

import ctypes
import os
import pathlib
import subprocess
import sys
import traceback

import host


def refuse_elsewhere(first_process):
    # The calling program mounts over system folders and writes into them. It must never run on a real system.
    if "kovra.guest" not in pathlib.Path("/proc/cmdline").read_text().split() or (first_process and os.getpid() != 1):
        sys.exit("this program is a part of a throwaway virtual machine and runs nowhere else")


def mount(kind, target, options="rw"):
    pathlib.Path(target).mkdir(parents=True, exist_ok=True)
    subprocess.run(["/bin/busybox", "mount", "-t", kind, "-o", options, kind, target], check=True)


def serve(play):
    """Calls play(host connection, task) and reports an exception to the host. Then switches the machine off."""
    line = host.Host()
    try:
        play(line, line.ready())
    except BaseException:
        line.report("broken", text=traceback.format_exc())
    line.report("end")
    switch_off()


def switch_off():
    os.sync()
    ctypes.CDLL(None).reboot(0x01234567)  # RB_AUTOBOOT; QEMU runs with -no-reboot, so it exits
