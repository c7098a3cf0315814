"""Scenarios of the programs in the helper's package that list and activate the driver.

The programs run as packaged, except that the test replaces some paths, such as /run/systemd/system and /proc.
"""

import os
import pathlib
import subprocess
import tempfile

from root import MANAGER
from scenario import scenario
from waiting import check, now

SYSTEM_PATH = "PATH=/usr/sbin:/usr/bin:/sbin:/bin\n"
ACTIVE = "[activated enabled]"
WAITING = "[activated waiting for user]"
UNIT = "ble-kovra-helper.service"


class Machine:
    """A folder with copies of the packaged programs, and with the commands and files that they use."""

    def __init__(self, built):
        self.folder = pathlib.Path(tempfile.mkdtemp(dir=built.folder))
        self.calls = self.folder / "calls"
        self._programs = self.folder / "programs"
        self._programs.mkdir()
        (self.folder / "proc").mkdir()
        package = built.unpacked("ble-kovra-helper")
        self._take(package / "usr/bin/systemextensionsctl")
        self._take(package / "usr/libexec/ble-kovra/driver-manager")
        self._take(package / "usr/libexec/ble-kovra/activate-helper")
        self._take(package / "usr/libexec/ble-kovra/start-helper")

    def _take(self, program):
        text = program.read_text()
        check(text.count(SYSTEM_PATH) == 1, f"{program.name} uses the caller's PATH")
        for old, new in ((SYSTEM_PATH, f"PATH={self._programs}:/usr/sbin:/usr/bin:/sbin:/bin\n"),
                         ("/run/systemd/system", f"{self.folder}/systemd"), ("/proc/", f"{self.folder}/proc/"),
                         ("/usr/libexec/ble-kovra/", f"{self._programs}/"),
                         ("/usr/libexec/ble-kovra-helper", f"{self._programs}/ble-kovra-helper"),
                         ("/run/openrc", f"{self.folder}/openrc"), ("/etc/init.d", f"{self.folder}/init.d")):
            text = text.replace(old, new)
        self.put(program.name, text)

    def put(self, name, text):
        program = self._programs / name
        program.write_text(text)
        program.chmod(0o755)

    def put_systemd(self, active, enabled):
        (self.folder / "systemd").mkdir()
        self.put("systemctl", f"#!/bin/sh\necho systemctl $* >>{self.calls}\n"
                              f"case $* in *is-active*) [ {active} = active ]; exit ;; esac\n"
                              f"[ $1 = show ] && printf 'ActiveState={active}\\nUnitFileState={enabled}\\n'\nexit 0\n")

    def put_process(self, number, name, user):
        process = self.folder / "proc" / str(number)
        process.mkdir()
        (process / "comm").write_text(name + "\n")
        status = f"Name:\t{name}\nUmask:\t0022\nPid:\t{number}\nUid:\t{user}\t{user}\t{user}\t{user}\n"
        (process / "status").write_text(status)

    def run(self, name, *arguments):
        """Returns the exit status, stdout and stderr. PATH names a missing folder, since the programs must set their
        own."""
        done = subprocess.run([self._programs / name, *arguments], capture_output=True, text=True, timeout=60,
                              env={**os.environ, "PATH": "/nowhere"})
        return done.returncode, done.stdout, done.stderr

    def state(self):
        """Returns the driver's state from the listing tool. Checks the format of the list, which the application
        parses."""
        code, listing, error = self.run("systemextensionsctl", "list")
        check((code, error) == (0, ""), f"it ended with {code} and printed {error!r}")
        lines = listing.splitlines()
        check(len(lines) == 4 and lines[0] == "1 extension(s)" and listing.endswith("\n"), listing)
        columns, found = lines[2].split("\t"), lines[3].split("\t")
        check(len(columns) == len(found) == 6, listing)
        check(found[3].split()[0] == "org.pqrs.Karabiner-DriverKit-VirtualHIDDevice", listing)
        return found[5]


@scenario("The listing tool reports the driver as enabled if the service runs and is enabled, with one query.")
def lists_the_state_from_systemd(built):
    for active, enabled, wanted in (
            ("active", "enabled", ACTIVE), ("active", "enabled-runtime", ACTIVE), ("active", "disabled", WAITING),
            ("inactive", "enabled", WAITING), ("failed", "enabled", WAITING), ("activating", "enabled", WAITING),
            ("inactive", "masked", WAITING), ("inactive", "", WAITING)):
        machine = Machine(built)
        machine.put_systemd(active, enabled)
        check(machine.state() == wanted, f"{active} and {enabled!r} is {machine.state()}")
    machine = Machine(built)
    machine.put_systemd("active", "enabled")
    machine.state()
    calls = machine.calls.read_text()
    check(calls == f"systemctl show -p ActiveState -p UnitFileState {UNIT}\n", calls)


@scenario("Without systemd the driver counts as enabled while a process of the helper's user is the helper.")
def lists_processes(built):
    machine = Machine(built)
    machine.put("id", "#!/bin/sh\n[ \"$*\" = '-u _ble-kovra-helper' ] && echo 997\n")
    check(machine.state() == WAITING, "there is no such process")
    machine.put_process(7, "ble-kovra-helpe", 1000)
    machine.put_process(8, "ble-kovra", 997)
    (machine.folder / "proc/9").mkdir()
    check(machine.state() == WAITING, "the process is another user's, or another program")
    machine.put_process(10, "ble-kovra-helpe", 997)
    check(machine.state() == ACTIVE, "there is such a process")
    machine.put("id", "#!/bin/sh\nexit 1\n")
    check(machine.state() == WAITING, "there is no such user")


@scenario("If systemd does not answer, the driver counts as not active.")
def lists_without_an_answer(built):
    machine = Machine(built)
    machine.put_systemd("active", "enabled")
    machine.put("systemctl", "#!/bin/sh\necho Failed to connect to bus >&2\nexit 1\n")
    check(machine.state() == WAITING, machine.state())


@scenario("Any other argument prints the usage on the error output.")
def usage(built):
    machine = Machine(built)
    for program, wrong in (("systemextensionsctl", ((), ("uninstall",), ("list", "more"), ("",))),
                           ("driver-manager", ((), ("deactivate",), ("activate", "more"), ("",)))):
        for arguments in wrong:
            code, output, error = machine.run(program, *arguments)
            check((code, output) == (64, "") and error.startswith("usage: ") and error.count("\n") == 1,
                  f"{program} {arguments}: {code}, {output!r}, {error!r}")


@scenario("The manager does nothing if the driver is active already.")
def manager_has_nothing_to_do(built):
    machine = Machine(built)
    machine.put_systemd("active", "enabled")
    for argument in ("activate", "forceActivate"):
        check(machine.run("driver-manager", argument) == (0, "", ""), argument)
    check("enable" not in machine.calls.read_text().split(), machine.calls.read_text())


def ordinary_user(machine, pkexec):
    machine.put_systemd("inactive", "disabled")
    machine.put("id", "#!/bin/sh\necho 1000\n")
    machine.put("pkexec", f"#!/bin/sh\necho pkexec $* >>{machine.calls}\nshift\n{pkexec}\n")
    machine.put("systemd-tmpfiles", f"#!/bin/sh\necho systemd-tmpfiles $* >>{machine.calls}\n")


@scenario("The manager requests the right through pkexec, then creates, enables and starts what is needed.")
def manager_activates(built):
    for argument in ("activate", "forceActivate"):
        machine = Machine(built)
        ordinary_user(machine, 'exec "$@"')
        check(machine.run("driver-manager", argument) == (0, "", ""), argument)
        calls = machine.calls.read_text().splitlines()[1:]
        wanted = [f"pkexec --disable-internal-agent {machine.folder}/programs/activate-helper",
                  "systemd-tmpfiles --create ble-kovra-helper.conf", f"systemctl --quiet enable {UNIT}",
                  f"systemctl --quiet is-active {UNIT}",
                  f"systemctl show --property=InvocationID --value {UNIT}", f"systemctl restart {UNIT}"]
        check(calls == wanted, f"it called {calls}")


@scenario("The manager does not restart a service that is active, but not enabled yet.")
def manager_enables(built):
    machine = Machine(built)
    ordinary_user(machine, 'exec "$@"')
    (machine.folder / "systemd").rmdir()
    machine.put_systemd("active", "disabled")
    check(machine.run("driver-manager", "activate") == (0, "", ""), "it failed")
    calls = machine.calls.read_text()
    check(f"systemctl --quiet enable {UNIT}\n" in calls and "restart" not in calls, calls)


@scenario("The manager does not wait for a helper that cannot start: it prints the reason and ends.")
def manager_cannot_start(built):
    machine = Machine(built)
    ordinary_user(machine, 'exec "$@"')
    state = machine.folder / "state"
    state.write_text("before")
    machine.put("systemctl", f"""#!/bin/sh
case $* in
*is-active*) exit 3 ;;
*InvocationID*) cat {state} ;;
*StatusText*) echo Cannot start ;;
restart*) echo after >{state}; exec sleep 30 ;;
esac
""")
    machine.put("journalctl", '#!/bin/sh\ncase $* in *INVOCATION_ID=after*) echo "the reason" ;; esac\n')
    begun = now()
    code, output, error = machine.run("driver-manager", "activate")
    took = now() - begun
    wanted = "ble-kovra-helper: not activated: cannot start: the reason\n"
    check((code, output, error) == (1, "", wanted), f"{code}, {output!r}, {error!r}")
    check(took < 10, f"it took {took:.1f} s")


@scenario("Without systemd the manager starts the helper as its user, after giving it the touchpads that are here.")
def manager_starts_the_daemon(built):
    machine = Machine(built)
    ordinary_user(machine, 'exec "$@"')
    (machine.folder / "systemd").rmdir()
    machine.put("start-stop-daemon", f"#!/bin/sh\necho start-stop-daemon $* >>{machine.calls}\n")
    # Here `ble-kovra-helper --grant` fails. The manager must start the helper nevertheless.
    machine.put("ble-kovra-helper", f"#!/bin/sh\necho ble-kovra-helper $* >>{machine.calls}\nexit 1\n")
    check(machine.run("driver-manager", "activate") == (0, "", ""), "it failed")
    helper, user = machine.folder / "programs/ble-kovra-helper", "_ble-kovra-helper"
    calls = machine.calls.read_text().splitlines()[1:]
    wanted = ["systemd-tmpfiles --create ble-kovra-helper.conf", f"ble-kovra-helper --grant {user}",
              f"start-stop-daemon --start --quiet --oknodo --background --chuid {user}:{user} --exec {helper}"]
    check(calls == wanted, f"it called {calls}")


@scenario("With OpenRC the manager adds the helper's service to those of each boot, and starts it, but only if its "
          "init script is installed.")
def manager_starts_by_openrc(built):
    machine = Machine(built)
    ordinary_user(machine, 'exec "$@"')
    (machine.folder / "systemd").rmdir()
    for program in ("rc-update", "rc-service", "start-stop-daemon", "ble-kovra-helper"):
        machine.put(program, f"#!/bin/sh\necho {program} $* >>{machine.calls}\n")
    (machine.folder / "openrc").mkdir()
    check(machine.run("driver-manager", "activate") == (0, "", ""), "it failed")
    calls = machine.calls.read_text()
    check("rc-" not in calls and "start-stop-daemon --start" in calls, f"without the script it called {calls}")
    (machine.folder / "init.d").mkdir()
    (machine.folder / "init.d/ble-kovra-helper").touch(mode=0o755)
    machine.calls.write_text("")
    check(machine.run("driver-manager", "activate") == (0, "", ""), "it failed")
    calls = machine.calls.read_text().splitlines()[1:]
    wanted = ["systemd-tmpfiles --create ble-kovra-helper.conf", "rc-update --quiet add ble-kovra-helper default",
              "rc-service --quiet ble-kovra-helper restart"]
    check(calls == wanted, f"it called {calls}")


@scenario("For root the manager does not use pkexec.")
def manager_of_root(built):
    machine = Machine(built)
    ordinary_user(machine, "exit 127")
    machine.put("id", "#!/bin/sh\necho 0\n")
    check(machine.run("driver-manager", "activate") == (0, "", ""), "it failed")
    check("pkexec" not in machine.calls.read_text(), machine.calls.read_text())


@scenario("If the manager fails, it prints the reason in one line on the error output and exits with 1.")
def manager_fails(built):
    prefix = "Error executing command as another user: "
    for pkexec, wanted in (
            (f"echo '{prefix}No authentication agent found.' >&2; exit 127", "no polkit agent runs in this session"),
            (f"echo '{prefix}Request dismissed' >&2; exit 126", "the request was dismissed"),
            (f"printf '{prefix}Not authorized\\n\\nThis incident has been reported.\\n' >&2; exit 127",
             "Not authorized"),
            ("echo 'Failed to enable unit: Unit file is masked.' >&2; exit 1", "is masked"),
            ("exit 3", "exit code 3")):
        machine = Machine(built)
        ordinary_user(machine, pkexec)
        code, output, error = machine.run("driver-manager", "forceActivate")
        check((code, output) == (1, "") and error.count("\n") == 1, f"{code}, {output!r}, {error!r}")
        check(error.startswith("ble-kovra-helper: not activated: ") and wanted in error, error)


@scenario("The polkit action covers only that program and requires an administrator.")
def policy(built):
    place = built.unpacked("ble-kovra-helper")
    text = (place / "usr/share/polkit-1/actions/org.ble_kovra.helper.policy").read_text()
    program = text.partition('<annotate key="org.freedesktop.policykit.exec.path">')[2].partition("<")[0]
    check(os.access(place / program[1:], os.X_OK), f"{program} is missing")
    manager = (place / "usr/libexec/ble-kovra/driver-manager").read_text()
    check(f"activate={program}\n" in manager, "the manager requests another program")
    for whose in ("any", "inactive", "active"):
        check(f"<allow_{whose}>auth_admin</allow_{whose}>" in text, whose)


@scenario("The manager is at the path that the application uses.")
def manager_path(built):
    source = (built.tree / "BLE_kovra/system/DriverActivator.h").read_text()
    check(f'"/{MANAGER}"' in source, "the application uses another path")
    check('"/usr/bin/systemextensionsctl"' in source, "the application uses another listing tool")
