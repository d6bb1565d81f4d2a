"""A restore that is killed at any of its writes."""
import json
import os
import shutil
import unittest

import independent_set
from companions import BIN, SANITIZED, database, lines
from device_contents import TEXT, ContentsTest, after, every_type, item, texts
from host_trouble import needs_strace, traced
from program import CONFIRM_REGISTRY, full_restore

# Calls by which a process changes what is on the disk.
CHANGES = "write,pwrite64,pwritev,ftruncate,fallocate,fdatasync,fsync,rename,renameat,renameat2,unlink,unlinkat,openat2"
# There are some hundred of them. A usual run takes a few, spread over all.
KILLS = 10 ** 6 if os.environ.get("QUILLBOX_EVERY_CALL") else 8 if SANITIZED else 12

OLD = [database("First", texts(*(f"old {number}" for number in range(3))), 9), database("Second", texts("old"), 9)]
NEW = [database("First", [every_type(number) for number in range(5000)], 7),
       database("Second", texts(*(f"new {number}" for number in range(3))), 7),
       database("Third", [[item(number, TEXT, "new") for number in range(300)]], 7)]
NEW_REGISTRY = independent_set.registry_bytes({f"HKEY_USERS\\new {number:02}": ['"value"="new"'] for number in range(50)})
SCRIPT = 'answer "Database:*" yes\n' + full_restore(CONFIRM_REGISTRY)


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


@needs_strace
class KilledRestoreTest(ContentsTest):
    def setUp(self):
        super().setUp()
        self.fill(*OLD, registry="[HKEY_USERS\\old]\r\n" + "".join(f'"{number:02}"="old"\r\n' for number in range(50)))
        self.quillbox("idle\n")  # which leaves its options in the registry
        self.write_set(*NEW, registry=NEW_REGISTRY)
        self.old_registry = self.registry()
        self.template = self.folder / "template"
        self.device.rename(self.template)

    def run_to(self, call):
        """Restores on a fresh copy of the device. `call` is None, or a name and a number: the kill comes before the nth
        call of that name in a thread. Returns the calls that were made, as thread and name."""
        shutil.rmtree(self.device, ignore_errors=True)
        shutil.copytree(self.template, self.device)
        kill = [f"{call[0]}:signal=KILL:when={call[1]}"] if call else []
        done = traced([BIN / "quillbox", "--device", self.device, "--script", "-"], CHANGES, *kill, input=SCRIPT.encode())
        # How many calls there are depends on the time that the host takes: a late one may not come again.
        self.assertIn(done.returncode, (0, -9) if call else (0,), done.stderr)
        return done.by_thread

    def kills(self):
        """Where to kill: at the first and the last change that the script makes, and spread over those between."""
        counts, calls = {}, []
        for made in self.run_to(None):
            counts[made] = counts.get(made, 0) + 1
            calls.append((made[1], counts[made]))
        self.assertGreater(len(calls), 15)
        step = max(1, len(calls) // KILLS)
        # Once without a kill. On a slow host the last calls can come earlier.
        return [calls[0], *calls[step // 2::step], max(calls, key=lambda call: call[1]), None]

    def test_each_database_is_the_old_or_the_new_one_whole_and_one_without_an_old_one_has_its_first_records(self):
        old, new = by_name(lines(*OLD)), by_name(lines(*after(1, NEW)))
        states, left = set(), set()
        for call in self.kills():
            with self.subTest(call=call):
                self.run_to(call)
                left.update(os.listdir(self.store))
                # The export opens the device, which checks each page.
                found, registry = by_name(self.exported()), self.registry()
                self.assertLessEqual(found.keys(), new.keys())
                for name, (kind, records) in found.items():
                    if name in old:
                        self.assertIn((kind, records), (old[name], new[name]))
                        states.add((name, "old" if kind == old[name][0] else "new"))
                    else:
                        self.assertTrue(records == new[name][1][:len(records)], name)
                # The new registry is complete and takes effect only if it was stored for this start.
                if registry != self.old_registry:
                    self.assertEqual(registry.decode("utf-16"), NEW_REGISTRY.decode("utf-16"))
                self.quillbox("idle\n")
                self.assertEqual(os.listdir(self.store), [])
        self.assertTrue({"BK000.TMP", "First.CDB"} & left, "no kill left a temporary file")
        self.assertLessEqual({("First", "old"), ("First", "new"), ("Second", "old")}, states)


if __name__ == "__main__":
    unittest.main()
