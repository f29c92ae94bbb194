"""Whose identity the program takes on: that of the user at the console, for good."""

import os

from support import DesktopTest, needs_root
from support.panel import ROW

USER, ROOT = 1000, 0


@needs_root
class Identity(DesktopTest):
    options = {"window_manager": None}

    def start_under(self, console_owner, seat_user=None, **environment):
        # Some starters let capabilities outlive the change of the user.
        self.desktop.start_messenger(*self.desktop.console_of(console_owner, seat_user), "setpriv",
                                     "--groups=4,27", "--securebits=+no_setuid_fixup", **environment)
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
                self.desktop.post_on_system_bus("KQS_disk.2", os.getpid())
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
