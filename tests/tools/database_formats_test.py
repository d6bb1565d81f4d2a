"""Databases as vCard, iCalendar and CSV. Our own files are imported record for record, and files of other programs as
far as possible. A damaged file changes nothing."""
import base64
import collections
import datetime
import json
import os
import pathlib
import random
import re
import resource
import unittest

from address_books import CONTACT, KINDS, address_book
from companions import SANITIZED, CompanionTest, database, lines

CONTACTS, APPOINTMENTS, TASKS = "Contacts Database", "Appointments Database", "Tasks Database"
NAMES = {"LastName": "3a11001f", "FirstName": "3a06001f", "Company": "3a16001f", "HomeTelephone": "3a09001f",
         "Mail": "4083001f", "Town": "4041001f", "Birthday": "40420040", "Subject": "0037001f", "Notes": "40050041",
         "Categories": "4004001f", "Start": "40020040", "Minutes": "40150003", "Place": "4208001f",
         "ReminderMinutes": "45010012", "RepetitionDays": "40160013", "Due": "41040040", "Done": "41090002",
         "Priority": "00260002", "Identifier": "40f1001f"}
IDS = {number: name for name, number in NAMES.items()}
MIDNIGHT = 133_861_248_000_000_000  # 2025-03-11
ODD_TEXTS = ["", " ", "a;b,c\\d:e", "two\r\nlines", "one\nline", "a\rb", "tab\there", "\u0001\u007f", "Grüße 😀" * 20,
             "utf16:00", "hex:00", "\"", "a\"b", "\\n", "x\\", ";;", ",", "tel:5", "日" * 100, "=1+1", " lead", "-", "\ufeff"]
ODD_BLOBS = ["", "00ff", "6869", "610d0a62", "610a62", "6865783a", "c3a9", "c3", "0d", "07", "20"]
ODD_TIMES = [0, 1, MIDNIGHT, MIDNIGHT + 10_000_000 * 3661, MIDNIGHT + 1, 2 ** 63, 2 ** 64 - 1, 2_650_467_744_000_000_000]
ODD_NUMBERS = [0, 1, 2, 3, 7, 14, 365, 366, 1440, 2880, 65535, 2 ** 31 - 1]
# The key is the type, which is the lower half of an id.
ODD_VALUES = {
    "001f": [*({"value": text} for text in ODD_TEXTS), {"units": [0xD800, 0x41]}],
    "0041": [{"value": blob} for blob in ODD_BLOBS],
    "0040": [{"value": time} for time in ODD_TIMES],
    "0005": [{"value": 0.1}, {"value": -0.0}, {"value": 1e300}, {"bits": "7ff8000000000001"}],
    "0063": [{"bits": "0123456789abcdef"}],
    **{kind: [{"value": min(number, largest)} for number in ODD_NUMBERS]
       for kind, largest in (("0002", 2 ** 15 - 1), ("0012", 2 ** 16 - 1), ("0003", 2 ** 31 - 1), ("0013", 2 ** 31 - 1),
                             ("000b", 1))},
}
CARD = "BEGIN:VCARD\nVERSION:4.0\nN:a;b;;;\n%s\nEND:VCARD\n"
EVENT = "BEGIN:VCALENDAR\nBEGIN:VEVENT\nSUMMARY:a\n%s\nEND:VEVENT\nEND:VCALENDAR\n"


def component(kind, *fields, end="\n"):
    """Returns a component of a vCard or iCalendar file with these lines."""
    return "".join(line + end for line in (f"BEGIN:{kind}", *fields, f"END:{kind}"))


def card(*fields, **more):
    return component("VCARD", *fields, **more)


def odd_records(usual, seed, count=150):
    """Returns records with random usual properties and others, in a random order."""
    chance = random.Random(seed)
    others = ["00010002", "00020012", "00030003", "00040013", "00050005", "0006000b", "00070040", "0008001f", "00090041",
              "000a0063"]
    made = []
    for _ in range(count):
        ids = chance.sample(usual, chance.randint(1, len(usual))) + chance.sample(others, chance.choice([0, 0, 0, 1, 3]))
        if chance.random() < 0.5:
            ids.sort(key=(usual + others).index)
        made.append([{"id": number, **chance.choice(ODD_VALUES[number[4:]]),
                      **({"flags": chance.choice([1, 0xFCFF])} if chance.random() < 0.05 else {})} for number in ids])
    return made


def without_identifiers(records):
    return [[prop for prop in record if prop["id"] != NAMES["Identifier"]] for record in records]


def contacts(*records, name=CONTACTS, kind=24):
    return lines(database(name, records, kind, [(0x3A11001F, 2)]))


def appointments(*records):
    return lines(database(APPOINTMENTS, records, 25, [(0x40020040, 0)]))


def tasks(*records):
    return lines(database(TASKS, records, 26, [(0x41040040, 4)]))


def ticks(text):
    """Returns a time such as 2025-03-11 08:30 as the number that the store uses."""
    since = datetime.datetime.fromisoformat(text) - datetime.datetime(1601, 1, 1)
    return (since.days * 86400 + since.seconds) * 10_000_000


class FormsTest(CompanionTest):
    def setUp(self):
        super().setUp()
        self.tool("init", self.device)

    def tool(self, *arguments, zone="Europe/Vienna", **more):
        """Runs quillbox-device and returns its output. self.said gets its errors."""
        done = self.device_tool(*arguments, env={**os.environ, "TZ": zone}, **more)
        self.said = done.said
        return done.text

    def import_file(self, *options, given, **more):
        self.tool("database", "import", self.device, "-", *options, given=given, **more)
        return self.said

    def records(self, name, device=None):
        out = self.tool("database", "export", device or self.device, "--name", name)
        return [json.loads(line)["record"] for line in out.splitlines()[1:]]

    def named(self, name, device=None):
        """Returns the records as names and values without their UIDs. Blobs become text."""
        return [{IDS.get(p["id"], p["id"]): bytes.fromhex(p["value"]).decode() if p["id"][4:] == "0041" else p["value"]
                 for p in record if p["id"] != NAMES["Identifier"]} for record in self.records(name, device)]

    def refused(self, form, content, *more):
        before = self.exported()
        said = self.import_file("--form", form, *more, given=content, code=1)
        self.assertIn("Nothing was imported.", said)
        self.assertEqual(self.exported(), before)
        return said


class OwnFilesTest(FormsTest):
    def exported_and_imported(self, file, *databases):
        """Exports to a file and imports it into another device. Returns the file's text, and the records of each
        database before and after. The export must have reported each property that differs under its name, as often as
        it differs."""
        path = self.folder / file
        self.tool("database", "export", self.device, path)
        said = self.said
        text = path.read_bytes()
        for line in text.split(b"\r\n"):
            self.assertLessEqual(len(line), 75)
        other = self.folder / (file + ".device")
        self.tool("init", other)
        self.tool("database", "import", other, path)
        self.assertEqual(self.said, "")
        pairs = [(self.records(name), without_identifiers(self.records(name, other))) for name in databases]
        differing = collections.Counter()
        for before, after in pairs:
            self.assertEqual(len(before), len(after))
            for old, new in zip(before, after):
                differing.update(IDS.get(prop["id"], prop["id"]) for prop in old
                                 if prop not in new and (prop.get("flags") or str(prop.get("value")) != "0" or prop["id"][4:] == "0040"))
        self.assertEqual(differing, {name: int(count) for name, count in re.findall(r"(\w+) (\d+)", said.partition("left out: ")[2])})
        return text.decode(), pairs

    def test_what_a_card_loses_is_reported_and_nothing_else_is_lost(self):
        usual = [NAMES[name] for name in ("LastName", "FirstName", "Company", "HomeTelephone", "Mail", "Town", "Categories",
                                          "Birthday", "Notes")]
        key = {"id": NAMES["LastName"], "value": "k"}
        self.import_file(given=contacts(*([key, *record] for record in odd_records(usual[1:], 1))))
        text, _ = self.exported_and_imported("own.vcf", CONTACTS)
        self.assertIsNone(re.search("[\0-\x08\x0b\x0c\x0e-\x1f\x7f]", text))

    def test_what_a_calendar_loses_is_reported_and_nothing_else_is_lost(self):
        events = [NAMES[name] for name in ("Place", "Minutes", "ReminderMinutes", "RepetitionDays", "Categories", "Notes")]
        todos = [NAMES[name] for name in ("Categories", "Due", "Priority", "Done", "Notes")]
        key = [{"id": NAMES["Subject"], "value": "k"}]
        started = [[*key, {"id": NAMES["Start"], "value": ODD_TIMES[n % 5]}, *record] for n, record in enumerate(odd_records(events, 2))]
        self.import_file(given=appointments(*started) + tasks(*(key + record for record in odd_records(todos, 3))))
        text, _ = self.exported_and_imported("own.ics", APPOINTMENTS, TASKS)
        self.assertEqual(len(set(re.findall("UID:.*", text))), 300)

    def test_the_documented_table_says_which_form_has_each_property(self):
        page = (pathlib.Path(__file__).parents[2] / "docs" / "forms.md").read_text()
        rows = [[cell.strip() for cell in line.split("|")[2:6]] for line in page.splitlines() if re.search(r"\| [0-9a-f]{8}[, |]", line)]
        named = {number: (column, card_line, item_line) for ids, columns, card_line, item_line in rows
                 for number, column in zip(ids.split(", "), re.findall(r"[A-Z]\w{2,}", columns))}
        self.assertEqual({number: column for number, (column, _, _) in named.items()}, IDS)
        values = {"001f": "text", "0041": "74657874", "0040": MIDNIGHT + 36_000_000_000, "0003": 30, "0012": 30, "0013": 7, "0002": 1}
        subject, start = ({"id": NAMES["Subject"], "value": "k"}, {"id": NAMES["Start"], "value": MIDNIGHT + 36_000_000_000})
        for number, (column, card_line, item_line) in named.items():
            value = {"id": number, "value": values[number[4:]]}
            key = {"id": NAMES["LastName"], "value": "k"}
            todo = column in ("Due", "Priority", "Done")
            item = [value, *(prop for prop in ([subject] if todo else [subject, start]) if prop["id"] != number)]
            for form, made, line in (("vcard", contacts([value] + [key] * (column != "LastName")), card_line),
                                     ("ical", (tasks if todo else appointments)(item), item_line)):
                with self.subTest(column, form=form):
                    self.import_file("--replace", given=made)
                    text = self.tool("database", "export", self.device, "--form", form, "--name", json.loads(made.split("\n")[0])["database"])
                    self.assertEqual(f"{column} 1" in self.said, not line.strip(), self.said)
                    self.assertTrue(not line.strip() or re.match(r"\w+", line)[0] in text, text)
            self.import_file("--replace", given=contacts([value]))
            self.assertIn(column, self.tool("database", "export", self.device, "--form", "csv", "--name", CONTACTS))

    def test_an_appointment_without_a_start_is_left_out_of_a_calendar_and_reported(self):
        subject, start = {"id": NAMES["Subject"], "value": "a"}, {"id": NAMES["Start"]}
        self.import_file(given=appointments([subject], [subject, {**start, "value": 2 ** 63}], [subject, {**start, "value": MIDNIGHT}]))
        text = self.tool("database", "export", self.device, "--form", "ical")
        self.assertEqual(self.said, "quillbox-device: 2 fields were left out: VEVENT (without a start) 2.\n")
        self.assertEqual(re.findall("BEGIN:VEVENT|DTSTART.*", text), ["BEGIN:VEVENT", "DTSTART:20250311T000000\r"])

    def test_the_export_of_an_empty_database_can_be_imported(self):
        self.import_file(given=contacts() + appointments())
        for form, said in (("vcard", "0 records replaced by 0"), ("ical", "The file has no records"), ("jsonl", "0 records replaced by 0")):
            given = self.tool("database", "export", self.device, "--form", form)
            self.assertIn(said, self.tool("database", "import", self.device, "-", "--form", form, "--replace", given=given))
        self.assertEqual(self.tool("database", "export", self.device, "--name", CONTACTS), contacts())

    def test_the_demonstration_databases_lose_nothing_by_export_and_import(self):
        self.device = self.folder / "demonstration"
        self.tool("init", self.device, "--demonstration")
        for file, *databases in (("own.vcf", CONTACTS), ("own.ics", APPOINTMENTS, TASKS)):
            for before, after in self.exported_and_imported(file, *databases)[1]:
                self.assertEqual(before, after)

    def test_records_lose_nothing_but_their_order_through_csv(self):
        def unordered(out):
            return [sorted(map(str, json.loads(line).get("record", [line]))) for line in out.splitlines()]

        csv = self.folder / "own.csv"
        for kind in (24, 7):
            with self.subTest(kind=kind):
                self.import_file("--replace", given=contacts(*odd_records(list(NAMES.values()), 4), kind=kind))
                self.tool("database", "export", self.device, "--force", csv, "--name", CONTACTS)
                self.assertEqual("LastName" in csv.read_bytes().decode(), kind == 24)
                before = self.exported()
                self.tool("database", "import", self.device, "--name", CONTACTS, csv, "--replace")
                # CSV has the same order of properties for all records, so the order within a record is lost. Everything
                # else comes back, including the database's type and sort orders.
                self.assertEqual(unordered(self.exported()), unordered(before))

    def test_an_item_keeps_its_uid_and_isnt_added_twice(self):
        uid = r"UID:urn:uuid:1\, 2"
        self.import_file("--form", "vcard", given=card("N:a", uid, "NOTE:x") + card("N:b"))
        self.import_file("--add", given=contacts(*[[{"id": NAMES["LastName"], "value": "own"}]] * 2))
        text = self.tool("database", "export", self.device, "--form", "vcard")
        self.assertIn(uid, text)
        self.assertEqual(len(set(re.findall("UID:.*", text))), 4)
        before = self.exported()
        for form, file in (("vcard", text), ("jsonl", before)):
            out = self.tool("database", "import", self.device, "-", "--form", form, "--add", given=file)
            self.assertEqual(out, "Contacts Database: 0 records added, 4 there already\n")
            self.assertEqual(self.exported(), before)
        # Two records are changed in the file: one with the UID of another program, and one whose UID the export made.
        changed = text.replace("NOTE:x", "TEL:1").replace("N:own;", "N:Owner;", 1)
        out = self.tool("database", "import", self.device, "-", "--form", "vcard", "--add", given=changed)
        self.assertEqual(out, "Contacts Database: 0 records added, 2 changed, 2 there already\n")
        self.assertEqual(self.named(CONTACTS), [{"LastName": "a", "HomeTelephone": "1"}, {"LastName": "b"}, {"LastName": "Owner"},
                                                {"LastName": "own"}])
        again = self.tool("database", "export", self.device, "--form", "vcard")
        self.assertEqual(re.findall("UID:.*", again), re.findall("UID:.*", text))

    def test_an_import_of_our_own_file_keeps_what_the_file_could_not_hold(self):
        kept = [{"id": NAMES["LastName"], "value": "a"}, {"id": NAMES["Notes"], "value": "ff"}, {"id": "0001001f", "value": "x"}]
        self.import_file(given=contacts(kept))
        text = self.tool("database", "export", self.device, "--form", "vcard")
        self.assertEqual(self.said, "quillbox-device: 2 fields were left out: 0001001f 1, Notes 1.\n")
        self.import_file("--form", "vcard", "--add", given=text.replace("N:a;", "N:b;"))
        self.assertEqual(sorted(without_identifiers(self.records(CONTACTS))[0], key=str),
                         sorted([{"id": NAMES["LastName"], "value": "b"}, *kept[1:]], key=str))

    def test_notes_with_a_single_zero_are_added_and_deleted_like_others(self):
        self.import_file(given=contacts([{"id": NAMES["LastName"], "value": "a"}]))
        text = self.tool("database", "export", self.device, "--form", "vcard")
        for file, notes in ((text.replace("END:VCARD", "NOTE:0\r\nEND:VCARD"), ["30"]), (text, [])):
            self.import_file("--form", "vcard", "--add", given=file)
            self.assertEqual([each["value"] for each in self.records(CONTACTS)[0] if each["id"] == NAMES["Notes"]], notes)

    def test_of_several_databases_of_a_type_the_one_with_the_usual_name_is_taken(self):
        self.import_file(given=lines(database("Old", [], 24), database("Older", [], 24)))
        self.assertIn("several databases of this type", self.refused("vcard", card("N:a"), "--add"))
        self.import_file(given=contacts())
        self.import_file("--form", "vcard", "--add", given=card("N:a"))
        self.assertEqual([self.named(name) for name in ("Old", "Older", CONTACTS)], [[], [], [{"LastName": "a"}]])


class ForeignFilesTest(FormsTest):
    def assert_taken(self, form, text, *expected, left_out="", name=CONTACTS):
        """Imports a file in place of a database, which then has these records."""
        options = ["--name", name] if form == "csv" else []
        said = self.import_file("--form", form, "--replace", *options, given=text)
        self.assertEqual(self.named(name), list(expected))
        self.assertEqual(said, left_out and f"quillbox-device: {left_out}.\n")

    def test_cards_of_other_programs_are_understood(self):
        self.assert_taken(
            "vcard",
            card("VERSION:3.0", "item1.N:Stevens;John;Philip;Dr.;", "FN:Dr. John Stevens", "ORG:ABC\\, Inc.;Sales",
                 "tel;type=WORK,voice:+1 1", "TEL;TYPE=home,pref:+1 2", "EMAIL;TYPE=INTERNET:a@b.example", "EMAIL:c@d.example",
                 "ADR;TYPE=home:;;Street 1;To", " wn;;12345;", "CATEGORIES:One,Two\\, three", "BDAY:1985-04-12",
                 "NOTE:a\\nb\\;c", "PHOTO;ENCODING=b:AAAA", " BBBB", "UID:1", end="\r\n") +
            card("version:2.1", "n;charset=ISO-8859-1;encoding=QUOTED-PRINTABLE:M=FCller;J=F6rg", "TEL;HOME;VOICE:tel:5",
                 "NOTE;QUOTED-PRINTABLE:one=", " two=0D=0Athree=3D", "BDAY:--0412", "NOTE:", "AGENT:",
                 card("N:inner").rstrip()).replace("VCARD", "vcard") +
            card("VERSION:4.0", "FN:Only Shown", "BDAY:15000101") + card("VERSION:4.0", "FN:Firm", "ORG:Firm"),
            {"LastName": "Stevens", "FirstName": "John", "Company": "ABC, Inc.", "HomeTelephone": "+1 2", "Mail": "a@b.example",
             "Town": "Town", "Categories": "One;Two, three", "Birthday": ticks("1985-04-12"), "Notes": "a\r\nb;c"},
            {"LastName": "Müller", "FirstName": "Jörg", "HomeTelephone": "5", "Notes": "one two\r\nthree="},
            {"LastName": "Only Shown"}, {"Company": "Firm"},
            left_out="10 fields were left out: ADR 1, BDAY 2, EMAIL 1, FN 1, N 1, ORG 1, PHOTO 1, TEL 1, VCARD 1")

    def test_a_bad_line_is_left_out_and_the_rest_is_taken(self):
        bad = ["NOTE;X=\"y:z", "NOTE;CHARSET=KLINGON:x", "NOTE;QUOTED-PRINTABLE:=81", "NOTE;QUOTED-PRINTABLE:=00", "no line",
               "X-messaging/aim-All:x", "NOTE" + ";a=b" * 300 + ":x", "CATEGORIES;QUOTED-PRINTABLE;CHARSET=UTF-8:=FC"]
        taken = {"LastName": "a", "FirstName": "b", "Notes": "1=2=", "Mail": "c"}
        for end in ("\r", "\r\r\n", "\n"):
            self.assert_taken("vcard", card("N:a;b", *bad, "NOTE;QUOTED-PRINTABLE:1=2=3D", "EMAIL:c", end=end), taken,
                              left_out="8 fields were left out: CATEGORIES 1, NOTE 5, X-messaging/aim-All 1, no line 1")
        nothing = {"Minutes": 0, "ReminderMinutes": 0, "RepetitionDays": 0}
        alarm = "BEGIN:VALARM\nTRIGGER;VALUE=TIME:x\nEND:VALARM"
        self.assert_taken(
            "ical", component("VCALENDAR", *(component("VEVENT", "SUMMARY:a", fields).rstrip() for fields in (
                "DTSTART:20250229T000000\nDTEND:20250301", "DTSTART:yesterday", "DURATION:PT99999999999M", "DURATION:one hour",
                "DTSTART:20250701T080000 \n" + alarm))),
            *[{"Subject": "a", **nothing}] * 4, {"Subject": "a", "Start": ticks("2025-07-01T08:00"), **nothing},
            name=APPOINTMENTS, left_out="6 fields were left out: DTEND 1, DTSTART 2, DURATION 2, VALARM 1")

    def test_a_loss_of_detail_is_reported(self):
        item = ["BEGIN:VEVENT", "SUMMARY:a", "DTSTART:20250701T080000", "DTEND:20250701T083030", "BEGIN:VALARM", "ACTION:EMAIL",
                "DESCRIPTION:other", "REPEAT:2", "TRIGGER:-PT5M", "END:VALARM", "END:VEVENT"]
        self.assert_taken(
            "ical", component("VCALENDAR", "X-WR-CALNAME:Mine", "COLOR:red", "METHOD:PUBLISH", *item),
            {"Subject": "a", "Start": ticks("2025-07-01T08:00"), "Minutes": 30, "ReminderMinutes": 5, "RepetitionDays": 0},
            name=APPOINTMENTS, left_out="6 fields were left out: COLOR 1, DTEND (seconds) 1, VALARM ACTION 1, "
            "VALARM DESCRIPTION 1, VALARM REPEAT 1, X-WR-CALNAME 1")
        for method in ("CANCEL", "REPLY"):
            said = self.import_file("--form", "ical", "--add", given=component("VCALENDAR", "METHOD:" + method, *item), code=1)
            self.assertIn(f"1 field was left out: VEVENT (METHOD:{method}) 1", said)
        for lines_of, said in ((["TEL;TYPE=CELL:1"], "TEL (CELL, imported as home) 1"),
                               (["TEL;HOME;FAX:1"], "TEL (FAX, imported as home) 1")):
            self.assert_taken("vcard", card("N:a", *lines_of), {"LastName": "a", "HomeTelephone": "1"},
                              left_out="1 field was left out: " + said)
        self.assert_taken("vcard", card("N:;;;;", "FN:Firm", "ORG:Firm;", "X-ABShowAs:COMPANY"), {"Company": "Firm"})

    def test_a_birthday_stays_on_its_day_in_every_zone_and_one_without_a_date_is_left_out(self):
        cards = "".join(CARD % line for line in (
            "BDAY:1990-05-01T00:00:00Z", "BDAY:19900501T230000-1100", "BDAY;VALUE=TEXT:circa 1800", "BDAY;VALUE=text:19900501",
            "BDAY:circa 1800", "BDAY:19851332", "BDAY:1990", "BDAY:--0501", "BDAY;X-APPLE-OMIT-YEAR=1604:1604-02-29",
            "BDAY;X-APPLE-OMIT-YEAR=1604:1990-05-01"))
        for zone in ("America/New_York", "Asia/Tokyo"):
            said = self.import_file("--form", "vcard", "--replace", given=cards, zone=zone)
            self.assertEqual(said, "quillbox-device: 7 fields were left out: BDAY 7.\n")
            self.assertEqual([contact.get("Birthday") for contact in self.named(CONTACTS)],
                             [ticks("1990-05-01"), ticks("1990-05-01T23:00")] + [None] * 7 + [ticks("1990-05-01")])

    def test_a_telephone_number_is_preferred_to_one_of_a_fax_pager_or_modem(self):
        for given, lost in (("TEL;TYPE=HOME,FAX:1 TEL;TYPE=CELL:2", "TEL 1, TEL (CELL, imported as home) 1"),
                            ("TEL;WORK;FAX:1 TEL;PAGER:3 TEL:2 TEL;CELL:4", "TEL 3"),
                            ('TEL;TYPE="home,fax":1 TEL;TYPE=work:3 TEL;TYPE=home,voice:2', "TEL 2"),
                            ("TEL;MODEM:1 TEL;HOME;FAX:2", "TEL 1, TEL (FAX, imported as home) 1")):
            with self.subTest(given):
                self.assert_taken("vcard", CARD % given.replace(" ", "\n"),
                                  {"LastName": "a", "FirstName": "b", "HomeTelephone": "2"},
                                  left_out=f"{given.count('TEL;') + given.count('TEL:') - 1 + lost.count('imported')} "
                                  f"field{'s were' if lost != 'TEL 1' else ' was'} left out: {lost}")

    def test_a_guessed_character_set_is_reported_and_a_field_of_an_unknown_one_left_out(self):
        given = card("VERSION:2.1", "N;ENCODING=QUOTED-PRINTABLE:M=FCller;J=F6rg", "NOTE;QUOTED-PRINTABLE:Gr=C3=BC=C3=9Fe",
                     "ORG;QUOTED-PRINTABLE:80 =80", "LABEL;ENCODING=QUOTED-PRINTABLE:Stra=DFe", "LABEL;CHARSET=KLINGON:x",
                     "X-A;QUOTED-PRINTABLE:=4", "X-B:raw ü", "TEL:1", "TEL;QUOTED-PRINTABLE:=81", "AGENT:",
                     card("N:ü").rstrip())
        self.assert_taken("vcard", given.encode("latin-1"), {
            "LastName": "Müller", "FirstName": "Jörg", "Company": "80 €", "HomeTelephone": "1", "Notes": "Grüße"},
            left_out="6 fields were left out: LABEL 2, TEL 1, VCARD 1, X-A 1, X-B 1.\n"
            "quillbox-device: 2 fields name no character set and were read as Windows-1252: N 1, ORG 1")

    def test_texts_of_older_cards_keep_their_backslashes_and_line_ends(self):
        blanks = " \t "
        self.assert_taken(
            "vcard",
            card("N;CHARSET=WINDOWS-1258:Hanoi;Anna", r"NOTE:C:\new\\names\; a\, \:b" "\\", r"ADR;HOME:;;;To\n\;;;;",
                 r"CATEGORIES:\now,b", "VERSION:2.1") +
            card("VERSION:2.1", "N:a", "NOTE;QUOTED-PRINTABLE:one=" + blanks, " two=" + blanks, "=20three=3D" + blanks) +
            card("VERSION:3.0", "N:a", r"NOTE:C:\new"),
            {"LastName": "Hanoi", "FirstName": "Anna", "Notes": r"C:\new\names; a, \:b" "\\", "Town": r"To\n;",
             "Categories": r"\now;b"},
            {"LastName": "a", "Notes": "one two three=" + blanks}, {"LastName": "a", "Notes": "C:\r\new"})

    def test_base64_is_decoded_and_what_is_no_text_left_out(self):
        def coded(text, characters="utf-8"):
            return base64.b64encode(text.encode(characters)).decode()

        long = coded("a\\nb\\, c " * 12)
        self.assert_taken(
            "vcard",
            card("VERSION:2.1", "N;CHARSET=ISO-8859-1;ENCODING=BASE64:" + coded("Müller;Jörg", "latin-1"),
                 "ORG;Base64:" + coded("Grüße"), "NOTE;ENCODING=BASE64:", "    " + coded("one"), "\t " + coded("two"), "") +
            card("VERSION:3.0", "N:a", "NOTE;ENCODING=b:" + long[:50], " " + long[50:], "CATEGORIES;ENCODING=b:" + coded("A,B"),
                 "CATEGORIES;ENCODING=b:/w==", "CATEGORIES:C", "EMAIL;ENCODING=B:" + coded("a@b.example").rstrip("="),
                 "EMAIL;ENCODING=B:a") +
            card("VERSION:3.0", f"N;ENCODING=B:{coded('Only').replace('=', '*')}*", "FN:b", "ORG;ENCODING=B://///w==",
                 "TEL;ENCODING=B;CHARSET=KLINGON:AAAA", "ADR;ENCODING=B:QQ==QQ==", "NOTE;ENCODING=B:" + coded("a\0"),
                 "PHOTO;ENCODING=B:/9j/4AAQSkZJRg=="),
            {"LastName": "Müller", "FirstName": "Jörg", "Company": "Grüße", "Notes": "onetwo"},
            {"LastName": "a", "Categories": "A;B;C", "Mail": "a@b.example", "Notes": "a\r\nb, c " * 12}, {"LastName": "b"},
            left_out="8 fields were left out: ADR 1, CATEGORIES 1, EMAIL 1, N 1, NOTE 1, ORG 1, PHOTO 1, TEL 1")

    def test_of_two_encodings_the_first_counts_also_for_the_end_of_the_line(self):
        card = CARD % "NOTE;ENCODING=BASE64;ENCODING=QUOTED-PRINTABLE:QUI=\nEMAIL:a@b.example"
        self.assert_taken("vcard", card, {"LastName": "a", "FirstName": "b", "Mail": "a@b.example", "Notes": "AB"})
        self.assert_taken("vcard", CARD % "NOTE;ENCODING=QUOTED-PRINTABLE:AB=\n=", {"LastName": "a", "FirstName": "b", "Notes": "AB"})
        note = "BEGIN:VCARD\r\nEND:VCARD"
        self.assert_taken("vcard", CARD % ("NOTE;ENCODING=QUOTED-PRINTABLE:" + note.replace("\r\n", "=0D=0A=\n")),
                          {"LastName": "a", "FirstName": "b", "Notes": note})

    def test_blanks_at_the_end_of_a_line_and_empty_lines_hide_nothing(self):
        self.assert_taken("vcard", "BEGIN:VCARD \r\nVERSION:2.1\t\r\nN:a\r\nNOTE:C:\\new\r\nAGENT:\r\nBEGIN: vcard\r\n"
                          "END:VCARD\t \r\nend:vcard\r\n", {"LastName": "a", "Notes": "C:\\new"},
                          left_out="1 field was left out: VCARD 1")
        self.assert_taken("ical", "BEGIN:VCALENDAR\t\nBEGIN:VTODO \nSUMMARY:b \nEND:VTODO  \nEND:VCALENDAR \n",
                          {"Subject": "b ", "Done": 0}, name=TASKS)
        self.assert_taken("jsonl", contacts([{"id": NAMES["LastName"], "value": "a"}]).replace("\n", "\r\n\r\n \t\n\n"),
                          {"LastName": "a"})

    def test_a_file_in_utf_16_is_read_in_each_form(self):
        long = "😀" + "x😀" * 60_000  # so that each border of a piece splits a character
        for mark in ("utf-16-le", "utf-16-be"):
            for form, text in (("vcard", card("N:" + long)), ("csv", f"LastName\n{long}\n"),
                               ("jsonl", contacts([{"id": NAMES["LastName"], "value": long}]))):
                self.assert_taken(form, ("\ufeff" + text).encode(mark), {"LastName": long})
        said = self.import_file("--form", "vcard", "--replace", given=b"\xff\xfe\x41", code=1)
        self.assertIn("the file ends within a character of UTF-16", said)

    def test_events_of_other_programs_are_understood(self):
        # For each event: its lines, and the start and other values that aren't 0 of the appointment.
        events = {
            "utc": ("DTSTART:20250701T080000Z DTEND:20250701T093000Z", "2025-07-01T10:00", {"Minutes": 90}),
            "zone": ("DTSTART;TZID=America/New_York:20250701T080000 DURATION:PT1H30M", "2025-07-01T14:00", {"Minutes": 90}),
            "elsewhere": ("DTSTART;TZID=Nowhere/Land:20250701T080000", "2025-07-01T08:00", {}),
            "day": ("DTSTART;VALUE=DATE:20250701 RRULE:FREQ=WEEKLY;INTERVAL=2;BYDAY=TU", "2025-07-01",
                    {"Minutes": 1440, "RepetitionDays": 14}),
            "days": ("DTSTART;VALUE=DATE:20250701 DTEND;VALUE=DATE:20250704 RRULE:FREQ=YEARLY;BYMONTH=7;BYMONTHDAY=1",
                     "2025-07-01", {"Minutes": 4320, "RepetitionDays": 365}),
            "too much": ("DTSTART:20250701T080000 RRULE:FREQ=WEEKLY;COUNT=5 EXDATE:20250708T080000",
                         "2025-07-01T08:00", {}),
            "monthly": ("DTSTART:20250701T080000 RRULE:FREQ=MONTHLY BEGIN:VALARM TRIGGER:PT5M END:VALARM "
                        "BEGIN:VALARM ACTION:DISPLAY TRIGGER:-P1DT1H END:VALARM",
                        "2025-07-01T08:00", {"ReminderMinutes": 1500}),
            "gaps": ("DTSTART:20250701T080000 RRULE:FREQ=DAILY EXDATE:20250708T080000",
                     "2025-07-01T08:00", {"RepetitionDays": 1}),
            "off": ("DTSTART:20250701T080000 STATUS:cancelled", None, {}),
            "moved": ("RECURRENCE-ID:20250709T080000 DTSTART:20250709T100000", None, {}),
            "at": ("DTSTART:20250701T080000 BEGIN:VALARM TRIGGER;VALUE=DATE-TIME:20250701T055000Z END:VALARM",
                   "2025-07-01T08:00", {"ReminderMinutes": 10}),
        }
        given = ["X-WR-CALNAME:Mine", "BEGIN:VJOURNAL", "END:VJOURNAL"]
        for subject, (fields, _, _) in events.items():
            given += ["BEGIN:VEVENT", "UID:1", "SUMMARY:" + subject, *fields.split(" "), "END:VEVENT"]
        nothing = {"Minutes": 0, "ReminderMinutes": 0, "RepetitionDays": 0}
        self.assert_taken(
            "ical", component("VCALENDAR", *given, end="\r\n"),
            *({"Subject": subject, "Start": ticks(start), **nothing, **more}
              for subject, (_, start, more) in events.items() if start),
            name=APPOINTMENTS,
            left_out="10 fields were left out: EXDATE 1, EXDATE (exception to a repetition) 1, RRULE 2, TZID 1, VALARM 1, "
            "VEVENT (cancelled) 1, VEVENT (exception to a repetition) 1, VJOURNAL 1, X-WR-CALNAME 1")

    def test_times_are_converted_from_zones_of_any_kind(self):
        def zone(name, *rules):
            """Returns the definition of a zone: one hour behind New York, and from March to November one hour ahead of
            it."""
            return component("VTIMEZONE", "TZID:" + name, component("STANDARD", "DTSTART:19701101T020000", "TZOFFSETFROM:-0300",
                             "TZOFFSETTO:-0600", *rules or ["RRULE:FREQ=YEARLY;BYMONTH=11;BYDAY=1SU"]).rstrip(),
                             component("DAYLIGHT", "DTSTART:19700301T020000", "TZOFFSETFROM:-0600", "TZOFFSETTO:-0300",
                                       "RRULE:FREQ=YEARLY;BYMONTH=3;BYDAY=1SU").rstrip()).rstrip()

        own = ["Own", "Berlin\\, or so", "Europe/Berlin", "Pacific Standard Time"]
        unusable = [zone("Hostile", "RRULE:FREQ=SECONDLY"), *(zone("Damaged").replace(*damage) for damage in (
            ("TO:-0600", "TO:+25"), ("FROM:-0300", "FROM:-0360"), ("DTSTART:1970", "DTSTART:soon"), ("TZOFFSETTO:-0600", "X:1"),
            ("TZOFFSETTO:-0600", "TZOFFSETFROM:-0600"), ("1101T020000", "1101T0200")))]
        # For each event: its zone, its time, and this time in Vienna.
        times = [("Own", "20250701T080000", "2025-07-01T13:00"), ("Own", "20251201T080000", "2025-12-01T15:00"),
                 ('"Berlin, or so"', "20250701T080000", "2025-07-01T13:00"), ("Own", "19980701T080000", "1998-07-01T13:00"),
                 ("Europe/Berlin", "20250701T080000", "2025-07-01T08:00"),  # the host's definition applies
                 ("Pacific Standard Time", "20250701T080000", "2025-07-01T17:00"),
                 ("/example.org/2007_1/America/Argentina/Buenos_Aires", "20250701T080000", "2025-07-01T13:00"),
                 ("/example.org/Own", "20250701T080000", "2025-07-01T08:00"), ("Damaged", "20250701T080000", "2025-07-01T08:00"),
                 ("Hostile", "20250701T080000", "2025-07-01T08:00"),
                 # If a time occurs twice, the first one applies. For a skipped time, the offset before the change
                 # applies.
                 ("America/New_York", "20251102T013000", "2025-11-02T06:30"),
                 ("America/New_York", "20250309T023000", "2025-03-09T08:30"), ("Own", "20251102T013000", "2025-11-02T05:30"),
                 ("Europe/London", "19690101T080000", "1969-01-01T08:00"), ("US/Eastern", "21000701T080000", "2100-07-01T14:00")]
        events = [component("VEVENT", f"DTSTART;TZID={name}:{time}").rstrip() for name, time, _ in times]
        definitions = [zone(name) for name in own]
        nothing = {"Minutes": 0, "ReminderMinutes": 0, "RepetitionDays": 0}
        for content in ([*definitions, *unusable, *events], [*events, *unusable, *definitions]):
            self.assert_taken("ical", component("VCALENDAR", *content), *({"Start": ticks(local), **nothing} for *_, local in times),
                              name=APPOINTMENTS, left_out="10 fields were left out: TZID 3, VTIMEZONE 7")

    def test_tasks_of_other_programs_are_understood(self):
        given = component("VTODO", "SUMMARY:done", "DUE;VALUE=DATE:20250701", "PRIORITY:3", "STATUS:COMPLETED",
                          "COMPLETED:20250630T100000Z")
        given += component("VTODO", "SUMMARY:begun", "DUE:20250701T080000Z", "PRIORITY:0", "STATUS:IN-PROCESS", "CATEGORIES:a",
                           "CATEGORIES:b,c", "DESCRIPTION:text")
        given += component("VTODO", "SUMMARY:off", "STATUS:CANCELLED")
        self.assert_taken(
            "ical", component("VCALENDAR", given.rstrip()),
            {"Subject": "done", "Due": ticks("2025-07-01"), "Priority": 1, "Done": 1},
            {"Subject": "begun", "Categories": "a;b;c", "Due": ticks("2025-07-01T10:00"), "Done": 0, "Notes": "text"},
            name=TASKS, left_out="3 fields were left out: COMPLETED 1, STATUS 1, VTODO (cancelled) 1")

    def test_address_books_of_other_programs_come_in_by_their_own_columns(self):
        expected = {"LastName": CONTACT["last"], "FirstName": CONTACT["first"], "Company": CONTACT["company"],
                    "HomeTelephone": CONTACT["home"], "Mail": CONTACT["mail"], "Town": CONTACT["town"],
                    "Birthday": ticks("1985-04-12"), "Notes": CONTACT["notes"].replace("\n", "\r\n")}
        self.assertEqual(len(KINDS), 17)
        for kind in KINDS:
            with self.subTest(kind):
                given, left = address_book(kind, {"Outlook": "1/31/1985", "Outlook, British": "31/1/1985"}.get(kind, ""))
                said = self.import_file("--form", "csv", "--replace", given=given)
                contact = self.named(CONTACTS)[0]
                self.assertEqual(contact.pop("Categories", "Imported"), "Imported")
                self.assertEqual(contact, expected)
                self.assertIn("quillbox-device: 3 fields were left out: " + ", ".join(f"{name} 1" for name in left) + ".\n", said)
                self.assertEqual("read as Windows-1252" in said, KINDS[kind][0] == "cp1252")
                self.assertEqual("It isn't certain" in said, kind == "Outlook, UTF-8")

    def test_odd_cells_of_address_books_lose_nothing_in_silence(self):
        def taken(headings, cells, contact, left_out):
            with self.subTest(headings, cells=cells):
                self.assert_taken("csv", f"{headings}\n{cells}\n", *([contact] if contact else []), left_out=left_out)

        taken("Name,Group Membership", "Ann Lee,* myContacts ::: A ::: B", {"LastName": "Ann Lee", "Categories": "A;B"}, "")
        taken("Name,Organization 1 - Name", "Firm,Firm", {"Company": "Firm"}, "")
        taken("Last Name,Display Name", "a,Boss", {"LastName": "a"}, "1 field was left out: Display Name 1")
        taken("Last Name,Business Fax,Mobile Phone", "a,1,2", {"LastName": "a", "HomeTelephone": "2"},
              "2 fields were left out: Business Fax 1, Mobile Phone (imported as home) 1")
        taken("Phone 1 - Type,Phone 1 - Value", "Home Fax,1 ::: 2", {"HomeTelephone": "1"},
              "2 fields were left out: Phone 1 - Value 1, Phone 1 - Value (Home Fax, imported as home) 1")
        taken("Nachname,Rückmeldung,ISDN", "a,1,2", {"LastName": "a", "HomeTelephone": "1"},
              "2 fields were left out: ISDN 1, Rückmeldung (imported as home) 1")
        for none in ("0/0/00", ""):
            taken("Last Name,Birthday", f"a,{none}", {"LastName": "a"}, "")
        for bad in (" --04-12", "1604-04-12", "31.2.1985", "12.4.85", "13/13/1985", "4/12", "1/2-1985", "99999999999/1/1985"):
            taken("Last Name,Birthday", f"a,{bad}", {"LastName": "a"}, "1 field was left out: Birthday 1")
        taken("Last Name,Birth Month,Birth Day", "a,4,12", {"LastName": "a"}, "1 field was left out: Birth Day 1")
        taken("Spouse,E-mail Address", "x,", None, "1 field was left out: Spouse 1")
        said = self.import_file("--form", "csv", "--replace", given="Last Name;Größe\na;44\n".encode("cp1252"))
        self.assertIn("left out: Größe 1.", said)
        self.assertIn("The file isn't UTF-8 and was read as Windows-1252.", said)
        self.assertIn('line 1: a value isn\'t valid in the character set "WINDOWS-1252"', self.refused("csv", b"Last Name,\x81\na,b\n", "--replace"))

    def test_a_file_of_columns_says_what_other_columns_mean(self):
        columns = self.file("columns", "# of our club\n\nSurname = LastName\nBorn=Birthday\nTel=2 = HomeTelephone\nNo =\n")
        self.assert_taken_with(columns)
        for line in ("Surname", "Surname = Start", "Surname = lastname"):
            bad = self.file("columns", "No =\n" + line)
            said = self.import_file("--form", "csv", "--replace", "--columns", bad, given="Surname\na\n", code=2)
            self.assertIn('columns", line 2: ', said)
        said = self.refused("csv", "Surname\na\n")
        for word in ("LastName", "HomeTelephone", "--columns", "Outlook"):
            self.assertIn(word, said)

    def assert_taken_with(self, columns):
        said = self.import_file("--form", "csv", "--columns", columns, given="No;SURNAME;Born;Tel=2;Town;Shoe\n1;a;12.4.1985;5;b;44\n")
        self.assertEqual(said, "quillbox-device: 1 field was left out: Shoe 1.\n")
        self.assertEqual(self.named(CONTACTS), [{"LastName": "a", "HomeTelephone": "5", "Town": "b", "Birthday": ticks("1985-04-12")}])

    def test_tables_of_other_programs_are_understood(self):
        self.assert_taken("csv", "\ufeffLastName;Shoe\033size;FirstName;Birthday;Notes;40150003\n"
                          "A;44;\"B;\"\"C\"\"\n2\";1985-04-12;hex:41;5\n\n;;;;;\n;45;D;1985-04-12 08:30;\"\";-1",
                          {"LastName": "A", "FirstName": 'B;"C"\n2', "Birthday": ticks("1985-04-12"), "Notes": "A",
                           "Minutes": 5},
                          {"FirstName": "D", "Birthday": ticks("1985-04-12T08:30"), "Notes": "", "Minutes": -1},
                          name="New", left_out="2 fields were left out: Shoe<U+001B>size 2")
        # The separator is searched outside of quoted headings.
        for table in ('"Foo;x",LastName\n,a\n', '"Foo,\tx";LastName\n;a\n', '"Foo\n"";x",LastName\n,a\n',
                      'Foo\t"LastName"\n\ta\n'):
            with self.subTest(table=table):
                self.assert_taken("csv", table, {"LastName": "a"}, name="New")


@unittest.skipIf(SANITIZED, "a sanitizer changes times and memory")
class LimitsTest(FormsTest):
    def limited(self, *arguments, **more):
        """Runs quillbox-device with limits of ten seconds and 512 MiB."""
        def limit():
            resource.setrlimit(resource.RLIMIT_CPU, (10, 10))
            resource.setrlimit(resource.RLIMIT_AS, (512 << 20, 512 << 20))

        return self.tool(*arguments, preexec_fn=limit, **more)

    def test_a_file_of_16_mib_takes_neither_long_nor_much_memory(self):
        head = '{"database":"d%d","type":1,"sort":[]}\n'
        ancient = component("STANDARD", "DTSTART:00011025T030000", "TZOFFSETFROM:+0200", "TZOFFSETTO:+0100",
                            "RRULE:FREQ=YEARLY;BYMONTH=10;BYDAY=-1SU")
        wide = [{"id": f"{n:04x}0003", "value": 1} for n in range(1, 0x10000)]
        files = {
            "best.vcf": card("N:a", f"TEL;TYPE={'x' * (8 << 20)}:1", *["TEL:2"] * 100_000),
            "wide.jsonl": head % 0 + f"{json.dumps({'record': wide})}\n" * 7,
            "blob.jsonl": head % 0 + json.dumps({"record": [{"id": "00010041", "value": "00" * ((8 << 20) - 100)}]}),
            "zone.ics": component("VCALENDAR", component("VTIMEZONE", "TZID:z", ancient * 490),
                                  component("VEVENT", "SUMMARY:a", "DTSTART;TZID=z:20370311T080000").rstrip()),
            "label.csv": f"Phone 1 - Label,Phone 1 - Value\n{'x' * (8 << 20)},{'1:::' * (2 << 20)}\n",
            "set.csv": ("Last Name" + "," * 130_000 + "\n" + ("ä" + "," * 130_000 + "\n") * 124).encode("cp1252"),
            "names.csv": f"Name,E-mail Address\n{'a:::' * (2 << 20)},{'b:::' * (2 << 20)}\n",
        }
        for name, text in files.items():
            with self.subTest(name):
                self.limited("database", "import", self.device, self.file(name, text), "--replace")
        record = json.dumps({"record": [{"id": "00010002", "value": 1}]})
        many = self.file("many.jsonl", "".join(head % number + record + "\n" for number in range(50_000)))
        for _ in ("makes", "replaces"):
            self.limited("database", "import", self.device, many, "--replace")

    def test_a_full_database_is_recognised_again_in_time_and_says_that_it_is_full(self):
        self.import_file(given=contacts(*([{"id": NAMES["LastName"], "value": str(n)}] for n in range(0xFFFF))))
        out = self.folder / "full.vcf"
        self.tool("database", "export", self.device, out)
        self.assertIn("0 records added, 65535 there already", self.limited("database", "import", self.device, out, "--add"))
        self.assertIn("the database already has 65535 records", self.refused("vcard", CARD % "NOTE:x", "--add"))

    def test_an_import_can_give_a_record_as_many_properties_as_a_device_can_hold(self):
        uid = {"id": NAMES["Identifier"], "value": "u"}
        texts = ("LastName", "FirstName", "Company", "HomeTelephone", "Mail", "Town", "Categories")
        self.import_file(given=contacts([uid, *({"id": NAMES[name], "value": "old"} for name in texts)]))
        wanted = [uid, *({"id": f"{n:04x}0003", "value": 1} for n in range(1, 0xFFFF))]
        self.import_file("--add", given=contacts(wanted))
        self.assertCountEqual([prop["id"] for prop in self.records(CONTACTS)[0]], [prop["id"] for prop in wanted])

    def test_what_exceeds_a_limit_is_refused_with_the_reason(self):
        many = "".join(json.dumps({"database": f"d{n}", "type": 1, "sort": []}) + "\n" for n in range(70_000))
        self.limited("database", "import", self.device, self.file("many.jsonl", many), code=1)
        self.assertIn("line 65536: the file has more than 65535 databases", self.said)
        self.limited("database", "import", self.device, self.file("big.vcf", card("N:" + "x" * (9 << 20))), code=1)
        self.assertIn("the record has more than 65535 properties or 16 MiB", self.said)
        line = tasks() + json.dumps({"record": [{"id": "00010041", "value": "00" * (33 << 20)}]})
        self.limited("database", "import", self.device, self.file("long.jsonl", line), code=1)
        self.assertIn("line 2: the record is longer than a record of a device can be", self.said)
        self.import_file(given=contacts(*([{"id": f"{n:04x}0003", "value": 1}] for n in range(1, 20_000))))
        self.limited("database", "export", self.device, "--form", "csv", "--name", CONTACTS, code=1)
        self.assertIn("more than 100 million cells; export it as JSON lines", self.said)


class RefusedFilesTest(FormsTest):
    def setUp(self):
        super().setUp()
        kept = [{"id": "0037001f", "value": "kept"}]
        self.import_file(given=contacts(kept) + appointments(kept) + tasks(kept) + contacts(kept, name="Other", kind=7))

    def test_a_damaged_file_is_refused_with_its_line_and_changes_nothing(self):
        good = CARD % "NOTE:x"

        def with_field(field):
            """Returns a sound card, and a second card with this field in line 9."""
            return good + CARD % field

        files = {
            "vcard": [
                (good + "nonsense\n", 6), (good + "BEGIN:VCARD\nN:a\n", 6), (good + "BEGIN:VCARD\n" * 100_000, 14),
                (with_field("NOTE:a\0b"), 9), (with_field("NOTE:x\udcff").encode("utf-8", "surrogateescape"), 9),
                (with_field("END:VEVENT"), 9),
                (with_field("A:\n" * 300_000), 6), (with_field(("A" + ";a=b" * 255 + ":\n") * 1100), 6),
                (EVENT % "X:", 6)],
            "ical": [
                (good, 1), ("", 0), (EVENT % "STATUS:CANCELLED", 6),
                ((EVENT % "")[:38], 2), ((EVENT % "X:")[:-15], 5)],
            "jsonl": [(tasks() + '{"record":[{%s}]}' % ",".join(f'"{n}":0' for n in range(17)), 2)],
            "csv": [
                ("", 0), ("Nobody\n", 1), ("LastName,LastName\n", 1), ("LastName,Town flags\n", 1),
                ("LastName,Done\na,1\nb\n", 3), ("LastName\na,b\n", 2), ("LastName\na\n\"b\nc\n", 3),
                ("LastName\n\"a\"b\n", 2), ("LastName\na\"b\n", 2), ("LastName\na\rb\n", 2), ("LastName\na\0b\n", 2),
                (b"LastName\n\xff\n", 2), ("Done\n1\n32768\n", 3), ("Birthday\n2025-02-29\n", 2),
                ("Start\n2025-01-01T25:00\n", 2), ("00010041\nhex:0\n", 2), ("0001001f\nutf16:00\n", 2),
                ("0001001f\nutf16:0000\n", 2), ("00010063\n5\n", 2), ("Done,Done flags\n1,65536\n", 2),
                ("," * 65_536, 1), ("," * 1_000_000, 1), ("LastName\n" + "," * 1_000_000, 2)],
        }
        for form, cases in files.items():
            for content, line in cases:
                with self.subTest(form=form, content=content[:100]):
                    said = self.refused(form, content, "--name", "New")
                    if line:
                        self.assertIn(f'"-", line {line}: ', said)

    def test_a_refusal_says_how_the_file_would_be_taken(self):
        self.assertIn("save the file as UTF-8", self.refused("vcard", CARD.encode() % b"NOTE:\xfc", "--name", "New"))

    def test_a_huge_file_takes_no_more_memory_than_it_may(self):
        size = 1_000_001 if SANITIZED else 100_000_001
        limit = 700 * 1024 * 1024
        limited = {} if SANITIZED else {"preexec_fn": lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit))}
        for form, start, unit in (("jsonl", b'{"record":', b"["), ("jsonl", b'{"record":[', b"1,"), ("vcard", b"N:", b"x"),
                                  ("vcard", b"BEGIN:VCARD\n", b"A:\n"), ("vcard", b"", b"x"),
                                  ("ical", b"BEGIN:VCALENDAR\n", b"X"), ("csv", b"", b"x"), ("csv", b"", b","),
                                  ("csv", b"LastName\n", b'"'), ("csv", b"LastName\n\"", b"x\n")):
            with self.subTest(form=form, start=start, unit=unit):
                big = self.file("big", start + unit * (size // len(unit)))
                self.tool("database", "import", self.device, big, "--form", form, "--name", "New", code=1, **limited)
                self.assertRegex(self.said, r"line \d+: .*Nothing was imported")

    def test_only_a_database_that_is_named_or_the_only_one_of_its_type_is_changed(self):
        card = CARD % "NOTE:x"
        self.assertEqual(self.refused("vcard", card), 'quillbox-device: The database "Contacts Database" exists; --replace replaces '
                         "it, --add adds to it. Nothing was imported.\n")
        self.assertIn("type 7", self.refused("vcard", card, "--name", "Other", "--add"))
        self.assertIn("type 7", self.refused("vcard", card, "--name", "Other", "--replace"))
        both = (EVENT % "X:").replace("END:VCALENDAR", "BEGIN:VTODO\nEND:VTODO\nEND:VCALENDAR")
        self.assertIn("--name", self.refused("ical", both, "--name", "New"))
        self.import_file("--form", "csv", given="LastName\na\n", code=2)
        self.import_file("--form", "vcard", "--add", "--replace", given=card, code=2)
        self.tool("database", "export", self.device, "--form", "csv", code=1)
        self.tool("database", "export", self.device, "--form", "vcard", "--name", "Other", code=1)
        self.assertIn("type is 7", self.said)

        self.import_file("--form", "vcard", "--add", given=card)
        self.import_file("--add", given=contacts([{"id": "0037001f", "value": "more"}], kind=9))
        self.assertEqual(self.named(CONTACTS), [
            {"Subject": "kept"}, {"LastName": "a", "FirstName": "b", "Notes": "x"}, {"Subject": "more"}])
        self.import_file("--form", "vcard", "--name", "Second", given=card)
        self.assertIn("database Second: type 24, 1 record\n", self.tool("database", "list", self.device))
