"""Scripts in place of two programs: the tool that lists system extensions, and the driver's manager."""

import os
import pathlib
import shutil

TOOL = pathlib.Path("/usr/bin/systemextensionsctl")
MANAGER = pathlib.Path("/Applications/.Karabiner-VirtualHIDDevice-Manager.app/Contents/MacOS/"
                       "Karabiner-VirtualHIDDevice-Manager")
IDENTIFIER = "org.pqrs.Karabiner-DriverKit-VirtualHIDDevice"


def listing(state):
    """Returns a script for the listing tool. The script lists the driver with this state."""
    return f"""#!/bin/sh
[ "$*" = list ] || exit 2
printf '1 extension(s)\\n--- com.apple.system_extension.driver_extension\\n'
printf 'enabled\\tactive\\tteamID\\tbundleID (version)\\tname\\t[state]\\n'
printf '*\\t*\\tTEAM000000\\t{IDENTIFIER} (1.0.0/1.0.0)\\t{IDENTIFIER}\\t[{state}]\\n'
"""


def put(program, script):
    program.parent.mkdir(parents=True, exist_ok=True)
    program.write_text(script)
    program.chmod(0o755)


def put_active():
    """Installs a listing tool that reports an active driver, so that launch shows no alert. Removes the manager."""
    put(TOOL, listing("activated enabled"))
    shutil.rmtree("/Applications", ignore_errors=True)


class Hanging:
    """A listing tool that hangs until release() is called. At its start it records its PID and the flag's content."""

    def __init__(self, folder, flag, state):
        self._started, self._go = folder / "started", folder / "go"
        for left in (self._started, self._go):
            left.unlink(missing_ok=True)
        os.mkfifo(self._go)
        note = f"echo $$ $(cat '{flag}') >{self._started}.new; mv {self._started}.new {self._started}"
        put(TOOL, listing(state).replace("#!/bin/sh\n", f"#!/bin/sh\n{note}; read -r go <{self._go}\n"))

    def started(self):
        """Returns the tool's PID and the flag's content at its start, or None if it was not started yet."""
        words = self._started.read_text().split() if self._started.exists() else None
        return words and (int(words[0]), " ".join(words[1:]))

    def release(self):
        self._go.write_text("go\n")
