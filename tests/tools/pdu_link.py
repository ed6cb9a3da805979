"""PDUs on a socket, and a thread that takes associations on a free port of this machine."""

import socket
import struct
import threading


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
