"""Opens a PAM session for a user account, as login and sshd do, and runs a shell in it.

    login.py USER tty2           a local session on the second console
    login.py USER tty2 greeter   a session of the login screen
    login.py USER HOST           a remote session
"""

import ctypes
import os
import pwd
import signal
import sys

PAM_TTY, PAM_RHOST = 3, 4
SERVICE = "kovra-seat"


class Conversation(ctypes.Structure):
    _fields_ = [("ask", ctypes.c_void_p), ("data", ctypes.c_void_p)]


def open_session(user, place, kind):
    pam = ctypes.CDLL("libpam.so.0")
    handle = ctypes.c_void_p()
    conversation = Conversation()

    def call(name, *arguments):
        status = getattr(pam, name)(*arguments)
        if status != 0:
            sys.exit(f"login: {name} returned {status}")

    call("pam_start", SERVICE.encode(), user.encode(), ctypes.byref(conversation), ctypes.byref(handle))
    if place.startswith("tty"):
        call("pam_set_item", handle, PAM_TTY, place.encode())
        environment = {"XDG_SEAT": "seat0", "XDG_VTNR": place[3:], "XDG_SESSION_CLASS": kind}
    else:
        call("pam_set_item", handle, PAM_RHOST, place.encode())
        environment = {"XDG_SESSION_CLASS": kind}
    for name, value in environment.items():
        call("pam_putenv", handle, f"{name}={value}".encode())
    call("pam_open_session", handle, 0)
    pam.pam_getenvlist.restype = ctypes.POINTER(ctypes.c_char_p)
    given = {}
    for entry in pam.pam_getenvlist(handle):
        if entry is None:
            break
        name, _, value = entry.decode().partition("=")
        given[name] = value
    return given, lambda: call("pam_close_session", handle, 0)


def main():
    user, place = pwd.getpwnam(sys.argv[1]), sys.argv[2]
    given, close = open_session(user.pw_name, place, sys.argv[3] if len(sys.argv) > 3 else "user")
    shell = os.fork()
    if shell == 0:
        os.initgroups(user.pw_name, user.pw_gid)
        os.setgid(user.pw_gid)
        os.setuid(user.pw_uid)
        os.chdir(user.pw_dir)
        os.setsid()
        os.execve("/bin/sh", ["sh"], {"PATH": "/usr/bin:/bin", "HOME": user.pw_dir, "LANG": "en_US.UTF-8",
                                      "USER": user.pw_name, **given})
    signal.signal(signal.SIGTERM, signal.SIG_IGN)
    os.waitpid(shell, 0)
    close()


main()
