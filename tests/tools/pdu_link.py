"""PDUs on a socket, free ports of this machine, and a thread that takes associations on one."""

import contextlib
import itertools
import os
import socket
import struct
import threading

# Below those that the system hands out by itself, to whoever connects or asks for any, and below those that tests in C++ take.
PORTS = range(12000, 20000)
next_port = itertools.count(os.getpid() * 10)


def free_port():
    """One on which nobody listens, for a program that will, or for nobody. It is given once, and as long as this process runs no other
    is given it."""
    for at in itertools.islice(next_port, len(PORTS)):
        port = PORTS[at % len(PORTS)]
        # What listens is asked for on every address, as programs may want it. The other one is held for good: it tells those who ask
        # here before the program listens.
        with contextlib.suppress(OSError), socket.socket() as listens, socket.socket(type=socket.SOCK_DGRAM) as is_given:
            listens.bind(("", port))
            is_given.bind(("127.0.0.1", port))
            is_given.detach()
            return port
    raise AssertionError("no port is free")


class Listening:
    """Within it, `serve` runs in a thread of its own; the end of its listener, which accept tells by OSError, is the end of it."""

    def __init__(self):
        self.listener = socket.create_server(("127.0.0.1", 0))
        self.port = self.listener.getsockname()[1]
        self.thread = threading.Thread(target=self.serve)

    def __enter__(self):
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.listener.shutdown(socket.SHUT_RDWR)
        self.thread.join()
        self.listener.close()


def receive(link, count):
    data = b""
    while len(data) < count:
        part = link.recv(count - len(data))
        if not part:
            raise EOFError
        data += part
    return data


def receive_pdu(link):
    """(type, content)"""
    kind, length = struct.unpack(">BxI", receive(link, 6))
    return kind, receive(link, length)


def send_pdu(link, kind, content):
    link.sendall(struct.pack(">BxI", kind, len(content)) + content)
