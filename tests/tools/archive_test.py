"""quillbox-set on many sets: checks them, seals them, and finds their items."""
import json
import os
import random
import subprocess

from companions import CompanionTest, SANITIZED
from independent_set import DATABASE, FILE, REGISTRY, Set, image_bytes, pack_stream


class SealTest(CompanionTest):
    def test_several_sets_and_whole_cards_are_verified_with_one_exit_code_and_a_line_each(self):
        first = Set().add(FILE, "\\a", b"1").write(self.folder / "a/QUILBOX")
        second = Set().add(FILE, "\\a", stream=pack_stream(b"1")[:-7]).write(self.folder / "b/deep/er", 2)
        fault = f"{second}: item 1, file \\a: its stream was cut: the closing block is missing\n{second}: Unsound: 1 fault in 1 item"
        for where, code, said in (([first, self.folder / "a", first.with_suffix("")], 0, f"{first}: Sound: 1 item"),
                                  ([self.folder, "--recursive"], 1, f"{first}: Sound: 1 item, not sealed.\n{fault}")):
            self.assertEqual(self.set_tool("verify", *where, code=code).text, said + ", not sealed.\n")
        self.assertIn("no set in the folder", self.set_tool("verify", self.folder, first, code=2).said)
        lines = self.set_tool("verify", "--json", "--recursive", self.folder, code=1).text.splitlines()
        self.assertEqual([json.loads(line).get("sound") for line in lines], [True, None, False])

    def test_sha256sum_agrees_and_each_of_the_flipped_bits_is_found(self):
        names = ["QLBX0001", "QLBX0002"]
        made = Set().add(FILE, "\\a", random.Random(1).randbytes(700)).add(DATABASE, "Tasks").add(REGISTRY, "")
        for number in (1, 2):
            made.write(self.folder, number)
        self.set_tool("seal", self.folder / names[0], self.folder / names[1])
        self.assertIn("sealed already", self.set_tool("seal", self.folder).text)
        subprocess.run(["sha256sum", "--quiet", "-c", *(f"{name}.SUM" for name in names)], cwd=self.folder, check=True)
        self.assertIn("Sound: 3 items, sealed.", self.set_tool("verify", self.folder / names[0]).text)
        source = random.Random(2)
        folders = []
        for number in range(100 if SANITIZED else 1000):  # each in a folder of its own, so that one process checks all
            folder = self.folder / f"flipped{number}"
            made.write(folder)
            (folder / "QLBX0001.SUM").write_bytes((self.folder / "QLBX0001.SUM").read_bytes())
            victim = folder / source.choice(["QLBX0001.QLT", "QLBX0001.QDT"])
            raw = bytearray(victim.read_bytes())
            raw[source.randrange(len(raw))] ^= 1 << source.randrange(8)
            victim.write_bytes(raw)
            folders.append(folder)
        found = [json.loads(line) for line in self.set_tool("verify", "--json", *folders, code=1).text.splitlines()]
        ends = [line["sound"] for line in found if "sound" in line]
        self.assertEqual(ends, [False] * len(folders))

    def test_only_a_sound_set_is_sealed_and_a_changed_one_again_by_force_alone(self):
        path = Set().add(FILE, "\\a", b"1").write(self.folder)
        self.set_tool("seal", path)
        Set().add(FILE, "\\a", b"2").write(self.folder)
        self.assertIn("the data file was changed since the set was sealed", self.set_tool("seal", path, code=1).said)
        self.set_tool("verify", path, code=1)
        self.set_tool("seal", "--force", path)
        self.set_tool("verify", path)
        Set().add(FILE, "\\a", stream=b"").write(self.folder)
        before = sorted(os.listdir(self.folder))
        self.assertIn("no stream begins", self.set_tool("seal", "--force", path, code=1).said)
        self.assertEqual(sorted(os.listdir(self.folder)), before)
        for damage in (b"", b"x" * 70000, b"0" * 64 + b"  other\n"):
            path.with_suffix(".SUM").write_bytes(damage)
            self.set_tool("verify", path, code=1)
        odd = path.rename(self.folder / "a\\\nb.QLT")  # sha256sum escapes such a name
        path.with_suffix(".QDT").rename(odd.with_suffix(".QDT"))
        Set().write(self.folder, 7)
        odd.write_bytes((self.folder / "QLBX0007.QLT").read_bytes())
        odd.with_suffix(".QDT").write_bytes(b"")
        self.set_tool("seal", odd)
        subprocess.run(["sha256sum", "--quiet", "-c", odd.with_suffix(".SUM").name], cwd=self.folder, check=True)
        self.assertIn(", sealed.", self.set_tool("verify", odd).text)


class ShowTest(CompanionTest):
    def test_cat_writes_the_item_that_extract_writes(self):
        image = image_bytes("Tasks", 26, [], [[(0x37001F, "Sand the rudder")]])
        made = Set().add(FILE, "\\sub\\a", b"x\0y" * 90000).add(DATABASE, "Tasks", image).add(REGISTRY, "")
        path = made.add(FILE, "\\cut", stream=pack_stream(b"half")[:-7]).write(self.folder)
        out = self.output_folder()
        self.set_tool("extract", path, out, "/sub/a", "Tasks", "registry")
        for item, form, expected in (("/sub/a", [], (out / "sub/a").read_bytes()), ("registry", [], (out / "registry.reg").read_bytes()),
                                     ("Tasks", [], (out / "Tasks.jsonl").read_bytes()), ("Tasks", ["--raw"], image)):
            self.assertEqual(self.set_tool("cat", path, item, *form).stdout, expected)
        damaged = self.set_tool("cat", path, "\\cut", code=1)
        self.assertEqual((damaged.text, "closing block" in damaged.said), ("half", True))
        self.assertIn("no item \\none", self.set_tool("cat", path, "/none", code=2).said)

    def test_list_sorts_by_each_column_and_shows_the_ratio(self):
        big = Set().add(FILE, "\\b", b"").add(FILE, "\\c", b"1" * 50).add(FILE, "\\a", b"1" * 5)
        path = big.write(self.folder)
        for order, names in ((None, "bca"), ("name", "abc"), ("size", "cab"), ("packed", "cab")):
            asked = ["--sort", order] if order else []
            listed = json.loads(self.set_tool("list", path, "--long", "--json", *asked).text)["items"]
            self.assertEqual("".join(item["name"][1] for item in listed), names)
        self.assertEqual([(item["bytes"], item["packedBytes"], item["ratio"]) for item in listed],
                         [(50, 70, 1.4), (5, 25, 5.0), (0, 12, None)])
        self.assertIn("70           50   140 % \\c\n", self.set_tool("list", path, "--long").text)
