"""Sleep and shutdown: who keeps the machine awake for the program, and how it looks from outside."""

import os
import pwd
import signal
import subprocess

from support import DesktopTest, needs_root
from support.buses import Logind
from support.power import LoginManager, power_manager, session_manager
from support.waiting import PROMPTLY, hold, wait_for_value, wait_until

WHO = "KQU Messenger"
OWN, OTHER, ROOT = (pwd.getpwnam(name).pw_uid for name in ("daemon", "nobody", "root"))
# The first that holds its own user's requests off, and root's.
STRICT = 257


def locks(why):
    return [(what, WHO, why, "block") for what in ("shutdown", "sleep")]


class Power(DesktopTest):
    options = {"window_manager": None}

    def start_row(self, number=1, volume="Data"):
        job = self.desktop.start_job()
        self.desktop.post(f"KQS_disk.{number}", "scanner", PID=job.pid, VolName=volume)
        return job


@needs_root  # for a login manager in name spaces of its own
class WithTheLoginManager(Power):
    """The program runs as a user who is not root."""

    def setUp(self):
        super().setUp()
        self.logind = LoginManager(self.desktop)
        self.start()

    def start(self, *prefix):
        self.desktop.start_messenger(*prefix, "setpriv", f"--reuid={OWN}", f"--regid={OWN}",
                                     "--clear-groups")
        self.desktop.wait_listening()

    def wait_locks(self, why=None):
        wait_for_value("the locks", self.logind.inhibitors, locks(why) if why else [],
                       PROMPTLY)

    def request(self, user, action):
        """The login manager's refusal of a request by that user; empty where it is met."""
        asked = subprocess.run(
            ["busctl", "call", "org.freedesktop.login1", "/org/freedesktop/login1",
             "org.freedesktop.login1.Manager", action, "b", "false"], env=self.desktop.env,
            user=user, group=user, extra_groups=[], capture_output=True, text=True, check=False,
            timeout=20)
        if not asked.returncode:
            self.logind.end_job()
        return asked.stderr.strip()

    def test_each_service_holds_the_machine_awake_and_lets_it_go(self):
        session, power = session_manager(self.desktop), power_manager(self.desktop)
        job = self.start_row()
        self.wait_locks("Scanning Data")
        wait_for_value("the session manager", session.held,
                       ["com.brackwater.KQU_Messenger 0 Scanning Data 5"])
        wait_for_value("the power manager", power.held, [f"{WHO} Scanning Data"])
        self.assertIn("Scanning Data", self.desktop.output("systemd-inhibit", "--list"))
        version = int(self.desktop.output("busctl", "--version").split()[1])
        for user in (OWN, OTHER, ROOT):
            for action in ("Suspend", "PowerOff", "Reboot"):
                with self.subTest(user=user, action=action):
                    refusal = self.request(user, action)
                    print(f"user {user}, {action}: {refusal or 'goes through'}")
                    self.assertTrue(refusal or (user != OTHER and version < STRICT), refusal)
        self.desktop.end_job(job)
        self.panel.wait_hidden(PROMPTLY)
        self.wait_locks()
        for service in (session, power):
            wait_for_value("the session", service.held, [], PROMPTLY)

    def test_a_lock_that_a_sleep_refused_is_there_when_it_is_over(self):
        # While somebody delays a sleep, the login manager refuses further locks on it.
        delaying = self.desktop.processes.start(
            ["systemd-inhibit", "--what=sleep", "--mode=delay", "sleep", "600"], self.desktop.env)
        wait_until("the delay", self.logind.inhibitors)
        self.logind.suspend()
        self.start_row()
        wait_until("the other lock", lambda: len(self.logind.inhibitors()) == 2)
        self.desktop.processes.end(delaying)
        wait_for_value("the locks", self.logind.inhibitors, locks("Scanning Data")[:1])
        self.logind.end_job()
        self.wait_locks("Scanning Data")

    def test_the_locks_come_back_with_a_login_manager_that_was_killed(self):
        names = self.desktop.system_bus.names_of(self.desktop.messenger.pid)
        # Once with a question under way, and once with locks that were held.
        self.logind.process.send_signal(signal.SIGSTOP)
        self.start_row()
        self.panel.wait_visible()
        for _ in range(2):
            self.desktop.processes.end(self.logind.process, signal.SIGKILL)
            self.logind.start()
            self.wait_locks("Scanning Data")
        self.assertEqual(self.desktop.system_bus.names_of(self.desktop.messenger.pid), names)

    def test_one_that_hangs_holds_nothing_up(self):
        power = power_manager(self.desktop)
        self.logind.process.send_signal(signal.SIGSTOP)
        job = self.start_row()
        self.panel.wait_visible()
        wait_until("the power manager", power.held)
        self.desktop.end_job(job)
        wait_for_value("the power manager", power.held, [])
        self.logind.process.send_signal(signal.SIGCONT)
        # What it was asked for comes first.
        self.wait_locks()

    def test_a_policy_that_forbids_the_request_costs_nothing_else(self):
        bus = self.desktop.system_bus
        bus.forbid("org.freedesktop.login1.Manager", "Inhibit")
        power = power_manager(self.desktop)
        before = bus.names_of(self.desktop.messenger.pid)
        job = self.start_row()
        wait_until("the power manager", power.held)
        self.assertEqual(self.logind.inhibitors(), [])
        # Longer than it takes to try a bus again that was lost.
        hold("the connections", lambda: bus.names_of(self.desktop.messenger.pid) == before, 4)
        self.desktop.end_job(job)
        wait_for_value("the power manager", power.held, [])

    def test_no_lock_outlives_the_process_in_a_child_of_it_either(self):
        self.desktop.messenger.terminate()
        self.desktop.wait_exit()
        # A list of processes that takes until somebody writes.
        slow, end = self.desktop.folder / "ps", self.desktop.folder / "end"
        os.mkfifo(end)
        slow.write_text(f"#!/bin/sh\nexec cat {end}\n")
        slow.chmod(0o755)
        self.start("unshare", "--mount", "sh", "-c",
                   f'mount --bind {slow} /bin/ps && exec "$0" "$@"')
        self.start_row()
        self.wait_locks("Scanning Data")
        wait_until("a child", self.desktop.messenger_facts().children)
        self.desktop.messenger.kill()
        self.desktop.messenger.wait(10)
        self.wait_locks()
        end.write_text("")


class WithTheSession(Power):
    def test_a_service_is_asked_whenever_it_is_there_and_what_it_gave_is_given_back(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        job = self.start_row()
        self.panel.wait_visible()
        session = session_manager(self.desktop)
        wait_until("the session manager", session.held)
        other = self.start_row(2, "Home")
        wait_for_value("the reason", session.held,
                       ["com.brackwater.KQU_Messenger 0 Scanning Data, Scanning Home 5"])
        self.desktop.processes.end(session.process, signal.SIGKILL)
        session = session_manager(self.desktop)
        wait_until("the session manager", session.held)
        # It answers when nobody waits for it any more.
        power = power_manager(self.desktop)
        wait_until("the power manager", power.held)
        for ended in (job, other):
            self.desktop.end_job(ended)
        wait_for_value("the sessions", lambda: session.held() + power.held(), [])
        session.process.send_signal(signal.SIGSTOP)
        job = self.start_row(3)
        wait_until("the power manager", power.held)
        self.desktop.end_job(job)
        wait_for_value("the power manager", power.held, [])
        session.process.send_signal(signal.SIGCONT)
        wait_for_value("the session manager", session.held, [])
        self.assertEqual(self.desktop.messenger_output(), "")

    def test_the_locks_come_back_with_a_bus_that_went_away(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        self.start_row()
        self.panel.wait_visible()
        self.desktop.system_bus.stop()
        self.desktop.system_bus.start()
        # One that is started later is found.
        logind = Logind(self.desktop.system_bus, self.desktop.processes, self.desktop.env)
        wait_for_value("the locks", lambda: sorted(logind.inhibitors()), locks("Scanning Data"))
        self.assertEqual(logind.calls(), {"Inhibit", "ListInhibitors"})


class PowerSource(DesktopTest):
    options = {"window_manager": None, "logind": True}

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
        return len(self.desktop.logind.inhibitors()) == 2

    @needs_root  # to stand in for the kernel's supplies
    def test_the_lock_follows_the_power_source_while_a_job_runs(self):
        self.set_source("1")
        supplies = self.desktop.folder / "supplies"
        prefix = ["unshare", "--mount", "sh", "-c",
                  f'mount --bind {supplies} /sys/class/power_supply && exec "$0"']
        self.desktop.start_messenger(*prefix)
        self.desktop.wait_listening()
        self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid())
        for online in ("1", "0", "1", "0"):
            self.set_source(online)
            wait_for_value("the lock", self.has_block, online == "1")
