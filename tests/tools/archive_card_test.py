"""A card with 99 sets of a changing device: each command must print what follows from the known history.

The history is made here, and the expected answers are computed from it. The sets come from independent_set.py.
"""
import datetime
import hashlib
import json
import os
import pathlib
import random
import shutil
import subprocess

from companions import BIN, CompanionTest, SANITIZED
from host_trouble import needs_strace, traced
from independent_set import DATABASE, FILE, REGISTRY, Set, image_bytes, registry_bytes

LAST_NAME, FIRST_NAME, TELEPHONE = 0x3A11001F, 0x3A06001F, 0x3A09001F
KEY = "HKEY_CURRENT_USER\\Card"
SETS = 99


def made_comment(date, day_first=True):
    return f"Backup date:{date:{'%d/%m' if day_first else '%m/%d'}/%Y (%H:%M)}\r\nComments:\r\n"


def write_set(folder, number, state, date, day_first=True):
    made = Set(made_comment(date, day_first))
    for name, content in sorted(state["files"].items()):
        made.add(FILE, name, content)
    records = [[(LAST_NAME, last), (FIRST_NAME, "Berta"), (TELEPHONE, telephone)]
               for last, telephone in sorted(state["contacts"].items())]
    made.add(DATABASE, "Contacts Database", image_bytes("Contacts Database", 24, [], records))
    values = [f'"{name}"=dword:{number:08x}' for name, number in sorted(state["values"].items())]
    path = made.add(REGISTRY, "", registry_bytes({KEY: values})).write(folder, number)
    os.utime(path, (1, 1))  # so that the file's time doesn't decide between day and month
    return path


def changed(source, state):
    """Returns the next state, with some things added, changed or removed."""
    after = {part: dict(content) for part, content in state.items()}
    for part, name, value in (("files", lambda n: f"\\Notes\\note {n}.txt", lambda n: f"one\ntwo {n}\nthree\n".encode()),
                              ("contacts", lambda n: f"Meyer{n}", lambda n: f"040 {n}"), ("values", lambda n: f"v{n}", lambda n: n)):
        for _ in range(source.randrange(3)):
            which = name(source.randrange(8))
            if source.random() < 0.3:
                after[part].pop(which, None)
            else:
                after[part][which] = value(source.randrange(1000))
    return after


class Kept:
    """The documented rules of `prune`, computed in another way: for each rule from the whole list of periods at
    once."""

    PERIODS = {"daily": lambda d: d.date(), "weekly": lambda d: d.isocalendar()[:2], "monthly": lambda d: (d.year, d.month),
               "yearly": lambda d: d.year}

    def __init__(self, dates, rules):
        newest_first = sorted(dates, reverse=True)
        self.dates = set(newest_first[:1]) | set(newest_first[:rules.get("last", 0)])
        if rules.get("within"):
            self.dates |= {date for date in dates if date > newest_first[0] - datetime.timedelta(days=rules["within"])}
        for rule, period in self.PERIODS.items():
            latest = {}
            for date in newest_first:
                latest.setdefault(period(date), date)
            self.dates |= set(sorted(latest.values(), reverse=True)[:rules.get(rule, 0)])
            if len(latest) < rules.get(rule, 0):
                self.dates.add(newest_first[-1])


class CardTest(CompanionTest):
    def setUp(self):
        super().setUp()
        source = random.Random(11)
        state = {"files": {"\\a.txt": b"a"}, "contacts": {"Meyer0": "1"}, "values": {}}
        self.states, self.dates, self.paths = [], [], []
        date = datetime.datetime(2025, 1, 1, 12, 5)
        for number in range(1, SETS + 1):
            self.states.append(state)
            self.dates.append(date)
            self.paths.append(str(write_set(self.folder / "QUILBOX", number, state, date)))
            state = changed(source, state)
            date += datetime.timedelta(hours=source.randrange(1, 200))

    def lines(self, *arguments, code=0):
        return [json.loads(line) for line in self.set_tool(*arguments, "--json", code=code).text.splitlines()]

    def test_find_sees_each_item_in_each_set_that_has_it(self):
        for pattern, name in (("note 3.txt", "\\Notes\\note 3.txt"), ("*a.t?t", "\\a.txt"), ("/Notes/note 5*", "\\Notes\\note 5.txt")):
            found = self.lines("find", pattern, self.folder)
            self.assertEqual([(line["set"], line["date"], line["name"]) for line in found],
                             [(path, f"{date:%Y-%m-%d %H:%M}", name) for path, date, state in
                              zip(self.paths, self.dates, self.states) if name in state["files"]])
        self.assertEqual(len(self.lines("find", "NOTE 3.TXT", self.folder, "--ignore-case")), len(self.lines("find", "note 3.txt", self.folder)))
        self.set_tool("find", "NOTE 3.TXT", self.folder, code=1)

    def test_text_is_found_in_records_values_and_lines(self):
        found = self.lines("find", "*", self.folder, "--text", "berta meyer3", "--ignore-case")
        self.assertEqual([(line["set"], line["inside"]["properties"]) for line in found],
                         [(path, ["LastName", "FirstName"]) for path, state in zip(self.paths, self.states) if "Meyer3" in state["contacts"]])
        found = self.lines("find", "registry", self.folder, "--text", "Card v3")
        self.assertEqual([(line["set"], line["inside"]["value"]) for line in found],
                         [(path, "v3") for path, state in zip(self.paths, self.states) if "v3" in state["values"]])
        found = self.lines("find", "note 4.txt", self.folder, "--text", "two")
        self.assertEqual({line["inside"]["line"] for line in found}, {2})
        texts = {"utf8": "gr\u00fcn\r\n\u4e16".encode(), "utf16": "\ufeffgr\u00fcn".encode("utf-16-le"), "big": "\ufeffgr\u00fcn".encode("utf-16-be"),
                 "western": "gr\u00fcn\u2122".encode("cp1252"), "plain16": "gr\u00fcn".encode("utf-16-le"), "binary": b"\x00\x01" + "gr\u00fcn".encode()}
        made = Set()
        for name, content in texts.items():
            made.add(FILE, "\\" + name, content)
        found = self.lines("find", "*", made.write(self.folder / "other"), "--text", "gr\u00fcn")
        self.assertEqual({line["name"][1:] for line in found}, set(texts) - {"binary"})

    def test_diff_says_what_the_history_says(self):
        source = random.Random(5)
        for _ in range(10 if SANITIZED else 40):
            old, new = (source.randrange(SETS) for _ in range(2))
            before, after = self.states[old], self.states[new]
            found = self.lines("diff", self.paths[old], self.paths[new], code=int(before != after))
            files = {line["name"]: line["change"] for line in found if line.get("kind") == "file"}
            records = {line["record"].split()[-1]: (line["change"], {field["field"]: (field["before"], field["after"]) for field in line["fields"]})
                       for line in found if "record" in line}
            values = {line["value"]: (line["before"], line["after"]) for line in found if "value" in line}
            self.assertEqual(files, self.changes(before["files"], after["files"]))
            self.assertEqual({name: change for name, (change, _) in records.items()}, self.changes(before["contacts"], after["contacts"]))
            for name, (change, fields) in records.items():
                self.assertEqual(fields["HomeTelephone"], (before["contacts"].get(name), after["contacts"].get(name)))
                self.assertEqual(len(fields), 1 if change == "changed" else 3)
            dword = lambda value: None if value is None else f"dword:{value:08x}"
            self.assertEqual(values, {name: (dword(before["values"].get(name)), dword(after["values"].get(name)))
                                      for name in self.changes(before["values"], after["values"])})

    @staticmethod
    def changes(before, after):
        return {name: "removed" if name not in after else "added" if name not in before else "changed"
                for name in before.keys() | after.keys() if before.get(name) != after.get(name)}

    def test_a_patch_shows_the_changed_line(self):
        old = Set().add(FILE, "\\a", b"1\n2\n3\n").write(self.folder, 1)
        new = Set().add(FILE, "\\a", b"1\nII\n3\n").write(self.folder, 2)
        self.assertEqual(self.set_tool("diff", "--patch", old, new, code=1).text,
                         "changed  file \\a, 6 bytes -> 7\n--- \\a\n+++ \\a\n@@ -1,3 +1,3 @@\n 1\n-2\n+II\n 3\n")

    def test_history_shows_each_change_of_a_file_a_record_and_a_value(self):
        def events(contents):
            last, found = None, []
            for path, content in zip(self.paths, contents):
                if content != last:
                    found.append((path, "vanished" if content is None else "appeared" if last is None else "changed"))
                last = content
            return found

        name = "\\Notes\\note 2.txt"
        contents = [state["files"].get(name) for state in self.states]
        found = self.lines("history", name, self.folder)
        self.assertEqual([(line["set"], line["event"]) for line in found], events(contents))
        shown = {path: content for path, content in zip(self.paths, contents)}
        for line in found:
            content = shown[line["set"]]
            self.assertEqual(line["content"], "" if content is None else
                             f"{len(content)} bytes, sha256 {hashlib.sha256(content).hexdigest()}")
        telephones = [state["contacts"].get("Meyer2") for state in self.states]
        found = self.lines("history", "Contacts Database", self.folder, "--record", "Berta Meyer2")
        self.assertEqual([(line["set"], line["event"]) for line in found], events(telephones))
        last = None
        for line in found:
            fields = {field["field"]: (field["before"], field["after"]) for field in line["records"][0]["fields"]}
            now = telephones[self.paths.index(line["set"])]
            self.assertEqual(fields["HomeTelephone"], (last, now))
            last = now
        found = self.lines("history", "registry", self.folder, "--value", KEY, "v2")
        self.assertEqual([(line["set"], line["event"]) for line in found], events([state["values"].get("v2") for state in self.states]))

    def test_the_order_of_day_and_month_is_decided_by_time_and_neighbours(self):
        state = self.states[0]
        date = datetime.datetime(2025, 3, 4, 10, 0)
        folder = self.folder / "dates"
        doubts = []
        for number, (day_first, near, clear) in enumerate(((False, False, False), (False, False, True), (True, True, False), (True, False, False)), 1):
            path = write_set(folder, number, state, date.replace(day=25) if clear else date, day_first)
            if near:
                os.utime(path, (date.timestamp(), date.timestamp()))
        odd = Set("no date").write(folder, 5)
        os.utime(odd, (date.timestamp(),) * 2)
        for line in self.lines("find", "a.txt", folder):
            doubts.append((line["date"], line.get("doubt")))
        beside = "day and month as in the sets beside it"
        self.assertEqual(doubts, [("2025-03-04 10:00", beside), ("2025-03-25 10:00", None),
                                  ("2025-03-04 10:00", "day and month by the file's time"), ("2025-03-04 10:00", beside)])
        Set("no date").add(FILE, "\\b", b"").write(folder, 5)
        os.utime(odd, (date.timestamp(),) * 2)
        self.assertIn("2025-03-04 10:00 (the file's time)", self.set_tool("find", "b", folder).text)


class PruneTest(CompanionTest):
    def histories(self):
        source = random.Random(7)
        for _ in range(40 if SANITIZED else 500):
            count, step = source.randrange(1, 25), source.choice([5, 40, 400])
            start = datetime.datetime(2020, 1, 1)
            dates = [start + datetime.timedelta(hours=hours) for hours in source.sample(range(count * step), count)]
            rules = {rule: source.randrange(1, 6) for rule in ("last", *Kept.PERIODS) if source.random() < 0.4}
            if source.random() < 0.3 or not rules:
                rules["within"] = source.randrange(1, 60)
            yield dates, rules

    def test_the_sets_that_stay_are_those_of_the_documented_rules(self):
        for dates, rules in self.histories():
            shutil.rmtree(self.folder / "card", ignore_errors=True)
            by_path = {}
            for number, date in enumerate(dates, 1):
                path = Set(made_comment(date, date.day > 12 or date.month > 12)).write(self.folder / "card", number)
                os.utime(path, (date.timestamp(), date.timestamp()))
                by_path[str(path)] = date
            asked = [word for rule, number in rules.items() for word in (f"--keep-{rule}", f"{number}{'d' * (rule == 'within')}")]
            done = self.set_tool("prune", self.folder / "card", "--dry-run", "--json", *asked)
            kept = {by_path[line["set"]] for line in map(json.loads, done.text.splitlines()) if line["kept"]}
            self.assertEqual(kept, Kept(dates, rules).dates, (dates, rules))

    def test_of_two_sets_of_one_minute_the_one_written_last_stays(self):
        date = datetime.datetime(2025, 1, 13)
        for number, seconds in ((1, 50), (2, 10)):
            path = Set(made_comment(date)).add(FILE, "\\a", b"x").write(self.folder, number)
            os.utime(path, (seconds, seconds))
        self.set_tool("prune", self.folder, "--keep-last", 1)
        self.assertEqual([path.name for path in self.folder.glob("*.QLT")], ["QLBX0001.QLT"])

    def five(self, card):
        for number in range(1, 6):
            date = datetime.datetime(2025, 1, number + 12)
            made = Set(made_comment(date)).add(FILE, "\\a", b"x" * 300)
            made.write(card, number)
            self.set_tool("seal", card)

    def test_damaged_sets_are_never_pruned_and_do_not_count_as_kept(self):
        card = self.folder / "QUILBOX"
        self.five(card)
        (card / "QLBX0005.QDT").write_bytes(b"")
        self.assertIn("no rule says", self.set_tool("prune", card, code=2).said)
        # The sum of these two numbers is 0 in 32 bits.
        self.set_tool("prune", card, "--keep-last", 2 ** 32 - 1, "--keep-daily", 1, "--dry-run", code=1)
        self.assertEqual(self.set_tool("prune", self.folder, "--keep-last", 1, "--dry-run", code=1).text.count("remove"), 3)
        self.set_tool("prune", self.folder, "--keep-last", 1, code=1)
        self.assertEqual(sorted(os.listdir(card)), [f"QLBX000{n}.{e}" for n in (4, 5) for e in ("QDT", "QLT", "SUM")])

    @needs_strace
    def test_a_kill_at_any_call_leaves_only_whole_sets(self):
        for nth in range(1, 1000):
            card = self.folder / f"{nth}"
            self.five(card)
            done = traced([BIN / "quillbox-set", "prune", card, "--keep-last", 1], "unlink,unlinkat,fsync",
                          f"unlink,unlinkat,fsync:signal=KILL:when={nth}")
            self.assertNotIn("Unsound", self.set_tool("verify", card).text)
            if done.returncode == 0:
                break
        self.assertGreater(nth, 12)
        self.assertEqual(sorted(os.listdir(card)), ["QLBX0005.QDT", "QLBX0005.QLT", "QLBX0005.SUM"])


class HostileTest(CompanionTest):
    """Runs every command over the sets, streams, images and registries of the fuzzers' corpus."""

    def test_damage_is_named_and_sound_neighbours_are_served(self):
        corpus = pathlib.Path(__file__).resolve().parents[2] / "fuzz/corpus"
        number = 0
        for kind, folder in ((FILE, "decompress_stream"), (DATABASE, "load_image"), (REGISTRY, "load_registry")):
            for path in sorted((corpus / folder).iterdir()):
                number += 1
                content = {"stream": path.read_bytes()} if kind == FILE else {"raw": path.read_bytes()}
                Set().add(FILE, "\\good", b"served").add(kind, "odd", **content).write(self.folder, number)
        for path in sorted((corpus / "load_list").iterdir()):
            number += 1
            (self.folder / f"QLBX{number:04d}.QLT").write_bytes(path.read_bytes())
            (self.folder / f"QLBX{number:04d}.QDT").write_bytes(os.urandom(500))
        good = Set().add(FILE, "\\good", b"served").write(self.folder, 9999)
        for command in (["verify", self.folder], ["find", "*", self.folder, "--text", "served"], ["history", "odd", self.folder],
                        ["history", "odd", self.folder, "--record", "a"], ["prune", self.folder, "--keep-last", 1, "--dry-run"]):
            done = self.set_tool(*command, code=1)
            self.assertNotIn("Sanitizer", done.said)
            if command[0] in ("find", "prune", "verify"):
                self.assertIn(str(good), done.text)
        self.device_tool("init", self.device)
        (self.device / "object-store/new").write_bytes(b"in no set, so that all sets are read")
        self.assertNotIn("Sanitizer", self.device_tool("covered", self.device, self.folder, code=1).said)
        for path in sorted(self.folder.glob("*.QLT")):
            for command in (["diff", good, path], ["list", path, "--long", "--inside"], ["cat", path, "odd"], ["extract", path, self.folder / "out", "--force"]):
                run = subprocess.run([BIN / "quillbox-set", *command], capture_output=True, check=False, timeout=60)
                self.assertIn(run.returncode, (0, 1, 2), run.stderr)
                self.assertNotIn(b"Sanitizer", run.stderr)
        self.assertIn(f"{good}: sealed", self.set_tool("seal", self.folder, code=1).text)
        self.set_tool("find", "good", self.folder, self.folder / "none", code=2)
