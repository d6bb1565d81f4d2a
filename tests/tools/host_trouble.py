"""What the host does to a process: a standard stream that is missing or full, calls that fail, a kill in between."""
import os
import re
import shutil
import subprocess
import tempfile
import unittest

needs_strace = unittest.skipUnless(shutil.which("strace"), "strace isn't installed")


def unwritable_outputs():
    """Each standard output that takes nothing: its name, and how subprocess.run gives it."""
    with open("/dev/full", "wb") as full:
        yield "full", {"stdout": full}
    reader, writer = os.pipe()
    os.close(reader)
    yield "pipe without a reader", {"stdout": writer}
    os.close(writer)
    yield "closed", {"preexec_fn": lambda: os.close(1)}


def traced(command, calls, *injected, **more):
    """Runs it, with what `injected` says done to one or some of the calls; .calls has those that came, in their order."""
    what = [word for each in ("trace=" + calls, *("inject=" + each for each in injected)) for word in ("-e", each)]
    with tempfile.NamedTemporaryFile("r") as trace:
        done = subprocess.run(["strace", "-f", "-qq", "-o", trace.name, *what, *map(str, command)], check=False,
                              **{"capture_output": True, "env": {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}, **more})
        done.calls = [name for name in re.findall(r"^\d+ +(\w+)\(", trace.read(), re.M) if name in calls.split(",")]
    return done
