"""Tests walls.py on small artificial trees: it accepts what is allowed and reports each kind of breach."""

import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

import rooms
from walls import Tree

# The artificial trees contain these headers, so that a breach is due to a wall and not to a missing header.
HEADERS = {
    path: "#pragma once\n"
    for path in (
        "BLE_kovra/platform/Menu.h",
        "BLE_kovra/platform/posix/Posix.h",
        "BLE_kovra/platform/linux/loop/Loop.h",
        "BLE_kovra/platform/linux/bus/Bus.h",
        "BLE_kovra/platform/linux/x11/Server.h",
        "BLE_kovra/platform/linux/desktop/Log.h",
        "BLE_kovra/platform/linux/session/Instance.h",
        "BLE_kovra/platform/linux/hid/Udev.h",
        "BLE_kovra/platform/linux/hotkeys/Portal.h",
        "BLE_kovra/platform/linux/windows/Process.h",
        "BLE_kovra/platform/linux/tray/Item.h",
        "BLE_kovra/platform/linux/theme/IconLook.h",
        "BLE_kovra/platform/linux/wire/Lines.h",
        "BLE_kovra/platform/linux/ui/Socket.h",
        "BLE_kovra/platform/linux/ui/style/Colors.h",
        "BLE_kovra/platform/linux/ui/elements/Element.h",
        "BLE_kovra/platform/linux/ui/windows/Window.h",
        "BLE_kovra/platform/linux/ui/tray/Icon.h",
        "BLE_kovra/platform/macos/hotkeys/Carbon.h",
        "BLE_kovra/platform/macos/views/View.h",
        "BLE_kovra/l10n/L10n.h",
        "BLE_kovra/devices/HIDDeviceInfo.h",
        "BLE_kovra/devices/HIDMonitor.h",
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/system/LoginItem.h",
        "BLE_kovra/app/AppDelegate.h",
        "BLE_kovra/app/settings/SettingsView.h",
        "helper/Pad.h",
        "packaging/icons/Svg.h",
        "tests/fakes/FakeHID.h",
        "tests/support/AppRig.h",
        "tests/support/linux/Screen.h",
        "tests/contracts/QueueContract.h",
        "tests/platform/linux/loop/LoopRig.h",
        "tests/platform/linux/bus/BusRig.h",
        "tests/platform/linux/tray/TrayRig.h",
        "tests/core/Other.h",
    )
}


def breaches(files):
    return list(Tree({**HEADERS, **files}).breaches())


def includes(*headers):
    return "".join(f"#include {header if header[0] in '<' else chr(34) + header + chr(34)}\n" for header in headers)


FORBIDDEN = {
    "BLE_kovra/platform/X.h": (
        "BLE_kovra/platform/posix/Posix.h",
        "BLE_kovra/platform/linux/hid/Udev.h",
        "BLE_kovra/l10n/L10n.h",
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/app/AppDelegate.h",
        "tests/fakes/FakeHID.h",
        "<unistd.h>",
        "<libudev.h>",
        "<nlohmann/json.hpp>",
    ),
    "BLE_kovra/platform/posix/X.cpp": (
        "BLE_kovra/platform/linux/hid/Udev.h",
        "BLE_kovra/core/AppState.h",
        "<sys/epoll.h>",
        "<systemd/sd-bus.h>",
        "<QString>",
    ),
    "BLE_kovra/platform/linux/main.cpp": (
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/l10n/L10n.h",
        "BLE_kovra/platform/linux/ui/windows/Window.h",
        "BLE_kovra/platform/macos/hotkeys/Carbon.h",
        "helper/Pad.h",
        "<QApplication>",
    ),
    "BLE_kovra/platform/linux/loop/X.cpp": (
        "BLE_kovra/platform/linux/bus/Bus.h",
        "BLE_kovra/platform/macos/hotkeys/Carbon.h",
        "BLE_kovra/l10n/L10n.h",
        "BLE_kovra/devices/HIDMonitor.h",
        "BLE_kovra/devices/HIDDeviceInfo.h",
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/system/LoginItem.h",
        "BLE_kovra/app/AppDelegate.h",
        "helper/Pad.h",
        "<systemd/sd-bus.h>",
        "<QWidget>",
        "<QtWidgets/QLabel>",
        "<qobject.h>",
    ),
    "BLE_kovra/platform/linux/bus/X.cpp": ("BLE_kovra/platform/linux/session/Instance.h", "<libudev.h>", "<xcb/xcb.h>"),
    "BLE_kovra/platform/linux/x11/X.cpp": (
        "BLE_kovra/platform/linux/bus/Bus.h",
        "<systemd/sd-bus.h>",
        "<X11/Xlib.h>",
        "<fontconfig/fontconfig.h>",
    ),
    "BLE_kovra/platform/linux/desktop/JournalLog.cpp": (
        "BLE_kovra/platform/linux/tray/Item.h",
        "BLE_kovra/platform/linux/bus/Bus.h",
        "BLE_kovra/platform/linux/wire/Lines.h",
        "BLE_kovra/app/AppDelegate.h",
        "<systemd/sd-bus.h>",
    ),
    "BLE_kovra/platform/linux/session/X.cpp": (
        "BLE_kovra/platform/linux/hid/Udev.h",
        "BLE_kovra/platform/linux/x11/Server.h",
        "<xcb/xcb.h>",
    ),
    "BLE_kovra/platform/linux/hid/X.cpp": (
        "BLE_kovra/platform/linux/desktop/Log.h",
        "BLE_kovra/platform/linux/session/Instance.h",
        "BLE_kovra/devices/HIDMonitor.h",
        "<xcb/xcb.h>",
    ),
    "BLE_kovra/platform/linux/hotkeys/X.cpp": ("BLE_kovra/platform/linux/tray/Item.h", "<libudev.h>"),
    "BLE_kovra/platform/linux/windows/X.cpp": (
        "BLE_kovra/platform/linux/bus/Bus.h",
        "BLE_kovra/platform/linux/x11/Server.h",
        "BLE_kovra/platform/linux/tray/Item.h",
        "BLE_kovra/platform/linux/ui/windows/Window.h",
        "<nlohmann/json.hpp>",
    ),
    "BLE_kovra/platform/linux/tray/X.cpp": (
        "BLE_kovra/platform/linux/hid/Udev.h",
        "BLE_kovra/platform/linux/hotkeys/Portal.h",
        "<libudev.h>",
    ),
    "BLE_kovra/platform/linux/wire/X.cpp": (
        "BLE_kovra/platform/linux/loop/Loop.h",
        "BLE_kovra/app/AppDelegate.h",
        "<systemd/sd-event.h>",
        "<QFile>",
    ),
    "BLE_kovra/platform/linux/ui/main.cpp": (
        "BLE_kovra/platform/linux/loop/Loop.h",
        "BLE_kovra/l10n/L10n.h",
        "BLE_kovra/app/settings/SettingsView.h",
    ),
    "BLE_kovra/platform/linux/ui/X.cpp": ("BLE_kovra/platform/linux/ui/windows/Window.h", "BLE_kovra/core/AppState.h"),
    "BLE_kovra/platform/linux/ui/style/X.cpp": (
        "BLE_kovra/platform/linux/wire/Lines.h",
        "BLE_kovra/platform/linux/ui/elements/Element.h",
    ),
    "BLE_kovra/platform/linux/ui/elements/X.cpp": (
        "BLE_kovra/platform/linux/ui/windows/Window.h",
        "BLE_kovra/platform/linux/wire/Lines.h",
    ),
    "BLE_kovra/platform/linux/ui/windows/X.cpp": (
        "BLE_kovra/platform/linux/hid/Udev.h",
        "BLE_kovra/platform/linux/ui/tray/Icon.h",
        "BLE_kovra/l10n/L10n.h",
        "BLE_kovra/devices/HIDMonitor.h",
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/system/LoginItem.h",
        "BLE_kovra/app/settings/SettingsView.h",
    ),
    "BLE_kovra/platform/linux/ui/tray/X.cpp": ("BLE_kovra/platform/linux/ui/windows/Window.h",),
    "BLE_kovra/platform/macos/main.mm": (
        "BLE_kovra/platform/linux/hid/Udev.h", "BLE_kovra/core/AppState.h", "<QString>",
    ),
    "BLE_kovra/platform/macos/hid/X.mm": (
        "BLE_kovra/platform/macos/hotkeys/Carbon.h",
        "BLE_kovra/platform/macos/views/View.h",
        "BLE_kovra/platform/linux/hid/Udev.h",
        "BLE_kovra/app/AppDelegate.h",
        "<QString>",
    ),
    "BLE_kovra/l10n/X.cpp": (
        "BLE_kovra/devices/HIDMonitor.h",
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/platform/linux/hid/Udev.h",
        "<langinfo.h>",
        "<unicode/uchar.h>",
    ),
    "BLE_kovra/devices/X.cpp": (
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/app/AppDelegate.h",
        "BLE_kovra/platform/linux/hid/Udev.h",
        "<libudev.h>",
    ),
    "BLE_kovra/core/X.cpp": (
        "BLE_kovra/devices/HIDMonitor.h",
        "BLE_kovra/l10n/L10n.h",
        "BLE_kovra/system/LoginItem.h",
        "BLE_kovra/app/AppDelegate.h",
        "<fcntl.h>",
    ),
    "BLE_kovra/system/X.cpp": ("BLE_kovra/core/AppState.h", "BLE_kovra/devices/HIDMonitor.h", "<spawn.h>"),
    "BLE_kovra/app/X.cpp": ("BLE_kovra/platform/linux/hid/Udev.h", "tests/fakes/FakeHID.h", "<unistd.h>", "<QMenu>"),
    "BLE_kovra/app/settings/X.cpp": ("BLE_kovra/platform/linux/ui/windows/Window.h", "<QWidget>"),
    "helper/X.cpp": ("BLE_kovra/platform/Menu.h", "BLE_kovra/core/AppState.h", "<QString>", "<gtest/gtest.h>"),
    "tests/l10n/X.cpp": (
        "BLE_kovra/core/AppState.h", "BLE_kovra/devices/HIDMonitor.h", "tests/core/Other.h", "<unistd.h>",
    ),
    "tests/core/X.cpp": ("BLE_kovra/devices/HIDMonitor.h", "BLE_kovra/l10n/L10n.h", "BLE_kovra/app/AppDelegate.h"),
    "tests/devices/X.cpp": ("BLE_kovra/core/AppState.h", "tests/contracts/QueueContract.h"),
    "tests/app/X.cpp": ("BLE_kovra/platform/linux/hid/Udev.h", "<unistd.h>"),
    "tests/fakes/X.h": ("BLE_kovra/core/AppState.h", "BLE_kovra/devices/HIDMonitor.h", "<gtest/gtest.h>", "<unistd.h>"),
    "tests/support/X.h": ("BLE_kovra/platform/linux/hid/Udev.h", "<unistd.h>"),
    "tests/contracts/X.h": ("BLE_kovra/core/AppState.h", "BLE_kovra/platform/linux/hid/Udev.h", "<unistd.h>"),
    "tests/journeys/X.cpp": ("BLE_kovra/platform/linux/hid/Udev.h", "<unistd.h>"),
    "tests/model/X.cpp": ("BLE_kovra/platform/linux/hid/Udev.h", "<unistd.h>"),
    "tests/platform/linux/bus/X.cpp": (
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/app/AppDelegate.h",
        "BLE_kovra/platform/linux/tray/Item.h",
        "tests/platform/linux/tray/TrayRig.h",
        "<QString>",
    ),
    "tests/platform/posix/X.cpp": ("BLE_kovra/platform/linux/bus/Bus.h",),
    "tests/packaging/icons/X.cpp": ("BLE_kovra/app/AppDelegate.h",),
    "tests/system/X.cpp": ("BLE_kovra/core/AppState.h", "BLE_kovra/platform/linux/hid/Udev.h"),
}

ALLOWED = {
    "BLE_kovra/platform/X.h": ("BLE_kovra/platform/Menu.h", "<string>"),
    "BLE_kovra/platform/posix/X.cpp": ("BLE_kovra/platform/Menu.h", "BLE_kovra/platform/posix/Posix.h", "<unistd.h>"),
    "BLE_kovra/platform/linux/main.cpp": (
        "BLE_kovra/app/AppDelegate.h",
        "BLE_kovra/platform/posix/Posix.h",
        "BLE_kovra/platform/linux/desktop/Log.h",
        "BLE_kovra/platform/linux/hid/Udev.h",
        "BLE_kovra/platform/linux/tray/Item.h",
        "<string>",
    ),
    "BLE_kovra/platform/linux/loop/X.cpp": (
        "BLE_kovra/platform/Menu.h",
        "BLE_kovra/platform/posix/Posix.h",
        "<sys/epoll.h>",
        "<systemd/sd-event.h>",
    ),
    "BLE_kovra/platform/linux/desktop/X.cpp": ("BLE_kovra/platform/linux/loop/Loop.h", "<nlohmann/json.hpp>"),
    "BLE_kovra/platform/linux/hid/X.cpp": (
        "BLE_kovra/platform/linux/loop/Loop.h",
        "BLE_kovra/platform/linux/bus/Bus.h",
        "<libudev.h>",
        "<systemd/sd-bus.h>",
    ),
    "BLE_kovra/platform/linux/tray/X.cpp": (
        "BLE_kovra/platform/linux/windows/Process.h",
        "BLE_kovra/platform/linux/wire/Lines.h",
        "BLE_kovra/platform/linux/x11/Server.h",
        "<xcb/xcb.h>",
    ),
    "BLE_kovra/platform/linux/ui/main.cpp": (
        "BLE_kovra/platform/linux/ui/Socket.h",
        "BLE_kovra/platform/linux/ui/tray/Icon.h",
        "BLE_kovra/platform/linux/ui/windows/Window.h",
        "<QApplication>",
    ),
    "BLE_kovra/platform/linux/ui/windows/X.cpp": (
        "BLE_kovra/platform/Menu.h",
        "BLE_kovra/platform/linux/wire/Lines.h",
        "BLE_kovra/platform/linux/ui/style/Colors.h",
        "BLE_kovra/platform/linux/ui/elements/Element.h",
        "<QWidget>",
    ),
    "BLE_kovra/platform/macos/main.mm": ("BLE_kovra/platform/macos/views/View.h", "BLE_kovra/app/AppDelegate.h"),
    "BLE_kovra/platform/macos/hid/X.mm": ("BLE_kovra/platform/posix/Posix.h", "<IOKit/hid/IOHIDManager.h>"),
    "BLE_kovra/l10n/X.cpp": ("BLE_kovra/platform/Menu.h", "BLE_kovra/l10n/L10n.h", "<vector>"),
    "BLE_kovra/devices/X.cpp": ("BLE_kovra/l10n/L10n.h", "BLE_kovra/platform/Menu.h"),
    "BLE_kovra/core/X.cpp": ("BLE_kovra/devices/HIDDeviceInfo.h", "BLE_kovra/platform/Menu.h"),
    "BLE_kovra/system/X.cpp": ("BLE_kovra/l10n/L10n.h", "BLE_kovra/platform/Menu.h"),
    "BLE_kovra/app/settings/X.cpp": (
        "BLE_kovra/app/AppDelegate.h",
        "BLE_kovra/app/settings/SettingsView.h",
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/devices/HIDMonitor.h",
        "BLE_kovra/l10n/L10n.h",
        "BLE_kovra/system/LoginItem.h",
        "BLE_kovra/platform/Menu.h",
    ),
    "helper/X.cpp": ("helper/Pad.h", "<linux/input.h>"),
    "tests/core/X.cpp": (
        "BLE_kovra/core/AppState.h",
        "BLE_kovra/devices/HIDDeviceInfo.h",
        "tests/core/Other.h",
        "tests/fakes/FakeHID.h",
        "tests/support/AppRig.h",
        "<gtest/gtest.h>",
    ),
    "tests/app/X.cpp": ("BLE_kovra/app/settings/SettingsView.h", "BLE_kovra/core/AppState.h", "<gtest/gtest.h>"),
    "tests/journeys/X.cpp": ("BLE_kovra/app/AppDelegate.h", "tests/support/AppRig.h", "<gtest/gtest.h>"),
    "tests/contracts/X.h": ("BLE_kovra/platform/Menu.h", "tests/fakes/FakeHID.h", "<gtest/gtest.h>"),
    "tests/platform/linux/hid/X.cpp": (
        "BLE_kovra/platform/linux/hid/Udev.h",
        "tests/platform/linux/bus/BusRig.h",
        "tests/platform/linux/loop/LoopRig.h",
        "tests/support/linux/Screen.h",
        "tests/contracts/QueueContract.h",
        "<gtest/gtest.h>",
        "<umockdev.h>",
    ),
    "tests/platform/linux/ui/windows/X.cpp": (
        "BLE_kovra/platform/linux/ui/windows/Window.h", "tests/support/linux/Screen.h",
    ),
    "tests/platform/posix/X.cpp": (
        "BLE_kovra/platform/posix/Posix.h", "tests/platform/linux/loop/LoopRig.h", "<spawn.h>",
    ),
    "tests/packaging/icons/X.cpp": ("packaging/icons/Svg.h", "<gtest/gtest.h>"),
    "packaging/icons/X.cpp": ("BLE_kovra/app/AppDelegate.h", "BLE_kovra/platform/linux/theme/IconLook.h"),
}


class Walls(unittest.TestCase):
    def expect_one(self, files, *words):
        found = breaches(files)
        self.assertEqual(len(found), 1, found)
        for word in words:
            self.assertIn(word, found[0])

    def test_a_clean_tree_has_no_breach(self):
        self.assertEqual(breaches({path: includes(*headers) for path, headers in ALLOWED.items()}), [])

    def test_each_forbidden_include_is_reported_by_file_and_line(self):
        for path, headers in FORBIDDEN.items():
            for header in headers:
                with self.subTest(path=path, header=header):
                    self.expect_one({path: "\n" + includes(header)}, f"{path}:2: ", "may not include", header)

    def test_every_breach_is_reported_not_the_first_alone(self):
        files = {path: includes(*headers) for path, headers in FORBIDDEN.items()}
        self.assertEqual(len(breaches(files)), sum(len(headers) for headers in FORBIDDEN.values()))

    def test_a_crowded_room_is_reported(self):
        def room(folder, count):
            return {f"{folder}/File{number}.h": "#pragma once\n" for number in range(count)}

        self.assertEqual(list(Tree(room("helper/pads", 25)).breaches()), [])
        self.assertEqual(list(Tree(room("tests/core", 26)).breaches()), [])
        for folder in ("helper/pads", "BLE_kovra/core", "BLE_kovra/platform/linux/tray"):
            (found,) = Tree(room(folder, 26)).breaches()
            self.assertIn(f"{folder}:1: 26 sources", found)

    def test_no_room_of_linux_is_reached_from_those_that_it_may_include(self):
        reached = {}
        for room, (neighbours, _) in rooms.LINUX_ROOMS.items():
            reached[room] = set(neighbours).union(*(reached.get(each, ()) for each in neighbours))
            self.assertNotIn(room, reached[room])
            self.assertLessEqual(set(neighbours) - {"wire"}, set(reached), f"{room}: a neighbour comes after it")

    def test_an_unknown_folder_is_reported(self):
        for path in ("BLE_kovra/odds/X.cpp", "BLE_kovra/X.cpp", "BLE_kovra/platform/linux/X.cpp", "tests/odds/X.cpp",
                     "BLE_kovra/l10n/odds/X.cpp"):
            with self.subTest(path=path):
                self.expect_one({path: ""}, path, "not a room")

    def test_project_headers_stand_in_quotes_and_are_named_from_the_root(self):
        own = "BLE_kovra/core/X.cpp"
        self.expect_one({own: "#include <BLE_kovra/core/AppState.h>\n"}, "in quotes")
        self.expect_one({own: '#include "AppState.h"\n'}, "from its root")
        self.expect_one({own: '#include "../core/AppState.h"\n'}, "from its root")
        self.expect_one({own: '#include "BLE_kovra/core/Gone.h"\n'}, "from its root")
        self.expect_one({own: '#include "string"\n'}, "from its root")
        self.expect_one({own: "#include <stdio.h>\n"}, "may not include")
        self.expect_one({own: "#include <no_such_standard_header>\n"}, "may not include")
        self.expect_one({own: '#include "BLE_kovra/core/Y.cpp"\n', "BLE_kovra/core/Y.cpp": ""}, "no header")
        self.expect_one({own: "#include HEADER\n"}, "written out")

    def test_a_files_own_header_comes_first(self):
        own = "BLE_kovra/core/AppState.cpp"
        self.assertEqual(breaches({own: includes("BLE_kovra/core/AppState.h", "<string>")}), [])
        self.expect_one({own: includes("<string>", "BLE_kovra/core/AppState.h")}, f"{own}:1: ", "own header first")
        self.expect_one({own: includes("<string>")}, "own header first")
        self.expect_one({own: ""}, "own header first")

    def test_support_passes_on_what_it_includes(self):
        rig = {"tests/support/AppRig.h": includes("BLE_kovra/app/AppDelegate.h")}
        self.assertEqual(breaches({**rig, "tests/app/X.cpp": includes("tests/support/AppRig.h")}), [])
        self.expect_one({**rig, "tests/core/X.cpp": includes("tests/support/AppRig.h")}, "AppDelegate.h", "AppRig.h")
        nested = {**rig, "tests/support/More.h": includes("tests/support/AppRig.h")}
        self.expect_one({**nested, "tests/core/X.cpp": includes("tests/support/More.h")}, "AppDelegate.h", "More.h")

    def test_the_device_record_brings_nothing_along_into_core(self):
        record = {"BLE_kovra/devices/HIDDeviceInfo.h": includes("BLE_kovra/l10n/L10n.h")}
        self.expect_one({**record, "BLE_kovra/core/X.cpp": includes("BLE_kovra/devices/HIDDeviceInfo.h")}, "L10n.h")

    def test_only_the_systems_rooms_ask_for_the_operating_system(self):
        questions = ("#ifdef __linux__", "#if defined(__APPLE__)", "#ifndef _WIN32", "#  if 0 || TARGET_OS_OSX",
                     "#if __has_include(<unistd.h>)", "#if 0\n#elif defined __FreeBSD__")  # fmt: skip
        for question in questions:
            text = f"{question}\n#endif\n"
            for path in ("BLE_kovra/app/X.cpp", "BLE_kovra/platform/X.h", "tests/core/X.cpp", "helper/X.cpp"):
                with self.subTest(path=path, question=question):
                    self.expect_one({path: text}, path, "operating system")
            for system in ("linux/loop", "macos/hid", "posix"):
                self.assertEqual(breaches({f"BLE_kovra/platform/{system}/X.cpp": text}), [])
        self.assertEqual(breaches({"BLE_kovra/core/X.cpp": "#ifdef NDEBUG\n#endif\n"}), [])

    def test_includes_are_found_however_they_are_written(self):
        for text in ("#include<fcntl.h>", "  #  include  <fcntl.h>", "#include \\\n<fcntl.h>",
                     "#include <fcntl.h> // why",
                     "/* a */ #include <fcntl.h>", "#include /* b */ <fcntl.h>", "#import <fcntl.h>",
                     "auto a = 10'000;\n#include <fcntl.h>\nauto b = 20'000;", '// "\n#include <fcntl.h>\n// "',
                     "char c = '\"';\n#include <fcntl.h>\nchar d = '\"';"):  # fmt: skip
            with self.subTest(text=text):
                self.expect_one({"BLE_kovra/core/X.cpp": text + "\n"}, "<fcntl.h>")

    def test_what_only_looks_like_an_include_is_left_alone(self):
        for text in ("// #include <fcntl.h>", "/*\n#include <fcntl.h>\n*/", 'auto s = R"(\n#include <fcntl.h>\n)";',
                     'auto s = "/*";\n// */ #include <fcntl.h>', "// goes on \\\n#include <fcntl.h>"):  # fmt: skip
            with self.subTest(text=text):
                self.assertEqual(breaches({"BLE_kovra/core/X.cpp": text + "\n"}), [])

    def test_the_line_number_counts_comments_and_continued_lines(self):
        text = '/* one\ntwo */\n#define A \\\n 1\nauto s = R"(\n)";\n#include <fcntl.h>\n'
        self.expect_one({"BLE_kovra/core/X.cpp": text}, "X.cpp:7: ")

    def test_a_tree_without_sources_is_no_success(self):
        self.assertEqual(len(list(Tree({}).breaches())), 1)

    def test_the_command_ends_with_one_on_a_breach_and_prints_it(self):
        command = [sys.executable, "-B", str(Path(__file__).with_name("walls.py"))]
        with tempfile.TemporaryDirectory() as root:
            file = Path(root, "BLE_kovra/core/X.cpp")
            file.parent.mkdir(parents=True)
            file.write_text("#include <string>\n", encoding="utf-8")
            self.assertEqual(subprocess.run([*command, root], capture_output=True).returncode, 0)
            file.write_text("#include <fcntl.h>\n", encoding="utf-8")
            broken = subprocess.run([*command, root], capture_output=True, text=True)
            self.assertEqual(broken.returncode, 1)
            self.assertIn("BLE_kovra/core/X.cpp:1: ", broken.stdout)


if __name__ == "__main__":
    unittest.main()
