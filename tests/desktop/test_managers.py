"""The panel under window managers: driven by the user's hand under each, and while they come and go.

KQU_MANAGERS names what to drive: words like MANAGER[+COMPOSITOR][@SCALE]. scripts/managers drives
all that are known, and puts the results together."""

import os
import pathlib
import signal
import subprocess

import pytest

from support import ROOT, Desktop, DesktopTest
from screenshot import Screenshot  # found by way of support
from support.desktop import WINDOW_MANAGERS
from support.panel import ROW
from support.waiting import content, hold, wait_until

DRIVEN = os.environ.get("KQU_MANAGERS", "none openbox@2 icewm").split()
ROUNDS = 5
SCREEN = (1280, 900)
# Weston shows windows of the type "utility" as it shows menus: at a place of its own, for ever.
UNPLACED = {"weston"}
FILE = "com.brackwater.KQU_Messenger.plist"


class Drive:
    """One desktop, with a panel that has one row, whose place is then changed and looked at."""

    ACTIONS = ("place", "drag", "grip", "wheel", "hide", "restart", "focus", "click", "minimise")

    def __init__(self, word):
        word, _, scale = word.partition("@")
        self.manager, _, compositor = word.partition("+")
        self.scale = int(scale or 1)
        self.accepted = ACCEPTED.get(self.manager.partition("-")[0], set())
        self.desktop = Desktop(screen=SCREEN, window_manager=None)
        self.panel = self.desktop.panel
        if self.manager != "none":
            self.desktop.start_window_manager(self.manager)
        if compositor:
            self.desktop.processes.start([compositor], self.desktop.env)
        self.desktop.output("xprop", "-root", "-f", "RESOURCE_MANAGER", "8s", "-set",
                            "RESOURCE_MANAGER", f"Xft.dpi: {96 * self.scale}\n")
        self.jobs = []
        self.start()

    def start(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        self.row()

    def row(self, is_seen=True):
        self.jobs.append(self.desktop.start_job())
        self.desktop.post(f"KQS_disk.{self.jobs[-1].pid}", "scanner", PID=self.jobs[-1].pid)
        if is_seen:
            self.panel.wait_visible()

    def end_jobs(self):
        while self.jobs:
            self.desktop.end_job(self.jobs.pop())

    def glass(self):
        """The content on the glass: a Wayland compositor may show a window where its X server does
        not know it."""
        return wait_until("the panel to be seen", self.seen, 30)

    def seen(self):
        at = self.panel.geometry()
        if self.desktop.pointer.env["DISPLAY"] == self.desktop.env["DISPLAY"]:
            return at
        screen = Screenshot.take(env=self.desktop.pointer.env)
        content = Screenshot.take(self.panel.find(), self.desktop.env)
        for y in (12 * self.scale, 46 * self.scale):  # one of them is free of the pointer's arrow
            found = screen.rgb.find(content.crop(0, y, 45 * self.scale, 1).rgb)
            if found >= 0:
                top, left = divmod(found // 3, screen.width)
                return at._replace(x=left, y=top - y)
        return None

    def at(self):
        """The same in logical pixels, without the place where nobody but the compositor gives one."""
        at = [number / self.scale for number in self.glass()]
        return at if self.manager not in UNPLACED else [0, 0, *at[2:]]

    def wait_at(self, wanted):
        wait_until(f"the panel at {wanted}", self.at, 30, lambda seen: seen == wanted)
        hold("its place", lambda: self.at() == wanted, 0.7)

    def pull(self, start, way, wanted):
        """Drags by that way, until the panel is where it should be."""
        x, y, _, _ = self.glass()
        begin = (x + start[0] * self.scale, y + start[1] * self.scale)
        end = (begin[0] + way[0] * self.scale, begin[1] + way[1] * self.scale)
        self.desktop.pointer.pull(begin, end, lambda: self.at() == wanted, 30)
        self.wait_at(wanted)

    def place(self):
        place = [int(SCREEN[0] // self.scale / 2 - 170), 42]
        self.wait_at([*(place if self.manager not in UNPLACED else (0, 0)), 340, ROW])

    def drag(self):
        x, y, *size = self.at()
        self.pull((50, 20), (37, 111), [x + 37, y + 111, *size])

    def grip(self):
        x, y, width, height = self.at()
        self.pull((width - 8, height - 6), (60, 0), [x, y, width + 60, height])
        self.pull((width + 52, height - 6), (-60, 0), [x, y, width, height])

    def wheel(self):
        x, y, width, height = self.at()
        self.row()
        self.wait_at([x, y, width, height + ROW])
        self.pull((width - 8, height + ROW - 6), (0, -60), [x, y, width, height])
        stripe = lambda: Screenshot.take(self.panel.find(), self.desktop.env).pixel(5, 5)
        before = stripe()
        self.desktop.pointer.move(self.glass().x + 50, self.glass().y + 30)
        self.desktop.pointer.wheel("down")
        wait_until("the second row", lambda: stripe() != before, 30)
        self.desktop.pointer.wheel("up")
        wait_until("the first row", lambda: stripe() == before, 30)

    def hide(self):
        before = self.at()
        for _ in range(ROUNDS):
            self.end_jobs()
            self.panel.wait_hidden()
            self.row()
            self.wait_at(before)

    def restart(self):
        before = self.at()
        path = pathlib.Path(self.desktop.folder, "config", FILE)
        wait_until("the place to be saved", lambda:
                   f"<integer>{self.panel.geometry().x / self.scale:g}<" in (content(path) or ""))
        saved = path.read_bytes()
        for _ in range(ROUNDS):
            self.desktop.messenger.send_signal(signal.SIGTERM)
            assert self.desktop.wait_exit() == 0
            self.start()
            self.wait_at(before)
        hold("the file", lambda: path.read_bytes() == saved, 1.5)

    def focused(self):
        """The window that has the keyboard, as the X server says."""
        return subprocess.run(["xdotool", "getwindowfocus"], env=self.desktop.env, timeout=20,
                              capture_output=True, check=False).stdout

    def focus(self):
        nobody = self.focused()
        clock = self.desktop.processes.start(["xclock", "-geometry", "150x150+20+600"],
                                             self.desktop.env)
        window = self.desktop.output("xdotool", "search", "--sync", "--pid", str(clock.pid))
        self.desktop.output("xdotool", "windowfocus", window.split()[-1])
        wait_until("the clock to have the keyboard", lambda: self.focused() != nobody, 30)
        own = self.focused()
        self.end_jobs()
        self.panel.wait_hidden()
        self.row()
        hold("the clock's keyboard", lambda: self.focused() == own, 1)

    def click(self):
        own = self.focused()
        self.desktop.pointer.click(self.glass().x + 50, self.glass().y + 30)
        hold("the user's keyboard", lambda: self.focused() == own, 1)

    def minimise(self):
        before, window = self.at(), self.panel.find()
        self.desktop.output("xdotool", "windowminimize", window)
        minimised = lambda: "Iconic" in (self.panel.property("WM_STATE") or "")
        wait_until("the panel to be minimised", minimised, 5 if "minimise" in self.accepted else 30)
        self.row(is_seen=False)
        hold("the minimised panel", minimised, 1)
        self.desktop.output("wmctrl", "-i", "-a", window)
        wait_until("the panel to come back", lambda: self.panel.is_mapped() and not minimised(), 30)
        self.wait_at([*before[:3], before[3] + ROW])

    def results(self):
        """What went wrong in each action; nothing where it went well."""
        for action in self.ACTIONS:
            try:
                yield action, getattr(self, action)()
            except (AssertionError, subprocess.SubprocessError, ValueError) as error:
                yield action, str(error)


# Some minimise nothing, or nothing of the type "utility"; some give the keyboard to whatever is clicked.
ACCEPTED = {"none": {"minimise"}, "dwm": {"minimise"}, "bspwm": {"minimise"}, "i3": {"minimise", "click"},
            "metacity": {"click"}, "marco": {"click"}, "mutter": {"click", "minimise"}, "kwin": {"minimise"},
            "weston": {"drag", "minimise"}}


@pytest.mark.parametrize("word", DRIVEN)
def test_the_panel_obeys_the_hand_under(word):
    drive = Drive(word)
    try:
        results = dict(drive.results())
    finally:
        drive.desktop.stop()
    line = f"{word:24}" + " ".join(f"{action}={'ok' if not wrong else 'BAD'}"
                                   for action, wrong in results.items())
    folder = pathlib.Path(ROOT, "out", "managers")
    folder.mkdir(parents=True, exist_ok=True)
    (folder / word).write_text("\n  ".join([line, *filter(None, results.values())]) + "\n")
    assert {action for action, wrong in results.items() if wrong} <= drive.accepted, results


class ComingAndGoing(DesktopTest):
    options = {"window_manager": None}

    def drag(self):
        at = self.panel.geometry()
        self.desktop.pointer.pull((at.x + 50, at.y + 20), (at.x + 71, at.y + 43), lambda: (
            self.panel.geometry()[:2] == (at.x + 21, at.y + 23)))

    def is_framed(self):
        window = self.panel.find()
        return window and "(the root window)" not in self.desktop.output(
            "xwininfo", "-id", window, "-tree").partition("Parent window id")[2].split("\n")[0]

    def test_the_panel_stays_where_it_is_and_goes_on(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        rows = 0
        for manager in ("openbox", None, "icewm", None, "openbox"):
            before = self.panel.geometry() if rows else None
            if manager:
                self.desktop.start_window_manager(manager)
            elif self.desktop.window_manager:
                self.desktop.processes.end(self.desktop.window_manager)
            if rows:
                wait_until(f"the hands of {manager}", lambda: self.is_framed() == bool(manager))
                wait_until("the panel in its place", lambda: self.panel.is_visible() and
                           self.panel.geometry() == before)
            rows += 1
            self.desktop.post(f"KQS_disk.{rows}", "scanner", PID=os.getpid())
            self.panel.wait_height(rows * ROW)
            self.drag()
            hold("the panel", lambda: self.panel.is_visible() and
                 self.panel.geometry().height == rows * ROW, 0.6)
        self.assertEqual(self.desktop.messenger_output(), "")
