"""`quillbox-device covered`: it finds each single difference between a device and its sets, and changes nothing."""
import fcntl
import json
import os
import shutil

from companions import CompanionTest, SANITIZED, database, lines
from independent_set import FILE, REGISTRY, Set, registry_bytes
import program

FILES, RECORDS = (400, 500) if SANITIZED else (2000, 4000)


def record(number, subject="Task"):
    return [{"id": "0037001f", "value": f"{subject} {number}"}, {"id": "00260002", "value": number % 3}]


class CoveredTest(CompanionTest):
    def setUp(self):
        super().setUp()
        self.device_tool("init", self.device)
        self.store = self.device / "object-store"
        for number in range(FILES):
            path = self.store / f"d{number // 200}" / f"file {number}"
            path.parent.mkdir(exist_ok=True)
            path.write_bytes(b"content %d " % number * (1 + number % 30))
        (self.store / os.fsdecode(b"raw \xff")).write_bytes(b"odd name")
        self.add_records([record(number) for number in range(RECORDS)])
        (self.device / "cards/Card").mkdir(parents=True)
        # When the program ends for the first time, it writes its settings to the registry.
        for script in ("idle\n", program.full_backup(program.FILES, program.DATABASES, program.REGISTRY)):
            self.run_program("quillbox", "--device", self.device, "--timeout", "0", "--script", "-", given=script)
        self.sets = self.folder / "sets"
        (self.device / "cards/Card/QUILBOX").rename(self.sets)

    def add_records(self, records, name="Tasks"):
        self.device_tool("database", "import", self.device, self.file("add.jsonl", lines(database(name, records, 26))),
                         *(["--add"] if f"database {name}:" in self.device_tool("database", "list", self.device).text else []))

    def covered(self, *where, code=0):
        return self.device_tool("covered", self.device, *(where or [self.sets]), code=code)

    def test_a_fresh_backup_covers_the_device_and_nothing_on_it_is_changed(self):
        def stamps():
            return {str(path): (path.lstat().st_mtime_ns, path.lstat().st_ctime_ns) for path in self.device.rglob("*")}

        before = stamps()
        said = self.covered().text
        self.assertIn(f"holds {FILES + 1} files, {RECORDS} records", said)
        self.assertTrue(said.endswith("Everything is covered.\n"))
        self.assertEqual(stamps(), before)

    def test_a_file_in_rom_is_counted_and_not_compared(self):
        rom = self.store / "d0" / "calc"
        rom.write_bytes(b"in no set")
        self.assertIn("not covered: file /d0/calc\n", self.covered(code=1).text)
        os.setxattr(rom, "user.DOSATTRIB", b"0x41")
        self.assertIn("1 file of the device's ROM isn't compared", self.covered().text)
        found = json.loads(self.covered(self.sets, "--json").text)
        self.assertEqual((found["files"], found["romFileCount"], found["uncoveredCount"]), ([], 1, 0))
        rom.with_name("file 7").write_bytes(b"changed")
        self.assertIn("not covered: file /d0/file 7\n", self.covered(code=1).text)

    def test_each_single_difference_is_found(self):
        victim = self.store / "d0" / "file 7"
        good = victim.read_bytes()
        for content in (good[:-1], good + b"x", b"X" + good[1:], good[:-1] + b"X", b""):
            victim.write_bytes(content)
            self.assertIn("not covered: file /d0/file 7\n", self.covered(code=1).text)
        victim.write_bytes(good)
        for path in (self.store / "d0" / "FILE 7", self.store / ".hidden"):
            path.write_bytes(good)
            self.assertIn(f"not covered: file /{path.relative_to(self.store)}\n", self.covered(code=1).text)
            path.unlink()
        link = self.store / "link"
        link.symlink_to(victim)
        self.assertIn("not covered: file /link: it is a link", self.covered(code=1).text)
        link.unlink()
        self.covered()
        self.device_tool("registry", "import", self.device, self.registry_file("a.reg", '[HKEY_USERS\\new]\r\n"a"=dword:1\r\n'))
        said = self.covered(code=1).text
        self.assertIn('not covered: registry [HKEY_USERS\\new]\nnot covered: registry [HKEY_USERS\\new] "a": dword:00000001\n', said)
        self.assertIn("Not covered: 2 things", said)
        self.add_records([record(5, "Other")])
        self.add_records([record(3), record(3)])  # of the two, the import adds one: a second record like the existing one
        said = self.covered(code=1).text
        self.assertIn(f"not covered: database Tasks: 2 of {RECORDS + 2} records\n    Task 3\n    Other 5\n", said)
        self.add_records([record(1)], "More")
        self.assertIn("not covered: database More: no set has it", self.covered(code=1).text)
        shutil.copytree(self.sets, self.folder / "again")  # holds nothing that the first doesn't hold
        found = json.loads(self.covered(self.sets, self.folder / "again", "--json", code=1).text)
        self.assertEqual([[each["recordCount"] for each in found.pop(name)] for name in ("sets", "databases")],
                         [[RECORDS], [RECORDS + 2, 1]])
        self.assertEqual(found, {"version": 1, "files": [], "changes": [], "unkeptValueCount": 0, "romFileCount": 0, "uncoveredCount": 5, "values": [
            {"key": "HKEY_USERS\\new", "value": None, "content": None}, {"key": "HKEY_USERS\\new", "value": "a", "content": "dword:00000001"}]})

    def test_a_restored_registry_that_waits_for_the_next_start_is_compared(self):
        content = registry_bytes({"HKEY_USERS\\waits": ['"a"=dword:1']})
        path = Set().add(REGISTRY, "", content).write(self.folder / "other")
        self.run_program("quillbox", "--device", self.device, "restore", path, "--item", "registry")
        self.assertTrue((self.device / "registry.staged").exists())
        self.assertIn('not covered: registry [HKEY_USERS\\waits] "a": dword:00000001\n', self.covered(code=1).text)
        self.covered(self.sets, self.folder / "other")

    def test_covered_counts_only_sound_sets_that_are_not_on_the_device(self):
        def copy(folder):
            folder.mkdir()
            for path in self.sets.iterdir():
                (folder / path.name).write_bytes(path.read_bytes())

        copy(self.store / "QUILBOX")
        self.assertIn("is on the device itself", self.covered(self.store, code=1).said)
        copy(self.folder / "bad")
        data = self.folder / "bad/QLBX0001.QDT"
        data.write_bytes(data.read_bytes() + b"x")
        self.assertIn("is unsound", self.covered(self.folder / "bad", code=1).said)
        self.assertIn("no set in the folder", self.covered(self.folder / "bad/..", code=2).said)
        for path in (self.store / "QUILBOX").iterdir():
            path.unlink()
        self.covered(self.folder / "bad", self.sets)
        extra = self.store / "extra"
        extra.write_bytes(b"new")
        Set("Backup date:13/11/2030 (10:00)").add(FILE, "\\extra", b"new").write(self.folder / "later")
        self.assertIn("QLBX0001.QLT: holds 1 file\n", self.covered(self.sets, self.folder / "later").text)

    def test_a_device_in_use_is_refused(self):
        with open(self.device / "device.lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.assertIn("is in use", self.covered(code=1).said)
        self.assertIn("not a device", self.device_tool("covered", self.folder, self.sets, code=2).said)
