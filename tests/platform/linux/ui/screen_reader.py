#!/usr/bin/python3
"""Reads and operates a window over AT-SPI, like a screen reader.

  screen_reader.py read                    prints the tree of objects with their roles, names and states
  screen_reader.py do ACTION ROLE NAME     performs the action of the first object with this role and name that has it

Both wait up to ten seconds for the application BLE-kovra. They exit with 1 if the application or the object is missing.
"""
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

STATES = (Atspi.StateType.CHECKED, Atspi.StateType.FOCUSABLE, Atspi.StateType.FOCUSED, Atspi.StateType.SHOWING)


def application():
    deadline = time.monotonic() + 10
    while time.monotonic() < deadline:
        desktop = Atspi.get_desktop(0)
        for i in range(Atspi.Accessible.get_child_count(desktop)):
            each = Atspi.Accessible.get_child_at_index(desktop, i)
            if each and Atspi.Accessible.get_name(each) == "BLE-kovra":
                return each
        time.sleep(0.05)
    sys.exit("the application is missing")


def everything(accessible, depth=0):
    yield depth, accessible
    for i in range(Atspi.Accessible.get_child_count(accessible)):
        yield from everything(Atspi.Accessible.get_child_at_index(accessible, i), depth + 1)


def described(accessible):
    states = Atspi.Accessible.get_state_set(accessible)
    words = [Atspi.Accessible.get_role_name(accessible), repr(Atspi.Accessible.get_name(accessible))]
    words += [state.value_nick for state in STATES if states.contains(state)]
    return " ".join(words)


def act(action, role, name):
    for _, each in everything(application()):
        if Atspi.Accessible.get_role_name(each) != role or Atspi.Accessible.get_name(each) != name:
            continue
        for i in range(Atspi.Action.get_n_actions(each)):
            if Atspi.Action.get_action_name(each, i) == action:
                Atspi.Action.do_action(each, i)
                return
    sys.exit(f"no {role} {name!r} with {action}")


if sys.argv[1] == "read":
    for depth, each in everything(application()):
        print("  " * depth + described(each))
else:
    act(*sys.argv[2:])
