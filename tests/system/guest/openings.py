"""Counts how often a file was opened, by any process."""

import ctypes
import os
import struct

from waiting import check

IN_OPEN, IN_CLOSE = 0x20, 0x18


class Openings:
    """A counter of opens since its construction. The file must exist and must not be replaced."""

    def __init__(self, path):
        libc = ctypes.CDLL(None, use_errno=True)
        self._inotify = libc.inotify_init1(os.O_CLOEXEC | os.O_NONBLOCK)
        # Watch for close events too, since inotify merges two equal events in a row.
        watch = libc.inotify_add_watch(self._inotify, os.fsencode(path), IN_OPEN | IN_CLOSE)
        check(watch >= 0, f"inotify refused to watch {path}")

    def take(self):
        """Returns the number of opens since the last call."""
        count = 0
        try:
            while events := os.read(self._inotify, 65536):
                # The events of a watched file have no name.
                count += sum(1 for _, mask, _, _ in struct.iter_unpack("iIII", events) if mask & IN_OPEN)
        except BlockingIOError:
            pass
        return count
