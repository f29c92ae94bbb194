"""Sleep and shutdown: the locks that the program holds at the login manager, and why."""

import os
import signal

import dbus

from support import DesktopTest
from support.buses import Logind
from support.waiting import hold, wait_for_value, wait_until

ACTIONS = "sleep:shutdown"
WHO = "KQU Messenger"
# In seconds: what is promised, and a quarter for the way to the login manager and back.
PROMPTLY = 1.25


class Power(DesktopTest):
    options = {"window_manager": None, "logind": True}

    def setUp(self):
        super().setUp()
        self.logind = self.desktop.logind
        self.desktop.start_messenger()
        self.desktop.wait_listening()

    def modes(self):
        """The modes of the program's locks, sorted."""
        locks = self.logind.inhibitors()
        self.assertTrue(all(lock[:2] == (ACTIONS, WHO) for lock in locks), locks)
        return sorted(lock[3] for lock in locks)

    def wait_modes(self, *modes, timeout=20.0):
        wait_for_value("the locks", self.modes, list(modes), timeout)

    def reasons(self):
        return [lock[2] for lock in self.logind.inhibitors() if lock[3] == "block"]

    def start_row(self, number=1, volume="Data"):
        job = self.desktop.start_job()
        self.desktop.post(f"KQS_disk.{number}", "scanner", PID=job.pid, VolName=volume)
        return job

    def test_a_lock_is_held_while_a_job_runs_and_names_it(self):
        self.wait_modes("delay")
        job = self.start_row()
        self.wait_modes("block", "delay", timeout=PROMPTLY)
        self.assertEqual(self.reasons(), ["Scanning Data"])
        other = self.start_row(2, "Home")
        wait_for_value("the reason", self.reasons, ["Scanning Data, Scanning Home"])
        hold("the locks", lambda: self.modes() == ["block", "delay"], 1)
        for ended in (job, other):
            self.desktop.end_job(ended)
        self.panel.wait_hidden()
        self.wait_modes("delay", timeout=PROMPTLY)

    def test_the_locks_come_back_with_a_bus_that_went_away(self):
        self.start_row()
        self.wait_modes("block", "delay")
        self.desktop.system_bus.stop()
        self.start_row(2)
        self.panel.wait_title("Brackwater Scheduled Tasks")
        self.desktop.system_bus.start()
        self.logind = Logind(self.desktop.system_bus, self.desktop.processes, self.desktop.env)
        self.wait_modes("block", "delay", timeout=8)

    def test_a_login_manager_that_hangs_holds_nothing_up(self):
        self.wait_modes("delay")
        self.logind.process.send_signal(signal.SIGSTOP)
        job = self.start_row()
        self.panel.wait_visible(3)
        self.start_row(2)
        self.panel.wait_title("Brackwater Scheduled Tasks", 3)
        self.logind.process.send_signal(signal.SIGCONT)
        self.wait_modes("block", "delay")
        self.desktop.end_job(job)

    def test_no_lock_outlives_the_process(self):
        for number in (signal.SIGTERM, signal.SIGKILL):
            with self.subTest(number):
                self.start_row()
                self.wait_modes("block", "delay")
                self.desktop.messenger.send_signal(number)
                self.desktop.messenger.wait(10)
                self.wait_modes(timeout=PROMPTLY)
                self.desktop.start_messenger()
                self.desktop.wait_listening()

    def test_it_asks_for_locks_and_for_nothing_else(self):
        for wish in ("sleep", "shutdown"):
            job = self.desktop.start_job()
            self.desktop.post("KQS_disk.1", "scanner", PID=job.pid, Extra=wish)
            self.wait_modes("block", "delay")
            self.desktop.end_job(job)
            self.wait_modes("delay")
        calls = dbus.Interface(self.desktop.system_bus.connection().get_object(
            "org.freedesktop.login1", "/org/freedesktop/login1", introspect=False),
            "org.freedesktop.DBus.Mock").GetCalls()
        # The second is the test's own.
        self.assertEqual({str(call[1]) for call in calls}, {"Inhibit", "ListInhibitors"})


class WithoutLogind(DesktopTest):
    options = {"window_manager": None}

    def test_nothing_else_changes(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid())
        self.panel.wait_visible()
        # One that is started later is found.
        logind = Logind(self.desktop.system_bus, self.desktop.processes, self.desktop.env)
        wait_until("the locks", lambda: len(logind.inhibitors()) == 2)
        self.assertEqual(self.desktop.messenger_output(), "")


class PowerSource(DesktopTest):
    options = Power.options

    def set_source(self, online):
        """A laptop on mains or on its battery, as the kernel tells of it."""
        for name, values in (("AC", {"type": "Mains", "online": online}),
                             ("BAT0", {"type": "Battery", "scope": "System", "present": "1",
                                       "status": "Full" if online == "1" else "Discharging"})):
            folder = self.desktop.folder / "supplies" / name
            folder.mkdir(parents=True, exist_ok=True)
            for key, value in values.items():
                (folder / key).write_text(value + "\n")

    def has_block(self):
        return any(lock[3] == "block" for lock in self.desktop.logind.inhibitors())

    def test_the_lock_follows_the_power_source_while_a_job_runs(self):
        self.set_source("1")
        supplies = self.desktop.folder / "supplies"
        # Standing in for the kernel's supplies takes root; anybody else sees the machine's own.
        prefix = ["unshare", "--mount", "sh", "-c",
                  f'mount --bind {supplies} /sys/class/power_supply && exec "$0"']
        may = os.geteuid() == 0
        self.desktop.start_messenger(*(prefix if may else []))
        self.desktop.wait_listening()
        self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid())
        for online in ("1", "0", "1", "0"):
            self.set_source(online)
            wanted = online == "1" or not may
            wait_for_value("the lock", self.has_block, wanted, PROMPTLY)
