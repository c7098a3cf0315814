"""The CPU time, memory and wake-ups of processes. Each figure is the sum over the given processes."""

import pathlib
import re
import time


def cpu_time(pid):
    """Returns the CPU time in nanoseconds; 0 if the process has ended."""
    try:
        return time.clock_gettime_ns((~pid << 3) | 2)  # the ID of that process's CPU clock
    except OSError:
        return 0


def memory(pids, kind="Pss"):
    """Returns the memory in MiB; `kind` is a field of smaps_rollup."""
    rollups = (pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text() for pid in pids)
    return sum(int(re.search(rf"^{kind}:\s+(\d+) kB", rollup, re.M).group(1)) for rollup in rollups) / 1024


def threads(pids):
    return [thread for pid in pids for thread in pathlib.Path(f"/proc/{pid}/task").glob("*")]


class Watch:
    """Measures the processes from the construction of this object on. Processes that have ended do not count."""

    def __init__(self, pids):
        self._pids = pids
        self._cpu, self._switches = self._cpu_times(), self._voluntary_switches()

    def cpu(self):
        """Returns the CPU time in milliseconds."""
        return sum(time - self._cpu[pid] for pid, time in self._cpu_times().items() if time) / 1e6

    def wake_ups(self):
        """Returns the number of voluntary context switches of all threads."""
        return sum(count - self._switches.get(thread, 0) for thread, count in self._voluntary_switches().items())

    def _cpu_times(self):
        return {pid: cpu_time(pid) for pid in self._pids}

    def _voluntary_switches(self):
        counts = {}
        for thread in threads(self._pids):
            try:
                status = (thread / "status").read_text()
            except OSError:
                continue
            counts[thread] = int(re.search(r"^voluntary_ctxt_switches:\s+(\d+)", status, re.M).group(1))
        return counts
