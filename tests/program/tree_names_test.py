"""Names and devices that are hard to show: each file is marked by its own item and comes back under its own name."""
import os
import unittest

from program import FULL_RESTORE
from tree import BACK_UP_MARKED, MARK_FOLDER, TreeTest, click, expand, images

# As the host has them, and as the tree shows them: what can't be shown stands as U+F700 and the byte.
NAMES = {
    b"caf\xe9": "caf\uf7e9", b"\xff\xfe": "\uf7ff\uf7fe", b"\xed\xa0\x80": "\uf7ed\uf7a0\uf780",
    b"x" * 255: "x" * 255, ("\u20ac" * 85).encode(): "\u20ac" * 85, b"\xe9" * 200: "\uf7e9" * 200,
    "\u05e2\u05d1\u05e8\u05d9\u05ea\u200f.txt".encode(): "\u05e2\u05d1\u05e8\u05d9\u05ea\u200f.txt",
    "\U0001F600\U0001F469\u200d\U0001F467".encode(): "\U0001F600\U0001F469\u200d\U0001F467",
    b" ": " ", b"   ": "   ", b"  leading": "  leading", b"trailing ": "trailing ", b"point.": "point.", b"...": "...",
    b"..x": "..x", b"a\\b": "a\uf75cb", b"\\": "\uf75c", b'"': "\uf722", b'say "hi"': "say \uf722hi\uf722", b"'": "'",
    b"*": "\uf72a", b"wh?t": "wh\uf73ft", b"<|>": "\uf73c\uf77c\uf73e", b"#no comment": "#no comment",
    b"[7]": "[7]", b"a&b": "a&b", b"%s%n": "%s%n", b"\x01\x1f": "\x01\x1f", b"tab\there": "tab\there",
    b"twin": "twin", b"Twin": "Twin", b"TWIN": "TWIN", "\ue000\uf75c".encode(): "\ue000\uf7ef\uf79d\uf79c",
    "e\u0301".encode(): "e\u0301", "\u00e9".encode(): "\u00e9",
}
SET = "\\Card\\QUILBOX\\QLBX0001.QLT"


class TreeNamesTest(TreeTest):
    def write_bytes(self, name, content):
        path = os.path.join(os.fsencode(self.store), name)
        os.makedirs(os.path.dirname(path), exist_ok=True)
        with open(path, "wb") as file:
            file.write(content)

    def test_each_name_is_shown_marked_stored_and_restored(self):
        names = list(NAMES.items())
        for number, (name, _) in enumerate(names):
            self.write_bytes(name, b"content %d" % number)
        before = self.content()
        chosen = names[::2] + names[1::4]
        items = ["Files\\" + shown for _, shown in names]
        self.quillbox(expand("Files") + images(dict.fromkeys(items, 6)) +
                      click(*("Files\\" + shown for _, shown in chosen)) +
                      images({"Files\\" + shown: 7 if (name, shown) in chosen else 6 for name, shown in names}) +
                      BACK_UP_MARKED)
        self.assertEqual(self.files(), {"\\" + shown: before[name] for name, shown in chosen})
        for name, _ in chosen:
            os.unlink(os.path.join(os.fsencode(self.store), name))
        self.quillbox(FULL_RESTORE.format(set=SET))
        self.assertEqual(self.content(), before)

    def test_line_break_in_a_name_is_printed_on_one_line_and_marked_by_its_folder(self):
        self.write_bytes(b"F/new\nline", b"content")
        tree, = self.trees(expand("Files") + click("Files\\F") + MARK_FOLDER + expand("Files\\F") + "print tree\n" +
                           BACK_UP_MARKED)
        self.assertIn(("Files\\F\\new\\nline", 7), tree)
        self.assertEqual(self.files(), {"\\F\\new\nline": b"content"})

    def test_path_that_fits_no_set_is_told_and_left_out(self):
        folder = "f" * 150
        self.write(folder + "/" + "x" * 107, b"fits")
        self.write(folder + "/" + "y" * 108, b"too long")
        self.write(folder + "/" + "z" * 107 + "/deep", b"deep")
        self.write(folder + "/" + "w" * 108 + "/deeper", b"the folder counts as one")
        tree, = self.trees(expand("Files") + click("Files\\" + folder) + MARK_FOLDER +
                           'expect text "3 paths are too long and were left out. The first is:\\n*"\nok\n' +
                           expand("Files\\" + folder) + "print tree\n" + BACK_UP_MARKED)
        self.assertIn((f"Files\\{folder}\\{'x' * 107}", 7), tree)
        self.assertEqual(self.files(), {f"\\{folder}\\{'x' * 107}": b"fits"})


if __name__ == "__main__":
    unittest.main()
