"""A long life in short. The long one is bench/soak.py's."""

import sys

from support import ROOT, DesktopTest

sys.path.append(str(ROOT / "bench"))
from soak import MOST_GROWTH_KIB, Soak  # noqa: E402  pylint: disable=wrong-import-position


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
