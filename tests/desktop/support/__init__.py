"""Drives the real program from outside: a private X server, window manager, buses and logind."""

import pathlib
import sys

ROOT = pathlib.Path(__file__).resolve().parents[3]
sys.path.insert(0, str(ROOT / "scripts"))

# pylint: disable=wrong-import-position
from support.case import DesktopTest, needs_root  # noqa: E402
from support.desktop import Desktop  # noqa: E402
from support.waiting import hold, wait_until  # noqa: E402

__all__ = ["ROOT", "Desktop", "DesktopTest", "hold", "needs_root", "wait_until"]
