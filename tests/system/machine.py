"""Runs a throwaway virtual machine in QEMU, with a real kernel and the host's files. It needs neither root nor KVM.

The guest mounts the host's files read-only, below an overlay in memory, so that it cannot change them. Guest and host
exchange JSON lines through the second serial port of the machine.
"""

import collections
import json
import os
import pathlib
import select
import shutil
import socket
import subprocess
import tempfile
import time

import initramfs
from qmp import QMP

HERE = pathlib.Path(__file__).resolve().parent
# The Python programs that the init script can execute as PID 1. BARE carries out the host's task itself. LAPTOP
# executes systemd, and a service carries out the task.
BARE = HERE / "guest" / "main.py"
LAPTOP = HERE / "laptop" / "first.py"
BOOT_LIMIT_SECONDS = 300
# The longest time between two messages of the guest. Most scenarios take seconds; flood_of_events takes half a minute,
# or more on a busy host.
SILENCE_LIMIT_SECONDS = 600

# The options of QEMU and of the kernel for the two kinds of time.
Time = collections.namedtuple("Time", "qemu kernel")
REAL_TIME = Time(["-accel", "tcg,thread=multi"], "")
# An instruction takes 2 ns. The kernel's timer interrupts the machine every 4 ms, also while it is idle. So the clock
# leaps at most that far while the machine waits for the host, for example for a file.
SKIPPED_TIME = Time(["-accel", "tcg,thread=single", "-icount", "shift=1,sleep=off"], "nohz=off")


class MachineFailed(Exception):
    pass


class Machine:
    """A virtual machine that runs within a `with` block. At the end QEMU is killed and the temporary folder removed.

    With `skips_idle_time`, the clocks of the guest count its instructions, and leap to the next timer while it is idle.
    """

    def __init__(self, kernel, logs, first_process=BARE, processors=1, skips_idle_time=False):
        self._kernel, self._first_process, self._processors = kernel, first_process, processors
        self._time = SKIPPED_TIME if skips_idle_time else REAL_TIME
        pathlib.Path(logs).mkdir(exist_ok=True)
        self._console = pathlib.Path(logs) / "console.log"
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="kovra-machine-"))
        self._qemu = None
        self._qmp = None
        self._port = None
        self._buffer = b""

    def __enter__(self):
        try:
            self._boot()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        if self._qmp:
            self._qmp.close()
        if self._port:
            self._port.close()
        if self._qemu:
            self._qemu.kill()
            self._qemu.wait()
        shutil.rmtree(self._folder, ignore_errors=True)

    def messages(self, task):
        """Sends the task to the guest, serves the guest's requests, and yields its reports until the task is done."""
        deadline = time.monotonic() + BOOT_LIMIT_SECONDS
        while True:
            message = self._next(deadline)
            if message["kind"] == "ready":
                self._send(task)
            elif message["kind"] == "plug":
                self._qmp.execute("device_add", driver="usb-mouse", id=message["id"], bus="usb.0")
                self._send({"done": True})
            elif message["kind"] == "unplug":
                self._qmp.execute("device_del", id=message["id"])
                self._send({"done": True})
            elif message["kind"] == "end":
                return
            else:
                yield message
            deadline = time.monotonic() + SILENCE_LIMIT_SECONDS

    def _boot(self):
        qemu = shutil.which("qemu-system-x86_64")
        if qemu is None:
            raise MachineFailed("qemu-system-x86_64 is missing (Debian package qemu-system-x86)")
        archive = self._folder / "initramfs"
        initramfs.write(archive, self._kernel, self._first_process)
        control, port = self._folder / "qmp", self._folder / "port"
        # One processor costs the host a fifth less time than two. Without tsc=reliable, the kernel would read an
        # emulated clock at each query of the time.
        command = [
            qemu, "-machine", "q35", *self._time.qemu, "-cpu", "max", "-m", "2048",
            "-smp", str(self._processors),
            "-display", "none", "-monitor", "none", "-no-reboot", "-nodefaults", "-no-user-config",
            "-kernel", self._kernel.image, "-initrd", archive,
            "-append", f"console=ttyS0 quiet panic=-1 tsc=reliable clocksource=tsc {self._time.kernel} kovra.guest",
            "-virtfs", "local,path=/,mount_tag=hostroot,security_model=none,readonly=on,multidevs=remap",
            "-device", "qemu-xhci,id=usb",
            "-serial", f"file:{self._console}",
            "-serial", f"unix:{port},server=on,wait=off",
            "-qmp", f"unix:{control},server=on,wait=off",
        ]
        errors = open(self._console.with_name("qemu.log"), "wb")
        with errors:
            self._qemu = subprocess.Popen([os.fspath(word) for word in command], stdin=subprocess.DEVNULL,
                                          stdout=errors, stderr=errors)
        self._qmp = QMP(control, timeout=60)
        self._port = socket.socket(socket.AF_UNIX)
        self._port.connect(os.fspath(port))

    def _send(self, message):
        self._port.sendall(json.dumps(message).encode() + b"\n")

    def _next(self, deadline):
        while b"\n" not in self._buffer:
            left = deadline - time.monotonic()
            if left <= 0:
                raise MachineFailed(f"the machine was silent for too long; {self._last_words()}")
            if not select.select([self._port], [], [], left)[0]:
                continue
            data = self._port.recv(65536)
            if not data:
                raise MachineFailed(f"the machine stopped; {self._last_words()}")
            self._buffer += data
        line, self._buffer = self._buffer.split(b"\n", 1)
        return json.loads(line)

    def _last_words(self):
        for log in [self._console, self._console.with_name("qemu.log")]:
            lines = [line for line in log.read_text(errors="replace").splitlines() if line.strip()]
            if lines:
                return f"the last line of {log.name}: {lines[-1].strip()}"
        return "there are no logs"
