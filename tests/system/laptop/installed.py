"""Scenarios of the installed packages: the helper's unit, the tool that lists the driver, the driver's manager."""

import pathlib
import re

from laptop import HELPER, run
from people import ANNA
from running import scenario
from waiting import check

MANAGER = "/Applications/.Karabiner-VirtualHIDDevice-Manager.app/Contents/MacOS/Karabiner-VirtualHIDDevice-Manager"
RULE = pathlib.Path("/etc/polkit-1/rules.d/10-kovra.rules")
PERMISSION = """polkit.addRule(function(action, subject) {
    if (action.id.indexOf("org.ble_kovra.helper.") == 0 && subject.user == "anna" && subject.local && subject.active)
        return polkit.Result.YES;
});
"""


def listed():
    return run("systemextensionsctl", "list").strip().rpartition("\t")[2]


@scenario("The helper works within the limits of its unit: no capability, filtered system calls, no home folders.")
def walls(laptop):
    one = laptop.plug_pad()
    _, mouse = laptop.mute(one)
    helper = pathlib.Path("/proc", run("systemctl", "show", "-P", "MainPID", HELPER).strip())
    status = dict(re.findall(r"^(\w+):\t(.*)$", (helper / "status").read_text(), re.M))
    sets = {name: int(status[name], 16) for name in ["CapInh", "CapPrm", "CapEff", "CapBnd", "CapAmb"]}
    check(not any(sets.values()), f"its capabilities are {sets}")
    limits = (status["Seccomp"], status["NoNewPrivs"])
    check(limits == ("2", "1"), f"seccomp and no_new_privs are {limits}")
    homes = list((helper / "root/home").iterdir())
    check(not homes, f"it sees the homes {homes}")
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, one)


@scenario("The disabled helper is listed as waiting for the user. The manager enables it if it may, else says why not.")
def manager(laptop):
    laptop.install()
    anna = laptop.log_in(ANNA)
    run("systemctl", "disable", "--now", HELPER)
    check(listed() == "[activated waiting for user]", f"listed as {listed()}")

    output = anna.run(f"{MANAGER} forceActivate 2>&1 && echo and it went well")
    check("no polkit agent" in output, f"without an agent that asks for a password, the manager prints {output!r}")
    check(listed() == "[activated waiting for user]", f"listed as {listed()}")

    # This polkit rule permits Anna to activate the helper without a password.
    RULE.parent.mkdir(parents=True, exist_ok=True)
    RULE.write_text(PERMISSION)
    run("systemctl", "restart", "polkit.service")
    check(anna.succeeds(f"{MANAGER} forceActivate"), "the manager failed")
    check(listed() == "[activated enabled]", f"listed as {listed()}")
    RULE.unlink()
