"""quillbox-mount: its files equal those that extract writes, also with eight readers at a time, and damage affects only
its own item."""
import concurrent.futures
import contextlib
import ctypes
import errno
import os
import random
import resource
import shutil
import signal
import struct
import subprocess
import time
import unittest
import unittest.mock

from companions import BIN, CompanionTest, names_in
from host_trouble import needs_strace
from independent_set import (DATABASE, FILE, MAGIC, RAW_BLOCK, REGISTRY, Set, image_bytes, pack, pack_stream, registry_bytes)

TOOL = BIN / "quillbox-mount"
DATED = "Backup date:{}/03/2024 (10:30)\r\nComments:\r\nTrip"
READERS = 8
PR_SET_PDEATHSIG = 1


def fuse_fault():
    try:
        os.close(os.open("/dev/fuse", os.O_RDWR))
    except OSError as error:
        return f"/dev/fuse can't be opened: {error}"
    return None


def end_with_this_process():
    ctypes.CDLL(None).prctl(PR_SET_PDEATHSIG, signal.SIGTERM)


def blocks(*raw):
    """Returns a stream of these blocks, which need not be full."""
    return MAGIC + b"".join(struct.pack("<I", len(packed)) + packed for packed in map(pack, [*raw, b""]))


def content_below(folder):
    return {str(path.relative_to(folder)): path.read_bytes() if path.is_file() else None for path in folder.rglob("*")}


class MountTest(CompanionTest):
    def setUp(self):
        super().setUp()
        self.shown = self.folder / "shown"
        self.shown.mkdir()
        self.sets = self.folder / "sets"

    @contextlib.contextmanager
    def mounted(self, where=None, *options):
        """Yields the process while the folder is mounted. However the test ends, the folder is unmounted."""
        process = subprocess.Popen([TOOL, "--foreground", where or self.sets, self.shown, *options], stderr=subprocess.PIPE,
                                   preexec_fn=end_with_this_process)
        try:
            while not os.path.ismount(self.shown):
                self.assertIsNone(process.poll(), "it ended before it mounted anything")
                time.sleep(0.01)
            yield process
        finally:
            process.terminate()
            said = process.communicate(timeout=120)[1].decode()
        self.assertEqual((process.returncode, said, os.path.ismount(self.shown)), (0, "", False))

    def extracted(self, path, *options, code=0):
        out = self.output_folder()
        self.set_tool("extract", path, out, *options, code=code)
        return content_below(out)


@unittest.skipIf(fuse_fault(), fuse_fault())
class ShownTest(MountTest):
    def rich_set(self):
        """Returns a set with names that need escapes, all sizes around a block, a database of each kind, and the
        registry."""
        made = Set(DATED.format(14))
        for name, size in (("empty", 0), ("one", 1), ("full", RAW_BLOCK), ("more", RAW_BLOCK + 1), ("large", 5 * RAW_BLOCK + 77)):
            made.add(FILE, f"\\sizes\\{name}.bin", random.Random(name).randbytes(size))
        for name in ("\\\uf75c\uf7ff\uf73f", "\\sizes\\\uf72aA", "\\sizes\\\uf72aa", "\\deep\\er\\\u4e16\U0001f600", "no backslash"):
            made.add(FILE, name, name.encode("utf-16-le"))
        for number in range(300):
            made.add(FILE, f"\\many\\file {number}", b"%d" % number * number)
        records = [[(0x3A11001F, f"Meyer {number}"), (0x3A06001F, "Berta")] for number in range(200)]
        for name, kind in (("Contacts", 24), ("Appointments", 25), ("Tasks", 26), ("a\\b:*?c", 7)):
            made.add(DATABASE, name, image_bytes(name, kind, [], records))
        return made.add(REGISTRY, "", registry_bytes({"HKEY_USERS\\a": ['@="x"'], "HKEY_USERS\\b": ['"n"=dword:00000001']}))

    def expected(self, path):
        """Returns the files that extract writes in the four formats, and the comment."""
        whole = self.extracted(path)
        for form, names in (("vcard", ["Contacts"]), ("ical", ["Appointments", "Tasks"]), ("csv", ["Contacts", "Appointments", "Tasks", "a\\b*"])):
            whole.update(self.extracted(path, "--form", form, *names))
        return {**whole, "comment.txt": DATED.format(14).encode()}

    def test_the_mount_equals_extract_for_eight_readers_at_a_time(self):
        path = self.rich_set().write(self.sets)
        expected = self.expected(path)
        self.assertEqual({name for name in expected if name.startswith("a_")}, {"a_b:__c.jsonl", "a_b:__c.csv"})

        def read_all(seed):
            names = list(expected)
            random.Random(seed).shuffle(names)
            return {name: None if expected[name] is None else (folder / name).read_bytes() for name in names}

        with self.mounted(), concurrent.futures.ThreadPoolExecutor(READERS) as readers:
            folder = self.shown / "2024-03-14 QLBX0001"
            for found in readers.map(read_all, range(READERS)):
                self.assertEqual(found, expected)
            self.assertEqual(content_below(folder), expected)
            for name, content in expected.items():
                state = os.stat(folder / name)
                self.assertEqual(time.strftime("%d %H:%M", time.localtime(state.st_mtime)), "14 10:30")
                self.assertEqual(state.st_size, len(content or b""), name)

    def test_ten_thousand_random_reads_give_the_bytes_of_the_files(self):
        content = {f"{size}": random.Random(size).randbytes(size) for size in (1, RAW_BLOCK, 3 * RAW_BLOCK - 1)}
        content["beyond the cache"] = b"".join(random.Random(1).randbytes(1 << 20) * 10 + b"%d" % part for part in range(10))
        made = Set()
        for name, raw in content.items():
            made.add(FILE, "\\" + name, raw)
        grown = [content["131072"][:size] for size in (RAW_BLOCK, 1, RAW_BLOCK, 70000, 9)]
        content["grew while it was read"] = b"".join(grown)
        made.add(FILE, "\\grew while it was read", stream=blocks(*grown)).write(self.sets)

        def read_some(seed):
            chance = random.Random(seed)
            for _ in range(10_000 // READERS):
                name = chance.choice(list(content))
                start, size = chance.randrange(len(content[name]) + 1), chance.choice((1, 4096, 300_000))
                with open(self.shown / "QLBX0001" / name, "rb", buffering=0) as file:
                    found = os.pread(file.fileno(), size, start)
                    os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_DONTNEED)
                self.assertEqual(found, content[name][start:start + size], (name, start, size))

        with self.mounted(), concurrent.futures.ThreadPoolExecutor(READERS) as readers:
            list(readers.map(read_some, range(READERS)))

    def test_a_file_of_more_blocks_than_one_answer_has_parts_is_read_whole(self):
        parts = [b"%d" % number for number in range(20_000)]  # more block lengths than one call reads
        Set().add(FILE, "\\many", stream=blocks(*parts)).write(self.sets)
        with self.mounted():
            self.assertEqual((self.shown / "QLBX0001/many").read_bytes(), b"".join(parts))

    def test_many_texts_can_be_read_where_few_files_may_be_open(self):
        made = Set()
        for number in range(400):
            made.add(DATABASE, f"d{number}", image_bytes("d", 7, [], [[(0x10003, number)]]))
        made.write(self.sets)
        with self.mounted() as process:
            resource.prlimit(process.pid, resource.RLIMIT_NOFILE, (350, 350))
            for number in range(400):
                self.assertIn(str(number), (self.shown / f"QLBX0001/d{number}.jsonl").read_text())

    def test_a_file_that_grew_shows_no_zeros_to_one_who_reads_beyond_its_end_first(self):
        parts = [b"a" * RAW_BLOCK, b"b" * 70_000, *[b"c" * RAW_BLOCK] * 68, b"d" * 5]
        Set().add(FILE, "\\grew", stream=blocks(*parts)).write(self.sets)
        content = b"".join(parts)
        with self.mounted(), open(self.shown / "QLBX0001/grew", "rb", buffering=0) as file:
            os.posix_fadvise(file.fileno(), 0, 0, os.POSIX_FADV_RANDOM)
            with self.assertRaises(OSError) as beyond:
                os.pread(file.fileno(), 4096, len(content) + 20_000)
            self.assertEqual(beyond.exception.errno, errno.EIO)
            self.assertEqual((self.shown / "QLBX0001/grew").read_bytes(), content)
            self.assertEqual((os.fstat(file.fileno()).st_size, os.pread(file.fileno(), 4096, len(content) + 20_000)), (len(content), b""))

    def test_a_set_that_is_replaced_stays_as_it_was_and_one_that_is_overwritten_is_damaged(self):
        def one(number):
            return (Set().add(FILE, "\\a", b"%d" % number).add(DATABASE, "d", image_bytes("d", 7, [], [[(0x10003, number)]]))
                    .add(REGISTRY, "", registry_bytes({f"HKEY_USERS\\{number}": ['@="x"']})))

        path, other = one(1).write(self.sets), one(2).write(self.folder / "other")
        before = {**self.extracted(path), **self.extracted(path, "--form", "csv", "d"), "comment.txt": b"Hi"}
        with self.mounted():
            self.assertEqual(names_in(self.shown / "QLBX0001"), sorted(before))
            for ending in (".QLT", ".QDT"):
                os.replace(shutil.copy(other.with_suffix(ending), self.folder / "copy"), path.with_suffix(ending))
            self.assertEqual(content_below(self.shown / "QLBX0001"), before)
        with self.mounted():
            names_in(self.shown / "QLBX0001")
            path.with_suffix(".QDT").write_bytes(one(3).data)
            damaged = [name for name in before if self.read_error(self.shown / "QLBX0001" / name) == errno.EIO]
            self.assertEqual(sorted({*damaged, "a"}), ["a", "d.csv", "d.jsonl", "registry.reg"])
            self.assertTrue("a" in damaged or (self.shown / "QLBX0001/a").read_bytes() == b"2", "it was unpacked before")

    def test_sets_are_named_by_date_and_number_and_told_apart(self):
        for place, comment, number in (("a", DATED.format(14), 1), ("a", DATED.format(15), 7), ("a/in", DATED.format(14), 1), ("a/in", "Hi", 2)):
            Set(comment).add(FILE, "\\a", b"").write(self.sets / place, number)
        with self.mounted(self.sets, "--recursive"):
            self.assertEqual(names_in(self.shown), ["2024-03-14 QLBX0001", "2024-03-14 QLBX0001 (2)", "2024-03-15 QLBX0007", "QLBX0002"])
        with self.mounted(self.sets / "a/QLBX0007"):
            self.assertEqual(names_in(self.shown), ["2024-03-15 QLBX0007"])
            self.assertEqual(names_in(self.shown / "2024-03-15 QLBX0007"), ["a", "comment.txt"])
        for name in (".", ".."):
            shutil.copy(self.sets / "a/in/QLBX0002.QLT", self.sets / f"a/in/{name}.QLT")
        with self.mounted(self.sets / "a/in"):
            self.assertEqual(names_in(self.shown), ["...QLT", "..QLT", "2024-03-14 QLBX0001", "QLBX0002"])

    def test_what_cannot_be_shown_is_named_and_nothing_leads_out(self):
        made = Set().add(FILE, "\\comment.txt", b"own").add(FILE, "\\x", b"first").add(FILE, "\\in\\y", b"").add(DATABASE, "d")
        refused = [("\\..\\out", "not a valid name"), ("\\a*", "not a valid name"), ("\\/etc/passwd", "not a valid name"), ("\\f\\", "not a valid name"),
                   ("\\x", "an earlier item"), ("\\x\\below", "is a file"), ("\\in", "a folder has that name"), ("\\d.jsonl", None), ("", "not a valid name")]
        for name, _ in refused:
            made.add(FILE, name, b"harm")
        path = made.add(9, "\\kind", b"").write(self.sets)
        with self.mounted():
            folder = self.shown / "QLBX0001"
            self.assertEqual(names_in(folder), ["comment (2).txt", "comment.txt", "d.csv", "d.jsonl", "in", "left-out.txt", "x"])
            self.assertEqual(((folder / "x").read_bytes(), (folder / "comment.txt").read_bytes()), (b"first", b"own"))
            said = (folder / "left-out.txt").read_text().splitlines()
            for line, (name, reason) in zip(said, [*refused, ("\\kind", "no such kind")], strict=True):
                self.assertIn(name, line)
                self.assertIn(reason or "an earlier item", line)
            path.write_bytes(path.read_bytes()[:30])
            self.assertEqual((folder / "x").read_bytes(), b"first", "the list is read once")
        with self.mounted():
            self.assertIn("the list file is cut off", (self.shown / "QLBX0001/left-out.txt").read_text())

    def test_damage_is_an_error_when_it_is_read_and_its_neighbours_are_whole(self):
        whole, large = pack_stream(b"hello"), pack_stream(bytes(range(256)) * 2048)  # large has four blocks
        block = (len(large) - len(whole)) // 4 + 1
        torn = large[:2 * block + 100] + b"\xff" * 9 + large[2 * block + 109:]
        streams = {"magic": b"QBXPL" + whole[5:], "nothing": b"", "cut in a length": whole[:7], "cut in a block": whole[:12],
                   "not closed": whole[:-7], "bytes behind": whole + b"x", "length 0": whole[:5] + bytes(4), "torn": torn,
                   "too long": whole[:5] + b"\xff" * 4 + whole[9:], "hostile block": whole[:9] + b"\x40" + whole[10:],
                   "closed before its end": blocks(b"a" * RAW_BLOCK, b"", b"b" * RAW_BLOCK)}
        made = Set().add(FILE, "\\before", b"1")
        for name, stream in streams.items():
            made.add(FILE, "\\" + name, stream=stream)
        made.add(FILE, "\\between", b"2").add(DATABASE, "d", image_bytes("d", 24, [], [[(0x10003, 1)]])[:-1])
        path = made.add(DATABASE, "good").add(REGISTRY, "", registry_bytes({})[:-2]).write(self.sets)
        self.extracted(path, code=1)
        with self.mounted():
            folder = self.shown / "QLBX0001"
            damaged = [name for name in names_in(folder) if self.read_error(folder / name) == errno.EIO]
            self.assertEqual(damaged, sorted([*streams, "d.csv", "d.jsonl", "d.vcf", "registry.reg"]))
            for name in damaged:
                self.assertGreater(os.stat(folder / name).st_size, 0, "an empty file would pass for a whole one")
            self.assertEqual([(folder / name).read_bytes() for name in ("before", "between")], [b"1", b"2"])
            self.assertEqual((folder / "good.jsonl").read_text().count("\n"), 1)
            with open(folder / "torn", "rb", buffering=0) as file:
                self.assertEqual(os.pread(file.fileno(), 4096, 0), (bytes(range(256)) * 16))
            path.with_suffix(".QDT").write_bytes(b"")
        path.with_suffix(".QDT").unlink()
        with self.mounted():
            self.assertEqual(self.read_error(self.shown / "QLBX0001/before"), errno.EIO)
            self.assertEqual((self.shown / "QLBX0001/comment.txt").read_text(), "Hi")

    @staticmethod
    def read_error(path):
        try:
            path.read_bytes()
        except OSError as error:
            return error.errno
        return 0


@unittest.skipIf(fuse_fault(), fuse_fault())
class LifeTest(MountTest):
    def setUp(self):
        super().setUp()
        Set().add(FILE, "\\a", b"1").write(self.sets)

    def test_each_signal_unmounts_also_while_the_folder_is_in_use(self):
        self.addCleanup(os.chdir, os.getcwd())
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with self.mounted() as process:
                os.chdir(self.shown / "QLBX0001")
                process.send_signal(number)
                process.wait(60)
                self.assertEqual(list(self.shown.iterdir()), [])

    @needs_strace
    def test_a_signal_ends_the_mount_while_files_are_read(self):
        made = Set()
        for number in range(200):
            made.add(FILE, f"\\files\\{number:03}", random.Random(number).randbytes(100_000))
        made.write(self.sets)
        for wait in (0.1, 0.3, 0.5):
            # The leak check doesn't work in a traced process.
            with unittest.mock.patch.dict(os.environ, ASAN_OPTIONS="detect_leaks=0"), self.mounted() as process:
                # strace delays answers and pushes, so that the signal comes in the middle of one.
                strace = subprocess.Popen(["strace", "-fqq", "-o", "/dev/null", "-e", "trace=writev", "-e", "inject=writev:delay_exit=3000",
                                           "-p", str(process.pid)], stderr=subprocess.DEVNULL)
                files = sorted((self.shown / "QLBX0001/files").iterdir())
                reader = subprocess.Popen(["cat", *files], stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
                time.sleep(wait)
                process.terminate()
                process.wait(60)
                reader.wait(60)
                strace.wait(60)

    def test_a_read_only_mount_is_made_in_the_background_and_can_be_unmounted(self):
        self.addCleanup(subprocess.run, ["fusermount3", "-uzq", self.shown], check=False)
        self.run_program("quillbox-mount", "sets", "shown", cwd=self.folder)
        self.assertEqual((self.shown / "QLBX0001/a").read_bytes(), b"1")
        for change in (lambda: (self.shown / "QLBX0001/a").write_bytes(b"2"), lambda: (self.shown / "new").mkdir(),
                       lambda: (self.shown / "QLBX0001/a").unlink()):
            with self.assertRaises(OSError) as refused:
                change()
            self.assertEqual(refused.exception.errno, errno.EROFS)
        subprocess.run(["fusermount3", "-u", self.shown], check=True)
        self.assertEqual(list(self.shown.iterdir()), [])

    @needs_strace
    def test_what_ends_or_prevents_a_mount_is_said_in_one_sentence(self):
        for calls, path, sentence in (
                (["-P", "/dev/fuse", "-e", "inject=read:error=EIO:when=2+"], "/bin", "the sets aren't mounted any more: .*: Input/output error"),
                (["-P", "/dev/fuse", "-e", "inject=openat:error=ENOENT"], "/bin", "/dev/fuse can't be opened, so this computer can't mount sets: No such.*"),
                (["-e", "inject=geteuid:retval=1000"], "/nowhere", "fusermount3 is missing, so only root .* package fuse3"),
                (["-e", "inject=mount:error=EINVAL"], "/bin", "the sets can't be mounted on .*/shown")):
            done = subprocess.run([shutil.which("strace"), "-fqq", "-o", self.folder / "trace", *calls, TOOL, self.sets, self.shown, "--foreground"], check=False,
                                  env={**os.environ, "PATH": path, "ASAN_OPTIONS": "detect_leaks=0"}, capture_output=True, text=True)
            self.assertEqual(done.returncode, 1, done.stderr)
            self.assertRegex(done.stderr, rf"^(fuse: .*\n)?quillbox-mount: {sentence}\n$")


class RefusalTest(MountTest):
    def test_bad_usage_missing_sets_and_folders_that_are_not_empty_exit_with_2(self):
        Set().write(self.sets)
        full = self.file("file").parent
        for words, sentence in (([], "WHERE is required"), ([self.sets], "DIR is required"), (["none", self.shown], "no list file for none"),
                                ([self.shown, self.shown], "no set in the folder"), ([self.sets, full], "the folder isn't empty"),
                                ([self.sets, full / "file"], "there is no folder"), ([self.sets, full / "none"], "there is no folder")):
            with self.subTest(words=words):
                self.assertIn(sentence, self.run_program("quillbox-mount", *words, code=2).said)
