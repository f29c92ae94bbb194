"""Started by its name: before the first post, by whoever posts, for whoever is at the screen."""

import os
import shutil
import signal
import subprocess
import time

from support import ROOT, DesktopTest, hold, needs_root, wait_until
from support.panel import ROW
from support.power import SYSTEMD, Mock
from support.processes import ProcessFacts
from support.user_manager import UserManager
from support.waiting import wait_for_value

NAME = "com.brackwater.KQU_Messenger"
UNIT = "kqu-messenger.service"
NOBODY = 65534
# In seconds: a post that has nobody to wait for, on a busy machine.
AT_ONCE = 5
# What one that hangs is given.
PATIENCE = 10


class StartTest(DesktopTest):
    options = {"window_manager": None}

    def setUp(self):
        super().setUp()
        # The commands where every user may run them, beside each other as they are installed.
        self.programs = self.desktop.folder / "bin"
        self.programs.mkdir()
        for program in ("kqu-post", "kqu-messenger"):
            shutil.copy(self.desktop.build / program, self.programs)
        self.addCleanup(self.end_started)

    def end_started(self):
        for pid in self.started():
            os.kill(pid, signal.SIGTERM)
        wait_until("the messengers to end", lambda: not self.started())

    def started(self):
        """The messengers that run on this desktop, whoever started them."""
        return [pid for pid, name in self.desktop.processes.marked().items()
                if name == "kqu-messenger"]

    def made(self, file):
        """What is installed from one of the templates."""
        return (ROOT / "packaging" / f"{file}.in").read_text().replace(
            "@CMAKE_INSTALL_FULL_BINDIR@", str(self.programs))

    def offer(self, program="kqu-messenger"):
        """Lets the session bus know how to start the messenger."""
        (self.desktop.session_bus.services / f"{NAME}.service").write_text(
            self.made(f"{NAME}.service").replace("kqu-messenger\n", program + "\n", 1))

    def run_post(self, *arguments, number=None, prefix=()):
        """Runs kqu-post to its end; with a number it posts that row."""
        row = () if number is None else (
            "--tool=scanner", f"--name=KQS_disk.{number}", f"PID={os.getpid()}")
        return subprocess.run([*prefix, self.programs / "kqu-post", *arguments, *row], timeout=30,
                              env=self.desktop.env, capture_output=True, text=True, check=False)

    def post(self, number, *arguments, prefix=()):
        began = time.monotonic()
        done = self.run_post(*arguments, number=number, prefix=prefix)
        self.assertEqual((done.returncode, done.stdout, done.stderr), (0, "", ""))
        return time.monotonic() - began


class StartBySessionBus(StartTest):
    def test_the_first_post_starts_it_and_is_not_lost_and_the_next_finds_it(self):
        self.offer()
        self.post(1)
        self.panel.wait_visible()
        running = self.started()
        self.assertEqual(len(running), 1)
        self.post(2)
        self.post(3, "--system")
        self.panel.wait_height(3 * ROW)
        self.assertEqual(self.started(), running)

    def test_on_the_system_bus_all_but_root_start_it_in_their_own_session(self):
        self.offer()
        prefix = ["setpriv", f"--reuid={NOBODY}", "--clear-groups"] if os.geteuid() == 0 else []
        self.post(1, "--system", prefix=prefix)
        self.assertEqual(len(self.started()), 1)

    def test_it_is_posted_all_the_same_where_it_is_not_started(self):
        self.assertLess(self.post(1), AT_ONCE)
        self.assertEqual(self.run_post("--start-only").returncode, 1)
        self.offer("no-such-program")
        self.assertLess(self.post(1), AT_ONCE)
        self.offer()
        self.assertLess(self.post(1, "--no-start"), AT_ONCE)
        self.assertEqual(self.started(), [])
        self.desktop.processes.end(self.desktop.xserver)
        self.assertLess(self.post(1), AT_ONCE)
        self.assertEqual(self.started(), [])

    def test_it_is_not_waited_for_without_end(self):
        shutil.copy(shutil.which("sleep"), self.programs / "kqu-messenger")
        self.offer("kqu-messenger 60")
        self.assertGreater(self.post(1), PATIENCE - 1)

    def test_one_that_was_started_by_hand_is_not_started_again(self):
        bus = self.desktop.session_bus
        manager = Mock(self.desktop, bus, SYSTEMD, [("StartUnit", "ss", "o", "ret = '/job'")])
        running = self.desktop.start_messenger()
        wait_for_value("the owner", lambda: bus.pid_of(NAME), running.pid)
        self.post(1)
        self.panel.wait_visible()
        self.assertEqual(list(manager.mock().GetCalls()), [])

    def test_copies_live_side_by_side_and_the_name_goes_from_one_to_the_next(self):
        bus = self.desktop.session_bus
        first = self.desktop.start_messenger()
        wait_for_value("the owner", lambda: bus.pid_of(NAME), first.pid)
        second = self.desktop.launch_messenger()
        self.desktop.wait_listening()
        hold("both copies", lambda: bus.pid_of(NAME) == first.pid and second.poll() is None, 1)
        first.terminate()
        self.assertEqual(first.wait(10), 0)
        wait_for_value("the owner", lambda: bus.pid_of(NAME), second.pid)
        bus.stop()
        bus.start()
        wait_for_value("the owner", lambda: bus.pid_of(NAME), second.pid)
        self.desktop.post("KQS_disk.1", "scanner", PID=os.getpid())
        self.panel.wait_visible()
        self.assertEqual(self.desktop.messenger_output(), "")


class StartByRoot(StartTest):
    @staticmethod
    def log_in(prefix, session, user, of_class="user", state="active"):
        """A session that the seat shows from now on, as sd-login reads it."""
        subprocess.run([*prefix, "sh", "-ec", "cd /run/systemd; mkdir -p seats sessions; echo \"$1\" >seats/seat0; "
                        f"echo \"$2\" >sessions/{session}", "sh", f"ACTIVE={session}\nACTIVE_UID={user}",
                        f"CLASS={of_class}\nSTATE={state}"], check=True)

    def assert_not_started(self, prefix=()):
        self.assertLess(self.post(1, "--system", prefix=prefix), AT_ONCE)
        self.assertEqual(self.started(), [])

    def test_nobody_at_the_seat(self):
        self.assert_not_started()

    @needs_root
    def test_it_is_started_for_the_user_at_the_seat_and_nobody_else(self):
        units = self.desktop.folder / "units"
        units.mkdir()
        (units / UNIT).write_text(self.made(UNIT).replace(  # a slow machine loses no post
            "[Service]\n", "[Service]\nExecStartPre=/bin/sleep 3\n"))
        manager = UserManager(self.desktop, NOBODY, units)
        prefix = manager.inside()
        self.log_in(prefix, "own", NOBODY)
        self.assert_not_started(prefix)  # as long as the manager knows no display
        manager.tell_display()
        for session in (("greeter", NOBODY, "greeter"), ("other", NOBODY - 1),
                        ("ending", NOBODY, "user", "closing")):
            self.log_in(prefix, *session)
            self.assert_not_started(prefix)
        self.log_in(prefix, "again", NOBODY)
        self.post(1, "--system", prefix=prefix)
        self.panel.wait_visible()
        running = self.started()
        self.assertEqual(ProcessFacts(*running).ids("Uid"), [NOBODY] * 4)
        job = self.desktop.start_job()
        self.desktop.post_on_system_bus("KQS_disk.2", job.pid)
        self.panel.wait_height(2 * ROW)
        self.desktop.end_job(job)
        self.panel.wait_height(ROW)  # so it can list processes under its unit's limits
        self.assertEqual(self.started(), running)
        bus = ("systemctl", "--user", "kill", "dbus.service", "--signal")
        manager.ask(*bus, "STOP").check_returncode()
        first = self.post(1, "--system", prefix=prefix)  # one that says nothing is waited for once
        self.assertLess(first, PATIENCE - 1)
        self.assertLess(self.post(1, "--system", prefix=prefix), first)
        manager.ask(*bus, "CONT").check_returncode()
