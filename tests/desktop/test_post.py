"""kqu-post from outside: what it puts on a bus, and what it says when it can't."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

import dbus
import dbus.bus
import dbus.mainloop.glib
from gi.repository import GLib

from support import ROOT, hold, wait_until
from support.buses import Bus
from support.posting import INTERFACE, MEMBER, OBJECTS, PATH
from support.processes import Processes

KEYS = {
    "scanner": "PID Extra BSD Progress VolName Item ScanType",
    "backup": "PID Extra BSD Progress VolName status Type FolderBackup dVolName",
    "defragmenter": "PID Extra BSD status FileName FileProgress NumFilesExamined",
}
COMMAND = pathlib.Path(os.environ.get("KQU_BUILD", ROOT / "build" / "release")).resolve() / "kqu-post"


class Listener:
    """A connection that keeps every status notification it hears."""

    def __init__(self, bus):
        loop = dbus.mainloop.glib.DBusGMainLoop()
        self.connection = dbus.bus.BusConnection(bus.address, mainloop=loop)
        self.connection.set_exit_on_disconnect(False)
        self.connection.add_match_string(f"type='signal',interface='{INTERFACE}'")
        self.connection.add_message_filter(self._take)
        self.heard = []
        self.has_come()

    def _take(self, _, message):
        if message.get_interface() == INTERFACE:
            self.heard.append(message)
        return dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED

    def has_come(self):
        """Everything that the bus had taken before this question."""
        self.connection.get_object("org.freedesktop.DBus", "/", introspect=False).GetId(
            dbus_interface="org.freedesktop.DBus")
        while GLib.MainContext.default().iteration(False):
            pass
        return self.heard


class PostTest(unittest.TestCase):
    def setUp(self):
        folder = pathlib.Path(tempfile.mkdtemp(prefix="kqu-post-"))
        self.addCleanup(shutil.rmtree, folder)
        folder.chmod(0o755)
        self.processes = Processes(folder)
        self.addCleanup(self.processes.end_all)
        self.env = {"PATH": os.environ["PATH"], "XDG_RUNTIME_DIR": str(folder), **self.processes.mark}
        self.bus = {}
        for kind in ("session", "system"):
            self.bus[kind] = Bus(kind, self.processes, self.env)
            self.env[f"DBUS_{kind.upper()}_BUS_ADDRESS"] = self.bus[kind].address

    def listen(self, kind):
        self.bus[kind].start()
        self.addCleanup(self.bus[kind].stop)
        return Listener(self.bus[kind])

    def run_post(self, *arguments, env=None):
        return subprocess.run([COMMAND, *arguments], env=env or self.env, capture_output=True,
                              timeout=30, check=False)

    def post(self, *arguments):
        done = self.run_post(*arguments)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, b"", b""), arguments)

    def test_each_tool_posts_its_keys_as_text(self):
        listener = self.listen("session")
        for tool, keys in KEYS.items():
            values = {key: f"{number} ä=b\n" for number, key in enumerate(keys.split())}
            values["PID"] = ""
            self.post("--any-value", "--tool", tool, f"--name=my kqs_DISK/{tool}",
                      *(f"{key}={value}" for key, value in values.items()))
            # Status 0 says that the bus has it: there is nothing to wait for.
            self.assertEqual(len(listener.has_come()), 1, tool)
            message = listener.heard.pop()
            self.assertEqual((message.get_path(), message.get_member(), message.get_signature()),
                             (PATH, MEMBER, "ssa{sv}"))
            name, told, info = message.get_args_list()
            self.assertEqual((name, told), (f"my kqs_DISK/{tool}", OBJECTS[tool]))
            self.assertEqual(info, values)
            self.assertEqual({type(value) for value in info.values()}, {dbus.String})

    def test_on_the_system_bus_a_slow_listener_can_ask_who_posted(self):
        listener = self.listen("system")
        # The end of its output comes at once too: what stays has nothing of the caller's.
        self.post("--system", "--tool", "backup", "--name", "KQS_disk", "PID=1")
        sender = listener.has_come()[0].get_sender()
        hold("the bus's answer", lambda: listener.connection.get_unix_user(sender) == os.geteuid(), 2)
        # The service manager would end a child with its unit.
        itself = self.processes.start(["sh", "-c", 'SYSTEMD_EXEC_PID=$$ exec "$@"', "sh", COMMAND, "--system",
                                       "--no-start", "--tool=backup", "--name=KQS_disk", "PID=1"], self.env)
        wait_until("the post", lambda: len(listener.has_come()) == 2)
        hold("the command itself", lambda: itself.poll() is None, 1)

    def test_a_wrong_command_line_is_told_in_one_line_and_posts_nothing(self):
        listener = self.listen("session")
        good = ("--tool", "scanner", "--name", "KQS_disk.1")
        for arguments, told in (
                ((), "tool"),
                (("--tool", "cleaner", "--name", "KQS_disk"), "scanner, backup, defragmenter"),
                (("--name", "KQS_disk"), "scanner, backup, defragmenter"),
                (("--tool", "scanner"), "KQS_disk"),
                (("--tool", "scanner", "--name", "KQS-disk"), "KQS_disk"),
                ((*good, "PID"), "KEY=VALUE"),
                ((*good, "=1"), "KEY=VALUE"),
                ((*good, "FileName=x"), "PID, Extra, BSD, Progress, VolName, Item, ScanType"),
                ((*good, "pid=1"), "PID, "),
                ((*good, "Progress=25%"), "25%"),
                ((*good, "PID=inf"), "PID"),
                ((*good, "PID="), "PID"),
                ((*good, "Item=a\udcff"), "UTF-8"),
                ((*good, "Item=\udced\udca0\udc80"), "UTF-8"),
                (("--tool", "scanner", "--name", "KQS_disk\udcc3"), "UTF-8"),
                ((*good, "--quiet\nly"), "--quiet"),
                ((*good, "--start-only"), "--start-only"),
                ((*good, "--tool"), "--tool")):
            with self.subTest(arguments):
                done = self.run_post(*map(os.fsencode, arguments))
                self.assertEqual((done.returncode, done.stdout), (2, b""))
                self.assertRegex(done.stderr.decode(), r"\Akqu-post: [^\n]+\n\Z")
                self.assertIn(told, done.stderr.decode())
        self.assertEqual(listener.has_come(), [])
        with open("/dev/full", "wb") as full:
            done = subprocess.run([COMMAND, "--help"], stdout=full, stderr=subprocess.PIPE, timeout=30, check=False)
        self.assertEqual((done.returncode, done.stderr), (1, b"kqu-post: No space left on device\n"))

    def test_too_large_numbers_and_keys_of_others_are_posted_with_a_warning_or_when_asked_for(self):
        listener = self.listen("session")
        done = self.run_post("--any-key", "--tool=scanner", "--name=KQS_disk", "Progress=1001", "--", "-x=2")
        self.assertEqual((done.returncode, done.stderr), (0, b"kqu-post: warning: Progress is more than 1000: 1001\n"))
        self.assertEqual(listener.has_come()[0].get_args_list()[2], {"Progress": "1001", "-x": "2"})

    def test_no_bus_is_told_and_the_other_bus_is_no_substitute(self):
        self.listen("session")
        for kind, arguments in (("system", ["--system"]), ("session", [])):
            self.bus[kind].stop()
            done = self.run_post("--tool", "scanner", "--name", "KQS_disk", *arguments)
            self.assertEqual((done.returncode, done.stdout), (1, b""))
            self.assertRegex(done.stderr.decode(), rf"\Akqu-post: no {kind} bus: [^\n]+\n\Z")

    def test_help_and_manuals_know_every_option_and_key(self):
        both = "--tool --name --system --no-start --help --version "
        for command, words in (
                ("kqu-post", "--start-only --any-key --any-value " + " ".join((*KEYS, *KEYS.values()))),
                ("kqu-run", "--after --volume --destination --verbose rsync restic 125")):
            told = lambda option: subprocess.run([COMMAND.with_name(command), option], timeout=30,
                                                 check=True, capture_output=True, text=True).stdout
            manual = (ROOT / "post" / command / f"{command}.1").read_text().replace("\\-", "-")
            for word in (both + words).split():
                self.assertIn(word, told("--help"))
                self.assertIn(word, manual)
            self.assertRegex(told("--version"), rf"\A{command} \d+\.\d+\.\d+\n\Z")
