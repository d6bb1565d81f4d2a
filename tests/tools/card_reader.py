"""The reader that `quillbox-set explain` writes beside the sets. It shares no code with the programs."""
import pathlib
import types

PATH = pathlib.Path(__file__).parents[2] / "tools/quillbox_set/explanation/QLBXREAD.PY"
READER = types.ModuleType("qlbxread")
exec(compile(PATH.read_text(), PATH, "exec"), READER.__dict__)  # an import would need the ending .py


def faults(path):
    """Returns for each fault that the reader finds in the set: the number of its item or None, and whether it is a
    warning."""
    found = READER.Check(READER.Set(str(path))).found
    return [(entry.number if entry else None, is_warning) for entry, _, is_warning in found]


def entries(list_path):
    """Returns the entries of a list, with .kind, .name, .start and .end."""
    return READER.List(list_path.read_bytes()).entries


def read_set(list_path):
    """Returns the items of a set as (kind, name, content), in their order. The set must be sound."""
    wrong = [fault for fault in READER.Check(READER.Set(str(list_path))).found if not fault[2]]
    if wrong:
        raise AssertionError(f"{list_path}: {wrong[0][0] and wrong[0][0].shown()}: {wrong[0][1]}")
    read = READER.Set(str(list_path))
    return [(entry.kind, entry.name, read.raw(entry)[0]) for entry in read.list.entries]
