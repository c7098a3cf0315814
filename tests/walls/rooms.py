"""The rooms of the project and what each may include: the table that docs/architecture.md explains."""

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

# Each system's own way to hear of the end of a program.
PROCESS_END = frozenset({"sys/event.h", "sys/syscall.h"})

QT = re.compile(r"(Qt\w*/.*|Q[A-Z]\w*|q[a-z_]+\.h)")
GOOGLE_TEST = re.compile(r"g(test|mock)/.*\.h")


def standard(header):
    return header in STANDARD


def posix(header):
    return header in STANDARD or header in POSIX or header in PROCESS_END


def any_but_qt(header):
    return not QT.fullmatch(header) and not GOOGLE_TEST.fullmatch(header)


def anything(header):
    return not GOOGLE_TEST.fullmatch(header)


def with_google_test(allowed):
    return lambda header: GOOGLE_TEST.fullmatch(header) is not None or allowed(header)


@dataclass(frozen=True)
class Room:
    folder: str
    project: tuple  # patterns of the project's headers that may be included, beside the room's own
    library: object  # whether a header in angle brackets may be included
    own_system: bool = False  # whether #if may ask for the operating system
    with_folders: bool = False  # whether folders inside belong to the room

    def holds(self, path):
        folder = path.rpartition("/")[0]
        return folder == self.folder or (self.with_folders and folder.startswith(self.folder + "/"))

    def may_include(self, header):
        return self.holds(header) or any(re.fullmatch(pattern, header) for pattern in self.project)


def everything_in(*folders):
    return tuple(re.escape(folder) + r"/.*\.h" for folder in folders)


VALUES = (r"BLE_kovra/platform/[^/]+\.h",)  # the interfaces, not the realisations in the folders below
POSIX_ROOM = everything_in("BLE_kovra/platform/posix")
LINUX = (r"BLE_kovra/platform/linux/[^/]+\.h",)
WIRE = everything_in("BLE_kovra/platform/linux/wire")
L10N = everything_in("BLE_kovra/l10n")
DEVICES = everything_in("BLE_kovra/devices")
DEVICE_RECORD = (r"BLE_kovra/devices/HIDDeviceInfo\.h",)
CORE = everything_in("BLE_kovra/core")
SYSTEM = everything_in("BLE_kovra/system")
APP = everything_in("BLE_kovra/app")

PROGRAM = (
    Room("BLE_kovra/platform", (), standard),
    Room("BLE_kovra/platform/posix", VALUES, posix, own_system=True),
    Room("BLE_kovra/platform/linux", VALUES + POSIX_ROOM + WIRE, any_but_qt, own_system=True),
    Room("BLE_kovra/platform/linux/wire", VALUES, any_but_qt, own_system=True),
    Room("BLE_kovra/platform/linux/ui", VALUES + WIRE, anything, own_system=True),
    Room("BLE_kovra/platform/macos", VALUES + POSIX_ROOM, any_but_qt, own_system=True),
    Room("BLE_kovra/l10n", VALUES, standard),
    Room("BLE_kovra/devices", VALUES + L10N, standard),
    Room("BLE_kovra/core", VALUES + DEVICE_RECORD, standard),
    Room("BLE_kovra/system", VALUES + L10N, standard),
    Room("BLE_kovra/app", VALUES + L10N + DEVICES + CORE + SYSTEM, standard, with_folders=True),
)
ICONS = Room("packaging/icons", VALUES + everything_in("BLE_kovra/app") + (r"BLE_kovra/platform/linux/IconSvg\.h",), standard)
BUNDLE = Room("packaging/macos", VALUES, standard)
HELPER = Room("helper", (), any_but_qt, with_folders=True)

# The composition root is the one place where the logic and a system meet.
COMPOSITION_ROOT = re.compile(r"BLE_kovra/platform/(linux|macos)/main\.(cpp|mm)")

TEST_TOOLS = everything_in("tests/fakes", "tests/support")
CONTRACTS = everything_in("tests/contracts")
OWN_SERVERS = (r"tests/platform/linux/(PrivateBus|VirtualScreen)\.h",)


def tests_of(room):
    """tests/<room>: the room, what it may include, the fakes and the support."""
    library = with_google_test(room.library)
    project = everything_in(room.folder) if room.with_folders else (re.escape(room.folder) + r"/[^/]+\.h",)
    folder = "tests/" + room.folder.removeprefix("BLE_kovra/")
    contracts = CONTRACTS if room.folder.startswith("BLE_kovra/platform") else ()
    servers = OWN_SERVERS if room.folder == "BLE_kovra/platform/linux/ui" else ()
    fakes = everything_in("tests/platform/macos/fakes") if room.folder == "BLE_kovra/platform/macos" else ()
    return Room(
        folder, project + room.project + TEST_TOOLS + contracts + servers + fakes, library, room.own_system, room.with_folders
    )


def whole_application(folder):
    logic = VALUES + L10N + DEVICES + CORE + SYSTEM + APP
    return Room(folder, logic + TEST_TOOLS, with_google_test(standard), with_folders=True)


# What the application shows, on the real widgets.
SCREEN = Room(
    "tests/screen",
    VALUES + L10N + DEVICES + CORE + SYSTEM + APP + WIRE + TEST_TOOLS
    + everything_in("BLE_kovra/platform/linux/ui", "tests/platform/linux/ui", "tests/l10n"),
    with_google_test(anything),
)

TESTS = (
    *(tests_of(room) for room in PROGRAM),
    tests_of(HELPER),
    Room("tests/platform/macos/declarations", (), any_but_qt, with_folders=True),
    Room("tests/platform/macos/fakes", (), any_but_qt),
    Room("tests/fakes", VALUES, standard),
    whole_application("tests/support"),
    Room("tests/support/posix", VALUES, posix),
    Room("tests/contracts", VALUES + TEST_TOOLS, with_google_test(standard)),
    Room("tests/programs", VALUES + L10N + SYSTEM + POSIX_ROOM + LINUX + TEST_TOOLS, with_google_test(any_but_qt)),
    whole_application("tests/journeys"),
    whole_application("tests/model"),
    SCREEN,
)

ROOMS = (*PROGRAM, ICONS, BUNDLE, HELPER, *TESTS)

# Headers that stand in no room's way: what they include counts as included by whoever includes them.
TRANSPARENT = re.compile(r"tests/(support|contracts)/.*|BLE_kovra/devices/HIDDeviceInfo\.h")


def room_of(path):
    """The room of a file, or None. No two rooms hold the same file, but for folders inside a room with folders."""
    return max((room for room in ROOMS if room.holds(path)), key=lambda room: len(room.folder), default=None)
