"""Holds the committed pictures against a fresh run of their script, and the script's own promises.

check_pictures.py RES_FOLDER
"""

import importlib.util
import pathlib
import sys

sys.dont_write_bytecode = True


def main():
    folder = pathlib.Path(sys.argv[1])
    spec = importlib.util.spec_from_file_location("draw", folder / "draw.py")
    draw = importlib.util.module_from_spec(spec)
    sys.modules["draw"] = draw
    spec.loader.exec_module(draw)

    complaints = []
    pictures = draw.pictures()
    for name, content in pictures.items():
        path = folder / name
        if not path.exists() or path.read_bytes() != content:
            complaints.append(f"{name} differs from what draw.py draws: run res/draw.py")
    for path in sorted((folder / "svg").glob("*")):
        if f"svg/{path.name}" not in pictures:
            complaints.append(f"svg/{path.name} is no picture of draw.py")
    if draw.MASK in draw.INKS or draw.BAR in draw.INKS:
        complaints.append("a shape has the colour of a transparent ground")

    # Images that mean different things must look different, also as the small bitmap.
    seen = {}
    for number, cell in enumerate(draw.TREE):
        drawn = repr(draw.sample(cell, 32, 15))
        if drawn in seen:
            complaints.append(f"tree images {seen[drawn]} and {number} look the same")
        seen[drawn] = number

    print("\n".join(complaints) or "pictures: as drawn")
    return 1 if complaints else 0


sys.exit(main())
