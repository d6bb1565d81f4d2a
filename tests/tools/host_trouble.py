"""Trouble that the host makes for a process: a standard stream that is missing or full, calls that fail, a kill at a
call."""
import os
import re
import shutil
import subprocess
import tempfile
import unittest

needs_strace = unittest.skipUnless(shutil.which("strace"), "strace isn't installed")


def unwritable_outputs():
    """Yields each kind of standard output that can't be written: its name, and the arguments of subprocess.run for
    it."""
    with open("/dev/full", "wb") as full:
        yield "full", {"stdout": full}
    reader, writer = os.pipe()
    os.close(reader)
    yield "pipe without a reader", {"stdout": writer}
    os.close(writer)
    yield "closed", {"preexec_fn": lambda: os.close(1)}


def traced(command, calls, *injected, **more):
    """Runs a program and records the calls with names in `calls`. strace makes some of them fail or kill the program,
    as `injected` says.

    Returns the finished process. It has the recorded calls in their order: .by_thread as thread and name, .calls as
    names alone.
    """
    what = [word for each in ("trace=" + calls, *("inject=" + each for each in injected)) for word in ("-e", each)]
    with tempfile.NamedTemporaryFile("r") as trace:
        done = subprocess.run(["strace", "-f", "-qq", "-o", trace.name, *what, *map(str, command)], check=False,
                              **{"capture_output": True, "env": {**os.environ, "ASAN_OPTIONS": "detect_leaks=0"}, **more})
        # A call that was resumed, or that strace has no name for, isn't counted.
        done.by_thread = [(thread, name) for thread, name in re.findall(r"^(\d+) +(\w+)\(", trace.read(), re.M)
                          if name in calls.split(",")]
    done.calls = [name for _, name in done.by_thread]
    return done
