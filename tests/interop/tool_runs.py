"""Runs of the command line tool."""

import os
import subprocess

TOOL = os.environ["TESSARET_TOOL"]
# The tool starts ten times as slowly then, and what it is started for is the same every time.
INSTRUMENTED = bool(os.environ.get("TESSARET_SANITIZE"))


def transcode(source, syntax, target):
    """Writes `target` anew in another syntax. Throws with the tool's words where it failed."""
    done = subprocess.run(
        [TOOL, "transcode", "--force", "--to", syntax, source, target], capture_output=True, check=False
    )
    if done.returncode != 0:
        raise AssertionError(done.stderr.decode(errors="replace"))
