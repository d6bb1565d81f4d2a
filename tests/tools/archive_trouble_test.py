"""The commands on many sets while calls of the host fail or the user disturbs them."""
import os
import subprocess
import unittest

from companions import BIN, CompanionTest, SANITIZED, files_below
from host_trouble import needs_strace, traced
from independent_set import DATABASE, FILE, REGISTRY, Set, image_bytes, registry_bytes

MANY = 300 if SANITIZED else 5000


def made(number=0):
    """Returns a set with an item of each kind. The file has several blocks."""
    record = [(0x37001F, f"Sand the rudder {number}")]
    return (Set(f"Backup date:{13 + number}/11/2025 (10:00)").add(FILE, "\\a", b"line %d\n" % number * 9000)
            .add(DATABASE, "Tasks", image_bytes("Tasks", 26, [], [record] * 3))
            .add(REGISTRY, "", registry_bytes({"HKEY_CURRENT_USER\\Card": ['"a"=dword:00000001']})))


class TroubleTest(CompanionTest):
    def setUp(self):
        super().setUp()
        self.card = self.folder / "QUILBOX"
        self.paths = [made(number).write(self.card, number + 1) for number in range(3)]
        self.device_tool("init", self.device)

    def commands(self):
        """Returns the words of each command that runs long enough to be disturbed."""
        first, second, _ = self.paths
        tool = BIN / "quillbox-set"
        return {"verify": [tool, "verify", self.card], "seal": [tool, "seal", self.card],
                "find": [tool, "find", "*", self.card, "--text", "line"], "diff": [tool, "diff", first, second],
                "history": [tool, "history", "Tasks", self.card, "--record", "rudder"],
                "prune": [tool, "prune", self.card, "--keep-last", "1"], "cat": [tool, "cat", first, "\\a"],
                "extract": [tool, "extract", first, self.folder / "out"],
                "report": [tool, "report", self.card, "--force", "--output", self.folder / "out.html"],
                "covered": [BIN / "quillbox-device", "covered", self.device, self.card]}

    @needs_strace
    def test_ctrl_c_ends_each_command_with_nothing_half_written(self):
        for name, command in self.commands().items():
            before, stops = files_below(self.card), 0
            for nth in (3, 8, 14):
                with self.subTest(command=name, nth=nth):
                    done = traced(command, "pread64,unlink", f"pread64:signal=INT:when={nth}")
                    stops += done.returncode == -2
                    self.assertIn(done.returncode, (-2, 0, 1), done.stderr)
                    self.assertEqual([path for path in self.folder.rglob("*.part")], [])
                    after = files_below(self.card)
                    self.assertTrue(before.items() <= after.items() or name == "prune")
                    self.assertEqual({path for path in after if path.endswith("QLT") and path[:-3] + "QDT" not in after}, set())
                    if name == "seal":
                        self.assertNotIn("Unsound", self.set_tool("verify", self.card).text)
            self.assertGreater(stops, 0, name)

    @needs_strace
    def test_ctrl_c_in_a_large_item_leaves_no_part_of_it(self):
        record = [(0x37001F, "x" * 1000)]
        large = Set().add(FILE, "\\a", os.urandom(4_000_000)).add(DATABASE, "Tasks", image_bytes("Tasks", 26, [], [record] * 3000))
        path = large.write(self.folder / "large", 1)
        for name in ("\\a", "Tasks"):
            command = [BIN / "quillbox-set", "extract", path, self.folder / "out", name]
            done = traced(command, "pwrite64", "pwrite64:signal=INT:when=2")
            self.assertEqual(done.returncode, -2)
            self.assertEqual(files_below(self.folder / "out"), {})

    @needs_strace
    def test_sets_that_vanish_in_the_middle_are_named_and_never_pass_as_sound(self):
        commands = self.commands()
        for name in ("verify", "find", "history", "diff", "covered", "prune", "report"):
            for nth in (2, 3, 5):
                with self.subTest(command=name, nth=nth):
                    done = traced(commands[name], "openat2", f"openat2:error=ENOENT:when={nth}+")
                    self.assertIn(done.returncode, (1, 2))
                    self.assertRegex(done.stdout + done.stderr, b"can't be|Unsound|missing|[1-9] damaged")
        self.assertEqual(len(files_below(self.card)), 6)  # prune removed nothing

    def test_find_goes_on_after_a_set_that_was_removed_meanwhile(self):
        big = Set()
        for number in range(3000):
            big.add(FILE, f"\\a long name that soon fills the pipe {number:08}", b"")
        big.write(self.card, 1)
        with subprocess.Popen([BIN / "quillbox-set", "find", "*", self.card], stdout=subprocess.PIPE, stderr=subprocess.PIPE) as process:
            process.stdout.read(1)  # the program now waits until the test reads the rest
            self.paths[1].unlink()
            out, said = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 1)
        self.assertIn(b"QLBX0002.QLT: the list file is missing", said)
        self.assertEqual(out.count(b"QLBX0003.QLT"), 3)

    @unittest.skipUnless(os.geteuid() == 0, "needs the administrator, who can become another user")
    def test_without_permission_the_set_is_named_and_the_others_are_served(self):
        self.folder.chmod(0o755)
        program = self.folder / "quillbox-set"  # a copy that every user may start
        program.write_bytes((BIN / "quillbox-set").read_bytes())
        program.chmod(0o755)
        self.paths[1].chmod(0)
        self.paths[2].with_suffix(".QDT").chmod(0)
        for command, said in ((["verify"], b"Unsound"), (["find", "a"], b"QLBX0003.QLT"), (["history", "/a"], b"QLBX0001.QLT"),
                              (["seal"], b"can't be sealed"), (["prune", "--keep-last", "1"], b"")):
            with self.subTest(command):
                done = subprocess.run([program, *command, self.card], capture_output=True, user=65534, group=65534, extra_groups=[])
                self.assertEqual(done.returncode, 1, done.stderr)
                self.assertIn(said, done.stdout + done.stderr)
                self.assertIn(b"QLBX0002.QLT", done.stdout + done.stderr)
        self.assertEqual(len(files_below(self.card)), 6)

    def test_a_full_target_leaves_nothing_half_written(self):
        small = self.folder / "small"
        small.mkdir()
        if subprocess.run(["mount", "-t", "tmpfs", "-o", "size=300k", "none", small], capture_output=True).returncode != 0:
            self.skipTest("mounting a file system needs the administrator")
        self.addCleanup(subprocess.run, ["umount", "-l", small])
        path = made().write(small / "QUILBOX")
        (small / "filler").write_bytes(b"")
        with open(small / "filler", "wb", buffering=0) as filler:
            try:
                while filler.write(b"x" * 4096):
                    pass
            except OSError:
                pass
        self.assertIn("can't be sealed", self.set_tool("seal", path, code=1).said)
        self.set_tool("extract", path, small, "/a", code=1)
        self.assertIn("can't be written", self.set_tool("report", path, "--output", small / "page.html", code=1).said)
        self.assertEqual(sorted(os.listdir(small)), ["QUILBOX", "filler"])
        self.assertEqual(sorted(os.listdir(small / "QUILBOX")), ["QLBX0001.QDT", "QLBX0001.QLT"])
        self.set_tool("verify", path)

    def test_each_command_refuses_a_folder_without_sets(self):
        empty = self.output_folder()
        for command in (["verify"], ["seal"], ["find", "*"], ["history", "a"]):
            self.assertIn("no set in the folder", self.set_tool(*command, empty, code=2).said)
        self.assertIn("no set in the folder", self.device_tool("covered", self.device, empty, code=2).said)
        for command in (["cat", empty, "a"], ["diff", empty, self.paths[0]], ["prune", empty / "none", "--keep-last", 1]):
            self.set_tool(*command, code=2)

    def test_find_searches_thousands_of_sets_in_one_folder_within_a_minute(self):
        drawer = self.folder / "drawer/in depth"
        drawer.mkdir(parents=True)
        for number in range(1, MANY + 1):
            for ending in ("QLT", "QDT"):
                os.link(self.paths[0].with_suffix("." + ending), drawer / f"QLBX{number:04d}.{ending}")
        found = self.set_tool("find", "a", drawer.parent, "--recursive", timeout=60)
        self.assertEqual(found.text.count("\n"), MANY)


@unittest.skipIf(SANITIZED, "a sanitizer takes more memory than any limit allows")
class RegistryBoundTest(CompanionTest):
    def test_a_registry_of_any_size_takes_bounded_memory(self):
        # A short file whose values need 450 MB of memory, because each value is kept with the long path of its key.
        key = "HKEY_CURRENT_USER" + ("\\" + "k" * 250) * 15
        values = [f'"{number}"=dword:00000001' for number in range(60_000)]
        huge = Set().add(FILE, "\\a", b"served").add(REGISTRY, "", registry_bytes({key: values})).write(self.folder, 1)
        small = Set().add(FILE, "\\a", b"served").add(REGISTRY, "", registry_bytes({"HKEY_CURRENT_USER\\a": []})).write(self.folder, 2)
        limit = ["prlimit", f"--as={400 << 20}"]
        for command in (["diff", small, huge], ["history", "registry", self.folder, "--value", "HKEY_CURRENT_USER\\a", "b"]):
            done = subprocess.run([*limit, BIN / "quillbox-set", *map(str, command)], capture_output=True, timeout=300)
            self.assertIn(b"too many keys and values", done.stdout + done.stderr)
            self.assertEqual(done.returncode, 2 if command[0] == "diff" else 1)
        self.set_tool("verify", huge)
