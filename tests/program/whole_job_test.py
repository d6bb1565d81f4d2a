"""Whole jobs on many real files: every byte and every name comes back, under each policy, and through other hands."""
import os
import pathlib
import subprocess
import sys
import unittest

from program import FULL_BACKUP, FULL_RESTORE, ProgramTest

INDEPENDENT = pathlib.Path(__file__).resolve().parents[1] / "tools" / "independent_set.py"
FILES = 20_000
SET = "\\Card\\QUILBOX\\QLBX0001.QLT"
BLOCK = 131_072

# Names that are hard to carry: bytes that are no UTF-8, twins by case, blanks, every reserved character, private use.
DIFFICULT = [b"caf\xe9", b"\xff\xfe", b"Twin", b"twin", b"TWIN", b" ", b"  leading", b"trailing ", b"dot.", b"...",
             b"a\\b", b'quo"te', b"star*", b"what?", b"<angle>", b"pi|pe", b"new\nline", b"\x01\x1f", "ünïcödé".encode(),
             "\U0001F600".encode(), "עברית".encode(), "\uf75c".encode(), "\uf72e".encode(), b"x" * 200, b"\xed\xa0\x80",
             b"a&b", b"%s%d"]
EDGES = [0, 1, 2, 259, 260, 261, BLOCK - 1, BLOCK, BLOCK + 1, 2 * BLOCK, 2 * BLOCK + BLOCK // 2]


def fill(store):
    """FILES files: real ones of this machine, as far as it has them, then made ones; and the difficult ones."""
    count = 0
    for base in ("/usr/include", "/usr/share/doc", "/usr/share/man", "/usr/lib/python3", "/usr/share"):
        for place, _, names in os.walk(base):
            target = store / pathlib.Path(place).relative_to("/")
            if len(str(target.relative_to(store))) > 120:
                continue
            for name in names:
                source = os.path.join(place, name)
                if os.path.islink(source) or not os.path.isfile(source) or os.path.getsize(source) > 50_000:
                    continue
                if count >= FILES:
                    return
                target.mkdir(parents=True, exist_ok=True)
                with open(source, "rb") as file:
                    (target / name).write_bytes(file.read())
                count += 1
    for number in range(count, FILES):
        folder = store / "made" / str(number // 100)
        folder.mkdir(parents=True, exist_ok=True)
        (folder / str(number)).write_bytes(str(number).encode() * (number % 50))


def fill_difficult(store):
    (store / "difficult").mkdir()
    for number, name in enumerate(DIFFICULT):
        with open(os.path.join(os.fsencode(store), b"difficult", name), "wb") as file:
            file.write(b"content %d" % number)
    for size in EDGES:
        (store / "difficult" / f"edge {size}").write_bytes(os.urandom(size))
        (store / "difficult" / f"even {size}").write_bytes(bytes(size))


class WholeJobTest(ProgramTest):
    def setUp(self):
        super().setUp()
        fill_difficult(self.store)

    def back_up(self):
        self.quillbox(FULL_BACKUP.format(comment="all of it", storage="\\Card"))
        self.assertIn("Sound", self.set_tool("verify", self.card / "QUILBOX" / "QLBX0001"))

    def test_twenty_thousand_files_come_back(self):
        fill(self.store)
        before = self.content()
        self.assertGreaterEqual(len(before), FILES)
        self.back_up()
        self.empty_store()
        self.quillbox(FULL_RESTORE.format(set=SET))
        self.assertTrue(self.content() == before)

    def test_other_hands_read_what_quillbox_writes(self):
        before = self.content()
        self.back_up()
        out = self.base / "read"
        subprocess.run([sys.executable, INDEPENDENT, "read", self.card / "QUILBOX" / "QLBX0001.QLT", out], check=True, stdout=subprocess.DEVNULL)
        # The independent reader writes device names as UTF-8; compare by content, which is different in every file.
        self.assertEqual(sorted(self.content(out).values()), sorted(before.values()))

    def test_quillbox_reads_what_other_hands_write(self):
        source = self.base / "source"
        (source / "deep" / "er").mkdir(parents=True)
        for size in EDGES:
            (source / "deep" / "er" / f"file {size}").write_bytes(os.urandom(size))
        (self.card / "QUILBOX").mkdir()
        subprocess.run([sys.executable, INDEPENDENT, "write", self.card / "QUILBOX" / "QLBX0001.QLT", source], check=True,
                       stdout=subprocess.DEVNULL)
        self.assertIn("Sound", self.set_tool("verify", self.card / "QUILBOX" / "QLBX0001.QLT"))
        self.empty_store()
        self.quillbox(FULL_RESTORE.format(set=SET))
        self.assertEqual(sorted(self.content().values()), sorted(self.content(source).values()))

    def test_the_tool_extracts_what_quillbox_stored(self):
        before = self.content()
        self.back_up()
        out = self.base / "extracted"
        self.set_tool("extract", self.card / "QUILBOX" / "QLBX0001.QLT", out)
        self.assertTrue(self.content(out) == before)


if __name__ == "__main__":
    unittest.main()
