"""A private file system for the tests, with the flag's folder and a listing tool that reports an active driver."""

import ctypes
import errno
import os
import pathlib
import shutil
import tempfile

import driver

MS_BIND, MS_REC, MS_PRIVATE = 0x1000, 0x4000, 0x40000
CLONE_NEWNS, CLONE_NEWUSER = 0x00020000, 0x10000000
PR_SET_CHILD_SUBREAPER = 36

LIBRARY = pathlib.Path("/Library")
FLAG = LIBRARY / "Application Support" / "ble-kovra" / "state"
ACTIVE = driver.listing("activated enabled")

# The PIDs of the processes that _run_at_exit() has started. end_descendants() must not kill them.
_keepers = set()
_is_machine_used = False
_libc = ctypes.CDLL(None, use_errno=True)


class NotSecluded(Exception):
    """Raised if the machine permits no private file system. The text says why in one line."""


def seclude():
    """Gives this process and its future children a private file system with a flag folder and a listing tool.

    If not even root is permitted to do that, creates the folder and the tool on the machine itself.
    """
    root_outside = os.geteuid() == 0
    user, group = os.geteuid(), os.getegid()
    root = _folder_until_the_end()
    if _libc.unshare(CLONE_NEWNS | (0 if root_outside else CLONE_NEWUSER)) != 0:
        if not root_outside:
            raise NotSecluded("the flag's folder needs user namespaces (kernel.unprivileged_userns_clone), or root")
        _use_the_machine()
        return
    if not root_outside:
        pathlib.Path("/proc/self/setgroups").write_text("deny")
        # Map the user to the same UID, so that the programs have no more rights than in the user's session.
        pathlib.Path("/proc/self/uid_map").write_text(f"{user} {user} 1")
        pathlib.Path("/proc/self/gid_map").write_text(f"{group} {group} 1")
    try:
        if not _keep_mounts_to_ourselves() and root_outside:
            _use_the_machine()
            return
        _enter_new_root(root)
    except OSError as failure:
        reason = f"the flag's folder needs a private file system, which cannot be made: {failure}"
        raise NotSecluded(reason) from None
    FLAG.parent.mkdir(parents=True)


def hide(folder):
    """Makes this folder appear empty in the private file system."""
    if not pathlib.Path(folder).is_dir() or not any(pathlib.Path(folder).iterdir()):
        return
    if _is_machine_used:
        raise NotSecluded(f"this machine has a {folder}, and does not permit us to mount over it")
    _mount("tmpfs", folder, "tmpfs", 0, "mode=755")


def adopt_orphans():
    """Makes this process the parent of orphaned descendants, so that descendants() finds them."""
    _libc.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def end_descendants():
    while found := descendants():
        for pid in found:
            try:
                os.kill(pid, 9)
            except ProcessLookupError:
                pass
        try:
            while os.waitpid(-1, os.WNOHANG)[0]:
                pass
        except ChildProcessError:
            return


def descendants():
    """Returns the PIDs of all descendants of this process, except those that _run_at_exit() has started."""
    parents = {}
    for entry in pathlib.Path("/proc").iterdir():
        if entry.name.isdigit():
            try:
                parents[int(entry.name)] = int((entry / "stat").read_text().rpartition(")")[2].split()[1])
            except OSError:
                pass
    found = {os.getpid()}
    while more := {pid for pid, parent in parents.items() if parent in found} - found - _keepers:
        found |= more
    return found - {os.getpid()}


def _keep_mounts_to_ourselves():
    """Makes later mounts invisible outside. Returns False if that is impossible, since / is not a mount point."""
    try:
        _mount("none", "/", None, MS_REC | MS_PRIVATE)
    except OSError as failure:
        if failure.errno != errno.EINVAL:
            raise
        return False
    return True


def _enter_new_root(root):
    """Changes to a root with the folders of the old root except /Library, and with the listing tool in /usr/bin."""
    here = os.getcwd()
    _mount("tmpfs", root, "tmpfs", 0, "mode=755")
    for entry in sorted(pathlib.Path("/").iterdir()):
        place = root / entry.name
        if entry in (LIBRARY, pathlib.Path("/lost+found")):
            continue
        if entry.is_symlink():
            place.symlink_to(os.readlink(entry))
        elif entry.is_dir():
            place.mkdir()
            _mount(entry, place, None, MS_BIND | MS_REC)
    above, below = root / "above", driver.TOOL.parent
    driver.put(above / driver.TOOL.name, ACTIVE)
    _mount("overlay", root / below.relative_to("/"), "overlay", 0, f"lowerdir={above}:{below}")
    os.chroot(root)
    os.chdir(here)


def _folder_until_the_end():
    # The process that removes the folder must be started before the root changes, since it needs the old root.
    folder = pathlib.Path(tempfile.mkdtemp(prefix="kovra-hosts-root-"))
    _run_at_exit(lambda: os.rmdir(folder))
    return folder


def _use_the_machine():
    """Creates the flag's folder and the listing tool on the machine itself, until this process ends.

    This is for machines where even root may not mount, such as containers.
    """
    global _is_machine_used
    _is_machine_used = True
    for place in (LIBRARY, driver.TOOL):
        if place.exists():
            raise NotSecluded(f"this machine has a {place}, and does not permit us to mount over it")
    _run_at_exit(lambda: (driver.TOOL.unlink(missing_ok=True), shutil.rmtree(LIBRARY)))
    FLAG.parent.mkdir(parents=True)
    driver.put(driver.TOOL, ACTIVE)


def _run_at_exit(work):
    """Calls work() in another process, outside the private file system, after this process has ended or was killed."""
    ours, keepers = os.pipe()
    keeper = os.fork()
    if keeper == 0:
        os.setsid()
        os.close(keepers)
        os.read(ours, 1)
        work()
        os._exit(0)
    os.close(ours)
    _keepers.add(keeper)


def _mount(source, target, kind, flags, data=None):
    # Call mount(2) directly. In a user namespace, the program mount(8) would not have the capabilities of this process.
    words = [None if word is None else str(word).encode() for word in (source, target, kind, data)]
    if _libc.mount(words[0], words[1], words[2], flags, words[3]) != 0:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number), str(target))
