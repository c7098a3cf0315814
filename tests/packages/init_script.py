"""Scenarios of the init script for OpenRC, compared with the unit for systemd.

The functions of the script run in sh, with stand-ins for the programs that they start. tests/packages/openrc runs the
script by OpenRC itself.
"""

import os
import re
import stat

from contents import HELPER
from scenario import run, scenario
from tree import UNIT, install, without_compression
from waiting import check

COMPONENT = "ble-kovra-helper-openrc"
SCRIPT = "/etc/init.d/ble-kovra-helper"
HELPER_PROGRAM = "/usr/libexec/ble-kovra-helper"
VARIABLES = ("supervisor", "command", "command_args", "umask", "respawn_delay", "respawn_max", "retry")


class InitScript:
    """The script as it is installed, with stand-ins for programs in a folder. Each records how it was called."""

    def __init__(self, built, name, status=0):
        place = built.folder / "init_script" / name
        self.installed = install(built.build, place / "root", "--component", COMPONENT)
        self.path = place / "root" / SCRIPT[1:]
        self.calls, self.programs = place / "calls", place / "programs"
        self.programs.mkdir()
        self.calls.touch()
        for program in ("setpriv", "ble-kovra-helper", "systemd-tmpfiles"):
            (self.programs / program).write_text(f'#!/bin/sh\necho "{program} $*" >>"{self.calls}"\nexit {status}\n')
            (self.programs / program).chmod(0o755)

    def sh(self, command):
        """Loads the script into sh as OpenRC does, and runs a command there. Fails if that fails."""
        text = self.path.read_text()
        for program in ("/usr/bin/setpriv", HELPER_PROGRAM):
            check(program in text, f"{program} is not in {text}")
            text = text.replace(program, str(self.programs / program.rpartition("/")[2]))
        return run("sh", "-c", f"{text}\n{command}\n", env={**os.environ, "PATH": f"{self.programs}:/usr/bin:/bin"})

    def called(self, function):
        """Returns the commands that a function of the script has run."""
        self.calls.write_text("")
        self.sh(function)
        return self._without_folder(self.calls.read_text()).splitlines()

    def variables(self):
        values = self.sh("".join(f'echo "${name}"\n' for name in VARIABLES))
        return dict(zip(VARIABLES, self._without_folder(values).splitlines()))

    def _without_folder(self, text):
        return text.replace(f"{self.programs}/", "")


def unit_directives(built):
    """Returns the values of the unit's directives: for each name a list."""
    install(built.build, built.folder / "init_script/unit", "--component", "ble-kovra-helper")
    lines = re.sub(r" *\\\n\s*", " ", (built.folder / "init_script/unit" / UNIT[1:]).read_text()).splitlines()
    found = {}
    for name, equals, value in (line.partition("=") for line in lines):
        if equals:
            found.setdefault(name, []).append(value)
    return found


def plain(command):
    """Returns a command of the unit without its prefixes and without the folders of the programs."""
    return re.sub(r"/\S+/", "", command.lstrip("-+"))


@scenario("cmake --install puts the init script for OpenRC in place only if its component is named.")
def init_script_on_request(built):
    script = InitScript(built, "on_request")
    check(script.installed == {SCRIPT}, f"the component contains {script.installed}")
    check(stat.S_IMODE(script.path.stat().st_mode) == 0o755, f"it has mode {script.path.stat().st_mode:o}")
    whole = install(built.build, built.folder / "init_script/whole")
    check(SCRIPT not in whole, "it is also installed without being asked for")
    named = set(re.findall(r"/usr/libexec/[\w/-]*\w", script.path.read_text()))
    check(named == {HELPER_PROGRAM} and named <= without_compression(HELPER), f"it names {named}")
    check(script.path.read_text().startswith("#!/sbin/openrc-run\n"), "it is not run by OpenRC")
    run("sh", "-n", script.path)


@scenario("The init script starts the helper as the unit does: as its user, without capabilities, again and again.")
def init_script_starts(built):
    unit, found = unit_directives(built), InitScript(built, "starts").variables()
    check(found["supervisor"] == "supervise-daemon", f"the supervisor is {found['supervisor']}")
    user = [f"--reuid={unit['User'][0]}", f"--regid={unit['Group'][0]}", "--clear-groups"]
    check((unit["NoNewPrivileges"], unit["CapabilityBoundingSet"]) == (["yes"], [""]), "the unit has more rights")
    rights = ["--no-new-privs", "--inh-caps=-all", "--bounding-set=-all"]
    words = [found["command"], *found["command_args"].split()]
    check(words == ["setpriv", *user, *rights, plain(unit["ExecStart"][0])], f"it starts {words}")
    check(int(found["umask"], 8) == int(unit["UMask"][0], 8), f"the umask is {found['umask']}")
    check(unit["Restart"] == ["always"] and unit["StartLimitIntervalSec"] == ["0"], "the unit gives up")
    check((found["respawn_delay"], found["respawn_max"]) == (unit["RestartSec"][0], "0"), f"it respawns by {found}")
    check(found["retry"] == f"TERM/{unit['TimeoutStopSec'][0]}/KILL/5", f"it is stopped by {found['retry']}")


@scenario("The init script runs the unit's commands before the start and after the stop, and goes on if they fail.")
def init_script_commands(built):
    unit = unit_directives(built)
    for status in (0, 1):
        script = InitScript(built, f"commands-{status}", status)
        before = [plain(command) for command in unit["ExecStartPre"]]
        check(script.called("start_pre") == before, f"before the start it calls {script.called('start_pre')}")
        after = [plain(command) for command in unit["ExecStopPost"]]
        check(script.called("stop_post") == after, f"after the stop it calls {script.called('stop_post')}")
