"""Faults of the two files that the program knows: no room or no right for its own, and a suite's
preference file beyond all measure."""

import os

from support import DesktopTest, mounts
from support.panel import ROW
from support.waiting import content, wait_for_value, wait_until

PREFERENCES = "/Library/Application Support/Brackwater Utilities Support/BrackwaterPrefs.plist"
FILE = "com.brackwater.KQU_Messenger.plist"


class PlaceFile(DesktopTest):
    options = {"window_manager": None}

    def start(self, script):
        self.config = self.desktop.folder / "config"
        self.desktop.start_messenger(*mounts.with_mounts(script, self.config))
        self.desktop.wait_listening()
        self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid())
        self.panel.wait_visible()
        # What the program sees of the folder.
        self.seen = f"/proc/{self.desktop.messenger.pid}/root{self.config}"

    def drag(self):
        at = self.panel.geometry()
        self.desktop.pointer.drag((at.x + 50, at.y + 20), (at.x + 71, at.y + 43))
        self.desktop.pointer.release()

    def test_a_folder_that_takes_no_file_ends_the_program(self):
        self.start('mount --bind "$1" "$1"; mount -o remount,ro,bind "$1"')
        self.drag()
        self.assertEqual(self.desktop.wait_exit(), 0)

    def test_a_full_disk_loses_the_place_and_nothing_else(self):
        self.start('mount -t tmpfs -o size=4k,mode=777 none "$1"; head -c 4096 /dev/zero >"$1/full"')
        self.drag()
        path = os.path.join(self.seen, FILE)
        wait_for_value("the file's content", lambda: content(path), "")
        self.desktop.post("KQS_disk.2", "scanner", PID=os.getpid())
        self.panel.wait_height(2 * ROW)
        os.unlink(os.path.join(self.seen, "full"))
        self.drag()
        wait_until("the whole file", lambda: "</plist>" in (content(path) or ""))


class OddPreferences(DesktopTest):
    options = {"window_manager": None, "logind": True}

    def test_a_device_without_an_end_counts_for_nothing(self):
        room = self.desktop.folder / "room"
        room.mkdir()
        self.desktop.launch_messenger(*mounts.with_new_file("/dev/urandom", PREFERENCES, room))
        self.desktop.wait_listening()
        self.assertLess(int(self.desktop.messenger_facts().field("VmHWM")) * 1024, 100 << 20)
        self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid())
        self.panel.wait_visible()
        wait_for_value("the locks", lambda: sorted(
            lock[3] for lock in self.desktop.logind.inhibitors()), ["block", "block"])
