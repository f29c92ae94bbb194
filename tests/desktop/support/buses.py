"""Private message buses, and the stand-in for logind on one of them."""

import os
import signal

import dbus
import dbus.bus
import dbus.lowlevel

from support.waiting import wait_until

CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>{kind}</type>
  <listen>unix:path={socket}</listen>
  <servicedir>{services}</servicedir>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow user="*"/>
    <allow own="*"/>
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
  </policy>
  <limit name="max_message_size">1000000000</limit>
  <limit name="max_incoming_bytes">1000000000</limit>
  <limit name="max_outgoing_bytes">1000000000</limit>
</busconfig>
"""


class Bus:
    """A bus daemon of one kind, "session" or "system". It keeps its address when it is started
    anew. `services` is a folder for the files of what can be started by name."""

    def __init__(self, kind, processes, env, owner=None):
        self.kind = kind
        self._processes, self._env, self._owner = processes, env, owner
        self._folder = processes.folder / f"{kind}-bus"
        self._folder.mkdir()
        if owner is not None:
            os.chown(self._folder, owner, -1)
        self._folder.chmod(0o755)
        socket = self._folder / "socket"
        self.services = self._folder / "services"
        self.services.mkdir()
        self.address = f"unix:path={socket}"
        self._configuration = self._folder / "bus.conf"
        self._configuration.write_text(
            CONFIGURATION.format(kind=kind, socket=socket, services=self.services))
        self._daemon = None
        self._connection = None

    def start(self):
        options = {} if self._owner is None else {"user": self._owner, "extra_groups": []}
        self._daemon = self._processes.start(
            ["dbus-daemon", "--nofork", "--nopidfile", f"--config-file={self._configuration}"],
            self._env, log=f"{self.kind}-bus.log", **options)
        wait_until(f"the {self.kind} bus to answer", self._answers)

    def _answers(self):
        if self._daemon.poll() is not None:
            raise AssertionError(f"dbus-daemon ended: {self._daemon.log.read_text()}")
        try:
            self.connection()
        except dbus.DBusException:
            return False
        return True

    def stop(self, with_signal=signal.SIGTERM):
        if self._connection is not None:
            self._connection.close()
            self._connection = None
        if self._daemon is not None:
            self._processes.end(self._daemon, with_signal)
            self._daemon = None

    def connection(self):
        """The test's own connection to this bus."""
        if self._connection is None:
            self._connection = dbus.bus.BusConnection(self.address)
            self._connection.set_exit_on_disconnect(False)
        return self._connection

    def _daemon_interface(self, interface):
        return dbus.Interface(self.connection().get_object(
            "org.freedesktop.DBus", "/org/freedesktop/DBus", introspect=False), interface)

    def names_of(self, pid):
        """The unique names of the connections of a process."""
        return {name for name in self.connection().list_names()
                if name.startswith(":") and self.pid_of(name) == pid}

    def hears(self, pid, interface):
        """Whether a connection of this process has asked for signals of this interface."""
        stats = self._daemon_interface("org.freedesktop.DBus.Debug.Stats")
        return any(self.pid_of(name) == pid and any(interface in rule for rule in rules)
                   for name, rules in stats.GetAllMatchRules().items())

    def pid_of(self, name):
        """The process that owns a name; None where nobody does."""
        try:
            return self._daemon_interface("org.freedesktop.DBus").GetConnectionUnixProcessID(name)
        except dbus.DBusException:
            return None


class Logind:
    """python3-dbusmock's logind on the private system bus."""

    MANAGER = "org.freedesktop.login1.Manager"

    def __init__(self, bus, processes, env):
        self._bus = bus
        self.process = processes.start(
            ["/usr/bin/python3", "-m", "dbusmock", "--system", "--template", "logind"], env,
            log="logind.log")
        wait_until("the stand-in for logind",
                   lambda: bus.connection().name_has_owner("org.freedesktop.login1"))

    def _interface(self, name):
        return dbus.Interface(self._bus.connection().get_object(
            "org.freedesktop.login1", "/org/freedesktop/login1", introspect=False), name)

    def inhibitors(self):
        """The locks that are held: (what, who, why, mode)."""
        return [tuple(str(part) for part in lock[:4])
                for lock in self._interface(self.MANAGER).ListInhibitors()]
