#!/usr/bin/env python3
"""Makes two backups with Quillbox, 1 and 2 in the folder QUILLBOX_SAMPLE_SETS.

The build runs this script when one of the programs has changed. The suites that only need sets made by Quillbox read
these. They run again only if a changed Quillbox makes other sets. So the date in the comment of a set is replaced. If no
set can be made, the build goes on, and the suites that read them fail.
"""
import pathlib
import random
import shutil
import subprocess
import sys
import tempfile

from companions import BIN, SAMPLE_SETS, SANITIZED, database, lines
from independent_set import Set

WORDS = [f"word{number}" for number in range(2000)]
JPEG = bytes.fromhex("ffd8ffe000104a46494600010100000100010000ffdb")


def text(source, words):
    return " ".join(source.choices(WORDS, k=words))


def content(source):
    """Returns the content of a file of a random size: a text, a table, an incompressible picture, or zeros."""
    size = int(2 ** source.uniform(0, 18.5))
    table = b"".join(bytes([source.randrange(256), 0, 0, source.randrange(4)]) for _ in range(size // 8 + 1))
    return source.choice([text(source, size // 6 + 1).encode(), table, JPEG + source.randbytes(size // 4), bytes(size)])


def matches(source):
    """Returns a content that is packed with matches of each kind: near, far, overlapping, long."""
    words = [source.randbytes(source.randrange(2, 9)) for _ in range(400)]
    return b" ".join(source.choice(words) for _ in range(1500)) + bytes(5000) + source.randbytes(900)


def make_set(seed):
    source, target = random.Random(seed), SAMPLE_SETS / f"{seed}"
    target.mkdir(parents=True)
    with tempfile.TemporaryDirectory() as folder:
        device, databases, documents = (pathlib.Path(folder, name) for name in ("device", "databases.jsonl", "device/object-store/Documents"))

        def run(program, *words):
            subprocess.run([BIN / program, *map(str, words)], check=True, stdout=subprocess.DEVNULL)

        run("quillbox-device", "init", device)
        documents.mkdir(exist_ok=True)
        for number in range(12 if SANITIZED else 40):
            (documents / f"file {number}").write_bytes(content(source))
        (documents / "picture").write_bytes(JPEG + source.randbytes(50_000))
        (documents / "matches").write_bytes(matches(source))
        records = [[{"id": "0037001f", "value": text(source, 9)}, {"id": "41090002", "value": number}] for number in range(300)]
        databases.write_text(lines(database("Big", records), database("Small", records[:3])))
        run("quillbox-device", "database", "import", device, databases)
        run("quillbox", "--device", device, "backup", "--to", f"{target}/", "--no-seal", "--quiet")
    path = target / "QUILBOX/QLBX0001.QLT"
    listed = path.read_bytes()
    comment = int.from_bytes(listed[:4], "little")  # its characters
    path.write_bytes(Set("A sample").listed + listed[4 + 2 * comment:])


if __name__ == "__main__":
    shutil.rmtree(SAMPLE_SETS, ignore_errors=True)
    try:
        for each in (1, 2):
            make_set(each)
    except subprocess.CalledProcessError as failed:
        print(f"no sample sets: {failed}", file=sys.stderr)
        shutil.rmtree(SAMPLE_SETS)
    SAMPLE_SETS.mkdir(exist_ok=True)
    (SAMPLE_SETS / "made").touch()
