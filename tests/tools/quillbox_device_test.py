#!/usr/bin/env python3
"""quillbox-device as its users run it: what goes in comes out again, and a command that fails changes nothing."""
import contextlib
import json
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
from host_trouble import needs_strace, traced, unwritable_outputs

TOOL = None
HEAD = {"database": "All kinds", "type": 7, "sort": [{"property": 0x1001F, "flags": 2}, {"property": 0x20003, "flags": 0}]}
RECORDS = [
    [{"id": "0001001f", "value": "Grüße, 😀 \"quoted\"\r\n"}, {"id": "0002001f", "units": [0xD800, 0x41]},
     {"id": "0003001f", "value": ""}],
    [{"id": "00010002", "value": -32768}, {"id": "00020012", "value": 65535}, {"id": "00030003", "value": -2147483648},
     {"id": "00040013", "value": 4294967295}, {"id": "0005000b", "value": 1},
     {"id": "00060040", "value": 18446744073709551615}, {"id": "00070005", "value": 0.1},
     {"id": "00080005", "bits": "7ff8000000000001"}, {"id": "00090005", "value": -0.0}],
    [{"id": "00010041", "value": ""}, {"id": "00020041", "flags": 0xFCFF, "value": "00ff" * 5000},
     {"id": "00030063", "bits": "0123456789abcdef"}, {"id": "00040063", "bits": "00000000000000010000000000000000"}],
]
RECORDS += [[{"id": "00010003", "value": number}] for number in range(300)]
REGISTRY = "\ufeffWindows Registry Editor Version 5.00\r\n\r\n"


def lines(head=HEAD, records=RECORDS):
    made = [head] + [{"record": record} for record in records]
    return "".join(json.dumps(line, ensure_ascii=False, separators=(",", ":")) + "\n" for line in made)


class DeviceToolTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="quillbox-device-test.")
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.device = self.folder / "device"
        self.run_tool("init", self.device)

    def run_tool(self, *arguments, code=0, given=""):
        done = subprocess.run([TOOL, *map(str, arguments)], input=given.encode(), capture_output=True, check=False)
        self.assertEqual(done.returncode, code, done.stderr)
        self.assertEqual(done.stderr.startswith(b"quillbox-device: "), code != 0)
        return (done.stderr if code else done.stdout).decode()

    def file(self, name, content, encoding="utf-8"):
        path = self.folder / name
        path.write_bytes(content.encode(encoding))
        return path

    def everything(self):
        """The whole device, as its exports and its files tell."""
        return (self.run_tool("database", "export", self.device),
                subprocess.run([TOOL, "registry", "export", self.device], capture_output=True, check=True).stdout,
                sorted(path.name for path in self.device.iterdir()))

    def test_databases_come_back_as_they_were_put_in(self):
        second = lines({"database": "Пустая", "type": 4294967295, "sort": [{"property": 0, "flags": 0}]}, [])
        made = self.file("in.jsonl", lines() + second)
        self.assertEqual(self.run_tool("database", "import", self.device, made),
                         "All kinds: made, 303 records added\nПустая: made, 0 records added\n")
        self.assertEqual(self.run_tool("database", "list", self.device),
                         "database All kinds: type 7, 303 records\ndatabase Пустая: type 4294967295, 0 records\n")
        out = self.folder / "out.jsonl"
        self.run_tool("database", "export", self.device, out)
        self.assertEqual(out.read_text(), made.read_text())
        self.assertIn("--force", self.run_tool("database", "export", self.device, out, code=1))
        self.assertEqual(self.run_tool("database", "export", self.device, "--name", "пустая"), second)
        self.run_tool("database", "export", self.device, "--name", "none", code=1)

        self.run_tool("database", "import", self.device, made, code=1)
        self.run_tool("database", "import", self.device, "--replace", "-", given=lines(records=RECORDS[:1]))
        self.assertEqual(self.run_tool("database", "export", self.device), second + lines(records=RECORDS[:1]))
        self.assertEqual(self.everything()[2], ["cards", "device.db", "device.lock", "object-store"])

    def test_an_import_that_fails_changes_nothing(self):
        self.run_tool("database", "import", self.device, "-", given=lines())
        before = self.everything()
        good = {"id": "00010003", "value": 1}
        for bad in ("", "nonsense", "[]", "{}", '{"record": []}', '{"record": 5}', '{"record": ["x"]}',
                    '{"database": "x"}', '{"database": 5, "type": 1, "sort": []}',
                    '{"database": "x", "type": -1, "sort": []}', '{"database": "x", "type": 1, "sort": [5]}',
                    json.dumps({**HEAD, "database": "x" * 32}), json.dumps({**HEAD, "database": ""}),
                    json.dumps({**HEAD, "database": "x", "sort": HEAD["sort"] * 3}),
                    *(json.dumps({"record": [good, {**good, **change}]}) for change in (
                        {"id": 5}, {"id": "1"}, {"id": "0001000g"}, {"value": "x"}, {"value": 2 ** 31}, {"value": -2 ** 31 - 1},
                        {"value": 1.5}, {"value": None}, {"flags": 65536}, {"flags": 512},
                        {"id": "00020002", "value": 32768}, {"id": "00020012", "value": -1}, {"id": "0002001f"},
                        {"id": "0002001f", "value": "a\0b"}, {"id": "0002001f", "units": [65536]},
                        {"id": "00020041", "value": "abc"}, {"id": "00020041", "value": "zz"},
                        {"id": "00020005", "value": "x"}, {"id": "00020063", "bits": "12"})),
                    "{" * 100_000):
            with self.subTest(line=bad[:100]):
                given = lines(records=RECORDS[:2]) + (bad + "\n" if bad else lines()[:-10])
                said = self.run_tool("database", "import", self.device, "--replace", "-", given=given, code=1)
                self.assertRegex(said, r'line \d+: .*\. Nothing was imported\.\n')
        self.assertIn("before the record", self.run_tool("database", "import", self.device, "-",
                                                         given=lines().split("\n", 1)[1], code=1))
        self.assertEqual(self.everything(), before)

    def test_a_kill_in_the_middle_of_an_import_changes_nothing_and_the_device_is_taken_meanwhile(self):
        self.run_tool("database", "import", self.device, "-", given=lines())
        before = self.everything()
        with subprocess.Popen([TOOL, "database", "import", self.device, "--replace", "-"], stdin=subprocess.PIPE) as running:
            # More than a pipe holds: when it has been written, the import is under way.
            running.stdin.write(lines(records=RECORDS * 10).encode())
            running.stdin.flush()
            self.assertIn("open in another", self.run_tool("show", self.device, code=1))
            running.kill()
        self.assertEqual(self.everything()[:2], before[:2])
        self.run_tool("database", "import", self.device, "--replace", "-", given=lines())
        self.assertEqual(self.everything(), before)

    def test_the_registry_takes_what_a_file_names_or_nothing(self):
        first = self.file("1.reg", REGISTRY + '[HKEY_USERS\\a]\r\n"kept"="1"\r\n"changed"="2"\r\n', "utf-16-le")
        self.run_tool("registry", "import", self.device, first)
        second = self.file("2.reg", REGISTRY + '[HKEY_USERS\\A]\n"Changed"=dword:5\n', "utf-16-le")
        self.run_tool("registry", "import", self.device, second)
        before = self.everything()
        text = before[1].decode("utf-16")
        self.assertIn('[HKEY_USERS\\a]\r\n"changed"=dword:00000005\r\n"kept"="1"\r\n', text)
        for name, body, fault in (("cut", '[HKEY_USERS\\b]\n@="x"\n"y"="z', "line 5: a text isn't closed"),
                                  ("root", "[HKEY_NONE]\n", "line 3: the key is below none of the predefined ones"),
                                  ("level", "[HKEY_USERS\\a\\]\n", "line 3: a name in the key's path is empty"),
                                  ("escape", "[HKEY_USERS]\n@=\"a\\\nb\"\n", "line 4: a text has a bad escape"),
                                  ("NUL", "[HKEY_USERS]\n@=\"a\0b\"\n", "line 4: a text can't hold a NUL"),
                                  ("value", "[HKEY_USERS]\n\"a\"=-\n", "line 4: deleting a value isn't supported"),
                                  ("key", "[HKEY_USERS\\c]\n@=\"\"\n[-HKEY_USERS\\a]\n", "line 5: deleting a key isn't supported")):
            with self.subTest(name):
                said = self.run_tool("registry", "import", self.device, self.file(name, REGISTRY + body, "utf-16-le"), code=1)
                self.assertIn(f'{name}", {fault}', said)
        for text in ("REGEDIT4\n", REGISTRY[1:], REGISTRY):  # in 8 bits, with and without a mark, of odd and even size
            for end in ("", "\n"):
                said = self.run_tool("registry", "import", self.device, self.file("8 bit", text + "[HKEY_USERS]\n" + end), code=1)
                self.assertIn("line 1: the file is no UTF-16 text with a byte order mark; save it as a version 5.00 file", said)
        # No end of the file: a read that fails.
        self.assertIn("can't be read", self.run_tool("registry", "import", self.device, "/proc/self/mem", code=1))
        self.assertEqual(self.everything(), before)

        other = self.folder / "other"
        self.run_tool("init", other, "--demonstration")
        out = self.folder / "out.reg"
        self.run_tool("registry", "export", other, out)
        self.run_tool("registry", "import", self.device, out)
        self.assertIn("Robin Vähä", self.everything()[1].decode("utf-16"))

    def test_what_cannot_be_printed_is_no_success(self):
        made = self.file("in.jsonl", lines())
        self.run_tool("card", "add", self.device, "Stick", self.folder)
        for name, output in unwritable_outputs():
            for command in (["database", "import", "--replace", self.device, made], ["show", self.device], ["--help"],
                            ["database", "list", self.device], ["database", "export", self.device], ["card", "list", self.device],
                            ["registry", "export", self.device], ["database", "export", self.device, "/dev/stdout"]):
                with self.subTest(output=name, command=command):
                    done = subprocess.run([TOOL, *command], stderr=subprocess.PIPE, check=False, **output)
                    self.assertEqual(done.returncode, 1)
                    self.assertRegex(done.stderr, rb"^quillbox-device: .*tandard output.* can't be written\.\n$")
        self.assertEqual((self.device / "device.lock").read_text(), "database\n", "what was meant for the user")

    def test_input_that_cannot_be_read_is_no_empty_file(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        for command in (["database", "import", self.device, "-"], ["registry", "import", self.device, "-"]):
            for stdin in ({"preexec_fn": lambda: os.close(0)}, {"stdin": folder}):
                with self.subTest(command=command, stdin=stdin):
                    done = subprocess.run([TOOL, *command], capture_output=True, check=False, **stdin)
                    self.assertEqual(done.returncode, 1)
                    self.assertRegex(done.stderr, rb'^quillbox-device: "-".* can\'t be read.*\. Nothing was imported\.\n$')

    @needs_strace
    def test_an_export_is_on_the_disk_and_a_flush_that_fails_leaves_the_old_file_or_none(self):
        self.run_tool("database", "import", self.device, "-", given=lines())
        out = self.folder / "out"
        for command in (["database", "export"], ["registry", "export"]):
            done = traced([TOOL, *command, self.device, out], "fsync,rename")
            self.assertEqual((done.returncode, done.calls), (0, ["fsync", "rename", "fsync"]))
            out.unlink()
            with out.open("wb") as printed:
                done = traced([TOOL, *command, self.device], "fsync", "fsync:error=EIO", capture_output=False, stdout=printed,
                              stderr=subprocess.PIPE)
                self.assertEqual(done.returncode, 1, done.stderr)
            out.write_text("old")
            for target, force in ((out, "--force"), (self.folder / "new", "--force")):
                done = traced([TOOL, *command, self.device, target, force], "fsync", "fsync:error=EIO")
                self.assertEqual((done.returncode, done.stderr.decode()), (1, f'quillbox-device: "{target}" can\'t be written.\n'))
            self.assertEqual((out.read_text(), sorted(path.name for path in self.folder.iterdir())), ("old", ["device", "out"]))
            done = traced([TOOL, *command, self.device, out, "--force"], "fsync", "fsync:error=EIO:when=2")
            self.assertEqual(done.returncode, 1)
            self.assertIn(b"a power cut may lose it", done.stderr)
            out.unlink()

    @needs_strace
    def test_an_import_that_cannot_be_put_on_the_disk_changes_nothing_also_not_at_the_next_start(self):
        before = self.everything()
        registry = self.file("in.reg", REGISTRY + "[HKEY_USERS\\new]\r\n", "utf-16-le")
        for command in (["database", "import", self.device, self.file("in.jsonl", lines())], ["registry", "import", self.device, registry]):
            # The second: a commit that fails, and a log of it that stays.
            for injected in (["fsync,fdatasync:error=EIO"], ["fdatasync:error=EIO:when=2+", "unlink:error=EIO"]):
                with self.subTest(command=command, injected=injected):
                    done = traced([TOOL, *command], "fsync,fdatasync,unlink", *injected)
                    self.assertEqual(done.returncode, 1)
                    self.assertRegex(done.stderr, rb"^quillbox-device: .* can't be (written|closed)")
                    self.assertEqual(self.everything(), before)

    def test_cards_are_remembered_and_forgotten(self):
        stick = self.folder / "stick"
        stick.mkdir()
        (stick / "a").write_text("abc")
        self.run_tool("card", "add", self.device, "Stick", stick, "--capacity", 5000)
        self.run_tool("card", "add", self.device, "Docs", self.folder / "stick", code=1)  # one folder under two names
        for name in ("..", "a/b", ""):
            self.run_tool("card", "add", self.device, name, self.folder, code=1)
        (self.device / "object-store" / "My Documents").mkdir()
        said = self.run_tool("card", "add", self.device, "My Documents", self.folder, code=1)
        self.assertIn("would be hidden", said)
        self.run_tool("card", "add", self.device, "my documents", self.folder)
        self.run_tool("card", "remove", self.device, "my documents")
        self.run_tool("card", "add", self.device, "Gone", self.folder / "none", code=1)
        for capacity in ("-5", "9223372036854775808", "5k", ""):
            done = subprocess.run([TOOL, "card", "add", self.device, "Full", self.folder, "--capacity=" + capacity],
                                  capture_output=True, check=False)
            self.assertEqual((done.returncode, done.stderr[:10]), (2, b"--capacity"))
        self.assertEqual(self.run_tool("card", "list", self.device), f"card    Stick = {stick}, 5000 bytes\n")
        self.assertIn("card    Stick", self.run_tool("show", self.device))
        self.run_tool("card", "remove", self.device, "Stick")
        self.run_tool("card", "remove", self.device, "Stick", code=1)
        self.assertEqual(self.run_tool("card", "list", self.device), "")
        self.assertEqual((stick / "a").read_text(), "abc")

    @needs_strace
    def test_what_stands_in_a_folder_that_cannot_be_read_is_not_taken_for_nothing(self):
        (self.device / "object-store" / "closed").mkdir()
        self.run_tool("show", self.device)
        done = traced([TOOL, "show", self.device], "?access,?faccessat", "?access,?faccessat:error=EACCES")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"1 folder can't be read", done.stderr)

    def test_an_import_that_empties_a_database_says_nothing_of_it(self):
        def imported(text, *more):
            return self.run_tool("database", "import", self.device, "-", "--form", "csv", "--name", "people", *more, given=text)
        self.run_tool("database", "import", self.device, "-", given=lines({"database": "People", "type": 24, "sort": []}, RECORDS[:3]))
        self.assertEqual(imported("LastName\na\n", "--add"), "People: 1 record added\n")
        self.assertEqual(imported("LastName,Town\n", "--replace"), "People: 4 records replaced by 0\n")

    def test_only_a_device_is_opened_and_only_an_empty_folder_becomes_one(self):
        other = self.folder / "other"
        other.mkdir()
        (other / "letter").write_text("mine")
        for command in (["show"], ["card", "list"], ["database", "list"], ["registry", "export"]):
            self.run_tool(*command, other, code=2)
            self.run_tool(*command, self.folder / "missing", code=2)
        self.run_tool("init", other, code=1)
        self.run_tool("init", self.device, code=1)
        self.run_tool("database", "import", self.device, self.folder / "missing", code=2)
        self.assertEqual([path.name for path in other.iterdir()], ["letter"])
        self.assertFalse((self.folder / "missing").exists())

    def test_import_that_was_killed_leaves_nothing_to_later_ones(self):
        killed = subprocess.Popen([TOOL, "database", "import", self.device, "-"], stdin=subprocess.PIPE)
        half = lines({**HEAD, "database": "Half"}, RECORDS[:2]) + lines({**HEAD, "database": "Behind"}, [])
        killed.stdin.write(half.encode() + b"\n" * 100_000)
        killed.stdin.flush()
        log = self.device / "device.db.changing-wal"
        end = time.monotonic() + 30
        while not (log.exists() and log.stat().st_size) and time.monotonic() < end:
            time.sleep(0.01)
        self.assertGreater(log.stat().st_size, 0)
        self.assertIn("open in another", self.run_tool("show", self.device, code=1))
        self.assertTrue(log.exists(), "what a living import uses isn't cleared away")
        killed.kill()
        killed.communicate()
        self.run_tool("show", self.device)
        self.assertEqual([path.name for path in self.device.iterdir() if "changing" in path.name], [], "as large as the device")
        self.run_tool("database", "import", self.device, self.file("in.jsonl", lines()))
        listed = self.run_tool("database", "list", self.device)
        self.assertIn("All kinds", listed)
        self.assertNotIn("Half", listed)
        self.assertNotIn("Behind", listed)

    def test_one_database_never_takes_the_place_of_another_unasked(self):
        twice = self.file("twice.jsonl", lines({**HEAD, "database": "Same"}) + lines({**HEAD, "database": "same"}))
        before = self.everything()
        self.assertIn("twice", self.run_tool("database", "import", self.device, twice, "--replace", code=1))
        self.assertEqual(self.everything(), before)
        cards = self.file("one.vcf", "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:A B\r\nN:B;A;;;\r\nEND:VCARD\r\n")
        contacts = [lines({"database": name, "type": 24, "sort": []}, []) for name in ("People", "Others")]
        self.run_tool("database", "import", self.device, self.file("c.jsonl", "".join(contacts)))
        self.assertIn("--name", self.run_tool("database", "import", self.device, cards, "--add", code=1))
        self.run_tool("database", "import", self.device, cards, "--add", "--name", "People")
        self.assertIn("People: type 24, 1 records", self.run_tool("database", "list", self.device))

    def test_no_name_from_outside_steers_the_terminal(self):
        name = "\x1b]0;x\x07\u202e\x9b"
        self.run_tool("database", "import", self.device, self.file("evil.jsonl", lines({**HEAD, "database": name}, [])))
        (self.folder / name).mkdir()
        (self.device / "cards" / (name + "x")).mkdir()
        self.run_tool("card", "add", self.device, name, self.folder / name)
        for command, code in ((["database", "list", self.device], 0), (["show", self.device], 0),
                              (["card", "list", self.device], 0), (["show", self.folder / name], 2),
                              (["card", "add", self.device, "x", name], 1), (["card", "remove", self.device, name + "y"], 1),
                              (["card", "add", self.device, name + "x", self.folder], 1),
                              (["database", "import", self.device, self.folder / "evil.jsonl"], 1),
                              (["database", "import", self.device, name], 2),
                              (["database", "export", self.device, "--name", name + "y"], 1),
                              (["database", "export", self.device, self.folder / name], 1)):
            with self.subTest(command=command):
                said = self.run_tool(*command, code=code)
                self.assertFalse(set("\x1b\x07\u202e\x9b") & set(said), said)
        done = subprocess.run([TOOL, "show", self.device, name], capture_output=True, check=False)
        self.assertNotIn(b"\x1b", done.stderr)

    def test_export_leaves_a_neighbour_of_its_file_alone(self):
        neighbour = self.file("out.jsonl.part", "mine")
        self.run_tool("database", "export", self.device, self.folder / "out.jsonl")
        self.assertEqual(neighbour.read_text(), "mine")
        self.assertEqual(sorted(path.name for path in self.folder.iterdir()), ["device", "out.jsonl", "out.jsonl.part"])

    @contextlib.contextmanager
    def keeps_rights(self, path):
        """Of a file that is replaced inside, which nobody else may read."""
        path.chmod(0o600)
        if os.geteuid() == 0:
            os.chown(path, 1234, 1234)
        before = path.stat()
        yield
        after = path.stat()
        self.assertNotEqual(after.st_ino, before.st_ino)
        self.assertEqual((after.st_mode, after.st_uid, after.st_gid), (before.st_mode, before.st_uid, before.st_gid))

    def test_what_an_export_or_import_replaces_keeps_its_rights_and_its_links(self):
        out, link = self.file("out.jsonl", "old"), self.folder / "link"
        link.symlink_to("out.jsonl")
        self.run_tool("database", "export", self.device, link, code=1)
        self.assertEqual(out.read_text(), "old")
        with self.keeps_rights(out):
            self.run_tool("database", "export", self.device, link, "--force")
        self.assertEqual(out.read_text(), "")
        database = self.device / "device.db"
        with self.keeps_rights(database):
            self.run_tool("database", "import", self.device, "-", given=lines())
        real = database.rename(self.folder / "real.db")
        database.symlink_to(real)
        with self.keeps_rights(real):
            self.run_tool("database", "import", self.device, "--replace", "-", given=lines(records=RECORDS[:1]))
        self.assertTrue(database.is_symlink() and link.is_symlink())
        self.assertEqual(self.run_tool("database", "export", self.device), lines(records=RECORDS[:1]))
        out.unlink()
        self.assertIn("leads nowhere", self.run_tool("database", "export", self.device, link, "--force", code=1))
        self.assertTrue(link.is_symlink())
        self.assertIn("is a folder", self.run_tool("database", "export", self.device, self.folder, "--force", code=1))

    def test_an_export_writes_to_what_is_no_file_and_replaces_nothing_there(self):
        self.run_tool("database", "import", self.device, "-", given=lines())
        for force in ([], ["--force"]):
            pipe = self.folder / ("pipe" + "".join(force))
            os.mkfifo(pipe)
            with open(os.open(pipe, os.O_RDONLY | os.O_NONBLOCK), "rb") as reader:
                self.run_tool("database", "export", self.device, pipe, *force)
                self.assertEqual(reader.read().decode(), lines())
            self.assertTrue(pipe.is_fifo())
            null = self.folder / "null"
            null.unlink(missing_ok=True)
            null.symlink_to("/dev/null")
            self.run_tool("database", "export", self.device, null, *force)
            self.assertTrue(null.is_symlink())
        self.assertEqual(self.run_tool("database", "export", self.device, "/dev/stdout"), lines())
        out = self.file("out", "before\n")
        with out.open("a") as appended:
            subprocess.run([TOOL, "database", "export", self.device, "/dev/stdout"], stdout=appended, check=True)
        self.assertEqual(out.read_text(), "before\n" + lines())


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
