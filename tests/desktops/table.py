"""Writes the results into docs/desktops.md: a table, a desktop by row and a scenario by column."""


BEGIN, END = "<!-- desktops: written by tests/desktops/run --write -->", "<!-- desktops: end -->"
NOT_TRIED, WORKS, FAILS = "not tried", "works", "fails"


class Results:
    def __init__(self, scenarios):
        self._scenarios = scenarios
        # The cells by desktop and scenario.
        self._cells = {}

    def works(self, desktop, name, remarks):
        self._cells[desktop.name, name] = f"{WORKS}: {'; '.join(remarks)}" if remarks else WORKS

    def not_possible(self, desktop, name, reason):
        self._cells[desktop.name, name] = f"not possible: {reason}"

    def fails(self, desktop, name):
        self._cells[desktop.name, name] = FAILS

    def write(self, page, desktops):
        """Replaces the table in the page. What did not run this time keeps its cell."""
        text = page.read_text(encoding="utf-8")
        begin, end = text.index(BEGIN) + len(BEGIN), text.index(END)
        known = _read(text[begin:end])
        titles = [f"`{name}`" for name in self._scenarios]
        rows = [["Desktop", *titles]] + [[desktop.title, *(self._cells.get((desktop.name, name)) or
                 known.get((desktop.title, title), NOT_TRIED) for name, title in zip(self._scenarios, titles))]
                for desktop in desktops]
        rows.insert(1, ["---"] * len(rows[0]))
        table = "\n".join(f"| {' | '.join(row)} |" for row in rows)
        page.write_text(f"{text[:begin]}\n\n{table}\n\n{text[end:]}", encoding="utf-8")


def _read(text):
    rows = [[cell.strip() for cell in line.strip("|").split(" | ")] for line in text.strip().splitlines()]
    if not rows:
        return {}
    titles = [cell.strip() for cell in rows[0][1:]]
    return {(row[0], title): cell for row in rows[2:] for title, cell in zip(titles, row[1:])}
