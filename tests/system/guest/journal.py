"""A substitute for journald: binds journald's socket, and keeps the message of each log entry."""

import os
import pathlib
import socket
import threading

from waiting import notify

PATH = pathlib.Path("/run/systemd/journal/socket")


class Journal:
    def __init__(self):
        PATH.parent.mkdir(parents=True, exist_ok=True)
        PATH.unlink(missing_ok=True)
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(os.fspath(PATH))
        self.messages = []
        threading.Thread(target=self._listen, daemon=True).start()

    def forget(self):
        self.messages = []

    def _listen(self):
        while True:
            entry = self._socket.recv(1 << 20)
            message = _field(entry, b"MESSAGE")
            if message is not None:
                self.messages.append(message.decode("utf-8", "replace"))
                notify()


def _field(entry, wanted):
    """Returns the value of the field in an entry of journald's native protocol, or None.

    A field is either the line NAME=value, or the line NAME, the value's length (8 bytes), the value and a line feed.
    """
    while entry:
        line, _, entry = entry.partition(b"\n")
        name, is_plain, value = line.partition(b"=")
        if not is_plain:
            length = int.from_bytes(entry[:8], "little")
            value, entry = entry[8:8 + length], entry[8 + length + 1:]
        if name == wanted:
            return value
    return None
