"""A client of QEMU's control socket (QMP). Commands and answers are JSON lines."""

import json
import socket
import time


class QMPError(Exception):
    pass


class QMP:
    def __init__(self, path, timeout):
        self._socket = _connect(path, timeout)
        self._lines = self._socket.makefile("r", encoding="utf-8")
        self._read()
        self.execute("qmp_capabilities")

    def execute(self, command, **arguments):
        message = {"execute": command, "arguments": arguments}
        self._socket.sendall(json.dumps(message).encode() + b"\n")
        while True:
            answer = self._read()
            if "error" in answer:
                raise QMPError(f"{command}: {answer['error']['desc']}")
            if "return" in answer:
                return answer["return"]

    def close(self):
        self._lines.close()
        self._socket.close()

    def _read(self):
        line = self._lines.readline()
        if not line:
            raise QMPError("QEMU closed its control socket")
        return json.loads(line)


def _connect(path, timeout):
    deadline = time.monotonic() + timeout
    while True:
        attempt = socket.socket(socket.AF_UNIX)
        try:
            attempt.connect(str(path))
            return attempt
        except OSError as error:
            attempt.close()
            if time.monotonic() > deadline:
                raise QMPError(f"no control socket: {error}") from error
            time.sleep(0.05)
