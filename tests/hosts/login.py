"""A scenario of launch at login: LXQt's session program reads the autostart entry."""

import os
import pathlib
import signal

from item import PROGRAM, Caller
from scenarios import scenario
from secluded import descendants
from texts import LAUNCH_AT_LOGIN
from waiting import check, wait_for

HOST = "lxqt-panel"


@scenario("With launch at login enabled the next session starts the program; disabled, the next one does not.",
          only_on=HOST)
def login(world):
    # Without this entry the session program would wait half a minute for a window manager.
    world.desktop.configure("lxqt/session.conf", "[General]\nwindow_manager=openbox\n")
    world.start()
    world.choose(LAUNCH_AT_LOGIN)
    wait_for(world.autostart.exists, "the autostart entry")
    world.end_program()
    with Session(world) as session:
        wait_for(lambda: session.runs(world.binary), "the session to start the program", 30)
    world.start()
    world.choose(LAUNCH_AT_LOGIN)
    wait_for(lambda: not world.item.checked(LAUNCH_AT_LOGIN), "the check mark to be removed")
    world.end_program()
    with Session(world) as session:
        check(not session.runs(world.binary), "the session started the program")
    world.autostart.unlink(missing_ok=True)


class Session:
    """Runs lxqt-session within a `with` block. At the end, every process that was started in the block is killed."""

    def __init__(self, world):
        self._desktop = world.desktop
        # Two more autostart entries, whose names sort before and after the application's. When both have run, the
        # session program has read all three.
        self._others = [world.autostart.with_name(f"{name}.desktop") for name in ("a-first", "z-last")]
        self._before = descendants()

    def __enter__(self):
        # XDG_CONFIG_DIRS is set to a missing folder, so that the session program reads only the user's entries.
        ran = [self._desktop.folder / f"{entry.stem} ran" for entry in self._others]
        for entry, mark in zip(self._others, ran):
            mark.unlink(missing_ok=True)
            entry.parent.mkdir(parents=True, exist_ok=True)
            entry.write_text(f'[Desktop Entry]\nType=Application\nName={entry.stem}\nExec=touch "{mark}"\n')
        self._process = self._desktop.start("lxqt-session", "lxqt-session",
                                            environment={"XDG_CONFIG_DIRS": str(self._desktop.folder / "none")})
        wait_for(lambda: all(mark.exists() for mark in ran), "the session to read its entries", 60)
        return self

    def __exit__(self, *_):
        self._process.kill()
        self._desktop.processes.remove(self._process)
        for pid in descendants() - self._before:
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        # The program would exit at its next start if its name still had an owner on the bus.
        wait_for(lambda: not Caller(self._desktop.bus).has_owner(PROGRAM), "the session's program to leave the bus")
        for entry in self._others:
            entry.unlink()

    def runs(self, binary):
        return any(_program_of(pid) == binary for pid in descendants() - self._before)


def _program_of(pid):
    try:
        return pathlib.Path(f"/proc/{pid}/exe").resolve(strict=True)
    except OSError:
        return None
