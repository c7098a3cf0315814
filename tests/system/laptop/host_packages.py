"""Reduces dpkg's database to the host's packages that our packages depend on or recommend.

dpkg reads every entry at every step, so a small database makes the installation faster.
"""

import pathlib
import re
import subprocess

import in_machine

DPKG = pathlib.Path("/var/lib/dpkg")
# Fields that may name packages or files that are missing in the reduced database.
DROPPED = re.compile(r"^(?:Pre-Depends|Depends|Breaks):.*\n|^Conffiles:.*\n(?: .*\n)*", re.M)


def keep_named(packages):
    named = set()
    for package in packages:
        command = ["dpkg-deb", "-f", package, "Depends", "Recommends"]
        fields = subprocess.run(command, capture_output=True, text=True, check=True).stdout
        named.update(re.findall(r"[:,|]\s*([a-z0-9][a-z0-9.+-]+)", fields))
    host = (DPKG / "status").read_text(encoding="utf-8").split("\n\n")
    in_machine.mount("tmpfs", DPKG, "mode=0755")
    for folder in ["info", "updates", "triggers", "alternatives"]:
        (DPKG / folder).mkdir()
    (DPKG / "info/format").write_text("1\n")
    with open(DPKG / "status", "w", encoding="utf-8") as status:
        for stanza in host:
            fields = dict(re.findall(r"^(\S+): (.*)$", stanza, re.M))
            if fields.get("Package") in named:
                status.write(DROPPED.sub("", stanza.strip() + "\n") + "\n")
                several = f":{fields['Architecture']}" if fields.get("Multi-Arch") == "same" else ""
                (DPKG / "info" / f"{fields['Package']}{several}.list").write_text("/.\n")
