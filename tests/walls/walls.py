"""Checks the walls between the rooms: what each source file includes, where it tests for the operating system, and how
many sources a room has.

    python3 walls.py ROOT

The check prints one line for each breach, which starts with the file and the line number. Its exit status is 1 if there
is any.
"""

import re
import sys
from collections import Counter
from pathlib import Path

from rooms import TRANSPARENT, room_of

SOURCE_FOLDERS = ("BLE_kovra", "bench", "helper", "packaging", "tests")
SOURCES = {".c", ".cc", ".cpp", ".h", ".hpp", ".m", ".mm"}

TOKENS = re.compile(
    r"""  (?P<comment> //[^\n]* | /\*.*?\*/ )
        | (?P<raw> R"(?P<delimiter>[^()\\\s]{0,16})\(.*?\)(?P=delimiter)" )
        | "(?:\\.|[^"\\\n])*"
        | (?<![0-9A-Fa-f])'(?:\\.|[^'\\\n])*'  # not the separator of digits in 10'000
    """,
    re.VERBOSE | re.DOTALL,
)
# A room with more sources than this must be split.
MOST_SOURCES = 25

DIRECTIVE = re.compile(r"^[ \t]*#[ \t]*(\w+)[ \t]*(.*)$", re.MULTILINE)
INCLUDED = re.compile(r'(?P<quote>["<])(?P<header>[^">]+)[">]\s*$')
OPERATING_SYSTEM = re.compile(
    r"__has_include|\b(?:__linux(?:__)?|__gnu_linux__|linux|__APPLE__|__MACH__|TARGET_OS_\w+|_WIN32|_WIN64|"
    r"__unix(?:__)?|unix|"
    r"__\w+BSD__|BSD|__ANDROID__|__GLIBC__|__CYGWIN__|__HAIKU__|__sun|_POSIX_\w+|KOVRA_PLATFORM\w*)\b"
)


def directives(text):
    """Yields (line number, name, rest) of each directive. Skips comments and raw strings, and joins continued lines."""

    # Joins a continued line. Its line feeds are appended, so that the numbers of the following lines stay correct.
    def join(match):
        return match[0].replace("\\\n", " ") + "\n" * match[0].count("\\\n")

    def blank(match):
        if match["comment"] is None and match["raw"] is None:
            return match[0]
        return " " + "\n" * match[0].count("\n")

    text = TOKENS.sub(blank, re.sub(r"^(?:[^\n]*\\\n)+[^\n]*", join, text, flags=re.MULTILINE))
    for match in DIRECTIVE.finditer(text):
        yield text.count("\n", 0, match.start()) + 1, match[1], match[2]


def sources(root):
    """Returns the text of each source file, by its path relative to the root."""
    return {
        path.relative_to(root).as_posix(): path.read_text(encoding="utf-8")
        for folder in SOURCE_FOLDERS
        for path in (root / folder).rglob("*")
        if path.suffix in SOURCES and path.is_file()
    }


class Tree:
    def __init__(self, files):
        self.directives = {path: list(directives(text)) for path, text in sorted(files.items())}

    def includes(self, path):
        """Yields (line number, quote, header) of each include. The last two are None if a macro names the header."""
        for line, name, rest in self.directives.get(path, ()):
            if name in ("include", "include_next", "import"):
                match = INCLUDED.match(rest)
                yield (line, match["quote"], match["header"]) if match else (line, None, None)

    def breaches(self):
        if not self.directives:
            yield "no source file found"
        for path in self.directives:
            for line, breach in self.breaches_of(path):
                yield f"{path}:{line}: {breach}"
        for folder, count in Counter(path.rpartition("/")[0] for path in self.directives).items():
            if count > MOST_SOURCES and folder.startswith(("BLE_kovra", "helper")):
                yield f"{folder}:1: {count} sources; at most {MOST_SOURCES} in a room"

    def breaches_of(self, path):
        room = room_of(path)
        if room is None:
            yield 1, "this folder is not a room; add it to tests/walls/rooms.py"
            return
        for line, quote, header in self.includes(path):
            for breach in self.breaches_of_include(path, room, quote, header):
                yield line, breach
        yield from self.own_header_not_first(path)
        for line, name, rest in self.directives[path]:
            if name in ("if", "ifdef", "ifndef", "elif", "elifdef", "elifndef") and not room.own_system:
                if match := OPERATING_SYSTEM.search(rest):
                    yield line, f"tests for the operating system ({match[0]}); the linker chooses the platform"

    def breaches_of_include(self, path, room, quote, header):
        if header is None:
            yield "the name of an included header is written out, in quotes or angle brackets"
        elif quote == "<":
            if header in self.directives:
                yield f'write a header of the project in quotes: "{header}"'
            elif not room.library(header):
                yield f"{room.folder} may not include <{header}>"
        elif header not in self.directives:
            yield f'"{header}" is no header of the project, named from its root'
        elif not header.endswith(".h"):
            yield f'"{header}" is no header'
        else:
            yield from self.breaches_of_project_header(path, room, header)

    def breaches_of_project_header(self, path, room, header):
        if not room.may_include(header):
            yield f'{room.folder} may not include "{header}"'
            return
        for reached in sorted(self.reached_through(header)):
            if not room.may_include(reached):
                yield f'{room.folder} may not include "{reached}", which "{header}" includes'

    def reached_through(self, header):
        """Returns the project headers that a header of TRANSPARENT includes, directly or through others of these."""
        reached, waiting = set(), [header]
        while waiting:
            current = waiting.pop()
            if TRANSPARENT.fullmatch(current):
                new = {found for _, quote, found in self.includes(current) if quote == '"'} - reached
                reached |= new
                waiting += new
        return reached

    def own_header_not_first(self, path):
        stem, suffix = path.rsplit(".", 1)
        own = stem + ".h"
        if suffix == "h" or own not in self.directives:
            return
        included = list(self.includes(path))
        if not included or included[0][2] != own:
            yield included[0][0] if included else 1, f'includes its own header first: "{own}"'


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    tree = Tree(sources(Path(sys.argv[1])))
    breaches = list(tree.breaches())
    print(*breaches, sep="\n", end="\n" if breaches else "")
    print(f"{len(tree.directives)} files, {len(breaches)} breaches")
    sys.exit(1 if breaches else 0)


if __name__ == "__main__":
    main()
