"""Scenarios of ble-kovractl: what it says to whom about a real trackpad, and what it makes the application do."""

import json
import subprocess

from laptop import HELPER, MOUSE, run
from people import ANNA, BORIS
from running import scenario
from sessions import Session
from waiting import check, wait_for

CONTROL = "/usr/bin/ble-kovractl"
WORKS, MUTED, CANNOT_TELL = 0, 1, 2


def asked(session, arguments):
    """Runs ble-kovractl in the session. Returns its exit code and its lines."""
    output = session.person.home / "control"
    output.unlink(missing_ok=True)
    code = int(session.run(f"{CONTROL} {arguments} </dev/null >{output} 2>&1; echo $?"))
    return code, output.read_text(encoding="utf-8").splitlines()


def asked_by_root(arguments):
    done = subprocess.run([CONTROL, *arguments.split()], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)
    return done.returncode, done.stdout.splitlines()


def expect(answer, code, *lines):
    """Expects this exit code, the first of the lines as the answer, and each of the others somewhere."""
    check(answer[0] == code, f"it ends with {answer[0]} instead of {code}: {answer[1]}")
    check(answer[1][:1] == list(lines[:1]), f"it answers {answer[1]}")
    for line in lines[1:]:
        check(line in answer[1], f"{line!r} is not in {answer[1]}")


def answering(session):
    """Waits until the application in this session answers ble-kovractl."""
    def contact():
        code, lines = asked(session, "status --json")
        return code in (WORKS, MUTED) and json.loads(lines[0])["application"]["contact"] == "answered"
    wait_for(contact, "the application to answer")


ONLY_ANNA = "The trackpad is muted: the application of anna wants it, and only anna can ask it why."


@scenario("ble-kovractl tells Anna which mouse mutes her trackpad; Boris and root learn whose application does.")
def status(laptop):
    pad = laptop.plug_pad()
    anna, boris = laptop.log_in(ANNA), laptop.log_in(BORIS)
    anna.activate()
    application = laptop.start()
    answering(anna)
    expect(asked(anna, "status"), WORKS, f"The trackpad works: {MOUSE} is not connected.",
           f"Trackpad: {pad.inputs[0].name} ({pad.inputs[0].number}) works.", "At the machine: anna.", "Switch: on.",
           "Service: runs (enabled), and serves anna.", f"Chosen: {MOUSE} is not connected.",
           "Hot key: this desktop offers none.", "Tray: none shows the icon.")
    mouse = laptop.plug_mouse()
    laptop.expect_dead(pad)
    answer = asked(anna, "status")
    expect(answer, MUTED, f"The trackpad is muted: {MOUSE} is connected.", f"Chosen: {MOUSE} is connected.",
           "Decision: mute.")
    check(any(line.endswith("by the time of the flag.") for line in answer[1]), f"it says {answer[1]}")
    for answer in (asked(boris, "status"), asked_by_root("status")):
        expect(answer, MUTED, ONLY_ANNA,
               f"Application: runs as anna, process {application.pid}. What it knows, only anna can ask.")
    # Only root may read the service's record, which has the time of the muting itself.
    told = json.loads(asked_by_root("status --json")[1][0])["trackpads"]
    check([each["mutedByService"] for each in told] == [True] and told[0]["since"] > 0, f"root is told {told}")
    told = json.loads(asked(boris, "status --json")[1][0])["trackpads"]
    check([each["mutedByService"] for each in told] == [None], f"Boris is told {told}")
    mouse.unplug()
    laptop.expect_back_after_grace(mouse, pad)
    expect(asked(anna, "status"), WORKS, f"The trackpad works: {MOUSE} is not connected.")
    expect(asked(boris, "status"), WORKS, "The trackpad works: the flag says \"off\".")


@scenario("Over ssh ble-kovractl answers as at the machine, and says that this is a remote login.")
def remote(laptop):
    pad = laptop.plug_pad()
    laptop.log_in(ANNA).activate()
    laptop.mute(pad)
    answering(laptop.log_in(ANNA))
    far = Session(ANNA, "elsewhere.example")
    expect(asked(far, "status"), MUTED, f"The trackpad is muted: {MOUSE} is connected.",
           "At the machine: anna. You are logged in remotely.")
    far.log_out()


@scenario("Without the helper ble-kovractl says that it is missing, and its checklist names the command that helps.")
def without_helper(laptop):
    pad = laptop.plug_pad()
    anna = laptop.log_in(ANNA)
    laptop.mute(pad)
    answering(anna)
    run("systemctl", "stop", HELPER)
    laptop.expect_alive(pad)
    expect(asked(anna, "status"), WORKS,
           "The trackpad works, although BLE-kovra wants it muted: the service that mutes it does not run.",
           "Service: does not run (enabled).")
    code, lines = asked(anna, "doctor")
    place = lines.index("WRONG  Service: does not run (enabled).")
    check(code == 1 and lines[place + 1] == "       sudo systemctl enable --now ble-kovra-helper", f"it says {lines}")
    pad.inputs[0].inhibit(True)
    expect(asked(anna, "status"), MUTED, "The trackpad is muted, but not by BLE-kovra, whose service does not run: "
                                         "another program has inhibited it.")
    pad.inputs[0].inhibit(False)
    run("systemctl", "start", HELPER)
    laptop.expect_dead(pad)
    code, lines = asked(anna, "doctor")
    check("ok     Service: runs (enabled), and serves anna." in lines, f"it says {lines}")


@scenario("Anna's actions reach her application: off unmutes, on and toggle mute again, quit ends it. Boris's do not.")
def actions(laptop):
    pad = laptop.plug_pad()
    anna, boris = laptop.log_in(ANNA), laptop.log_in(BORIS)
    anna.activate()
    application, _ = laptop.mute(pad)
    answering(anna)
    for action, expectation in (("off", laptop.expect_alive), ("on", laptop.expect_dead),
                                ("toggle", laptop.expect_alive), ("toggle", laptop.expect_dead)):
        check(asked(anna, action) == (0, []), f"{action} fails")
        expectation(pad)
    for action in ("off", "quit"):
        expect(asked(boris, action), 1, "ble-kovractl: BLE-kovra is not running in this session")
        expect(asked_by_root(action), 1, "ble-kovractl: BLE-kovra is not running in this session")
    laptop.expect_dead(pad)
    application.expect_running()
    check(asked(anna, "quit") == (0, []), "quit fails")
    wait_for(lambda: not application.is_running(), "the application to end")
    laptop.expect_alive(pad)
    expect(asked(anna, "status"), WORKS, "The trackpad works: BLE-kovra is not running.", "Application: does not run.")


@scenario("Without a trackpad ble-kovractl cannot tell; a touchpad that counts as external is listed with the reasons.")
def no_trackpad(laptop):
    laptop.install()
    anna = laptop.log_in(ANNA)
    expect(asked(anna, "status"), CANNOT_TELL, "Whether the trackpad is muted cannot be told: no built-in trackpad is "
                                               "recognized. See ble-kovractl doctor.")
    laptop.plug_pad("Logitech Touchpad", 0x046d, 0x1234)
    run("udevadm", "settle", "--timeout=60")
    code, lines = asked(anna, "doctor")
    check(code == 1 and "WRONG  No built-in trackpad is recognized." in lines, f"it says {lines}")
    for line in ("           vendor=046d", "           product=1234", "           ID_INPUT_TOUCHPAD=1"):
        check(line in lines, f"{line!r} is not in {lines}")
