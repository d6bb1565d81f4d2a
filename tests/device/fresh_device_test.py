"""A fresh device contains what is in res/demonstration: each file with its time, the registry, the databases."""
import csv
import pathlib
from datetime import datetime, timezone

from companions import CompanionTest

CONTENT = pathlib.Path(__file__).resolve().parents[2] / "res" / "demonstration"


class FreshDeviceTest(CompanionTest):
    def setUp(self):
        super().setUp()
        self.device_tool("init", self.device, "--demonstration")

    def test_each_file_has_its_content_and_time(self):
        def files_below(folder):
            return {str(path.relative_to(folder)) for part in ("object-store", "cards") for path in (folder / part).rglob("*")
                    if path.is_file()}

        with (CONTENT / "files.csv").open(encoding="utf-8", newline="") as lines:
            rows = list(csv.DictReader(lines))
        self.assertEqual(files_below(CONTENT / "device"), {row["Path"] for row in rows})
        made = files_below(self.device)  # if the host keeps no extended attributes, the files in ROM are missing
        self.assertLessEqual({row["Path"] for row in rows if not row["InRom"]}, made)
        self.assertLessEqual(made, {row["Path"] for row in rows})
        for row in rows:
            if row["Path"] in made:
                with self.subTest(row["Path"]):
                    file = self.device / row["Path"]
                    self.assertEqual(file.read_bytes(), (CONTENT / "device" / row["Path"]).read_bytes())
                    modified = datetime.fromtimestamp(file.stat().st_mtime, timezone.utc)
                    self.assertEqual(f"{modified:%Y-%m-%dT%H:%M}", row["Modified"])

    def test_the_registry_is_that_of_registry_reg(self):
        bare = self.folder / "bare"
        self.device_tool("init", bare)
        self.device_tool("registry", "import", bare, CONTENT / "registry.reg")
        self.assertEqual(self.registry(), self.registry(bare))

    def test_the_databases_are_those_of_the_tables(self):
        for kind, name in enumerate(("Contacts", "Appointments", "Tasks"), 24):
            with self.subTest(name):
                out, table = self.folder / f"{name}.csv", CONTENT / f"{name.lower()}.csv"
                self.device_tool("database", "export", self.device, out, "--name", f"{name} Database")
                self.assertEqual(out.read_bytes(), table.read_bytes())
                self.assertIn(f"database {name} Database: type {kind},", self.device_tool("database", "list", self.device).text)
