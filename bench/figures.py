"""The figures, what they are compared with, and whether they keep their limits."""

import dataclasses
import os
import statistics
import time


# The limit for the ratio to the other build (--against).
AGAINST_LIMIT = 1.05


@dataclasses.dataclass
class Figure:
    name: str
    ours: str
    beside: str = ""
    compared: str = ""
    limit: str = ""
    kept: bool = True


class Report:
    def __init__(self):
        self._figures = []
        self._left_out = []

    def ratio(self, name, ours, floor, unit, limit=None):
        """Adds the medians of both sides over all rounds, and the median ratio. Both sides have the same unit."""
        ratio = statistics.median(a / b for a, b in zip(ours, floor, strict=True))
        medians = [f"{number(statistics.median(side))} {unit}" for side in (ours, floor)]
        self._add(Figure(name, *medians, f"{ratio:.2f} times", f"{limit} times" if limit else "",
                         limit is None or ratio <= limit))

    def against_other(self, name, ours, other, unit):
        self.ratio(f"{name}, compared with the other build", ours, other, unit, AGAINST_LIMIT)

    def plain(self, name, text):
        self._add(Figure(name, text))

    def at_most(self, name, value, limit, unit, compared=""):
        self._add(Figure(name, f"{value:.2f} {unit}", "", compared, f"{limit:.2f} {unit}", round(value, 2) <= limit))

    def leave_out(self, name, reason):
        """Records that a measurement failed, which counts as an exceeded limit."""
        self._left_out.append(f"left out: {name}: {reason}")
        say(self._left_out[-1])

    def close(self):
        """Prints all figures as one table. Returns whether everything was measured and every limit was kept."""
        rows = [("figure", "ours", "compared with", "ratio", "limit", "")]
        rows += [(f.name, f.ours, f.beside, f.compared, f.limit, "" if not f.limit else "kept" if f.kept else "MISSED")
                 for f in self._figures]
        widths = [max(len(row[column]) for row in rows) for column in range(len(rows[0]))]
        rows.insert(1, tuple("-" * width for width in widths))
        print()
        for row in rows:
            print("| " + " | ".join(cell.ljust(width) for cell, width in zip(row, widths)) + " |")
        for line in self._left_out:
            print(line)
        return not self._left_out and all(figure.kept for figure in self._figures)

    def _add(self, figure):
        self._figures.append(figure)
        parts = [figure.ours, figure.beside and f"compared with {figure.beside}", figure.compared,
                 figure.limit and f"limit {figure.limit}", "" if figure.kept else "MISSED"]
        say(f"{figure.name}: " + ", ".join(filter(None, parts)))


def number(value):
    return f"{value:,.0f}" if value >= 100 else f"{value:.3g}"


def say(text):
    print(f"bench: {text}", flush=True)


def wait_for_quiet(limit):
    """Waits until the machine is quiet, for about `limit` seconds at most; says if it is still busy."""
    deadline = time.monotonic() + limit
    while os.getloadavg()[0] >= 0.5 and time.monotonic() < deadline:
        time.sleep(2)
    if os.getloadavg()[0] >= 0.5:
        say(f"the machine is busy (load {os.getloadavg()[0]:.1f}): read the ratios, not the times")
