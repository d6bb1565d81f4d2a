"""An installed Quillbox is complete: the desktop's validators accept its files, and the programs that use Quillbox find
it."""
import os
import re
import shutil
import subprocess

from installation import BUILD, ROOT, InstallationTest, main

METAINFO = "org.quillbox.Quillbox.metainfo.xml"


class InstallTest(InstallationTest):
    def test_validators_accept_the_files_for_the_desktop(self):
        share = self.prefix / "share"
        icons = [share / "icons/hicolor" / name for name in (
            "scalable/apps/quillbox.svg", "symbolic/apps/quillbox-symbolic.svg",
            "scalable/mimetypes/application-x-quillbox-set.svg", "scalable/mimetypes/application-x-quillbox-data.svg")]
        self.run_tool("xmllint", "--noout", share / "mime/packages/quillbox.xml", share / "metainfo" / METAINFO, *icons)
        self.run_tool("desktop-file-validate", share / "applications/quillbox.desktop")
        self.run_tool("appstreamcli", "validate", "--no-net", share / "metainfo" / METAINFO)
        self.run_tool("cmake", "-DPROJECT_VERSION=1.0.0", "-DQUILLBOX_HOMEPAGE=https://quillbox.invalid", "-P",
                      ROOT / "packaging/metainfo.cmake", cwd=self.folder)
        linked = self.folder / METAINFO
        self.assertIn("<image>https://quillbox.invalid/docs/window.png</image>", linked.read_text())
        self.run_tool("appstreamcli", "validate", "--no-net", linked)

    def test_kinds_of_files_are_known_by_their_names_and_data_by_its_first_bytes(self):
        mime = self.folder / "mime"
        shutil.copytree(self.prefix / "share/mime", mime)
        self.run_tool("update-mime-database", mime)
        globs = (mime / "globs2").read_text()
        for kind, pattern in (("set", "*.QLT"), ("data", "*.QDT")):
            self.assertIn(f":application/x-quillbox-{kind}:{pattern}:cs", globs)
        self.assertIn(b"[60:application/x-quillbox-data]\n>0=\0\5QBXPK", (mime / "magic").read_bytes())

    def test_programs_are_stripped_and_the_part_with_the_window_can_be_loaded(self):
        for program in ("quillbox", "quillbox-set", "quillbox-device", "quillbox-mount"):
            self.assertIn("1.0.0", self.run_tool(self.prefix / "bin" / program, "--version"))
            self.assertNotIn(".symtab", self.run_tool("readelf", "--section-headers", "--wide", self.prefix / "bin" / program))
        start = {**os.environ, "QT_QPA_PLATFORM": "offscreen", "HOME": str(self.folder)}
        window = subprocess.Popen([self.prefix / "bin/quillbox"], env=start, stderr=subprocess.PIPE, text=True)
        with self.assertRaises(subprocess.TimeoutExpired, msg="the window goes on until it is closed"):
            window.communicate(timeout=2)
        window.kill()
        self.assertNotIn("can't be loaded", window.communicate()[1])

    def test_versions_agree(self):
        version = re.search(r"project\(Quillbox VERSION (\S+)", (ROOT / "CMakeLists.txt").read_text())[1]
        self.assertTrue((ROOT / "debian/changelog").read_text().startswith(f"quillbox ({version}) "))
        self.assertIn(f'<release version="{version}"', (BUILD / "packaging" / METAINFO).read_text())


if __name__ == "__main__":
    main()
