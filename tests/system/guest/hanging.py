"""A folder that behaves as if its disk hung: opening a file in it blocks until HangingFolder.close()."""

import ctypes
import os

from waiting import check

FAN_CLASS_CONTENT, FAN_CLOEXEC = 0x04, 0x01
FAN_MARK_ADD, FAN_OPEN_PERM, FAN_EVENT_ON_CHILD = 0x01, 0x00010000, 0x08000000
AT_FDCWD = -100


class HangingFolder:
    """A folder whose files cannot be opened: fanotify asks this process to permit each open, and gets no answer."""

    def __init__(self, folder):
        libc = ctypes.CDLL(None, use_errno=True)
        self._asked = libc.fanotify_init(FAN_CLASS_CONTENT | FAN_CLOEXEC, os.O_RDONLY)
        check(self._asked >= 0, f"fanotify_init: {os.strerror(ctypes.get_errno())}")
        result = libc.fanotify_mark(self._asked, FAN_MARK_ADD, ctypes.c_uint64(FAN_OPEN_PERM | FAN_EVENT_ON_CHILD),
                                    AT_FDCWD, os.fsencode(folder))
        check(result == 0, f"fanotify_mark: {os.strerror(ctypes.get_errno())}")

    def close(self):
        """Closes the fanotify descriptor. The kernel then permits every open that waits."""
        os.close(self._asked)
