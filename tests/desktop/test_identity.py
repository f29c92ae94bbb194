"""Whose identity the program takes on: that of the user at the console, for good."""

import os

from support import DesktopTest, needs_root
from support.panel import ROW
from support.waiting import wait_until

USER, ROOT = 1000, 0


@needs_root
class Identity(DesktopTest):
    options = {"window_manager": None}

    def start_under(self, console_owner, seat_user=None, **environment):
        self.desktop.start_messenger(*self.desktop.console_of(console_owner, seat_user),
                                     **environment)
        self.desktop.wait_listening()
        return self.desktop.messenger_facts()

    def test_becomes_the_user_at_the_console_for_good(self):
        for console_owner, seat_user in ((USER, None), (USER, USER + 1), (ROOT, USER)):
            with self.subTest(console_owner=console_owner, seat_user=seat_user):
                facts = self.start_under(console_owner, seat_user)
                self.assertEqual(facts.ids("Uid"), [USER] * 4)
                self.assertEqual(len(set(facts.ids("Gid"))), 1)
                self.assertNotIn(0, facts.ids("Gid") + facts.ids("Groups"))
                for kind in ("CapPrm", "CapEff", "CapInh", "CapAmb"):
                    self.assertEqual(int(facts.field(kind), 16), 0, kind)
                # It listens and shows as that user.
                self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid(), Progress=250)
                self.panel.wait_visible()
                self.desktop.post_by("kqu-post", "KQS_disk.2", "scanner", {"PID": os.getpid()},
                                     self.desktop.system_bus)
                self.panel.wait_height(2 * ROW)
                self.desktop.messenger.terminate()
                self.desktop.wait_exit()

    def test_stays_what_it_is_where_nobody_sits_and_trusts_no_path_then(self):
        ran = self.desktop.folder / "ran"
        command = self.desktop.folder / "commands" / "pmset"
        command.parent.mkdir()
        command.write_text(f"#!/bin/sh\ntouch {ran}\n")
        command.chmod(0o755)
        facts = self.start_under(ROOT, PATH=f"{command.parent}:{os.environ['PATH']}")
        self.assertEqual(facts.ids("Uid"), [ROOT] * 4)
        self.assertFalse(ran.exists())

    def test_a_link_in_the_place_of_its_file_is_not_followed(self):
        """A user could plant one for the program that runs as root."""
        there, missing = self.desktop.folder / "there", self.desktop.folder / "missing"
        there.write_text("precious")
        place = self.desktop.folder / "config" / "com.brackwater.KQU_Messenger.plist"
        for target in (there, missing):
            with self.subTest(target.name):
                place.unlink(missing_ok=True)
                place.symlink_to(target)
                self.start_under(ROOT)
                self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid())
                self.panel.wait_visible()
                at = self.panel.geometry()
                self.desktop.pointer.drag((at.x + 50, at.y + 20), (at.x + 21, at.y + 133))
                self.desktop.pointer.release()
                wait_until("the place to be kept, or the end", lambda: (
                    not place.is_symlink() or self.desktop.messenger.poll() is not None))
                self.desktop.messenger.terminate()
                self.assertEqual(self.desktop.wait_exit(), 0)
        self.assertEqual(there.read_text(), "precious")
        self.assertFalse(missing.exists())
