"""Watches files and folders with inotify."""

import ctypes
import os
import struct

from waiting import check

IN_CLOSE_WRITE, IN_CLOSE_NOWRITE, IN_OPEN, IN_MOVED_FROM, IN_MOVED_TO = 0x08, 0x10, 0x20, 0x40, 0x80
HEADER = struct.Struct("iIII")


def watch(path, mask, flags=0):
    """Returns a descriptor from which the events of the file or folder can be read."""
    libc = ctypes.CDLL(None, use_errno=True)
    descriptor = libc.inotify_init1(os.O_CLOEXEC | flags)
    check(descriptor >= 0 and libc.inotify_add_watch(descriptor, os.fsencode(path), mask) >= 0,
          f"inotify refused to watch {path}")
    return descriptor


def split(events):
    """Yields the mask and the name of each event. The name is empty if the event is about the watched file itself."""
    offset = 0
    while offset < len(events):
        _, mask, _, length = HEADER.unpack_from(events, offset)
        offset += HEADER.size
        yield mask, events[offset:offset + length].rstrip(b"\0")
        offset += length


class Counter:
    """Counts the events of one kind for a file, or for a name in a folder.

    inotify merges two equal events in a row. `between` is the kind of events that separate them.
    """

    def __init__(self, path, kind, between=0, name=b""):
        self._kind, self._name = kind, name
        self._descriptor = watch(path, kind | between, os.O_NONBLOCK)

    def take(self):
        """Returns the number of events since the last call, or since the construction."""
        count = 0
        try:
            while events := os.read(self._descriptor, 65536):
                count += sum(1 for mask, name in split(events) if mask & self._kind and name == self._name)
        except BlockingIOError:
            pass
        return count
