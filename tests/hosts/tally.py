"""Counts and prints the results of the scenarios of a ring."""

import shutil


class Tally:
    """`ring` is the name of the ring. `folder` contains what is kept after a failure; close() removes it otherwise."""

    def __init__(self, ring, folder):
        self._ring, self.folder = ring, folder
        self._passed = self._failed = 0

    def ok(self, name, sentence, measured, seconds):
        self._passed += 1
        shown = f" [{measured}]" if measured else ""
        print(f"ok      {name}: {sentence}{shown} ({seconds:.1f} s)", flush=True)

    def fail(self, name, sentence, reason, world=None):
        """Reports a failure. Saves the screen and the output of the processes, and closes the desktop."""
        self._failed += 1
        print(f"FAILED  {name}: {sentence}\n        {reason}", flush=True)
        if world:
            print(f"        seen: {world.leave_behind(name.replace('/', '-'))}", flush=True)
            world.close()

    def close(self, keep):
        if self._passed + self._failed == 0:
            self.fail(f"the {self._ring}", "", "nothing ran")
        if self._failed or keep:
            print(f"{self._ring}: the desktops' files are in {self.folder}", flush=True)
        else:
            shutil.rmtree(self.folder)
        print(f"{self._ring}: {self._passed} passed, {self._failed} failed", flush=True)
        return 1 if self._failed else 0
