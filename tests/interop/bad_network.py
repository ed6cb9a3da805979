"""Two network namespaces and the link between them, which is slow, loses packets, and can be cut.

Whatever a program sends into its end of the link comes out of a tunnel device here, packet by packet; a thread carries it to the other end
or loses it. The system's TCP does the rest, as it would over a bad line. Not every kernel can make a line bad by itself.
"""

import ctypes
import fcntl
import heapq
import os
import random
import select
import struct
import subprocess
import sys
import threading
import time

CLONE_NEWNET = 0x40000000
TUNSETIFF = 0x400454CA
IFF_TUN, IFF_NO_PI = 0x0001, 0x1000
MOST_QUEUED = 256 << 10  # bytes in one direction; what comes on top is lost, as it is by a router


class NotAllowed(Exception):
    """Says why there can be no such network here."""


def gain_rights():
    """Starts this program anew where it has the rights of the superuser over networks of its own, if it has not and the system lets it."""
    if os.geteuid() == 0:
        return
    within = ["unshare", "--user", "--map-root-user"]
    if subprocess.run([*within, "true"], check=False, stderr=subprocess.DEVNULL).returncode == 0:
        os.execvp(within[0], [*within, *sys.orig_argv])


def need(answer, what):
    if answer != 0:
        raise NotAllowed(f"{what}: {os.strerror(ctypes.get_errno())}")


class Node:
    """A namespace with one end of a link. It goes with the last program in it and with what this holds open."""

    def __init__(self, address):
        self.address = address
        self.failure = None
        # A thread may leave the network of its process; programs that it starts are where it is.
        thread = threading.Thread(target=self.make)
        thread.start()
        thread.join()
        if self.failure is not None:
            raise self.failure

    def make(self):
        try:
            need(ctypes.CDLL(None, use_errno=True).unshare(CLONE_NEWNET), "a network namespace cannot be made")
            self.namespace = os.open("/proc/thread-self/ns/net", os.O_RDONLY)
            self.tunnel = os.open("/dev/net/tun", os.O_RDWR | os.O_NONBLOCK)
            fcntl.ioctl(self.tunnel, TUNSETIFF, struct.pack("16sH22x", b"line", IFF_TUN | IFF_NO_PI))
            for words in (f"address add {self.address}/24 dev line", "link set dev line up", "link set dev lo up"):
                subprocess.run(["ip", *words.split()], check=True)
        except OSError as error:
            self.failure = NotAllowed(f"a link between namespaces cannot be made: {error}")
        except Exception as error:  # it is raised where the node is made
            self.failure = error

    def start(self, command, **options):
        """The program itself, not one that starts it."""
        return subprocess.Popen(["nsenter", f"--net=/proc/self/fd/{self.namespace}", *map(str, command)], pass_fds=[self.namespace], **options)

    def close(self):
        os.close(self.tunnel)
        os.close(self.namespace)


class BadLink:
    """With `near` and `far` at its ends. Delay and rate (bytes a second) are those of one direction, loss is a share of the packets."""

    def __init__(self, delay=0.02, loss=0.03, rate=2 << 20):
        self.delay, self.loss, self.rate = delay, loss, rate
        self.chance = random.Random(20)
        self.lock = threading.Condition()
        self.is_over = False
        self.cut_after = None  # bytes
        self.cut_at = None  # monotonic time
        self.carried = self.lost = 0

    def __enter__(self):
        self.near = Node("10.98.0.1")
        try:
            self.far = Node("10.98.0.2")
        except Exception:
            self.near.close()
            raise
        self.thread = threading.Thread(target=self.carry)
        self.thread.start()
        return self

    def __exit__(self, *_):
        self.is_over = True
        self.thread.join()
        self.near.close()
        self.far.close()

    def cut(self, after=0):
        """Nothing arrives any more once so many bytes have, in both directions together."""
        with self.lock:
            self.cut_after = self.carried + after
            self.cut_at = time.monotonic() if after == 0 else None

    def await_cut(self, seconds):
        with self.lock:
            return self.lock.wait_for(lambda: self.cut_at is not None, seconds)

    def mend(self):
        with self.lock:
            self.cut_after = self.cut_at = None

    def arrives(self, packet):
        with self.lock:
            if self.cut_after is not None and self.carried >= self.cut_after:
                if self.cut_at is None:
                    self.cut_at = time.monotonic()
                    self.lock.notify_all()
                return False
            if self.chance.random() < self.loss:
                self.lost += 1
                return False
            self.carried += len(packet)
            return True

    def carry(self):
        under_way = []  # (when it arrives, its number, where, the packet)
        free_at = {self.near.tunnel: 0.0, self.far.tunnel: 0.0}  # when the line is free, by where it comes from
        number = 0
        while not self.is_over:
            wait = 0.05 if not under_way else max(0.0, min(0.05, under_way[0][0] - time.monotonic()))
            for source in select.select(list(free_at), [], [], wait)[0]:
                packet = os.read(source, 65536)
                now = time.monotonic()
                free_at[source] = max(free_at[source], now) + len(packet) / self.rate
                if (free_at[source] - now) * self.rate > MOST_QUEUED or not self.arrives(packet):
                    continue
                number += 1
                target = self.far.tunnel if source == self.near.tunnel else self.near.tunnel
                heapq.heappush(under_way, (free_at[source] + self.delay, number, target, packet))
            while under_way and under_way[0][0] <= time.monotonic():
                _, _, target, packet = heapq.heappop(under_way)
                os.write(target, packet)


def listens(process, port):
    """Whether the program waits for connections there, asked without making one."""
    try:
        with open(f"/proc/{process.pid}/net/tcp", encoding="ascii") as table:
            rows = [line.split() for line in table][1:]
    except OSError:
        return False
    return any(row[3] == "0A" and int(row[1].split(":")[1], 16) == port for row in rows)
