#!/usr/bin/env python3
"""Checks the walls between the rooms: every #include of the project, and the folders that the compiler searches.

    check_rooms.py                      checks the sources
    check_rooms.py COMPILE_COMMANDS     and that no room is compiled with a search path into another room's private headers

A room's public headers lie in <room>/include/<name>/ and are included as "<name>/x.h". Its private headers lie beside its
sources. The compiler searches only the include folders of the rooms that a room uses, so a private header of another
room, or a public one of a room that isn't used, doesn't compile.
"""
import json
import pathlib
import re
import shlex
import sys

ROOT = pathlib.Path(__file__).resolve().parents[2]
PRODUCT = ("src", "platform", "tools", "res")
OTHERS = ("tests", "bench", "fuzz")

# Libraries that only some rooms may use. The compiler finds their headers everywhere.
RESERVED = [
    (r"sqlite3\.h", ["platform/database", "platform/registry", "platform/store"]),
    (r"lzo/.*", ["src/set/block_codec.cpp"]),
    (r"Q[A-Z].*|Qt.*/.*", ["platform/display/qt", "tests/qt", "bench"]),
    (r"(unicode|date)/.*", ["tools/database_formats/calendar_zones.cpp"]),
    (r"libical/.*", ["tools/database_formats/calendar_zones.cpp"]),
    (r"CLI/.*", ["platform/device", "tools", "bench"]),
    (r"nlohmann/.*", ["platform/device", "tools"]),
    (r"dtl/.*", ["tools/quillbox_set/text_patch.cpp"]),
    (r"magic\.h", ["tools/quillbox_set/file_type.cpp"]),
    (r"nettle/.*", ["tools/archive/include/archive/digest.h"]),
    (r"fuse.*", ["tools/quillbox_mount"]),
]
# src/ uses only the platform's calls and the language. These headers of the host are forbidden there.
HOST = re.compile(r"unistd\.h|fcntl\.h|dirent\.h|pthread\.h|dlfcn\.h|sys/.*|linux/.*|arpa/.*|netinet/.*|poll\.h|signal\.h"
                  r"|filesystem|fstream|thread|mutex|condition_variable|iostream|cstdio|stdio\.h|wchar\.h|cwchar")
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]', re.M)
# The program's rooms in their order. Each room includes headers only of earlier rooms.
LAYERS = ["src/set", "src/engine", "src/command", "src/tree", "src/shell"]


def files(*folders):
    return [path for folder in folders for path in sorted((ROOT / folder).rglob("*")) if path.suffix in (".cpp", ".h")]


def room_of(path):
    """Returns the folder with the sources of the file's room."""
    relative = path.relative_to(ROOT).as_posix()
    return relative.split("/include/")[0] if "/include/" in relative else relative.rsplit("/", 1)[0]


def public_headers():
    """Returns each public header by the name under which it is included."""
    return {"/".join(path.parts[-2:]): path for path in files(*PRODUCT)
            if path.suffix == ".h" and path.parent.parent.name == "include"}


def faults_of_reserved(relative, name):
    for pattern, folders in RESERVED:
        if re.fullmatch(pattern, name) and not any(f"{relative}/".startswith(folder + "/") for folder in folders):
            yield f"{relative}: {name} is for {', '.join(folders)} only"
    if relative.startswith("src/") and HOST.fullmatch(name):
        yield f"{relative}: {name} is a header of the host; src/ includes only ce/ and the language's headers"


def faults_of_own(path, name, public):
    """Yields the faults of an include in quotes. "room/x.h" must be public, and "x.h" must be beside the file that
    includes it."""
    relative = path.relative_to(ROOT).as_posix()
    if ".." in name or name.count("/") > 1:
        yield f"{relative}: {name} names a path; write \"room/x.h\""
    elif "/" not in name:
        if relative.split("/")[0] in PRODUCT and not (path.parent / name).is_file():
            yield f"{relative}: {name} is not a header of this room"
        if "/include/" in relative:
            yield f"{relative}: a public header includes the private {name}"
    elif name not in public:
        yield f"{relative}: {name} is not a public header of any room"
    else:
        home, user = room_of(public[name]), room_of(path)
        if user.startswith("platform/") and home.startswith("src/"):
            yield f"{relative}: {name} is the program's; platform/ must not use it"
        if user in LAYERS and home in LAYERS and LAYERS.index(home) > LAYERS.index(user):
            yield f"{relative}: {name} lies above {user}"


def faults_of_includes(public):
    for path in files(*PRODUCT, *OTHERS):
        relative = path.relative_to(ROOT).as_posix()
        for quote, name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            yield from faults_of_reserved(relative, name)
            if quote == '"':
                yield from faults_of_own(path, name, public)


def unit_graph(public):
    """Returns for each unit the units that it includes. A header and a source of the same name in one room are one
    unit."""
    graph = {}
    for path in files(*PRODUCT):
        unit = (room_of(path), path.stem)
        for quote, name in INCLUDE.findall(path.read_text(encoding="utf-8")):
            target = public.get(name) if "/" in name else path.parent / name
            if quote == '"' and target and (room_of(target), target.stem) != unit:
                graph.setdefault(unit, set()).add((room_of(target), target.stem))
    return graph


def faults_of_cycles(public):
    graph, done, names = unit_graph(public), set(), "/".join

    def visit(unit, trail):
        if unit in trail:
            cycle = trail[trail.index(unit):] + [unit]
            yield "units include each other: " + " -> ".join(names(each) for each in cycle)
        elif unit not in done:
            for target in sorted(graph.get(unit, ())):
                yield from visit(target, trail + [unit])
            done.add(unit)

    for unit in sorted(graph):
        yield from visit(unit, [])


def faults_of_names():
    """Yields private headers that have the same name. Only the order of a test's search paths would distinguish
    them."""
    seen = {}
    for path in files(*PRODUCT):
        if path.suffix == ".h" and "/include/" not in path.as_posix():
            if path.name in seen:
                yield f"{path.relative_to(ROOT)} and {seen[path.name].relative_to(ROOT)} have one name"
            seen[path.name] = path


def faults_of_search_paths(compile_commands):
    for command in json.loads(pathlib.Path(compile_commands).read_text(encoding="utf-8")):
        source = pathlib.Path(command["file"])
        if source.parent.name == "Unity":  # a unity source: its path below the build names the room
            source = ROOT / source.relative_to(pathlib.Path(compile_commands).resolve().parent)
        if not source.is_relative_to(ROOT) or source.relative_to(ROOT).parts[0] not in PRODUCT:
            continue
        words = shlex.split(command["command"])
        folders = [word[2:] for word in words if word.startswith("-I")]
        folders += [after for word, after in zip(words, words[1:]) if word in ("-isystem", "-iquote")]
        for folder in map(pathlib.Path, folders):
            if folder.is_relative_to(ROOT) and folder.name != "include" and any(folder.glob("*.h")):
                yield f"{source.relative_to(ROOT)} is compiled with a search path into {folder.relative_to(ROOT)}"


def main():
    public = public_headers()
    faults = [*faults_of_includes(public), *faults_of_cycles(public), *faults_of_names()]
    for compile_commands in sys.argv[1:]:
        faults += faults_of_search_paths(compile_commands)
    print("\n".join(dict.fromkeys(faults)), end="\n" if faults else "")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
