"""quillbox-set salvage: sets are ruined in many ways, and the salvaged items are compared with the originals."""
import json
import os
import pathlib
import random
import shutil
import struct
import subprocess
import tempfile

import card_reader
from companions import BIN, CompanionTest, SAMPLE_SETS, SANITIZED, names_in
from host_trouble import needs_strace, traced
from independent_set import DATABASE, FILE, MAGIC, RAW_BLOCK, REGISTRY, Set, entry_bytes, image_bytes, pack_stream, registry_bytes
from sample_sets import JPEG

PAGE = 4096
KINDS = {FILE: "file", DATABASE: "database", REGISTRY: "registry"}


class SalvageTest(CompanionTest):
    def salvage(self, data, *more):
        """Returns the folder with the files, and the report. The exit code must be 0 exactly if the whole data file was
        salvaged completely."""
        out = self.output_folder()
        command = [BIN / "quillbox-set", "salvage", data, "--into", out, "--json", *more]
        done = subprocess.run(list(map(str, command)), capture_output=True, check=False, timeout=600)
        self.assertIn(done.returncode, (0, 1), done.stderr)
        found = self.report(out, done.stdout)
        faults = ("unprovenCount", "partialCount", "lostCount", "failedCount", "unclaimedBytes", "unreadableBytes")
        self.assertEqual(done.returncode == 0, not any(found[each] for each in faults), found)
        return out, found

    @staticmethod
    def written(out, item):
        return pathlib.Path(out, item["target"][1:].replace("\\", "/")).read_bytes()

    def report(self, out, text):
        """Returns the JSON report. Each target must be in the folder, and is converted to the device's form of the
        path."""
        found = json.loads(text)
        for item in found["items"]:
            if item.get("target"):
                self.assertTrue(os.path.isfile(item["target"]) and item["target"].startswith(f"{out}/"), item)
                item["target"] = item["target"].removeprefix(str(out)).replace("/", "\\")
        return found


class RuinedSetTest(SalvageTest):
    """The two sample sets, which Quillbox has made."""

    @classmethod
    def setUpClass(cls):
        cls.sets = [cls.sample(number) for number in (1, 2)]

    @classmethod
    def sample(cls, number):
        """Returns the path of the list, the data, and the items as (kind, name, content of the salvaged file, start,
        end)."""
        path = SAMPLE_SETS / f"{number}/QUILBOX/QLBX0001.QLT"
        files = {FILE: lambda name: name[1:].replace("\\", "/"), DATABASE: lambda name: name + ".jsonl", REGISTRY: lambda _: "registry.reg"}
        with tempfile.TemporaryDirectory() as out:
            subprocess.run([BIN / "quillbox-set", "extract", path, out], check=True, stdout=subprocess.DEVNULL)
            items = [(each.kind, each.name, pathlib.Path(out, files[each.kind](each.name)).read_bytes(), each.start, each.end)
                     for each in card_reader.entries(path)]
        return path, path.with_suffix(".QDT").read_bytes(), items

    def check(self, data, items, bad=(), *more):
        """Salvages the data file, whose pages `bad` were overwritten, and compares everything that was salvaged for
        certain."""
        out, found = self.salvage(self.file("ruined.QDT", bytes(data)), *more)
        at = {item["offset"]: item for item in found["items"] if item["state"] != "lost"}
        stored = {(KINDS[kind], raw) for kind, _, raw, _, _ in items}
        for kind, name, raw, start, end in items:
            if any(page * PAGE < end and (page + 1) * PAGE > start for page in bad):
                continue
            self.assertIn(start, at, name)
            self.assertEqual((at[start]["kind"], at[start]["packedBytes"]), (KINDS[kind], end - start))
            self.assertIn(at[start]["state"], ("complete", "unproven"), name)
            self.assertEqual(self.written(out, at[start]), raw, name)
        for item in at.values():
            if item["state"] == "complete":
                self.assertIn((item["kind"], self.written(out, item)), stored, item)
        return out, found

    def test_without_the_list_every_item_comes_back_by_its_content(self):
        for path, data, items in self.sets:
            out, found = self.check(data, items)
            self.assertEqual((found["completeCount"] + found["unprovenCount"], found["unclaimedBytes"]), (len(items), 0))
            for item, (_, _, raw, start, end) in zip(found["items"], items):
                if end - start < 512 or raw.startswith(b"word"):
                    self.assertEqual(item["state"], "complete")
                self.assertEqual(raw.startswith(JPEG), item["target"].endswith(".jpg"), item)
            self.assertEqual(names_in(out), sorted({item["target"][1:] for item in found["items"]} | {"recovered.txt"}))
            self.assertIn("unproven  file", (out / "recovered.txt").read_text())
        path, data, items = self.sets[0]
        sealed = Set().write(self.folder)
        shutil.copy(path.with_suffix(".QDT"), sealed.with_suffix(".QDT"))
        shutil.copy(path, sealed)
        self.set_tool("seal", sealed)
        sealed.unlink()
        self.assertEqual(self.salvage(sealed.with_suffix(".QDT"))[1]["completeCount"], len(items))

    def test_a_list_cut_anywhere_names_the_items_before_the_cut(self):
        path, data, items = self.sets[0]
        listed, ends = path.read_bytes(), []
        at = 4 + 2 * int.from_bytes(listed[:4], "little")
        for _ in items:
            at += 14 + 2 * int.from_bytes(listed[at + 2:at + 6], "little")
            ends.append(at)
        self.assertEqual(at, len(listed))
        cuts = {cut for end in ends[::7 if SANITIZED else 2] for cut in (end, end - 1)} | {0, 3, 9}
        for cut in sorted(cuts):
            with self.subTest(cut):
                out, found = self.check(data, items, (), "--list", self.file("old.QLT", listed[:cut]))
                named = [item["target"] for item in found["items"] if item["kind"] == "file" and item["name"]]
                self.assertEqual(named, [item[1] for item, end in zip(items, ends) if item[0] == FILE and end <= cut])
                shutil.rmtree(out)

    def test_overwritten_pages_cost_only_the_items_in_them_and_nothing_wrong_is_complete(self):
        kinds = {"random": lambda source, data: source.randbytes(PAGE), "zeros": lambda source, data: bytes(PAGE),
                 "other page": lambda source, data: data[(at := source.randrange(len(data) // PAGE) * PAGE):at + PAGE]}
        wrong, new = 0, self.folder / "new"
        cases = [(each, seed, share, kind) for each in self.sets for seed in range(1 if SANITIZED else 2)
                 for share in (0.01, 0.1, 0.3) for kind in kinds]
        for (path, data, items), seed, share, kind in cases:
            source, ruined = random.Random(f"{seed} {share} {kind}"), bytearray(data)
            pages = len(data) // PAGE
            bad = source.sample(range(pages), max(1, round(pages * share)))
            for page in bad:
                ruined[page * PAGE:(page + 1) * PAGE] = kinds[kind](source, data)
            with self.subTest(seed=seed, share=share, kind=kind):
                out, found = self.check(ruined, items, bad, "--set", new, *(["--list", path] if seed % 2 else []))
                stored = sum(item["state"] == "complete" and not item["notInSet"] for item in found["items"])
                self.assertEqual(self.verified(new.with_suffix(".QLT"))["itemCount"], stored)
                content = {raw for _, _, raw, _, _ in items}
                wrong += sum(item["state"] == "unproven" and self.written(out, item) not in content for item in found["items"])
                for each in (new.with_suffix(".QLT"), new.with_suffix(".QDT")):
                    each.unlink()
                shutil.rmtree(out)
        self.assertGreater(wrong, 0)  # unproven items can be wrong, and some must be

    def test_two_joined_data_files_give_the_items_of_both_and_take_the_names_of_either_list(self):
        (first, data, items), (second, more_data, more_items) = self.sets
        joined = items + [(kind, name, raw, start + len(data), end + len(data)) for kind, name, raw, start, end in more_items]
        for old, named in (([], []), ([first, first], items), ([second], more_items)):
            _, found = self.check(data + more_data, joined, (), *(word for path in old for word in ("--list", path)))
            self.assertEqual([item["target"] for item in found["items"] if item["kind"] == "file" and item["name"]],
                             [name for kind, name, _, _, _ in named if kind == FILE])
            self.assertEqual((found["partialCount"], found["lostCount"]), (0, 0))


class DamagedStreamTest(SalvageTest):
    """Single streams whose damage is known to the byte."""

    def found(self, made, *more):
        return self.salvage(self.file("ruined.QDT", made.data if isinstance(made, Set) else made), *more)

    def states(self, found):
        return [(item["state"], item["kind"], item["target"], item["unpackedBytes"], item["soundBytes"]) for item in found["items"]]

    def test_a_damaged_block_is_filled_and_a_damaged_length_splits_the_item_in_pieces(self):
        raw = random.Random(3).randbytes(4 * RAW_BLOCK + 99)
        stream = pack_stream(raw)
        second = len(MAGIC) + 4 + int.from_bytes(stream[5:9], "little")  # where the second block begins
        cut = bytearray(stream)
        cut[second + 4] ^= 1  # the first instruction of the second block
        out, found = self.found(bytes(cut))
        self.assertEqual(self.states(found), [("partial", "file", "\\recovered-0001.bin", len(raw), RAW_BLOCK)])
        written = self.written(out, found["items"][0])
        self.assertEqual((written[:RAW_BLOCK], written[2 * RAW_BLOCK:]), (raw[:RAW_BLOCK], raw[2 * RAW_BLOCK:]))
        cut[second:second + 4] = b"\xff" * 4  # its length
        out, found = self.found(bytes(cut))
        self.assertEqual([self.written(out, item) for item in found["items"]], [raw[:RAW_BLOCK], raw[2 * RAW_BLOCK:]])
        self.assertEqual([(item["hasBeginning"], item["hasEnd"]) for item in found["items"]], [(True, False), (False, True)])
        for end in (len(stream) - 1, len(stream) - 7, second + 9000):
            _, found = self.found(stream[:end])
            self.assertEqual((found["partialCount"], found["items"][0]["hasEnd"]), (1, False))

    def test_databases_and_registries_are_known_by_their_content_also_damaged_ones(self):
        records = [[(0x37001F, f"Sand the rudder {number}"), (0x41090002, number)] for number in range(2000)]
        image, registry = image_bytes("To do\\all", 26, [], records), registry_bytes({"HKEY_USERS\\a": ['@="x"']})
        made = (Set().add(FILE, "\\like a database", image + b"x").add(DATABASE, "To do\\all", image).add(DATABASE, "To do\\all", image)
                .add(REGISTRY, "", registry).add(FILE, "\\reg", registry[:-20]).add(FILE, "\\a", b"<html>").add(FILE, "\\b", b""))
        out, found = self.found(made, "--set", self.folder / "new", "--unproven")
        self.assertEqual([(item["kind"], item["target"]) for item in found["items"]],
                         [("file", "\\recovered-0001.bin"), ("database", "\\To do_all.jsonl"), ("database", "\\recovered-0002.jsonl"),
                          ("registry", "\\registry.reg"), ("file", "\\recovered-0003.reg"), ("file", "\\recovered-0004.html"),
                          ("file", "\\recovered-0005.bin")])
        self.assertEqual(self.written(out, found["items"][3]), registry)
        self.assertEqual([bool(item["notInSet"]) for item in found["items"]], [False, False, True, False, False, False, False])
        self.assertEqual(self.verified(self.folder / "new.QLT")["itemCount"], 6)
        stream = bytearray(pack_stream(image))
        stream[len(MAGIC) + 8 + int.from_bytes(stream[5:9], "little")] ^= 1  # the first instruction of the second block
        out, found = self.found(bytes(stream))
        kept = self.written(out, found["items"][0]).decode().splitlines()
        whole = [json.dumps({"record": [{"id": "0037001f", "value": text}, {"id": "41090002", "value": number}]}, separators=(",", ":"))
                 for (_, text), (_, number) in records]
        self.assertEqual((found["items"][0]["state"], found["items"][0]["kind"]), ("partial", "database"))
        self.assertGreater(len(kept), 1000)
        self.assertEqual(kept[1:], whole[-len(kept) + 1:])

        odd = "a\x1b\n"
        for name, lists in ((odd, []), ("To do", ["--list", Set().add(DATABASE, odd, image_bytes(odd)).write(self.folder / "old")])):
            _, found = self.found(Set().add(DATABASE, name, image_bytes(odd)), *lists)
            self.assertEqual((found["completeCount"], found["items"][0]["kind"], found["lostCount"]), (1, "database", 0))
        listed = Set().add(DATABASE, "To do\\all", image + b"x")
        _, found = self.found(listed, "--list", listed.write(self.folder / "old"))
        self.assertEqual((found["items"][0]["state"], found["items"][0]["kind"]), ("partial", "database"))
        self.assertIn("1 byte too many", found["items"][0]["damage"])
        image = image_bytes("Big", 0, [], [[(0x10041, bytes(17 << 20))], [(0x37001F, "small")]])
        listed = Set().add(DATABASE, "Big", image).add(FILE, "\b", b"last")
        for lists in ([], ["--list", listed.write(self.folder / "old")]):
            out, found = self.found(listed, *lists)
            self.assertEqual((found["items"][0]["target"], self.written(out, found["items"][0]) == image, found["failedCount"]),
                             ("\\Big.CDB" if lists else "\\recovered-0001.bin", True, 0))
        self.assertEqual(found["items"][0]["state"], "partial")
        self.assertIn("has more than 16 MiB, which no restore accepts; its image is kept as it is\n", (out / "recovered.txt").read_text())

    def test_entries_that_do_not_agree_give_no_names(self):
        made = Set().add(FILE, "\\a", b"1").add(FILE, "\\sub\\b", b"2").add(DATABASE, "c")
        old = Set()
        for name, kind, start, end in (("a", DATABASE, 0, 21), ("\\longer", FILE, 21, 43), ("\\behind", FILE, 900, 999), ("\\inside", FILE, 50, 60)):
            old.listed += entry_bytes(kind, name, start, end)
        _, found = self.found(made, "--list", old.write(self.folder / "old"))
        self.assertEqual([item["name"] for item in found["items"]][:3], [None, None, "c"])
        said = self.set_tool("salvage", self.folder / "ruined.QDT", "--into", self.output_folder(), "--list", self.folder / "old/QLBX0001", code=1).said
        self.assertIn("no entry of a list agrees", said)
        self.assertEqual(found["lostCount"], 4)
        start = len(made.data)
        old = Set()
        old.listed += entry_bytes(DATABASE, "c", start, len(made.add(DATABASE, "c").data))
        out, found = self.found(made, "--list", old.write(self.folder / "old"), "--set", self.folder / "copy")
        self.assertEqual([(item["target"], bool(item["notInSet"])) for item in found["items"]][2:],
                         [("\\recovered-0003.jsonl", True), ("\\c.jsonl", False)])  # the second copy gets the name
        hostile = Set()
        for name in ("\\..\\..\\escaped", "\\recovered.txt", "\\a", "\\a\\b", "\\a", "no backslash"):
            hostile.add(FILE, name, name.encode())
        out, found = self.found(hostile, "--list", hostile.write(self.folder / "hostile"), "--set", self.folder / "new")
        self.assertEqual([self.written(out, item) for item in found["items"]], [item["name"].encode() for item in found["items"]])
        self.assertEqual(names_in(out), ["a", *(f"recovered-000{number}.txt" for number in range(1, 6)), "recovered.txt"])
        self.verified(self.folder / "new.QLT")

    def test_hostile_files_take_seconds_and_little_memory(self):
        size = (1 if SANITIZED else 16) << 20
        long = struct.pack("<I", 131000)
        cases = {"magics": MAGIC, "zeros": bytes(1), "false blocks": MAGIC + long, "end marks": b"\x11\0\0", "short blocks": b"\x04\0\0\0\x11\0\0\0",
                 "nested": MAGIC + long + b"\0" + bytes(500) + b"\x11\0\0", "cut blocks": MAGIC + b"\x2c\x01\0\0\x60" + b"x" * 79}
        limit = [] if SANITIZED else ["prlimit", f"--as={300 << 20}"]
        for name, piece in cases.items():
            with self.subTest(name):
                hostile = self.file("hostile", (piece * (size // len(piece) + 1))[:size])
                done = subprocess.run([*limit, BIN / "quillbox-set", "salvage", hostile, "--into", self.output_folder()],
                                      capture_output=True, timeout=60)
                self.assertEqual(done.returncode, 1, done.stderr)
                self.assertIn(b"0 complete, 0 unproven", done.stdout)


class SalvageTroubleTest(SalvageTest):
    def setUp(self):
        super().setUp()
        made = Set().add(FILE, "\\a", random.Random(1).randbytes(700_000)).add(DATABASE, "Tasks").add(FILE, "\\b", b"last")
        self.data = made.write(self.folder / "set").with_suffix(".QDT")

    def test_nothing_that_exists_is_replaced(self):
        out = self.output_folder()
        (out / "mine").write_text("mine")
        self.assertIn("isn't empty", self.set_tool("salvage", self.data, "--into", out, code=2).said)
        for ending in ("QLT", "QDT", "SUM"):
            existing = self.file(f"new.{ending}", b"mine")
            said = self.set_tool("salvage", self.data, "--into", self.folder / "out", "--set", self.folder / "new", code=2).said
            self.assertIn("exists already", said)
            self.assertEqual(existing.read_bytes(), b"mine")
            existing.unlink()
        for sentence, *words in (("no such file", "none"), ("isn't a file", self.folder), ("isn't a file", "/dev/null"), ("--list", self.data.with_suffix(".QLT")),
                                 ("list file can't", self.data, "--list", self.folder / "none.QLT"), ("path is empty", self.data, "--set", ""),
                                 ("new set can't", self.data, "--set", self.folder / "none/new"), ("needs a name", self.data, "--set", f"{self.folder}/"),
                                 ("--unproven requires", self.data, "--unproven")):
            self.assertIn(sentence, self.set_tool("salvage", *words, "--into", self.folder / "out/deep/", code=2).said)
        there = names_in(self.folder)
        links = {"dangling": "none/rec", "loop": "loop"}
        for name, to in links.items():
            (self.folder / name).symlink_to(to)
        for name in (*links, *(name + "/" for name in links), "dangling/deep", "deep/../new/deep", "new/none"):
            said = self.set_tool("salvage", self.data, "--into", f"{self.folder}/{name}", "--set", self.folder / "none/new", code=2).said
            self.assertIn("new set can't" if "new" in name else "can't be made", said)
        self.assertEqual({name: os.readlink(self.folder / name) for name in links}, links)
        self.assertEqual(names_in(self.folder), sorted([*there, *links]))

    @needs_strace
    def test_a_stop_or_a_full_disk_leaves_no_half_file(self):
        stops = 0
        for nth, (calls, fault) in ((nth, each) for nth in (1, 2, 3, 5) for each in (("pread64", "signal=INT"), ("pwrite64", "error=ENOSPC"))):
            with self.subTest(nth=nth, calls=calls):
                out = self.output_folder()
                done = traced([BIN / "quillbox-set", "salvage", self.data, "--into", out, "--set", self.folder / "new", "--unproven"],
                              calls, f"{calls}:{fault}:when={nth}{'+' if 'error' in fault else ''}")
                stops += done.returncode == -2
                self.assertIn(done.returncode, (-2, 0, 1), done.stderr)
                self.assertEqual([*self.folder.rglob("*.part"), *out.rglob(".*")], [])
                if calls == "pwrite64" and done.returncode == 1:
                    self.assertIn(b"couldn't be written", done.stdout + done.stderr)
                for path in out.rglob("recovered-*.bin"):
                    self.assertEqual(path.stat().st_size, 700_000)
                if (self.folder / "new.QDT").exists() or (self.folder / "new.QLT").exists():
                    self.verified(self.folder / "new.QLT")
                    for ending in (".QLT", ".QDT"):
                        (self.folder / "new").with_suffix(ending).unlink()
        self.assertGreater(stops, 0)

    @needs_strace
    def test_a_page_that_the_host_cannot_read_costs_only_its_item(self):
        raw, end, lacks = random.Random(2).randbytes(1_500_000), 1 << 20, 0
        data = Set().add(FILE, "\\a", raw).add(DATABASE, "Tasks").add(FILE, "\\b", b"last").write(self.folder / "long").with_suffix(".QDT")
        middle = []
        # The first reads are those at the program's start. The program tries to read a page three times.
        for nth in range(1, 16):
            out, new = self.output_folder(), self.folder / f"new{nth}"
            done = traced([BIN / "quillbox-set", "salvage", data, "--into", out, "--json", "--set", new, "--unproven"],
                          "pread64", f"pread64:error=EIO:when={nth}..{nth + 2}")
            if not done.stdout:
                continue
            found = self.report(out, done.stdout)
            lacking, isHole = len(found["unreadableNames"]), found["unreadableBytes"] != 0
            self.assertEqual((found["newSet"], "It lacks 1 item" in found["summary"]), (f"{new}.QLT", lacking == 1))
            self.assertEqual((done.returncode, found["completeCount"], found["partialCount"] != 0), (1, 2, isHole), found)
            self.assertEqual(self.verified(new.with_suffix(".QLT"))["itemCount"], 3 - isHole - lacking)
            lacks += lacking
            if found["items"][0]["hasBeginning"] and isHole:
                middle.append((found["items"][0], self.written(out, found["items"][0])))
        [(item, written)] = middle
        self.assertGreater(lacks, 0)
        self.assertTrue(item["unreadable"] and end - 2 * RAW_BLOCK < item["soundBytes"] <= end, item)
        self.assertEqual((len(written), written[:item["soundBytes"]], written[-RAW_BLOCK:]), (len(raw), raw[:item["soundBytes"]], raw[-RAW_BLOCK:]))
