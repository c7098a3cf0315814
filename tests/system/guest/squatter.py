"""A client of the session bus that owns a name but exports no objects, so that calls to its objects fail."""

import ctypes
import threading

from waiting import check

TENTH_OF_A_SECOND = ctypes.c_uint64(100_000)


class Squatter:
    def __init__(self, address, name):
        self._library = ctypes.CDLL("libsystemd.so.0")
        self._bus = ctypes.c_void_p()
        self._call("sd_bus_new", ctypes.byref(self._bus))
        self._call("sd_bus_set_address", self._bus, address.encode())
        self._call("sd_bus_set_bus_client", self._bus, 1)
        self._call("sd_bus_start", self._bus)
        self._call("sd_bus_request_name", self._bus, name.encode(), ctypes.c_uint64(0))
        self._ended = False
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._thread.start()

    def close(self):
        self._ended = True
        self._thread.join()
        self._library.sd_bus_flush_close_unref(self._bus)

    def _serve(self):
        while not self._ended:
            if self._library.sd_bus_process(self._bus, None) == 0:
                self._library.sd_bus_wait(self._bus, TENTH_OF_A_SECOND)

    def _call(self, name, *arguments):
        result = getattr(self._library, name)(*arguments)
        check(result >= 0, f"{name} returned {result}")
