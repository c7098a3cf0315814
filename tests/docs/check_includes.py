#!/usr/bin/env python3
"""Checks that each name of the standard library that a source uses comes from a header that is included for it.

  check_includes.py [ROOT]      ROOT: the project's folder; by default the one that contains this file

The standard headers include each other differently in each version of a library. So a source must name the header of
what it uses, or include one of the project's own headers that names it, directly or indirectly. The check prints one
line for each name whose header is missing, and for each name that is not in its table. Its exit status is 1 if there is
any, or if there is no source.
"""
import functools
import pathlib
import re
import sys

FOLDERS = ("BLE_kovra", "helper", "packaging", "bench", "tests")
SUFFIXES = {".cpp", ".h", ".mm"}
INCLUDED = re.compile(r'^#\s*(?:include|import) [<"]([^">]+)[">]', re.M)
# Texts, characters and comments, in which a name does not count.
NO_CODE = re.compile(r'R"(\w*)\(.*?\)\1"|"(?:\\.|[^"\\\n])*"|//[^\n]*|/\*.*?\*/', re.S)

# The headers, and the names that each of them gives.
TABLE = """
algorithm: all_of any_of clamp copy count count_if equal find find_first_of find_if max min ranges remove remove_if
algorithm: replace replace_if reverse rotate shuffle sort stable_partition upper_bound
array: array to_array
atomic: atomic
cctype: toupper
charconv: from_chars
chrono: chrono chrono_literals micro
clocale: setlocale
cmath: abs ceil cos hypot isinf ldexp lround pow round sin sqrt trunc
concepts: integral
condition_variable: condition_variable
csignal: signal
cstddef: nullptr_t
cstdint: int16_t int32_t int64_t int8_t uint16_t uint32_t uint64_t uint8_t uintptr_t
cstdio: ferror fflush fprintf fputs perror printf putchar puts remove rename snprintf sscanf
cstdlib: _Exit abort abs atexit exit free getenv mbstowcs strtol strtoull system wcstombs
cstring: memcpy strcmp strerror strlen strstr strxfrm
ctime: clock clock_t strftime time time_t tm
cwctype: towlower wint_t
deque: deque
exception: exception set_terminate terminate_handler
filesystem: filesystem
fstream: ifstream ios ofstream ostream
functional: function less
initializer_list: initializer_list
iomanip: setfill setprecision setw
ios: hex ios oct
iostream: cerr cin cout flush hex ios oct ostream
iterator: distance istreambuf_iterator make_reverse_iterator prev
limits: numeric_limits
list: list
locale: locale numpunct
map: map multimap
memory: enable_shared_from_this make_shared make_unique shared_ptr unique_ptr weak_ptr
mutex: lock_guard mutex unique_lock
new: bad_alloc
numbers: numbers
numeric: accumulate iota
optional: make_optional nullopt optional
ostream: flush hex ios oct ostream
random: mt19937 mt19937_64 random_device uniform_int_distribution uniform_real_distribution
ranges: ranges
ratio: micro
regex: regex regex_match
set: multiset set
span: span
sstream: ios istringstream ostream ostringstream
stdexcept: exception out_of_range runtime_error
string: getline initializer_list stoi stoul stoull string to_string u16string u32string wstring
string_view: string_view string_view_literals
system_error: errc error_code generic_category system_error
thread: jthread this_thread thread
tuple: apply tuple
type_traits: decay_t is_default_constructible_v is_enum_v is_same_v is_trivially_copyable_v remove_pointer_t remove_reference_t
unordered_map: unordered_map
unordered_set: unordered_set
utility: exchange in_place in_range move pair
variant: get_if holds_alternative variant variant_npos visit
vector: initializer_list vector
"""
# These names come with the containers and values that they are used with.
ANYWHERE = {"erase", "erase_if", "get", "hash", "ptrdiff_t", "size", "size_t", "ssize", "swap"}


def headers_of_names():
    """Returns for each name the headers of which one suffices."""
    result = {}
    for line in TABLE.strip().splitlines():
        header, _, names = line.partition(":")
        for name in names.split():
            result.setdefault(name, set()).add(header)
    return result


class Sources:
    def __init__(self, root):
        self.root = root
        self.files = sorted(path for folder in FOLDERS for path in (root / folder).rglob("*")
                            if path.suffix in SUFFIXES)

    @functools.cache
    def included(self, path):
        """Returns the foreign headers that this file includes, directly or by the project's own headers."""
        own, foreign, waiting = set(), set(), [path]
        while waiting:
            for name in INCLUDED.findall(waiting.pop().read_text(encoding="utf-8")):
                header = self.root / name
                if not header.is_file():
                    foreign.add(name)
                elif header not in own:
                    own.add(header)
                    waiting.append(header)
        return foreign

    def missing(self):
        known = headers_of_names()
        for path in self.files:
            code = NO_CODE.sub('""', path.read_text(encoding="utf-8"))
            for name in sorted(set(re.findall(r"\bstd::(\w+)", code)) - ANYWHERE):
                if name not in known:
                    yield f"{path.relative_to(self.root)}: std::{name} is not in the table of this check"
                elif not known[name] & self.included(path):
                    headers = " or ".join(f"<{header}>" for header in sorted(known[name]))
                    yield f"{path.relative_to(self.root)}: std::{name} needs {headers}"


def main():
    sources = Sources(pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parents[2])
    found = list(sources.missing())
    print("\n".join(found) or f"{len(sources.files)} sources include what they use of the standard library")
    return 1 if found or not sources.files else 0


if __name__ == "__main__":
    sys.exit(main())
