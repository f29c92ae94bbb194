"""Who keeps the machine awake: the distribution's own login manager beside a system that only says
it sleeps."""

import os

import dbus

from support.waiting import wait_until

# Another version's can be named, together with the loader and the libraries that it takes.
LOGIND = os.environ.get("KQU_LOGIND", "/lib/systemd/systemd-logind")
MOCK = "org.freedesktop.DBus.Mock"
SYSTEMD = ("org.freedesktop.systemd1", "/org/freedesktop/systemd1",
           "org.freedesktop.systemd1.Manager")
POLKIT = ("org.freedesktop.PolicyKit1", "/org/freedesktop/PolicyKit1/Authority",
          "org.freedesktop.PolicyKit1.Authority")
JOB = "/org/freedesktop/systemd1/job/1"


class Mock:
    """A service by python3-dbusmock: `methods` are (name, arguments, results, code)."""

    def __init__(self, desktop, bus, service, methods):
        self.bus, self.service = bus, service
        self.process = desktop.processes.start(
            ["/usr/bin/python3", "-m", "dbusmock", f"--{bus.kind}", *service], desktop.env,
            log=f"{service[0]}.log")
        wait_until(service[0], lambda: bus.connection().name_has_owner(service[0]))
        self.mock().AddMethods(service[2], methods)

    def mock(self):
        return self.interface(MOCK)

    def interface(self, name=None):
        return dbus.Interface(self.bus.connection().get_object(
            *self.service[:2], introspect=False), name or self.service[2])


class LoginManager:
    """The login manager of the distribution. It takes root: it sees a /run of its own, which lasts
    over its restarts, a kernel that can sleep, and no network. polkit allows all but to pass a
    lock. Needs a desktop without another one."""

    def __init__(self, desktop):
        self._desktop = desktop
        self._bus = desktop.system_bus
        self._systemd = Mock(desktop, self._bus, SYSTEMD, [
            ("Subscribe", "", "", ""), ("StartUnit", "ss", "o", f"ret = '{JOB}'")])
        for target in ("suspend", "poweroff", "reboot"):
            self._systemd.mock().AddObject(
                f"{SYSTEMD[1]}/unit/{target}_2etarget", "org.freedesktop.systemd1.Unit",
                {"LoadState": "loaded", "ActiveState": "inactive"}, dbus.Array([], "(ssss)"))
        Mock(desktop, self._bus, POLKIT, [
            ("CheckAuthorization", "(sa{sv})sa{ss}us", "(bba{ss})",
             "ret = (not str(args[1]).endswith('-ignore-inhibit'), False, {})")])
        for name, lines in (("state", "freeze mem"), ("mem_sleep", "[s2idle]"), ("disk", "")):
            file = desktop.folder / "power" / name
            file.parent.mkdir(exist_ok=True)
            file.write_text(lines + "\n")
        (desktop.folder / "run" / "systemd").mkdir(parents=True)
        self.process = None
        self.start()

    def start(self):
        folder = self._desktop.folder
        self.process = self._desktop.processes.start(
            ["unshare", "--mount", "--net", "sh", "-c",
             f"mount --bind {folder}/run /run && mount --bind {folder}/power /sys/power &&"
             f" exec {LOGIND}"], self._desktop.env, log="logind.log")
        wait_until("the login manager",
                   lambda: self._bus.connection().name_has_owner("org.freedesktop.login1"))

    def _interface(self):
        return dbus.Interface(self._bus.connection().get_object(
            "org.freedesktop.login1", "/org/freedesktop/login1", introspect=False),
            "org.freedesktop.login1.Manager")

    def inhibitors(self):
        """The locks that are held, sorted: (what, who, why, mode)."""
        return sorted(tuple(str(part) for part in lock[:4])
                      for lock in self._interface().ListInhibitors())

    def end_job(self):
        """What the system was told to do is done, and over."""
        self._systemd.mock().EmitSignal(
            SYSTEMD[2], "JobRemoved", "uoss",
            dbus.Array([dbus.UInt32(1), dbus.ObjectPath(JOB), "a.target", "done"], "v"))
