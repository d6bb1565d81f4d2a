"""Compares the committed pictures with a fresh rendering of their sources, and the strips with what the program expects.

check_pictures.py RES_FOLDER
"""

import pathlib
import struct
import subprocess
import sys
import tempfile

PICTURES = ["tree.bmp", "toolbar.bmp", "band.bmp", "quillbox.ico"]
STRIPS = {"tree": (864, 45, "00ff00"), "toolbar": (80, 16, "c0c0c0"), "band": (16, 16, "c0c0c0")}
TREE_CELLS = 18


def rows_of(bitmap):
    """Returns the rows of 4-bit pixels from top to bottom, and the colours."""
    start, = struct.unpack_from("<I", bitmap, 10)
    width, height, planes, bits = struct.unpack_from("<iiHH", bitmap, 18)
    assert (planes, bits) == (1, 4), f"{bits} bits a pixel"
    line = width // 2
    return [bitmap[start + y * line:start + (y + 1) * line] for y in reversed(range(height))], bitmap[54:start]


def faults(folder):
    with tempfile.TemporaryDirectory() as fresh:
        subprocess.run([folder / "render-pictures", fresh], check=True)
        for name in PICTURES:
            if (folder / name).read_bytes() != (pathlib.Path(fresh) / name).read_bytes():
                yield f"{name} differs from its source: run res/render-pictures"
    for name, (width, height, ground) in STRIPS.items():
        rows, colours = rows_of((folder / f"{name}.bmp").read_bytes())
        if (len(rows[0]) * 2, len(rows)) != (width, height):
            yield f"{name}.bmp is not {width} by {height}"
        index = rows[0][0] >> 4
        if colours[4 * index:4 * index + 3] != bytes.fromhex(ground)[::-1]:
            yield f"{name}.bmp doesn't have the ground {ground} at its top left"
        if f"#{ground}" in (folder / f"{name}.svg").read_text(encoding="utf-8").lower():
            yield f"{name}.svg draws in the colour of its ground"
    rows, _ = rows_of((folder / "tree.bmp").read_bytes())
    cells = {b"".join(row[16 * cell:16 * (cell + 1)] for row in rows[:15]) for cell in range(TREE_CELLS)}
    if len(cells) != TREE_CELLS:
        yield "two images of the tree look the same"


def main():
    found = list(faults(pathlib.Path(sys.argv[1])))
    print("\n".join(found) or "the pictures are what their sources draw")
    return 1 if found else 0


sys.exit(main())
