"""quillbox-set report: in a browser, the page shows the content of the sets, does nothing else, and is accessible."""
import datetime
import json
import re
import sys

from selenium.webdriver.common.keys import Keys

from browser import AXE, Browser
from companions import CompanionTest
from independent_set import DATABASE, FILE, REGISTRY, Set, image_bytes, pack_stream, registry_bytes

# Properties: last and first name, telephone, notes, subject, start, minutes.
LAST, FIRST, TELEPHONE, NOTES, SUBJECT, START, MINUTES = 0x3A11001F, 0x3A06001F, 0x3A09001F, 0x40050041, 0x0037001F, 0x40020040, 0x40150003
MARCH_11 = (datetime.datetime(2025, 3, 11, 12) - datetime.datetime(1601, 1, 1)) // datetime.timedelta(microseconds=1) * 10
MANY = 30_000

HOSTILE = ["</script><script>canary=1</script>", "<img src=x onerror=canary=1>", "<!--<script>", "\"}];canary=1;//", "' onmouseover='canary=1",
           "${canary=1}", "&lt;b&gt;", "javascript:canary=1", "\u2028canary=1\u2029", "\x01\x1b[31m\x7f", "\u202egnp.exe\u2066", "\ud800 alone",
           "constructor", "__proto__", "x" * 32_000]


def contact(last, first, telephone, notes=b""):
    return [(LAST, last), (FIRST, first), (TELEPHONE, telephone), *([(NOTES, notes)] if notes else [])]


def history(card):
    """Writes three sets with files that are added, changed, moved and removed, with contacts, an appointment and a
    registry."""
    berta, carl = contact("Meyer", "Berta", "030 1234", b"Likes boats.\r\nTwo cats."), contact("Zorn", "Carl", "040 77")
    changed = contact("Meyer", "Berta", "030 9999", b"Likes boats.\r\nTwo cats.")
    meeting = [[(SUBJECT, "Paint the hull"), (START, MARCH_11), (MINUTES, 90)]]
    for number, (files, people, value) in enumerate((
            ({"\\a": b"1" * 40, "\\Docs\\b.txt": b"2" * 9000, "\\gone": b"3"}, [berta], 1),
            ({"\\a": b"1" * 41, "\\Docs\\b.txt": b"2" * 9000, "\\new": b"4"}, [berta, carl], 1),
            ({"\\a": b"1" * 41, "\\Docs\\moved.txt": b"2" * 9000, "\\new": b"4", "\\10": b"55"}, [changed, carl], 2))):
        made = Set(f"Backup date:{13 + number}/11/2025 (10:00)")
        for name, content in files.items():
            made.add(FILE, name, content)
        made.add(DATABASE, "Contacts Database", image_bytes("Contacts Database", 24, [], people))
        made.add(DATABASE, "Appointments Database", image_bytes("Appointments Database", 25, [], meeting))
        made.add(REGISTRY, "", registry_bytes({"HKEY_CURRENT_USER\\Card": [f'"a"=dword:{value:08}']})).write(card, number + 1)


class ReportTest(CompanionTest):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser()
        cls.addClassCleanup(cls.browser.quit)

    def setUp(self):
        super().setUp()
        self.card = self.folder / "QUILBOX"
        self.page = self.folder / "report.html"
        self.browser.show()

    def open_report(self, code=0, edit=lambda text: text):
        self.set_tool("report", self.card, "--force", "--output", self.page, code=code)
        self.page.write_text(edit(self.page.read_text(encoding="utf-8")), encoding="utf-8")
        self.browser.open(self.page)
        self.browser.wait("return document.querySelector('#treemap svg')")  # the last part of the page
        return self.browser

    def rows(self, table):
        """Returns the cells of the visible rows."""
        return self.browser.run("return [...document.querySelectorAll(`#${arguments[0]} tr[data-at]`)].map(row => [...row.cells].map(cell => cell.textContent))", table)

    def search(self, table, words, found):
        self.browser.run("const input = document.querySelector(`#${arguments[0]} input`); input.value = arguments[1]; input.dispatchEvent(new Event('input'))", table, words)
        self.assertEqual(self.browser.text(f"#{table} output"), found, words[:80])

    def choose(self, selector, value):
        self.browser.run("const it = document.querySelector(arguments[0]); it.value = arguments[1]; it.dispatchEvent(new Event('change'))", selector, value)

    def test_the_numbers_are_those_of_list_and_the_changes_those_of_diff(self):
        history(self.card)
        browser = self.open_report()
        for number in (2, 1, 0):
            self.choose("#chosen", number)
            listed = json.loads(self.set_tool("list", self.card / f"QLBX000{number + 1}.QLT", "--long", "--json").text)["items"]
            self.assertEqual(sorted([row[0], row[1].lower(), row[2], row[3]] for row in self.rows("items-table")),
                             sorted([item["name"], item["kind"], f"{item['bytes']:,}", f"{item['packedBytes']:,}"] for item in listed))
        self.assertIn("Backup date:13/11/2025 (10:00)", browser.text("#facts"))
        self.assertIn("Nothing damaged found.", browser.text("#verdict"))
        self.choose("#chosen", 2)
        self.assertEqual([row[:3] for row in self.rows("changes-table")],
                         [["Changed", "Database", "Contacts Database"], ["Changed", "Registry", "registry"], ["Moved", "File", "\\Docs\\b.txt → \\Docs\\moved.txt"],
                          ["Added", "File", "\\10"], ["Changed", "Record", "Contacts Database: Berta Meyer"], ["Changed", "Registry value", "HKEY_CURRENT_USER\\Card, a"]])
        self.choose("#base", 0)
        self.search("changes-table", "removed", "1 of 10 changes")
        self.assertEqual(self.rows("changes-table")[0][2], "\\gone")
        self.assertEqual(self.rows("appointments-table"), [["2025-03-11 12:00", "Paint the hull", "", "90 min", ""]])
        self.search("contacts-table", "two cats", "1 of 2 contacts")
        self.assertEqual(self.rows("contacts-table"), [["Berta Meyer", "", "030 9999", "", ""]])
        self.assertIn("Docs\\", browser.text("#largest"))
        self.assertEqual(browser.faults(), [])

    def test_the_table_can_be_sorted_searched_and_used_by_the_keyboard_alone(self):
        made = Set()
        for number in range(MANY):
            made.add(FILE, f"\\folder {number % 7}\\File {number}", b"x" * (number % 50))
        made.write(self.card)
        browser = self.open_report()
        self.assertLess(browser.run("return document.querySelectorAll('*').length"), 2000)
        for words, found in (("file 2999", "13 of 30,000 items"), ("FILE 29999", "1 of 30,000 items"), ("folder nowhere", "0 of 30,000 items"), ("", "30,000 items")):
            self.search("items-table", words, found)
        size = browser.find("#items-table th:nth-child(3) button")
        for order, first in (("ascending", "0"), ("descending", "49")):
            size.send_keys(Keys.ENTER)
            self.assertEqual(browser.run("return document.querySelector('#items-table th:nth-child(3)').ariaSort"), order)
            self.assertEqual(self.rows("items-table")[0][2], first)
        table = browser.find("#items-table table")
        table.send_keys(Keys.END)
        last = browser.wait("const row = document.querySelector('#items-table tr[aria-selected=true]'); return row?.ariaRowIndex === '30001' && row.cells[0].textContent")
        frame = "const [row, frame] = ['tr[aria-selected=true]', '.frame'].map(it => document.querySelector('#items-table ' + it).getBoundingClientRect()); return "
        browser.wait(frame + "row.top >= frame.top && row.bottom <= frame.bottom + 1")
        table.send_keys(Keys.ENTER)
        browser.wait("return document.querySelector('dialog').open")
        self.assertEqual(browser.text("#details-title"), last)
        browser.run("return document.activeElement").send_keys(Keys.ESCAPE)
        browser.wait("return !document.querySelector('dialog').open && document.activeElement === arguments[0]", table)
        self.assertEqual(browser.faults(), [])

    def test_a_table_that_is_taller_than_a_browser_can_show_has_all_its_rows(self):
        many = 300_000
        Set().add(FILE, "\\a", b"1").write(self.card)
        rows = ",".join(f'[1,"n{number}",0,0,1,1,1,0]' for number in range(many))
        browser = self.open_report(edit=lambda text: re.sub(r'(?s)"items":\[.*?\],\n"records"', lambda _: f'"items":[{rows}],"records"', text))
        table = browser.find("#items-table table")
        for key, row in ((Keys.END, many - 1), (Keys.ARROW_UP, many - 2), (Keys.HOME, 0), (Keys.PAGE_DOWN, None)):
            table.send_keys(key)
            shown = browser.wait("""const row = document.querySelector('#items-table tr[aria-selected=true]'), [at, frame] = [row, row?.closest('.frame')].map(it => it?.getBoundingClientRect());
                return row && at.top >= frame.top && at.bottom <= frame.bottom + 1 && row.cells[0].textContent""")
            self.assertIn(shown, [f"n{row}"] if row is not None else [f"n{number}" for number in range(5, 30)])
        self.assertEqual(browser.faults(), [])

    def test_areas_are_as_large_as_the_sizes_and_lead_into_folders_and_items(self):
        made = Set().add(FILE, "\\Photos\\sea.jpg", b"1" * 5000).add(FILE, "\\Photos\\2025\\boat.jpg", b"1" * 1000).add(FILE, "\\letter.txt", b"1" * 3000)
        made.add(FILE, "\\empty", b"").add(DATABASE, "Tasks", image_bytes("Tasks", records=[[(NOTES, b"1" * 964)]])).write(self.card)
        browser = self.open_report()
        areas = browser.run("return [...document.querySelectorAll('#treemap svg > g')].map(it => [it.querySelector('title').textContent, it.querySelector('rect').width.baseVal.value * it.querySelector('rect').height.baseVal.value])")
        total = sum(area for _, area in areas)
        self.assertEqual([(title, round(area / total, 2)) for title, area in areas],
                         [("Photos, 6.00 KB, 60 %", .6), ("letter.txt, 3.00 KB, 30 %", .3), ("Database items, 1.00 KB, 10 %", .1)])
        self.assertEqual(browser.text("#largest tbody"), "Photos\\6.00 KB60 %letter.txt3.00 KB30 %Database items\\1.00 KB10 %empty0 bytes0.0 %")
        browser.run("document.querySelector('#largest button').click()")
        self.assertEqual((browser.text("#trail"), browser.text("#largest tbody")), ("All itemsPhotos, 6.00 KB", "sea.jpg5.00 KB83 %2025\\1.00 KB17 %"))
        browser.run("document.querySelector('#largest button').click()")
        self.assertEqual(browser.text("#details-title"), "\\Photos\\sea.jpg")
        Set().add(FILE, "\\empty", b"").write(self.card)
        self.open_report()
        self.assertTrue(browser.run("return document.querySelector('#treemap').hidden && document.querySelectorAll('#largest button').length === 1"))

    def test_the_timeline_works_by_keyboard_and_a_print_has_at_most_1000_rows(self):
        history(self.card)
        browser = self.open_report()
        checked = "return document.querySelector('#timeline [aria-checked=true]')"
        browser.run("document.querySelector('#timeline [aria-checked=true]').focus()")
        for key, title in ((Keys.ARROW_LEFT, "2025-11-14"), (Keys.HOME, "2025-11-13"), (Keys.ARROW_LEFT, "2025-11-13"), (Keys.END, "2025-11-15")):
            browser.run("return document.activeElement").send_keys(key)
            self.assertEqual(browser.text("#set-title"), f"Set of {title} 10:00")
            self.assertEqual(browser.run(checked), browser.run("return document.activeElement"))
            self.assertIn(title, browser.run(checked).get_attribute("aria-label"))
        browser.run("dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(len(self.rows("items-table")), 7)
        made = Set()
        for number in range(1500):
            made.add(FILE, f"\\{number}", b"")
        made.write(self.card, 9)
        browser = self.open_report()
        browser.run("dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(len(self.rows("items-table")), 1000)
        self.assertIn("Only the first 1,000 rows of 1,500 are printed.", browser.text("#items-table tbody"))
        browser.run("dispatchEvent(new Event('afterprint'))")
        self.assertLess(len(self.rows("items-table")), 50)

    def test_hostile_texts_stay_texts(self):
        for number in (1, 2):  # two sets, so that each text appears as a change, too
            made = Set("Hi" + HOSTILE[0])
            for at, name in enumerate(HOSTILE):
                made.add(FILE, "\\" + name, b"x" * number).add(DATABASE, f"d{at}", image_bytes(f"d{at}", 24, [], [contact(name, f"n{number}", name, name.encode(errors="replace"))]))
            values = [f'"{re.sub(r"[^ -~]", "", name[:200])}"="v{number}"'.replace('"}', '\\"}') for name in HOSTILE]
            made.add(REGISTRY, "", registry_bytes({"HKEY_CURRENT_USER\\" + HOSTILE[1]: values[:2]})).write(self.folder / "<img src=x onerror=canary=1>/QUILBOX", number)
        self.card = self.folder / "<img src=x onerror=canary=1>"
        browser = self.open_report(code=1)  # such names are faults of the set
        source = self.page.read_text(encoding="utf-8")
        self.assertEqual((source.count("</script"), source.count("<img"), source.count("\u2028")), (2, 0, 0))
        for name in HOSTILE:
            shown = "".join(f"<u+{ord(c):04x}>" if c in "\x01\x1b\x7f\u2028\u2029\u202e\u2066" else "\ufffd" if c == "\ud800" else c for c in name).lower()
            for table in ("items-table", "contacts-table"):
                word = shown.split()[-1][:200]  # the page cuts longer texts
                self.search(table, word, self.count_with(table, word))
        self.search("items-table", "", "31 items")
        browser.run("for (const row of document.querySelectorAll('tr[data-at]')) { row.click(); document.querySelector('dialog').close(); }")
        for link in range(5):
            browser.run("document.querySelectorAll('#largest button')[arguments[0]]?.click(); document.querySelector('dialog').close()", link)
        self.assertEqual(browser.run("return [typeof canary, document.scripts.length, document.images.length, Object.prototype.toString.call(Object.prototype)]"),
                         ["undefined", 2, 0, "[object Object]"])
        self.assertEqual(browser.faults(), [])

    def test_items_of_a_set_without_data_are_shown_as_damaged_and_not_as_removed(self):
        for number in (1, 2):
            made = Set(f"Backup date:1{number}/11/2025 (10:00)").add(FILE, "\\good", b"1")
            made.add(DATABASE, "Contacts Database", image_bytes("Contacts Database", 24, [], [[(0x40150F1F, "Berta")]]))
            path = made.add(REGISTRY, "", registry_bytes({"HKEY_USERS\\a": ['@="b"']})).write(self.card, number)
        path.with_suffix(".QDT").unlink()
        browser = self.open_report(code=1)
        self.assertEqual({row[0] for row in self.rows("changes-table")}, {"Damaged"})
        self.assertIn("isn't known", browser.text("#verdict"))
        self.assertIn("damaged as a whole", browser.text("#facts"))

    def test_damage_is_shown_where_verify_finds_it(self):
        Set("Backup date:13/11/2025 (10:00)").add(FILE, "\\good", b"1").add(FILE, "\\cut", stream=pack_stream(b"half")[:-7]).write(self.card, 1)
        Set("Backup date:14/11/2025 (10:00)").add(FILE, "\\good", b"1").add(FILE, "\\cut", b"whole").write(self.card, 2)
        Set("Backup date:15/11/2025 (10:00)").write(self.card, 3).with_suffix(".QDT").unlink()
        browser = self.open_report(code=1)
        cut, missing = [self.verified(self.card / f"QLBX000{number}.QLT", 1)["faults"][0]["reason"] for number in (1, 3)]
        self.assertEqual(self.rows("damage-table"), [["2025-11-15 10:00", "(whole set)", missing], ["2025-11-13 10:00", "\\cut", cut]])
        self.assertIn("2 sets of 3 are damaged.", browser.text("#verdict"))
        self.choose("#chosen", 0)
        self.assertEqual([row[5] for row in self.rows("items-table")], ["good", "damaged"])
        browser = self.open_report(1, lambda text: text.replace('"itemsFrom":0', '"itemsFrom":2'))
        self.assertIn("The items of the oldest 2 sets are not all on this page", browser.text("#notes"))
        self.choose("#chosen", 1)
        self.assertIn("can't be compared", browser.text("#changes-summary"))
        self.assertEqual(browser.faults(), [])

    def test_a_page_is_never_replaced_without_force_nor_made_without_a_set(self):
        history(self.card)
        self.page.write_text("mine")
        for page, sentence in ((self.page, "exists already"), ("", "path of the file to write is empty")):
            self.assertIn(sentence, self.set_tool("report", self.card, "--output", page, code=1).said)
        self.assertEqual(self.page.read_text(), "mine")
        self.assertIn("file of a set", self.set_tool("report", self.card, "--force", "--output", next(self.card.rglob("*.QLT")), code=2).said)
        self.assertIn("no set", self.set_tool("report", self.output_folder(), "--output", self.folder / "none.html", code=2).said)
        self.assertFalse((self.folder / "none.html").exists())
        self.assertEqual(self.set_tool("report", self.card, "--force", "--output", self.page).text, f"{self.page}: 3 sets, nothing damaged found.\n")
        self.assertIn("</html>", self.set_tool("report", self.card, "--output", "-").text)
        self.assert_fails_where_output_takes_nothing("quillbox-set", [["report", self.card, "--output", "-"]], ".*can't be written.?")

    def test_the_page_has_no_accessibility_faults_in_light_and_dark_and_at_both_widths(self):
        if not AXE.exists():
            print("axe-core isn't installed, so the barriers of the page weren't looked for", file=sys.stderr)
            self.skipTest("axe-core isn't installed")
        history(self.card)
        Set("Backup date:20/11/2025 (10:00)").add(FILE, "\\cut", stream=b"").write(self.card, 9)
        browser = self.open_report(code=1)
        for dark in (False, True):
            for width in (1280, 360):
                browser.show(dark, width)
                self.assertTrue(browser.run("return document.documentElement.scrollWidth === document.documentElement.clientWidth"))
                self.assertEqual(browser.barriers(), [])
        browser.run("document.querySelector('#sets-details').open = true; document.querySelector('#changes-table tr[data-at]').click()")
        self.assertEqual(browser.barriers(), [])

    def count_with(self, table, word):
        """Returns how many of all rows contain the word, computed from the page's data."""
        data = json.loads(self.browser.text("#data"))
        texts = [row[1] for row in data["items"]] if table == "items-table" else \
            ["\n".join([data["databases"][row[0]][0], *row[1][1::2]]) for row in data["records"] if row[2] <= 1 <= row[3]]
        found = sum(word in text.lower() for text in texts)
        self.assertGreater(found, 0, word[:80])
        thing = table.replace("-table", "")
        return f"{found} {thing}" if found == len(texts) else f"{found} of {len(texts)} {thing}"
