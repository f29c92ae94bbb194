"""Faults of what the program leans on: message buses that are killed."""

import os
import signal

from support import DesktopTest, posting
from support.panel import ROW
from support.waiting import hold, wait_for_value


class Buses(DesktopTest):
    options = {"window_manager": None, "logind": True}

    def test_a_bus_that_is_killed_takes_no_row_and_is_heard_again(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        buses = (self.desktop.session_bus, self.desktop.system_bus)
        for number, (bus, other) in enumerate((buses, buses[::-1])):
            with self.subTest(killed=bus.kind):
                post = lambda on, name: posting.post_by_command(
                    "kqu-post", on, self.desktop.env, f"KQS_disk.{number}{name}", "scanner",
                    {"PID": os.getpid()}, self.desktop.build / "kqu-post")
                rows = 3 * number
                post(bus, "before")
                self.panel.wait_height((rows + 1) * ROW)
                bus.stop(signal.SIGKILL)
                # Also over a pass of the reaper.
                hold("the row", lambda: self.panel.geometry().height == (rows + 1) * ROW, 3.5)
                post(other, "meanwhile")
                self.panel.wait_height((rows + 2) * ROW)
                bus.start()
                self.desktop.wait_listening(bus)
                post(bus, "after")
                self.panel.wait_height((rows + 3) * ROW)
        # On each bus one that listens and one that keeps the machine awake; and the display.
        pid = self.desktop.messenger.pid
        wait_for_value("the connections", lambda: [len(bus.names_of(pid)) for bus in buses], [2, 2])
        descriptors = self.desktop.messenger_facts().descriptors().values()
        self.assertEqual(sum("socket" in target for target in descriptors), 2 + 2 + 1)
        self.assertEqual(self.desktop.messenger_output(), "")
