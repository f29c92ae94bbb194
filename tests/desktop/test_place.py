"""Where the panel stands: the same place however often it hides."""

import unittest

from support import Desktop
from support.waiting import wait_until

CYCLES = 20


class Place(unittest.TestCase):
    def open(self, manager):
        """A desktop with a visible panel that was dragged away from its first place."""
        desktop = Desktop(window_manager=manager)
        self.addCleanup(desktop.stop)
        desktop.start_messenger()
        desktop.wait_listening()
        desktop.job = desktop.start_job()
        desktop.post("KQS_disk.0", "scanner", PID=desktop.job.pid)
        desktop.panel.wait_visible()
        before = desktop.panel.geometry()
        desktop.pointer.drag((before.x + 50, before.y + 20), (before.x + 21, before.y + 133))
        desktop.pointer.release()
        wait_until("the move", lambda: desktop.panel.geometry()[:2] == (before.x - 29, before.y + 113))
        return desktop

    def test_twenty_times_hidden_and_shown_it_has_not_moved_by_a_pixel(self):
        desktops = {manager: self.open(manager) for manager in ("openbox", "icewm", None)}
        places = {manager: desktop.panel.geometry() for manager, desktop in desktops.items()}
        for cycle in range(CYCLES):
            for desktop in desktops.values():
                desktop.end_job(desktop.job)
            for manager, desktop in desktops.items():
                desktop.panel.wait_hidden()
                desktop.job = desktop.start_job()
                desktop.post(f"KQS_disk.{cycle}", "scanner", PID=desktop.job.pid)
                desktop.panel.wait_visible()
                wait_until(f"the same place under {manager}",
                           lambda: desktop.panel.geometry() == places[manager])
