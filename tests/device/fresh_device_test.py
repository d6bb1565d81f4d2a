#!/usr/bin/env python3
"""A fresh device contains what is in res/demonstration: each file with its time, the registry, the databases."""
import csv
import pathlib
import subprocess
import sys
import tempfile
import unittest
from datetime import datetime, timezone

TOOL = None
CONTENT = pathlib.Path(__file__).resolve().parents[2] / "res" / "demonstration"


def run_tool(*arguments):
    return subprocess.run([TOOL, *arguments], stdout=subprocess.PIPE, check=True).stdout


class FreshDeviceTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="quillbox-fresh-device-test.")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.fresh, self.bare = self.folder / "fresh", self.folder / "bare"
        run_tool("init", self.fresh, "--demonstration")
        run_tool("init", self.bare)

    def test_each_file_has_its_content_and_time(self):
        def files_below(folder):
            return {str(path.relative_to(folder)) for part in ("object-store", "cards") for path in (folder / part).rglob("*")
                    if path.is_file()}

        with (CONTENT / "files.csv").open(encoding="utf-8", newline="") as lines:
            rows = list(csv.DictReader(lines))
        self.assertEqual(files_below(CONTENT / "device"), {row["Path"] for row in rows})
        made = files_below(self.fresh)  # without those in ROM where the host keeps no extended attributes
        self.assertLessEqual({row["Path"] for row in rows if not row["InRom"]}, made)
        self.assertLessEqual(made, {row["Path"] for row in rows})
        for row in rows:
            if row["Path"] in made:
                with self.subTest(row["Path"]):
                    file = self.fresh / row["Path"]
                    self.assertEqual(file.read_bytes(), (CONTENT / "device" / row["Path"]).read_bytes())
                    modified = datetime.fromtimestamp(file.stat().st_mtime, timezone.utc)
                    self.assertEqual(f"{modified:%Y-%m-%dT%H:%M}", row["Modified"])

    def test_the_registry_is_that_of_the_file(self):
        imported = self.folder / "registry.reg"
        imported.write_text((CONTENT / "registry.reg").read_text(encoding="utf-8"), encoding="utf-16")
        run_tool("registry", "import", self.bare, imported)
        self.assertEqual(run_tool("registry", "export", self.fresh), run_tool("registry", "export", self.bare))

    def test_the_databases_are_those_of_the_tables(self):
        for kind, name in enumerate(("Contacts", "Appointments", "Tasks"), 24):
            with self.subTest(name):
                out, table = self.folder / f"{name}.csv", CONTENT / f"{name.lower()}.csv"
                run_tool("database", "export", self.fresh, out, "--name", f"{name} Database")
                self.assertEqual(out.read_bytes(), table.read_bytes())
                self.assertIn(f"database {name} Database: type {kind},".encode(), run_tool("database", "list", self.fresh))


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
