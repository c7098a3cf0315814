"""Connects to a socket as a process that the container sees, and hands the connection over.

  connector.py PATH NUMBER      NUMBER: the descriptor of a socket that receives the connection
"""

import socket
import sys

if __name__ == "__main__":
    _, path, number = sys.argv
    connection = socket.socket(socket.AF_UNIX)
    connection.connect(path)
    with socket.socket(fileno=int(number)) as receiver:
        socket.send_fds(receiver, [b"."], [connection.fileno()])
        # The server looks at this process for as long as the connection exists.
        receiver.recv(1)
