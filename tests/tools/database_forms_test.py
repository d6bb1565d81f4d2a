#!/usr/bin/env python3
"""Databases as vCard, iCalendar and CSV: our own files come back record for record, those of others as far as they can,
and a damaged file changes nothing."""
import base64
import contextlib
import json
import os
import pathlib
import random
import re
import resource
import sqlite3
import subprocess
import sys
import tempfile
import unittest

TOOL = None
CONTACTS = {"database": "Contacts Database", "type": 24, "sort": [{"property": 0x3A11001F, "flags": 2}]}
APPOINTMENTS = {"database": "Appointments Database", "type": 25, "sort": [{"property": 0x40020040, "flags": 0}]}
TASKS = {"database": "Tasks Database", "type": 26, "sort": [{"property": 0x41040040, "flags": 4}]}
NAMES = {"LastName": "3a11001f", "FirstName": "3a06001f", "Company": "3a16001f", "HomeTelephone": "3a09001f",
         "Mail": "4083001f", "Town": "4041001f", "Birthday": "40420040", "Subject": "0037001f", "Notes": "40050041",
         "Categories": "4004001f", "Start": "40020040", "Minutes": "40150003", "Place": "4208001f",
         "ReminderMinutes": "45010012", "RepetitionDays": "40160013", "Due": "41040040", "Done": "41090002",
         "Priority": "00260002"}
IDS = {number: name for name, number in NAMES.items()}
MIDNIGHT = 133_861_248_000_000_000  # 2025-03-12
ODD_TEXTS = ["", " ", "a;b,c\\d:e", "two\r\nlines", "one\nline", "a\rb", "tab\there", "\u0001\u007f", "Grüße 😀" * 20, "utf16:00",
             "hex:00", "\"", "a\"b", "\\n", "x\\", ";;", ",", "tel:5", "日" * 100, "=1+1", " lead", "-", "\ufeff"]
ODD_BLOBS = ["", "00ff", "6869", "610d0a62", "610a62", "6865783a", "c3a9", "c3", "0d", "07", "20"]
ODD_TIMES = [0, 1, MIDNIGHT, MIDNIGHT + 10_000_000 * 3661, MIDNIGHT + 1, 2 ** 63, 2 ** 64 - 1, 2_650_467_744_000_000_000]
ODD_NUMBERS = [0, 1, 2, 3, 7, 14, 365, 366, 1440, 2880, 65535, 2 ** 31 - 1]


def value_of(number, chance):
    """A property of the type that the id's low half names."""
    kind = int(number[4:], 16)
    made = {"id": number}
    if chance.random() < 0.05:
        made["flags"] = chance.choice([1, 0xFCFF])
    if kind == 31:
        if chance.random() < 0.05:
            return {**made, "units": [0xD800, 0x41]}
        return {**made, "value": chance.choice(ODD_TEXTS)}
    if kind == 65:
        return {**made, "value": chance.choice(ODD_BLOBS)}
    if kind == 64:
        return {**made, "value": chance.choice(ODD_TIMES)}
    limit = {2: 2 ** 15 - 1, 18: 2 ** 16 - 1, 3: 2 ** 31 - 1, 19: 2 ** 31 - 1, 11: 1}.get(kind)
    if limit:
        return {**made, "value": min(chance.choice(ODD_NUMBERS), limit)}
    if kind == 5:
        return {**made, **chance.choice([{"value": 0.1}, {"value": -0.0}, {"value": 1e300}, {"bits": "7ff8000000000001"}])}
    return {**made, "bits": "0123456789abcdef"}


def odd_records(usual, seed, count=150):
    """Records with some of the usual properties, some others, in some order."""
    chance = random.Random(seed)
    others = ["00010002", "00020012", "00030003", "00040013", "00050005", "0006000b", "00070040", "0008001f", "00090041",
              "000a0063"]
    made = []
    for _ in range(count):
        ids = chance.sample(usual, chance.randint(1, len(usual))) + chance.sample(others, chance.choice([0, 0, 0, 1, 3]))
        if chance.random() < 0.5:
            ids.sort(key=(usual + others).index)
        made.append([value_of(number, chance) for number in ids])
    return made


def lines(head, records):
    return "".join(json.dumps(line) + "\n" for line in [head] + [{"record": record} for record in records])


def ticks(text):
    """2025-03-11 08:30 as the store counts it."""
    import datetime
    since = datetime.datetime.fromisoformat(text) - datetime.datetime(1601, 1, 1)
    return (since.days * 86400 + since.seconds) * 10_000_000


def is_sanitized(tool):
    """A sanitizer reserves more of the address space than any limit on it allows."""
    program = pathlib.Path(tool).read_bytes()
    return b"__asan_init" in program or b"__tsan_init" in program


class FormsTest(unittest.TestCase):
    def setUp(self):
        temporary = tempfile.TemporaryDirectory(prefix="quillbox-forms-test.",
                                                dir="/dev/shm" if os.access("/dev/shm", os.W_OK) else None)
        self.addCleanup(temporary.cleanup)
        self.folder = pathlib.Path(temporary.name)
        self.device = self.make("device")

    def make(self, name):
        self.tool("init", self.folder / name)
        return self.folder / name

    def tool(self, *arguments, code=0, given=b"", zone="Europe/Vienna"):
        given = given if isinstance(given, bytes) else given.encode()
        done = subprocess.run([TOOL, *map(str, arguments)], input=given, capture_output=True, check=False,
                              env={**os.environ, "TZ": zone})
        self.assertEqual(done.returncode, code, done.stderr)
        self.said = done.stderr.decode()
        return done.stdout.decode()

    def records(self, name, device=None):
        out = self.tool("database", "export", device or self.device, "--name", name)
        return [json.loads(line)["record"] for line in out.splitlines()[1:]]

    def named(self, name, device=None):
        """The records as names and values, blobs as text."""
        return [{IDS.get(p["id"], p["id"]): bytes.fromhex(p["value"]).decode() if p["id"][4:] == "0041" else p["value"]
                 for p in record} for record in self.records(name, device)]

    def refused(self, form, content, *more):
        before = self.tool("database", "export", self.device)
        self.tool("database", "import", self.device, "-", "--form", form, *more, given=content, code=1)
        said = self.said
        self.assertIn("Nothing was imported.", said)
        self.assertEqual(self.tool("database", "export", self.device), before)
        return said


class OwnFilesTest(FormsTest):
    def check_round_trip(self, file, *databases):
        """Out of one device and into another: equal as JSON lines tell."""
        self.tool("database", "export", self.device, self.folder / file)
        text = (self.folder / file).read_bytes()
        for line in text.split(b"\r\n"):
            self.assertLessEqual(len(line), 75)
        other = self.make(file + ".device")
        self.tool("database", "import", other, self.folder / file)
        self.assertEqual(self.said, "")
        for name in databases:
            self.assertEqual(self.records(name, other), self.records(name))
        return text.decode()

    def test_contacts_lose_something_on_their_way_through_vcard(self):
        usual = [NAMES[name] for name in ("LastName", "FirstName", "Company", "HomeTelephone", "Mail", "Town", "Categories",
                                          "Birthday", "Notes")]
        self.tool("database", "import", self.device, "-", given=lines(CONTACTS, odd_records(usual, 1)))
        self.check_round_trip("own.vcf", "Contacts Database")

    def test_appointments_and_tasks_lose_something_on_their_way_through_icalendar(self):
        events = [NAMES[name] for name in ("Subject", "Place", "Start", "Minutes", "ReminderMinutes", "RepetitionDays",
                                           "Categories", "Notes")]
        tasks = [NAMES[name] for name in ("Subject", "Categories", "Due", "Priority", "Done", "Notes")]
        self.tool("database", "import", self.device, "-", given=lines(APPOINTMENTS, odd_records(events, 2)) +
                  lines(TASKS, odd_records(tasks, 3)))
        text = self.check_round_trip("own.ics", "Appointments Database", "Tasks Database")
        self.assertEqual(len(set(re.findall("UID:.*", text))), 300)

    def test_the_demonstration_needs_lines_of_our_own(self):
        self.device = self.folder / "demonstration"
        self.tool("init", self.device, "--demonstration")
        text = self.check_round_trip("own.vcf", "Contacts Database")
        text += self.check_round_trip("own.ics", "Appointments Database", "Tasks Database")
        self.assertNotIn("X-QUILLBOX", text)

    def test_a_record_loses_something_on_its_way_through_csv(self):
        usual = list(NAMES.values())
        for head in (CONTACTS, {**CONTACTS, "type": 7}):
            with self.subTest(head=head):
                made = lines(head, odd_records(usual, 4))
                self.tool("database", "import", self.device, "-", "--replace", given=made)
                csv = self.folder / "own.csv"
                self.tool("database", "export", self.device, "--force", csv, "--name", CONTACTS["database"])
                self.assertEqual("LastName" in csv.read_bytes().decode(), head["type"] == 24)
                before = self.tool("database", "export", self.device)
                self.tool("database", "import", self.device, "--name", CONTACTS["database"], csv, "--replace")
                # CSV has one order for all records; all else is there, the database's type and sort orders too.
                after = self.tool("database", "export", self.device)
                def unordered(out):
                    return [sorted(map(str, json.loads(line).get("record", [line]))) for line in out.splitlines()]
                self.assertEqual(unordered(after), unordered(before))

    def test_what_an_older_device_has_in_a_propertys_flags_can_not_be_imported(self):
        number = NAMES["Minutes"]
        self.tool("database", "import", self.device, "-", given=lines(APPOINTMENTS, [[{"id": number, "flags": 7, "value": 5}]]))
        with contextlib.closing(sqlite3.connect(self.device / "device.db")) as store, store:
            (record,) = store.execute("SELECT properties FROM store_record").fetchone()
            self.assertEqual(record[4:6], b"\7\0")
            store.execute("UPDATE store_record SET properties = ?", (record[:4] + b"\7\3" + record[6:],))
        for file in ("own.jsonl", "own.csv", "own.ics"):
            self.tool("database", "export", self.device, self.folder / file)
            self.tool("database", "import", self.device, self.folder / file, "--replace", "--name", APPOINTMENTS["database"])
            self.assertEqual([p for p in self.records(APPOINTMENTS["database"])[0] if p["id"] == number],
                             [{"id": number, "flags": 7, "value": 5}])

    def test_the_largest_record_is_more_than_a_card_may_be(self):
        self.tool("database", "import", self.device, "-", given=lines(CONTACTS, [[
            {"id": f"{n:04x}0003", "flags": 1, "value": 1} for n in range(1, 0x10000)]]))
        self.check_round_trip("own.vcf", "Contacts Database")

    def test_what_somebody_adds_to_our_file_gets_lost(self):
        self.tool("database", "import", self.device, "-", given=lines(APPOINTMENTS, [[
            {"id": NAMES["Notes"], "value": "00"}, {"id": NAMES["Start"], "value": MIDNIGHT + 5}]]))
        text = self.tool("database", "export", self.device, "--form", "ical")
        self.assertIn("X-QUILLBOX-WITHOUT", text)
        text = text.replace("UID", "RRULE:FREQ=DAILY\r\nSUMMARY:new\r\nUID")
        self.tool("database", "import", self.device, "-", "--form", "ical", "--replace", given=text)
        self.assertEqual(self.records("Appointments Database"), [[
            {"id": NAMES["Notes"], "value": "00"}, {"id": NAMES["Start"], "value": MIDNIGHT + 5},
            {"id": NAMES["Subject"], "value": "new"}, {"id": NAMES["RepetitionDays"], "value": 1}]])


class ForeignFilesTest(FormsTest):
    def add(self, form, text, *more):
        self.tool("database", "import", self.device, "-", "--form", form, "--replace", *more, given=text)
        return self.said

    def test_cards_of_other_programs_are_misread(self):
        said = self.add("vcard", """BEGIN:VCARD\r
VERSION:3.0\r
item1.N:Stevens;John;Philip;Dr.;\r
FN:Dr. John Stevens\r
ORG:ABC\\, Inc.;Sales\r
tel;type=WORK,voice:+1 1\r
TEL;TYPE=home,pref:+1 2\r
EMAIL;TYPE=INTERNET:a@b.example\r
EMAIL:c@d.example\r
ADR;TYPE=home:;;Street 1;To\r
 wn;;12345;\r
CATEGORIES:One,Two\\, three\r
BDAY:1985-04-12\r
NOTE:a\\nb\\;c\r
PHOTO;ENCODING=b:AAAA\r
 BBBB\r
UID:1\r
END:VCARD\r
begin:vcard
version:2.1
n;charset=ISO-8859-1;encoding=QUOTED-PRINTABLE:M=FCller;J=F6rg
TEL;HOME;VOICE:tel:5
NOTE;QUOTED-PRINTABLE:one=
 two=0D=0Athree=3D
BDAY:--0412
NOTE:
AGENT:
BEGIN:VCARD
N:inner
END:VCARD
end:vcard
BEGIN:VCARD
VERSION:4.0
FN:Only Shown
BDAY:15000101
END:VCARD
BEGIN:VCARD
VERSION:4.0
FN:Firm
ORG:Firm
END:VCARD
""".encode())
        self.assertEqual(self.named("Contacts Database"), [
            {"LastName": "Stevens", "FirstName": "John", "Company": "ABC, Inc.", "HomeTelephone": "+1 2", "Mail": "a@b.example",
             "Town": "Town", "Categories": "One;Two, three", "Birthday": ticks("1985-04-12"), "Notes": "a\r\nb;c"},
            {"LastName": "Müller", "FirstName": "Jörg", "HomeTelephone": "5", "Notes": "one two\r\nthree="},
            {"LastName": "Only Shown"}, {"Company": "Firm"}])
        self.assertEqual(said, "quillbox-device: 10 fields were left out: ADR 1, BDAY 2, EMAIL 1, FN 1, N 1, ORG 1, "
                         "PHOTO 1, TEL 1, VCARD 1.\n")

    def test_a_birthday_moves_to_another_day_or_refuses_the_cards(self):
        cards = "".join(CARD % line for line in (
            "BDAY:1990-05-01T00:00:00Z", "BDAY:19900501T230000-1100", "BDAY;VALUE=TEXT:circa 1800", "BDAY;VALUE=text:19900501",
            "BDAY:circa 1800", "BDAY:19851332", "BDAY:1990", "BDAY:--0501", "BDAY;X-APPLE-OMIT-YEAR=1604:1604-02-29",
            "BDAY;X-APPLE-OMIT-YEAR=1604:1990-05-01"))
        for zone in ("America/New_York", "Asia/Tokyo"):
            self.tool("database", "import", self.device, "-", "--form", "vcard", "--replace", given=cards, zone=zone)
            self.assertEqual(self.said, "quillbox-device: 7 fields were left out: BDAY 7.\n")
            self.assertEqual([contact.get("Birthday") for contact in self.named("Contacts Database")],
                             [ticks("1990-05-01"), ticks("1990-05-01T23:00")] + [None] * 7 + [ticks("1990-05-01")])

    def test_a_machine_takes_the_telephones_place(self):
        for number, lines in (
                ("2", "TEL;TYPE=HOME,FAX:1 TEL;TYPE=CELL:2"), ("2", "TEL;WORK;FAX:1 TEL;PAGER:3 TEL:2 TEL;CELL:4"),
                ("2", 'TEL;TYPE="home,fax":1 TEL;TYPE=work:3 TEL;TYPE=home,voice:2'), ("2", "TEL;MODEM:1 TEL;HOME;FAX:2")):
            with self.subTest(lines):
                said = self.add("vcard", CARD % lines.replace(" ", "\n"))
                self.assertEqual(self.named("Contacts Database")[0]["HomeTelephone"], number)
                self.assertIn(f"TEL {lines.count('TEL') - 1}.", said)

    def test_a_text_of_an_unknown_character_set_is_guessed_in_silence_or_refuses_cards_that_do_not_need_it(self):
        said = self.add("vcard", b"""BEGIN:VCARD
VERSION:2.1
N;ENCODING=QUOTED-PRINTABLE:M=FCller;J=F6rg
NOTE;QUOTED-PRINTABLE:Gr=C3=BC=C3=9Fe
ORG;QUOTED-PRINTABLE:80 =80
LABEL;ENCODING=QUOTED-PRINTABLE:Stra=DFe
LABEL;CHARSET=KLINGON:x
X-A;QUOTED-PRINTABLE:=4
X-B:raw \xfc
TEL:1
TEL;QUOTED-PRINTABLE:=81
AGENT:
BEGIN:VCARD
N:\xfc
END:VCARD
END:VCARD
""")
        self.assertEqual(self.named("Contacts Database"), [
            {"LastName": "Müller", "FirstName": "Jörg", "Company": "80 €", "HomeTelephone": "1", "Notes": "Grüße"}])
        self.assertEqual(said, "quillbox-device: 6 fields were left out: LABEL 2, TEL 1, VCARD 1, X-A 1, X-B 1.\n"
                         "quillbox-device: 2 fields name no character set and were read as Windows-1252: N 1, ORG 1.\n")

    def test_texts_of_older_cards_lose_or_gain_characters(self):
        self.add("vcard", r"""BEGIN:VCARD
N;CHARSET=WINDOWS-1258:Hanoi;Anna
NOTE:C:\new\\names\; a\, \:b\
ADR;HOME:;;;To\n\;;;;
CATEGORIES:\now,b
VERSION:2.1
END:VCARD
BEGIN:VCARD
VERSION:2.1
N:a
NOTE;QUOTED-PRINTABLE:one=BLANKS
 two=BLANKS
=20three=3DBLANKS
END:VCARD
BEGIN:VCARD
VERSION:3.0
N:a
NOTE:C:\new
END:VCARD
""".replace("BLANKS", " \t "))
        self.assertEqual(self.named("Contacts Database"), [
            {"LastName": "Hanoi", "FirstName": "Anna", "Notes": r"C:\new\names; a, \:b" "\\", "Town": r"To\n;",
             "Categories": r"\now;b"},
            {"LastName": "a", "Notes": "one two three= \t "}, {"LastName": "a", "Notes": "C:\r\new"}])

    def test_base64_is_decoded_and_what_is_no_text_left_out(self):
        def coded(text, characters="utf-8"):
            return base64.b64encode(text.encode(characters)).decode()
        long = coded("a\\nb\\, c " * 12)
        said = self.add("vcard", f"""BEGIN:VCARD
VERSION:2.1
N;CHARSET=ISO-8859-1;ENCODING=BASE64:{coded("Müller;Jörg", "latin-1")}
ORG;Base64:{coded("Grüße")}
NOTE;ENCODING=BASE64:
    {coded("one")}
\t {coded("two")}

END:VCARD
BEGIN:VCARD
VERSION:3.0
N:a
NOTE;ENCODING=b:{long[:50]}
 {long[50:]}
CATEGORIES;ENCODING=b:{coded("A,B")}
CATEGORIES;ENCODING=b:/w==
CATEGORIES:C
EMAIL;ENCODING=B:{coded("a@b.example").rstrip("=")}
EMAIL;ENCODING=B:a
END:VCARD
BEGIN:VCARD
VERSION:3.0
N;ENCODING=B:{coded("Only").replace("=", "*")}*
FN:b
ORG;ENCODING=B://///w==
TEL;ENCODING=B;CHARSET=KLINGON:AAAA
ADR;ENCODING=B:QQ==QQ==
NOTE;ENCODING=B:{coded("a" + chr(0))}
PHOTO;ENCODING=B:/9j/4AAQSkZJRg==
END:VCARD
""")
        self.assertEqual(self.named("Contacts Database"), [
            {"LastName": "Müller", "FirstName": "Jörg", "Company": "Grüße", "Notes": "onetwo"},
            {"LastName": "a", "Categories": "A;B;C", "Mail": "a@b.example", "Notes": "a\r\nb, c " * 12}, {"LastName": "b"}])
        self.assertEqual(said, "quillbox-device: 8 fields were left out: ADR 1, CATEGORIES 1, EMAIL 1, N 1, NOTE 1, ORG 1, PHOTO 1, TEL 1.\n")

    def test_of_two_encodings_the_first_decides_where_the_line_ends_too(self):
        self.add("vcard", "BEGIN:VCARD\r\nVERSION:2.1\r\nN:a\r\nNOTE;ENCODING=BASE64;ENCODING=QUOTED-PRINTABLE:QUI=\r\n"
                 "EMAIL:a@b.example\r\nEND:VCARD\r\n")
        self.assertEqual(self.named("Contacts Database"), [{"LastName": "a", "Mail": "a@b.example", "Notes": "AB"}])

    def test_blanks_at_the_end_of_a_line_hide_no_card_and_no_version(self):
        said = self.add("vcard", "BEGIN:VCARD \r\nVERSION:2.1\t\r\nN:a\r\nNOTE:C:\\new\r\nAGENT:\r\nBEGIN: vcard\r\n"
                        "END:VCARD\t \r\nend:vcard\r\n")
        self.assertEqual(self.named("Contacts Database"), [{"LastName": "a", "Notes": "C:\\new"}])
        self.assertIn("VCARD 1.", said)
        self.add("ical", "BEGIN:VCALENDAR\t\nBEGIN:VTODO \nSUMMARY:b \nEND:VTODO  \nEND:VCALENDAR \n")
        self.assertEqual(self.named("Tasks Database"), [{"Subject": "b ", "Done": 0}])

    def test_an_empty_line_is_no_json(self):
        made = lines(CONTACTS, [[{"id": NAMES["LastName"], "value": "a"}]]).replace("\n", "\r\n\r\n \t\n\n")
        self.add("jsonl", made)
        self.assertEqual(self.named("Contacts Database"), [{"LastName": "a"}])

    def test_calendars_of_other_programs_are_misread(self):
        def event(*lines):
            return "\r\n".join(["BEGIN:VEVENT", "UID:1", *lines, "END:VEVENT", ""])
        said = self.add("ical", "BEGIN:VCALENDAR\r\nX-WR-CALNAME:Mine\r\nBEGIN:VTIMEZONE\r\nTZID:x\r\nEND:VTIMEZONE\r\n" + "".join((
            event("SUMMARY:utc", "DTSTART:20250701T080000Z", "DTEND:20250701T093000Z"),
            event("SUMMARY:zone", "DTSTART;TZID=America/New_York:20250701T080000", "DURATION:PT1H30M"),
            event("SUMMARY:elsewhere", "DTSTART;TZID=Nowhere/Land:20250701T080000"),
            event("SUMMARY:day", "DTSTART;VALUE=DATE:20250701", "RRULE:FREQ=WEEKLY;INTERVAL=2;BYDAY=TU"),
            event("SUMMARY:days", "DTSTART;VALUE=DATE:20250701", "DTEND;VALUE=DATE:20250704",
                  "RRULE:FREQ=YEARLY;BYMONTH=7;BYMONTHDAY=1"),
            event("SUMMARY:too much", "DTSTART:20250701T080000", "RRULE:FREQ=WEEKLY;COUNT=5", "EXDATE:20250708T080000"),
            event("SUMMARY:monthly", "DTSTART:20250701T080000", "RRULE:FREQ=MONTHLY", "BEGIN:VALARM", "TRIGGER:PT5M", "END:VALARM",
                  "BEGIN:VALARM", "ACTION:DISPLAY", "TRIGGER:-P1DT1H", "END:VALARM"),
            event("SUMMARY:gaps", "DTSTART:20250701T080000", "RRULE:FREQ=DAILY", "EXDATE:20250708T080000"),
            event("SUMMARY:off", "DTSTART:20250701T080000", "STATUS:cancelled"),
            event("SUMMARY:gaps", "RECURRENCE-ID:20250709T080000", "DTSTART:20250709T100000"),
            event("SUMMARY:at", "DTSTART:20250701T080000", "BEGIN:VALARM", "TRIGGER;VALUE=DATE-TIME:20250701T055000Z", "END:VALARM"),
        )) + """BEGIN:VTODO
SUMMARY:done
DUE;VALUE=DATE:20250701
PRIORITY:3
STATUS:COMPLETED
COMPLETED:20250630T100000Z
END:VTODO
BEGIN:VTODO
SUMMARY:begun
DUE:20250701T080000Z
PRIORITY:0
STATUS:IN-PROCESS
CATEGORIES:a
CATEGORIES:b,c
DESCRIPTION:text
END:VTODO
BEGIN:VTODO
SUMMARY:off
STATUS:CANCELLED
END:VTODO
BEGIN:VJOURNAL
END:VJOURNAL
END:VCALENDAR
""")
        nothing = {"Minutes": 0, "ReminderMinutes": 0, "RepetitionDays": 0}
        eight = ticks("2025-07-01T08:00")
        self.assertEqual(self.named("Appointments Database"), [
            {"Subject": "utc", "Start": ticks("2025-07-01T10:00"), **nothing, "Minutes": 90},
            {"Subject": "zone", "Start": ticks("2025-07-01T14:00"), **nothing, "Minutes": 90},
            {"Subject": "elsewhere", "Start": eight, **nothing},
            {"Subject": "day", "Start": ticks("2025-07-01"), **nothing, "Minutes": 1440, "RepetitionDays": 14},
            {"Subject": "days", "Start": ticks("2025-07-01"), **nothing, "Minutes": 4320, "RepetitionDays": 365},
            {"Subject": "too much", "Start": eight, **nothing},
            {"Subject": "monthly", "Start": eight, **nothing, "ReminderMinutes": 1500},
            {"Subject": "gaps", "Start": eight, **nothing, "RepetitionDays": 1},
            {"Subject": "at", "Start": eight, **nothing, "ReminderMinutes": 10}])
        self.assertEqual(self.named("Tasks Database"), [
            {"Subject": "done", "Due": ticks("2025-07-01"), "Priority": 1, "Done": 1},
            {"Subject": "begun", "Categories": "a;b;c", "Due": ticks("2025-07-01T10:00"), "Done": 0, "Notes": "text"}])
        self.assertEqual(said, "quillbox-device: 12 fields were left out: COMPLETED 1, EXDATE 1, "
                         "EXDATE (exception to a repetition) 1, RRULE 2, STATUS 1, TZID 1, VALARM 1, "
                         "VEVENT (cancelled) 1, VEVENT (exception to a repetition) 1, VJOURNAL 1, VTODO (cancelled) 1.\n")

    def test_what_separates_the_cells_is_taken_out_of_a_quoted_heading(self):
        for head, row in (('"Foo;x",LastName', ",a"), ('"Foo,\tx";LastName', ";a"), ('"Foo\n"";x",LastName', ",a"),
                          ('Foo\t"LastName"', "\ta")):
            with self.subTest(head=head):
                self.add("csv", f"{head}\n{row}\n", "--name", "New")
                self.assertEqual(self.named("New"), [{"LastName": "a"}])

    def test_tables_of_other_programs_are_misread(self):
        said = self.add("csv", "\ufeffLastName;Shoe\033size;FirstName;Birthday;Notes;40150003\n"
                        "A;44;\"B;\"\"C\"\"\n2\";1985-04-12;hex:41;5\n\n;;;;;\n;45;D;1985-04-12 08:30;\"\";-1", "--name", "New")
        self.assertEqual(self.named("New"), [
            {"LastName": "A", "FirstName": 'B;"C"\n2', "Birthday": ticks("1985-04-12"), "Notes": "A", "Minutes": 5},
            {"FirstName": "D", "Birthday": ticks("1985-04-12T08:30"), "Notes": "", "Minutes": -1}])
        self.assertEqual(said, "quillbox-device: 2 fields were left out: Shoe<U+001B>size 2.\n")


CARD = "BEGIN:VCARD\nVERSION:4.0\nN:a;b;;;\n%s\nEND:VCARD\n"
EVENT = "BEGIN:VCALENDAR\nBEGIN:VEVENT\nSUMMARY:a\n%s\nEND:VEVENT\nEND:VCALENDAR\n"


class RefusedFilesTest(FormsTest):
    def setUp(self):
        super().setUp()
        for head in (CONTACTS, APPOINTMENTS, TASKS, {**CONTACTS, "database": "Other", "type": 7}):
            self.tool("database", "import", self.device, "-", given=lines(head, [[{"id": "0037001f", "value": "kept"}]]))

    def test_a_damaged_file_is_imported_in_part_or_without_its_line(self):
        good = CARD % "NOTE:x"
        for form, content, line in (
                ("vcard", good + "nonsense\n", 6), ("vcard", good + "BEGIN:VCARD\nN:a\n", 6), ("vcard", "", 0),
                ("vcard", good + CARD % "NOTE;X=\"y:z", 9),
                ("vcard", good + CARD % "NOTE:a\rb", 9), ("vcard", good + CARD % "NOTE:a\0b", 9),
                ("vcard", (good + CARD % "NOTE:x\udcff").encode("utf-8", "surrogateescape"), 9),
                ("vcard", good + CARD % "NOTE;CHARSET=KLINGON:x", 9), ("vcard", good + CARD % "NOTE;QUOTED-PRINTABLE:=4", 9),
                ("vcard", good + CARD % "NOTE;QUOTED-PRINTABLE:=00", 9),
                ("vcard", good + CARD % "CATEGORIES;QUOTED-PRINTABLE;CHARSET=UTF-8:=FC", 9), ("vcard", good + CARD % "X-QUILLBOX-WITHOUT;QUOTED-PRINTABLE:=4", 9),
                ("ical", EVENT % "BEGIN:VALARM\nTRIGGER;QUOTED-PRINTABLE:=4\nEND:VALARM", 5), ("ical", EVENT % "STATUS:CANCELLED", 6),
                ("vcard", good + "BEGIN:VCARD\n" * 100_000, 14),
                ("vcard", good + CARD % "END:VEVENT", 9), ("vcard", good + CARD % ("NOTE" + ";a=b" * 300_000 + ":x"), 9), ("vcard", good + CARD % ("A:\n" * 300_000), 6),
                ("vcard", good + CARD % (("A" + ";a=b" * 255 + ":\n") * 1100), 6),
                ("vcard", good + CARD % "X-QUILLBOX-PROPERTY;ID=00370040:x", 9),
                ("vcard", good + CARD % "X-QUILLBOX-PROPERTY;ID=0037001f;FLAGS=99999:x", 9),
                ("vcard", good + CARD % "X-QUILLBOX-ORDER:0037001f,1", 9), ("vcard", EVENT % "X:", 6),
                ("ical", good, 1), ("ical", "BEGIN:VCALENDAR\nEND:VCALENDAR\n", 2), ("ical", EVENT % "DTSTART:20250229T000000", 4),
                ("ical", EVENT % "DTSTART:yesterday", 4), ("ical", EVENT % "DURATION:PT99999999999M", 4),
                ("ical", EVENT % "DURATION:one hour", 4), ("ical", EVENT % "BEGIN:VALARM\nTRIGGER:x\nEND:VALARM", 5),
                ("ical", (EVENT % "")[:38], 2), ("ical", (EVENT % "X:")[:-15], 5),
                ("jsonl", lines(TASKS, []) + '{"record":[{%s}]}' % ",".join(f'"{n}":0' for n in range(17)), 2),
                ("csv", "", 0), ("csv", "Nobody\n", 1), ("csv", "LastName,LastName\n", 1), ("csv", "LastName,Town flags\n", 1),
                ("csv", "LastName,Done\na,1\nb\n", 3), ("csv", "LastName\na,b\n", 2), ("csv", "LastName\na\n\"b\nc\n", 3),
                ("csv", "LastName\n\"a\"b\n", 2), ("csv", "LastName\na\"b\n", 2), ("csv", "LastName\na\rb\n", 2),
                ("csv", "LastName\na\0b\n", 2), ("csv", b"LastName\n\xff\n", 2), ("csv", "Done\n1\n32768\n", 3),
                ("csv", "Birthday\n2025-02-29\n", 2), ("csv", "Start\n2025-01-01T25:00\n", 2), ("csv", "00010041\nhex:0\n", 2),
                ("csv", "0001001f\nutf16:00\n", 2), ("csv", "0001001f\nutf16:0000\n", 2), ("csv", "00010063\n5\n", 2),
                ("csv", "Done,Done flags\n1,65536\n", 2), ("csv", "," * 65_536, 1), ("csv", "," * 1_000_000, 1),
                ("csv", "LastName\n" + "," * 1_000_000, 2)):
            with self.subTest(form=form, content=content[:100]):
                said = self.refused(form, content, "--name", "New")
                if line:
                    self.assertIn(f'"-", line {line}: ', said)

    def test_a_refusal_does_not_tell_how_the_file_would_be_taken(self):
        for mark in ("utf-16-le", "utf-16-be"):
            for form, text in (("vcard", CARD % ""), ("ical", EVENT % ""), ("csv", "LastName\na\n"), ("jsonl", lines(TASKS, []))):
                self.assertIn('"-": the file is UTF-16; save it as UTF-8.', self.refused(form, ("\ufeff" + text).encode(mark), "--name", "New"))
        self.assertIn("quoted-printable is neither UTF-8 nor Windows-1252, and no CHARSET",
                      self.refused("vcard", CARD % "NOTE;QUOTED-PRINTABLE:=81", "--name", "New"))
        self.assertIn("save the file as UTF-8", self.refused("vcard", CARD.encode() % b"NOTE:\xfc", "--name", "New"))

    def test_a_huge_file_takes_the_memory_that_it_likes(self):
        big = self.folder / "big"
        sanitized = is_sanitized(TOOL)
        size = 10_000_001 if sanitized else 100_000_001
        for form, start, unit in (("jsonl", b'{"record":', b"["), ("jsonl", b'{"record":[', b"1,"), ("vcard", b"N:", b"x"),
                                  ("vcard", b"BEGIN:VCARD\n", b"A:\n"), ("vcard", b"", b"x"), ("ical", b"BEGIN:VCALENDAR\n", b"X"),
                                  ("csv", b"", b"x"), ("csv", b"LastName\n", b'"'), ("csv", b"LastName\n\"", b"x\n"), ("csv", b"", b",")):
            with self.subTest(form=form, start=start, unit=unit):
                big.write_bytes(start + unit * (size // len(unit)))
                limit = 700 * 1024 * 1024
                done = subprocess.run([TOOL, "database", "import", self.device, big, "--form", form, "--name", "New"],
                                      capture_output=True, check=False,
                                      preexec_fn=None if sanitized else lambda: resource.setrlimit(resource.RLIMIT_AS, (limit, limit)))
                self.assertEqual(done.returncode, 1)
                self.assertRegex(done.stderr, rb"line \d+: .*Nothing was imported")

    def test_a_database_is_changed_that_nobody_named(self):
        card = CARD % "NOTE:x"
        self.assertIn("--add", self.refused("vcard", card))
        self.assertIn("type 7", self.refused("vcard", card, "--name", "Other", "--add"))
        self.assertIn("type 7", self.refused("vcard", card, "--name", "Other", "--replace"))
        both = (EVENT % "X:").replace("END:VCALENDAR", "BEGIN:VTODO\nEND:VTODO\nEND:VCALENDAR")
        self.assertIn("--name", self.refused("ical", both, "--name", "New"))
        self.tool("database", "import", self.device, "-", "--form", "csv", given="LastName\na\n", code=2)
        self.tool("database", "import", self.device, "-", "--form", "vcard", "--add", "--replace", given=card, code=2)
        self.tool("database", "export", self.device, "--form", "csv", code=1)
        self.tool("database", "export", self.device, "--form", "vcard", "--name", "Other", code=1)
        self.assertIn("type is 7", self.said)

        self.tool("database", "import", self.device, "-", "--form", "vcard", "--add", given=card)
        self.assertEqual(self.named("Contacts Database"), [{"Subject": "kept"}, {"LastName": "a", "FirstName": "b", "Notes": "x"}])
        self.tool("database", "import", self.device, "-", "--add", given=lines({**CONTACTS, "type": 9}, [[
            {"id": "0037001f", "value": "more"}]]))
        self.assertEqual(self.named("Contacts Database")[2], {"Subject": "more"})
        self.tool("database", "import", self.device, "-", "--form", "vcard", "--name", "Second", given=card)
        self.assertIn("database Second: type 24, 1 records", self.tool("database", "list", self.device))


if __name__ == "__main__":
    TOOL = sys.argv.pop(1)
    unittest.main()
