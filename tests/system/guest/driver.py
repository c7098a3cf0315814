"""Stand-ins for the driver's two programs: the tool that lists the system's extensions, and the driver's manager."""

import os
import pathlib
import shutil

TOOL = pathlib.Path("/usr/bin/systemextensionsctl")
MANAGER = pathlib.Path("/Applications/.Karabiner-VirtualHIDDevice-Manager.app/Contents/MacOS/"
                       "Karabiner-VirtualHIDDevice-Manager")
IDENTIFIER = "org.pqrs.Karabiner-DriverKit-VirtualHIDDevice"


def listing(state):
    """The tool as a script that lists the driver in this state."""
    return f"""#!/bin/sh
[ "$*" = list ] || exit 2
printf '1 extension(s)\\n--- com.apple.system_extension.driver_extension\\n'
printf 'enabled\\tactive\\tteamID\\tbundleID (version)\\tname\\t[state]\\n'
printf '*\\t*\\tTEAM000000\\t{IDENTIFIER} (1.0.0/1.0.0)\\t{IDENTIFIER}\\t[{state}]\\n'
"""


def put(program, script):
    """A program of a few lines, at a place where an installation would put it."""
    program.parent.mkdir(parents=True, exist_ok=True)
    program.write_text(script)
    program.chmod(0o755)


def put_active():
    """As where the driver is at work: nobody is asked anything at launch. Its manager is not there."""
    put(TOOL, listing("activated enabled"))
    shutil.rmtree("/Applications", ignore_errors=True)


class Hanging:
    """The tool while it hangs: it notes what the flag says when it is asked, and lists the driver once it is let go."""

    def __init__(self, folder, flag, state):
        self._asked, self._go = folder / "asked", folder / "go"
        for left in (self._asked, self._go):
            left.unlink(missing_ok=True)
        os.mkfifo(self._go)
        note = f"echo $$ $(cat '{flag}') >{self._asked}.new; mv {self._asked}.new {self._asked}; read -r go <{self._go}"
        put(TOOL, listing(state).replace("#!/bin/sh\n", f"#!/bin/sh\n{note}\n"))

    def asked(self):
        """The tool's process, and what the flag said when it began; nothing before."""
        words = self._asked.read_text().split() if self._asked.exists() else None
        return words and (int(words[0]), " ".join(words[1:]))

    def let_go(self):
        self._go.write_text("go\n")
