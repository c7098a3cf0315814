"""Waiting for conditions. No test waits for a time where it can wait for something to be so."""

import os
import threading
import time

# Told by whoever has noticed something, so that those who wait need not keep looking.
news = threading.Condition()


class Failed(Exception):
    """A scenario's promise was not kept; the text says which and how."""


def now():
    return time.clock_gettime(time.CLOCK_MONOTONIC)


def check(condition, text):
    if not condition:
        raise Failed(text)


def tell():
    with news:
        news.notify_all()


def wait_for(condition, text, limit=30.0):
    """Returns what `condition` gives as soon as it is something; after `limit` seconds the scenario has failed."""
    deadline = now() + limit
    with news:
        while True:
            result = condition()
            if result:
                return result
            check(now() < deadline, f"waited {limit:.0f} s in vain: {text}")
            # Not everything that is waited for tells.
            news.wait(0.05)


def stay_until(moment):
    """For promises that nothing happens: there is no condition to wait for but the clock."""
    time.sleep(max(0.0, moment - now()))


def be_prompt():
    """Lets the calling thread run before all others, so that the moments that it notes are the true ones."""
    os.sched_setscheduler(0, os.SCHED_FIFO, os.sched_param(10))
