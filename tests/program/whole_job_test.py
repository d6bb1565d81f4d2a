"""Whole jobs on many real files: every byte and every name comes back, also through other programs."""
import os
import pathlib
import unittest

import independent_set
from program import ProgramTest, full_backup, full_restore

FILE_COUNT = 20_000
BLOCK = 131_072

# Names that are hard to carry: bytes that are no UTF-8, twins by case, blanks, every reserved character, private use.
DIFFICULT = [b"caf\xe9", b"\xff\xfe", b"Twin", b"twin", b"TWIN", b" ", b"  leading", b"trailing ", b"dot.", b"...",
             b"a\\b", b'quo"te', b"star*", b"what?", b"<angle>", b"pi|pe", b"new\nline", b"\x01\x1f", "ünïcödé".encode(),
             "\U0001F600".encode(), "עברית".encode(), "\uf75c".encode(), "\uf72e".encode(), b"x" * 200, b"\xed\xa0\x80",
             b"a&b", b"%s%d"]
EDGES = [0, 1, 2, 259, 260, 261, BLOCK - 1, BLOCK, BLOCK + 1, 2 * BLOCK, 2 * BLOCK + BLOCK // 2]


def fill(store):
    """FILE_COUNT files: real ones of this machine, as far as it has them, then made ones."""
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
                if count >= FILE_COUNT:
                    return
                target.mkdir(parents=True, exist_ok=True)
                with open(source, "rb") as file:
                    (target / name).write_bytes(file.read())
                count += 1
    for number in range(count, FILE_COUNT):
        folder = store / "made" / str(number // 100)
        folder.mkdir(parents=True, exist_ok=True)
        (folder / str(number)).write_bytes(str(number).encode() * (number % 50))


class WholeJobTest(ProgramTest):
    def fill_difficult(self):
        for number, name in enumerate(DIFFICULT):
            self.write(b"difficult/" + name, b"content %d" % number)
        for size in EDGES:
            self.write(f"difficult/edge {size}", os.urandom(size))
            self.write(f"difficult/even {size}", bytes(size))

    def test_twenty_thousand_files_and_difficult_names_come_back(self):
        self.fill_difficult()
        fill(self.store)
        before = self.content()
        self.assertGreaterEqual(len(before), FILE_COUNT)
        self.quillbox(full_backup(comment="all of it"))
        self.assertIn("Sound", self.set_tool("verify", self.set).text)
        self.empty_store()
        self.quillbox(full_restore())
        self.assertTrue(self.content() == before)

    def test_other_readers_take_out_what_quillbox_stored(self):
        self.fill_difficult()
        before = self.content()
        self.quillbox(full_backup())
        out = self.output_folder()
        self.set_tool("extract", self.set, out)
        self.assertTrue(self.content(out) == before)
        # The independent reader gives the device's names; the content is different in nearly every file.
        self.assertEqual(sorted(self.items().values()), sorted(before.values()))

    def test_quillbox_restores_what_another_writer_made(self):
        made = independent_set.Set()
        contents = {f"deep/er/file {size}".encode(): os.urandom(size) for size in EDGES}
        for name, content in contents.items():
            made.add(independent_set.FILE, "\\" + name.decode().replace("/", "\\"), content)
        self.assertIn("Sound", self.set_tool("verify", made.write(self.sets)).text)
        self.quillbox(full_restore())
        self.assertEqual(self.content(), contents)


if __name__ == "__main__":
    unittest.main()
