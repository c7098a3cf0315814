"""What another user account does in the scenarios of floods.py.

    flooder.py crowd COUNT     starts COUNT processes that sleep

It prints how much it has done or started, and then goes on until it is terminated.
"""

import os
import signal
import sys


def run_many(count, work):
    """Runs the work in this many processes, which end together with this one."""
    signal.signal(signal.SIGTERM, lambda *_: os.killpg(0, signal.SIGKILL))
    os.setpgid(0, 0)
    for number in range(int(count)):
        try:
            if os.fork() == 0:
                work()
        except OSError as error:
            sys.exit(f"flooder: only {number} processes: {error}")
    print(count, flush=True)
    sleep()


def sleep():
    while True:
        signal.pause()


ACTIONS = {"crowd": lambda count: run_many(count, sleep)}

if __name__ == "__main__":
    ACTIONS[sys.argv[1]](*sys.argv[2:])
