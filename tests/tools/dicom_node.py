"""A DICOM node in a thread of the test, which answers as it is told: what peers that are whole programs cannot be made to say."""

import struct
import threading

import tool
from pdu_link import Listening, receive, receive_pdu, send_pdu

VERIFICATION = "1.2.840.10008.1.1"


def item(kind, content):
    return struct.pack(">BxH", kind, len(content)) + content


def items_of(content):
    """(type, content) of each item of a PDU or of a presentation context."""
    at = 0
    while at + 4 <= len(content):
        kind, length = struct.unpack_from(">BxH", content, at)
        yield kind, content[at + 4 : at + 4 + length]
        at += 4 + length


def command(elements):
    """An implicit little endian command set of {element: bytes}."""
    rest = b"".join(struct.pack("<HHI", 0, number, len(value)) + value for number, value in sorted(elements.items()))
    return struct.pack("<HHII", 0, 0, 4, len(rest)) + rest


def elements_of(bare):
    found, at = {}, 0
    while at + 8 <= len(bare):
        _, number, length = struct.unpack_from("<HHI", bare, at)
        found[number] = bare[at + 8 : at + 8 + length]
        at += 8 + length
    return found


class Node(Listening):
    """With `reject`, a triple of result, source and reason, it takes no association. `syntax` is the one that it takes, `refused` the
    classes that it does not. A request for storage is answered with `status`, and `comment`; request `ends_at`, counted from 0, is
    not answered: then the link is closed. With `hangs` nothing at all is answered."""

    def __init__(self, reject=None, syntax=tool.IMPLICIT, refused=(), status=0, comment="", ends_at=None, hangs=False, answers_echo=True):
        self.reject, self.syntax, self.refused, self.status, self.comment = reject, syntax, refused, status, comment
        self.ends_at, self.hangs, self.answers_echo = ends_at, hangs, answers_echo
        self.stores = []  # (SOP class, instance, data set)
        self.titles = []  # (calling, called) of each association
        self.proposals = []  # (abstract syntax, transfer syntaxes) of the last one
        self.releases = self.echoes = 0
        self.reached = threading.Event()  # a request that hangs
        super().__init__()

    def serve(self):
        while True:
            try:
                link, _ = self.listener.accept()
            except OSError:
                return
            with link:
                link.settimeout(60)
                try:
                    self.talk(link)
                except (ConnectionError, EOFError):
                    pass

    def talk(self, link):
        kind, request = receive_pdu(link)
        assert kind == 1, kind
        if self.hangs:
            self.reached.set()
            receive(link, 1)
            return
        self.titles.append((request[20:36].decode("latin-1"), request[4:20].decode("latin-1")))
        if self.reject:
            send_pdu(link, 3, bytes((0, *self.reject)))
            return
        self.accept(link, request)
        while True:
            kind, content = receive_pdu(link)
            if kind == 5:
                self.releases += 1
                send_pdu(link, 6, bytes(4))
                return
            if kind != 4 or not self.answer(link, content):
                return

    def accept(self, link, request):
        self.proposals = []
        answers = b""
        for kind, content in items_of(request[68:]):
            if kind != 0x20:
                continue
            parts = list(items_of(content[4:]))
            abstract = next(text for kind, text in parts if kind == 0x30).rstrip(b"\0").decode()
            syntaxes = [text.rstrip(b"\0").decode() for kind, text in parts if kind == 0x40]
            self.proposals.append((abstract, syntaxes))
            result = 3 if abstract in self.refused else 0 if self.syntax in syntaxes else 4
            answers += item(0x21, bytes((content[0], 0, result, 0)) + item(0x40, self.syntax.encode()))
        user = item(0x50, item(0x51, struct.pack(">I", 16384)) + item(0x52, b"1.2.3"))
        send_pdu(link, 2, request[:68] + item(0x10, b"1.2.840.10008.3.1.1.1") + answers + user)

    def message(self, link, content=None):
        """(context, bytes) of one command or data set, whose first PDU may have been read."""
        whole = b""
        while True:
            if content is None:
                kind, content = receive_pdu(link)
                if kind != 4:
                    raise EOFError
            while content:
                length, context, header = struct.unpack_from(">IBB", content)
                whole += content[6 : 4 + length]
                content = content[4 + length :]
                if header & 2:
                    assert not content
                    return context, whole
            content = None

    def answer(self, link, content):
        context, bare = self.message(link, content)
        request = elements_of(bare)
        field = struct.unpack("<H", request[0x0100])[0]
        response = {0x0002: request[0x0002], 0x0100: struct.pack("<H", field | 0x8000), 0x0120: request[0x0110],
                    0x0800: b"\1\1", 0x0900: bytes(2)}
        if field == 0x0030:
            self.echoes += 1
            if not self.answers_echo:
                return False
        else:
            text = lambda number: request[number].rstrip(b"\0 ").decode()
            self.stores.append((text(0x0002), text(0x1000), self.message(link)[1]))
            if self.ends_at == len(self.stores) - 1:
                return False
            response[0x1000] = request[0x1000]
            response[0x0900] = struct.pack("<H", self.status)
            if self.comment:
                response[0x0902] = (self.comment + " " * (len(self.comment) % 2)).encode()
        bare = command(response)
        send_pdu(link, 4, struct.pack(">IBB", len(bare) + 2, context, 3) + bare)
        return True
