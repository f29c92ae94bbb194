"""The display: what happens when there is none, and when it goes away."""

from support import DesktopTest


class Display(DesktopTest):
    options = {"window_manager": None}

    def test_without_a_display_one_line_tells_so_and_the_status_is_one(self):
        for display in (None, "", ":99999", "nonsense"):
            with self.subTest(display=display):
                self.desktop.launch_messenger(DISPLAY=display)
                self.assertEqual(self.desktop.wait_exit(), 1)
                lines = self.desktop.messenger_output().splitlines()
                self.assertEqual(len(lines), 1, lines)
                self.assertTrue(lines[0].strip())
                self.desktop.messenger.log.unlink()

    def test_a_display_that_goes_away_closes_the_panel_quietly(self):
        self.desktop.start_messenger()
        self.desktop.processes.end(self.desktop.xserver)
        self.assertEqual(self.desktop.wait_exit(), 0)
        self.assertEqual(self.desktop.messenger_output(), "")
