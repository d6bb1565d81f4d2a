"""Runs quillbox-set, quillbox-device and quillbox on a temporary folder, and makes the JSON lines of databases."""
import json
import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import card_reader
from host_trouble import unwritable_outputs

BIN = pathlib.Path(os.environ["QUILLBOX_BIN"])
SAMPLE_SETS = pathlib.Path(os.environ["QUILLBOX_SAMPLE_SETS"])  # see sample_sets.py
# A sanitized program takes several times as long and reserves more memory than any limit allows.
SANITIZED = bool(os.environ.get("QUILLBOX_SANITIZE"))

REGISTRY_HEAD = "\ufeffWindows Registry Editor Version 5.00\r\n\r\n"


def database(name, records=(), kind=0, sort=()):
    """Returns a database. A record is a list of properties as in an export. A sort order is a property and its
    flags."""
    return {"name": name, "type": kind, "sort": list(sort), "records": list(records)}


def lines(*databases):
    """Returns the databases as JSON lines, the format of imports and exports."""
    made = []
    for one in databases:
        sort = [{"property": identifier, "flags": flags} for identifier, flags in one["sort"]]
        made.append({"database": one["name"], "type": one["type"], "sort": sort})
        made += [{"record": record} for record in one["records"]]
    return "".join(json.dumps(line, ensure_ascii=False, separators=(",", ":")) + "\n" for line in made)


class CompanionTest(unittest.TestCase):
    """Each test has an empty folder. self.device is a path in this folder for a device, which doesn't exist yet."""

    def setUp(self):
        base = "/dev/shm" if os.access("/dev/shm", os.W_OK) else None
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="quillbox-test-", dir=base))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self.device = self.folder / "device"

    def run_program(self, program, *arguments, code=0, given="", **start):
        """Runs a program to its end. The exit code must be `code`, unless `code` is None. `start` goes to
        subprocess.run.

        Returns the finished process. Its decoded output is .text, its decoded errors are .said.
        """
        if "stdin" not in start:
            start["input"] = given if isinstance(given, bytes) else given.encode()
        start = {"stdout": subprocess.PIPE, "stderr": subprocess.PIPE, "timeout": 600, **start}
        done = subprocess.run([BIN / program, *map(str, arguments)], check=False, **start)
        done.text = (done.stdout or b"").decode(errors="replace")
        done.said = (done.stderr or b"").decode()
        if code is not None:
            self.assertEqual(done.returncode, code, done.said + done.text)
        return done

    def assert_fails_where_output_takes_nothing(self, program, commands, reported):
        """Runs each command with each kind of output that can't be written. `reported` is a pattern for the errors."""
        for name, output in unwritable_outputs():
            for command in commands:
                with self.subTest(output=name, command=command):
                    self.assertRegex(self.run_program(program, *command, code=1, **output).said, f"^{reported}\n$")

    def set_tool(self, *arguments, **more):
        return self.run_program("quillbox-set", *arguments, **more)

    def verified(self, path, code=0):
        """Returns the result of `quillbox-set verify --json`. The reader QLBXREAD.PY must find the same faults."""
        found = json.loads(self.set_tool("verify", path, "--json", code=code).text)
        self.assertEqual(found["sound"], code == 0)
        self.assertEqual(found["warnings"], sum("warning" in fault for fault in found["faults"]))
        if not SANITIZED:
            ours = card_reader.faults(path)
            self.assertEqual(ours, [(fault.get("item"), "warning" in fault) for fault in found["faults"]], ours)
        return found

    def assert_fault(self, path, item, reason):
        """Expects exactly one fault besides warnings. So the fault hides no item after it."""
        faults = [fault for fault in self.verified(path, 1)["faults"] if "warning" not in fault]
        self.assertEqual([fault.get("item") for fault in faults], [item], faults)
        self.assertIn(reason, faults[0]["reason"])

    def device_tool(self, *arguments, **more):
        return self.run_program("quillbox-device", *arguments, **more)

    def exported(self, device=None):
        """Returns all databases of a device as JSON lines."""
        return self.device_tool("database", "export", device or self.device).text

    def registry(self, device=None):
        """Returns the registry file that a device exports, as bytes, because it isn't UTF-8."""
        export = [BIN / "quillbox-device", "registry", "export", device or self.device]
        return subprocess.run(export, capture_output=True, check=True).stdout

    def file(self, name, content=b""):
        path = self.folder / name
        path.write_bytes(content if isinstance(content, bytes) else content.encode())
        return path

    def registry_file(self, name, text):
        return self.file(name, (REGISTRY_HEAD + text).encode("utf-16-le"))

    def output_folder(self):
        """Returns a new, empty folder."""
        return pathlib.Path(tempfile.mkdtemp(prefix="out", dir=self.folder))


def files_below(folder):
    """Returns the content of each file by its path in the folder."""
    return {str(path.relative_to(folder)): path.read_bytes() for path in folder.rglob("*") if path.is_file()}


def names_in(folder):
    return sorted(path.name for path in folder.iterdir())
