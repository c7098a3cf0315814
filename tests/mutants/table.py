"""The scores, and their table in docs/testing.md."""

import dataclasses
import re

from planting import write_table
from trial import CAUGHT, DOES_NOT_COMPILE

BEGIN, END = "<!-- mutants: written by tests/mutants/run --write -->", "<!-- end of the mutants -->"
TITLES = ("Room", "Lines", "Planted", "Caught", "Of 100", "Before", "Chosen", "Seed", "Date")
BEFORE_AT = TITLES.index("Before")


@dataclasses.dataclass
class Score:
    room: str
    lines: int
    results: list
    seed: int
    date: str
    # "all", or "sample"; whether only the room's own tests ran; whether only the survivors were tried again.
    choice: str

    def planted(self):
        return sum(result.verdict != DOES_NOT_COMPILE for result in self.results)

    def caught(self):
        return sum(result.verdict == CAUGHT for result in self.results)

    def of_hundred(self):
        return f"{100 * self.caught() / self.planted():.0f}" if self.planted() else "–"

    def sentence(self):
        seconds = sum(result.seconds for result in self.results) / (len(self.results) or 1)
        return (f"{self.room}: {self.lines} lines, {self.planted()} planted, {self.caught()} caught, "
                f"{self.planted() - self.caught()} survived: {self.of_hundred()} of 100; "
                f"{len(self.results) - self.planted()} more did not compile; {seconds:.1f} s for each")

    def row(self):
        return [f"`{self.room}`", str(self.lines), str(self.planted()), str(self.caught()), self.of_hundred(), "–",
                self.choice, str(self.seed), self.date]


def write(scores):
    """Replaces the rows of these rooms in the table. The other rooms keep theirs."""
    write_table(BEGIN, END, lambda current: updated(current, scores))


def updated(current, scores):
    """Returns the lines of the table with the rows of these scores. A room's first score stays in it, as "before"."""
    rows = {}
    for line in current.strip().splitlines()[2:]:
        cells = [cell.strip() for cell in line.strip("|").split("|")]
        rows[cells[0]] = cells
    for row in (score.row() for score in scores):
        former = rows.get(row[0])
        if former:
            row[BEFORE_AT] = former[BEFORE_AT] if former[BEFORE_AT] != "–" else _first(former)
        rows[row[0]] = row
    ordered = [rows[room] for room in sorted(rows, key=lambda name: re.sub(r"\W", " ", name))]
    return [f"| {' | '.join(row)} |" for row in (TITLES, ["---"] * len(TITLES), *ordered)]


def _first(row):
    cells = dict(zip(TITLES, row))
    return f"{cells['Of 100']} ({cells['Caught']} of {cells['Planted']}, seed {cells['Seed']})"
