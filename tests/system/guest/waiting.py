"""Functions that wait for a condition, or until a time of CLOCK_MONOTONIC (in seconds)."""

import contextlib
import os
import threading
import time

# Notified when a thread has recorded an event, so that wait_for() checks its condition at once.
changed = threading.Condition()


class Failed(Exception):
    """Raised to make the scenario fail. The text is the reason that is reported."""


def now():
    return time.clock_gettime(time.CLOCK_MONOTONIC)


def check(condition, text):
    if not condition:
        raise Failed(text)


def notify():
    with changed:
        changed.notify_all()


def wait_for(condition, text, limit=90.0):
    """Returns the first true result of `condition`. The scenario fails if there is none within `limit` seconds."""
    deadline = now() + limit
    with changed:
        while True:
            begun = now()
            result = condition()
            if result:
                return result
            check(now() < deadline, f"timed out after {limit:.0f} s: {text}")
            # Check again after 50 ms, since not every change notifies. After a slow check, wait as long as the check
            # took.
            changed.wait(max(0.05, now() - begun))


def repeat(action, condition, text, limit=20.0, patience=5.0):
    """Calls `action` until `condition` holds, as a person does whose click went unnoticed. Returns what wait_for() does.

    Each call gets `patience` seconds to work.
    """
    def works():
        action()
        with contextlib.suppress(Failed):
            return wait_for(condition, text, patience)
        return None
    return wait_for(works, text, limit)


def stay_until(moment):
    """Sleeps until this time. Use it to check that something does not happen."""
    time.sleep(max(0.0, moment - now()))


def be_prompt():
    """Gives the calling thread real-time priority, so that the times that it records are accurate."""
    os.sched_setscheduler(0, os.SCHED_FIFO, os.sched_param(10))
