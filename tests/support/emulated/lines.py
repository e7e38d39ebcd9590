#!/usr/bin/env python3
"""Serial lines in software for tests that run under Wine, which has none: each connection to this program's port is the
far end of a new pseudo-terminal, which ends with the connection. Prints the port and runs until its input ends.

A connection starts with the near end's path on a line of its own. Then each request has an answer:
  R <capacity> <wait in ms>   count or -1, and so many bytes
  W <count>, and the bytes    how many the line took, or -1
  B                           speed in bit/s
Numbers have 32 bits, the lowest byte first.
"""

import errno
import fcntl
import os
import select
import socket
import struct
import sys
import termios
import threading
import tty

TIOCNXCL = 0x540D
TCGETS2 = 0x802C542A


def speed(near):
    settings = fcntl.ioctl(near, TCGETS2, bytes(44))
    return struct.unpack("<I", settings[40:44])[0]


def read(far, near, capacity, wait):
    if not select.select([far], [], [], wait / 1000)[0]:
        fcntl.ioctl(near, TIOCNXCL)  # a program that was killed leaves the near end claimed
        return 0, b""
    try:
        data = os.read(far, capacity)
    except OSError as error:
        return (0 if error.errno in (errno.EAGAIN, errno.EINTR) else -1), b""
    return len(data), data


def write(far, data):
    try:
        return os.write(far, data)
    except OSError as error:
        return 0 if error.errno == errno.EAGAIN else -1


def serve(connection):
    far, near = os.openpty()
    requests = connection.makefile("rb")
    try:
        tty.setraw(near)
        attributes = termios.tcgetattr(near)
        attributes[2] |= termios.CLOCAL
        termios.tcsetattr(near, termios.TCSANOW, attributes)
        os.set_blocking(far, False)
        connection.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        connection.sendall(os.ttyname(near).encode() + b"\n")
        while request := requests.read(1):
            if request == b"R":
                count, data = read(far, near, *struct.unpack("<II", requests.read(8)))
                connection.sendall(struct.pack("<i", count) + data)
            elif request == b"W":
                data = requests.read(struct.unpack("<I", requests.read(4))[0])
                connection.sendall(struct.pack("<i", write(far, data)))
            elif request == b"B":
                connection.sendall(struct.pack("<I", speed(near)))
    except OSError:
        pass  # the test has ended
    finally:
        os.close(near)
        os.close(far)
        requests.close()
        connection.close()


listener = socket.create_server(("127.0.0.1", 0))
print(listener.getsockname()[1], flush=True)


def accept():
    while True:
        threading.Thread(target=serve, args=(listener.accept()[0],), daemon=True).start()


threading.Thread(target=accept, daemon=True).start()
sys.stdin.read()
