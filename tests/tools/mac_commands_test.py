"""Tests what ./run, ./test and packaging/macos/install do on a Mac, with a uname that says Darwin and stand-ins for the
Mac's programs.

macOS has bash 3.2, which no supported release of Debian has. So the commands run in a bash without the builtins of later
versions, and a test looks for the rest of the later syntax."""

import pathlib
import re
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
FILES = ("run", "test", "packaging/macos/install", "packaging/macos/sign", "packaging/macos/test")
# What the programs use of the system. On a Mac all of these exist.
TOOLS = ("bash", "cat", "dirname", "env", "id", "mkdir", "readlink", "rm", "sed", "sh")
BUNDLE = "build/macos/BLE-kovra.app"


class MacCommandsTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = pathlib.Path(temporary.name) / "a clone"
        self.home = pathlib.Path(temporary.name) / "home"
        self.path = pathlib.Path(temporary.name) / "bin"
        for folder in (self.root, self.home, self.path):
            folder.mkdir()
        for name in FILES:
            (self.root / name).parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(ROOT / name, self.root / name)
        # The folders of the whole machine are this test's own.
        install = self.root / "packaging/macos/install"
        text = install.read_text(encoding="utf-8")
        for folder in ("/Applications", "/Library"):
            self.assertIn(folder, text)
            text = re.sub(rf"(?<![\w~]){folder}\b", f"{temporary.name}{folder}", text)
        text = text.replace(f"$HOME{temporary.name}", "$HOME")
        install.write_text(text, encoding="utf-8")
        self.applications = pathlib.Path(temporary.name) / "Applications"
        self.flag_folder = pathlib.Path(temporary.name) / "Library/Application Support/ble-kovra"
        for tool in TOOLS:
            (self.path / tool).symlink_to(shutil.which(tool))
        self.calls = pathlib.Path(temporary.name) / "calls"
        self.calls.touch()
        self.stand_in("uname", "echo Darwin")
        self.stand_in("pgrep", "exit 1")
        self.stand_in("sysctl", "echo 8")
        for tool in ("cmake", "codesign", "ctest", "ditto", "ninja", "open"):
            self.stand_in(tool, f'echo "{tool} $*" >>"{self.calls}"')
        (self.root / BUNDLE / "Contents/MacOS").mkdir(parents=True)
        self.old_bash = pathlib.Path(temporary.name) / "old_bash"
        self.old_bash.write_text("enable -n mapfile readarray coproc 2>/dev/null; true\n", encoding="utf-8")

    def stand_in(self, name, script):
        (self.path / name).write_text(f"#!/bin/sh\n{script}\n", encoding="utf-8")
        (self.path / name).chmod(0o755)

    def do(self, *command):
        environment = {"PATH": str(self.path), "HOME": str(self.home), "USER": "anna", "BASH_ENV": str(self.old_bash)}
        return subprocess.run([self.root / command[0], *command[1:]], env=environment, capture_output=True, text=True)

    def called(self):
        return self.calls.read_text(encoding="utf-8").splitlines()

    def test_run_builds_signs_installs_and_opens_the_bundle(self):
        self.applications.mkdir()
        done = self.do("run")
        self.assertEqual(done.returncode, 0, done.stderr)
        target = f"{self.applications}/BLE-kovra.app"
        self.assertEqual(
            self.called(),
            [
                "cmake --preset macos",
                "cmake --build --preset macos --parallel 8",
                f"codesign --force --options runtime --sign - {BUNDLE}",
                f"codesign --verify --deep --strict --verbose=2 {BUNDLE}",
                f"ditto {BUNDLE} {target}",
                f"open {target}",
            ],
        )

    def test_it_installs_into_the_home_of_a_user_who_may_not_write_to_applications(self):
        self.assertEqual(self.do("packaging/macos/install").returncode, 0)
        self.assertTrue((self.home / "Applications").is_dir())
        self.assertEqual(self.called()[-1], f"open {self.home}/Applications/BLE-kovra.app")

    def test_it_says_how_to_make_the_folder_of_the_flag_if_there_is_none(self):
        command = f'sudo mkdir -p "{self.flag_folder}"'
        self.assertIn(command, self.do("run").stdout)
        self.flag_folder.mkdir(parents=True)
        self.assertNotIn(command, self.do("run").stdout)

    def test_a_failed_build_installs_nothing(self):
        self.stand_in("cmake", "exit 1")
        self.assertNotEqual(self.do("run").returncode, 0)
        self.assertEqual(self.called(), [])

    def test_a_missing_cmake_is_named(self):
        (self.path / "cmake").unlink()
        self.assertIn("CMake is missing", self.do("run").stderr)
        self.assertIn("cmake is missing", self.do("test").stderr)

    def test_test_runs_the_tests_of_the_logic(self):
        for arguments in ((), ("quick",)):
            self.calls.write_text("", encoding="utf-8")
            done = self.do("test", *arguments)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(
                self.called(),
                [
                    "cmake --preset none -DKOVRA_SANITIZE=OFF -DKOVRA_WERROR=OFF",
                    "cmake --build --preset none",
                    "ctest --preset none --label-exclude ^(docs|walls|tools|faults)[+]",
                ],
            )

    def test_what_needs_linux_is_refused(self):
        for command in (("run", "--demo"), ("test", "tray"), ("test", "system", "hosts")):
            done = self.do(*command)
            self.assertNotEqual(done.returncode, 0)
            self.assertIn("usage on macOS", done.stderr)
        self.assertEqual(self.called(), [])

    def test_what_a_mac_reads_of_the_commands_has_no_syntax_of_a_later_bash(self):
        later = r"mapfile|readarray|declare -A|local -n|\$\{\w+(,,|\^\^|@)|\|&|&>>|coproc|\[\*\]\}|\[@\]\}"
        for name in ("run", "test"):
            text = (ROOT / name).read_text(encoding="utf-8")
            self.assertEqual(re.findall(later, text.partition("exec packaging/macos")[0]), [], name)


if __name__ == "__main__":
    unittest.main()
