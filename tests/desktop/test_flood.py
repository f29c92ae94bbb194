"""A flood of updates: nothing is lost, nothing grows, and the panel answers the user's hand meanwhile."""

import os
import pathlib
import signal
import time

from support import DesktopTest
from support.panel import ROW
from support.waiting import wait_until

SENDERS = 20


class Flood(DesktopTest):
    options = {"window_manager": "openbox", "screen": (1024, 1700)}

    def start_flood(self, updates):
        """Lets every sender post that many updates of its own row."""
        script = pathlib.Path(__file__).with_name("flood.py")
        return [self.desktop.processes.start(
            ["/usr/bin/python3", str(script), self.desktop.session_bus.address,
             f"KQS_disk.{sender}", str(updates), str(os.getpid())], self.desktop.env)
            for sender in range(SENDERS)]

    def finish(self, flood):
        for process in flood:
            self.assertEqual(process.wait(300), 0)

    def drag_a_little(self):
        """As a person does it: the button is held until the panel has followed the pointer."""
        before = self.panel.geometry()
        place = [before.x + 100, before.y + 30]
        self.desktop.pointer.move(*place)
        self.desktop.pointer.press()

        def follows():
            place[0] += 1
            self.desktop.pointer.move(*place)
            return self.panel.geometry() != before

        wait_until("the panel to follow the pointer", follows)
        self.desktop.pointer.release()

    def row_pixels(self, seen, index):
        """A row's picture without its first lines, which show the line above it."""
        return [seen.pixel(x, ROW * index + y) for y in range(2, ROW - 16) for x in range(0, 320, 3)]

    def test_every_row_holds_its_last_value_and_the_memory_is_as_it_was(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        self.finish(self.start_flood(1))
        self.panel.wait_height(SENDERS * ROW)
        time.sleep(1)
        facts = self.desktop.messenger_facts()
        before = facts.resident_kib()

        # While a button is held most updates are let go, as they are meant to be.
        flood = self.start_flood(2000)
        drags = 0
        while any(process.poll() is None for process in flood) and drags < 40:
            self.drag_a_little()
            drags += 1
        self.finish(flood)
        self.assertGreater(drags, 1)

        self.finish(self.start_flood(500))
        self.wait_last_values(499)
        wait_until("the memory to be back", lambda: facts.resident_kib() - before < 1024)
        self.assertEqual(self.desktop.messenger_output(), "")

    def test_one_that_stands_still_blocks_nobody_and_catches_up(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        self.finish(self.start_flood(1))
        self.panel.wait_height(SENDERS * ROW)
        stopped = time.monotonic()
        self.desktop.messenger.send_signal(signal.SIGSTOP)
        self.finish(self.start_flood(1000))
        time.sleep(max(0, stopped + 10 - time.monotonic()))
        self.desktop.messenger.send_signal(signal.SIGCONT)
        self.wait_last_values(999)
        self.assertEqual(self.desktop.messenger_output(), "")

    def wait_last_values(self, last):
        # One row that was told the last values alone, without a flood, beside those that were.
        self.desktop.post("KQS_disk.alone", "scanner", PID=os.getpid(), Progress=1000,
                          Item=f"item {last}")
        self.panel.wait_height((SENDERS + 1) * ROW, 200)  # all that waits on the bus comes first

        def all_alike(seen):
            alone = self.row_pixels(seen, SENDERS)
            return all(self.row_pixels(seen, index) == alone for index in range(0, SENDERS, 2))

        self.panel.wait_pixels("every second row to look like the last one", all_alike)
