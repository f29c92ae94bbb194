"""Sleep and shutdown: who keeps the machine awake for the program, and how it looks from outside."""

import os
import pwd
import signal
import subprocess

from support import DesktopTest, needs_root
from support.power import LoginManager
from support.waiting import PROMPTLY, wait_for_value

WHO = "KQU Messenger"
OWN, OTHER, ROOT = (pwd.getpwnam(name).pw_uid for name in ("daemon", "nobody", "root"))
# The first that holds its own user's requests off, and root's.
STRICT = 257


def locks(why):
    return [(what, WHO, why, "block") for what in ("shutdown", "sleep")]


@needs_root  # for a login manager in name spaces of its own
class WithTheLoginManager(DesktopTest):
    """The program runs as a user who is not root."""

    options = {"window_manager": None}

    def setUp(self):
        super().setUp()
        self.logind = LoginManager(self.desktop)
        self.desktop.start_messenger("setpriv", f"--reuid={OWN}", f"--regid={OWN}", "--clear-groups")
        self.desktop.wait_listening()

    def start_row(self):
        job = self.desktop.start_job()
        self.desktop.post("KQS_disk.1", "scanner", PID=job.pid, VolName="Data")
        return job

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

    def test_it_holds_the_machine_awake_and_lets_it_go(self):
        job = self.start_row()
        self.wait_locks("Scanning Data")
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
