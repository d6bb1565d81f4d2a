#!/usr/bin/env python3
"""quillbox-set as its users run it: on good sets, on sets with every kind of fault, on sets that mean harm.

The sets come from independent_set.py.
"""
import json
import os
import pathlib
import resource
import signal
import subprocess
import sys
import tempfile
import unittest

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent))
import independent_set
from host_trouble import needs_strace, traced, unwritable_outputs
from independent_set import DATABASE, FILE, REGISTRY, entry_bytes, image_bytes, pack_stream, registry_bytes

TOOL = None
HEAD = bytes.fromhex("03000000 480069000000")


class Set:
    """A set in the making: what add() puts in is good, and can be spoilt."""

    def __init__(self):
        self.listed = HEAD
        self.data = b""

    def add(self, kind, name, raw=None, stream=None):
        """Without `raw` a database without records, or a registry without keys of its own."""
        if raw is None:
            raw = image_bytes(name) if kind == DATABASE else registry_bytes({})
        stream = pack_stream(raw) if stream is None else stream
        self.listed += entry_bytes(kind, name, len(self.data), len(self.data) + len(stream))
        self.data += stream
        return self

    def write(self, folder):
        path = pathlib.Path(folder, "QLBX0001.QLT")
        path.write_bytes(self.listed)
        path.with_suffix(".QDT").write_bytes(self.data)
        return path


class ToolTest(unittest.TestCase):
    def setUp(self):
        self.temporary = tempfile.TemporaryDirectory(prefix="quillbox-set-test.")
        self.folder = pathlib.Path(self.temporary.name)
        self.addCleanup(self.temporary.cleanup)

    def run_tool(self, *arguments):
        done = subprocess.run([TOOL, *map(str, arguments)], capture_output=True, check=False)
        self.assertIn(done.returncode, (0, 1, 2), done.stderr)
        done.text = done.stdout.decode()
        return done

    def make_source(self):
        source = self.folder / "source"
        (source / "My Documents" / "deep").mkdir(parents=True)
        (source / "My Documents" / "a.txt").write_bytes(b"Quillbox " * 30000)
        (source / "My Documents" / "deep" / "brief \u00e9\u4e16.txt").write_bytes(b"hi")
        (source / "empty").write_bytes(b"")
        (source / "random").write_bytes(os.urandom(200000))
        return source


class GoodSetTest(ToolTest):
    def test_set_made_by_hand_is_sound_and_comes_back_whole(self):
        source = self.make_source()
        path = self.folder / "QLBX0042.QLT"
        image, registry = self.folder / "Tasks.CDB", self.folder / "registry"
        image.write_bytes(image_bytes("Tasks", 26, [], [[(0x37001F, "Sand the rudder")]]))
        registry.write_bytes(registry_bytes({}))
        independent_set.write_set(path, [source], "by hand", [image], [registry])
        for name in (path, path.with_suffix(".QDT"), path.with_suffix("")):
            done = self.run_tool("verify", name)
            self.assertEqual((done.returncode, done.text), (0, "Sound: 6 items.\n"))
        out = self.folder / "out"
        self.assertEqual(self.run_tool("extract", "--raw", path, out).returncode, 0)
        for name, original in independent_set.files_below(source):
            self.assertEqual(out.joinpath(*name[1:].split("\\")).read_bytes(), original.read_bytes(), name)
        self.assertEqual((out / "registry.reg-image").read_bytes(), registry.read_bytes())
        self.assertEqual((out / "Tasks.CDB").read_bytes(), image.read_bytes())

    def test_list_and_its_json_tell_every_item(self):
        path = Set().add(FILE, "\\a", b"x" * 1000).add(DATABASE, "Contacts").add(REGISTRY, "Contacts").write(self.folder)
        image, registry = len(image_bytes("Contacts")), len(registry_bytes({}))
        lines = self.run_tool("list", path, "--sizes").text.splitlines()
        self.assertEqual(lines[0], "Hi")
        self.assertEqual(lines[2].split(), ["Kind", "Packed", "bytes", "Bytes", "Name"])
        self.assertEqual([line.split()[:1] + line.split()[2:] for line in lines[3:]],
                         [["file", "1000", "\\a"], ["database", str(image), "Contacts"], ["registry", str(registry), "registry"]])
        told = json.loads(self.run_tool("list", path, "--json", "--sizes").text)
        self.assertEqual(told["comment"], "Hi")
        self.assertEqual([(item["name"], item["bytes"]) for item in told["items"]],
                         [("\\a", 1000), ("Contacts", image), ("registry", registry)])
        self.assertEqual(json.loads(self.run_tool("verify", path, "--json").text),
                         {"faults": [], "warnings": 0, "items": 3, "sound": True})

    def test_only_what_was_asked_for_is_extracted(self):
        path = Set().add(FILE, "\\a\\x.txt", b"1").add(FILE, "\\a\\y.doc", b"2").add(DATABASE, "db").write(self.folder)
        out = self.folder / "out"
        self.assertEqual(self.run_tool("extract", path, out, "/a/*.t?t", "db").returncode, 0)
        self.assertEqual(sorted(p.name for p in out.rglob("*") if p.is_file()), ["db.jsonl", "x.txt"])
        done = self.run_tool("extract", path, out, "\\a\\z")
        self.assertEqual(done.returncode, 1)
        self.assertIn("no item \\a\\z", done.stderr.decode())

    def test_existing_files_are_replaced_by_force_alone_and_never_by_damage(self):
        good = Set().add(FILE, "\\a", b"new").write(self.folder)
        out = self.folder / "out"
        out.mkdir()
        (out / "a").write_bytes(b"old")
        done = self.run_tool("extract", good, out)
        self.assertEqual((done.returncode, (out / "a").read_bytes()), (1, b"old"))
        self.assertIn("exists already", done.text)
        self.assertEqual(self.run_tool("extract", good, out, "--force").returncode, 0)
        self.assertEqual((out / "a").read_bytes(), b"new")

        cut = Set().add(FILE, "\\a", b"", pack_stream(b"newer")[:-7]).write(self.folder)
        self.assertEqual(self.run_tool("extract", cut, out, "--force").returncode, 1)
        self.assertEqual((out / "a").read_bytes(), b"new")
        (out / "a").unlink()
        self.assertEqual(self.run_tool("extract", cut, out).returncode, 1)
        self.assertFalse((out / "a").exists(), "half a file must not pass for one")
        self.assertEqual(self.run_tool("extract", cut, out, "--keep-damaged").returncode, 1)
        self.assertEqual((out / "a").read_bytes(), b"newer")

    @needs_strace
    def test_a_kill_leaves_the_old_file_or_none_and_never_half(self):
        path = Set().add(FILE, "\\deep\\a", os.urandom(300000)).write(self.folder)
        out, target = self.folder / "out", self.folder / "out" / "deep" / "a"

        def killed(*more):
            done = traced([TOOL, "extract", path, out, *more], "pwrite64", "pwrite64:signal=KILL:when=2")
            self.assertEqual(done.returncode, -signal.SIGKILL)

        killed()
        self.assertFalse(target.exists())
        target.write_bytes(b"old")
        killed("--force")
        self.assertEqual(target.read_bytes(), b"old")

    def test_a_limit_of_a_files_size_is_told_and_leaves_nothing_new(self):
        path = Set().add(FILE, "\\sub\\deep\\a", os.urandom(300000)).add(FILE, "\\b", b"1").write(self.folder)
        limit = (200000, 200000)
        done = subprocess.run([TOOL, "extract", path, self.folder / "out"], capture_output=True, check=False,
                              preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, limit))
        self.assertEqual((done.returncode, done.stdout.decode().splitlines()[0]), (1, "file \\sub\\deep\\a: the disk is full"))
        self.assertEqual([p.name for p in (self.folder / "out").iterdir()], ["b"])

    def test_an_item_that_is_not_written_leaves_no_folders_behind(self):
        damaged = Set().add(FILE, "\\sub\\deep\\a", stream=b"").add(FILE, "\\old\\new\\a", stream=pack_stream(b"x")[:-7])
        (self.folder / "out" / "old").mkdir(parents=True)
        self.assertEqual(self.run_tool("extract", damaged.write(self.folder), self.folder / "out").returncode, 1)
        self.assertEqual([str(p.relative_to(self.folder)) for p in (self.folder / "out").rglob("*")], ["out/old"])

    @needs_strace
    def test_what_was_extracted_is_on_the_disk_and_a_flush_that_fails_is_told(self):
        path = Set().add(FILE, "\\deep\\a", b"1").add(FILE, "\\b", b"2").add(DATABASE, "c").write(self.folder)
        done = traced([TOOL, "extract", path, self.folder / "out"], "renameat2,syncfs")
        self.assertEqual((done.returncode, done.calls), (0, ["renameat2"] * 3 + ["syncfs"]))
        for form in ([], ["--json"]):
            done = traced([TOOL, "extract", "--force", path, self.folder / "out", *form], "syncfs", "syncfs:error=EIO")
            self.assertEqual((done.returncode, done.stderr.decode()),
                             (1, "quillbox-set: what was written may be missing from the disk: the disk failed\n"))

    def test_names_in_small_letters_hide_a_set_or_a_file_of_another_case_passes_for_its_data(self):
        path = Set().add(FILE, "\\a", b"1").write(self.folder)
        for lists, data, named in (("qlbx0001.qlt", "qlbx0001.qdt", "QLBX0001"), ("qlbx0001.qlt", "qlbx0001.qdt", "qlbx0001.QDT"),
                                   ("Qlbx0001.qlt", "QLBX0001.QDT", "qlbx0001.qlt"), ("QLBX0001.QLT", "qlbx0001.qdt", "QLBX0001.qlt")):
            place = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
            (place / lists).write_bytes(path.read_bytes())
            (place / data).write_bytes(path.with_suffix(".QDT").read_bytes())
            self.assertEqual(self.run_tool("verify", place / named).text, "Sound: 1 item.\n", (lists, data, named))
        for name in ("QLBX0001", "qlbx0001.QLT"):  # both are there now, each with its own
            for made in ("QLBX0001.QLT", "qlbx0001.qlt", "QLBX0001.QDT", "qlbx0001.qdt"):
                source = path if made.lower().endswith("qlt") else path.with_suffix(".QDT")
                (place / made).write_bytes(source.read_bytes() if made.isupper() == name.isupper() else b"none")
            self.assertEqual(self.run_tool("verify", place / name).returncode, 0 if name.isupper() else 1)

    def test_a_folder_is_taken_for_no_set_though_sets_lie_in_it(self):
        inner = self.folder / "QUILBOX"
        inner.mkdir()
        path = Set().add(FILE, "\\a", b"1").write(inner)
        other = inner / "qlbx0002.qlt"
        other.write_bytes(bytes.fromhex("07000000") + "one\r\na\0".encode("utf-16-le"))
        (inner / "QLBX0001.log").write_bytes(b"")
        for folder in (self.folder, inner, f"{inner}/"):
            done = self.run_tool("list", folder)
            self.assertEqual((done.returncode, done.text), (0, f"{path}  Hi\n{other}  one\n"))
            for command in (["verify", folder], ["extract", folder, self.folder / "out"]):
                done = self.run_tool(*command)
                self.assertEqual(done.returncode, 2)
                self.assertIn("QUILBOX is a folder; name one of its sets: QLBX0001.QLT, qlbx0002.qlt\n".encode(),
                              done.stderr.replace(b"QUILBOX/ ", b"QUILBOX "))
        self.assertEqual(json.loads(self.run_tool("list", inner, "--json").text),
                         {"sets": [{"list": str(path), "comment": "Hi"}, {"list": str(other), "comment": "one"}], "count": 2})
        self.assertFalse((self.folder / "out").exists())

    @needs_strace
    def test_a_folder_that_cannot_be_read_is_taken_for_one_without_sets(self):
        Set().write(self.folder)
        done = traced([TOOL, "list", self.folder], "getdents64", "getdents64:error=EIO")
        self.assertEqual((done.returncode, done.stderr.decode()),
                         (2, f"quillbox-set: this folder couldn't be read to its end: {self.folder}\n"))

    def test_nothing_that_could_be_unpacked_becomes_an_empty_file(self):
        damaged = Set().add(FILE, "\\empty", b"").add(FILE, "\\none", stream=b"")
        damaged.add(FILE, "\\magic", stream=pack_stream(b"x")[:5]).add(FILE, "\\x", stream=pack_stream(b"x")[:-7])
        damaged.add(DATABASE, "Tasks", image_bytes("Tasks", 26, [], [[(0x10003, 1)]])[:-1]).add(REGISTRY, "", b"")
        for form in ([], ["--raw"]):
            out = pathlib.Path(tempfile.mkdtemp(dir=self.folder))
            done = self.run_tool("extract", "--keep-damaged", *form, damaged.write(self.folder), out)
            self.assertEqual(done.returncode, 1)
            self.assertEqual({p.name: p.stat().st_size > 0 for p in out.iterdir()},
                             {"empty": False, "x": True} if not form else {"empty": False, "x": True, "Tasks.CDB": True, "registry.reg-image": False})

    def test_an_empty_set_passes_for_a_backup(self):
        path = Set().write(self.folder)
        done = self.run_tool("verify", path)
        self.assertEqual((done.returncode, done.text), (0, "warning: the set is empty\nSound: 0 items, 1 warning.\n"))
        self.assertEqual(json.loads(self.run_tool("verify", path, "--json").text)["faults"],
                         [{"reason": "the set is empty", "warning": True}])

    def test_the_registry_has_another_name_in_each_command(self):
        path = Set().add(REGISTRY, "Tasks Database", stream=b"").write(self.folder)
        self.assertIn("item 1, registry: no stream", self.run_tool("verify", path).text)
        self.assertIn("\nregistry: no stream", "\n" + self.run_tool("extract", path, self.folder / "out", "registry").text)
        self.assertEqual(self.run_tool("list", path).text.splitlines()[-1].split(), ["registry", "0", "registry"])
        self.assertEqual(json.loads(self.run_tool("verify", path, "--json").text)["faults"][0]["name"], "registry")

    def test_usage_and_missing_files_give_2(self):
        self.assertEqual(self.run_tool().returncode, 2)
        self.assertEqual(self.run_tool("verify").returncode, 2)
        self.assertEqual(self.run_tool("list", self.folder / "none").returncode, 2)
        self.assertEqual(self.run_tool("extract", self.folder / "none", self.folder / "out").returncode, 2)
        self.assertFalse((self.folder / "out").exists())
        self.assertIn(b"there is no set in the folder", self.run_tool("list", self.folder).stderr)
        self.assertEqual(self.run_tool("list", self.folder).returncode, 2)
        self.assertEqual(self.run_tool("--help").returncode, 0)
        self.assertIn("no checksums", self.run_tool("verify", "--help").text, "what sound doesn't mean")
        self.assertIn(b"quillbox-set ", self.run_tool("--version").stdout)

    def test_what_cannot_be_printed_is_no_success(self):
        path = Set().add(FILE, "\\a", b"1").write(self.folder)
        for name, output in unwritable_outputs():
            for command in (["list", path], ["list", "--json", path], ["list", self.folder], ["verify", path], ["--help"],
                            ["extract", "--force", path, self.folder]):
                with self.subTest(output=name, command=command):
                    done = subprocess.run([TOOL, *command], stderr=subprocess.PIPE, check=False, **output)
                    self.assertEqual((done.returncode, done.stderr), (1, b"quillbox-set: standard output can't be written\n"))
        self.assertEqual((self.folder / "a").read_bytes(), b"1")

    def test_data_file_that_is_missing_is_a_fault(self):
        path = Set().add(FILE, "\\a", b"1").write(self.folder)
        path.with_suffix(".QDT").unlink()
        for command in (["verify", path], ["list", path], ["extract", path, self.folder / "out"]):
            self.assertEqual(self.run_tool(*command).returncode, 1)
        done = self.run_tool("extract", path, self.folder / "out", "\\a")
        self.assertEqual((done.text, done.stderr.count(b"\n")), ("0 items written, 1 fault.\n", 1), done.stderr)


class DamageTest(ToolTest):
    def faults_of(self, damaged):
        done = self.run_tool("verify", damaged.write(self.folder), "--json")
        self.assertEqual(done.returncode, 1)
        told = json.loads(done.text)
        self.assertFalse(told["sound"])
        return [(fault.get("item"), fault["reason"]) for fault in told["faults"]]

    def assert_fault(self, damaged, item, reason):
        """Exactly one fault, so that none hides another item behind it."""
        faults = self.faults_of(damaged)
        self.assertEqual(len(faults), 1, faults)
        self.assertEqual(faults[0][0], item)
        self.assertIn(reason, faults[0][1])

    def good(self):
        return Set().add(FILE, "\\a", b"1")

    def test_each_fault_of_the_list_is_named_with_its_item(self):
        for name, damaged, item, reason in [
                ("empty name", self.good().add(FILE, "", b""), 2, "empty"),
                ("name above", self.good().add(FILE, "\\..\\a", b""), 2, "can't be used"),
                ("name with a star", self.good().add(FILE, "\\a*", b""), 2, "can't be used"),
                ("folder as a file", self.good().add(FILE, "\\a\\", b""), 2, "can't be used"),
                ("no backslash first", self.good().add(FILE, "b", b""), 2, "can't be used"),
                ("database that leads out", self.good().add(DATABASE, "..\\a"), 2, "can't be used"),
                ("same name twice", self.good().add(FILE, "\\b", b"").add(FILE, "\\a", b""), 3, "same name"),
                ("unknown kind", self.good().add(7, "\\b", b""), 2, "no such kind"),
                ("database before file", Set().add(DATABASE, "d").add(FILE, "\\a", b""), 2, "files come before"),
                ("two registries", Set().add(REGISTRY, "").add(REGISTRY, ""), 2, "there already"),
        ]:
            with self.subTest(name):
                self.assert_fault(damaged, item, reason)
        good = Set().add(FILE, "\\a", b"").add(FILE, "\\A", b"")  # names that differ by case are two
        for name in ("\u00c4", ".", "..", "x\\y\\plain"):
            good.add(DATABASE, name)
        self.assertEqual(self.run_tool("verify", good.write(self.folder)).returncode, 0)
        for length, code in ((251, 0), (252, 1)):  # no file's name has room for .CDB behind the longer one
            database = Set().add(DATABASE, "A" * length, image_bytes("A")).write(self.folder)
            self.assertEqual(self.run_tool("verify", database).returncode, code)

    def test_each_fault_of_bytes_and_offsets_is_named(self):
        def changed(change):
            damaged = self.good()
            change(damaged)
            return damaged

        def flag(damaged):
            damaged.listed = damaged.listed[:11] + b"\2" + damaged.listed[12:]

        def more_data(damaged):
            damaged.data += b"x"

        def more_list(damaged):
            damaged.listed += b"\1"

        def cut_list(damaged):
            damaged.listed += entry_bytes(FILE, "\\b", 24, 24)[:-1]

        def gap(damaged):
            damaged.data += b"xx"
            damaged.add(FILE, "\\b", b"2")
            damaged.listed = damaged.listed[:-8] + (25).to_bytes(4, "little") + damaged.listed[-4:]

        def long_name(damaged):
            damaged.add(FILE, "\\" + "x" * 260, b"")

        def open_comment(damaged):
            damaged.listed = bytes.fromhex("02000000 48006900") + damaged.listed[len(HEAD):]

        for change, item, reason in [(flag, 1, "second byte"), (more_data, None, "the data file has"),
                                     (more_list, None, "ends in 1 byte that is no item"), (cut_list, 2, "ends inside"),
                                     (long_name, 2, "more than 260"), (open_comment, None, "no closing NUL")]:
            with self.subTest(change.__name__):
                self.assert_fault(changed(change), item, reason)
        self.assertIn("begins at", self.faults_of(changed(gap))[0][1])

    def test_each_fault_of_a_stream_is_named_and_the_items_around_it_are_sound(self):
        whole = pack_stream(b"hello")
        for name, stream, reason in [("magic", b"QBXPL" + whole[5:], "no stream"), ("nothing", b"", "no stream"),
                                     ("cut in a length", whole[:7], "block's length"),
                                     ("cut in a block", whole[:12], "inside a block"),
                                     ("not closed", whole[:-7], "closing block is missing"),
                                     ("bytes behind", whole + b"x", "stand behind"),
                                     ("length 0", whole[:5] + bytes(4), "length 0"),
                                     ("too long", whole[:5] + b"\xff" * 4 + whole[9:], "longer than"),
                                     ("hostile block", whole[:9] + b"\x40" + whole[10:], "doesn't unpack")]:
            with self.subTest(name):
                self.assert_fault(self.good().add(FILE, "\\b", b"", stream).add(FILE, "\\c", b"3"), 2, reason)

    def test_list_cut_at_every_byte_is_unsound_and_never_a_crash(self):
        whole = Set().add(FILE, "\\a", b"1").add(DATABASE, "d").add(REGISTRY, "")
        for cut in range(len(whole.listed)):
            damaged = Set()
            damaged.listed, damaged.data = whole.listed[:cut], whole.data
            path = damaged.write(self.folder)
            self.assertEqual(self.run_tool("verify", path).returncode, 1, cut)


class HarmTest(ToolTest):
    def test_nothing_is_written_outside_the_folder(self):
        outside = self.folder / "outside"
        out = self.folder / "out"
        outside.mkdir()
        out.mkdir()
        (out / "link").symlink_to(outside)
        harmful = ["\\..\\outside\\x", "\\a\\..\\..\\outside\\x", "\\link\\x", "..\\outside\\x", "\\/../outside/x",
                   str(outside / "x"), "\\", "\\a\\"]
        crafted = Set().add(FILE, "\\good", b"1")
        for name in harmful:
            crafted.add(FILE, name, b"harm")
        crafted.add(DATABASE, "..\\..\\outside\\x")
        done = self.run_tool("extract", crafted.write(self.folder), out, "--json")
        told = json.loads(done.text)
        self.assertEqual(done.returncode, 1)
        self.assertEqual(told["faults"], len(harmful))
        self.assertEqual(list(outside.iterdir()), [])
        self.assertEqual(sorted(p.name for p in out.iterdir() if p.is_file()), [".._.._outside_x.jsonl", "good"])
        self.assertEqual(sorted(p.name for p in self.folder.iterdir()), ["QLBX0001.QDT", "QLBX0001.QLT", "out", "outside"])

    def test_a_set_extracted_over_itself_stays(self):
        path = Set().add(FILE, "\\QLBX0001.QDT", b"harm").add(FILE, "\\QLBX0001.QLT", b"harm").write(self.folder)
        before = path.with_suffix(".QDT").read_bytes()
        self.assertEqual(self.run_tool("extract", path, self.folder, "--force").returncode, 1)
        self.assertEqual(path.with_suffix(".QDT").read_bytes(), before)
        self.assertNotEqual(path.read_bytes(), b"harm")

    def test_no_control_character_of_a_set_reaches_the_terminal(self):
        crafted = Set()
        name = "\\a\x1b[2J\x9b\x7f\u202egpj"
        crafted.listed = bytes.fromhex("05000000 1b005d000a00790000 00")
        crafted.add(FILE, name, b"").add(FILE, "\\b\x07", b"", b"none").add(FILE, "\ud800", b"")
        path = crafted.write(self.folder)
        for command in (["list", path], ["verify", path], ["extract", path, self.folder / "out"],
                        ["extract", path, self.folder / "out", "\\\x1b"]):
            done = self.run_tool(*command)
            shown = (done.stdout + done.stderr).decode()
            self.assertFalse([c for c in shown if c != "\n" and (c < " " or "\x7f" <= c < "\xa0" or c == "\u202e")], shown)
        self.assertIn("<U+001B>", self.run_tool("list", path).text)
        self.assertNotIn(b"\x1b", self.run_tool("list", "no \x1b[2J").stderr)
        self.assertEqual(json.loads(self.run_tool("list", path, "--json").text)["items"][0]["name"], name)

    def test_lengths_of_4_gigabytes_end_where_the_file_ends(self):
        for listed in (b"\xff" * 4 + b"x", HEAD + b"\1\1" + b"\xff" * 4, HEAD + b"\1\1" + b"\0\0\0\x80" + bytes(100)):
            crafted = Set()
            crafted.listed = listed
            path = crafted.write(self.folder)
            self.assertEqual(self.run_tool("verify", path).returncode, 1)
            self.assertEqual(self.run_tool("list", path).returncode, 0)


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
