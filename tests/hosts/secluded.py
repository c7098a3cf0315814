"""A file system of our own, with the flag's folder and an active driver: nothing that a test needs is left on the machine."""

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

# Processes of ours that end by themselves when we do.
_keepers = set()
_is_lent = False
_libc = ctypes.CDLL(None, use_errno=True)


class NotSecluded(Exception):
    """Says in one line why this machine gives us no place of our own."""


def seclude():
    """Moves this process, and what it starts from now on, to where all is as before but for these two."""
    root_outside = os.geteuid() == 0
    user, group = os.geteuid(), os.getegid()
    root = _folder_until_the_end()
    if _libc.unshare(CLONE_NEWNS | (0 if root_outside else CLONE_NEWUSER)) != 0:
        if not root_outside:
            raise NotSecluded("the flag's folder needs user namespaces (kernel.unprivileged_userns_clone), "
                              "or root that runs this")
        _lend()
        return
    if not root_outside:
        pathlib.Path("/proc/self/setgroups").write_text("deny")
        # Ourselves as before: what is started has no rights that it would not have in that user's session.
        pathlib.Path("/proc/self/uid_map").write_text(f"{user} {user} 1")
        pathlib.Path("/proc/self/gid_map").write_text(f"{group} {group} 1")
    try:
        if not _keep_mounts_to_ourselves() and root_outside:
            _lend()
            return
        _enter_new_root(root)
    except OSError as failure:
        raise NotSecluded(f"the flag's folder needs a file system of our own, which cannot be made: {failure}") from None
    FLAG.parent.mkdir(parents=True)


def hide(folder):
    """In our file system this folder, if there is one, is empty from now on."""
    if not pathlib.Path(folder).is_dir() or not any(pathlib.Path(folder).iterdir()):
        return
    if _is_lent:
        raise NotSecluded(f"this machine has a {folder}, and denies us the right to mount our own over it")
    _mount("tmpfs", folder, "tmpfs", 0, "mode=755")


def adopt_orphans():
    """What our children leave behind becomes our child, so that end_descendants finds it."""
    _libc.prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0)


def end_descendants():
    """Nothing that was started from here is left: panels and buses start processes of their own."""
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
    """All processes that were started from here, but those that end by themselves when we do."""
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
    """False where the root is no mount, as in a chroot: what we mount could then be seen outside."""
    try:
        _mount("none", "/", None, MS_REC | MS_PRIVATE)
    except OSError as failure:
        if failure.errno != errno.EINVAL:
            raise
        return False
    return True


def _enter_new_root(root):
    """The same entries as in the old root, each mounted where it was, beside a new and empty /Library and with the tool."""
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
    # From within, where it is the root, it could not be removed.
    folder = pathlib.Path(tempfile.mkdtemp(prefix="kovra-hosts-root-"))
    _at_the_end(lambda: os.rmdir(folder))
    return folder


def _lend():
    """Where even root may not mount, as in a container or a chroot, the machine itself has both while we run."""
    global _is_lent
    _is_lent = True
    for place in (LIBRARY, driver.TOOL):
        if place.exists():
            raise NotSecluded(f"this machine has a {place}, and denies us the right to mount our own over it")
    _at_the_end(lambda: (driver.TOOL.unlink(missing_ok=True), shutil.rmtree(LIBRARY)))
    FLAG.parent.mkdir(parents=True)
    driver.put(driver.TOOL, ACTIVE)


def _at_the_end(work):
    """Does this in another process, outside, when ours is gone, however it ended."""
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
    # The call itself: of an ordinary user's rights in a namespace of its own none would reach the command.
    words = [None if word is None else str(word).encode() for word in (source, target, kind, data)]
    if _libc.mount(words[0], words[1], words[2], flags, words[3]) != 0:
        number = ctypes.get_errno()
        raise OSError(number, os.strerror(number), str(target))
