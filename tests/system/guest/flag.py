"""Watches the flag file with inotify: records each write with its time, and counts how often the file is opened."""

import collections
import os
import pathlib
import shutil
import threading

import inotify
from waiting import Failed, be_prompt, check, notify, now, wait_for

FOLDER = pathlib.Path("/Library/Application Support/ble-kovra")
STATE = FOLDER / "state"

Write = collections.namedtuple("Write", "time content")


class Flag:
    """Records a write when a process closes the flag file after opening it for writing.

    The recorded content is what the file contains when the inotify event arrives. The class reads it through a
    descriptor that stays open, so that reading causes no open events.
    """

    def __init__(self):
        self._inotify = None
        self._state = None
        self.writes = []
        self.openings = 0

    def renew(self):
        """Replaces the folder by a new one with an empty flag file, and forgets all earlier writes and opens."""
        self.remove_folder()
        self.create_folder()

    def create_folder(self):
        # The program may write as soon as FOLDER exists. So the folder is created and watched under another name first.
        new = FOLDER.with_name(FOLDER.name + ".new")
        new.mkdir(parents=True)
        self._state = os.open(new / STATE.name, os.O_RDONLY | os.O_CREAT | os.O_CLOEXEC, 0o644)
        self._inotify = inotify.watch(new, inotify.IN_CLOSE_WRITE | inotify.IN_OPEN)
        self.writes, self.openings = [], 0
        threading.Thread(target=self._listen, args=(self._inotify, self._state), daemon=True).start()
        new.rename(FOLDER)

    def remove_folder(self):
        self._inotify = None
        shutil.rmtree(FOLDER, ignore_errors=True)

    def last(self):
        return self.writes[-1].content if self.writes else None

    def wait_write(self, content, since=0.0, limit=90.0):
        """Waits up to `limit` seconds for a write of this content at or after `since`, and returns the first one."""
        def found():
            return next((w for w in list(self.writes) if w.content == content and w.time >= since), None)
        try:
            return wait_for(found, f'a write of "{content}"', limit)
        except Failed as failure:
            raise Failed(f"{failure} (writes so far: {self.contents()})") from None

    def contents(self):
        return [write.content for write in self.writes]

    def _listen(self, descriptor, state):
        be_prompt()
        while descriptor == self._inotify:
            events = os.read(descriptor, 65536)
            moment = now()
            for mask, name in inotify.split(events):
                if name != b"state":
                    continue
                if mask & inotify.IN_OPEN:
                    self.openings += 1
                if mask & inotify.IN_CLOSE_WRITE:
                    self.writes.append(Write(moment, os.pread(state, 100, 0).decode("utf-8", "replace")))
            notify()
        os.close(descriptor)
        os.close(state)
