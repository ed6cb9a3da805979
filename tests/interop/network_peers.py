"""Other nodes from the distribution, each with a folder of its own and a free port, ended by their process."""

import contextlib
import json
import os
import shutil
import socket
import subprocess
import sys
import tempfile
import time
import urllib.request
from pathlib import Path

sys.path.insert(0, str(Path(__file__).parent.parent / "tools"))

from pdu_link import free_port

# Without it their small writes wait for acknowledgements that the kernel delays.
ENVIRONMENT = {**os.environ, "TCP_NODELAY": "1"}
# The folder is not on everybody's path.
ORTHANC = shutil.which("Orthanc") or "/usr/sbin/Orthanc"

MEMORY = Path("/dev/shm")
# For folders of small files, none of which comes to half of it: containers have twice this there.
LITTLE = 32 << 20


@contextlib.contextmanager
def running(command, port, folder):
    """`command` while it listens on `port`. Its words are in a file of the folder."""
    with open(folder / "words", "wb") as words, \
            subprocess.Popen([str(word) for word in command], stdout=words, stderr=words, stdin=subprocess.DEVNULL, env=ENVIRONMENT, cwd=folder) as process:
        try:
            wait_for_port(process, port, folder)
            yield process
        finally:
            process.terminate()
            try:
                process.wait(20)
            except subprocess.TimeoutExpired:
                process.kill()


def wait_for_port(process, port, folder):
    end = time.monotonic() + 60
    while time.monotonic() < end and process.poll() is None:
        with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port), 1):
            return
        time.sleep(0.02)
    raise AssertionError(f"it does not listen: {(folder / 'words').read_text(errors='replace')}")


class Peer:
    """The port, and the folder into which files come."""

    def __init__(self, port, folder, http=None):
        self.port, self.folder, self.http = port, folder, http

    def files(self):
        return sorted(path for path in self.folder.iterdir() if path.name not in ("words", "config", "index.dat"))

    def words(self):
        """What it has said up to now."""
        return (self.folder / "words").read_text(errors="replace")

    def ask(self, path):
        """What Orthanc's own interface says of a resource."""
        with urllib.request.urlopen(f"http://127.0.0.1:{self.http}/{path}", timeout=60) as answer:
            return json.loads(answer.read())

    def tell(self, path, body, method="POST"):
        """What it answers to something that it is to do, where it answers in JSON."""
        content = body if isinstance(body, bytes) else json.dumps(body).encode()
        request = urllib.request.Request(f"http://127.0.0.1:{self.http}/{path}", content, method=method)
        with urllib.request.urlopen(request, timeout=60) as answer:
            said = answer.read()
        return json.loads(said) if said else None

    def introduce(self, title, port):
        """Makes a node of this machine known to it."""
        self.tell(f"modalities/{title}", {"AET": title, "Host": "127.0.0.1", "Port": int(port)}, "PUT")

    def forget_everything(self):
        for identifier in self.ask("patients"):
            self.tell(f"patients/{identifier}", b"", "DELETE")

    def fetch(self, path):
        with urllib.request.urlopen(f"http://127.0.0.1:{self.http}/{path}", timeout=60) as answer:
            return answer.read()


def place_with(size):
    """In memory where so much is free there, so that no disk is waited for: peers and providers wait for each file to be on its disk."""
    return MEMORY if MEMORY.is_dir() and shutil.disk_usage(MEMORY).free > size else Path(tempfile.gettempdir())


@contextlib.contextmanager
def a_folder(within=None):
    with tempfile.TemporaryDirectory(dir=within or place_with(LITTLE)) as name:
        yield Path(name)


@contextlib.contextmanager
def storescp(*options, within=None):
    port = free_port()
    with a_folder(within) as folder, running(["storescp", "-q", *options, "-od", folder, port], port, folder):
        yield Peer(port, folder)


# Takes CT images in a syntax that nobody proposes.
JPEG_ALONE = """[[TransferSyntaxes]]
[Jpeg]
TransferSyntax1 = JPEGBaseline
[[PresentationContexts]]
[Contexts]
PresentationContext1 = CTImageStorage\\Jpeg
[[Profiles]]
[Default]
PresentationContexts = Contexts
"""


@contextlib.contextmanager
def storescp_of_jpeg():
    with a_folder() as folder:
        (folder / "profile").write_text(JPEG_ALONE)
        with storescp("-xf", folder / "profile", "Default") as peer:
            yield peer


@contextlib.contextmanager
def dcmqrscp(*options, associations=16, destinations=None, within=None):
    """Takes no more associations at once. Moves to the `destinations`, ports of this machine by their titles."""
    port = free_port()
    hosts = "".join(f"{title} = ({title}, 127.0.0.1, {number})\n" for title, number in (destinations or {}).items())
    with a_folder(within) as folder:
        (folder / "config").write_text(
            f"NetworkTCPPort = {port}\nMaxPDUSize = 16384\nMaxAssociations = {associations}\n"
            f"HostTable BEGIN\n{hosts}HostTable END\nVendorTable BEGIN\nVendorTable END\n"
            f"AETable BEGIN\nARCHIVE {folder} RW (200, 1024mb) ANY\nAETable END\n")
        with running(["dcmqrscp", "-q", *options, "-c", folder / "config"], port, folder):
            yield Peer(port, folder)


@contextlib.contextmanager
def orthanc(strangers=True, within=None):
    """Without `strangers` it takes nobody whom it does not know, and it knows nobody."""
    port, http = free_port(), free_port()
    with a_folder(within) as folder:
        (folder / "config").write_text(json.dumps({
            "Name": "ARCHIVE", "DicomAet": "ARCHIVE", "DicomCheckCalledAet": True, "DicomPort": port, "HttpPort": http,
            "RemoteAccessAllowed": False, "AuthenticationEnabled": False, "DicomAlwaysAllowEcho": strangers, "DicomAlwaysAllowStore": strangers,
            "UnknownSopClassAccepted": False, "StorageDirectory": str(folder / "storage"), "IndexDirectory": str(folder / "storage"),
            "Plugins": [], "ConcurrentJobs": 1, "DicomScpTimeout": 60}))
        with running([ORTHANC, folder / "config"], port, folder) as process:
            wait_for_port(process, http, folder)
            yield Peer(port, folder, http)
