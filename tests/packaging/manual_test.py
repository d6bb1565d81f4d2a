"""Manual pages and completions: they are complete, well formed and correct."""
import os
import re

from installation import ROOT, InstallationTest, main

PROGRAMS = ("quillbox", "quillbox-set", "quillbox-device", "quillbox-mount")


class ManualTest(InstallationTest):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        cls.manual = cls.prefix / "share/man"
        cls.bash = cls.prefix / "share/bash-completion/completions"
        cls.home = cls.folder / "home"
        (cls.home / "Letters").mkdir(parents=True)
        (cls.home / "Letters/berta.txt").write_text("Dear Berta\n")
        cls.stick = cls.folder / "stick"
        cls.stick.mkdir()
        cls.user = {"HOME": str(cls.home), "PATH": f"{cls.prefix}/bin:{os.environ['PATH']}", "LC_ALL": "C.UTF-8"}

    def commands(self, program, *words):
        """Yields each command of a program with its options, as --help shows them."""
        said = self.run_tool(self.prefix / "bin" / program, *words, "--help")
        yield words, set(re.findall(r"^  (?:-h,)?(--[a-z-]+)", said, re.M))
        _, _, below = said.partition("Subcommands:")
        for word in re.findall(r"^  ([a-z]+) ", below, re.M):
            yield from self.commands(program, *words, word)

    def completed(self, program, *words):
        said = self.run_tool("bash", self.bash / program, *words, env=self.user, cwd=self.folder)
        return {line.split("\t")[0] for line in said.splitlines()}

    def examples(self):
        """Returns the commands of docs/examples.md, with the test's own path for the stick."""
        mounts = os.access("/dev/fuse", os.R_OK | os.W_OK)
        lines = [line[4:] for line in (ROOT / "docs/examples.md").read_text().splitlines()
                 if line.startswith("    ") and (mounts or "~/sets" not in line)]
        self.assertGreater(len(lines), 20)
        return "\n".join(lines).replace("/media/stick", str(self.stick))

    def test_pages_pass_mandoc_and_name_every_option_and_the_shell_completes_it(self):
        pages = sorted(self.manual.rglob("*.[15]"))
        self.assertEqual([page.name for page in pages],
                         ["quillbox-device.1", "quillbox-mount.1", "quillbox-set.1", "quillbox.1", "quillbox-script.5", "quillbox-set.5"])
        self.assertEqual(self.run_tool("mandoc", "-T", "lint", *pages), "")
        for program in PROGRAMS:
            text = (self.manual / f"man1/{program}.1").read_text()
            for words, options in self.commands(program):
                with self.subTest(program=program, words=words):
                    part = text.split(f'.SS "{" ".join(words)}"\n')[-1].split("\n.S")[0] if words and options != {"--help"} else text
                    shown = set(re.findall(r"\\fB(--[a-z-]+)\\fP", part.replace("\\-", "-")))
                    self.assertLessEqual(options - {"--help"}, shown)
                    self.assertIn("--help", text.replace("\\-", "-"))
                    self.assertLessEqual(options, self.completed(program, *words, "--"))

    def test_examples_run_one_after_the_other(self):
        self.run_tool("bash", "-euo", "pipefail", "-c", self.examples(), env=self.user, cwd=self.folder)

    def test_words_are_completed_to_commands_files_sets_cards_items_and_profiles(self):
        self.run_tool("bash", "-euc", "quillbox-device init --demonstration device; mkdir -p card ~/.config/quillbox; "
                      "touch ~/.config/quillbox/nightly.toml; quillbox --device device backup --to ./card --quiet; "
                      "mkdir -p 'device/cards/Storage Card/QUILBOX'; touch 'device/cards/Storage Card/QUILBOX/QLBX0002.QLT'", env=self.user, cwd=self.folder)
        for program, words, found in (
                ("quillbox", ["b"], {"backup"}), ("quillbox-device", ["database", ""], {"list", "export", "import"}),
                ("quillbox", ["restore", "card/Q"], {"card/QUILBOX/"}), ("quillbox", ["restore", "card/QUILBOX/"], {"card/QUILBOX/QLBX0001.QLT"}),
                ("quillbox", ["restore", "--existing", ""], {"skip", "replace"}), ("quillbox", ["--profile", ""], {"nightly"}),
                ("quillbox", ["--device", "device", "backup", "--to", "S"], {"Storage Card"}),
                ("quillbox", ["backup", "--to", "./card", "--replace", ""], {"1"}),
                ("quillbox", ["--device", "device", "backup", "--to", "Storage Card", "--replace", ""], {"2"}),
                ("quillbox", ["--device", "device", "backup", "--item", "/My"], {"/My Documents/"}),
                ("quillbox", ["restore", "card/QUILBOX/QLBX0001", "--item", "\\Windows\\Fo"], {"\\Windows\\Fonts\\Plain.fnt"}),
                ("quillbox-set", ["cat", "card/QUILBOX/QLBX0001", "Tas"], {"Tasks Database"}),
                ("quillbox-device", ["database", "export", "device", "--name", "C"], {"Contacts Database"}),
                ("quillbox", ["--card", "Stick=ca"], {"Stick=card/"})):
            with self.subTest(words):
                self.assertEqual(self.completed(program, *words), found)

    def test_the_three_shells_read_their_completions(self):
        share = self.prefix / "share"
        bash = f"source {self.bash}/quillbox; COMP_WORDS=(quillbox res); COMP_CWORD=1; _quillbox; printf '%s\\n' \"${{COMPREPLY[@]}}\""
        zsh = ("_describe() { print -l \"${(@P)2}\" }; words=(quillbox res); CURRENT=2; "
               f"source {share}/zsh/vendor-completions/_quillbox")
        fish = f"source {share}/fish/vendor_completions.d/quillbox.fish; complete --do-complete 'quillbox res'"
        for shell, script in (("bash", bash), ("zsh", zsh), ("fish", fish)):
            said = self.run_tool(shell, *(["-f"] if shell == "zsh" else []), "-c", script, env=self.user, cwd=self.folder)
            self.assertRegex(said, r"^restore(\W.*)?\n$", shell)


if __name__ == "__main__":
    main()
