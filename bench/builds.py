"""The programs to measure: those of this checkout, and those of another build to compare with."""

import json
import pathlib
import subprocess

from private import CannotRun

ROOT = pathlib.Path(__file__).resolve().parents[1]


class Build:
    def __init__(self, folder):
        self.folder = pathlib.Path(folder).resolve()
        self.program = self._file("ble-kovra")
        self.window_program = self._file("ble-kovra-ui")

    def benchmark(self, pattern, binary="kovra_bench", **how):
        return benchmark(self._file(binary), pattern, **how)

    def _file(self, name):
        path = self.folder / name
        if not path.is_file():
            raise CannotRun(f"there is no {path}; the preset bench builds it")
        return path


class Tools:
    """The programs that the sections run. `own` is the build of this checkout. `other` is the build to compare with, or
    None. Before each start of a program a measurement may wait `calm` seconds for a quiet machine."""

    def __init__(self, against, calm):
        self.calm = calm
        build = ROOT / "build" / "bench"
        self.own = Build(build)
        self.other = Build(against) if against else None
        self.helper = build / "ble-kovra-helper"
        self.many_changes = build / "kovra_many_changes"
        self.watcher = build / "kovra_write_watch"
        self.start_when_told = build / "kovra_start_when_told"
        self.tray_host = build / "kovra_tray_host"
        self.floors = build / "floors"

    def builds(self):
        """Returns the builds by name, in the order in which they are measured."""
        return {"ours": self.own} | ({"other": self.other} if self.other else {})


def benchmark(program, pattern, folder=None, environment=None, repetitions=1, seconds=0.5):
    """Runs the benchmarks whose names match the pattern; returns Google Benchmark's entry for every repetition."""
    command = [program, f"--benchmark_filter={pattern}", f"--benchmark_repetitions={repetitions}",
               f"--benchmark_min_time={seconds}", "--benchmark_format=json"]
    done = subprocess.run(command, cwd=folder, env=environment, capture_output=True, text=True, check=True)
    return [entry for entry in json.loads(done.stdout)["benchmarks"] if entry["run_type"] == "iteration"]
