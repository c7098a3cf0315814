"""Creates HID devices through /dev/uhid. The kernel treats them like hardware: it binds drivers and sends uevents."""

import os
import select
import struct

BUS_USB, BUS_BLUETOOTH, BUS_I2C = 0x03, 0x05, 0x18

DESTROY, START, OUTPUT, GET_REPORT, GET_REPORT_REPLY, CREATE2, INPUT2, SET_REPORT, SET_REPORT_REPLY = (
    1, 2, 6, 9, 10, 11, 12, 13, 14)
EVENT_SIZE = 4 + 128 + 64 + 64 + 2 + 2 + 4 * 4 + 4096

# The report descriptor of a mouse with three buttons and two axes.
MOUSE = bytes.fromhex("05010902a1010901a10005091901290315002501950375018102950175058103"
                      "0501093009311581257f750895028106c0c0")
# A report of one byte on a vendor-defined page. The kernel creates no input device for it, so udevd has little work.
VENDOR_PAGE = bytes.fromhex("0600ff0901a1010902150026ff00750895018102c0")


class UHID:
    """A virtual device with one HID interface. It exists until destroy() is called."""

    def __init__(self, name, vendor, product, bus=BUS_USB, descriptor=MOUSE, phys="", uniq=""):
        encoded = name if isinstance(name, bytes) else name.encode()
        self._file = os.open("/dev/uhid", os.O_RDWR | os.O_CLOEXEC)
        self._send(struct.pack("<I128s64s64sHHIIII4096s", CREATE2, encoded, phys.encode(), uniq.encode(),
                               len(descriptor), bus, vendor, product, 0, 0, descriptor))

    def wait_started(self, limit=30.0):
        """Waits until a driver has started the device. Returns False if no event comes for `limit` seconds."""
        while select.select([self._file], [], [], limit)[0]:
            if self.read()[0] == START:
                return True
        return False

    def read(self):
        """Waits for the kernel's next event for this device. Returns its type and its payload."""
        event = os.read(self._file, EVENT_SIZE)
        return struct.unpack_from("<I", event)[0], event[4:]

    def answer_set_report(self, number):
        self._send(struct.pack("<IIH", SET_REPORT_REPLY, number, 0))

    def refuse_get_report(self, number, error=5):
        self._send(struct.pack("<IIHH", GET_REPORT_REPLY, number, error, 0))

    def input(self, report):
        self._send(struct.pack("<IH", INPUT2, len(report)) + report)

    def destroy(self):
        if self._file is not None:
            self._send(struct.pack("<I", DESTROY))
            os.close(self._file)
            self._file = None

    def _send(self, event):
        os.write(self._file, event.ljust(EVENT_SIZE, b"\0"))
