"""Writes linker stubs for the macOS libraries, for machines that lack them.

exports.txt lists the exports of all libraries except libc++. Those of libc++ are read from the library that the sources
are compiled with."""

import subprocess
from pathlib import Path

TARGETS = "[ x86_64-macos, arm64-macos ]"


def read(path):
    """Returns a dictionary from the name of each library to its install name, its symbols and its classes."""
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


def exported_by(llvm, *shared_libraries):
    """Returns the symbols that these libraries of this machine define, with the names that they have on macOS."""
    command = [llvm / "bin/llvm-nm", "-D", "--defined-only", "--format=posix", *shared_libraries]
    listed = subprocess.run(command, check=True, capture_output=True, text=True).stdout.splitlines()
    return sorted({"_" + line.split()[0].partition("@")[0] for line in listed if len(line.split()) > 2})


def write(exports, root, llvm):
    """Writes the stubs below root, in the folders where a linker looks for them."""
    libraries = read(exports)
    lib = llvm / "lib"
    libraries["libSystem"][1].append("dyld_stub_binder")  # the linker itself refers to this symbol
    libraries["libc++"] = ("/usr/lib/libc++.1.dylib", exported_by(llvm, lib / "libc++.so.1", lib / "libc++abi.so.1"), [])
    for name, library in libraries.items():
        folder = root / ("usr/lib" if name.startswith("lib") else f"System/Library/Frameworks/{name}.framework")
        folder.mkdir(parents=True, exist_ok=True)
        (folder / f"{name}.tbd").write_text(text_of(*library), encoding="utf-8")
