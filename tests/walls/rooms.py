"""The rooms of the project, and what each may include. docs/architecture.md describes them."""

import re
from dataclasses import dataclass

STANDARD = frozenset(
    """
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono cinttypes climits
    clocale cmath codecvt compare complex concepts condition_variable coroutine csetjmp csignal cstdarg cstddef cstdint
    cstdio cstdlib cstring ctime cuchar cwchar cwctype deque exception execution filesystem format forward_list fstream
    functional future initializer_list iomanip ios iosfwd iostream istream iterator latch limits list locale map memory
    memory_resource mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
    semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf string string_view
    strstream syncstream system_error thread tuple type_traits typeindex typeinfo unordered_map unordered_set utility
    valarray variant vector version
    """.split()
)

POSIX = frozenset(
    """
    dirent.h dlfcn.h fcntl.h fnmatch.h glob.h grp.h iconv.h langinfo.h libgen.h limits.h locale.h poll.h pthread.h pwd.h
    sched.h semaphore.h signal.h spawn.h stdlib.h string.h strings.h sys/mman.h sys/resource.h sys/select.h sys/socket.h
    sys/stat.h sys/statvfs.h sys/time.h sys/types.h sys/uio.h sys/un.h sys/utsname.h sys/wait.h syslog.h termios.h
    time.h unistd.h utime.h wchar.h wctype.h
    """.split()
)

# The headers of the system calls that wait for the end of a process: kqueue on macOS, pidfd_open on Linux.
PROCESS_END = frozenset({"sys/event.h", "sys/syscall.h"})

QT = re.compile(r"(Qt\w*/.*|Q[A-Z]\w*|q[a-z_]+\.h)")
GOOGLE_TEST = re.compile(r"g(test|mock)/.*\.h")


def standard(header):
    return header in STANDARD


def posix(header):
    return header in STANDARD or header in POSIX or header in PROCESS_END


def any_but_qt(header):
    return not QT.fullmatch(header) and not GOOGLE_TEST.fullmatch(header)


# The libraries that only some rooms of Linux may use.
LINUX_LIBRARY = re.compile(r"fontconfig/.*|systemd/.*|libudev\.h|xcb/.*|X11/.*|nlohmann/.*")


def linux(*own):
    """Returns a rule for headers in angle brackets. It forbids those of Qt and GoogleTest, and those of LINUX_LIBRARY
    that match no pattern of `own`."""
    own = re.compile("|".join(own)) if own else None

    def may_include(header):
        is_own = own is not None and own.fullmatch(header)
        return any_but_qt(header) and (is_own or not LINUX_LIBRARY.fullmatch(header))

    return may_include


def anything(header):
    return not GOOGLE_TEST.fullmatch(header)


def with_google_test(allowed):
    return lambda header: GOOGLE_TEST.fullmatch(header) is not None or allowed(header)


@dataclass(frozen=True)
class Room:
    folder: str
    project: tuple  # patterns of the project's headers that may be included, besides the room's own
    library: object  # returns whether a header in angle brackets may be included
    own_system: bool = False  # whether #if may test for the operating system
    with_folders: bool = False  # whether subfolders belong to the room
    files: tuple = ()  # restricts the room to these files of the folder; empty for all

    def holds(self, path):
        folder, _, name = path.rpartition("/")
        if self.files and name not in self.files:
            return False
        return folder == self.folder or (self.with_folders and folder.startswith(self.folder + "/"))

    def may_include(self, header):
        return self.holds(header) or any(re.fullmatch(pattern, header) for pattern in self.project)


def everything_in(*folders):
    return tuple(re.escape(folder) + r"/.*\.h" for folder in folders)


VALUES = (r"BLE_kovra/platform/[^/]+\.h",)  # the interfaces, without the adapters in the folders below
POSIX_ROOM = everything_in("BLE_kovra/platform/posix")
L10N = everything_in("BLE_kovra/l10n")
DEVICES = everything_in("BLE_kovra/devices")
DEVICE_RECORD = (r"BLE_kovra/devices/HIDDeviceInfo\.h",)
CORE = everything_in("BLE_kovra/core")
SYSTEM = everything_in("BLE_kovra/system")
CONTROL = everything_in("BLE_kovra/control")
APP = everything_in("BLE_kovra/app")
LOGIC = VALUES + L10N + DEVICES + CORE + SYSTEM + APP

LINUX = "BLE_kovra/platform/linux/"
# The rooms of the resident program on Linux: for each, the other rooms and the libraries that it may use.
LINUX_ROOMS = {
    "loop": ((), ("systemd/sd-event.h",)),
    "bus": (("loop",), ("systemd/sd-bus.h",)),
    "x11": (("loop",), ("xcb/.*",)),
    "desktop": (("loop",), ("nlohmann/.*", "xcb/.*")),
    "session": (("loop", "bus", "desktop"), ("systemd/sd-bus.h", "systemd/sd-login.h")),
    "hid": (("loop", "bus"), ("systemd/sd-bus.h", "libudev.h")),
    "hotkeys": (("loop", "bus", "x11", "session", "desktop"), ("systemd/sd-bus.h", "xcb/.*")),
    "theme": (("loop", "bus", "x11", "desktop"), ("systemd/sd-bus.h", "xcb/.*")),
    "windows": (("loop", "session", "desktop", "wire"), ()),
    "tray": (("loop", "bus", "x11", "session", "desktop", "theme", "windows", "wire"), ("systemd/sd-bus.h", "xcb/.*")),
    "start": (("loop", "bus", "x11", "session", "desktop", "windows", "wire", "tray"), ("systemd/sd-bus.h", "xcb/.*")),
}
# The rooms of the window process: for each, the other rooms that it may use.
UI_ROOMS = {
    "ui/style": (),
    "ui/elements": ("ui/style",),
    "ui/windows": ("ui/style", "ui/elements", "wire"),
    "ui/tray": ("ui/style", "wire"),
    "ui": ("wire",),
}

# The rooms of macOS: for each, the other rooms that it may use.
MACOS = "BLE_kovra/platform/macos/"
MACOS_ROOMS = {
    "foundation": (),
    "loop": ("foundation",),
    "hid": ("foundation",),
    "hotkeys": (),
    "views": ("foundation", "loop"),
    "application": ("foundation", "loop", "views"),
}


def macos_rooms(names):
    return everything_in(*(MACOS + name for name in names))


def linux_rooms(names):
    return everything_in(*(LINUX + name for name in names))


UI = linux_rooms(("wire", *UI_ROOMS))

# The main files create and connect everything. So they may include more than the other sources of their programs.
ROOTS = (
    Room(
        "BLE_kovra/platform/linux", VALUES + POSIX_ROOM + APP + CONTROL + linux_rooms(LINUX_ROOMS) + linux_rooms(["wire"]),
        any_but_qt,
        own_system=True, files=("main.cpp",),
    ),
    Room("BLE_kovra/platform/linux/ui", VALUES + UI, anything, own_system=True, files=("main.cpp",)),
    Room(
        "BLE_kovra/platform/macos", VALUES + POSIX_ROOM + APP + macos_rooms(MACOS_ROOMS), any_but_qt,
        own_system=True, files=("main.mm",),
    ),
)  # fmt: skip

LINUX_PROGRAM = (
    *(
        Room(LINUX + name, VALUES + POSIX_ROOM + linux_rooms(neighbours), linux(*libraries), own_system=True)
        for name, (neighbours, libraries) in LINUX_ROOMS.items()
    ),
    Room(LINUX + "wire", VALUES, linux("nlohmann/.*"), own_system=True),
)
# ble-kovractl judges touchpads by the helper's own rules.
CONTROL_PROGRAM = Room(
    LINUX + "control",
    VALUES + POSIX_ROOM + CONTROL + linux_rooms(["loop", "bus", "desktop", "session"])
    + (r"helper/pads/(InputDevices|PadRules)\.h",),
    linux("systemd/sd-bus.h", "systemd/sd-login.h", "libudev.h"), own_system=True,
)  # fmt: skip
UI_PROGRAM = tuple(
    Room(LINUX + name, VALUES + linux_rooms(neighbours), anything, own_system=True)
    for name, neighbours in UI_ROOMS.items()
)
MACOS_PROGRAM = tuple(
    Room(MACOS + name, VALUES + POSIX_ROOM + macos_rooms(neighbours), any_but_qt, own_system=True)
    for name, neighbours in MACOS_ROOMS.items()
)
POSIX_PROGRAM = Room("BLE_kovra/platform/posix", VALUES, posix, own_system=True)
PROGRAM = (
    Room("BLE_kovra/platform", (), standard),
    Room("BLE_kovra/l10n", VALUES, standard),
    Room("BLE_kovra/devices", VALUES + L10N, standard),
    Room("BLE_kovra/core", VALUES + DEVICE_RECORD, standard),
    Room("BLE_kovra/system", VALUES + L10N, standard),
    Room("BLE_kovra/app", VALUES + L10N + DEVICES + CORE + SYSTEM, standard, with_folders=True),
    Room("BLE_kovra/control", (), standard),
)
ICONS = Room(
    "packaging/icons", VALUES + APP + (re.escape(LINUX) + r"theme/IconLook\.h",), standard
)  # fmt: skip
BUNDLE = Room("packaging/macos", VALUES, standard)
HELPER = Room("helper", (), any_but_qt, with_folders=True)

TEST_TOOLS = everything_in("tests/fakes", "tests/support")
CONTRACTS = everything_in("tests/contracts")
MACOS_TOOLS = everything_in("tests/platform/macos/fakes", "tests/platform/macos/gnustep") + (r"tests/platform/macos/[^/]+\.h",)


def tests_of(room, others=(), library=None):
    """Returns the room of the tests of `room`. Its sources may include `room`, what `room` may include, fakes and
    support.

    Tests of adapters may also include contracts.
    """
    project = everything_in(room.folder) if room.with_folders else (re.escape(room.folder) + r"/[^/]+\.h",)
    folder = "tests/" + room.folder.removeprefix("BLE_kovra/")
    contracts = CONTRACTS if room.folder.startswith("BLE_kovra/platform") else ()
    return Room(
        folder, project + room.project + TEST_TOOLS + contracts + tuple(others),
        with_google_test(library or room.library), room.own_system, room.with_folders,
    )  # fmt: skip


def tests_of_linux(room):
    """Returns the room of the tests of a room of Linux. Its sources may also include the rigs of the rooms that `room`
    uses.

    They may include any library but Qt, since a test can act as the client or the service on the other side.
    """
    neighbours = LINUX_ROOMS.get(room.folder.removeprefix(LINUX), ((), ()))[0]
    rigs = everything_in(*(f"tests/platform/linux/{name}" for name in neighbours))
    return tests_of(room, rigs, any_but_qt)


def whole_application(folder):
    return Room(folder, LOGIC + TEST_TOOLS, with_google_test(standard), with_folders=True)


TESTS = (
    *(tests_of(room) for room in (*PROGRAM, HELPER)),
    *(tests_of_linux(room) for room in LINUX_PROGRAM),
    tests_of(CONTROL_PROGRAM, everything_in("tests/platform/linux/bus", "tests/platform/linux/session", "tests/helper/pads",
                                            "helper"), any_but_qt),
    # These run on the loop of each system.
    tests_of(POSIX_PROGRAM, everything_in("tests/platform/linux/loop", "tests/platform/macos/loop"), any_but_qt),
    # These tests start the resident program as a process.
    Room("tests/platform/linux", linux_rooms(["bus", "loop"]) + TEST_TOOLS, with_google_test(any_but_qt)),
    Room("tests/platform/linux/ui", VALUES + UI + TEST_TOOLS + CONTRACTS, with_google_test(anything), True,
         with_folders=True),
    Room("tests/packaging/icons", VALUES + everything_in("packaging/icons"), with_google_test(standard)),
    *(tests_of(room, MACOS_TOOLS) for room in MACOS_PROGRAM),
    Room("tests/platform/macos", everything_in("tests/platform/macos/fakes"), with_google_test(any_but_qt)),
    Room("tests/platform/macos/declarations", (), any_but_qt, with_folders=True),
    Room("tests/platform/macos/fakes", (), any_but_qt),
    Room("tests/platform/macos/gnustep", macos_rooms(["foundation"]), with_google_test(any_but_qt), own_system=True),
    Room("tests/platform/macos/gnustep/standins", (), any_but_qt, own_system=True),
    Room("tests/fakes", VALUES, standard),
    whole_application("tests/support"),
    Room("tests/support/posix", VALUES, posix),
    Room("tests/support/linux", VALUES + linux_rooms(["loop"]), with_google_test(any_but_qt), own_system=True),
    Room("tests/contracts", VALUES + TEST_TOOLS, with_google_test(standard)),
    Room("tests/programs", VALUES + L10N + SYSTEM + POSIX_ROOM + linux_rooms(["loop"]) + TEST_TOOLS,
         with_google_test(any_but_qt)),
    whole_application("tests/journeys"),
    whole_application("tests/model"),
    # These lives run in the rig of the helper's tests.
    Room("tests/systemcalls", everything_in("tests/helper", "helper") + TEST_TOOLS, with_google_test(any_but_qt)),
    # The fuzzers reach whatever reads the bytes of others, in any room of Linux, and may act as the other side.
    Room("tests/fuzz", VALUES + L10N + DEVICES + SYSTEM + CONTROL + POSIX_ROOM + linux_rooms((*LINUX_ROOMS, "wire", "control"))
         + everything_in("helper") + TEST_TOOLS, any_but_qt),
    # These tests show the whole application with the real widgets.
    Room("tests/screen", LOGIC + UI + TEST_TOOLS + everything_in("tests/platform/linux/ui", "tests/l10n"),
         with_google_test(anything)),
)  # fmt: skip

# The benchmarks may use the whole application and the fakes. bench/floors and bench/instruments may use neither.
BENCHMARKS = (
    Room("bench", everything_in("BLE_kovra", "tests/fakes", "bench"), anything),
    Room("bench/floors", (r"bench/DeviceNames\.h",), anything),
    Room("bench/instruments", (), any_but_qt),
)

# ROOTS is first, since room_of() takes the first of several rooms with the same folder.
ROOMS = (
    *ROOTS, *PROGRAM, POSIX_PROGRAM, *LINUX_PROGRAM, CONTROL_PROGRAM, *UI_PROGRAM, *MACOS_PROGRAM, ICONS, BUNDLE, HELPER, *TESTS, *BENCHMARKS
)  # fmt: skip

# A file that includes one of these headers counts as including the project headers that they include.
TRANSPARENT = re.compile(r"tests/(support|contracts)/.*|BLE_kovra/devices/HIDDeviceInfo\.h")


def room_of(path):
    """Returns the room of a file, or None. Of several rooms it takes the innermost, and of these the first in ROOMS."""
    return max((room for room in ROOMS if room.holds(path)), key=lambda room: len(room.folder), default=None)
