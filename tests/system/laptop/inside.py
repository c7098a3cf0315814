"""Tries what the helper's unit forbids, and prints a line for each attempt that succeeds.

The helper's user may do all of this, so that only the unit prevents it. The scenario creates the folders beforehand.
"""

import ctypes
import mmap
import os
import pathlib
import socket
import subprocess

OWN = "/run/ble-kovra-helper/kovra-tried"
OPEN, OPEN_GROUP = "/kovra-open", "/sys/fs/cgroup/kovra-open"
OPEN_SETTING = "/sys/module/suspend/parameters/pm_test_delay"
HOME, TEMPORARY, MODULES = (f"{folder}/kovra-open" for folder in ("/home", "/tmp", "/usr/lib/modules"))
NEW_USER_NAMESPACE, NO_RANDOM_ADDRESSES, TRACE_ME = 0x10000000, 0x0040000, 0
libc = ctypes.CDLL(None, use_errno=True)


def call(function, *arguments):
    if getattr(libc, function)(*arguments) == -1:
        raise OSError(ctypes.get_errno(), function)


def own_file(then):
    """Creates a file of the process with all rights that it may give, calls then(), and removes the file."""
    os.close(os.open(OWN, os.O_CREAT | os.O_EXCL | os.O_WRONLY, 0o666))
    try:
        then()
    finally:
        os.unlink(OWN)


def need(condition):
    if not condition:
        raise OSError("no effect")


def write(path):
    with open(path, "a", encoding="ascii"):
        pass


def make_and_remove(folder):
    os.mkdir(folder)
    os.rmdir(folder)


def in_child(attempt):
    child = os.fork()
    if child == 0:
        try:
            attempt()
        except OSError:
            os._exit(1)
        os._exit(0)
    need(os.waitpid(child, 0)[1] == 0)


ATTEMPTS = {
    "write into another folder": lambda: write(f"{OPEN}/tried"),
    "list a home": lambda: need(os.listdir(HOME)),
    "see the temporary files of others": lambda: os.stat(TEMPORARY),
    "see a device": lambda: os.stat("/dev/uhid"),
    "see the kernel's modules": lambda: need(os.listdir(MODULES)),
    "read about the kernel": lambda: need(pathlib.Path("/proc/uptime").read_text()),
    "change a setting of the kernel": lambda: write(OPEN_SETTING),
    "make a control group": lambda: make_and_remove(f"{OPEN_GROUP}/tried"),
    "open a socket of the network": lambda: socket.socket(socket.AF_INET),
    "become another user by a program":
        lambda: need(subprocess.run([f"{OPEN}/id", "-u"], capture_output=True, text=True).stdout == "0\n"),
    "let others read a file": lambda: own_file(lambda: need(os.stat(OWN).st_mode & 0o044)),
    "make a program that acts for its owner": lambda: own_file(lambda: os.chmod(OWN, 0o4755)),
    "change the owner of a file": lambda: own_file(lambda: os.chown(OWN, os.getuid(), os.getgid())),
    "write into memory and execute it":
        lambda: mmap.mmap(-1, 4096, prot=mmap.PROT_READ | mmap.PROT_WRITE | mmap.PROT_EXEC),
    "make a namespace": lambda: in_child(lambda: call("unshare", NEW_USER_NAMESPACE)),
    "be another kind of system": lambda: call("personality", NO_RANDOM_ADDRESSES),
    "be traced": lambda: in_child(lambda: call("ptrace", TRACE_ME, 0, 0, 0)),
    "change its priority": lambda: os.nice(1),
}


def main():
    for name, attempt in ATTEMPTS.items():
        try:
            attempt()
        except OSError:
            continue
        print(name, flush=True)


if __name__ == "__main__":
    main()
