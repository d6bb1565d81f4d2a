"""quillbox-set as its users run it: on sound sets, on sets with every kind of fault, on malicious sets.

The sets come from independent_set.py.
"""
import json
import os
import resource
import signal

from companions import BIN, CompanionTest, files_below, names_in
from host_trouble import needs_strace, traced
from independent_set import DATABASE, FILE, REGISTRY, Set, entry_bytes, image_bytes, pack_stream, registry_bytes

TOOL = BIN / "quillbox-set"
CUT = -7  # as the end of a slice, it cuts off a stream's closing block


class SetToolTest(CompanionTest):
    def setUp(self):
        super().setUp()
        self.out = self.folder / "out"

    def one_file(self, content=b"1"):
        return Set().add(FILE, "\\a", content)


class CommandTest(SetToolTest):
    def test_set_made_by_hand_is_sound_and_comes_back_whole(self):
        contents = {"My Documents/a.txt": b"Quillbox " * 30000, "My Documents/deep/brief \u00e9\u4e16.txt": b"hi",
                    "empty": b"", "random": os.urandom(200000)}
        made = Set()
        for name, content in contents.items():
            made.add(FILE, "\\" + name.replace("/", "\\"), content)
        image = image_bytes("Tasks", 26, [], [[(0x37001F, "Sand the rudder")]])
        path = made.add(DATABASE, "Tasks", image).add(REGISTRY, "").write(self.folder)
        for name in (path, path.with_suffix(".QDT"), path.with_suffix("")):
            self.assertEqual(self.set_tool("verify", name).text, "Sound: 6 items, not sealed.\n")
        self.set_tool("extract", "--raw", path, self.out)
        self.assertEqual(files_below(self.out), {**contents, "Tasks.CDB": image, "registry.reg-image": registry_bytes({})})

    def test_list_names_every_item_also_as_json(self):
        path = self.one_file(b"x" * 1000).add(DATABASE, "Contacts").add(REGISTRY, "Contacts").write(self.folder)
        image, registry = len(image_bytes("Contacts")), len(registry_bytes({}))
        lines = self.set_tool("list", path, "--sizes").text.splitlines()
        self.assertEqual(lines[0], "Hi")
        self.assertEqual(lines[2].split(), ["Kind", "Packed", "bytes", "Bytes", "Name"])
        self.assertEqual([line.split()[:1] + line.split()[2:] for line in lines[3:]],
                         [["file", "1000", "\\a"], ["database", str(image), "Contacts"],
                          ["registry", str(registry), "registry"]])
        found = json.loads(self.set_tool("list", path, "--json", "--sizes").text)
        self.assertEqual(found["comment"], "Hi")
        self.assertEqual([(item["name"], item["bytes"]) for item in found["items"]],
                         [("\\a", 1000), ("Contacts", image), ("registry", registry)])
        self.assertEqual(self.verified(path, 0), {"version": 1, "faults": [], "warnings": 0, "itemCount": 3, "sealed": False, "sound": True})

    def test_only_what_was_asked_for_is_extracted(self):
        path = Set().add(FILE, "\\a\\x.txt", b"1").add(FILE, "\\a\\y.doc", b"2").add(DATABASE, "db").write(self.folder)
        self.set_tool("extract", path, self.out, "/a/*.t?t", "db")
        self.assertEqual(set(files_below(self.out)), {"a/x.txt", "db.jsonl"})
        self.assertIn("no item \\a\\z", self.set_tool("extract", path, self.out, "\\a\\z", code=1).said)

    def test_existing_files_are_replaced_by_force_alone_and_never_by_damage(self):
        good = self.one_file(b"new").write(self.folder)
        self.out.mkdir()
        target = self.file("out/a", "old")
        self.assertIn("exists already", self.set_tool("extract", good, self.out, code=1).said)
        self.assertEqual(target.read_bytes(), b"old")
        self.set_tool("extract", good, self.out, "--force")
        self.assertEqual(target.read_bytes(), b"new")

        cut = Set().add(FILE, "\\a", stream=pack_stream(b"newer")[:CUT]).write(self.folder)
        self.set_tool("extract", cut, self.out, "--force", code=1)
        self.assertEqual(target.read_bytes(), b"new")
        target.unlink()
        self.set_tool("extract", cut, self.out, code=1)
        self.assertFalse(target.exists(), "half a file must not pass for one")
        self.set_tool("extract", cut, self.out, "--keep-damaged", code=1)
        self.assertEqual(target.read_bytes(), b"newer")

    def test_an_item_that_is_not_written_leaves_no_folders(self):
        damaged = Set().add(FILE, "\\sub\\deep\\a", stream=b"").add(FILE, "\\old\\new\\a", stream=pack_stream(b"x")[:CUT])
        (self.out / "old").mkdir(parents=True)
        self.set_tool("extract", damaged.write(self.folder), self.out, code=1)
        self.assertEqual(list(self.out.rglob("*")), [self.out / "old"])

    def test_damage_of_which_nothing_could_be_unpacked_leaves_no_empty_file(self):
        damaged = Set().add(FILE, "\\empty", b"").add(FILE, "\\none", stream=b"")
        damaged.add(FILE, "\\magic", stream=pack_stream(b"x")[:5]).add(FILE, "\\x", stream=pack_stream(b"x")[:CUT])
        damaged.add(DATABASE, "Tasks", image_bytes("Tasks", 26, [], [[(0x10003, 1)]])[:-1]).add(REGISTRY, "", b"")
        path = damaged.write(self.folder)
        for form, others in ([], {}), (["--raw"], {"Tasks.CDB": True, "registry.reg-image": False}):
            out = self.output_folder()
            self.set_tool("extract", "--keep-damaged", *form, path, out, code=1)
            has_content = {name: content != b"" for name, content in files_below(out).items()}
            self.assertEqual(has_content, {"empty": False, "x": True, **others})

    def test_files_named_in_another_case_are_found_and_capital_names_come_first(self):
        path = self.one_file().write(self.folder)
        listed, data = path.read_bytes(), path.with_suffix(".QDT").read_bytes()
        for list_name, data_name, named in (("qlbx0001.qlt", "qlbx0001.qdt", "QLBX0001"),
                                            ("qlbx0001.qlt", "qlbx0001.qdt", "qlbx0001.QDT"),
                                            ("Qlbx0001.qlt", "QLBX0001.QDT", "qlbx0001.qlt"),
                                            ("QLBX0001.QLT", "qlbx0001.qdt", "QLBX0001.qlt")):
            out = self.output_folder()
            (out / list_name).write_bytes(listed)
            (out / data_name).write_bytes(data)
            self.assertEqual(self.set_tool("verify", out / named).text, "Sound: 1 item, not sealed.\n", (list_name, data_name, named))
        for name in ("QLBX0001.QLT", "qlbx0001.qlt", "QLBX0001.QDT", "qlbx0001.qdt"):
            content = listed if name.lower().endswith("qlt") else data
            (out / name).write_bytes(content if name.isupper() else b"none")
        for named in ("QLBX0001", "qlbx0001.QLT"):
            self.set_tool("verify", out / named)

    def test_a_folder_is_listed_by_its_sets_and_is_no_set_itself(self):
        inner = self.folder / "QUILBOX"
        path = self.one_file().write(inner)
        other = inner / "qlbx0002.qlt"
        other.write_bytes(Set("one\r\na").listed)
        (inner / "QLBX0001.log").write_bytes(b"")
        for folder in (self.folder, inner, f"{inner}/"):
            self.assertEqual(self.set_tool("list", folder, code=1).text,
                             f"{path}  Hi; 1 item, 21 bytes\n{other}  one; 0 items, the data file is missing\n")
            self.assertRegex(self.set_tool("extract", folder, self.out, code=2).said,
                             "QUILBOX/? is a folder; name one of its sets: QLBX0001.QLT, qlbx0002.qlt\n")
        self.assertEqual(json.loads(self.set_tool("list", inner, "--json", code=1).text), {
            "version": 1, "sets": [{"list": str(path), "comment": "Hi", "itemCount": 1, "dataBytes": 21},
                                   {"list": str(other), "comment": "one", "itemCount": 0, "dataBytes": None}], "setCount": 2})
        self.assertFalse(self.out.exists())

    def test_an_empty_set_is_warned_of(self):
        path = Set().write(self.folder)
        self.assertEqual(self.set_tool("verify", path).text, "warning: the set is empty\nSound: 0 items, 1 warning, not sealed.\n")
        self.assertEqual(self.verified(path, 0)["faults"], [{"reason": "the set is empty", "warning": True}])

    def test_the_registry_has_one_name_in_all_commands(self):
        path = Set().add(REGISTRY, "Tasks Database", stream=b"").write(self.folder)
        self.assertIn("item 1, registry: no stream", self.set_tool("verify", path, code=1).text)
        self.assertRegex(self.set_tool("extract", path, self.out, "registry", code=1).said, "^quillbox-set: registry: no stream")
        self.assertEqual(self.set_tool("list", path).text.splitlines()[-1].split(), ["registry", "0", "registry"])
        self.assertEqual(self.verified(path, 1)["faults"][0]["name"], "registry")

    def test_bad_usage_and_missing_files_exit_with_2_and_a_missing_data_file_with_1(self):
        missing = self.folder / "none"
        for command in ([], ["verify"], ["list", missing], ["extract", missing, self.out]):
            self.set_tool(*command, code=2)
        self.assertFalse(self.out.exists())
        self.assertIn("there is no set in the folder", self.set_tool("list", self.folder, code=2).said)
        self.set_tool("--help")
        self.assertIn("no checksums", self.set_tool("verify", "--help").text, "what sound doesn't mean")
        self.assertIn("quillbox-set ", self.set_tool("--version").text)
        path = self.one_file().write(self.folder)
        path.with_suffix(".QDT").unlink()
        for command in (["verify", path], ["list", path]):
            self.set_tool(*command, code=1)
        done = self.set_tool("extract", path, self.out, "\\a", code=1)
        self.assertEqual((done.text, done.said.count("\n")), ("0 items written, 1 fault.\n", 1), done.said)


class HostTest(SetToolTest):
    def test_output_that_cannot_be_printed_is_no_success(self):
        path = self.one_file().write(self.folder)
        commands = (["list", path], ["list", "--json", path], ["list", self.folder], ["verify", path], ["--help"],
                    ["extract", "--force", path, self.folder])
        self.assert_fails_where_output_takes_nothing("quillbox-set", commands, "quillbox-set: standard output can't be written")
        self.assertEqual((self.folder / "a").read_bytes(), b"1")

    @needs_strace
    def test_a_kill_leaves_the_old_file_or_none_and_never_half(self):
        path = Set().add(FILE, "\\deep\\a", os.urandom(300000)).write(self.folder)
        target = self.out / "deep" / "a"

        def killed(*more):
            done = traced([TOOL, "extract", path, self.out, *more], "pwrite64", "pwrite64:signal=KILL:when=2")
            self.assertEqual(done.returncode, -signal.SIGKILL)

        killed()
        self.assertFalse(target.exists())
        target.write_bytes(b"old")
        killed("--force")
        self.assertEqual(target.read_bytes(), b"old")

    def test_a_file_beyond_a_limit_of_size_is_reported_and_leaves_nothing_new(self):
        path = Set().add(FILE, "\\sub\\deep\\a", os.urandom(300000)).add(FILE, "\\b", b"1").write(self.folder)
        limit = (200000, 200000)
        done = self.set_tool("extract", path, self.out, code=1,
                             preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, limit))
        self.assertEqual(done.said, "quillbox-set: file \\sub\\deep\\a: the disk is full\n")
        self.assertEqual(names_in(self.out), ["b"])

    @needs_strace
    def test_what_was_extracted_is_on_the_disk_and_a_flush_that_fails_is_reported(self):
        large = os.urandom(300_000)
        path = Set().add(FILE, "\\deep\\a", b"1").add(FILE, "\\b", large).add(DATABASE, "c").write(self.folder)
        done = traced([TOOL, "extract", path, self.out], "linkat,renameat2,syncfs")
        self.assertEqual((done.returncode, done.calls), (0, ["linkat", "renameat2", "linkat", "syncfs"]))
        for form in ([], ["--json"]):
            done = traced([TOOL, "extract", "--force", path, self.out, *form], "syncfs", "syncfs:error=EIO")
            self.assertEqual((done.returncode, done.stderr.decode()),
                             (1, "quillbox-set: what was written may be missing from the disk: the disk failed\n"))

    @needs_strace
    def test_what_cannot_be_opened_is_named_with_its_cause(self):
        path = Set().add(FILE, "\\a", b"1").write(self.folder)
        for command in (["list"], ["verify"], ["cat", "\\a"], ["extract", self.out]):
            done = traced([TOOL, command[0], path, *command[1:]], "openat2", "openat2:error=EACCES:when=3+")
            self.assertRegex(done.stdout + done.stderr, b"the (data|list) file can't be opened: no permission")
        path.with_suffix(".QDT").unlink()
        self.assertIn("the data file is missing\n", self.set_tool("cat", path, "\\a", code=1).said)
        said = self.set_tool("list", path, "\x1b[2J", code=2).said
        self.assertNotIn("\x1b", said)

    @needs_strace
    def test_a_folder_that_cannot_be_read_is_not_taken_for_one_without_sets(self):
        Set().write(self.folder)
        done = traced([TOOL, "list", self.folder], "getdents64", "getdents64:error=EIO")
        self.assertEqual((done.returncode, done.stderr.decode()),
                         (2, f"quillbox-set: this folder can't be read (Input/output error): {self.folder}\n"))


class DamageTest(SetToolTest):
    def test_each_fault_of_the_list_is_named_with_its_item(self):
        good = self.one_file
        for name, damaged, item, reason in [
                ("empty name", good().add(FILE, "", b""), 2, "empty"),
                ("name above", good().add(FILE, "\\..\\a", b""), 2, "can't be used"),
                ("name with a star", good().add(FILE, "\\a*", b""), 2, "can't be used"),
                ("folder as a file", good().add(FILE, "\\a\\", b""), 2, "can't be used"),
                ("no backslash first", good().add(FILE, "b", b""), 2, "can't be used"),
                ("long name", good().add(FILE, "\\" + "x" * 260, b""), 2, "more than 260"),
                ("database that leads out", good().add(DATABASE, "..\\a"), 2, "can't be used"),
                ("same name twice", good().add(FILE, "\\b", b"").add(FILE, "\\a", b""), 3, "same name"),
                ("unknown kind", good().add(7, "\\b", b""), 2, "no such kind"),
                ("database before file", Set().add(DATABASE, "d").add(FILE, "\\a", b""), 2, "files come before"),
                ("two registries", Set().add(REGISTRY, "").add(REGISTRY, ""), 2, "there already"),
        ]:
            with self.subTest(name):
                self.assert_fault(damaged.write(self.folder), item, reason)
        sound = Set().add(FILE, "\\a", b"").add(FILE, "\\A", b"")  # names that differ only by case are different items
        for name in ("\u00c4", ".", "..", "x\\y\\plain"):
            sound.add(DATABASE, name)
        self.verified(sound.write(self.folder), 0)
        for length, code in ((251, 0), (252, 1)):  # the longer one leaves no room for .CDB in a file name
            self.verified(Set().add(DATABASE, "A" * length, image_bytes("A")).write(self.folder), code)

    def test_each_fault_of_bytes_and_offsets_is_named(self):
        listed, data = self.one_file().listed, self.one_file().data
        entry = entry_bytes(FILE, "\\b", len(data), len(data))
        late = entry_bytes(FILE, "\\b", len(data) + 2, len(data) + 2 + len(data))
        for damaged_list, damaged_data, item, reason in [
                (listed[:11] + b"\2" + listed[12:], data, 1, "second byte"), (listed, data + b"x", None, "the data file has"),
                (listed + b"\1", data, None, "is unfinished"), (listed + b"\1\1", data, None, "ends in 2 bytes"), (listed + entry[:-1], data, 2, "ends inside"),
                (bytes.fromhex("02000000 48006900") + listed[10:], data, None, "no closing NUL"),
                (listed + late, data + b"xx" + data, 2, "begins at")]:
            with self.subTest(reason):
                damaged = Set()
                damaged.listed, damaged.data = damaged_list, damaged_data
                self.assert_fault(damaged.write(self.folder), item, reason)

    def test_each_fault_of_a_stream_is_named_and_the_items_around_it_are_sound(self):
        whole = pack_stream(b"hello")
        for name, stream, reason in [("magic", b"QBXPL" + whole[5:], "no stream"), ("nothing", b"", "no stream"),
                                     ("cut in a length", whole[:7], "block's length"),
                                     ("cut in a block", whole[:12], "inside a block"),
                                     ("not closed", whole[:CUT], "closing block is missing"),
                                     ("bytes behind", whole + b"x", "follow the closing block"),
                                     ("length 0", whole[:5] + bytes(4), "length 0"),
                                     ("too long", whole[:5] + b"\xff" * 4 + whole[9:], "longer than"),
                                     ("hostile block", whole[:9] + b"\x40" + whole[10:], "doesn't unpack")]:
            with self.subTest(name):
                damaged = self.one_file().add(FILE, "\\b", b"", stream).add(FILE, "\\c", b"3")
                self.assert_fault(damaged.write(self.folder), 2, reason)

    def test_list_cut_at_every_byte_or_with_lengths_of_4_gigabytes_is_unsound_and_never_a_crash(self):
        whole = self.one_file().add(DATABASE, "d").add(REGISTRY, "")
        damaged = [whole.listed[:cut] for cut in range(len(whole.listed))]
        for entry in (b"\xff" * 4 + b"x", Set().listed + b"\1\1" + b"\xff" * 4,
                      Set().listed + b"\1\1" + b"\0\0\0\x80" + bytes(100)):
            damaged.append(entry)
        for whole.listed in damaged:
            self.set_tool("verify", whole.write(self.folder), code=1)
        self.set_tool("list", self.folder / "QLBX0001", code=1)

    def test_a_cut_or_unfinished_list_is_reported_by_each_command_that_may_miss_an_item(self):
        whole = self.one_file().add(FILE, "\\b", b"2")
        path = whole.write(self.folder)
        cut_at_end, listed = path.stat().st_size - 1, whole.listed
        cut_off = "the list file is cut off"
        for cut, end, fault in ((0, b"", cut_off), (len(Set().listed) - 1, b"", cut_off), (len(Set().listed) + 2, b"", cut_off),
                                (len(listed), b"\0", "the set is unfinished"), (cut_at_end, b"", cut_off)):
            path.write_bytes(listed[:cut] + end)
            for code, *words in ((1, "list", path), (1, "find", "*", path), (1, "history", "\\c", path),
                                 (2, "diff", path, path), (1, "extract", "--force", path, self.out), (2, "cat", path, "\\c")):
                with self.subTest(cut=cut, command=words[0]):
                    self.assertIn(fault, self.set_tool(*words, code=code).said)
            [row] = json.loads(self.set_tool("list", self.folder, "--json", code=1).text)["sets"]
            self.assertIn(fault, row["fault"])
        self.assertEqual(self.set_tool("cat", path, "\\a").text, "1")


class HarmTest(SetToolTest):
    def test_nothing_is_written_outside_the_folder(self):
        outside = self.folder / "outside"
        outside.mkdir()
        self.out.mkdir()
        (self.out / "link").symlink_to(outside)
        harmful = ["\\..\\outside\\x", "\\a\\..\\..\\outside\\x", "\\link\\x", "..\\outside\\x", "\\/../outside/x",
                   str(outside / "x"), "\\", "\\a\\"]
        crafted = Set().add(FILE, "\\good", b"1")
        for name in harmful:
            crafted.add(FILE, name, b"harm")
        crafted.add(DATABASE, "..\\..\\outside\\x")
        done = self.set_tool("extract", crafted.write(self.folder), self.out, "--json", code=1)
        self.assertEqual(json.loads(done.text)["faults"], len(harmful))
        self.assertEqual(list(outside.iterdir()), [])
        self.assertEqual(set(files_below(self.out)), {".._.._outside_x.jsonl", "good"})
        self.assertEqual(names_in(self.folder), ["QLBX0001.QDT", "QLBX0001.QLT", "out", "outside"])

    def test_a_set_extracted_over_itself_stays(self):
        path = Set().add(FILE, "\\QLBX0001.QDT", b"harm").add(FILE, "\\QLBX0001.QLT", b"harm").write(self.folder)
        before = path.with_suffix(".QDT").read_bytes()
        self.set_tool("extract", path, self.folder, "--force", code=1)
        self.assertEqual(path.with_suffix(".QDT").read_bytes(), before)
        self.assertNotEqual(path.read_bytes(), b"harm")

    def test_no_control_character_of_a_set_reaches_the_terminal(self):
        name = "\\a\x1b[2J\x9b\x7f\u202egpj"
        crafted = Set("\x1b]\ny")
        path = crafted.add(FILE, name, b"").add(FILE, "\\b\x07", b"", b"none").add(FILE, "\ud800", b"").write(self.folder)
        for command, code in ((["list", path], 0), (["verify", path], 1), (["extract", path, self.out], 1),
                              (["extract", path, self.out, "\\\x1b"], 1)):
            done = self.set_tool(*command, code=code)
            shown = done.text + done.said
            self.assertFalse([c for c in shown if c != "\n" and (c < " " or "\x7f" <= c < "\xa0" or c == "\u202e")], shown)
        self.assertIn("<U+001B>", self.set_tool("list", path).text)
        self.assertNotIn("\x1b", self.set_tool("list", "no \x1b[2J", code=2).said)
        self.assertEqual(json.loads(self.set_tool("list", path, "--json").text)["items"][0]["name"], name)
