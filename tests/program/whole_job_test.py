"""Complete backups and restores of many real files: every byte and every name comes back, also with other readers and
writers of sets."""
import os
import random

import independent_set
from companions import SANITIZED
from device_contents import NAMES
from program import ProgramTest, full_backup, full_restore

FILE_COUNT = 2000 if SANITIZED else 20_000
BLOCK = 131_072
EDGES = [0, 1, 2, 259, 260, 261, BLOCK - 1, BLOCK, BLOCK + 1, 2 * BLOCK, 2 * BLOCK + BLOCK // 2]


class WholeJobTest(ProgramTest):
    def fill(self, count=0):
        """Writes `count` files of text and noise, and files with difficult names and sizes."""
        chance = random.Random(count)
        words = [chance.randbytes(chance.randint(1, 12)) for _ in range(50)]
        text = b" ".join(chance.choices(words, k=20_000))
        for number in range(count):
            folder = "/".join(f"folder {number // 10 ** level}" for level in range(4, 0, -1))
            begin = chance.randrange(len(text))
            self.write(f"{folder}/{number}", text[begin:begin + chance.randint(0, 5000)])
        for number, name in enumerate([*NAMES, b"new\nline", "\uf72e".encode()]):
            self.write(name, b"content %d" % number)
        for size in EDGES:
            self.write(f"edge {size}", os.urandom(size))
            self.write(f"even {size}", bytes(size))
        return self.content()

    def test_thousands_of_files_and_difficult_names_come_back(self):
        before = self.fill(FILE_COUNT)
        self.quillbox(full_backup(comment="all of it"))
        self.assertIn("Sound", self.set_tool("verify", self.set).text)
        self.empty_store()
        self.quillbox(full_restore())
        self.assertTrue(self.content() == before)

    def test_other_readers_take_out_what_quillbox_stored(self):
        before = self.fill()
        self.quillbox(full_backup())
        out = self.output_folder()
        self.set_tool("extract", self.set, out)
        self.assertTrue(self.content(out) == before)
        # The independent reader returns the names on the device, but `before` has the names on the host. So the test
        # compares only the contents. Nearly every file has its own content, so a lost or repeated file is noticed.
        self.assertEqual(sorted(self.items().values()), sorted(before.values()))

    def test_quillbox_restores_what_another_writer_made(self):
        made = independent_set.Set()
        contents = {f"deep/er/file {size}".encode(): os.urandom(size) for size in EDGES}
        for name, content in contents.items():
            made.add(independent_set.FILE, "\\" + name.decode().replace("/", "\\"), content)
        made.write(self.sets)
        self.quillbox(full_restore())
        self.assertEqual(self.content(), contents)
