"""Plugs and unplugs a mouse in a virtual machine of the system tests, and collects the measurements."""

import contextlib
import os
import pathlib
import shutil
import tempfile

import kernel
from figures import say
from machine import BARE, LAPTOP, Machine

ROOT = pathlib.Path(__file__).resolve().parents[1]
MACHINES = {BARE: "virtual machine", LAPTOP: "virtual laptop"}


def take(plugs, task, first_process=BARE):
    """Plugs the mouse `plugs` times; returns the machine's report of each. `task` is added to the machine's task."""
    name = MACHINES[first_process]
    logs = pathlib.Path(tempfile.mkdtemp(prefix="kovra-bench-"))
    machine_kernel = kernel.prepare(ROOT / "build" / "vm" / "kernel", say)
    task = {"kind": "bench", "folder": str(ROOT / "bench" / "inside"), "modules": str(machine_kernel.modules),
            "plugs": plugs, **task}
    samples = []
    say(f"starting the {name} for {plugs} plugs")
    # On one processor, the program would wait for the listener with which it is compared.
    with before_all_others(), Machine(machine_kernel, logs, first_process, processors=2) as machine:
        for message in machine.messages(task):
            if message["kind"] == "broken":
                raise RuntimeError(f"the {name} failed (logs in {logs}): {message['text']}")
            samples.append(message)
            if len(samples) % 20 == 0:
                say(f"{len(samples)} of {plugs} plugs")
    shutil.rmtree(logs)
    return samples


@contextlib.contextmanager
def before_all_others():
    """Gives this process and its children real-time priority, so that other processes hardly delay what is measured."""
    usual = os.sched_getscheduler(0), os.sched_getparam(0)
    try:
        os.sched_setscheduler(0, os.SCHED_RR, os.sched_param(1))
    except PermissionError:
        say("no permission to raise the priority: the figures are valid only on a quiet machine")
    try:
        yield
    finally:
        os.sched_setscheduler(0, *usual)
