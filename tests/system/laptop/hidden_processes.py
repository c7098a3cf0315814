"""A scenario in which /proc is mounted with hidepid=2, so that users see only their own processes."""

import contextlib

from laptop import HELPER, run
from people import ANNA
from running import scenario
from waiting import check


@contextlib.contextmanager
def processes_hidden():
    run("mount", "-o", "remount,hidepid=2", "/proc")
    try:
        yield
    finally:
        run("mount", "-o", "remount,hidepid=0", "/proc")


@scenario("Where each user sees only their own processes, the helper still finds the application.")
def hidden_processes(laptop):
    one = laptop.plug_pad()
    laptop.install()
    with processes_hidden():
        run("systemctl", "restart", HELPER)
        check(not laptop.log_in(ANNA).succeeds("test -e /proc/1"), "Anna sees other processes")
        _, mouse = laptop.mute(one)
        mouse.unplug()
        return laptop.expect_back_after_grace(mouse, one)
