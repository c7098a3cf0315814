"""Tests tools/release --source in a small repository with some of the project's files."""

import hashlib
import os
import pathlib
import re
import shutil
import subprocess
import tarfile
import tempfile
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
# What the program and its checks read.
FILES = (".gitignore", "CMakeLists.txt", "BLE_kovra/l10n/SupportAddress.h", "debian", "packaging",
         "tests/docs/check_addresses.py", "tests/docs/check_releases.py", "tools/release")
VERSION = "0.2.0"
CHANGELOG = f"""# Changelog

## [{VERSION}] - 2026-11-22

### Fixed

- This.
- That, on
  two lines.

## [0.1.0] - 2026-11-21

### Added

- It.
"""
DAY = 24 * 3600


def environment(home):
    """Returns an environment in which git has only the settings of this home folder."""
    return {"PATH": os.environ["PATH"], "HOME": str(home), "GIT_CONFIG_NOSYSTEM": "1"}


def run(*command, cwd, environment=None, umask=0o022):
    return subprocess.run(command, cwd=cwd, env=environment, umask=umask, stdout=subprocess.PIPE,
                          stderr=subprocess.STDOUT, text=True, check=False)


class ReleaseTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        temporary = tempfile.TemporaryDirectory()
        cls.addClassCleanup(temporary.cleanup)
        cls.template = pathlib.Path(temporary.name)
        root = cls.template / "project"
        for name in FILES:
            (root / name).parent.mkdir(parents=True, exist_ok=True)
            if (ROOT / name).is_dir():
                shutil.copytree(ROOT / name, root / name)
            else:
                shutil.copy(ROOT / name, root / name)
        # The version is the same in each run, whatever version the project has.
        (root / "CHANGELOG.md").write_text(CHANGELOG, encoding="utf-8")
        build = (root / "CMakeLists.txt").read_text(encoding="utf-8")
        build = re.sub(r"VERSION \S+ ", f"VERSION {VERSION} ", build, count=1)
        (root / "CMakeLists.txt").write_text(build, encoding="utf-8")
        subprocess.run([root / "tests/docs/check_releases.py", "--write", root], stdout=subprocess.DEVNULL, check=True)
        # Without "auto = false", git maintains the repository in the background while it is being copied.
        settings = "[user]\nname = Somebody\nemail = somebody@example.org\n[maintenance]\nauto = false\n"
        (cls.template / ".gitconfig").write_text(settings, encoding="utf-8")
        for command in (("init", "--quiet"), ("add", "--all"), ("commit", "--quiet", "--message=Begin")):
            subprocess.run(["git", *command], cwd=root, env=environment(cls.template), check=True)

    def setUp(self):
        temporary = tempfile.TemporaryDirectory()
        self.addCleanup(temporary.cleanup)
        self.home = pathlib.Path(temporary.name)
        shutil.copytree(self.template, self.home, symlinks=True, dirs_exist_ok=True)
        self.root = self.home / "project"
        self.environment = environment(self.home)

    def git(self, *arguments, root=None):
        done = run("git", *arguments, cwd=root or self.root, environment=self.environment)
        self.assertEqual(done.returncode, 0, done.stdout)
        return done.stdout

    def commit(self):
        self.git("add", "--all")
        self.git("commit", "--quiet", "--message=Change something")

    def replace(self, name, pattern, text):
        done = run("sed", "-i", f"s/{pattern}/{text}/", name, cwd=self.root)
        self.assertEqual(done.returncode, 0, done.stdout)

    def release(self, root=None, umask=0o022, **environment):
        """Runs the program. Returns its exit status and its output."""
        done = run("tools/release", "--source", cwd=root or self.root, environment={**self.environment, **environment},
                   umask=umask)
        return done.returncode, done.stdout

    def files(self, root=None):
        """Returns a hash of each file of the release, by its path."""
        folder = (root or self.root) / "build/release-files" / VERSION
        return {str(path.relative_to(folder)): hashlib.sha256(path.read_bytes()).hexdigest()
                for path in folder.rglob("*") if path.is_file()}

    def text(self, name):
        return (self.root / "build/release-files" / VERSION / name).read_text(encoding="utf-8")

    def refuses(self, reason):
        before = self.files()
        status, output = self.release()
        self.assertEqual(status, 1, output)
        self.assertIn(reason, output)
        self.assertEqual(self.files(), before)

    def test_the_same_commit_gives_the_same_bytes(self):
        self.assertEqual(self.release()[0], 0)
        other = self.home / "elsewhere/clone"
        self.git("clone", "--quiet", str(self.root), str(other))
        for path in other.rglob("*"):
            if path.is_file() and ".git" not in path.parts:
                os.utime(path, (DAY, DAY))
        with (self.home / ".gitconfig").open("a", encoding="utf-8") as settings:
            settings.write(f"[tar]\numask = 0077\n[core]\nautocrlf = true\nattributesFile = {self.home}/attributes\n")
        (self.home / "attributes").write_text("debian export-ignore\n", encoding="utf-8")
        self.git("update-index", "--refresh", root=other)
        status, output = self.release(root=other, umask=0o077, TZ="Asia/Tokyo", LC_ALL="C.UTF-8", GZIP_OPT="-1")
        self.assertEqual(status, 0, output)
        self.assertEqual(self.files(other), self.files())

    def test_the_archive_has_the_files_of_the_commit(self):
        (self.root / "build").mkdir()
        (self.root / "build/ignored").touch()
        self.assertEqual(self.release()[0], 0)
        wanted = {f"ble-kovra-{VERSION}/{name}" for name in self.git("ls-files").splitlines()}
        with tarfile.open(self.root / f"build/release-files/{VERSION}/ble-kovra-{VERSION}.tar.gz") as archive:
            found = {member.name: member for member in archive if member.isfile()}
            self.assertEqual(set(found), wanted)
            program = found[f"ble-kovra-{VERSION}/tools/release"]
            self.assertEqual(archive.extractfile(program).read(), (ROOT / "tools/release").read_bytes())
            self.assertEqual(program.mode, 0o755)

    def test_the_notes_are_the_section_of_the_version(self):
        self.assertEqual(self.release()[0], 0)
        self.assertEqual(self.text("NOTES.md"), "### Fixed\n\n- This.\n- That, on\n  two lines.\n")

    def test_the_checksums_are_those_of_all_other_files(self):
        self.assertEqual(self.release()[0], 0)
        done = run("sha256sum", "--check", "--strict", "SHA256SUMS", cwd=self.root / "build/release-files" / VERSION)
        self.assertEqual(done.stdout, f"NOTES.md: OK\nble-kovra-{VERSION}.tar.gz: OK\n")
        self.assertEqual(set(self.files()), {"NOTES.md", f"ble-kovra-{VERSION}.tar.gz", "SHA256SUMS"})

    def test_packages_stay_only_with_the_same_sources(self):
        self.assertEqual(self.release()[0], 0)
        package = self.root / "build/release-files" / VERSION / "trixie/ble-kovra.deb"
        package.parent.mkdir()
        package.touch()
        self.assertEqual(self.release()[0], 0)
        self.assertIn("  trixie/ble-kovra.deb\n", self.text("SHA256SUMS"))
        self.replace("debian/rules", "^", "# ")
        self.commit()
        self.assertEqual(self.release()[0], 0)
        self.assertNotIn("trixie/ble-kovra.deb", self.files())

    def test_a_signature_does_not_outlast_its_checksums(self):
        self.assertEqual(self.release()[0], 0)
        (self.root / "build/release-files" / VERSION / "SHA256SUMS.asc").touch()
        self.assertEqual(self.release()[0], 0)
        self.assertNotIn("SHA256SUMS.asc", self.files())

    def test_a_change_that_is_not_committed_is_refused(self):
        self.assertEqual(self.release()[0], 0)
        self.replace("debian/rules", "^", "# ")
        self.refuses("these files differ from the commit:\n M debian/rules\n")
        self.git("checkout", "--quiet", ".")
        (self.root / "new").touch()
        self.refuses("these files differ from the commit:\n?? new\n")

    def test_texts_that_differ_are_refused(self):
        self.replace("debian/changelog", "This", "Those")
        self.commit()
        self.refuses("tests/docs/check_releases.py failed")

    def test_addresses_that_differ_are_refused(self):
        self.replace("debian/control", "^Homepage: .*", "Homepage: https:\\/\\/example.org")
        self.commit()
        self.refuses("tests/docs/check_addresses.py failed")

    def test_changes_of_no_version_are_refused(self):
        self.replace("CHANGELOG.md", r"^# Changelog", r"# Changelog\n\n## [Unreleased]")
        self.commit()
        self.refuses("CHANGELOG.md has changes of no version")

    def test_a_version_is_released_from_its_tag_alone(self):
        self.git("tag", f"v{VERSION}")
        self.assertEqual(self.release()[0], 0)
        self.replace("debian/rules", "^", "# ")
        self.commit()
        self.refuses(f"version {VERSION} has the tag v{VERSION}, on the commit ")

    def test_without_python_it_says_how_to_get_it(self):
        programs = self.home / "programs"
        programs.mkdir()
        for folder in reversed(self.environment["PATH"].split(":")):
            for program in pathlib.Path(folder).glob("[!p]*"):
                (programs / program.name).unlink(missing_ok=True)
                (programs / program.name).symlink_to(program)
        self.environment["PATH"] = str(programs)
        self.refuses("python3 is missing; tools/install-packages publish installs it")

    def test_another_option_is_refused(self):
        done = run("tools/release", "--sources", cwd=self.root, environment=self.environment)
        self.assertEqual((done.returncode, done.stdout), (1, "release: usage: tools/release [--source]\n"))


if __name__ == "__main__":
    unittest.main()
