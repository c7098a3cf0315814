"""The mutations of units and shell scripts: one directive or command is changed, or left out."""

import re

from mutant import make

# The units, which the check helper_unit reads, and the scripts, which the ring of the packages runs.
UNITS = ("helper/*.service.in",)
SCRIPTS = ("helper/tools/activate-helper.in", "helper/tools/driver-manager.in", "helper/tools/start-helper.in",
           "helper/tools/systemextensionsctl.in", "debian/*.postinst", "debian/*.postrm", "debian/*.prerm")

_SHELL = ((r" && ", " || "), (r" \|\| ", " && "), (r" = ", " != "), (r" != ", " = "), (r" -eq ", " -ne "),
          (r" -n ", " -z "), (r" -z ", " -n "), (r"\bif ", "if ! "), (r"\bwhile ", "while ! "),
          (r"\bexit 0\b", "exit 1"), (r"\bexit [1-9]\d*\b", "exit 0"), (r"^set -\w*e\w*$", ":"))
# A line that begins like this is part of a larger construct, so it cannot be left out.
_PART = re.compile(r"(if|then|else|elif|fi|for|while|until|do|done|case|esac|\w+\(\)|[{}]|.*\)$|;;|#|.*[\\|&]$|.*<<)")


def mutants_of_unit(file, source):
    return [make(file, source, kind, *change) for kind, *change in _of_unit(source)]


def mutants_of_script(file, source):
    return [make(file, source, kind, *change) for kind, *change in _of_script(source)]


def _of_unit(source):
    for found in re.finditer(r"^(?!Description|Documentation)([A-Z]\w+)=((?:.*\\\n)*.*)$", source, re.M):
        yield "directive removed", found.start(), found.end(), "#"
        value, start = found[2], found.start(2)
        for number in re.finditer(r"(?<![\w.])\d+", value):
            end = start + number.end()
            yield "directive changed", start + number.start(), end, str(int(number[0]) * 2 or 1)
        if value in ("yes", "no"):
            yield "directive changed", start, found.end(), "no" if value == "yes" else "yes"
        words = list(re.finditer(r"\S+", value))
        if len(words) > 1 and "\n" not in value:
            yield "directive changed", start + words[-2].end(), start + words[-1].end(), ""


def _of_script(source):
    start, continues = 0, False
    for line in source.splitlines(keepends=True):
        text = line.strip()
        begin = start + len(line) - len(line.lstrip())
        if text and not text.startswith("#") and not continues:
            if not _PART.match(text):
                yield "command removed", begin, begin + len(text), ":"
            for pattern, replacement in _SHELL:
                for found in re.finditer(pattern, text):
                    yield "command changed", begin + found.start(), begin + found.end(), replacement
        continues = text.endswith("\\")
        start += len(line)
