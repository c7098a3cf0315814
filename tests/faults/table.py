"""The table of the faults in docs/testing.md."""

import re

from fault import faults_in
from planting import PAGE, write_table

BEGIN, END = "<!-- faults: written by tests/faults/run --write -->", "<!-- end of the faults -->"


class Table:
    """The table as a run of faults writes it.

    A run takes long, and others work on the page and in the folder of the patches meanwhile. So each write reads both
    again and replaces only the rows of the tried faults. All others stay as they are. A patch without a row gets one. A
    row is removed only if it was there when the run began and has no patch now: a row that was added since may be there
    before its patch.
    """

    def __init__(self, folder, page=PAGE):
        self._folder, self._page = folder, page
        self._before = set(rows(page.read_text(encoding="utf-8")))

    def write(self, results):
        """Writes the rows of these faults. `results` has the tests that have caught each, by its name."""
        write_table(BEGIN, END, lambda current: self._updated(rows(current), results), self._page)

    def _updated(self, current, results):
        faults = faults_in(self._folder)
        deleted = self._before - {fault.name for fault in faults}
        updated = {name: row for name, row in current.items() if name not in deleted}
        for fault in faults:
            if fault.name in results or fault.name not in current:
                caught = in_words(results[fault.name]) if fault.name in results else "not tried yet"
                updated[fault.name] = f"| `{fault.name}` | {fault.sentence} | {caught} |"
        return ["| Fault | What is wrong | Caught by |", "|---|---|---|", *(updated[name] for name in sorted(updated))]


def rows(text):
    """Returns the rows of the table in this text, by the names of their faults."""
    return {found[1]: found[0] for found in re.finditer(r"^\| `([^`]+)` \| .* \| .* \|$", text, re.M)}


def in_words(names):
    """Returns the names as one text: suites with the number of their failing tests, other names as they are.

    If there are more than six, the text contains five names and the number of the others.
    """
    counts = {}
    for name in names:
        suite = name.partition(".")[0] if re.fullmatch(r"[\w/]+\.\w+", name) else name
        suite = "/".join(part for part in suite.split("/") if not part.isdigit())
        counts[suite] = counts.get(suite, 0) + 1
    if len(counts) > 6:
        rest = len(counts) - 5
        return ", ".join([*list(counts)[:5], f"{rest} more"])
    return ", ".join(f"`{name}` ({count})" if re.fullmatch(r"[\w/]+", name) else name for name, count in counts.items())
