"""Tests tests/platform/macos/try_bundle with stand-ins for the bundle and for the programs of a Mac.

The stand-in for the bundle does what the program promises, or breaks one promise. The script must name that promise and
fail."""

import pathlib
import shutil
import subprocess
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
SCRIPT = ROOT / "tests/platform/macos/try_bundle"
TOOLS = ("bash", "cat", "chown", "cp", "id", "ls", "mkdir", "rm", "sed", "tr", "wc")
# Each program of the Mac, in the words of sh. $state contains one file for each running process, and the mode.
STAND_INS = {
    "uname": "echo Darwin",
    "sleep": ":",
    "sudo": '"$@"',
    "screencapture": ': >"$2"',
    "pgrep": 'ls "$state/processes"',
    "defaults": 'case $1 in write) echo "$4" >"$state/mode" ;; delete) rm -f "$state/mode" ;; esac',
    "log": "echo the log",
    "open": """
case $1 in -n) new=yes; shift ;; *) new=no ;; esac
if [ -e "$state/processes/1" ]; then
    [ $new = no ] || [ $broken != "second copy" ] || : >"$state/processes/2"
    exit
fi
: >"$state/processes/1"
if [ "$(cat "$state/mode" 2>/dev/null)" = always ] && [ $broken != always ]; then echo on >"$flag"; else echo off >"$flag"; fi
[ $broken != start ] || rm "$flag"
""",
    "pkill": """
[ $broken = SIGTERM ] && exit
[ $broken = "flag at SIGTERM" ] || echo off >"$flag"
rm -f "$state"/processes/*
""",
    "osascript": """
[ $broken = quit ] && exit
[ $broken = "flag at quit" ] || echo off >"$flag"
rm -f "$state"/processes/*
""",
}


class TryBundleTest(unittest.TestCase):
    def run_with(self, broken=""):
        """Returns the result of the script for a bundle that breaks this promise, and the folder of what it leaves."""
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        top = pathlib.Path(temporary.name)
        for folder in ("bin", "state/processes", "BLE-kovra.app/Contents/MacOS"):
            (top / folder).mkdir(parents=True)
        text = SCRIPT.read_text(encoding="utf-8")
        # The stand-ins have done their work when they return, so that one look is enough.
        for there, here in (("/Library/Application Support/ble-kovra", f"{top}/flag folder"), ("$(($1 * 5))", "1")):
            self.assertIn(there, text)
            text = text.replace(there, here)
        (top / "try_bundle").write_text(text, encoding="utf-8")
        for tool in TOOLS:
            (top / "bin" / tool).symlink_to(shutil.which(tool))
        values = f"state='{top}/state'; flag='{top}/flag folder/state'; broken='{broken}'"
        for name, script in STAND_INS.items():
            script = script.replace("$broken", '"$broken"')
            (top / "bin" / name).write_text(f"#!/bin/sh\n{values}\n{script}\n", encoding="utf-8")
            (top / "bin" / name).chmod(0o755)
        done = subprocess.run(
            ["bash", top / "try_bundle", top / "BLE-kovra.app", top / "artifacts"],
            env={"PATH": str(top / "bin")}, capture_output=True, text=True, timeout=60,
        )  # fmt: skip
        return done, top / "artifacts"

    def failed(self, broken):
        done, _ = self.run_with(broken)
        self.assertEqual(done.returncode, 1, done.stdout + done.stderr)
        return [line.removeprefix("FAILED  ") for line in done.stdout.splitlines() if line.startswith("FAILED")]

    def test_a_program_that_keeps_its_promises_passes(self):
        done, left = self.run_with()
        self.assertEqual((done.returncode, done.stderr), (0, ""), done.stdout)
        self.assertNotIn("FAILED", done.stdout)
        self.assertEqual({path.name for path in left.iterdir()}, {"alert.png", "menu-bar.png", "settings.png", "log.txt"})

    def test_each_broken_promise_is_named(self):
        for broken, sentence in {
            "start": "after the start the flag says off",
            "SIGTERM": "SIGTERM ends the program while the alert is open",
            "flag at SIGTERM": "the flag says off after SIGTERM",
            "always": "in the mode always the flag says on",
            "second copy": "a second copy ends",
            "quit": "AppleScript ends the program",
            "flag at quit": "the flag says off after the quit",
        }.items():
            with self.subTest(broken):
                self.assertIn(sentence, self.failed(broken))


if __name__ == "__main__":
    unittest.main()
