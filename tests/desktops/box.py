"""The first process of a container, in namespaces of its own. It mounts the root and then runs a command there.

  box.py SPECIFICATION      a JSON object, see Box

The mounts exist only in the namespace of this process, and disappear with its last process.
"""

import dataclasses
import json
import os
import pathlib
import subprocess
import sys

DEVICES = ["null", "zero", "full", "random", "urandom", "tty"]
# What a container must not change on the machine: its modules, its clock, and its kernel's log.
WITHHELD = "-sys_module,-sys_time,-syslog"


@dataclasses.dataclass
class Box:
    # The folders of the root file system, the topmost first. They are not changed.
    lower: list
    # An empty folder, where the root is mounted.
    root: str
    # What is run in the root, and its whole environment.
    command: list
    environment: dict
    # The folder that takes all changes, and an empty folder beside it. Without them memory takes the changes.
    upper: str = ""
    work: str = ""
    # Folders of the machine that appear in the root, by their paths there.
    folders: dict = dataclasses.field(default_factory=dict)
    # The container has a network of its own, and its own control groups. Otherwise it has the machine's network.
    boots: bool = True

    def enter(self):
        self._mount_root()
        self._mount_system()
        if not self.boots:
            self._use_network()
        for path, folder in self.folders.items():
            self._make(path)
            _mount("--bind", folder, self._place(path))
        # The root of the machine leaves this namespace, except for the folders that are mounted above.
        os.chdir(self.root)
        subprocess.run(["pivot_root", ".", "."], check=True)
        subprocess.run(["umount", "-l", "."], check=True)
        os.chdir("/")
        command = ["setpriv", f"--bounding-set={WITHHELD}", "--", *self.command]
        os.execvpe(command[0], command, self.environment)

    def _mount_root(self):
        upper, work = self.upper, self.work
        if not upper:
            memory = pathlib.Path(self.root).with_name("memory")
            memory.mkdir(exist_ok=True)
            _mount("-t", "tmpfs", "-o", "mode=755", "tmpfs", memory)
            upper, work = memory / "upper", memory / "work"
            upper.mkdir()
            work.mkdir()
        options = f"lowerdir={':'.join(self.lower)},upperdir={upper},workdir={work}"
        _mount("-t", "overlay", "-o", options, "overlay", self.root)

    def _mount_system(self):
        _mount("-t", "proc", "proc", self._place("/proc"))
        # These attributes belong to the whole machine.
        for path in filter(os.path.exists, ("/proc/sys", "/proc/sysrq-trigger")):
            _mount("--bind", self._place(path), self._place(path))
            _mount("-o", "remount,bind,ro", self._place(path))
        _mount("-t", "sysfs", "-o", "ro", "sysfs", self._place("/sys"))
        for path, mode in (("/dev", 755), ("/run", 755), ("/tmp", 1777)):
            self._make(path)
            _mount("-t", "tmpfs", "-o", f"mode={mode}", "tmpfs", self._place(path))
        for device in DEVICES:
            self._place(f"/dev/{device}").touch()
            _mount("--bind", f"/dev/{device}", self._place(f"/dev/{device}"))
        for path in ("/dev/pts", "/dev/shm"):
            self._place(path).mkdir()
        _mount("-t", "devpts", "-o", "newinstance,ptmxmode=0666,mode=620,gid=5", "devpts", self._place("/dev/pts"))
        _mount("-t", "tmpfs", "-o", "mode=1777", "tmpfs", self._place("/dev/shm"))
        for name, target in (("ptmx", "pts/ptmx"), ("fd", "/proc/self/fd"), ("stdin", "/proc/self/fd/0"),
                             ("stdout", "/proc/self/fd/1"), ("stderr", "/proc/self/fd/2")):
            self._place(f"/dev/{name}").symlink_to(target)
        if self.boots:
            _mount("-t", "cgroup2", "cgroup2", self._place("/sys/fs/cgroup"))
            # Without consoles, the login manager accepts local sessions that have none.
            _mount("-t", "tmpfs", "-o", "mode=755", "tmpfs", self._place("/sys/class/tty"))

    def _use_network(self):
        resolver = pathlib.Path("/etc/resolv.conf").read_bytes()
        self._make("/etc")
        self._place("/etc/resolv.conf").write_bytes(resolver)

    def _make(self, path):
        self._place(path).mkdir(parents=True, exist_ok=True)

    def _place(self, path):
        return pathlib.Path(self.root) / path.lstrip("/")


def _mount(*words):
    subprocess.run(["mount", *map(str, words)], check=True)


if __name__ == "__main__":
    Box(**json.loads(sys.argv[1])).enter()
