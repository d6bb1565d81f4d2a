#!/usr/bin/env python3
"""Holds each room's #include lines against what the room may know.

The compiler refuses a header of another room, but system headers lie on everybody's path.
"""
import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]

# What lies on every path and belongs to some rooms only: pattern of the header, folders that may include it.
RESERVED = [
    (r"sqlite3\.h", ["platform/database", "platform/registry", "platform/store"]),
    (r"lzo/.*", ["src/set", "tests/set"]),
    (r"Q[A-Z].*|Qt.*/.*", ["platform/display/qt", "tests/qt", "bench"]),
    (r"CLI/.*", ["platform/device", "tools", "bench"]),
    (r"nlohmann/.*", ["tools"]),
]
# The program itself knows the platform's calls and the language, nothing of the host.
HOST = re.compile(r"unistd\.h|fcntl\.h|dirent\.h|pthread\.h|dlfcn\.h|sys/.*|linux/.*|arpa/.*|netinet/.*|poll\.h|signal\.h"
                  r"|filesystem|fstream|thread|mutex|condition_variable|iostream|cstdio|stdio\.h|wchar\.h|cwchar")
INCLUDE = re.compile(r'^\s*#\s*include\s*[<"]([^>"]+)[>"]', re.M)
LAYERS = ["src/set", "src/engine", "src/tree", "src/shell"]


def headers_of(folder):
    return {p.name for p in (ROOT / folder).rglob("*.h")}


def faults_of(path):
    relative = path.relative_to(ROOT).as_posix()
    includes = INCLUDE.findall(path.read_text(encoding="utf-8"))
    for name in includes:
        for pattern, folders in RESERVED:
            if re.fullmatch(pattern, name) and not any(relative.startswith(f + "/") for f in folders):
                yield f"{relative}: {name} is for {', '.join(folders)} only"
        if relative.startswith("src/") and HOST.fullmatch(name):
            yield f"{relative}: {name} belongs to the host; src/ knows only ce/ and the language"
        if relative.startswith("platform/") and any(name in headers_of(layer) for layer in LAYERS):
            yield f"{relative}: {name} is the program's; platform/ knows nothing of it"
    for position, layer in enumerate(LAYERS):
        if relative.startswith(layer + "/"):
            above = {h for upper in LAYERS[position + 1:] for h in headers_of(upper)}
            for name in includes:
                if name in above:
                    yield f"{relative}: {name} lies above {layer}"


def main():
    faults = []
    for folder in ("src", "platform", "tools", "tests", "bench", "fuzz"):
        for path in sorted((ROOT / folder).rglob("*")):
            if path.suffix in (".cpp", ".h"):
                faults.extend(faults_of(path))
    print("\n".join(faults), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
