"""Whose identity the program takes on: the console owner's, for good."""

import os

from support import DesktopTest, needs_root
from support.panel import ROW

USER = 1000


class Identity(DesktopTest):
    options = {"window_manager": None}

    def start_under_console_of(self, user):
        self.desktop.start_messenger(*self.desktop.console_of(user))
        self.desktop.wait_listening()
        return self.desktop.messenger_facts()

    @needs_root
    def test_root_becomes_the_console_owner_for_good(self):
        facts = self.start_under_console_of(USER)
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

    @needs_root
    def test_a_console_of_root_leaves_root_where_it_is(self):
        facts = self.start_under_console_of(0)
        self.assertEqual(facts.ids("Uid"), [0] * 4)
