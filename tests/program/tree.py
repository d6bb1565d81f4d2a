"""A user who marks items in the tree and backs them up; what then stands in the set, read without any of Quillbox's
code."""
import os
import pathlib
import re
import subprocess
import sys

from program import BIN, ProgramTest

sys.path.append(str(pathlib.Path(__file__).resolve().parents[1] / "tools"))
from independent_set import data_path, read_list, unpack_stream  # noqa: E402

FILE, DATABASE, REGISTRY = 1, 2, 3
MARK_FOLDER = "command 500\n"

BACK_UP_MARKED = """answer "Override*" no
command 40005
wait "Backup selected Item"
ok
wait "Select"
select 1003 "\\Card"
ok
idle
"""

DATABASES = r"""{"database":"Tasks","type":26,"sort":[]}
{"record":[{"id":"0037001f","value":"Sand the rudder"}]}
{"database":"Contacts","type":24,"sort":[]}
{"database":"\\hidden","type":24,"sort":[]}
"""


def quoted(text):
    return '"' + text.replace('"', '""') + '"'


def lines(verb, *paths):
    return "".join(f"{verb} {quoted(path)}\n" for path in paths)


def expand(*paths):
    return lines("expand", *paths)


def collapse(*paths):
    return lines("collapse", *paths)


def click(*paths):
    return lines("click", *paths)


def images(expected):
    return "".join(f"expect image {quoted(path)} {image}\n" for path, image in expected.items())


def printed_trees(output):
    """What each `print tree` printed: every item's path with its image, in the order of the screen."""
    trees = []
    above = []
    for line in output.splitlines():
        indent, text, image = re.fullmatch(r"( *)(.*) \[(\d+)\]", line).groups()
        above[len(indent) // 2:] = [text]
        if above == ["Databases"]:
            trees.append([])
        trees[-1].append(("\\".join(above), int(image)))
    return trees


class TreeTest(ProgramTest):
    """A device with three databases, of which the tree shows two."""

    def setUp(self):
        super().setUp()
        subprocess.run([BIN / "quillbox-device", "database", "import", self.device, "-"], input=DATABASES, text=True,
                       check=True, capture_output=True)

    def trees(self, script, *arguments):
        return printed_trees(self.quillbox(script, *arguments).stdout)

    def items(self, number=1):
        """The set's items with their bytes, by kind and name; each stands there once."""
        path = self.card / "QUILBOX" / f"QLBX{number:04d}.QLT"
        _, entries = read_list(path.read_bytes())
        data = data_path(path).read_bytes()
        # A registry's name means nothing.
        found = {(kind, name if kind != REGISTRY else ""): unpack_stream(data[start:end])
                 for kind, name, start, end in entries}
        self.assertEqual(len(found), len(entries), [entry[1] for entry in entries])
        return found

    def files(self, number=1):
        return {name: content for (kind, name), content in self.items(number).items() if kind == FILE}

    def set_attributes(self, name, attributes):
        os.setxattr(self.store / name, "user.DOSATTRIB", b"0x%x" % attributes)
