"""A line that makes one PDU of several, as real peers may, and those of the distribution do not."""

import pathlib
import socket
import struct
import sys
import threading

sys.path.insert(0, str(pathlib.Path(__file__).parent.parent / "tools"))

from pdu_link import Listening, receive_pdu, send_pdu

DATA, LAST_OF_DATA = 4, 2


class JoiningRelay(Listening):
    """Passes one association on to a port of this machine. Of the requester's PDUs a whole store, command and data set, becomes one PDU,
    or as few as there can be of `longest` bytes. `joined` has the number of PDVs of each."""

    def __init__(self, port, longest):
        self.longest = longest
        self.joined = []
        self.target = int(port)
        super().__init__()

    def serve(self):
        try:
            requester, _ = self.listener.accept()
        except OSError:  # nobody came
            return
        with requester, socket.create_connection(("127.0.0.1", self.target)) as provider:
            for link in (requester, provider):
                link.settimeout(60)
                link.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            back = threading.Thread(target=self.pass_back, args=(provider, requester))
            back.start()
            try:
                self.pass_on(requester, provider)
            except EOFError:
                provider.shutdown(socket.SHUT_WR)
            back.join()

    @staticmethod
    def pass_back(provider, requester):
        while portion := provider.recv(65536):
            requester.sendall(portion)
        requester.shutdown(socket.SHUT_WR)

    def pass_on(self, requester, provider):
        held = []
        while True:
            kind, content = receive_pdu(requester)
            if kind != DATA:
                send_pdu(provider, kind, content)
                continue
            for pdv, control in self.pdvs(content):
                if sum(map(len, held)) + len(pdv) > self.longest:
                    self.flush(provider, held)
                held.append(pdv)
                if control & 3 == LAST_OF_DATA:
                    self.flush(provider, held)

    def flush(self, provider, held):
        send_pdu(provider, DATA, b"".join(held))
        self.joined.append(len(held))
        held.clear()

    @staticmethod
    def pdvs(content):
        at = 0
        while at < len(content):
            end = at + 4 + struct.unpack_from(">I", content, at)[0]
            yield content[at:end], content[at + 5]
            at = end
