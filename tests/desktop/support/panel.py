"""The messenger's window as the X server, the window manager and the user see it."""

import collections
import re
import subprocess

from support.waiting import DEADLINE, wait_for_value, wait_until

CLASS = '("kqu-messenger" "KQU_Messenger")'
ROW = 73
# A window's content in coordinates of the root window.
Geometry = collections.namedtuple("Geometry", "x y width height")


class Panel:
    def __init__(self, env):
        self._env = env

    def _ask(self, *command):
        return subprocess.run(command, env=self._env, capture_output=True, text=True, timeout=20,
                              check=False).stdout

    def find(self):
        """The window's id, mapped or not; None as long as there is none."""
        windows = re.findall(r"^\s*(0x[0-9a-f]+) .*" + re.escape(CLASS) + r"\s+(\d+)x(\d+)",
                             self._ask("xwininfo", "-root", "-tree"), re.MULTILINE)
        largest = max(windows, key=lambda found: int(found[1]) * int(found[2]), default=None)
        return largest and largest[0]

    def _info(self):
        window = self.find()
        return self._ask("xwininfo", "-id", window) if window else ""

    def geometry(self):
        """None as long as there is no window."""
        info = self._info()
        numbers = [re.search(re.escape(label) + r":\s+(-?\d+)", info) for label in (
            "Absolute upper-left X", "Absolute upper-left Y", "Width", "Height", "Border width")]
        if not all(numbers):
            return None
        x, y, width, height, border = (int(number[1]) for number in numbers)
        # The corner that xwininfo gives is that of the border.
        return Geometry(x + border, y + border, width, height)

    def is_mapped(self):
        return "Map State: IsViewable" in self._info()

    def property(self, name):
        """The text that xprop gives for a property; None where it is not set."""
        window = self.find()
        text = self._ask("xprop", "-id", window, name).strip() if window else ""
        _, found, value = text.partition(" = ")
        if found:
            return value
        absent = not text or text.endswith(("not found.", "no such atom on any window."))
        return None if absent else text.partition(":")[2].strip()

    def title(self):
        value = self.property("_NET_WM_NAME")
        return value and value.strip('"')

    def opacity(self):
        """From 0.0 to 1.0; None where the window says nothing about it."""
        value = self.property("_NET_WM_WINDOW_OPACITY")
        return value and int(value) / 0xFFFFFFFF

    def is_visible(self):
        """What a user sees: mapped, and not transparent."""
        return self.is_mapped() and self.opacity() != 0.0

    def wait_visible(self, timeout=DEADLINE):
        wait_until("the panel to be visible", self.is_visible, timeout)

    def wait_hidden(self, timeout=DEADLINE):
        wait_until("the panel to be hidden", lambda: self.find() and not self.is_visible(), timeout)

    def wait_title(self, title, timeout=DEADLINE):
        wait_for_value("the panel's title", self.title, title, timeout)

    def wait_height(self, height, timeout=DEADLINE):
        """For a number of rows: wait_height(2 * ROW)."""
        wait_for_value("the panel's height", lambda: getattr(self.geometry(), "height", None),
                       height, timeout)


class Pointer:
    """The mouse, in coordinates of the root window."""

    BUTTONS = {"up": "4", "down": "5"}

    def __init__(self, env):
        self.env = env

    def _do(self, *words):
        subprocess.run(["xdotool", *(str(word) for word in words)], env=self.env, check=True,
                       timeout=20, capture_output=True)

    def move(self, x, y):
        self._do("mousemove", x, y)

    def release(self):
        self._do("mouseup", 1)

    def click(self, x, y):
        self._do("mousemove", x, y, "click", 1)

    def wheel(self, direction, times=1):
        self._do("click", "--repeat", times, "--delay", 20, self.BUTTONS[direction])

    def drag(self, start, end, steps=10):
        """Presses at `start` and moves to `end`, where the button stays down."""
        self._do("mousemove", *start, "mousedown", 1)
        for step in range(1, steps + 1):
            self._do("mousemove", *(round(a + (b - a) * step / steps) for a, b in zip(start, end)))

    def pull(self, start, end, has_arrived, timeout=DEADLINE):
        """Drags until that is so, and releases. A manager that has only now taken the drag over waits
        for the next motion."""
        self.drag(start, end)
        try:
            wait_until("the end of a drag", lambda: self.move(end[0] - 1, end[1]) or self.move(*end) or
                       has_arrived(), timeout)
        finally:
            self.release()
