"""Tests tools/install-packages with stand-ins for dpkg-query, apt-get and apt-cache, and a small list of packages."""

import os
import pathlib
import pty
import shutil
import subprocess
import tempfile
import unittest

PROGRAM = pathlib.Path(__file__).resolve().parents[2] / "tools/install-packages"
LIST = """# comment
build compiler
build pkgconf|pkg-config
build libthing-dev pkg-config:thing
build qt-dev cmake:Qt
test compiler
test panel
release bookworm
"""
# What the program uses of the system.
TOOLS = ("awk", "bash", "dirname", "env", "mktemp", "paste", "rm", "sed", "tail")


class InstallPackagesTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.root = pathlib.Path(temporary.name)
        (self.root / "tools").mkdir()
        (self.root / "tools/packages").write_text(LIST, encoding="utf-8")
        shutil.copy(PROGRAM, self.root / "tools")
        self.path = self.root / "bin"
        self.path.mkdir()
        for tool in TOOLS:
            (self.path / tool).symlink_to(shutil.which(tool))
        self.stand_in("sudo", 'exec "$@"')

    def stand_in(self, name, script):
        (self.path / name).write_text(f"#!/bin/bash\n{script}\n", encoding="utf-8")
        (self.path / name).chmod(0o755)

    def debian(self, installed, available):
        """Makes a Debian system: these packages are installed, and the release has those."""
        states = [f"{name} installed" for name in installed] + ["old config-files"]
        self.stand_in("dpkg-query", "".join(f"echo {state}\n" for state in states))
        self.stand_in("apt-get", f'echo "$*" >>"{self.root}/commands"')
        known = " ".join(available)
        self.stand_in("apt-cache", f"""for name in "${{@:2}}"; do
            case " {known} " in *" $name "*) version=1 ;; *) version="(none)" ;; esac
            printf '%s:\\n  Installed: (none)\\n  Candidate: %s\\n' "$name" "$version"
        done""")

    def run_for(self, *purposes):
        """Returns the exit status and the output. The program runs on a terminal, and its question is answered."""
        master, terminal = pty.openpty()
        os.write(master, b"\n")
        done = subprocess.run([self.root / "tools/install-packages", *purposes], env={"PATH": str(self.path)},
                              stdin=terminal, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True, check=False)
        os.close(master)
        os.close(terminal)
        return done.returncode, done.stdout

    def commands(self):
        """Returns the commands that apt-get received."""
        file = self.root / "commands"
        return file.read_text(encoding="utf-8").splitlines() if file.exists() else []

    def test_nothing_is_done_if_nothing_is_missing(self):
        self.debian(["compiler", "pkg-config", "libthing-dev", "qt-dev"], [])
        self.assertEqual(self.run_for("build"), (0, ""))
        self.assertEqual(self.commands(), [])

    def test_what_is_missing_is_installed_once(self):
        self.debian([], ["compiler", "panel"])
        self.assertEqual(self.run_for("test", "test")[0], 0)
        self.assertEqual(self.commands(), ["-q update", "-q install -y --no-install-recommends compiler panel"])

    def test_the_first_alternative_that_the_release_has_is_installed(self):
        for available, chosen in ((["pkgconf", "pkg-config"], "pkgconf"), (["pkg-config"], "pkg-config")):
            self.debian(["compiler", "libthing-dev", "qt-dev"], available)
            self.assertEqual(self.run_for("build")[0], 0)
            self.assertEqual(self.commands()[-1], f"-q install -y --no-install-recommends {chosen}")

    def test_what_the_release_lacks_is_named_and_the_rest_is_installed(self):
        self.debian(["pkgconf", "libthing-dev"], ["compiler"])
        status, output = self.run_for("build")
        self.assertEqual(status, 0)
        self.assertIn("packages: there is no package here named qt-dev; going on without\n", output)
        self.assertEqual(self.commands()[-1], "-q install -y --no-install-recommends compiler")

    def test_a_failure_of_apt_is_a_failure(self):
        self.debian([], ["compiler", "panel"])
        self.stand_in("apt-get", "echo no network; exit 100")
        status, output = self.run_for("test")
        self.assertEqual(status, 1)
        self.assertIn("no network\npackages: apt-get update failed\n", output)

    def test_without_apt_what_is_needed_is_named(self):
        status, output = self.run_for("build", "test")
        self.assertEqual(status, 0)
        self.assertIn(" has no apt-get, so nothing is installed.", output)
        self.assertIn("libraries of CMake: Qt\n", output)
        self.assertIn("libraries of pkg-config: thing\n", output)
        self.assertIn("packages: compiler pkgconf|pkg-config libthing-dev qt-dev panel\n", output)


if __name__ == "__main__":
    unittest.main()
