#!/usr/bin/python3
"""Opens and closes the settings window many times in a private session, and measures the cost.

Prints one JSON object. A second start of the program opens the window. The message that a window manager sends for the
close button closes it.
"""

import json
import pathlib
import subprocess
import sys
import time

from Xlib import X, display
from Xlib.protocol import event

import processes
from tray_host import TrayHost

TIMEOUT_SECONDS = 20
# The window process exits within this time after its last window was closed.
END_SECONDS = 60
TITLE = "BLE-kovra"


def main():
    task = json.loads(sys.argv[1])
    with TrayHost(task["tray_host"]):
        print(json.dumps(measured(task["program"], task["openings"], task["idle"])))


def measured(program, openings, idle_seconds):
    screen = display.Display()
    resident = subprocess.Popen([program], stdout=subprocess.DEVNULL)
    time.sleep(3)
    before = processes.memory([resident.pid])
    window = open_window(screen, program)
    time.sleep(3)
    pids = [resident.pid, *children(resident.pid)]
    watch = processes.Watch(pids)
    time.sleep(idle_seconds)
    result = {"before": before, "wakeups": watch.wake_ups() / idle_seconds, "cpu": watch.cpu()}
    close_window(screen, window)
    time.sleep(1)
    result["first"] = processes.memory(pids)
    for _ in range(openings - 1):
        close_window(screen, open_window(screen, program))
    time.sleep(1)
    same = [resident.pid, *children(resident.pid)] == pids
    result["last"] = processes.memory(pids) if same else None
    time.sleep(END_SECONDS)
    result["processes_after"] = 1 + len(children(resident.pid))
    result["after"] = processes.memory([resident.pid])
    resident.terminate()
    resident.wait()
    return result


def open_window(screen, program):
    subprocess.run([program], stdout=subprocess.DEVNULL, check=True)
    return wait_for(lambda: shown_window(screen), "the window to open")


def close_window(screen, window):
    protocols, delete = screen.intern_atom("WM_PROTOCOLS"), screen.intern_atom("WM_DELETE_WINDOW")
    data = 32, [delete, X.CurrentTime, 0, 0, 0]
    window.send_event(event.ClientMessage(window=window, client_type=protocols, data=data))
    screen.sync()
    wait_for(lambda: shown_window(screen) is None, "the window to close")


def shown_window(screen):
    for window in screen.screen().root.query_tree().children:
        try:
            if window.get_wm_name() == TITLE and window.get_attributes().map_state == X.IsViewable:
                return window
        except Exception:  # the window has been destroyed in the meantime
            continue
    return None


def wait_for(condition, what):
    deadline = time.monotonic() + TIMEOUT_SECONDS
    while (found := condition()) in (None, False):
        if time.monotonic() > deadline:
            sys.exit(f"openings: timed out after {TIMEOUT_SECONDS} s waiting for {what}")
        time.sleep(0.02)
    return found


def children(pid):
    text = pathlib.Path(f"/proc/{pid}/task/{pid}/children").read_text()
    return sorted(int(child) for child in text.split())


if __name__ == "__main__":
    main()
