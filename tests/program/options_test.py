"""The settings: how the registry stores them, how the dialog shows them, and what it writes back."""
import struct

from device_contents import ContentsTest

KEY = "[HKEY_CURRENT_USER\\software\\KORV\\QUILLBOX]"
EXT_BYTES = 260


def extensions(*names):
    return "".join(name + "\0" for name in names).encode("utf-16-le")


def record(mode=1025, delete=0, verify=0, log=0, listed=b"", newer=0, switches=(0, 0, 0, 0), size=4, rom=1):
    return struct.pack("<2H3I520sQ4I2HI", mode, 0, delete, verify, log, listed, newer, *switches, size, 0, rom)


def values(option, ext):
    """Returns the values of the key as lines of a .reg file."""
    return [f'"Ext"=hex:{ext.ljust(EXT_BYTES, bytes(1)).hex(",")}', f'"Option"=hex:{option.hex(",")}']


class OptionsTest(ContentsTest):
    def settings(self):
        sections = self.registry().decode("utf-16").replace("\\\r\n  ", "").split("\r\n\r\n")
        section, = (section for section in sections if section.startswith(KEY))
        return section.splitlines()[1:]

    def test_first_start_leaves_the_defaults(self):
        self.quillbox("idle\n")
        self.assertEqual(self.settings(), values(record(), b""))

    def test_settings_that_no_control_shows_or_changes_are_kept(self):
        # The mode is the id of a check box. The size can't be typed. The registry values "Option" and "Ext" each
        # contain a list of extensions, and the list in "Ext" applies.
        given = {"mode": 1022, "verify": 1, "newer": 0x01DA0000_12345678, "switches": (1, 1, 1, 4), "size": 300}
        kept = extensions("txt", "c")
        from_elsewhere = values(record(listed=extensions("x") * 130, **given), kept)
        self.fill(registry="\r\n".join([KEY, *from_elsewhere, ""]))
        shown = 'command {}\nwait "Options"\n' + "".join(
            f'expect {box} "[{"x" if box == 1028 else " "}] *"\n' for box in (1022, 1023, 1024, 1025, 1026, 1028))
        self.quillbox(shown.format(40011) + 'expect 1027 "300"\nok\n' + shown.format(504) + "check 1026\ncheck 1022\ncancel\n")
        self.assertEqual(self.settings(), values(record(listed=kept, **given), kept))
        self.quillbox('command 504\nuncheck 1028\ncheck 1026\ncheck 1023\ncheck 1024\nok\n')
        given |= {"mode": 1024, "verify": 0, "log": 1}
        self.assertEqual(self.settings(), values(record(listed=kept, **given), kept))
