"""Checks the sandboxing of the helper's unit with systemd-analyze, without a running systemd.

  unit_test.py UNIT      UNIT: the file as it is installed
"""

import json
import subprocess
import sys
import unittest

UNIT = sys.argv.pop()
EXPOSURE = "16"  # an exposure of 1.6 out of 10


def account(*options):
    command = ["systemd-analyze", "security", "--offline=true", f"--threshold={EXPOSURE}", *options, UNIT]
    return subprocess.run(command, capture_output=True, text=True)


def directives(name):
    with open(UNIT, encoding="utf-8") as unit:
        lines = [line.strip() for line in unit]
    return [line.partition("=")[2] for line in lines if line.startswith(name + "=")]


class Unit(unittest.TestCase):
    def test_is_exposed_as_little_as_it_promises(self):
        done = account()
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_leaves_root_no_capability(self):
        entries = [entry for entry in json.loads(account("--json=short").stdout)
                   if entry["json_field"].startswith(("CapabilityBoundingSet", "AmbientCapabilities"))]
        self.assertGreater(len(entries), 10)
        self.assertEqual([entry["name"] for entry in entries if not entry["set"]], [])
        self.assertEqual(directives("CapabilityBoundingSet"), [""])

    def test_gives_the_touchpads_back_outside_its_walls_however_the_daemon_ended(self):
        program = directives("ExecStart")
        self.assertEqual(directives("ExecStopPost"), [f"+{program[0]} --release"])
        self.assertEqual(directives("RuntimeDirectoryPreserve"), ["yes"])

    def test_starts_the_daemon_again_for_as_long_as_it_takes(self):
        self.assertEqual(directives("Restart"), ["always"])
        self.assertEqual(directives("StartLimitIntervalSec"), ["0"])

    def test_refuses_a_system_call_without_killing_for_it(self):
        self.assertEqual(directives("SystemCallErrorNumber"), ["EPERM"])

    def test_is_written_without_mistakes(self):
        done = subprocess.run(["systemd-analyze", "verify", "--man=no", "--recursive-errors=no", UNIT],
                              capture_output=True, text=True)
        complaints = [line for line in done.stderr.splitlines() if "is not executable" not in line]
        self.assertEqual(complaints, [])


if __name__ == "__main__":
    unittest.main()
