"""Loads the reader that `quillbox-set explain` writes beside the sets."""
import pathlib
import types

PATH = pathlib.Path(__file__).parents[2] / "tools/quillbox_set/explanation/QLBXREAD.PY"
READER = types.ModuleType("qlbxread")
exec(compile(PATH.read_text(), PATH, "exec"), READER.__dict__)  # an import would want the ending .py


def faults(path):
    """Of each fault that the reader finds in the set: the number of its item or None, and whether it is a warning."""
    found = READER.Check(READER.Set(str(path))).found
    return [(entry.number if entry else None, is_warning) for entry, _, is_warning in found]
