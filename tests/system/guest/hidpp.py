"""A virtual HID++ mouse. The driver hid-logitech-hidpp replaces its name by the one that the mouse reports.

The mouse answers the driver's requests for the protocol version, for the index of the feature "device name", and for
the length and the text of the name. Every other HID++ request gets error 6, "invalid feature index".
"""

import threading

import uhid

VENDOR, PRODUCT = 0x046D, 0xC086
SHORT, LONG = 0x10, 0x11
NAME_FEATURE = 0x0005
NAME_INDEX = 7


def _reports(number, length):
    """Returns a vendor-defined HID collection: an input and an output report with this ID and this length in bytes."""
    return (bytes([0x06, 0x00, 0xFF, 0x09, number, 0xA1, 0x01, 0x85, number, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,
                   0x95, length, 0x09, number, 0x81, 0x00, 0x09, number, 0x91, 0x00, 0xC0]))


DESCRIPTOR = (bytes.fromhex("05010902a10185020901a1000509190129031500250195037501810295017505810305010930"
                            "09311581257f750895028106c0c0") + _reports(SHORT, 6) + _reports(LONG, 19))


class RenamedMouse(uhid.UHID):
    """A mouse that is created with the name `plain_name`. Its driver renames it to "Logitech " and `real_name`."""

    def __init__(self, plain_name, real_name, uniq):
        self._real_name = real_name.encode()
        super().__init__(plain_name, VENDOR, PRODUCT, descriptor=DESCRIPTOR, uniq=uniq)
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self):
        try:
            while True:
                kind, event = self.read()
                if kind == uhid.OUTPUT:
                    size = int.from_bytes(event[4096:4098], "little")
                    self._answer(event[:size])
                elif kind == uhid.SET_REPORT:
                    number = int.from_bytes(event[0:4], "little")
                    size = int.from_bytes(event[6:8], "little")
                    self.answer_set_report(number)
                    self._answer(event[8:8 + size])
                elif kind == uhid.GET_REPORT:
                    self.refuse_get_report(int.from_bytes(event[0:4], "little"))
        except (OSError, TypeError):
            pass  # destroy() has closed the device's file

    def _answer(self, question):
        if len(question) < 4 or question[0] not in (SHORT, LONG):
            return
        device, feature, function = question[1:4]
        parameters = question[4:]
        if feature == 0x00 and function >> 4 == 1:
            result = bytes([4, 2, parameters[2]])  # protocol version 4.2, and a byte of the request
        elif feature == 0x00 and function >> 4 == 0 and int.from_bytes(parameters[:2], "big") == NAME_FEATURE:
            result = bytes([NAME_INDEX, 0, 0])
        elif feature == NAME_INDEX and function >> 4 == 0:
            result = bytes([len(self._real_name)])
        elif feature == NAME_INDEX and function >> 4 == 1:
            result = self._real_name[parameters[0]:parameters[0] + 16]
        else:
            self._reply(bytes([LONG, device, 0xFF, feature, function, 6]))
            return
        self._reply(bytes([LONG, device, feature, function]) + result)

    def _reply(self, report):
        self.input(report.ljust(20, b"\0"))
