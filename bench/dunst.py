"""dunst as the panel's counterpart: a configuration by which it shows the same ten rows, and a client
that posts them."""

import dbus
import dbus.lowlevel

from support import wait_until

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"

# Of the panel's width, with text of its size; nothing goes by itself, nothing changes with time.
CONFIGURATION = """[global]
notification_limit = {rows}
width = {width}
height = 120
origin = top-right
offset = 10x10
font = sans-serif 8
format = "%s\\n%b"
word_wrap = false
ellipsize = middle
icon_position = left
min_icon_size = 32
max_icon_size = 32
progress_bar = true
progress_bar_height = 10
progress_bar_min_width = {bar}
progress_bar_max_width = {bar}
sort = false
stack_duplicates = false
show_age_threshold = -1
idle_threshold = 0
[urgency_low]
timeout = 0
[urgency_normal]
timeout = 0
[urgency_critical]
timeout = 0
"""


class Dunst:
    """One process of it on a private desktop."""

    name = "dunst"

    def __init__(self, desktop, rows, width, icon):
        self._desktop, self._icon = desktop, str(icon)
        self._connection = desktop.session_bus.connection()
        self._configuration = desktop.folder / "dunstrc"
        self._configuration.write_text(CONFIGURATION.format(rows=rows, width=width,
                                                            bar=width - 24))
        self._process, self._ids, self._open = None, {}, []

    @property
    def pid(self):
        return self._process.pid

    def start(self):
        self._ids = {}
        self._process = self._desktop.processes.start(
            ["dunst", "-conf", str(self._configuration)], self._desktop.env, log="dunst.log")

    def wait_ready(self):
        wait_until("dunst to own its name", lambda: self._connection.name_has_owner(NAME))

    def window(self):
        """The id of its window, which is there from the start."""
        lines = self._desktop.output("xwininfo", "-root", "-tree").splitlines()
        return next((int(line.split()[0], 16) for line in lines if '"Dunst"' in line), None)

    def post(self, row, progress, lines):
        """Posts a row or updates it; the answer is waited for by `settle` or the next post."""
        self.settle()
        message = dbus.lowlevel.MethodCallMessage(NAME, PATH, NAME, "Notify")
        message.append("scanner", self._ids.get(row, 0), self._icon, lines[0],
                       "\n".join(lines[1:]), [], {"value": dbus.Int32(progress // 10)}, 0,
                       signature="susssasa{sv}i")

        def answered(answer):
            self._ids[row] = answer.get_args_list()[0]

        self._open.append(self._connection.send_message_with_reply(message, answered, 20.0))
        self._connection.flush()

    def settle(self):
        while self._open:
            self._open.pop().block()

    def end(self):
        self._desktop.processes.end(self._process)
