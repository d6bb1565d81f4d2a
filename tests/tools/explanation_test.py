"""The reader that `quillbox-set explain` writes beside the sets. It must find the same items and the same damage as
quillbox-set.

In all other suites CompanionTest.verified() compares the reader with quillbox-set.
"""
import contextlib
import io
import json
import random
import subprocess
import sys

import card_reader
from companions import SAMPLE_SETS, SANITIZED, CompanionTest, files_below, names_in
from independent_set import CLOSING_BLOCK, DATABASE, FILE, MAGIC, REGISTRY, Set, image_bytes, pack, registry_bytes

RECORDS = [[(0x37001F, "text \ud800"), (0x100041, b"\1\2"), (0x20002, 0xFFFD), (0x30003, 5, 0x100), (0x400040, 1 << 40),
            (0x5, 0), (0xB, 0), (0x17, 0)], [], [(0x1001F, "b"), (0x20013, 7, 0x200), (0x1001F, "c")]]
KEYS = {"HKEY_USERS\\a": ['@="x\\"y\\\\"', '"n"=dword:1f', '"b"=hex:01,02,\\\r\n  03', '"m"=hex(7):61,00'],
        "HKEY_CURRENT_USER\\q\\\\0007b\\c": ['"line\nbreak"="t"']}
# Quillbox never writes the two short matches at the end of this block.
LITERALS = random.Random(1).randbytes(2100)
BLOCK = pack(LITERALS)[:-3] + bytes([5, 0, 7, 8, 1]) + CLOSING_BLOCK
SHORT_MATCHES = MAGIC + b"".join(len(block).to_bytes(4, "little") + block for block in (BLOCK, CLOSING_BLOCK))
PIECES = [unit.encode("utf-16-le", "surrogatepass") for unit in '\\"=[]@;:,-()\r\n \0a7\ud800']


def changed(rng, raw, changes, text=False):
    """Returns the bytes with some random changes: of a bit, a byte or a length, or of characters with a meaning in a
    registry file."""
    raw = bytearray(raw)
    for _ in range(changes):
        at = rng.randrange(len(raw) + 1)
        if text:
            at &= ~1
            raw[at:at + rng.choice((0, 2))] = rng.choice(PIECES)
        elif at < len(raw):
            raw[at] = rng.choice((raw[at] ^ 1 << rng.randrange(8), rng.randrange(256), 0, 255))
        if rng.random() < 0.3:
            del raw[at:at + rng.randrange(1, 9)]
    return bytes(raw)


def damaged_set(rng, packed):
    made = Set("Backup date:01/02/2003 (04:05)\r\nComments:\r\nx")
    made.add(FILE, "\\deep\\\u00e9\uf7ff", b"hello " * rng.randrange(60)).add(FILE, "\\a.txt", b"").add(FILE, "\\p", stream=packed)
    made.add(FILE, "\\short", stream=SHORT_MATCHES).add(FILE, "\\short\\below a file", b"x")
    made.add(DATABASE, "Tasks\\x", changed(rng, image_bytes("Tasks\\x", 26, [(1, 2)], RECORDS), rng.choice((0, 0, 1, 2))))
    made.add(DATABASE, "T", image_bytes("Other", 1, [(0, 0)], [[(0x10003, 1)]]))
    made.add(REGISTRY, "", changed(rng, registry_bytes(KEYS), rng.choice((0, 0, 1, 2)), text=True))
    made.listed = changed(rng, made.listed, rng.choice((0, 0, 0, 1)))
    made.data = changed(rng, made.data, rng.choice((0, 0, 1, 3)))
    return made


class ExplanationTest(CompanionTest):
    def setUp(self):
        super().setUp()
        self.card = self.folder / "card"
        self.sets = self.card / "QUILBOX"
        self.path = Set().add(FILE, "\\a", b"1").write(self.sets)

    def read(self, *words, code=0):
        """Runs the reader that was written beside the sets, and returns its output."""
        words = [sys.executable, "-I", "-B", self.sets / "QLBXREAD.PY", *words]
        done = subprocess.run(words, capture_output=True, check=False, timeout=60)
        self.assertEqual(done.returncode, code, done.stderr)
        return done.stdout.decode()

    def test_the_explanation_is_written_once_and_replaces_another_file_only_by_force(self):
        self.assertEqual(self.set_tool("explain", self.card).text.count(": written\n"), 2)
        self.assertEqual(self.set_tool("explain", self.path).text.count(": is there already\n"), 2)
        readme = (self.sets / "README.TXT").read_bytes()
        self.assertNotIn(b"\n", readme.replace(b"\r\n", b""))
        self.assertIn(b"### LZO1X\r\n", readme)
        (self.sets / "README.TXT").write_bytes(b"mine")
        self.assertIn("README.TXT: exists already", self.set_tool("explain", self.card, code=1).said)
        self.assertEqual((self.sets / "README.TXT").read_bytes(), b"mine")
        self.set_tool("explain", self.card, "--force")
        self.assertEqual((self.sets / "README.TXT").read_bytes(), readme)
        (self.sets / "QLBXREAD.PY").rename(self.folder / "mine")
        (self.sets / "QLBXREAD.PY").symlink_to(self.folder / "mine")
        for force in ([], ["--force"]):
            said = self.set_tool("explain", self.card, *force, code=1).said
            self.assertRegex(said, r"^quillbox-set: .*/QLBXREAD\.PY: a link, or .* remove it first\n$")
        self.assertEqual(names_in(self.sets), ["QLBX0001.QDT", "QLBX0001.QLT", "QLBXREAD.PY", "README.TXT"])
        self.set_tool("explain", self.folder / "none", code=2)

    def test_the_reader_works_on_a_card_without_anything_else(self):
        Set("\x1b[2J").add(FILE, "\\b\x1b", b"2").add(FILE, "\\c", b"3").write(self.sets, 2).with_suffix(".QDT").write_bytes(b"x")
        self.set_tool("explain", self.card)
        listed = self.read("list")
        self.assertIn("file \\a", listed)
        self.assertNotIn("\x1b", listed)
        self.assertIn("QLBX0001.QLT: sound, 1 items", self.read("verify", code=1))
        self.read("extract", self.path, self.folder / "out")
        self.assertEqual((self.folder / "out/a").read_bytes(), b"1")
        self.read("extract", self.path, self.folder / "out", code=1)  # the folder isn't empty any more
        for wrong in ([], ["fly"], ["extract", self.path]):
            self.read(*wrong, code=2)
        for path in self.sets.glob("*.QLT"):
            path.unlink()
        self.read("verify", code=1)

    def test_the_reader_agrees_with_quillbox_set_on_random_damage(self):
        sample = SAMPLE_SETS / "1/QUILBOX/QLBX0001.QLT"
        entry = next(each for each in card_reader.entries(sample) if each.name.endswith("\\matches"))
        packed = sample.with_suffix(".QDT").read_bytes()[entry.start:entry.end]
        rng = random.Random(20)
        for number in range(1, 100):
            path = damaged_set(rng, packed).write(self.sets, number)
            if number % 10 == 0 and self.set_tool("seal", path, code=None).returncode == 0:
                path.with_suffix(".QDT").write_bytes(changed(rng, path.with_suffix(".QDT").read_bytes(), number % 20))
        found = {}
        for line in self.set_tool("verify", self.sets, "--json", code=1).text.splitlines():
            fault = json.loads(line)
            if "reason" in fault:
                found.setdefault(fault["set"], []).append((fault.get("item"), "warning" in fault))
        self.assertGreater(len(found), 50)
        for path in sorted(self.sets.glob("*.QLT")):
            self.assertEqual(card_reader.faults(path), found.get(str(path), []), path)
        for path in sorted(self.sets.glob("*.QLT"))[::10 if SANITIZED else 2]:
            for options in (([], []), (["--keep-damaged"], ["--damaged"])):
                self.assert_same_extraction(path, *options)

    def test_the_reader_agrees_about_lengths_at_their_limits(self):
        for length in (30, 31, 32, 257, 258, 259, 260, 261):
            name = "x" * length
            made = Set(name).add(FILE, "\\" + name, b"").add(DATABASE, name, image_bytes(name))
            found = self.set_tool("verify", made.write(self.sets), "--json", code=None)
            self.verified(self.sets / "QLBX0001.QLT", found.returncode)

    def test_the_reader_reports_a_list_that_may_lack_items(self):
        path = Set().add(FILE, "\\a", b"1").add(FILE, "\\b", b"2").write(self.sets)
        whole = path.read_bytes()
        for listed, code in ((whole, 0), (whole + b"\0", 1), (whole + b"\1\1", 1), (whole[:-1], 1), (whole[:5], 1)):
            path.write_bytes(listed)
            with self.subTest(length=len(listed)), contextlib.redirect_stdout(io.StringIO()) as said:
                self.assertEqual(card_reader.READER.main(["list", str(path)]), code)
                self.assertEqual("items may be missing" in said.getvalue(), code == 1)
                self.assert_same_extraction(path, [], [])

    def assert_same_extraction(self, path, options, reader_options):
        theirs, ours = self.output_folder(), self.output_folder()
        done = self.set_tool("extract", path, theirs, *options, code=None)
        with contextlib.redirect_stdout(io.StringIO()):
            code = card_reader.READER.main(["extract", *reader_options, str(path), str(ours)])
        self.assertEqual((code, files_below(ours)), (done.returncode, files_below(theirs)), path)
