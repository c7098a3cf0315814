"""Scenarios of the contents of the packages."""

import re

from built import NAMES
from scenario import run, scenario, without_fakeroot
from waiting import check

DOCUMENTS = {f"/usr/share/doc/{name}/{file}" for name in NAMES for file in ("changelog.gz", "copyright")}
ENTRY = "/usr/share/applications/org.ble_kovra.BLEKovra.desktop"
METAINFO = "/usr/share/metainfo/org.ble_kovra.BLEKovra.metainfo.xml"
POLICY = "/usr/share/polkit-1/actions/org.ble_kovra.helper.policy"
ICONS = "/usr/share/icons/hicolor"
# The looks of the status item's icon, each with the folder of its icon for any size.
LOOKS = {"-symbolic": "symbolic", "-on-light-symbolic": "symbolic", "-on-dark-symbolic": "symbolic",
         "-outlined-dark": "scalable", "-outlined-light": "scalable"}
LANGUAGES = {"ru", "uk", "fr", "de", "es"}

APPLICATION = {
    "/usr/bin/ble-kovra",
    "/usr/bin/ble-kovractl",
    "/usr/libexec/ble-kovra/ble-kovra-ui",
    "/usr/share/bash-completion/completions/ble-kovractl",
    "/usr/share/man/man1/ble-kovra.1.gz",
    "/usr/share/man/man1/ble-kovractl.1.gz",
    "/usr/share/zsh/vendor-completions/_ble-kovractl",
    f"{ICONS}/scalable/apps/ble-kovra.svg",
    *(f"{ICONS}/{folder}/apps/{icon}{look}.svg" for icon in ("ble-kovra", "ble-kovra-muted")
      for look, any_size in LOOKS.items() for folder in (any_size, "16x16", "22x22", "24x24")),
    ENTRY,
    METAINFO,
}
HELPER = {
    "/usr/libexec/ble-kovra-helper",
    "/usr/libexec/ble-kovra/activate-helper",
    "/usr/libexec/ble-kovra/driver-manager",
    "/usr/libexec/ble-kovra/start-helper",
    "/usr/bin/systemextensionsctl",
    "/usr/share/man/man1/systemextensionsctl.1.gz",
    "/usr/share/man/man8/ble-kovra-helper.8.gz",
    "/usr/lib/sysusers.d/ble-kovra-helper.conf",
    "/usr/lib/tmpfiles.d/ble-kovra-helper.conf",
    "/usr/lib/udev/rules.d/90-ble-kovra-helper.rules",
    POLICY,
}


def units():
    """Returns the folder in which the packages of this release have their units: where systemd has its own."""
    files = run("dpkg-query", "--listfiles", "systemd")
    return re.search(r"^(/\S+/systemd/system)/systemd-logind\.service$", files, re.M)[1]


@scenario("gcc compiles the packages without a warning.")
def warnings(built):
    lines = (built.packages / "log").read_text(errors="replace").splitlines()
    found = [line for line in lines if re.search(r":\d+:\d+: warning: ", line)]
    check(not found, f"it says {found}")


@scenario("lintian reports no error, no warning and nothing pedantic, and there are no overrides.")
def checker(built):
    changes = next(built.packages.glob("*.changes"))
    output = run("lintian", "--allow-root", "--tag-display-limit", "0", "--show-overrides", "--pedantic", "--fail-on",
                 "error,warning,pedantic", changes)
    check(not re.search(r"^[EWPO]:", output, re.M), output)


@scenario("The license in debian/copyright, in the machine-readable format, is that of the file LICENSE.")
def license_text(built):
    title, holder, *text = (built.tree / "LICENSE").read_text().split("\n\n")
    for name in NAMES:
        copyright_file = (built.unpacked(name) / f"usr/share/doc/{name}/copyright").read_text()
        head, files, license_paragraph = copyright_file.split("\n\n")
        check(head.startswith("Format: https://www.debian.org/doc/packaging-manuals/copyright-format/1.0/\n"), head)
        check(title == "MIT License" and "\nLicense: Expat" in files, f"{title} is not in {files}")
        wanted = holder.replace("Copyright (c)", "Copyright:")
        check(f"\n{wanted}\n" in files, f"{wanted} is not in {files}")
        found = license_paragraph.removeprefix("License: Expat\n").replace("\n .\n", "\n\n")
        check(found.split() == "\n\n".join(text).split(), "the text of the license differs")


@scenario("Each package contains exactly its own files, all of them in folders of the system.")
def files(built):
    for name, wanted in zip(NAMES, (APPLICATION, HELPER | {f"{units()}/ble-kovra-helper.service"})):
        found = built.files(name)
        wanted = wanted | {each for each in DOCUMENTS if each.startswith(f"/usr/share/doc/{name}/")}
        check(found == wanted, f"{name} lacks {wanted - found} and brings {found - wanted}")


@scenario("The packages have the version of the project.")
def version(built):
    output = run("dpkg-parsechangelog", "--show-field", "Version", cwd=built.tree).strip()
    check(output == built.version, f"debian/changelog says {output}, CMakeLists.txt {built.version}")
    for name in NAMES:
        check(built.field(name, "Version") == built.version, f"{name} is {built.field(name, 'Version')}")
    tool = built.unpacked("ble-kovra-helper") / "usr/bin/systemextensionsctl"
    check(f" {built.version} " in tool.read_text(), "the listing tool has another version")


@scenario("The packages depend on what they use, and recommend what improves them.")
def dependencies(built):
    needs = built.field("ble-kovra", "Depends")
    for package in ("libc6", "libqt6widgets6", "libsystemd0", "libudev1", "libxcb1", "qt6-qpa-plugins"):
        check(re.search(rf"\b{package}\b", needs), f"ble-kovra does not need {package}: {needs}")
    # GNOME's extension for status items is not recommended, since it would install all of GNOME.
    check("gnome" not in built.field("ble-kovra", "Recommends"), "it recommends a desktop")
    check("ble-kovra-helper" in built.field("ble-kovra", "Recommends"), "it does not recommend the helper")
    needs = built.field("ble-kovra-helper", "Depends")
    check("qt6" not in needs and "xcb" not in needs, f"the helper needs a desktop: {needs}")
    # An older systemd-tmpfiles rejects the tmpfiles.d file of the package, so that no flag is created.
    for package in ("systemd", "systemd-tmpfiles"):
        check(f"{package} (>= 252)" in needs, f"any version of {package} is enough for the helper: {needs}")


@scenario("The desktop entry and the metainfo are valid, name existing files, and have texts in six languages.")
def metadata(built):
    place = built.unpacked("ble-kovra")
    run("desktop-file-validate", place / ENTRY[1:])
    output = run("appstreamcli", "validate", "--no-net", "--pedantic", place / METAINFO[1:])
    # AppStream before 1.0 does not know this tag; since 1.0 it reports the tag that came before it.
    output = re.sub(r"^I: .*: unknown-tag developer$", "", output, flags=re.M)
    check(not re.search(r"^[EWI]:", output, re.M), output)
    run("appstreamcli", "validate-tree", "--no-net", place)
    entry = (place / ENTRY[1:]).read_text()
    check("\nExec=ble-kovra\n" in entry and "\nIcon=ble-kovra\n" in entry, entry)
    for key in ("GenericName", "Comment", "Keywords"):
        spoken = set(re.findall(rf"^{key}\[(\w+)\]=.", entry, re.M))
        check(spoken == LANGUAGES, f"{key} is in {spoken}")
    for action in re.search(r"^Actions=(.*);$", entry, re.M)[1].split(";"):
        group = re.search(rf"^\[Desktop Action {action}\]\n((?:[^\[\n].*\n)+)", entry, re.M)[1]
        spoken = set(re.findall(r"^Name\[(\w+)\]=.", group, re.M))
        check(spoken == LANGUAGES, f"the action {action} is in {spoken}")
        check(f"\nExec=ble-kovractl {action}\n" in group, group)
    metainfo = (place / METAINFO[1:]).read_text()
    policy = (built.unpacked("ble-kovra-helper") / POLICY[1:]).read_text()
    for text, tags in ((metainfo, ("summary", "p")), (policy, ("description", "message"))):
        for tag in tags:
            spoken = set(re.findall(rf'<{tag} xml:lang="(\w+)">.', text))
            check(spoken == LANGUAGES, f"<{tag}> is in {spoken}")


@scenario("Every command has a manual page, and no page causes a warning.")
def manual(built):
    for name in NAMES:
        for page in built.unpacked(name).rglob("*.gz"):
            if page.parent.name.startswith("man"):
                # fakeroot sometimes prints a warning of its own inside man's sandbox.
                output = run("sh", "-c", 'man --warnings -E UTF-8 -l -Tutf8 -Z "$1" 2>&1 >/dev/null', "sh", page,
                             env=without_fakeroot())
                check(output == "", f"{page.name}: {output}")


@scenario("The shells complete every command of ble-kovractl, and its arguments.")
def completions(built):
    place = built.unpacked("ble-kovra")
    help_text = run(place / "usr/bin/ble-kovractl", "--help")
    commands = set(re.findall(r"^  (\w+(?: \| \w+)*)", help_text, re.M))
    commands = {word for each in commands for word in each.split(" | ")} | {"--help", "--version"}
    check({"status", "doctor", "toggle", "on", "off", "settings", "hotkey", "quit"} <= commands, help_text)
    bash = place / "usr/share/bash-completion/completions/ble-kovractl"

    def completed(*words):
        script = ('. "$1"; shift; COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _ble_kovractl;'
                  ' printf "%s\\n" "${COMPREPLY[@]}"')
        return set(run("bash", "-c", script, "bash", bash, "ble-kovractl", *words).split())
    check(completed("") == commands, f"bash completes {completed('')}")
    check(completed("se") == {"settings"}, f"bash completes {completed('se')}")
    check(completed("status", "") == {"--json"}, f"bash completes {completed('status', '')}")
    check(completed("toggle", "") == set(), f"bash completes {completed('toggle', '')}")
    zsh = (place / "usr/share/zsh/vendor-completions/_ble-kovractl").read_text()
    found = set(re.findall(r"^    '(\w+):", zsh, re.M)) | set(re.findall(r"'(--(?:help|version))\[", zsh))
    check(zsh.startswith("#compdef ble-kovractl\n") and found == commands, f"zsh completes {found}")


@scenario("The programs are hardened as Debian requires.")
def hardening(built):
    application, helper = (built.unpacked(name) for name in NAMES)
    for program in (application / "usr/bin/ble-kovra", application / "usr/bin/ble-kovractl",
                    application / "usr/libexec/ble-kovra/ble-kovra-ui", helper / "usr/libexec/ble-kovra-helper"):
        output = run("readelf", "--wide", "--file-header", "--dynamic", program)
        check(re.search(r"Type:\s+DYN", output), f"{program.name} is not position-independent")
        check("BIND_NOW" in output and not re.search(r"RUNPATH|RPATH", output), f"{program.name}: {output}")
        check(b"__stack_chk_fail" in program.read_bytes(), f"{program.name} has no stack protector")


# Each further library costs time at the start, and memory as long as the program runs.
RESIDENT = {
    "ble-kovra": ("usr/bin/ble-kovra", {"libc.so.6", "libsystemd.so.0", "libudev.so.1", "libxcb.so.1"}),
    "ble-kovra-helper": ("usr/libexec/ble-kovra-helper",
                         {"libacl.so.1", "libc.so.6", "libsystemd.so.0", "libudev.so.1"}),
}


@scenario("The programs that run all the time load only the libraries of the buses, the devices and the display.")
def libraries(built):
    for name, (path, expected) in RESIDENT.items():
        dynamic = run("readelf", "--wide", "--dynamic", built.unpacked(name) / path)
        needed = {library for library in re.findall(r"\(NEEDED\).*\[(.*)\]", dynamic)
                  if not library.startswith("ld-linux")}
        check(needed == expected, f"{name} loads {needed}")
