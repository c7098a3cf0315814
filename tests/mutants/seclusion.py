"""Runs a program apart from the machine: a mutant may kill, leave or remove what it should not.

The program gets process numbers and an empty /tmp of its own. When it ends, or its time is over, the kernel ends every
process that it has started.
"""

import os
import subprocess

_UNSHARE = ["unshare", "--pid", "--fork", "--kill-child", "--mount-proc"]
_AS_USER = ["--user", "--map-current-user", "--keep-caps"]
# The shell stays the first process, since signals do not end that one. An ordinary user has capabilities only to mount.
_SCRIPT = 'mount -t tmpfs -o mode=1777 tmpfs /tmp || exit; "$@"; exit $?'
_WITHOUT_CAPABILITIES = ["setpriv", "--inh-caps=-all", "--ambient-caps=-all"]


def run(command, seconds, folder, **variables):
    """Returns the exit status and the output. The status is None if the time was over."""
    is_root = os.geteuid() == 0
    how = [*_UNSHARE, *([] if is_root else _AS_USER), "sh", "-c", _SCRIPT, "sh",
           *([] if is_root else _WITHOUT_CAPABILITIES), *map(str, command)]
    environment = {**os.environ, **variables, "HOME": "/tmp", "TMPDIR": "/tmp"}
    process = subprocess.Popen(how, cwd=folder, env=environment, stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                               stderr=subprocess.STDOUT, start_new_session=True)
    try:
        words = process.communicate(timeout=seconds)[0].decode(errors="replace")
        return process.returncode, words
    except subprocess.TimeoutExpired:
        return None, ""
    finally:
        if process.poll() is None:
            process.kill()
        process.wait()
