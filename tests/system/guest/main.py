"""The machine's first process: makes the guest a place to live in, does the host's task, switches the machine off."""

import ctypes
import os
import pathlib
import subprocess
import sys
import traceback

import driver
import host


def mount(kind, target):
    pathlib.Path(target).mkdir(parents=True, exist_ok=True)
    subprocess.run(["/bin/busybox", "mount", "-t", kind, kind, target], check=True)


def refuse_outside_a_machine():
    # What follows mounts over folders and writes where an installation would: never on somebody's own system.
    if os.getpid() != 1 or "kovra.guest" not in pathlib.Path("/proc/cmdline").read_text().split():
        sys.exit("this program is the first process of a throwaway virtual machine and runs nowhere else")


def switch_off():
    os.sync()
    ctypes.CDLL(None).reboot(0x01234567)  # RB_AUTOBOOT; QEMU is told not to start again.


def main():
    refuse_outside_a_machine()
    os.environ.update(PATH="/usr/sbin:/usr/bin:/sbin:/bin", LANG="C.UTF-8")
    mount("tmpfs", "/run")
    mount("tmpfs", "/Library")
    mount("tracefs", "/sys/kernel/tracing")
    driver.put_active()
    line = host.Host()
    try:
        task = line.ready()
        if task["kind"] == "demo":
            import demo
            demo.play(line, task)
        elif task["kind"] == "bench":
            sys.path.append(task["folder"])
            import virtual_machine
            virtual_machine.play(line, task)
        else:
            import scenarios
            scenarios.run(line, task)
    except BaseException:
        line.report("broken", text=traceback.format_exc())
    line.report("end")
    switch_off()


main()
