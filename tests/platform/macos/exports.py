"""The system's libraries as a linker sees them, for machines that have none of them: made from exports.txt, and of the
libc++ that is compiled with."""

import subprocess
from pathlib import Path

TARGETS = "[ x86_64-macos, arm64-macos ]"


def read(path):
    """For each library its install name, its symbols and its classes."""
    libraries = {}
    for line in path.read_text(encoding="utf-8").splitlines():
        words = line.partition("#")[0].split()
        if not words:
            continue
        if not line[0].isspace():
            name, install_name = words
            libraries[name] = (install_name, symbols := [], classes := [])
        elif words[0] == "class":
            classes.append(words[1])
        else:
            symbols.append("_" + words[0])
    return libraries


def text_of(install_name, symbols, classes):
    lines = ["--- !tapi-tbd", "tbd-version: 4", f"targets: {TARGETS}", f"install-name: '{install_name}'", "exports:",
             f"  - targets: {TARGETS}"]  # fmt: skip
    if symbols:
        lines.append("    symbols: [ " + ", ".join(f"'{symbol}'" for symbol in symbols) + " ]")
    if classes:
        lines.append("    objc-classes: [ " + ", ".join(classes) + " ]")
    return "\n".join([*lines, "...", ""])


def exported_by(*shared_libraries):
    """What these libraries of this machine define, as macOS would name it."""
    command = ["llvm-nm-14", "-D", "--defined-only", "--format=posix", *shared_libraries]
    listed = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    return sorted({"_" + line.split()[0].partition("@")[0] for line in listed if len(line.split()) > 2})


def write(exports, root, llvm):
    """Below root, where a linker looks for them."""
    libraries = read(exports)
    lib = llvm / "lib"
    libraries["libSystem"][1].append("dyld_stub_binder")  # which the linker itself takes, and which is no name of C
    libraries["libc++"] = ("/usr/lib/libc++.1.dylib", exported_by(lib / "libc++.so.1", lib / "libc++abi.so.1"), [])
    for name, library in libraries.items():
        folder = root / ("usr/lib" if name.startswith("lib") else f"System/Library/Frameworks/{name}.framework")
        folder.mkdir(parents=True, exist_ok=True)
        (folder / f"{name}.tbd").write_text(text_of(*library), encoding="utf-8")
