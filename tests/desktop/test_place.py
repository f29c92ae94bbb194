"""Where the panel stands: the same place however often it hides, and on the main monitor of two."""

import os
import unittest

from support import Desktop, DesktopTest
from support.panel import ROW
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


class TwoMonitors(DesktopTest):
    options = {"window_manager": "openbox", "screen": (1600, 800)}

    def test_stands_on_the_main_monitor_and_ends_at_its_bottom(self):
        self.desktop.output("xrandr", "--setmonitor", "left", "600/150x800/200+0+0", "none")
        self.desktop.output("xrandr", "--setmonitor", "*right", "1000/250x400/100+600+300",
                            "screen")
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        self.desktop.post("KQS_disk.0", "scanner", PID=os.getpid())
        self.panel.wait_visible()
        at = self.panel.geometry()
        self.assertEqual((at.x, at.y), (600 + (1000 - 340) // 2, 300 + 42))
        for number in range(1, 6):
            self.desktop.post(f"KQS_disk.{number}", "scanner", PID=os.getpid())
        self.panel.wait_height(4 * ROW)
