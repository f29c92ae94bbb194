"""Idle means asleep: without rows, with rows that don't change, and whatever the manager did late."""

import signal
import time

from support import DesktopTest


class Idle(DesktopTest):
    options = {"window_manager": "icewm"}

    def setUp(self):
        super().setUp()
        self.desktop.start_messenger()
        self.desktop.wait_listening()

    def cost(self, seconds=3.0):
        """Share of a processor and wake-ups per second over some seconds."""
        facts = self.desktop.messenger_facts()
        cpu, wake_ups = facts.cpu_seconds(), facts.wake_ups()
        time.sleep(seconds)
        return (facts.cpu_seconds() - cpu) / seconds, (facts.wake_ups() - wake_ups).total() / seconds

    def assert_asleep(self):
        share, wake_ups = self.cost()
        self.assertLess(share, 0.05)
        self.assertLess(wake_ups, 15)

    def test_sleeps_before_the_first_row_and_after_the_last(self):
        self.assert_asleep()
        job = self.desktop.start_job()
        self.desktop.post("KQS_disk.1", "scanner", PID=job.pid)
        self.panel.wait_visible()
        self.desktop.end_job(job)
        self.panel.wait_hidden()
        self.assert_asleep()

    def test_sleeps_when_a_slow_manager_shows_what_is_hidden_again(self):
        self.desktop.window_manager.send_signal(signal.SIGSTOP)
        self.desktop.post("KQS_disk.1", "scanner", PID=0)
        time.sleep(4)
        self.desktop.window_manager.send_signal(signal.SIGCONT)
        self.panel.wait_hidden()
        self.assert_asleep()
