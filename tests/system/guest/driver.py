"""Stand-ins for the driver's two programs: the tool that lists the system's extensions, and the driver's manager."""

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
