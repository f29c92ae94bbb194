"""How the program ends: always with status 0, in silence, and leaving nothing behind."""

import os
import signal
import time

from support import DesktopTest, posting
from support.panel import ROW
from support.processes import ProcessFacts
from support.waiting import PROMPTLY, hold, wait_for_value, wait_until


class Endings(DesktopTest):
    options = {"window_manager": None, "logind": True}

    def setUp(self):
        super().setUp()
        self.desktop.start_messenger()
        self.desktop.wait_listening()

    def post(self, number=1, **info):
        self.desktop.post(f"KQS_disk.{number}", "scanner", **info)

    def assert_ends_quietly(self):
        self.assertEqual(self.desktop.wait_exit(60), 0)
        self.assertEqual(self.desktop.messenger_output(), "")

    def test_requests_to_terminate_close_the_panel(self):
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(number):
                if self.desktop.messenger.poll() is not None:
                    self.desktop.start_messenger()
                    self.desktop.wait_listening()
                self.post(PID=os.getpid())
                self.panel.wait_visible()
                self.desktop.messenger.send_signal(number)
                self.assert_ends_quietly()

    def test_whatever_else_is_posted_is_taken_or_dropped(self):
        bus = self.desktop.session_bus
        posting.post_raw(bus, signature="")
        posting.post_raw(bus, 5, signature="i")
        posting.post_raw(bus, "KQS_disk.x", signature="s")
        posting.post_raw(bus, "KQS_disk.x", "KQMS", signature="ss")
        posting.post_raw(bus, "KQS_disk.x", "KQMS", ["a"], signature="ssas")
        posting.post_raw(bus, "no mark", "KQMS", {"a": "b"}, signature="ssa{ss}")
        self.post(1, Item="x" * (24 << 20), PID=os.getpid())
        self.post(2, PID=os.getpid(), **{f"key{number}": "v" for number in range(5000)})
        posting.post_raw(bus, "KQS_disk.3", 7, {"a": "b"}, signature="sia{ss}")
        self.panel.wait_height(3 * ROW)
        # The large one leaves nothing in memory.
        wait_until("the memory", lambda: self.desktop.messenger_facts().resident_kib() < 20 << 10)
        self.assertEqual(self.desktop.messenger_output(), "")

    def test_a_dead_process_takes_its_row_and_the_last_one_the_panel_and_the_program(self):
        jobs = [self.desktop.start_job() for _ in range(2)]
        for number, job in enumerate(jobs):
            self.post(number, PID=job.pid, Progress=500)
        self.panel.wait_height(2 * ROW)
        self.desktop.end_job(jobs[0])
        self.panel.wait_height(ROW, PROMPTLY)
        self.panel.wait_title("Brackwater Scheduled Task")
        self.desktop.end_job(jobs[1])
        self.panel.wait_hidden(PROMPTLY)
        hidden = time.monotonic()
        self.assert_ends_quietly()
        # The grace of ten seconds began when it was hidden, which was seen a little later.
        self.assertAlmostEqual(time.monotonic() - hidden, 10, delta=5)

    def test_a_zombie_keeps_its_row_and_a_strangers_process_too(self):
        zombie = os.spawnlp(os.P_NOWAIT, "true", "true")
        self.addCleanup(os.waitpid, zombie, 0)
        self.post(1, PID=zombie)
        self.post(2, PID=1)
        self.post(3, PID="12345678901")
        self.panel.wait_height(3 * ROW)
        self.panel.wait_height(2 * ROW, PROMPTLY)
        hold("both rows", lambda: self.panel.geometry().height == 2 * ROW, 4)

    def test_children_inherit_no_descriptor_and_none_is_left(self):
        job = self.desktop.start_job()
        for number in range(3):
            self.post(number, PID=job.pid)
        self.panel.wait_height(3 * ROW)
        wait_until("both locks that name them all", lambda: sum(
            lock[2].count(",") == 2 for lock in self.desktop.logind.inhibitors()) >= 2)
        facts = self.desktop.messenger_facts()
        ours = {name for number, name in facts.descriptors().items() if number > 2}
        seen = self.descriptors_of_a_child(facts)
        self.assertFalse(ours & set(seen.values()), seen)
        hold("at most one child at a time", lambda: len(facts.children()) <= 1, 4)
        wait_for_value("the display, two connections to each bus, and two locks", lambda: [sum(
            kind in name for name in facts.descriptors().values()) for kind in ("socket", "pipe")], [5, 2])

    def test_one_that_is_started_without_standard_streams_fills_them_first(self):
        self.desktop.messenger.terminate()
        self.assert_ends_quietly()
        self.desktop.start_messenger("sh", "-c", 'exec "$0" <&- >&- 2>&-')
        self.desktop.wait_listening()
        descriptors = self.desktop.messenger_facts().descriptors()
        self.assertEqual([descriptors[number] for number in range(3)], ["/dev/null"] * 3)

    def descriptors_of_a_child(self, facts):
        """What a command that the program runs has open, caught while it runs: not before it has
        become the shell."""
        end = time.monotonic() + 60
        while time.monotonic() < end:
            for child in facts.children():
                try:
                    if ProcessFacts(child).program() == facts.program():
                        continue
                    seen = ProcessFacts(child).descriptors()
                except (FileNotFoundError, ProcessLookupError):
                    continue
                if seen:
                    return seen
        raise AssertionError("no command was seen running")
