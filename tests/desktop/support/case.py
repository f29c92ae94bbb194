"""The base of the desktop tests."""

import os
import pathlib
import unittest

import pytest

from screenshot import Screenshot
from support.desktop import ROOT, Desktop

needs_root = unittest.skipIf(os.geteuid() != 0, "only root can be somebody else")


class DesktopTest(unittest.TestCase):
    """Gives each test a desktop of its own, as `options` describe it. After a failure the screen's
    picture and the logs are kept below out/desktop/."""

    options = {}
    maxDiff = None

    @pytest.fixture(autouse=True)
    def own_desktop(self):
        self.desktop = Desktop(**self.options)
        self.panel = self.desktop.panel
        yield
        self.desktop.stop()

    def keep_evidence(self):
        """Called after a failure, while the desktop still stands."""
        desktop = self.desktop
        if desktop.xserver.poll() is not None:
            return
        folder = pathlib.Path(ROOT, "out", "desktop")
        Screenshot.take(env=desktop.env).save(folder / f"{self.id()}.png")
        logs = "".join(f"--- {log.name}\n{log.read_text(errors='replace')}"
                       for log in sorted(desktop.folder.glob("*.log")))
        (folder / f"{self.id()}.log").write_text(logs)
