"""Which suites run which lines, and how long each suite takes. What was measured is kept in build/mutants/coverage.

Each suite of a test program runs once. A program is measured again only if it has changed.
"""

import collections
import hashlib
import json
import re
import subprocess
import time

import seclusion

# The time limit of a suite without a mutant.
LONGEST_SECONDS = 300


class Suite:
    """A suite of a test program, with the lines that it runs. Tests that fail without a mutant are left out."""

    def __init__(self, program, name, seconds, lines, left_out=()):
        self.program, self.name, self.seconds, self.left_out = program, name, seconds, left_out
        self.lines = {file: set(numbers) for file, numbers in lines.items()}


class Coverage:
    def __init__(self, copy, preset, folder, say):
        self._copy, self._preset, self._folder, self._say = copy, preset, folder, say
        self._programs = {}
        # The lines of each file that can run.
        self._runnable = collections.defaultdict(set)
        folder.mkdir(parents=True, exist_ok=True)

    def of(self, mutant, programs):
        """Returns the suites of these programs that run a line of the mutant; programs and suites with less time first.

        A line that never runs, such as a constant, counts as run by whatever runs a line of the same file; if nothing
        does, by all suites.
        """
        suites = [suite for program in programs for suite in self._program(program)]
        own = [suite for suite in suites if mutant.line in suite.lines.get(mutant.file, ())]
        if not own and mutant.line not in self._runnable[mutant.file]:
            own = [suite for suite in suites if suite.lines.get(mutant.file)] or suites
        totals = collections.Counter()
        for suite in own:
            totals[suite.program] += suite.seconds
        return sorted(own, key=lambda suite: (totals[suite.program], suite.program, suite.seconds))

    def knows(self, programs):
        return all(program in self._programs for program in programs)

    def measure(self, programs):
        for program in programs:
            self._program(program)

    def _program(self, program):
        if program not in self._programs:
            kept = self._kept(program)
            self._programs[program] = [Suite(program, name, *each) for name, each in kept["suites"].items()]
            for file, lines in kept["runnable"].items():
                self._runnable[file].update(lines)
        return self._programs[program]

    def _kept(self, program):
        binary = self._copy.built(self._preset, program)
        programs = [binary, *self._copy.started(self._preset, program)]
        digest = hashlib.sha256(b"".join(path.read_bytes() for path in programs)).hexdigest()
        file = self._folder / f"{program}.json"
        if file.exists():
            kept = json.loads(file.read_text(encoding="utf-8"))
            if kept["digest"] == digest:
                return kept
        measured = {"digest": digest, **self._measured(program, binary)}
        file.write_text(json.dumps(measured), encoding="utf-8")
        return measured

    def _measured(self, program, binary):
        self._say(f"measuring which lines {program} runs")
        suites, runnable = {}, collections.defaultdict(set)
        for name in suites_of(binary):
            left_out, (status, seconds, words) = [], self._timed(binary, name, ())
            if status != 0:
                left_out = sorted(set(re.findall(r"^\[  FAILED  \] (\S+?),? ", f"{words}\n", re.M)))
                self._say(f"{program}: left out, since they fail without a mutant: {' '.join(left_out) or name}")
                status, seconds, _ = self._timed(binary, name, left_out)
            if status != 0:
                continue
            lines = self._lines(program, binary)
            for file, counts in lines.items():
                runnable[file].update(counts)
            ran = {file: sorted(line for line, count in counts.items() if count) for file, counts in lines.items()}
            suites[name] = [seconds, {file: numbers for file, numbers in ran.items() if numbers}, left_out]
        return {"suites": suites, "runnable": {file: sorted(lines) for file, lines in runnable.items()}}

    def _timed(self, binary, name, left_out):
        """Runs this suite, and lets it write which lines it runs. Returns its status, seconds and output."""
        for raw in self._folder.glob("*.profraw"):
            raw.unlink()
        begun = time.monotonic()
        command = [word for word in suite_command(binary, name, left_out) if word != "--gtest_fail_fast"]
        status, words = seclusion.run(command, LONGEST_SECONDS, binary.parent,
                                      # Two programs with one number, in two namespaces, would destroy each other's file.
                                      LLVM_PROFILE_FILE=f"{self._folder}/%m%p%c.profraw")
        return status, time.monotonic() - begun, words

    def _lines(self, program, binary):
        """Returns how often each line of our sources has run, by file and line."""
        raws, profile = sorted(self._folder.glob("*.profraw")), self._folder / "suite.profdata"
        if not raws:
            return {}
        subprocess.run(["llvm-profdata", "merge", "-sparse", "-o", profile, *raws], check=True)
        objects = [word for path in self._copy.started(self._preset, program) for word in ("-object", path)]
        done = subprocess.run(["llvm-cov", "export", "-format=lcov", "-instr-profile", profile, binary, *objects],
                              check=True, capture_output=True, text=True)
        return read_lcov(done.stdout, f"{self._copy.folder}/")


def read_lcov(text, root):
    """Returns the counts of the lines of our sources, by file and line."""
    found, counts = {}, {}
    for line in text.splitlines():
        if line.startswith("SF:"):
            file = line[3:].removeprefix(root)
            counts = found.setdefault(file, {}) if re.match(r"(BLE_kovra|helper)/", file) else {}
        elif line.startswith("DA:"):
            number, count = map(int, line[3:].split(",")[:2])
            counts[number] = counts.get(number, 0) + count
    return {file: counts for file, counts in found.items() if counts}


def suites_of(binary):
    done = subprocess.run([binary, "--gtest_list_tests"], check=True, capture_output=True, text=True, timeout=60)
    return [line.split()[0].rstrip(".") for line in done.stdout.splitlines() if re.match(r"[\w/]+\.( |$)", line)]


def suite_command(binary, name, left_out):
    without = f"-{':'.join(left_out)}" if left_out else ""
    return [binary, f"--gtest_filter={name}.*{without}", "--gtest_fail_fast", "--gtest_brief=1"]
