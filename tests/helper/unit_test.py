"""Checks the directives of the helper's unit, and its sandboxing with systemd-analyze. systemd need not be running.

  unit_test.py UNIT      UNIT: the file as it is installed
"""

import json
import re
import subprocess
import sys
import unittest

UNIT = sys.argv.pop()
EXPOSURE = "12"  # the highest exposure allowed: 1.2 out of 10
USER = "_ble-kovra-helper"
# What systemd-analyze must find in effect, each for itself: the sum alone would hide the loss of a small one.
WALLS = {"CapabilityBoundingSet", "IPAddressDeny", "LockPersonality", "MemoryDenyWriteExecute", "NoNewPrivileges",
         "PrivateDevices", "PrivateMounts", "PrivateTmp", "ProcSubset", "ProtectClock", "ProtectControlGroups",
         "ProtectHome", "ProtectHostname", "ProtectKernelLogs", "ProtectKernelModules", "ProtectKernelTunables",
         "ProtectSystem", "RemoveIPC", "RestrictNamespaces", "RestrictRealtime", "RestrictSUIDSGID",
         "SystemCallArchitectures", "SystemCallFilter", "UMask"}


def account(*options):
    command = ["systemd-analyze", "security", "--offline=true", f"--threshold={EXPOSURE}", *options, UNIT]
    return subprocess.run(command, capture_output=True, text=True)


def directives(name):
    with open(UNIT, encoding="utf-8") as unit:
        lines = [line.strip() for line in re.sub(r"\\\n\s*", "", unit.read()).splitlines()]
    return [line.partition("=")[2] for line in lines if line.startswith(name + "=")]


class Unit(unittest.TestCase):
    def test_is_exposed_as_little_as_it_promises(self):
        done = account()
        self.assertEqual(done.returncode, 0, done.stdout + done.stderr)

    def test_has_each_of_its_walls(self):
        entries = json.loads(account("--json=short").stdout)
        self.assertLessEqual(WALLS, {entry["name"].partition("=")[0] for entry in entries})
        open_walls = {entry["name"] for entry in entries if not entry["set"]}
        self.assertEqual({name for name in open_walls if name.partition("=")[0] in WALLS}, set())
        self.assertEqual(directives("RestrictAddressFamilies"), ["AF_UNIX AF_NETLINK"])
        self.assertEqual(directives("DevicePolicy"), ["closed"])

    def test_writes_only_the_flags_folder_and_the_attributes_of_devices(self):
        self.assertEqual(directives("ReadWritePaths"), ['"-/Library/Application Support/ble-kovra"', "/sys/devices"])
        [others] = directives("ReadOnlyPaths")
        self.assertEqual(set(others.split()), {f"-/sys/{name}" for name in (
            "block", "bus", "class", "dev", "firmware", "fs", "kernel", "module", "power")})

    def test_starts_after_the_login_manager_and_says_when_it_is_ready(self):
        self.assertEqual(directives("After"), ["systemd-logind.service"])
        self.assertEqual(directives("Type"), ["notify"])
        self.assertEqual(directives("WantedBy"), ["multi-user.target"])

    def test_ends_even_a_stopped_daemon_that_gives_no_sign(self):
        self.assertEqual(directives("WatchdogSignal"), ["SIGKILL"])

    def test_runs_as_a_user_of_its_own_without_supplementary_groups(self):
        for name in ("User", "Group"):
            self.assertEqual(directives(name), [USER])
        self.assertEqual(directives("SupplementaryGroups"), [])

    def test_talks_neither_to_the_system_bus_nor_to_systemd(self):
        self.assertEqual(directives("InaccessiblePaths"), ["-/run/dbus -/run/systemd/private"])

    def test_does_as_root_only_what_prepares_its_start(self):
        program = directives("ExecStart")[0]
        self.assertEqual(directives("ExecStartPre"), [
            "-+/usr/bin/systemd-tmpfiles --create ble-kovra-helper.conf", f"-+{program} --grant {USER}"])
        self.assertFalse(program.startswith(("+", "!")))

    def test_leaves_no_capability(self):
        entries = [entry for entry in json.loads(account("--json=short").stdout)
                   if entry["json_field"].startswith(("CapabilityBoundingSet", "AmbientCapabilities"))]
        self.assertGreater(len(entries), 10)
        self.assertEqual([entry["name"] for entry in entries if not entry["set"]], [])
        self.assertEqual(directives("CapabilityBoundingSet"), [""])

    def test_gives_the_touchpads_back_outside_its_walls_however_the_daemon_ended(self):
        program = directives("ExecStart")
        self.assertEqual(directives("ExecStopPost"), [
            f"+/usr/bin/setpriv --reuid={USER} --regid={USER} --clear-groups --no-new-privs {program[0]} --release"])
        self.assertEqual(directives("RuntimeDirectory"), ["ble-kovra-helper"])
        self.assertEqual(directives("RuntimeDirectoryPreserve"), ["yes"])
        # Whoever may list a folder can make the kernel hold its lock, and the helper could not remove a record.
        self.assertEqual(directives("RuntimeDirectoryMode"), ["0700"])

    def test_leaves_the_daemon_the_time_to_unmute_when_it_is_stopped(self):
        [seconds] = directives("TimeoutStopSec")
        self.assertIn(int(seconds), range(11, 31))  # main.cpp retries for ten seconds

    def test_starts_the_daemon_again_for_as_long_as_it_takes(self):
        self.assertEqual(directives("Restart"), ["always"])
        self.assertEqual(directives("RestartSec"), ["1"])
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
