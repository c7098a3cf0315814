"""The results of the last run of each room, kept in build/mutants/results, so that its survivors can be tried again."""

import dataclasses
import json

from mutant import Mutant
from trial import CAUGHT, SURVIVED, Result


@dataclasses.dataclass
class Run:
    seed: int
    choice: str
    results: list

    def caught(self):
        return [result for result in self.results if result.verdict == CAUGHT]

    def survivors_among(self, mutants):
        """Returns those of the mutants that survived, found by their texts.

        A survivor whose line has gone, or that nobody could notice, is not among them, and counts no longer.
        """
        by_texts = {}
        for mutant in mutants:
            by_texts.setdefault(_texts(mutant), []).append(mutant)
        found = []
        for former in (result.mutant for result in self.results if result.verdict == SURVIVED):
            alike = by_texts.get(_texts(former))
            if alike:
                found.append(min(alike, key=lambda mutant, line=former.line: abs(mutant.line - line)))
                alike.remove(found[-1])
        return found


def write(folder, room, run):
    file = _file(folder, room)
    file.parent.mkdir(parents=True, exist_ok=True)
    file.write_text(json.dumps(dataclasses.asdict(run)), encoding="utf-8")


def read(folder, room):
    """Returns the last run of this room, or None."""
    file = _file(folder, room)
    if not file.exists():
        return None
    run = Run(**json.loads(file.read_text(encoding="utf-8")))
    run.results = [Result(**{**result, "mutant": Mutant(**result["mutant"])}) for result in run.results]
    return run


def _file(folder, room):
    return folder / "results" / f"{room.replace('/', '.')}.json"


def _texts(mutant):
    return mutant.file, mutant.kind, mutant.before, mutant.after
