"""Scenarios of a disabled helper: the application's alert, and what a polkit agent answers to its button."""

import contextlib
import os
import pathlib
import shutil
import signal

from accounting import users_of
from application import is_running
from installed import listed
from laptop import AT_ONCE, HELPER, run
from people import ANNA, PASSWORD
from running import scenario
from screen import RETURN, Screen
from waiting import check, now, stay_until, wait_for

AGENT = pathlib.Path(__file__).resolve().with_name("agent.py")
REQUEST = "org.ble_kovra.helper.activate Authentication is required to let BLE-kovra mute the trackpad"
ENABLED, DISABLED = "[activated enabled]", "[activated waiting for user]"


class Agent:
    """The agent of a session. It answers each request with this password, or closes the dialog if there is none."""

    def __init__(self, session, password=None):
        home = session.person.home
        self._requests = home / "requests"
        self._requests.unlink(missing_ok=True)
        program = shutil.copy(AGENT, home / AGENT.name)
        errors = home / "agent-errors"
        arguments = f"{session.number} {self._requests} {password or ''}"
        self._pid = int(session.run(f"python3 -B {program} {arguments} </dev/null >{errors} 2>&1 & echo $!"))
        wait_for(lambda: self._lines()[:1] == ["ready"],
                 f"the agent to be ready: {errors.read_text() if errors.exists() else ''}")

    def requests(self):
        return self._lines()[1:]

    def close(self):
        os.kill(self._pid, signal.SIGKILL)
        wait_for(lambda: not is_running(self._pid), "the agent to end")

    def _lines(self):
        return self._requests.read_text(encoding="utf-8").splitlines() if self._requests.exists() else []


@contextlib.contextmanager
def disabled_helper(laptop):
    laptop.install()
    run("systemctl", "disable", "--now", HELPER)
    try:
        yield
    finally:
        run("systemctl", "enable", "--now", HELPER)


def click_activate(laptop, screen):
    """Starts Anna's application and presses the first button of its alert. Returns the application."""
    application = laptop.start(display=screen.name, with_helper=False)
    screen.wait_alerts(1)
    screen.answer_alert(RETURN)
    return application


def expect_refusal(laptop, screen, reason, agent=None):
    application = click_activate(laptop, screen)
    application.wait_output(f"ble-kovra-helper: not activated: {reason}")
    if agent:
        check(agent.requests() == [REQUEST], f"the agent's requests are {agent.requests()}")
    check(listed() == DISABLED, f"listed as {listed()}")
    check(not screen.windows(), f"there are windows: {screen.windows()}")
    application.expect_running()
    application.quit()


@scenario("With the helper disabled an alert offers to activate it. An administrator's password does so, for good.")
def activated(laptop):
    anna = laptop.log_in(ANNA)
    pad = laptop.plug_pad()
    with disabled_helper(laptop), contextlib.closing(Screen()) as screen:
        with contextlib.closing(Agent(anna, PASSWORD)) as agent:
            started = now()
            application = click_activate(laptop, screen)
            alerted = now() - started
            wait_for(lambda: listed() == ENABLED, "the helper to be enabled")
            check(agent.requests() == [REQUEST], f"the agent's requests are {agent.requests()}")
        # The application that was started without a helper now mutes the pad.
        laptop.plug_mouse()
        laptop.expect_dead(pad)
        application.quit()
        laptop.expect_alive(pad)

        with users_of("systemextensionsctl") as ended:
            application = laptop.start(display=screen.name)
            laptop.expect_dead(pad)
            wait_for(ended, "the application to have listed the drivers")
        stay_until(now() + AT_ONCE)
        children = pathlib.Path(f"/proc/{application.pid}/task/{application.pid}/children").read_text()
        check(not children, f"the next start opens a window: {children}")
    return f"activated {alerted:.1f} s after the start"


@scenario("If the dialog is closed, or the password is wrong, the helper stays disabled, and one line says why.")
def activation_refused(laptop):
    anna = laptop.log_in(ANNA)
    with disabled_helper(laptop), contextlib.closing(Screen()) as screen:
        with contextlib.closing(Agent(anna)) as agent:
            expect_refusal(laptop, screen, "the request was dismissed", agent)
        with contextlib.closing(Agent(anna, "wrong")) as agent:
            expect_refusal(laptop, screen, "Error executing command as another user: Not authorized", agent)


@scenario("Without a polkit agent in the session the helper stays disabled, and one line names the command for root.")
def activation_without_an_agent(laptop):
    with disabled_helper(laptop), contextlib.closing(Screen()) as screen:
        expect_refusal(laptop, screen, "no polkit agent runs in this session to ask for the password; as root: "
                                       "systemctl enable --now ble-kovra-helper")
