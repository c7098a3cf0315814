"""Counts with inotify how often any process opens a file."""

import ctypes
import os
import struct

from waiting import check

IN_OPEN, IN_CLOSE = 0x20, 0x18


class Openings:
    """Counts the opens of a file. The file must not be replaced, since inotify watches its inode."""

    def __init__(self, path):
        libc = ctypes.CDLL(None, use_errno=True)
        self._inotify = libc.inotify_init1(os.O_CLOEXEC | os.O_NONBLOCK)
        # Watch for close events as well: inotify merges two equal events in a row, and a close separates two opens.
        watch = libc.inotify_add_watch(self._inotify, os.fsencode(path), IN_OPEN | IN_CLOSE)
        check(watch >= 0, f"inotify refused to watch {path}")

    def take(self):
        """Returns the number of opens since the last call, or since the construction."""
        count = 0
        try:
            while events := os.read(self._inotify, 65536):
                # The events of a watched file contain no name, so all have the same size.
                count += sum(1 for _, mask, _, _ in struct.iter_unpack("iIII", events) if mask & IN_OPEN)
        except BlockingIOError:
            pass
        return count
