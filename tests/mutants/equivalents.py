"""The list of equivalent mutants: changes that nobody could notice. They are not planted.

A paragraph of the file `equivalent` names a file, the text before ("- "), the text after ("+ "), and then the reason. A
place is found by its texts, not by the number of its line. A reader checks the reason, no program does.
"""

import pathlib

LIST = pathlib.Path(__file__).resolve().parent / "equivalent"


class Wrong(Exception):
    """Raised if a paragraph does not have the form above."""


def read(text):
    """Returns the reason of each equivalent mutant, by file, text before and text after."""
    found = {}
    for paragraph in text.split("\n\n"):
        lines = [line for line in paragraph.splitlines() if line and not line.startswith("#")]
        if not lines:
            continue
        if len(lines) < 4 or not lines[1].startswith("- ") or not lines[2].startswith("+ "):
            raise Wrong(f"not a file, a text before, a text after and a reason:\n{paragraph}")
        found[lines[0], lines[1][2:], lines[2][2:]] = " ".join(lines[3:])
    return found


def known():
    return read(LIST.read_text(encoding="utf-8"))


def is_listed(mutant, listed):
    return (mutant.file, mutant.before, mutant.after) in listed
