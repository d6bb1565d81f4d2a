"""quillbox-device as its users run it: an export returns what was imported, and a command that fails changes nothing."""
import contextlib
import fcntl
import json
import os
import shutil
import signal
import sqlite3
import subprocess
import time

from companions import BIN, REGISTRY_HEAD, CompanionTest, database, files_below, lines, names_in
from host_trouble import needs_strace, traced

TOOL = BIN / "quillbox-device"
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
KINDS = database("All kinds", RECORDS, 7, [(0x1001F, 2), (0x20003, 0)])
ONE = {**KINDS, "records": RECORDS[:1]}
CARD = "BEGIN:VCARD\r\nVERSION:4.0\r\nFN:A B\r\nN:B;A;;;\r\nEND:VCARD\r\n"


class DeviceToolTest(CompanionTest):
    def setUp(self):
        super().setUp()
        self.tool("init", self.device)

    def tool(self, *arguments, code=0, given="", **more):
        """Runs quillbox-device. Returns its output, or its errors if `code` isn't 0. In no other case it prints
        errors."""
        done = self.device_tool(*arguments, code=code, given=given, **more)
        self.assertEqual(done.said.startswith("quillbox-device: "), code != 0)
        return done.said if code else done.text

    def import_databases(self, *options, given, code=0):
        return self.tool("database", "import", self.device, "-", *options, given=given, code=code)

    def everything(self):
        """Returns the whole device: its exports and the names of its files."""
        return self.exported(), self.registry(), names_in(self.device)


class ContentTest(DeviceToolTest):
    def test_databases_come_back_as_they_were_put_in(self):
        second = lines(database("Пустая", [], 4294967295))
        made = self.file("in.jsonl", lines(KINDS) + second)
        self.assertEqual(self.tool("database", "import", self.device, made),
                         "All kinds: made, 303 records added\nПустая: made, 0 records added\n")
        self.assertEqual(self.tool("database", "list", self.device),
                         "database All kinds: type 7, 303 records\ndatabase Пустая: type 4294967295, 0 records\n")
        out = self.folder / "out.jsonl"
        self.tool("database", "export", self.device, out)
        self.assertEqual(out.read_text(), made.read_text())
        self.assertIn("--force", self.tool("database", "export", self.device, out, code=1))
        self.assertEqual(self.tool("database", "export", self.device, "--name", "пустая"), second)
        self.tool("database", "export", self.device, "--name", "none", code=1)

        self.tool("database", "import", self.device, made, code=1)
        self.import_databases("--replace", given=lines(ONE))
        self.assertEqual(self.exported(), second + lines(ONE))
        self.assertEqual(names_in(self.device), ["cards", "device.db", "device.lock", "object-store"])

    def test_an_import_that_fails_changes_nothing(self):
        self.import_databases(given=lines(KINDS))
        before = self.everything()
        head = json.loads(lines({**KINDS, "name": "x", "records": []}))
        good = {"id": "00010003", "value": 1}
        for bad in ("", "nonsense", "[]", "{}", '{"record": []}', '{"record": 5}', '{"record": ["x"]}',
                    '{"database": "x"}', '{"database": 5, "type": 1, "sort": []}',
                    *(json.dumps({**head, **change}) for change in (
                        {"type": -1}, {"sort": [5]}, {"database": "x" * 32}, {"database": ""}, {"sort": head["sort"] * 3})),
                    *(json.dumps({"record": [good, {**good, **change}]}) for change in (
                        {"id": 5}, {"id": "1"}, {"id": "0001000g"}, {"value": "x"}, {"value": 2 ** 31}, {"value": -2 ** 31 - 1},
                        {"value": 1.5}, {"value": None}, {"flags": 65536}, {"flags": 512},
                        {"id": "00020002", "value": 32768}, {"id": "00020012", "value": -1}, {"id": "0002001f"},
                        {"id": "0002001f", "value": "a\0b"}, {"id": "0002001f", "units": [65536]},
                        {"id": "00020041", "value": "abc"}, {"id": "00020041", "value": "zz"},
                        {"id": "00020005", "value": "x"}, {"id": "00020063", "bits": "12"})),
                    "{" * 100_000):
            with self.subTest(line=bad[:100]):
                given = lines(ONE) + (bad + "\n" if bad else lines(KINDS)[:-10])
                said = self.import_databases("--replace", given=given, code=1)
                self.assertRegex(said, r'line \d+: .*\. Nothing was imported\.\n')
        self.assertIn("before the record", self.import_databases(given=lines(KINDS).split("\n", 1)[1], code=1))
        twice = lines({**KINDS, "name": "Same"}, {**KINDS, "name": "same"})
        self.assertIn("twice", self.import_databases("--replace", given=twice, code=1))
        self.assertEqual(self.everything(), before)

    def test_a_killed_import_changes_nothing_and_the_device_is_in_use_meanwhile(self):
        self.import_databases(given=lines(KINDS))
        before = self.everything()
        half = lines({**KINDS, "name": "Half", "records": RECORDS[:2]}, {**KINDS, "name": "Last", "records": []})
        log = self.device / "device.db.changing-wal"
        with subprocess.Popen([TOOL, "database", "import", self.device, "--replace", "-"], stdin=subprocess.PIPE) as running:
            running.stdin.write(lines(ONE).encode() + half.encode())
            end = time.monotonic() + 30
            while not (log.exists() and log.stat().st_size) and time.monotonic() < end:
                # The import gathers changes for a while, so the test sends more databases until the log has some.
                more = database(f"D{end - time.monotonic()}", RECORDS[:2])
                running.stdin.write(lines(more).encode() + b"\n" * 100_000)
                running.stdin.flush()
                time.sleep(0.01)
            self.assertGreater(log.stat().st_size, 0)
            self.assertIn("open in another", self.tool("show", self.device, code=1))
            self.assertTrue(log.exists(), "what a living import uses isn't cleared away")
            running.kill()
        self.tool("show", self.device)
        self.assertEqual(self.everything(), before, "also without the files of the killed import, as large as the device")
        self.import_databases("--replace", given=lines(KINDS))
        self.assertEqual(self.everything(), before)

    def test_the_registry_takes_all_that_a_file_names_or_nothing(self):
        for name, keys in (("1.reg", '[HKEY_USERS\\a]\r\n"kept"="1"\r\n"changed"="2"\r\n'),
                           ("2.reg", '[HKEY_USERS\\A]\n"Changed"=dword:5\n')):
            self.tool("registry", "import", self.device, self.registry_file(name, keys))
        before = self.everything()
        self.assertIn('[HKEY_USERS\\a]\r\n"changed"=dword:00000005\r\n"kept"="1"\r\n', before[1].decode("utf-16"))
        for name, body, fault in (("cut", '[HKEY_USERS\\b]\n@="x"\n"y"="z', "line 5: a text isn't closed"),
                                  ("root", "[HKEY_NONE]\n", "line 3: the key is below none of the predefined ones"),
                                  ("all", "[-HKEY_USERS]\n", "line 3: a predefined key can't be deleted"),
                                  ("deleted", '[-HKEY_USERS\\a]\n"x"="y"\n', "line 4: there is no key before the value"),
                                  ("late", '[-HKEY_USERS\\a]\n[HKEY_USERS]\n"kept"=-x\n', "line 5: the line goes on"),
                                  ("number", '[HKEY_USERS]\n"y"=dword:\n', "line 4: a hexadecimal number is missing")):
            with self.subTest(name):
                said = self.tool("registry", "import", self.device, self.registry_file(name, body), code=1)
                self.assertIn(f'{name}", {fault}', said)
        self.assertEqual(self.everything(), before)

        other, out = self.folder / "other", self.folder / "out.reg"
        self.tool("init", other, "--demonstration")
        self.tool("registry", "export", other, out)
        self.tool("registry", "import", self.device, out)
        self.assertIn("Robin Vähä", self.registry().decode("utf-16"))

    def test_a_registry_file_is_read_in_each_encoding_and_can_delete_keys_and_values(self):
        def imported(text, **more):
            self.tool("registry", "import", self.device, self.file("in.reg", text), **more)
            text = self.registry().decode("utf-16").replace("\r\n", "\n")
            return text.split("[HKEY_USERS]\n")[1].split("\n; End")[0]

        keys = '[HKEY_USERS\\a]\n"x"="y"\n"ü"="ö"\n\n[HKEY_USERS\\a\\b]\n"c"=hex(2):64,00,00,00\n'
        for text, mark in ((REGISTRY_HEAD + keys, "utf-16-le"), (REGISTRY_HEAD + keys, "utf-8"), (REGISTRY_HEAD[1:] + keys, "utf-8"),
                           (("REGEDIT4\n\n" + keys).replace("64,00,00,00", "64,00"), "utf-8")):
            self.assertEqual(imported(text.encode(mark)), "\n" + keys)
            self.assertEqual(imported(REGISTRY_HEAD + "[-hkey_users\\A]\n[-HKEY_USERS\\none\\at all]\n"), "")
        guessed = self.device_tool("registry", "import", self.device, self.file("in.reg", (REGISTRY_HEAD[1:] + keys).encode("cp1252")))
        self.assertEqual(guessed.said, "quillbox-device: The file isn't UTF-8 and was read as Windows-1252.\n")
        # A deleted key can be made again, and the deletion of a missing value is no error.
        self.assertEqual(imported(REGISTRY_HEAD + '[HKEY_USERS\\a]\n"X"=-\n"none"=-\n[-HKEY_USERS\\a\\b]\n[HKEY_USERS\\a\\b\\d]\n'),
                         '\n[HKEY_USERS\\a]\n"ü"="ö"\n\n[HKEY_USERS\\a\\b]\n\n[HKEY_USERS\\a\\b\\d]\n')
        for bad in (b"REGEDIT4\n[HKEY_USERS]\n\"a\"=\"\x81\"\n", b"REGEDIT4\n[HKEY_USERS]\n@=hex(1):e4,00\n", b"REGEDIT5\n", b""):
            self.assertRegex(self.tool("registry", "import", self.device, self.file("bad.reg", bad), code=1), "Nothing was imported")

    def test_an_import_changes_the_named_database_alone_and_reports_how_many_records_it_replaced(self):
        people = database("People", RECORDS[:3], 24)
        self.import_databases(given=lines(people, {**people, "name": "Others"}))
        self.assertIn("--name", self.import_databases("--form", "vcard", "--add", given=CARD, code=1))
        self.import_databases("--form", "vcard", "--add", "--name", "People", given=CARD)
        self.assertIn("People: type 24, 4 records", self.tool("database", "list", self.device))
        csv = ["--form", "csv", "--name", "people"]
        self.assertEqual(self.import_databases(*csv, "--add", given="LastName\na\n"), "People: 1 record added\n")
        self.assertEqual(self.import_databases(*csv, "--replace", given="LastName,Town\n"), "People: 5 records replaced by 0\n")
        self.assertIn("Others: type 24, 3 records", self.tool("database", "list", self.device))

    def test_cards_are_remembered_and_forgotten(self):
        stick = self.folder / "stick"
        stick.mkdir()
        kept = self.file("stick/a", "abc")
        self.tool("card", "add", self.device, "Stick", stick, "--capacity", 5000)
        (self.device / "object-store" / "My Documents").mkdir()
        self.assertIn("would be hidden", self.tool("card", "add", self.device, "My Documents", self.folder, code=1))
        for name, folder in (("Docs", stick),  # one folder under two names
                             ("a/b", self.folder), ("", self.folder), ("Gone", self.folder / "none")):
            self.tool("card", "add", self.device, name, folder, code=1)
        for capacity in ("-5", "9223372036854775808", "5k", ""):
            self.device_tool("card", "add", self.device, "Full", self.folder, "--capacity=" + capacity, code=2)
        self.assertEqual(self.tool("card", "list", self.device), f"card    Stick = {stick}, 5000 bytes\n")
        self.assertIn("card    Stick", self.tool("show", self.device))
        self.tool("card", "remove", self.device, "Stick")
        self.tool("card", "remove", self.device, "Stick", code=1)
        self.assertEqual((self.tool("card", "list", self.device), kept.read_text()), ("", "abc"))

    def test_json_has_what_the_text_says(self):
        self.import_databases(given=lines(KINDS))
        self.tool("card", "add", self.device, "Gone", self.folder, "--capacity", 5000, "--folder")
        self.file("device/object-store/a", "abc")
        (self.device / "cards" / "Card").mkdir()
        found = {"version": 1, "fileCount": 1, "bytes": 3, "cards": [{"name": "Card", "fileCount": 0, "bytes": 0}],
                 "folders": [{"name": "Gone", "folder": str(self.folder), "card": False, "capacity": 5000, "there": True}],
                 "databases": [{"name": "All kinds", "type": 7, "recordCount": 303}], "registryRefused": False}
        self.assertEqual(json.loads(self.tool("show", self.device, "--json")), found)
        for command, name in (("database", "databases"), ("card", "folders")):
            self.assertEqual(json.loads(self.tool(command, "list", self.device, "--json")), {"version": 1, name: found[name]})
        self.assertEqual(self.tool("show", self.device), "object store: 1 file, 3 bytes\ncard Card: 0 files, 0 bytes\n"
                         f"folder  Gone = {self.folder}, 5000 bytes\ndatabase All kinds: type 7, 303 records\n")

    def test_only_a_device_is_opened_and_only_an_empty_folder_becomes_one(self):
        letter, missing = self.file("letter", "mine"), self.folder / "missing"
        for no_device in (self.folder, missing):
            for command in (["show"], ["card", "list"], ["database", "list"], ["registry", "export"]):
                self.tool(*command, no_device, code=2)
        for taken in (self.folder, self.device):
            self.tool("init", taken, code=1)
        self.assertIn("can't be read: No such file or directory.", self.tool("database", "import", self.device, missing, code=2))
        self.assertEqual((names_in(self.folder), letter.read_text()), (["device", "letter"], "mine"))

    def test_no_control_character_of_a_name_reaches_the_terminal(self):
        name = "\x1b]0;x\x07\u202e\x9b"
        evil = self.file("evil.jsonl", lines(database(name)))
        self.tool("database", "import", self.device, evil)
        (self.folder / name).mkdir()
        (self.device / "cards" / (name + "x")).mkdir()
        self.tool("card", "add", self.device, name, self.folder / name)
        for command, code in ((["database", "list", self.device], 0), (["show", self.device], 0),
                              (["card", "list", self.device], 0), (["show", self.folder / name], 2),
                              (["card", "add", self.device, "x", name], 1), (["card", "remove", self.device, name + "y"], 1),
                              (["card", "add", self.device, name + "x", self.folder], 1),
                              (["database", "import", self.device, evil], 1), (["database", "import", self.device, name], 2),
                              (["database", "export", self.device, "--name", name + "y"], 1),
                              (["database", "export", self.device, self.folder / name], 1)):
            with self.subTest(command=command):
                said = self.tool(*command, code=code)
                self.assertFalse(set("\x1b\x07\u202e\x9b") & set(said), said)
        self.assertNotIn("\x1b", self.device_tool("show", self.device, name, code=2).said)


class HostTest(DeviceToolTest):
    """Commands whose streams, files or calls the host makes fail."""

    def test_output_that_cannot_be_printed_is_no_success(self):
        made = self.file("in.jsonl", lines(KINDS))
        self.tool("card", "add", self.device, "Stick", self.folder)
        commands = (["database", "import", "--replace", self.device, made], ["show", self.device], ["--help"],
                    ["database", "list", self.device], ["card", "list", self.device], ["database", "export", self.device],
                    ["database", "export", self.device, "/dev/stdout"], ["registry", "export", self.device])
        self.assert_fails_where_output_takes_nothing("quillbox-device", commands,
                                                     r"quillbox-device: .*tandard output.* can't be written\.")
        self.assertEqual((self.device / "device.lock").read_text(), "database\n", "what was meant for the user")

    def test_input_that_cannot_be_read_is_not_taken_for_an_empty_file(self):
        folder = os.open(self.folder, os.O_RDONLY)
        self.addCleanup(os.close, folder)
        for what in ("database", "registry"):
            for start in ({"stdin": None, "preexec_fn": lambda: os.close(0)}, {"stdin": folder}):
                with self.subTest(what=what, start=start):
                    self.assertRegex(self.device_tool(what, "import", self.device, "-", code=1, **start).said,
                                     r'^quillbox-device: "-".* can\'t be read.*\. Nothing was imported\.\n$')
        # This file can be opened, but each read of it fails.
        self.assertIn("can't be read", self.tool("registry", "import", self.device, "/proc/self/mem", code=1))

    @needs_strace
    def test_a_folder_that_cannot_be_read_is_not_shown_as_empty(self):
        (self.device / "object-store" / "closed").mkdir()
        self.tool("show", self.device)
        done = traced([TOOL, "show", self.device], "?access,?faccessat", "?access,?faccessat:error=EACCES")
        self.assertEqual(done.returncode, 1)
        self.assertIn(b"1 folder can't be read", done.stderr)

    @needs_strace
    def test_an_export_is_on_the_disk_and_a_flush_that_fails_leaves_the_old_file_or_none(self):
        self.import_databases(given=lines(KINDS))
        out, new = self.folder / "out", self.folder / "new"
        for what in ("database", "registry"):
            export = [TOOL, what, "export", self.device]
            done = traced([*export, out], "fsync,rename")
            self.assertEqual((done.returncode, done.calls), (0, ["fsync", "rename", "fsync"]))
            out.unlink()
            with out.open("wb") as printed:
                done = traced(export, "fsync", "fsync:error=EIO", capture_output=False, stdout=printed, stderr=subprocess.PIPE)
                self.assertEqual(done.returncode, 1, done.stderr)
            out.write_text("old")
            for target in (out, new):
                for call, why in (("fsync", ""), ("rename", ": Input/output error")):
                    done = traced([*export, target, "--force"], call, call + ":error=EIO")
                    self.assertEqual((done.returncode, done.stderr.decode()),
                                     (1, f'quillbox-device: "{target}" can\'t be written{why}.\n'))
            self.assertEqual((out.read_text(), names_in(self.folder)), ("old", ["device", "out"]))
            done = traced([*export, out, "--force"], "fsync", "fsync:error=EIO:when=2")
            self.assertEqual(done.returncode, 1)
            self.assertIn(b"a power cut may lose it", done.stderr)
            out.unlink()

    @needs_strace
    def test_an_import_that_cannot_be_put_on_the_disk_changes_nothing_also_not_at_the_next_start(self):
        before = self.everything()
        for command in (["database", "import", self.device, self.file("in.jsonl", lines(KINDS))],
                        ["registry", "import", self.device, self.registry_file("in.reg", "[HKEY_USERS\\new]\r\n")]):
            # With the second injection, a commit fails and its log stays.
            for injected in (["fsync,fdatasync:error=EIO"], ["fdatasync:error=EIO:when=2+", "unlink:error=EIO"]):
                with self.subTest(command=command, injected=injected):
                    done = traced([TOOL, *command], "fsync,fdatasync,unlink", *injected)
                    self.assertEqual(done.returncode, 1)
                    self.assertRegex(done.stderr, rb"^quillbox-device: .* can't be (written|closed)")
                    self.assertEqual(self.everything(), before)

    @needs_strace
    def test_a_signal_ends_an_import_at_once_and_an_export_leaves_no_file(self):
        self.import_databases(given=lines(KINDS))
        big = "".join(f'"{number}"=hex:{",".join(["00"] * 50_000)}\n' for number in range(3))
        self.tool("registry", "import", self.device, self.registry_file("in.reg", "[HKEY_USERS]\n" + big))
        before, files = self.everything(), names_in(self.folder)
        for what in ("database", "registry"):
            done = traced([TOOL, what, "export", self.device, self.folder / "out"], "write,writev", "write,writev:signal=INT:when=1")
            self.assertEqual((done.returncode, names_in(self.folder)), (-signal.SIGINT, files), done.stderr)
        half = lines(ONE).encode() + b'{"record":[{"id":"00010041","value":"' + b"00" * 100_000
        for number in (signal.SIGINT, signal.SIGTERM):
            with subprocess.Popen([TOOL, "database", "import", self.device, "--replace", "-"], stdin=subprocess.PIPE) as running:
                running.stdin.write(half)
                running.stdin.flush()
                while not (self.device / "device.db.changing").exists():
                    time.sleep(0.01)
                running.send_signal(number)
                self.assertEqual(running.wait(10), -number)
        self.assertEqual(self.everything(), before)

    def test_a_device_that_cannot_be_written_can_be_read(self):
        self.import_databases(given=lines(KINDS))
        self.tool("card", "add", self.device, "Stick", self.folder)
        medium = self.folder / "medium"
        with contextlib.closing(sqlite3.connect(self.device / "device.db")) as stored:
            stored.execute("INSERT INTO remembered_folder VALUES ('Log', X'2F', 1, NULL)")
            stored.commit()
            shutil.copytree(self.device, medium)  # while the log exists, as after a kill
        self.assertGreater((medium / "device.db-wal").stat().st_size, 0)
        files = files_below(medium)
        for name in files:
            (medium / name).chmod(0o444)  # as on a CD
        script = 'mount --bind "$1" "$1" && mount -o remount,ro,bind "$1" && shift && exec setpriv --bounding-set -dac_override "$@"'

        def read(*command, code=0):
            done = subprocess.run(["unshare", "--mount", "sh", "-c", script, "-", medium, TOOL, *command], capture_output=True, check=False)
            self.assertEqual(done.returncode, code, done.stderr)
            return done.stderr.decode() if code else done.stdout

        if subprocess.run(["unshare", "--mount", "true"], check=False, capture_output=True).returncode != 0:
            self.skipTest("mounts aren't allowed here")
        self.assertIn(b"card    Log = /", read("show", medium))
        self.assertIn(b"card    Stick", read("card", "list", medium))
        self.assertIn(b"All kinds: type 7, 303 records", read("database", "list", medium))
        self.assertEqual(read("database", "export", medium).decode(), lines(KINDS))
        self.assertEqual(read("registry", "export", medium), self.registry())
        self.assertIn("can't be written", read("card", "remove", medium, "Stick", code=1))
        with open(medium / "device.lock", "rb") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            self.assertIn("is open in another Quillbox", read("show", medium, code=1))
        self.assertEqual(files_below(medium), files)

    @contextlib.contextmanager
    def keeps_rights(self, path):
        """Expects that the block replaces the file, and that the file keeps its owner and its mode, which allows only
        the owner."""
        path.chmod(0o600)
        if os.geteuid() == 0:
            os.chown(path, 1234, 1234)
        before = path.stat()
        yield
        after = path.stat()
        self.assertNotEqual(after.st_ino, before.st_ino)
        self.assertEqual((after.st_mode, after.st_uid, after.st_gid), (before.st_mode, before.st_uid, before.st_gid))

    def test_what_an_export_or_import_replaces_keeps_its_rights_its_links_and_its_neighbours(self):
        out, link, neighbour = self.file("out.jsonl", "old"), self.folder / "link", self.file("out.jsonl.part", "mine")
        link.symlink_to("out.jsonl")
        self.tool("database", "export", self.device, link, code=1)
        self.assertEqual(out.read_text(), "old")
        with self.keeps_rights(out):
            self.tool("database", "export", self.device, link, "--force")
        self.assertEqual((out.read_text(), neighbour.read_text()), ("", "mine"))
        self.assertEqual(names_in(self.folder), ["device", "link", "out.jsonl", "out.jsonl.part"])
        stored = self.device / "device.db"
        with self.keeps_rights(stored):
            self.import_databases(given=lines(KINDS))
        real = stored.rename(self.folder / "real.db")
        stored.symlink_to(real)
        with self.keeps_rights(real):
            self.import_databases("--replace", given=lines(ONE))
        self.assertTrue(stored.is_symlink() and link.is_symlink())
        self.assertEqual(self.exported(), lines(ONE))
        out.unlink()
        self.assertIn("leads nowhere", self.tool("database", "export", self.device, link, "--force", code=1))
        self.assertTrue(link.is_symlink())
        self.assertIn("is a folder", self.tool("database", "export", self.device, self.folder, "--force", code=1))

    def test_an_export_writes_to_what_is_no_file_and_replaces_nothing_there(self):
        self.import_databases(given=lines(KINDS))
        pipe, null = self.folder / "pipe", self.folder / "null"
        os.mkfifo(pipe)
        null.symlink_to("/dev/null")
        for force in ([], ["--force"]):
            with open(os.open(pipe, os.O_RDONLY | os.O_NONBLOCK), "rb") as reader:
                self.tool("database", "export", self.device, pipe, *force)
                self.assertEqual(reader.read().decode(), lines(KINDS))
            self.tool("database", "export", self.device, null, *force)
            self.assertTrue(pipe.is_fifo() and null.is_symlink())
        self.assertEqual(self.tool("database", "export", self.device, "/dev/stdout"), lines(KINDS))
        out = self.file("out", "before\n")
        with out.open("a") as appended:
            self.device_tool("database", "export", self.device, "/dev/stdout", stdout=appended)
        self.assertEqual(out.read_text(), "before\n" + lines(KINDS))
