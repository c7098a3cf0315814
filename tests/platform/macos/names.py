"""Checks names in the Objective-C++ sources that no compiler checks, and the beginning of the program.

AppKit finds the methods of a delegate by their names, so a misspelled one is silently never called. A selector is
accepted if any class has it, and a key or a notification may be the wrong one. The tables below are from the system's
documentation, not from the sources."""

import re
from pathlib import Path

# The main menu: each key, with Command, and what AppKit sends for it. None: a method of the application's own.
KEYS = {",": None, "q": "terminate:", "m": "performMiniaturize:", "w": "performClose:"}
# What else the program lets AppKit send: a click on a label presses its button.
SENT = {"performClick:"}
# After these the flag is written again if it is not what it should be.
NOTIFICATIONS = {"NSWorkspaceDidWakeNotification", "NSWorkspaceSessionDidBecomeActiveNotification"}
# A second copy ends before it can read the preferences or touch the flag: at the beginning of the program.
BEGINNING = re.compile(r"void runApplication\(\) \{\s*kovra::InstancePort (\w+)\([^;]*\);\s*if \(\1\.isSecond\(\)\) return;")

SECTION = re.compile(
    r"@(interface|protocol|implementation)\s+(\w+)(?:\s*\(\w*\))?(?:<[^<>{}:]*>)?(?:\s*:\s*(\w+))?(?:\s*<([\w\s,]*)>)?(.*?)^@end",
    re.M | re.S,
)  # fmt: skip


def without_types(text):
    while (shorter := re.sub(r"\([^()]*\)", "", text)) != text:
        text = shorter
    return text


def selectors(body):
    """Returns the names of the methods that are declared or defined in the body of a class."""
    found = set()
    for signature in re.findall(r"^[-+]\s*(\([^;{]*?)\s*[;{]", body, re.M | re.S):
        words = without_types(re.sub(r"KOVRA_SINCE\([^)]*\)", "", signature))
        found.add("".join(re.findall(r"\w+:", words)) or words.split()[0])
    return found


def sections(texts):
    """Returns (kind, name, superclass, protocols, methods) of each class and protocol."""
    for text in texts:
        for kind, name, parent, protocols, body in SECTION.findall(re.sub(r"//.*", "", text)):
            yield kind, name, parent, {word.strip() for word in protocols.split(",")} - {""}, selectors(body)


class Names:
    def __init__(self, sources, declarations):
        self.text = "\n".join(sources)
        self.parents, self.adopted, self.declared, self.defined = {}, {}, {}, {}
        for kind, name, parent, protocols, methods in sections([*declarations, *sources]):
            known = self.defined if kind == "implementation" else self.declared
            known.setdefault(name, set()).update(methods)
            if parent:
                self.parents[name] = parent
            self.adopted.setdefault(name, set()).update(protocols)
        self.sent = set(re.findall(r"@selector\(([\w:]+)\)", self.text))

    def promised(self, name):
        """Returns the methods that a class declares, inherits or adopts."""
        found = set(self.declared.get(name, ()))
        for protocol in self.adopted.get(name, ()):
            found |= self.declared.get(protocol, set())
        return found | (self.promised(self.parents[name]) if name in self.parents else set())

    def problems(self):
        found = []
        for name, methods in sorted(self.defined.items()):
            for method in sorted(methods - self.promised(name) - self.sent):
                found.append(f"{name} has {method}, which nobody calls: no protocol, superclass or @selector names it")
        own = set().union(*self.defined.values()) if self.defined else set()
        keys = re.findall(r"shortcut\(@\"(.*?)\",\s*(?:@selector\(([\w:]+)\)|\w+)", self.text)
        expected = sorted((key, action or "") for key, action in KEYS.items())
        if sorted(keys) != expected:
            found.append(f"the main menu has the keys {sorted(keys)}, not {expected}")
        of_appkit = self.sent - own
        wanted = SENT | {action for action in KEYS.values() if action}
        if of_appkit != wanted:
            found.append(f"the selectors of AppKit are {sorted(of_appkit)}, not {sorted(wanted)}")
        notifications = re.findall(r"addObserver:.*?name:(\w+)", self.text, re.S)
        if sorted(notifications) != sorted(NOTIFICATIONS):
            found.append(f"the observed notifications are {sorted(notifications)}, not {sorted(NOTIFICATIONS)}")
        if not BEGINNING.search(self.text):
            found.append("the program does not begin by asking whether another copy runs")
        return found


def texts_in(folder):
    paths = [path for path in sorted(Path(folder).rglob("*")) if path.suffix in (".mm", ".h")]
    return [path.read_text(encoding="utf-8") for path in paths]


def problems(layer, declarations):
    """Returns what is wrong in the sources of the folder `layer`, one sentence each."""
    return Names(texts_in(layer), texts_in(declarations)).problems()
