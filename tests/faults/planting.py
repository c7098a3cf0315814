"""What tests/faults/run and tests/mutants/run share: a copy of the tree in which mistakes are planted, and which tests
can catch a mistake."""

import os
import pathlib
import re
import shutil
import subprocess
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
PAGE = ROOT / "docs" / "testing.md"
LOGIC = ("l10n", "devices", "core", "system", "app", "control")
# The part of a CMakeLists.txt that only a Mac builds.
ON_A_MAC = re.compile(r'^if\(KOVRA_PLATFORM STREQUAL "macos"\)$.*?^endif\(\)$', re.M | re.S)


class Trouble(Exception):
    """Raised if a mistake cannot be tried. The text says why."""


def is_of_macos(file):
    return "platform/macos/" in file or file.startswith("packaging/macos/")


def tests_of(file):
    """Returns the CMake preset, the folders of the room's tests, and the folders of other tests to try."""
    folder = pathlib.PurePath(file).parent
    below = folder.parts[1:]
    if is_of_macos(file):
        return "dev", ["platform/macos"], []
    if file.startswith("helper/"):
        return "dev", ["helper"], []
    if file.startswith("packaging/icons/"):
        return "dev", ["packaging/icons"], []
    if file.startswith("BLE_kovra/platform/linux/") and len(below) > 2:
        return "dev", ["/".join(below[:3])], ["platform/linux", "screen", "programs"]
    if file == "BLE_kovra/platform/linux/main.cpp":
        return "dev", ["platform/linux"], []
    if file.startswith("BLE_kovra/platform/posix/"):
        return "dev", ["platform/posix"], ["platform/linux", "programs"]
    wider = [*LOGIC, "platform", "contracts", "journeys", "model"]
    if file.startswith("BLE_kovra/") and below and below[0] in LOGIC:
        return "none", [below[0]], wider
    if str(folder) == "BLE_kovra/platform":
        return "none", ["platform", "contracts"], wider
    raise Trouble(f"no tests are assigned to {file}")


class Copy:
    """A copy of the tree with its build folders, in which mistakes are planted."""

    def __init__(self, folder, jobs):
        self.folder, self.jobs = folder, str(jobs)
        self._configured = set()
        self._programs = {}
        for tests in sorted((ROOT / "tests").rglob("CMakeLists.txt")):
            text = ON_A_MAC.sub("", tests.read_text(encoding="utf-8"))
            found = re.findall(r"^\s*kovra_test\((\w+)", text, re.M)
            self._programs[str(tests.parent.relative_to(ROOT / "tests"))] = found
        self._copy_what_differs()

    def _copy_what_differs(self):
        """Writes each file that is missing or differs. All others keep their times, so they are not built again."""
        for at, folders, names in os.walk(ROOT):
            folders[:] = [name for name in folders if name not in ("build", ".git", "__pycache__")]
            there = self.folder / os.path.relpath(at, ROOT)
            there.mkdir(parents=True, exist_ok=True)
            links = [name for name in folders if os.path.islink(os.path.join(at, name))]
            for name in [name for name in [*names, *links] if name != ".git"]:
                original, copied = pathlib.Path(at, name), there / name
                if original.is_symlink():
                    copied.unlink(missing_ok=True)
                    copied.symlink_to(original.readlink())
                elif not copied.is_file() or copied.read_bytes() != original.read_bytes():
                    shutil.copyfile(original, copied)
                    shutil.copymode(original, copied)

    def programs(self, folders):
        """Returns the test programs of these folders and their subfolders, without duplicates.

        The subfolders of "platform" are left out, since they are the tests of the adapters.
        """
        return list(dict.fromkeys(program for wanted in folders for folder, found in self._programs.items()
                                  if folder == wanted or (wanted != "platform" and folder.startswith(wanted + "/"))
                                  for program in found))

    def configure(self, preset):
        if preset not in self._configured:
            done = self.run("cmake", "--preset", preset)
            if done.returncode != 0:
                raise SystemExit(done.stdout + done.stderr)
            self._configured.add(preset)

    def build(self, preset, *targets):
        """Builds these targets. Returns the errors, or an empty text if there are none."""
        done = self.run("cmake", "--build", "--preset", preset, "--target", *targets, "--", "-j", self.jobs)
        if done.returncode == 0:
            return ""
        errors = re.findall(r"^.*error:.*$", done.stdout + done.stderr, re.M)
        return "\n".join(errors[:3]) or done.stdout[-1000:]

    def failing(self, preset, program):
        """Returns the failing tests of this program, or the program's name if ctest fails without naming a test."""
        report = self.folder / "report.xml"
        report.unlink(missing_ok=True)
        done = self.run("ctest", "--preset", preset, "-j", self.jobs, "-R", f"^{program}/", "--no-tests=error",
                        "--output-junit", report)
        try:
            cases = xml.etree.ElementTree.parse(report).findall("testcase")
        except (OSError, xml.etree.ElementTree.ParseError):
            cases = []
        names = [case.get("name").partition("/")[2] for case in cases if case.get("status") != "run"]
        return names or ([program] if done.returncode != 0 else [])

    def run(self, *command):
        return subprocess.run([str(word) for word in command], cwd=self.folder, capture_output=True, text=True,
                              errors="replace")


def git(*command, cwd):
    # The project's folder may belong to another user. Git uses such a repository only if its folder is declared safe.
    return subprocess.run(["git", "-c", "safe.directory=*", *map(str, command)], cwd=cwd, capture_output=True, text=True)


def write_table(begin, end, make, page=PAGE):
    """Replaces the lines between two lines of docs/testing.md by those that `make` returns for the current ones."""
    text = page.read_text(encoding="utf-8")
    first, last = text.index(begin) + len(begin), text.index(end)
    lines = "\n".join(make(text[first:last]))
    page.write_text(f"{text[:first]}\n\n{lines}\n\n{text[last:]}", encoding="utf-8")
