"""The display: what happens when there is none, and when it goes away."""

import os
import signal

from support import DesktopTest
from support.waiting import wait_until


class Display(DesktopTest):
    options = {"window_manager": None}

    def test_without_a_display_one_line_tells_so_and_the_status_is_one(self):
        for display in (None, "", ":99999", "nonsense"):
            self.desktop.launch_messenger(DISPLAY=display)
            self.assertEqual(self.desktop.wait_exit(), 1, display)
            self.assertRegex(self.desktop.messenger_output(), r"\A\S[^\n]*\n\Z", display)
            self.desktop.messenger.log.unlink()

    def test_a_display_that_is_killed_closes_the_panel_quietly(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid())
        self.panel.wait_visible()
        self.desktop.processes.end(self.desktop.xserver, signal.SIGKILL)
        self.assertEqual(self.desktop.wait_exit(), 0)
        self.assertEqual(self.desktop.messenger_output(), "")

    def test_while_the_display_is_opened_a_request_to_terminate_is_heard(self):
        self.desktop.xserver.send_signal(signal.SIGSTOP)
        self.desktop.launch_messenger()
        wait_until("the program to ask the display", lambda: any(
            "socket" in target for target in self.desktop.messenger_facts().descriptors().values()))
        self.desktop.messenger.terminate()
        self.assertEqual(self.desktop.wait_exit(), 0)
        self.assertEqual(self.desktop.messenger_output(), "")
        self.desktop.xserver.send_signal(signal.SIGCONT)
