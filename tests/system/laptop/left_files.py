"""A scenario in which Anna fills the disk through a descriptor of her flag while Boris's session is active."""

import os

from laptop import FLAG, HELPER, may_write_flag, run
from people import ANNA, BORIS
from running import scenario
from waiting import check, wait_for

TAKEN = 150 << 20
# The limit in seconds for the disk to be free again. The helper truncates a left file after at most 0.5 s; the rest is
# for the emulated machine.
LATE = 1.0
# A program that allocates TAKEN bytes through a descriptor, or writes a quarter of them with asynchronous I/O, which the
# kernel reports to nobody. It prints the seconds until the file is truncated, at most ten.
FILL = f"""import ctypes, os, struct, sys, time
file = int(sys.argv[1])

def write_asynchronously():
    io_setup, io_submit, pwrite = 206, 209, 1
    syscall, context = ctypes.CDLL(None).syscall, ctypes.c_ulong()
    assert syscall(io_setup, 1, ctypes.byref(context)) == 0
    content = ctypes.create_string_buffer({TAKEN // 4})
    block = ctypes.create_string_buffer(struct.pack("<QIIHhIQQqQII", 0, 0, 0, pwrite, 0, file,
                                                    ctypes.addressof(content), {TAKEN // 4}, 0, 0, 0, 0))
    assert syscall(io_submit, context, 1, (ctypes.c_void_p * 1)(ctypes.addressof(block))) == 1

if sys.argv[2] == "asynchronously":
    write_asynchronously()
else:
    os.posix_fallocate(file, 0, {TAKEN})
begin = time.monotonic()
while os.fstat(file).st_blocks * 512 > 65536 and time.monotonic() < begin + 10:
    time.sleep(0.01)
print(time.monotonic() - begin)
"""


def hand_over_to(session):
    session.activate()
    wait_for(lambda: may_write_flag(session), f"the flag to be {session.person.name}'s")


def free():
    disk = os.statvfs(os.path.dirname(FLAG))
    return disk.f_bfree * disk.f_frsize


@scenario("A descriptor of her flag that Anna keeps takes no room on the disk while she is away: 150 MiB are free again "
          "within 1 s, also after she has returned and left again, and after a restart of the helper.")
def kept_descriptor(laptop):
    laptop.install()
    boris, anna = laptop.log_in(BORIS), laptop.log_in(ANNA)
    script = ANNA.home / "fill.py"
    script.write_text(FILL, encoding="utf-8")
    hand_over_to(anna)
    check(anna.succeeds(f"exec 9<>'{FLAG}'"), "Anna cannot open her own flag")
    before = free()
    took = []

    def fill(how="at once"):
        took.append(float(anna.run(f"/usr/bin/python3 -B {script} 9 '{how}'")))
        check(took[-1] <= LATE, f"round {len(took)}: the room was free only after {took[-1]:.2f} s")
        check(free() > before - TAKEN / 2, f"{before - free()} bytes are still taken")

    hand_over_to(boris)
    fill()
    hand_over_to(anna)
    hand_over_to(boris)
    fill()
    fill("asynchronously")
    run("systemctl", "restart", HELPER)
    fill()
    anna.run("exec 9>&-; echo closed")
    return f"free after {max(took):.2f} s"
