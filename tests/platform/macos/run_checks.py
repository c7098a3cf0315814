#!/usr/bin/env python3
"""Checks the macOS layer on a machine that is not a Mac.

It compiles every source for both processors against the declarations beside this file. It links them against the
symbols in exports.txt, and checks the resulting bundle. It compiles the Objective-C++ sources again, against GNUstep's
headers, and runs what GNUstep can run of them on a private X display. The tests of the logic are in the preset "none",
which needs no system library; those of the adapters in plain C++ are test_macos.

  run_checks.py            runs all checks
  run_checks.py --whole    prints the compiler's whole output for a failed check

It needs clang with its linker and library, the headers of musl, GNUstep, and Xvfb (tools/install-packages macos). The
preset dev must be configured, for the icon writer. The last line is "macos: N passed, N failed".
"""

import argparse
import contextlib
import json
import os
import plistlib
import re
import shutil
import struct
import subprocess
import sys
import zlib
from pathlib import Path

import exports
import names

HERE = Path(__file__).resolve().parent
ROOT = HERE.parents[2]
BUILD = ROOT / "build"
# The folder of the compiler and of the tools of the same version: /usr/lib/llvm-14 on Debian 12.
LLVM = Path(shutil.which("clang++") or "/usr/bin/clang++").resolve().parents[1]
GCC_OBJC = Path("/usr/lib/gcc")
# Debian 13 has these headers in a folder for each architecture.
GNUSTEP = [folder for folder in Path("/usr/include").glob("**/GNUstep") if (folder / "AppKit").is_dir()]
PROCESSORS = ("arm64", "x86_64")

FRAMEWORKS = {"AppKit", "Carbon", "CoreFoundation", "Foundation", "IOKit", "ServiceManagement"}
LIBRARIES = {"libobjc.A.dylib", "libSystem.B.dylib", "libc++.1.dylib"}
PLIST = {
    "CFBundleExecutable": "BLE-kovra",
    "CFBundleName": "BLE-kovra",
    "CFBundleDisplayName": "BLE-kovra",
    "CFBundlePackageType": "APPL",
    "CFBundleInfoDictionaryVersion": "6.0",
    "CFBundleIconFile": "AppIcon",
    "CFBundleDevelopmentRegion": "en",
    "CFBundleLocalizations": ["en", "ru", "uk", "fr", "de", "es"],
    "LSMinimumSystemVersion": "13.0",
    "LSUIElement": True,
    "NSHighResolutionCapable": True,
    "NSPrincipalClass": "NSApplication",
}
# With one of the first two keys, macOS may kill the program while the trackpad is muted. The last key declares
# something that the program does not do.
NOT_IN_PLIST = ("NSSupportsSuddenTermination", "NSSupportsAutomaticTermination", "NSInputMonitoringUsageDescription")


# The PNG images that an icon file in a bundle may have: the name, the side in points and the scale. The list is from
# public descriptions of the format. The format has other types, too, but those are not PNG images, or (icp4, icp5, icp6)
# do not show in a bundle.
ICON_TYPES = {
    "ic07": (128, 1), "ic08": (256, 1), "ic09": (512, 1), "ic10": (512, 2), "ic11": (16, 2), "ic12": (32, 2),
    "ic13": (128, 2), "ic14": (256, 2),
}  # fmt: skip
# What must be there: on a display of scale 2, every size that the system shows; on others, those that have a PNG type.
ICON_SIZES = {(16, 2), (32, 2), (128, 1), (128, 2), (256, 1), (256, 2), (512, 1), (512, 2)}


# Tests of contracts that cannot pass with GNUstep, and why.
LEFT_OUT = {
    "AppKitStatusBar/StatusBarContract/0.ShowsTheLastImage": "an image of AppKit has no name",
    "AppKitAlertPresenter/AlertPresenterContract/0.AbortsOpenAlertsWhenTheApplicationTerminates": "the process ends then",
    "AppKitAlertPresenter/AlertPresenterContract/0.OpensNoAlertAfterTheApplicationHasTerminated": "the process ends then",
}  # fmt: skip


class Failed(Exception):
    pass


def expect(condition, message):
    if not condition:
        raise Failed(message)


def run(*command, **options):
    done = subprocess.run([str(word) for word in command], capture_output=True, text=True, **options)
    expect(done.returncode == 0, f"{Path(str(command[0])).name}: {done.stderr.strip() or done.stdout.strip()}")
    return done.stdout


class Checks:
    def __init__(self, is_verbose):
        self.passed = 0
        self.failed = 0
        self.is_verbose = is_verbose

    def check(self, name, work, *arguments):
        try:
            work(*arguments)
        except Failed as failure:
            self.failed += 1
            message = str(failure)
            shown = message if self.is_verbose else first_errors(message)
            print(f"FAILED  {name}")
            print("\n".join("        " + line for line in shown.splitlines()))
        else:
            self.passed += 1


def first_errors(message):
    errors = [line for line in message.splitlines() if "error:" in line]
    return "\n".join(errors[:3] or message.splitlines()[:5])


# Compiling and linking for macOS


def configured(folder, processor, libraries, *options):
    run(
        # CMake takes the flags of a toolchain only when it configures a folder for the first time.
        "cmake", "--fresh", "-S", ROOT, "-B", folder, "-G", "Ninja", "--toolchain", HERE / "darwin.cmake",
        f"-DKOVRA_CHECKED_ARCHITECTURE={processor}", "-DKOVRA_WERROR=ON",
        "-DCMAKE_EXPORT_COMPILE_COMMANDS=ON", f"-DKOVRA_EXPORTS={libraries}",
        f"-DKOVRA_WRITE_ICNS={BUILD / 'dev' / 'kovra_write_icns'}", *options,
    )  # fmt: skip
    return folder


def compilations(folder):
    """Returns (source, output) of each compilation, the source relative to the project."""
    for entry in json.loads((folder / "compile_commands.json").read_text(encoding="utf-8")):
        source = Path(entry["file"])
        if source.is_relative_to(ROOT) and not source.is_relative_to(BUILD):
            yield source.relative_to(ROOT), re.search(r" -o (\S+)", entry["command"])[1]


def built(folder, *targets):
    """Builds the targets, or all, and returns the compiler's messages for each output that failed, by the output's
    path."""
    done = subprocess.run(["ninja", "-C", folder, "-k", "0", "-j", "2", *targets], capture_output=True, text=True)
    failures = {}
    for part in re.split(r"^(?=FAILED: )", done.stdout, flags=re.MULTILINE)[1:]:
        outputs, _, message = part.partition("\n")
        message = re.split(r"^\[\d+/\d+\] ", message, maxsplit=1, flags=re.MULTILINE)[0]
        for output in outputs.removeprefix("FAILED: ").split():
            failures[output] = message
    expect(done.returncode == 0 or failures, done.stdout[-2000:] + done.stderr[-2000:])
    return failures


def compiles(folder, output, failures):
    expect(output not in failures, failures.get(output, ""))
    expect((folder / output).exists(), "it was not compiled")


def links(program, failures):
    for output, message in failures.items():
        expect(not output.endswith("/BLE-kovra"), message)
    expect(program.exists(), "it was not linked")


def has_the_right_libraries(program, processor):
    libraries = {Path(line.split()[0]).name for line in run(LLVM / "bin/llvm-otool", "-L", program).splitlines()[1:]}
    expect(libraries == FRAMEWORKS | LIBRARIES, f"it is linked against {sorted(libraries)}")
    headers = run(LLVM / "bin/llvm-objdump", "--macho", "--private-headers", program)
    expect(re.search(r"minos 13\.0\b", headers), "it is not for macOS 13.0")
    expect(processor in run(LLVM / "bin/llvm-lipo", "-archs", program).split(), f"it is not for {processor}")


def makes_one_program(programs):
    both = BUILD / "macos-universal"
    run(LLVM / "bin/llvm-lipo", "-create", *programs, "-output", both)
    expect(set(run(LLVM / "bin/llvm-lipo", "-archs", both).split()) == set(PROCESSORS), "it is not for both processors")


# The bundle


def has_its_properties(bundle):
    try:
        properties = plistlib.loads((bundle / "Contents" / "Info.plist").read_bytes())
    except (OSError, plistlib.InvalidFileException, ValueError) as error:
        raise Failed(f"Info.plist: {error}") from error
    for key, value in PLIST.items():
        expect(properties.get(key) == value, f"{key} is {properties.get(key)!r}, not {value!r}")
    for key in NOT_IN_PLIST:
        expect(key not in properties, f"{key} is present")
    identifier = properties.get("CFBundleIdentifier", "")
    expect(re.fullmatch(r"[A-Za-z0-9-]+(\.[A-Za-z0-9-]+){2,}", identifier), f"{identifier!r} is not an identifier")
    project = (ROOT / "CMakeLists.txt").read_text(encoding="utf-8")
    version = re.search(r"project\(BLE-kovra VERSION ([\d.]+)", project)[1]
    for key in ("CFBundleShortVersionString", "CFBundleVersion"):
        expect(properties.get(key) == version, f"{key} is {properties.get(key)!r}, not {version!r}")
    expect((bundle / "Contents" / "MacOS" / properties["CFBundleExecutable"]).is_file(), "it contains no program")


def pixels(png):
    """Returns the rows of a PNG, each a list of (red, green, blue, opacity). Supports only the filter that the icon's
    files use."""
    expect(png[:8] == b"\x89PNG\r\n\x1a\n", "it is not a PNG file")
    chunks, at = {}, 8
    while at < len(png):
        size, name = struct.unpack(">I4s", png[at : at + 8])
        content = png[at + 8 : at + 8 + size]
        checksum = struct.unpack(">I", png[at + 8 + size : at + 12 + size])[0]
        expect(zlib.crc32(name + content) == checksum, "a wrong checksum")
        chunks[name] = content
        at += size + 12
    side, height = struct.unpack(">II", chunks[b"IHDR"][:8])
    expect(side == height and chunks[b"IHDR"][8:] == b"\x08\x06\0\0\0", "it is not a square with 8 bits of RGBA")
    packed = zlib.decompress(chunks[b"IDAT"])
    expect(len(packed) == side * (side * 4 + 1), "it has the wrong number of bytes")
    above, rows = bytes(side * 4), []
    for row in range(side):
        line = packed[row * (side * 4 + 1) : (row + 1) * (side * 4 + 1)]
        expect(line[0] == 2, "another filter")
        above = bytes((one + other) & 0xFF for one, other in zip(line[1:], above))
        rows.append([tuple(above[i : i + 4]) for i in range(0, len(above), 4)])
    return rows


def has_its_icon(bundle):
    icon = (bundle / "Contents" / "Resources" / "AppIcon.icns").read_bytes()
    expect(icon[:4] == b"icns" and struct.unpack(">I", icon[4:8])[0] == len(icon), "it is not an icon file")
    sizes, at = {}, 8
    while at < len(icon):
        name, size = struct.unpack(">4sI", icon[at : at + 8])
        expect(name.decode() not in sizes, f"it has two images of the type {name.decode()}")
        sizes[name.decode()] = icon[at + 8 : at + size]
        at += size
    unknown = sorted(set(sizes) - set(ICON_TYPES))
    expect(not unknown, f"it has images of types that do not show in a bundle: {' '.join(unknown)}")
    missing = sorted(ICON_SIZES - {ICON_TYPES[name] for name in sizes})
    expect(not missing, f"it lacks the images of these sizes in points and scales: {missing}")
    for name, png in sizes.items():
        rows = pixels(png)
        points, scale = ICON_TYPES[name]
        side = points * scale
        expect(len(rows) == side, f"{name} has {len(rows)} rows, not {side}")
        seen = {
            "corner": rows[0][0],
            "tile": rows[side * 14 // 16 - side // 32][side // 2],  # below the trackpad
            "trackpad": rows[side * 6 // 16][side * 6 // 16],
            "slash": rows[side // 2][side // 2],
        }
        expect(seen["corner"][3] == 0, f"{name}: its corner is not clear")
        if side >= 64:  # the pixels of smaller ones mix colors
            expect(seen["tile"] == (0x3A, 0x7B, 0xE0, 255), f"{name}: the tile is {seen['tile']}")
            expect(seen["trackpad"] == (255, 255, 255, 255), f"{name}: the trackpad is {seen['trackpad']}")
            expect(seen["slash"] == (0xFF, 0xB3, 0, 255), f"{name}: the slash is {seen['slash']}")


# The tests for a Mac

# The test programs that .github/workflows/macos.yml builds for the real frameworks.
MAC_TESTS = ("test_macos_frameworks", "test_posix")
GOOGLE_TEST = """
foreach(name IN ITEMS gtest gtest_main)
  add_library(GTest::${name} INTERFACE IMPORTED)
  target_include_directories(GTest::${name} SYSTEM INTERFACE "${CMAKE_CURRENT_LIST_DIR}")
endforeach()
"""


def check_the_tests_for_a_mac(checks, libraries):
    """Compiles the tests that only a Mac can run, as the workflow configures them, with this machine's headers of
    GoogleTest. They are not linked."""
    google = BUILD / "macos-google-test"
    google.mkdir(parents=True, exist_ok=True)
    if not (google / "gtest").exists():
        (google / "gtest").symlink_to("/usr/include/gtest")
    (google / "GTestConfig.cmake").write_text(GOOGLE_TEST, encoding="utf-8")
    try:
        options = ("-DCMAKE_BUILD_TYPE=Debug", "-DBUILD_TESTING=ON", f"-DGTest_DIR={google}")
        folder = configured(BUILD / "macos-tests", PROCESSORS[0], libraries, *options)
        mine = re.compile(rf"tests/.*/({'|'.join(MAC_TESTS)})\.dir/")
        found = [(source, output) for source, output in compilations(folder) if mine.match(output)]
        for name in MAC_TESTS:
            expect(any(f"/{name}.dir/" in output for _, output in found), f"{name} has no sources")
        failures = built(folder, *(output for _, output in found))
    except Failed as failure:
        checks.check("the tests for a Mac are configured", expect, False, str(failure))
        return
    for source, output in found:
        checks.check(f"{source.name} compiles for a Mac", compiles, folder, output, failures)


# The check against a second description of the same interfaces


def gnustep_headers():
    """Copies GCC's headers of Objective-C, which GNUstep includes, and adapts them to clang."""
    folder = BUILD / "macos-gnustep"
    shutil.rmtree(folder, ignore_errors=True)
    found = sorted(GCC_OBJC.glob("*/*/include/objc"))
    expect(found, "GCC's headers of Objective-C are missing")
    expect(GNUSTEP, "GNUstep's headers are missing")
    shutil.copytree(found[-1], folder / "objc")
    runtime = folder / "objc" / "runtime.h"
    text = runtime.read_text(encoding="utf-8")
    text = text.replace("return object->class_pointer", "return 0")
    text = text.replace("Protocol **", "Protocol *__unsafe_unretained *")
    runtime.write_text(text, encoding="utf-8")
    (folder / "objc" / "blocks_runtime.h").write_text("#include <Block.h>\n", encoding="utf-8")
    return folder


def agrees_with_gnustep(source, headers):
    run(
        LLVM / "bin/clang++", "-fsyntax-only", "-x", "objective-c++", "-std=c++20", "-fobjc-runtime=gnustep-2.0", "-fobjc-arc",
        "-fblocks", "-fconstant-string-class=NSConstantString", "-I", ROOT, "-isystem", headers,
        "-isystem", GNUSTEP[0], "-isystem", HERE / "declarations", "-include", "Supplement.h",
        "-DGNUSTEP", "-DGNUSTEP_BASE_LIBRARY=1", "-DGNU_RUNTIME=1", "-D_NATIVE_OBJC_EXCEPTIONS",
        "-Werror", "-Wall", "-Wextra", "-Wundeclared-selector",
        # GNUstep declares some types with another sign, or less exactly.
        "-Wno-sign-compare", "-Wno-incompatible-pointer-types", source,
    )  # fmt: skip


# The tests that run with GNUstep


def gnustep_program(headers):
    """Builds the tests and returns their program."""
    folder = BUILD / "macos-gnustep-tests"
    compiler = LLVM / "bin/clang++"
    run(
        "cmake", "-S", HERE / "gnustep", "-B", folder, "-G", "Ninja", f"-DCMAKE_CXX_COMPILER={compiler}",
        f"-DCMAKE_OBJCXX_COMPILER={compiler}", f"-DKOVRA_OBJC_HEADERS={headers}", f"-DKOVRA_GNUSTEP_HEADERS={GNUSTEP[0]}",
    )  # fmt: skip
    run("ninja", "-C", folder, "-j", "2")
    return folder / "gnustep_tests"


def on_a_display(work):
    """Calls work(environment) with a private X display and a home of its own, where GNUstep keeps its files."""
    home = BUILD / "macos-gnustep-home"
    shutil.rmtree(home, ignore_errors=True)
    home.mkdir(parents=True)
    reading, writing = os.pipe()
    command = ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1024x768x24", "-nolisten", "tcp"]
    server = subprocess.Popen(command, pass_fds=[writing], stderr=subprocess.DEVNULL)
    os.close(writing)
    try:
        with os.fdopen(reading) as numbers:
            number = numbers.readline().strip()
        expect(number, "Xvfb did not start")
        return work({**os.environ, "DISPLAY": f":{number}", "HOME": str(home)})
    finally:
        # The server may miss a signal that arrives just before it waits for its clients.
        while server.poll() is None:
            server.terminate()
            with contextlib.suppress(subprocess.TimeoutExpired):
                server.wait(0.1)


def gnustep_results(program):
    """Runs the tests and returns the message of each that failed, or an empty text, by the test's name."""
    report = BUILD / "macos-gnustep-home" / "report.json"

    def work(environment):
        left_out = ":".join(LEFT_OUT)
        command = [program, f"--gtest_filter=-{left_out}", f"--gtest_output=json:{report}"]
        try:
            # It ends by itself, by its limit for each test. This limit is for a process that cannot.
            done = subprocess.run(command, env=environment, capture_output=True, text=True, timeout=300)
        except subprocess.TimeoutExpired as expired:
            raise Failed("they did not end within 300 s") from expired
        if hanging := re.search(r"^\[  FAILED  \] (\S+) did not end$", done.stderr, re.MULTILINE):
            results[hanging[1]] = "it did not end within 60 s; the tests after it did not run"
            return {"testsuites": []}
        expect(report.exists(), f"they ended by {done.returncode}: " + (done.stdout + done.stderr)[-1500:])
        return json.loads(report.read_text(encoding="utf-8"))

    results = {}
    for suite in on_a_display(work)["testsuites"]:
        for test in suite["testsuite"]:
            failures = [failure["failure"] for failure in test.get("failures", [])]
            results[f"{suite['name']}.{test['name']}"] = "\n".join(failures)
    expect(results, "there are no tests")
    return results


def main():
    arguments = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    arguments.add_argument("--whole", action="store_true", help="print the compiler's whole output for a failed check")
    checks = Checks(arguments.parse_args().whole)

    checks.check("the icon writer is built", run, "cmake", "--build", BUILD / "dev", "--target", "kovra_write_icns")
    libraries = BUILD / "macos-exports"
    shutil.rmtree(libraries, ignore_errors=True)
    exports.write(HERE / "exports.txt", libraries, LLVM)
    programs = []
    for processor in PROCESSORS:
        try:
            options = ("-DCMAKE_BUILD_TYPE=Release", "-DBUILD_TESTING=OFF")
            folder = configured(BUILD / f"macos-{processor}", processor, libraries, *options)
            failures = built(folder)
        except Failed as failure:
            checks.check(f"{processor}: it is configured", expect, False, str(failure))
            continue
        bundle = folder / "BLE-kovra.app"
        program = bundle / "Contents" / "MacOS" / "BLE-kovra"
        for source, output in compilations(folder):
            checks.check(f"{processor}: {source} compiles", compiles, folder, output, failures)
        checks.check(f"{processor}: it links against the symbols in exports.txt", links, program, failures)
        checks.check(f"{processor}: it has the right libraries", has_the_right_libraries, program, processor)
        checks.check(f"{processor}: the bundle has its properties", has_its_properties, bundle)
        checks.check(f"{processor}: the bundle has its icon", has_its_icon, bundle)
        programs.append(program)
    checks.check("both make one universal program", makes_one_program, programs)

    check_the_tests_for_a_mac(checks, libraries)

    layer = ROOT / "BLE_kovra" / "platform" / "macos"
    found = names.problems(layer, HERE / "declarations")
    checks.check("the names that no compiler checks are right", expect, not found, "\n".join(found))

    headers = gnustep_headers()
    for source in sorted(layer.rglob("*.mm")):
        checks.check(f"{source.name} agrees with GNUstep's headers", agrees_with_gnustep, source, headers)

    try:
        results = gnustep_results(gnustep_program(headers))
    except Failed as failure:
        checks.check("the tests with GNUstep are built and run to their end", expect, False, str(failure))
        results = {}
    for name, message in results.items():
        checks.check(f"with GNUstep: {name}", expect, not message, message)

    print(f"macos: {checks.passed} passed, {checks.failed} failed")
    sys.exit(1 if checks.failed else 0)


if __name__ == "__main__":
    main()
