"""The faults: one file NAME.patch each."""

import re

from planting import ROOT, Trouble, git, is_of_macos, tests_of

# The line that names a desktop and a scenario of tests/desktops.
DESKTOP = re.compile(r"^Desktop: (\S+) (\w+)$", re.M)


class Fault:
    def __init__(self, path):
        self.path, self.name = path, path.stem
        text = path.read_text(encoding="utf-8")
        before, _, diff = text.partition("\n\n")
        # The desktop and the scenario that shall notice the fault, unless the room's tests do.
        self.desktop = found.groups() if (found := DESKTOP.search(before)) else None
        self.sentence = "" if re.match(r"diff |--- ", before) else " ".join(DESKTOP.sub("", before).split())
        self.files = re.findall(r"^\+\+\+ b/(\S+)", diff or text, re.M)
        self.macos = any(is_of_macos(file) for file in self.files)

    def fits(self):
        """Returns why the fault cannot be tried, or an empty text if it can."""
        if not self.sentence or not self.files:
            return "does not begin with a sentence, an empty line and a diff"
        done = git("apply", "--check", self.path, cwd=ROOT)
        if done.returncode != 0:
            return f"does not apply: {done.stderr.strip()}"
        try:
            tests_of(self.files[0])
        except Trouble as trouble:
            return str(trouble)
        return ""


def faults_in(folder):
    """Returns the faults whose patches are in the folder now, sorted by name."""
    return [Fault(path) for path in sorted(folder.glob("*.patch"))]
