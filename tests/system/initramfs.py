"""Writes the initramfs of the virtual machine: busybox, the kernel modules, the init script."""

import pathlib
import shutil

INIT = pathlib.Path(__file__).parent / "guest" / "init"


class BusyboxMissing(Exception):
    pass


def write(target, kernel, guest_program):
    """Writes the archive to `target`. The init script executes the Python script `guest_program` as PID 1."""
    busybox = shutil.which("busybox", path="/bin:/usr/bin")
    if busybox is None:
        raise BusyboxMissing("busybox is missing (Debian package busybox-static)")
    modules = kernel.boot_modules()
    with open(target, "wb") as out:
        archive = _Archive(out)
        for folder in ["bin", "modules"]:
            archive.folder(folder)
        archive.file("init", INIT.read_bytes(), 0o755)
        archive.file("bin/busybox", pathlib.Path(busybox).read_bytes(), 0o755)
        archive.file("guest-program", f"{guest_program}\n".encode(), 0o644)
        for path in modules:
            archive.file(f"modules/{path.name}", path.read_bytes(), 0o644)
        archive.file("modules/order", "".join(f"{path.name}\n" for path in modules).encode(), 0o644)
        archive.end()


class _Archive:
    """A cpio archive in the "newc" format, which the kernel unpacks."""

    def __init__(self, out):
        self._out = out
        self._inode = 0

    def folder(self, name):
        self._entry(name, b"", 0o040755)

    def file(self, name, content, mode):
        self._entry(name, content, 0o100000 | mode)

    def end(self):
        self._entry("TRAILER!!!", b"", 0)

    def _entry(self, name, content, mode):
        self._inode += 1
        encoded = name.encode() + b"\0"
        fields = [self._inode, mode, 0, 0, 1, 0, len(content), 0, 0, 0, 0, len(encoded), 0]
        header = b"070701" + b"".join(b"%08X" % field for field in fields)
        self._out.write(_padded(header + encoded) + _padded(content))


def _padded(data):
    return data + b"\0" * (-len(data) % 4)
