"""A mutant: one small change of a source."""

import dataclasses


@dataclasses.dataclass(frozen=True)
class Mutant:
    file: str
    kind: str
    line: int
    # The characters from `start` to `end` of the source are replaced by `text`.
    start: int
    end: int
    text: str
    # The lines before and after, without indentation, joined by " / " if there are several.
    before: str
    after: str

    def planted_in(self, source):
        return source[:self.start] + self.text + source[self.end:]


def make(file, source, kind, start, end, text):
    first = source.rfind("\n", 0, start) + 1
    last = source.find("\n", end)
    last = len(source) if last < 0 else last
    before, after = source[first:last], source[first:start] + text + source[end:last]
    line = source.count("\n", 0, start) + 1
    return Mutant(file, kind, line, start, end, text, _in_one_line(before), _in_one_line(after))


def _in_one_line(text):
    return " / ".join(line.strip() for line in text.splitlines())
