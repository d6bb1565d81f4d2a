"""A backup every night: systemd accepts the units, and the script that they start backs up a profile and reports a
failure."""
import os
import signal
import subprocess
import time

from installation import InstallationTest, main

UNITS = ("quillbox-backup@.service", "quillbox-backup@.timer", "quillbox-backup-failed@.service")


class NightlyTest(InstallationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.units = cls.prefix / "lib/systemd/user"
        cls.programs = cls.prefix / "libexec/quillbox"
        cls.tools = cls.folder / "tools"
        cls.tools.mkdir()
        cls.user = {**os.environ, "HOME": str(cls.folder), "XDG_CONFIG_HOME": str(cls.folder / "config"),
                    "XDG_RUNTIME_DIR": str(cls.folder), "PATH": f"{cls.tools}:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"}

    def profile(self, name, to="./stick", files=3, size=2000):
        device = self.folder / name
        store = device / "object-store"
        store.mkdir(parents=True)
        for number in range(files):
            (store / f"f{number}").write_bytes(os.urandom(size))
        (self.folder / "config/quillbox").mkdir(parents=True, exist_ok=True)
        (self.folder / "stick").mkdir(exist_ok=True)
        (self.folder / f"config/quillbox/{name}.toml").write_text(f'device = "{device}"\n[backup]\nto = "{to}"\nverify = true\n')

    def tool(self, name, script):
        (self.tools / name).write_text("#!/bin/sh\n" + script)
        (self.tools / name).chmod(0o755)

    def test_systemd_accepts_the_units(self):
        said = self.run_tool("systemd-analyze", "--user", "--man=no", "verify", *(self.units / unit for unit in UNITS), env=self.user)
        self.assertEqual(said, "")

    def test_a_profile_is_backed_up_with_and_without_an_inhibitor(self):
        self.profile("nightly")
        log = self.folder / "inhibited"
        for script in (f'echo "$@" >{log}; while [ "$1" != cat ]; do shift; done; "$@"; echo released >>{log}\n', "echo no bus >&2; exit 1\n"):
            self.tool("systemd-inhibit", script)
            self.assertEqual(self.run_tool(self.programs / "backup-profile", "nightly", env=self.user, cwd=self.folder), "")
        for _ in range(50):
            if "released" in log.read_text():
                break
            time.sleep(0.1)
        self.assertRegex(log.read_text(), "^--what=sleep:idle .* cat\nreleased\n$")
        self.run_tool(self.prefix / "bin/quillbox-set", "verify", self.folder / "stick")
        self.assertEqual(len(list((self.folder / "stick/QUILBOX").glob("*.QLT"))), 2)

    def test_a_stop_reaches_the_backup_itself(self):
        self.profile("stopped", to="./other", files=300, size=100_000)
        (self.folder / "other").mkdir()
        self.tool("systemd-inhibit", "exec cat\n")
        for _ in range(5):  # repeated, because a backup may end before the signal
            before = len(list((self.folder / "other").rglob("*.QDT")))
            with subprocess.Popen([self.programs / "backup-profile", "stopped"], env=self.user, cwd=self.folder,
                                  stdout=subprocess.PIPE, stderr=subprocess.DEVNULL) as run:
                while run.poll() is None and len(list((self.folder / "other").rglob("*.QDT"))) == before:
                    time.sleep(0.001)
                run.send_signal(signal.SIGTERM)
                said = run.communicate(timeout=60)[0]
            if run.returncode != 0:
                break
        self.assertTrue(said.startswith(b"Stopped"), said)
        self.assertEqual(run.returncode, 6)

    def test_a_failure_is_a_notification_with_the_reason(self):
        self.profile("failing", to="/nowhere/")
        self.run_tool(self.programs / "backup-profile", "failing", code=1, env=self.user, cwd=self.folder)
        self.tool("journalctl", 'case "$*" in *quillbox-backup@failing.service*) echo "the reason";; esac\n')
        self.tool("notify-send", 'printf "%s|" "$@"\n')
        said = self.run_tool(self.programs / "notify-failure", "failing", env=self.user)
        self.assertIn('|The backup "failing" isn\'t complete|the reason\nsystemctl --user status quillbox-backup@failing', said)


if __name__ == "__main__":
    main()
