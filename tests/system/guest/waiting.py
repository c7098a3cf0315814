"""Waiting for conditions. A test waits for a duration only if there is no condition to wait for."""

import os
import threading
import time

# Notified after an observation, so that waiting threads need not poll.
changed = threading.Condition()


class Failed(Exception):
    """A scenario's promise was broken; the text says which one and how."""


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
            # Poll as well, since not every observation notifies. A condition that takes long is checked half of the time.
            changed.wait(max(0.05, now() - begun))


def stay_until(moment):
    """Waits until this time. Used to check that nothing happens until then."""
    time.sleep(max(0.0, moment - now()))


def be_prompt():
    """Gives the calling thread priority over ordinary threads, so that the times that it records are accurate."""
    os.sched_setscheduler(0, os.SCHED_FIFO, os.sched_param(10))
