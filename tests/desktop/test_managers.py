"""Window managers that come and go while the panel is up."""

import os

from support import DesktopTest
from support.panel import ROW
from support.waiting import hold, wait_until


class Managers(DesktopTest):
    options = {"window_manager": None}

    def drag(self):
        at = self.panel.geometry()
        self.desktop.pointer.drag((at.x + 50, at.y + 20), (at.x + 71, at.y + 43))

        def has_moved():
            # A manager that has only now taken the drag over waits for the hand's next motion.
            self.desktop.pointer.move(at.x + 70, at.y + 43)
            self.desktop.pointer.move(at.x + 71, at.y + 43)
            return (self.panel.geometry().x, self.panel.geometry().y) == (at.x + 21, at.y + 23)

        wait_until("the move", has_moved)
        self.desktop.pointer.release()

    def is_framed(self):
        window = self.panel.find()
        return window and "(the root window)" not in self.desktop.output(
            "xwininfo", "-id", window, "-tree").partition("Parent window id")[2].split("\n")[0]

    def test_the_panel_stays_where_it_is_and_goes_on(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        rows = 0
        for manager in ("openbox", None, "icewm", None, "openbox"):
            before = self.panel.geometry() if rows else None
            if manager:
                self.desktop.start_window_manager(manager)
            elif self.desktop.window_manager:
                self.desktop.processes.end(self.desktop.window_manager)
            if rows:
                wait_until(f"the hands of {manager}", lambda: self.is_framed() == bool(manager))
                wait_until("the panel in its place", lambda: self.panel.is_visible() and
                           self.panel.geometry() == before)
            rows += 1
            self.desktop.post(f"KQS_disk.{rows}", "scanner", PID=os.getpid())
            self.panel.wait_height(rows * ROW)
            self.drag()
            hold("the panel", lambda: self.panel.is_visible() and
                 self.panel.geometry().height == rows * ROW, 0.6)
        self.assertEqual(self.desktop.messenger_output(), "")
