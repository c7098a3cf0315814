"""A polkit agent as desktops have one, but without a window: it answers each request at once.

    agent.py SESSION FILE             closes the dialog
    agent.py SESSION FILE PASSWORD    enters this password for the first administrator

It writes "ready" into the file, and then one line for each request: the action and the message.
"""

import subprocess
import sys

from gi.repository import Gio, GLib

HELPER = "/usr/lib/polkit-1/polkit-agent-helper-1"
PATH = "/org/kovra/agent"
AUTHORITY = ["org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
             "org.freedesktop.PolicyKit1.Authority"]
INTERFACE = """<node><interface name="org.freedesktop.PolicyKit1.AuthenticationAgent">
  <method name="BeginAuthentication">
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="s" direction="in"/>
    <arg type="a{ss}" direction="in"/><arg type="s" direction="in"/><arg type="a(sa{sv})" direction="in"/>
  </method>
  <method name="CancelAuthentication"><arg type="s" direction="in"/></method>
</interface></node>"""


class Agent:
    def __init__(self, session, requests, password):
        self._requests, self._password = requests, password
        # polkit forgets the agent when this object is gone, since that closes the connection.
        self._bus = Gio.bus_get_sync(Gio.BusType.SYSTEM)
        interface = Gio.DBusNodeInfo.new_for_xml(INTERFACE).interfaces[0]
        self._bus.register_object(PATH, interface, self._called, None, None)
        subject = ("unix-session", {"session-id": GLib.Variant("s", session)})
        registration = GLib.Variant("((sa{sv})ss)", (subject, "en_US.UTF-8", PATH))
        self._bus.call_sync(*AUTHORITY, "RegisterAuthenticationAgent", registration, None, Gio.DBusCallFlags.NONE, -1)
        self._record("ready")

    def _called(self, _bus, _sender, _path, _interface, method, arguments, call):
        if method == "BeginAuthentication":
            action, message, _icon, _details, cookie, identities = arguments.unpack()
            self._record(f"{action} {message}")
            if self._password is None:
                call.return_dbus_error("org.freedesktop.PolicyKit1.Error.Cancelled", "closed")
                return
            self._enter_password(identities[0][1]["uid"], cookie)
        call.return_value(None)

    def _enter_password(self, user, cookie):
        """Lets polkit's own program check the password. That program tells polkit the result."""
        name = subprocess.run(["id", "-nu", str(user)], capture_output=True, text=True, check=True).stdout.strip()
        with subprocess.Popen([HELPER, name], stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                              bufsize=1) as helper:
            print(cookie, file=helper.stdin)
            for line in helper.stdout:
                if line.startswith("PAM_PROMPT_ECHO_OFF"):
                    print(self._password, file=helper.stdin)
                elif line.startswith(("SUCCESS", "FAILURE")):
                    return

    def _record(self, line):
        with open(self._requests, "a", encoding="utf-8") as file:
            print(line, file=file)


def main():
    session, requests = sys.argv[1:3]
    agent = Agent(session, requests, sys.argv[3] if len(sys.argv) > 3 else None)
    GLib.MainLoop().run()
    del agent


main()
