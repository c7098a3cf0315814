"""Plants a mutant in the copy of the tree, builds what depends on it, and runs the tests that can notice it."""

import dataclasses
import json
import os
import re
import time

import seclusion
from coverage import Coverage, suite_command
from directives import SCRIPTS, UNITS
from mutant import Mutant
from planting import ROOT, Copy
from rooms import test_folders

PRESET = "mutants"
# A mutant that makes a suite take this long hangs.
PATIENCE_SECONDS, PATIENCE_FACTOR = 10, 5
CAUGHT, SURVIVED, DOES_NOT_COMPILE = "caught", "survived", "does not compile"


@dataclasses.dataclass
class Result:
    mutant: Mutant
    verdict: str
    # What has caught the mutant, or what has run without noticing it.
    tests: list
    seconds: float


class BuiltCopy(Copy):
    """The copy in which the mutants are planted."""

    def built(self, preset, program):
        return self.folder / "build" / preset / program

    def started(self, preset, program):
        """Returns the programs that this test program starts."""
        wanted = rf"add_dependencies\({program} ([\w-]+)\)"
        return [self.built(preset, name) for tests in sorted((ROOT / "tests").rglob("CMakeLists.txt"))
                for name in re.findall(wanted, tests.read_text(encoding="utf-8"))]


class Trials:
    """Tries mutants in a copy below `folder`. With `near`, only the tests of the mutant's own room run."""

    def __init__(self, folder, jobs, near, say):
        self._copy, self._near, self._say = BuiltCopy(folder / "tree", jobs), near, say
        self._coverage = Coverage(self._copy, PRESET, folder / "coverage", say)
        self._planted = None
        self._sound = set()
        self._preparing_seconds = 0
        # The sources without a mutant. The originals may be edited during a run.
        self._sources = {}
        os.environ["LLVM_PROFILE_FILE"] = "/dev/null"
        self._copy.configure(PRESET)
        commands = json.loads(self._copy.built(PRESET, "compile_commands.json").read_text(encoding="utf-8"))
        self._compiled = {os.path.relpath(command["file"], self._copy.folder) for command in commands}

    def run(self, mutant):
        begun, self._preparing_seconds = time.monotonic(), 0
        self._plant(mutant)
        if _matches(mutant.file, UNITS):
            verdict, tests = self._check(mutant, self._unit)
        elif _matches(mutant.file, SCRIPTS):
            verdict, tests = self._check(mutant, self._packages)
        else:
            verdict, tests = self._stages(mutant)
        return Result(mutant, verdict, tests, time.monotonic() - begun - self._preparing_seconds)

    def restore(self):
        """Takes the last mutant out."""
        if self._planted:
            (self._copy.folder / self._planted).write_text(self._sources[self._planted], encoding="utf-8")
            self._planted = None

    def _plant(self, mutant):
        # The mutants of one file replace each other. So a file is restored, and built again, only once.
        if self._planted != mutant.file:
            self.restore()
        file = self._copy.folder / mutant.file
        if mutant.file not in self._sources:
            self._sources[mutant.file] = file.read_text(encoding="utf-8")
        self._planted = mutant.file
        file.write_text(mutant.planted_in(self._sources[mutant.file]), encoding="utf-8")

    def _stages(self, mutant):
        """Runs the tests of the mutant's room, and if they do not notice it, those of other rooms."""
        if mutant.file.endswith(".cpp") and mutant.file not in self._compiled:
            return DOES_NOT_COMPILE, []  # a source for another system
        room, wider = (self._copy.programs(folders) for folders in test_folders(mutant.file))
        verdict, tests = self._suites(mutant, room)
        if verdict != SURVIVED or self._near:
            return verdict, tests
        verdict, more = self._suites(mutant, [program for program in wider if program not in room])
        return verdict, more if verdict == CAUGHT else tests + more

    def _suites(self, mutant, programs):
        if not self._coverage.knows(programs):
            self.restore()
            self._measure(programs)
            self._plant(mutant)
        suites = self._coverage.of(mutant, programs)
        built = set()
        if not suites and mutant.file.endswith(".cpp"):  # nothing runs the line, but the mutant must compile to count
            if self._copy.build(PRESET, f"{self._copy.folder}/{mutant.file}^"):
                return DOES_NOT_COMPILE, []
        for suite in suites:
            if suite.program not in built and self._copy.build(PRESET, suite.program):
                return DOES_NOT_COMPILE, []
            built.add(suite.program)
            limit = PATIENCE_SECONDS + PATIENCE_FACTOR * suite.seconds
            binary = self._copy.built(PRESET, suite.program)
            status, _ = seclusion.run(suite_command(binary, suite.name, suite.left_out), limit, binary.parent)
            if status != 0:
                return CAUGHT, [suite.name if status is not None else f"{suite.name}, which took too long"]
        return SURVIVED, [suite.name for suite in suites]

    def _measure(self, programs):
        begun = time.monotonic()
        self._say(f"building {', '.join(programs)}")
        if errors := self._copy.build(PRESET, *programs):
            raise SystemExit(f"the tree does not compile without a mutant:\n{errors}")
        self._coverage.measure(programs)
        self._preparing_seconds += time.monotonic() - begun

    def _check(self, mutant, what):
        """Runs a check that does not need the mutant to be compiled. Without a mutant it must succeed."""
        if what.__name__ not in self._sound:
            self.restore()
            verdict, tests = what()
            if verdict == CAUGHT:
                raise SystemExit(f"this fails without a mutant: {tests[0]}")
            self._sound.add(what.__name__)
            self._plant(mutant)
        return what()

    def _unit(self):
        self._copy.run("cmake", "--preset", PRESET)
        done = self._copy.run("ctest", "--preset", PRESET, "-R", "^helper_unit$", "--no-tests=error")
        return (SURVIVED if done.returncode == 0 else CAUGHT), ["helper_unit"]

    def _packages(self):
        done = self._copy.run("/usr/bin/python3", "-B", "tests/packages/run_tests.py")
        failed = re.findall(r"^FAILED\s+(\S+)", done.stdout, re.M)
        return (SURVIVED if done.returncode == 0 else CAUGHT), failed[:1] or ["packages"]


def _matches(file, patterns):
    return any((ROOT / file).match(pattern) for pattern in patterns)
