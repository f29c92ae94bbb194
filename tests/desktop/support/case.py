"""The base of the desktop tests."""

import pathlib
import unittest

from screenshot import Screenshot
from support.desktop import ROOT, Desktop


class DesktopTest(unittest.TestCase):
    """Gives each test a desktop of its own, as `options` describe it. After a failure the screen's
    picture and the logs are kept below out/desktop/."""

    options = {}
    maxDiff = None

    def setUp(self):
        self.desktop = Desktop(**self.options)
        self.addCleanup(self.desktop.stop)
        self.panel = self.desktop.panel

    def keep_evidence(self):
        """Called by the runner while the failed test's desktop still stands."""
        desktop = getattr(self, "desktop", None)
        if desktop is None or desktop.xserver is None or desktop.xserver.poll() is not None:
            return
        folder = pathlib.Path(ROOT, "out", "desktop")
        Screenshot.take(env=desktop.env).save(folder / f"{self.id()}.png")
        logs = "".join(f"--- {log.name}\n{log.read_text(errors='replace')}"
                       for log in sorted(desktop.folder.glob("*.log")))
        (folder / f"{self.id()}.log").write_text(logs)
