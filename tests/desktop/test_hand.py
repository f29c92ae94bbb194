"""The panel under the user's hand, with real input: its grip, its scroll bar, its wheel."""

import os

from support import DesktopTest
from support.panel import ROW
from support.waiting import hold, wait_until


class Hand(DesktopTest):
    options = {"window_manager": None, "screen": (1024, 500)}

    def setUp(self):
        super().setUp()
        self.start()

    def start(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()

    def rows(self, count):
        for number in range(count):
            self.desktop.post(f"KQS_disk.{number}", "scanner", PID=os.getpid(), Progress=100 * number)
        self.panel.wait_visible()
        self.panel.wait_height(min(count, 6) * ROW)

    def drag(self, start, way, release=True):
        """From a place in the panel, by that way."""
        at = self.panel.geometry()
        begin = (at.x + start[0], at.y + start[1])
        self.desktop.pointer.drag(begin, (begin[0] + way[0], begin[1] + way[1]))
        if release:
            self.desktop.pointer.release()

    def wait_geometry(self, **wanted):
        wait_until(f"the geometry to be {wanted}", lambda: all(
            getattr(self.panel.geometry(), key) == value for key, value in wanted.items()), 5)

    def test_the_grip_widens_and_goes_by_rows_to_both_sides(self):
        self.rows(3)
        at = self.panel.geometry()
        self.drag((330, at.height - 8), (60, 0))
        self.wait_geometry(width=400, height=3 * ROW, x=at.x, y=at.y)
        self.drag((390, at.height - 8), (-200, -60))
        self.wait_geometry(width=270, height=2 * ROW)
        self.drag((260, 2 * ROW - 8), (500, 80))
        self.wait_geometry(width=500, height=3 * ROW)
        hold("the size", lambda: self.panel.geometry().width == 500, 1)

    def test_the_wheel_and_the_bar_scroll_by_rows(self):
        self.rows(12)
        at = self.panel.geometry()
        stripes = [0xFFFFFF, 0xF1F5FA]
        top_left = lambda: self.panel.screenshot().pixel(0, 5)
        self.desktop.pointer.move(at.x + 100, at.y + 100)
        self.assertEqual(top_left(), stripes[0])
        for step in range(1, 4):
            self.desktop.pointer.wheel("down")
            wait_until("one row further", lambda: top_left() == stripes[step % 2])
        self.desktop.pointer.wheel("up")
        wait_until("one row back", lambda: top_left() == stripes[0])
        # A page is more rows than there are: the end, six rows further than the beginning.
        self.desktop.pointer.click(at.x + 334, at.y + at.height - 25)
        bar = lambda line: self.panel.screenshot().pixel(334, line)
        wait_until("the thumb at the end", lambda: bar(at.height - 25) != bar(5))
        self.drag((334, at.height - 35), (0, -400))
        wait_until("the thumb at the beginning", lambda: bar(5) != bar(at.height - 25))
        self.assertEqual(self.panel.geometry(), at)

    def test_the_program_lives_while_the_panel_is_dragged(self):
        job = self.desktop.start_job()
        self.rows(1)
        self.desktop.post("KQS_disk.job", "scanner", PID=job.pid)
        self.panel.wait_height(2 * ROW)
        self.drag((100, 30), (20, 20), release=False)
        self.desktop.end_job(job)
        self.panel.wait_height(ROW)
        self.desktop.pointer.release()
