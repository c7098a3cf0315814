"""Downloads Debian's kernel for the virtual machine once, and unpacks it in the build folder without installing it.

Only the image and the modules that the machine loads are kept.
"""

import lzma
import pathlib
import re
import shutil
import subprocess
import tempfile

# The init script loads these modules and their dependencies, before the host's files are mounted.
BOOT_MODULES = [
    "virtio_pci", "9pnet_virtio", "9p", "overlay",
    "uhid", "uinput", "evdev", "hid-generic", "hid-multitouch", "usbhid", "xhci-pci",
]
# The init script does not load this module. The scenarios renamed_by_its_driver and switched_off do.
LATER_MODULES = ["hid-logitech-hidpp"]


class KernelMissing(Exception):
    """Raised if the kernel could not be downloaded. The text says why."""


class Kernel:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.image = self.folder / "vmlinuz"
        self.modules = self.folder / "modules"

    def boot_modules(self):
        """Returns the module files in the order in which they must be loaded."""
        return [self.modules / name for name in (self.modules / "order").read_text().split()]

    def module(self, name):
        return self.modules / f"{name}.ko"


def prepare(folder, say):
    """Returns the kernel in `folder`. Downloads and unpacks it if it is missing; say(text) reports these steps."""
    kernel = Kernel(folder)
    if (kernel.modules / "order").exists():
        return kernel
    kernel.folder.mkdir(parents=True, exist_ok=True)
    with tempfile.TemporaryDirectory(dir=kernel.folder) as temporary:
        work = pathlib.Path(temporary)
        say("fetching the machine's kernel (a Debian package of about 100 MB, kept in the build folder)")
        packages = _download(work)
        say("unpacking it")
        for package in packages:
            subprocess.run(["dpkg-deb", "-x", package, work / "unpacked"], check=True)
        _keep_needed(work / "unpacked", kernel)
    return kernel


def _download(work):
    names = _package_names()
    result = subprocess.run(["apt-get", "download", *names], cwd=work, capture_output=True, text=True)
    packages = list(work.glob("*.deb"))
    if result.returncode != 0 or len(packages) != len(names):
        reason = (result.stderr.strip().splitlines() or ["no reason given"])[-1]
        raise KernelMissing(f"apt-get download {' '.join(names)} failed: {reason}")
    return packages


def _package_names():
    """Returns the names of the kernel's package and, from release 14 on, of the packages with its parts."""
    images = _dependencies("linux-image-amd64", "image")
    if not images:
        raise KernelMissing("apt knows no package linux-image-amd64; run apt-get update (as root) and try again")
    return images[:1] + _dependencies(images[0], "binary|modules")


def _dependencies(package, kinds):
    shown = subprocess.run(["apt-cache", "depends", package], capture_output=True, text=True)
    return re.findall(rf" Depends: (linux-(?:{kinds})-\S+)", shown.stdout)


def _keep_needed(unpacked, kernel):
    # From release 13 on, Debian has the modules below /usr.
    files = {_name(path).replace("-", "_"): path for top in ("lib", "usr/lib")
             for path in (unpacked / top).glob("modules/*/kernel/**/*.ko*")}
    kernel.modules.mkdir(exist_ok=True)
    order = []
    for name in BOOT_MODULES:
        _add_with_dependencies(name, files, order)
    for path in order + [files[name.replace("-", "_")] for name in LATER_MODULES]:
        kernel.module(_name(path)).write_bytes(_content(path))
    images = [*unpacked.glob("boot/vmlinuz-*"), *unpacked.glob("usr/lib/modules/*/vmlinuz")]
    shutil.copy(images[0], kernel.image)
    # Write this file last, since prepare() considers the folder complete if the file exists.
    (kernel.modules / "order").write_text("".join(f"{_name(path)}.ko\n" for path in order))


def _name(path):
    """Returns the name of the module in this file."""
    return path.name.partition(".")[0]


def _content(path):
    """Returns the module in this file as the kernel loads it. Debian compresses the files from release 13 on."""
    content = path.read_bytes()
    return lzma.decompress(content) if path.suffix == ".xz" else content


def _add_with_dependencies(name, files, order):
    path = files.get(name.replace("-", "_"))
    # A module without a file is built into the kernel.
    if path is None or path in order:
        return
    stated = re.search(rb"\0depends=([^\0]*)\0", _content(path))
    for needed in filter(None, stated.group(1).decode().split(",") if stated else []):
        _add_with_dependencies(needed, files, order)
    order.append(path)
