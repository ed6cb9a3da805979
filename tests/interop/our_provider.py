"""Our provider, which tests/net/provider.cpp drives, for requesters that are programs of others."""

import os
import resource
import subprocess
from pathlib import Path

PROVIDER = Path(os.environ["TESSARET_BINARY_DIR"]) / "tests" / "net" / "net_provider"
SECONDS = 60  # for one program; none takes one, but where a thousand files are waited for until they are on a disk
# How often a request is made until its cancel is heeded: it may rightly come behind the last response, where the machine has other work.
CANCEL_TURNS = 20


def ask(port, program, *words, options=(), seconds=SECONDS):
    """(exit code, what it said) of a requester that goes to a port of this machine."""
    command = [program, "-v", *options, "127.0.0.1", port, *words]
    done = subprocess.run(
        [str(word) for word in command],
        capture_output=True,
        timeout=seconds,
        check=False,
        # Without this each of its small writes waits for our system's acknowledgement of the one before.
        env={**os.environ, "TCP_NODELAY": "1"},
    )
    return done.returncode, (done.stdout + done.stderr).decode(errors="replace")


class Provider:
    """Our provider on a free port of this machine, ended with the block. With `largest_file` the system gives each of its files so many
    bytes, as a disk does that has no more."""

    def __init__(self, *words, largest_file=None):
        self.words = [str(word) for word in words]
        self.largest_file = largest_file

    def limit_files(self):
        if self.largest_file is not None:
            resource.setrlimit(resource.RLIMIT_FSIZE, (self.largest_file, self.largest_file))

    def __enter__(self):
        self.process = subprocess.Popen(
            [PROVIDER, "0", *self.words],
            stdout=subprocess.PIPE,
            stderr=subprocess.DEVNULL,
            preexec_fn=self.limit_files,
            restore_signals=False,  # the one for a file that is too long stays ignored, as it is here
        )
        self.port = self.process.stdout.readline().decode().strip()
        return self

    def __exit__(self, *failure):
        self.process.terminate()
        try:
            code = self.process.wait(SECONDS)
        except subprocess.TimeoutExpired:
            self.process.kill()
            self.process.wait()
            raise
        finally:
            self.process.stdout.close()
        if code != 0 and failure[0] is None:
            raise AssertionError(f"the provider ended with {code}")

    def ask(self, program, *words, options=(), seconds=SECONDS):
        """(exit code, what it said)"""
        return ask(self.port, program, *words, options=options, seconds=seconds)
