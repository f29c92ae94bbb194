"""A long life in short, and a short life under a memory checker. The long one is bench/soak.py's."""

import sys

from support import ROOT, DesktopTest
from support.panel import ROW

sys.path.append(str(ROOT / "bench"))
from soak import MOST_GROWTH_KIB, Soak  # noqa: E402  pylint: disable=wrong-import-position

# Fontconfig itself forgets a pattern of its configuration, once in a process.
KNOWN_LEAKS = """{
   a pattern of the configuration
   Memcheck:Leak
   match-leak-kinds: definite
   ...
   obj:*/libfontconfig.so.*
   obj:*/libexpat.so.*
   ...
}
"""
ERRORS = 99


class LongLife(DesktopTest):
    options = {"window_manager": None, "screen": (1024, 600)}

    def test_nothing_that_it_holds_becomes_more(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        # Few rows: while other tests run, listing the processes takes its time.
        soak = Soak(self.desktop, updates=30_000, rows=6, burst=1000, bursts_between_changes=5)
        soak.run()
        growth, grown = soak.growth(warm_up=10_000)
        self.assertLess(growth, MOST_GROWTH_KIB, soak.samples)
        self.assertEqual(grown, [], soak.samples)
        self.assertEqual(self.desktop.messenger_output(), "")


class ShortLife(DesktopTest):
    def test_a_memory_checker_finds_no_error_and_no_leak(self):
        known = self.desktop.folder / "known-leaks"
        known.write_text(KNOWN_LEAKS)
        log = self.desktop.folder / "valgrind.log"
        self.desktop.start_messenger("valgrind", "--leak-check=full", "--errors-for-leak-kinds=definite",
                                     f"--error-exitcode={ERRORS}", f"--suppressions={known}",
                                     f"--log-file={log}")
        self.desktop.wait_listening()
        jobs = [self.desktop.start_job() for _ in range(3)]
        for number, (tool, job) in enumerate(zip(("scanner", "backup", "defragmenter"), jobs)):
            self.desktop.post(f"KQS_disk.{number}", tool, PID=job.pid, Progress=456, VolName="Büro",
                              Item="long " * 50, status="defrag", FileName="日本語", BSD="sda1",
                              FileProgress=37, dVolName="/mnt//vault", Extra="sleep")
        self.panel.wait_height(3 * ROW)
        at = self.panel.geometry()
        self.desktop.pointer.drag((at.x + 50, at.y + 20), (at.x + 21, at.y + 133))
        self.desktop.pointer.release()
        self.desktop.end_job(jobs[1])
        self.panel.wait_height(2 * ROW)
        self.desktop.messenger.terminate()
        self.assertEqual(self.desktop.wait_exit(60), 0, log.read_text())
        self.assertEqual(self.desktop.messenger_output(), "")
        self.assertIn("ERROR SUMMARY: 0 errors", log.read_text())
