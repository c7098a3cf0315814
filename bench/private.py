"""Runs measurements beside a private udevd, and on a private desktop."""

import json
import os
import pathlib
import subprocess

HERE = pathlib.Path(__file__).resolve().parent
INSIDE = HERE / "inside"
WITH_UDEVD = HERE / "instruments" / "with-udevd"
LAYER = HERE / "instruments" / "layer"
# Debian's interpreter, which finds the modules of Debian's packages.
PYTHON = ["/usr/bin/python3", "-B"]


class CannotRun(Exception):
    """Raised if a section cannot run. The text gives the reason in one line."""


def run_script(name, task, layer=None):
    """Runs a script of bench/inside with this task on a private desktop; returns the JSON objects that it prints."""
    return on_desktop(*PYTHON, INSIDE / name, json.dumps(task), layer=layer)


def on_desktop(*command, layer=None):
    return beside_udevd(*PYTHON, INSIDE / "desktop.py", *command, layer=layer)


def beside_udevd(*command, layer=None):
    need_root()
    command = [*([LAYER, layer] if layer else []), WITH_UDEVD, *command]
    done = subprocess.run([str(word) for word in command], stdout=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise CannotRun("the private session failed; its output is above")
    return [json.loads(line) for line in done.stdout.splitlines()]


def need_root():
    if os.geteuid() != 0:
        raise CannotRun("private mounts need root")
