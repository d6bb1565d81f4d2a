"""A restore that is killed at any of its writes, and a start that is killed while a restored registry comes into force."""
import json
import os
import re
import shutil
import sqlite3
import subprocess
import unittest

from device_contents import (RESTORE, SANITIZED, SET, TEXT, ContentsTest, after, database, every_type,
                             independent_set, item, lines, write_set)
from program import BIN

# Calls by which a process changes what is on the disk.
CHANGES = "write,pwrite64,pwritev,ftruncate,fallocate,fdatasync,fsync,rename,renameat,renameat2,unlink,unlinkat,openat2"
# All of them are some hundred; a few, spread over the whole, in a usual run.
KILLS = 10 ** 6 if os.environ.get("QUILLBOX_EVERY_CALL") else 8 if SANITIZED else 12

OLD = [database("First", [[item(1, TEXT, f"old {number}")] for number in range(3)], 9),
       database("Second", [[item(1, TEXT, "old")]], 9)]
NEW = [database("First", [every_type(number) for number in range(5000)], 7),
       database("Second", [[item(1, TEXT, f"new {number}")] for number in range(3)], 7),
       database("Third", [[item(number, TEXT, "new") for number in range(300)]], 7)]
OLD_KEYS = {"HKEY_USERS\\old": [f'"{number:02}"="old"' for number in range(50)]}
NEW_KEYS = {f"HKEY_USERS\\new {number:02}": ['"value"="new"'] for number in range(50)}


def by_name(export):
    """The type and the records of each exported database."""
    found = {}
    for line in export.splitlines():
        head = json.loads(line)
        if "database" in head:
            records = []
            found[head["database"]] = (head["type"], records)
        else:
            records.append(line)
    return found


@unittest.skipUnless(shutil.which("strace"), "strace isn't installed")
class KilledRestoreTest(ContentsTest):
    def setUp(self):
        super().setUp()
        self.fill(OLD, "".join(f"[{key}]\r\n" + "".join(value + "\r\n" for value in values) for key, values in OLD_KEYS.items()))
        self.quillbox("idle\n")  # which leaves its options in the registry
        write_set(self.card, NEW, registry=independent_set.registry_bytes(NEW_KEYS))
        self.old, self.new = by_name(lines(OLD)), by_name(lines(after(1, NEW)))
        self.old_registry = self.registry()
        self.template = self.base / "template"
        self.device.rename(self.template)

    def run_to(self, call, script):
        """Runs the script, killed before the nth call of a name in a thread if `call` is such a pair; its trace."""
        trace = self.base / "trace"
        kill = ["-e", f"inject={call[0]}:signal=KILL:when={call[1]}"] if call else []
        finished = subprocess.run(["strace", "-f", "-qq", "-o", trace, "-e", f"trace={CHANGES}", *kill,
                                   BIN / "quillbox", "--device", self.device, "--script", "-"], input=script,
                                  capture_output=True, text=True, timeout=600,
                                  env={**os.environ, "ASAN_OPTIONS": "detect_leaks=0"})
        # How many calls there are depends on the time that the host takes: a late one may not come again.
        self.assertIn(finished.returncode, (0, -9) if call else (0,), finished.stderr)
        return trace.read_text()

    def fresh(self):
        shutil.rmtree(self.device, ignore_errors=True)
        shutil.copytree(self.template, self.device)

    def places(self, script):
        """Where to kill: at the first and the last change that the script makes, and spread over those between."""
        self.fresh()
        counts, calls = {}, []
        for thread, name in re.findall(r"^(\d+) +(\w+)\(", self.run_to(None, script), re.MULTILINE):
            if name not in CHANGES.split(","):
                continue  # one that strace has no name for
            counts[thread, name] = counts.get((thread, name), 0) + 1
            calls.append((name, counts[thread, name]))
        self.assertGreater(len(calls), 15)
        step = max(1, len(calls) // KILLS)
        # And once to the end: on a slow host the last of them may come before it.
        return [calls[0], *calls[step // 2::step], max(calls, key=lambda call: call[1]), None]

    def check_file(self):
        """The database as SQLite alone sees it."""
        copy = self.base / "copy"
        shutil.rmtree(copy, ignore_errors=True)
        copy.mkdir()
        for path in self.device.glob("device.db*"):
            shutil.copy(path, copy)
        opened = sqlite3.connect(copy / "device.db")
        self.assertEqual(opened.execute("PRAGMA quick_check").fetchall(), [("ok",)])
        self.assertEqual(opened.execute("PRAGMA foreign_key_check").fetchall(), [])
        opened.close()

    def test_each_database_is_the_old_one_or_the_new_one_whole_and_one_without_an_old_one_has_its_first_records(self):
        script = 'answer "Database:*" yes\n' + RESTORE.format(set=SET, answers="")
        states, left = set(), set()
        for call in self.places(script):
            with self.subTest(call=call):
                self.fresh()
                self.run_to(call, script)
                left.update(os.listdir(self.store))
                self.check_file()
                found, registry = by_name(self.databases()), self.registry()
                self.assertLessEqual(found.keys(), self.new.keys())
                for name in self.new:
                    kind, records = found.get(name, (None, None))
                    if name in self.old:
                        self.assertIn((kind, records), (self.old[name], self.new[name]))
                    if kind == 7:
                        self.assertTrue(records == self.new[name][1][:len(records)], name)
                        states.add((name, "whole" if len(records) == len(self.new[name][1]) else "partly"))
                    elif kind is not None:
                        states.add((name, "old"))
                # Whole and new only if it waited for this start.
                if registry != self.old_registry:
                    self.assertEqual(registry.decode("utf-16"), independent_set.registry_bytes(NEW_KEYS).decode("utf-16"))
                    states.add("new registry")
                self.quillbox("idle\n")
                self.assertEqual(os.listdir(self.store), [])
        self.assertTrue({"BK000.TMP", "First.CDB"} & left, "no kill left a temporary file")
        self.assertLessEqual({("First", "old"), ("First", "whole"), ("Second", "old")}, states)


if __name__ == "__main__":
    unittest.main()
