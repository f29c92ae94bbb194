"""What is on a real screen is, to the pixel, what is painted off-screen."""

import subprocess

from support import DesktopTest
from support.panel import ROW
from support.posting import OBJECTS
from screenshot import Screenshot

ROWS = (
    ("scanner", {"Progress": "456", "VolName": "Büro 日本語 العربية 😀", "ScanType": "0",
                 "Item": "/a <b>&amp; " + "long " * 30}),
    ("backup", {"Progress": "999", "dVolName": "/mnt//vault", "status": "x", "Type": "4",
                "Extra": "sleep", "FolderBackup": "1"}),
    ("defragmenter", {"status": "defrag", "FileProgress": "37.6", "FileName": "/var/lib/a",
                      "Extra": "shutdown"}),
    ("scanner", {"Progress": "1e300", "Item": "odd"}),
    ("backup", {"Progress": "-10"}),
)


class Pixels(DesktopTest):
    options = {"window_manager": None}

    def off_screen(self):
        lines = "".join("\t".join([f"KQS_disk.{number}", OBJECTS[tool],
                                   *(f"{key}={value}" for key, value in info.items())]) + "\n"
                        for number, (tool, info) in enumerate(ROWS))
        pixmap = subprocess.run([self.desktop.build / "tests" / "kqu_paint"],
                                input=lines.encode(), capture_output=True, check=True,
                                timeout=60).stdout
        magic, size, depth, pixels = pixmap.split(b"\n", 3)
        self.assertEqual((magic, depth), (b"P6", b"255"))
        return Screenshot(*map(int, size.split()), pixels)

    def test_all_kinds_of_rows_are_what_is_painted(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        for number, (tool, info) in enumerate(ROWS):
            self.desktop.post(f"KQS_disk.{number}", tool, **info)
        expected = self.off_screen()
        self.assertEqual(expected.height, len(ROWS) * ROW)
        self.panel.wait_height(expected.height)
        self.panel.wait_pixels("the same pixels", lambda seen: seen == expected)


class PixelsOfSixteenBits(Pixels):
    options = {"window_manager": None, "screen": (800, 600, 16)}

    def off_screen(self):
        """The nearest colours that such a screen has, of 5, 6 and 5 bits."""
        full = super().off_screen()
        rgb = bytearray(full.rgb)
        for channel, bits in enumerate((5, 6, 5)):
            levels = bytes(((value * ((1 << bits) - 1) + 127) // 255) << (8 - bits)
                           for value in range(256))
            rgb[channel::3] = rgb[channel::3].translate(levels)
        return Screenshot(full.width, full.height, bytes(rgb))
