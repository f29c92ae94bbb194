"""The policy of the system bus: beside the distribution's own it changes one thing only."""

import os
import pathlib
import pwd
import shutil
import subprocess
import tempfile
import unittest

import dbus
import dbus.bus
import dbus.lowlevel
import dbus.mainloop.glib
from gi.repository import GLib

from support import ROOT
from support.posting import INTERFACE, MEMBER, PATH

BUILD = pathlib.Path(os.environ.get("KQU_BUILD", ROOT / "build" / "release")).resolve()
POLICY = ROOT / "packaging" / "com.brackwater.DistributedNotifications.conf"
CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <include>/usr/share/dbus-1/system.conf</include>
  {policy}
  <user>{user}</user>
</busconfig>
"""
ROOT_USER, NOBODY = 0, 65534
OTHER = "org.example.Other"
# Broadcasts a signal of either interface, calls the bus and the listener, and prints how the calls
# ended.
SENDER = f"""
import sys, dbus, dbus.bus, dbus.lowlevel
bus = dbus.bus.BusConnection(sys.argv[1])
for interface in ("{INTERFACE}", "{OTHER}"):
    bus.send_message(dbus.lowlevel.SignalMessage("{PATH}", interface, "{MEMBER}"))
for call in (("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "GetId"),
             (sys.argv[2], "{PATH}", "{INTERFACE}", "{MEMBER}")):
    try:
        bus.send_message_with_reply_and_block(dbus.lowlevel.MethodCallMessage(*call), 10.0)
        print("answered")
    except dbus.DBusException as error:
        print(error.get_dbus_name().rpartition(".")[2])
"""


class PolicyTest(unittest.TestCase):
    def setUp(self):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kqu-policy-"))
        self.addCleanup(shutil.rmtree, self.folder)
        self.folder.chmod(0o755)
        shutil.copy(BUILD / "kqu-post", self.folder)
        # Only root can be somebody else.
        self.users = [ROOT_USER, NOBODY] if os.geteuid() == 0 else [os.geteuid()]

    def start_bus(self, name, policy):
        """The distribution's system bus. Its address, and a listener that keeps what it hears."""
        configuration = self.folder / f"{name}.conf"
        configuration.write_text(CONFIGURATION.format(
            policy=policy, user=pwd.getpwuid(os.geteuid()).pw_name))
        daemon = subprocess.Popen(
            ["dbus-daemon", "--nofork", "--nopidfile", "--nosyslog", "--print-address",
             f"--config-file={configuration}", f"--address=unix:path={self.folder}/{name}"],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
        self.addCleanup(daemon.stdout.close)
        self.addCleanup(daemon.wait, 20)
        self.addCleanup(daemon.terminate)
        address = daemon.stdout.readline().strip()
        listener = dbus.bus.BusConnection(address, mainloop=dbus.mainloop.glib.DBusGMainLoop())
        listener.set_exit_on_disconnect(False)
        self.addCleanup(listener.close)
        listener.add_match_string(f"type='signal',member='{MEMBER}'")
        listener.heard = []
        listener.add_message_filter(lambda _, message: listener.heard.append(message) or
                                    dbus.lowlevel.HANDLER_RESULT_NOT_YET_HANDLED)
        return address, listener

    def run_as(self, user, *command, **env):
        other = ["setpriv", f"--reuid={user}", f"--regid={user}", "--clear-groups"]
        prefix = other if user != os.geteuid() else []
        return subprocess.run([*prefix, *command], env={"PATH": os.environ["PATH"], **env},
                              capture_output=True, text=True, timeout=60, check=False)

    def outcome(self, address, listener, user):
        """What is heard of a user's signals, how the calls end, and what kqu-post says."""
        listener.heard.clear()
        sent = self.run_as(user, "/usr/bin/python3", "-c", SENDER, address,
                           listener.get_unique_name())
        listener.get_object("org.freedesktop.DBus", "/", introspect=False).GetId(
            dbus_interface="org.freedesktop.DBus")
        while GLib.MainContext.default().iteration(False):
            pass
        heard = {message.get_interface() for message in listener.heard
                 if message.get_type() == dbus.lowlevel.MESSAGE_TYPE_SIGNAL}
        post = self.run_as(user, self.folder / "kqu-post", "--system", "--tool", "scanner", "--name",
                           "KQS_disk.1", DBUS_SYSTEM_BUS_ADDRESS=address)
        return heard & {INTERFACE, OTHER}, sent.stdout.split(), post.returncode, post.stderr

    def test_only_root_broadcasts_and_nothing_else_changes(self):
        stock = self.start_bus("stock", "")
        ours = self.start_bus("ours", f"<include>{POLICY}</include>")
        free = ({INTERFACE, OTHER}, ["answered", "AccessDenied"], 0, "")
        refused = ({OTHER}, ["answered", "AccessDenied"], 1,
                   "kqu-post: the bus has not taken the message: Permission denied\n")
        for user in self.users:
            self.assertEqual(self.outcome(*stock, user), free, user)
            self.assertEqual(self.outcome(*ours, user), free if user == ROOT_USER else refused, user)
