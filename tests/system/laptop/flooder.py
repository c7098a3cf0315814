"""What another user account does in the scenarios of floods.py.

    flooder.py crowd COUNT     starts COUNT processes that sleep
    flooder.py notify COUNT    writes to the service manager's socket from COUNT processes
    flooder.py rewrite TIME    has the login manager rewrite the file of the caller's session
    flooder.py flip UID TIME   switches between the consoles 2 and 3, by a process of console 3

Where it is given a TIME, in seconds, it prints at the end how often it has done that. Otherwise it prints how much it
has started, and goes on until it is terminated.
"""

import contextlib
import ctypes
import fcntl
import os
import signal
import socket
import sys
import termios
import time

LOGIN, PATH = b"org.freedesktop.login1", b"/org/freedesktop/login1/session/self"
SESSION = LOGIN + b".Session"
VT_ACTIVATE, VT_WAITACTIVE = 0x5606, 0x5607


def run_many(count, work):
    """Runs the work in this many processes, which end together with this one."""
    signal.signal(signal.SIGTERM, lambda *_: os.killpg(0, signal.SIGKILL))
    os.setpgid(0, 0)
    started = 0
    with contextlib.suppress(OSError):
        while started < int(count):
            if os.fork() == 0:
                work()
            started += 1
    print(started, flush=True)
    sleep()


def sleep():
    while True:
        signal.pause()


def write_notifications():
    target = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
    target.connect("/run/systemd/notify")
    while True:
        target.send(b"X_KOVRA=1")


def repeat(seconds, work):
    end, count = time.monotonic() + float(seconds), 0
    while time.monotonic() < end:
        work(count)
        count += 1
    print(count, flush=True)


def rewrite(seconds):
    sd, bus = ctypes.CDLL("libsystemd.so.0"), ctypes.c_void_p()

    def call(member, *arguments):
        result = sd.sd_bus_call_method(bus, LOGIN, PATH, SESSION, member, None, None, *arguments)
        if result < 0:
            sys.exit(f"flooder: {member} returned {result}")

    if sd.sd_bus_open_system(ctypes.byref(bus)) < 0:
        sys.exit("flooder: no system bus")
    call(b"TakeControl", b"b", 0)
    repeat(seconds, lambda count: call(b"SetType", b"s", [b"x11", b"wayland"][count % 2]))


def flip(user, seconds):
    """Root calls this. It does what login does before it becomes the user: the console becomes that of the process."""
    os.setsid()
    console = os.open("/dev/tty3", os.O_RDWR)
    fcntl.ioctl(console, termios.TIOCSCTTY, 1)
    os.setgroups([])
    os.setgid(int(user))
    os.setuid(int(user))

    def show(count):
        number = [3, 2][count % 2]
        fcntl.ioctl(console, VT_ACTIVATE, number)
        fcntl.ioctl(console, VT_WAITACTIVE, number)

    repeat(seconds, show)


ACTIONS = {"crowd": lambda count: run_many(count, sleep),
           "notify": lambda count: run_many(count, write_notifications), "rewrite": rewrite, "flip": flip}

if __name__ == "__main__":
    ACTIONS[sys.argv[1]](*sys.argv[2:])
