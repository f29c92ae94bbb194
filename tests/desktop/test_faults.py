"""Faults of what the program leans on: message buses that are killed, and a list of processes that
hangs or tells nothing."""

import os
import shutil
import signal
import time

from support import Desktop, DesktopTest, mounts, posting
from support.panel import ROW
from support.waiting import hold, wait_until


class Buses(DesktopTest):
    options = {"window_manager": None, "logind": True}

    def test_a_bus_that_is_killed_takes_no_row_and_is_heard_again(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        buses = (self.desktop.session_bus, self.desktop.system_bus)
        for number, (bus, other) in enumerate((buses, buses[::-1])):
            with self.subTest(killed=bus.kind):
                post = lambda on, name: posting.post_by_command(
                    "kqu-post", on, self.desktop.env, f"KQS_disk.{number}{name}", "scanner",
                    {"PID": os.getpid()}, self.desktop.build / "kqu-post")
                rows = 3 * number
                post(bus, "before")
                self.panel.wait_height((rows + 1) * ROW)
                bus.stop(signal.SIGKILL)
                # Also over a pass of the reaper.
                hold("the row", lambda: self.panel.geometry().height == (rows + 1) * ROW, 3.5)
                post(other, "meanwhile")
                self.panel.wait_height((rows + 2) * ROW)
                bus.start()
                self.desktop.wait_listening(bus)
                post(bus, "after")
                self.panel.wait_height((rows + 3) * ROW)
        facts = self.desktop.messenger_facts()
        sockets = sum("socket" in target for target in facts.descriptors().values())
        self.assertLessEqual(sockets, 4, "the display, two listeners and the login manager")
        self.assertEqual(self.desktop.messenger_output(), "")


class ListOfProcesses(DesktopTest):
    options = {"window_manager": None}

    def start_with_ps(self, desktop):
        """From then on the shell script "does" is what lists the processes."""
        desktop.real = shutil.copy("/bin/ps", desktop.folder / "real-ps")
        desktop.does = desktop.folder / "does"
        self.let_ps(desktop, 'exec "$real" "$@"')
        ps = desktop.folder / "ps"
        ps.write_text(f'#!/bin/sh\nreal={desktop.real}\n. {desktop.does}\n')
        ps.chmod(0o755)
        desktop.start_messenger(*mounts.with_file(ps, "/bin/ps"))
        desktop.wait_listening()
        for number in range(2):
            desktop.post(f"KQS_disk.{number}", "scanner", PID=os.getpid())
        desktop.panel.wait_height(2 * ROW)

    def let_ps(self, desktop, script):
        new = desktop.folder / "new"
        new.write_text(script + "\n")
        new.rename(desktop.does)

    def test_one_that_hangs_holds_the_panel_up_and_costs_it_nothing(self):
        self.start_with_ps(self.desktop)
        hold("the rows", lambda: self.panel.geometry().height == 2 * ROW, 3.5)
        hanging = self.desktop.folder / "hanging"
        gate = self.desktop.folder / "gate"
        os.mkfifo(gate)
        self.let_ps(self.desktop, f'"$real" "$@"; touch {hanging}; cat {gate}')
        wait_until("a list that hangs", hanging.exists)
        self.let_ps(self.desktop, 'exec "$real" "$@"')
        self.desktop.post("KQS_disk.new", "scanner", PID=os.getpid())
        hold("the panel as it was", lambda: self.panel.geometry().height == 2 * ROW, 4)
        gate.write_text("")
        self.panel.wait_height(3 * ROW)
        hold("all rows", lambda: self.panel.geometry().height == 3 * ROW, 3.5)
        self.assertEqual(self.desktop.messenger_output(), "")

    def test_one_that_tells_nothing_or_nonsense_has_every_row_go_and_the_program_end(self):
        desktops = {}
        for script in (":", "exit 1", "head -c 300000 /dev/urandom",
                       f"printf '  PID\\r\\n %s\\r\\n{os.getpid()}'; exit 3"):
            desktop = Desktop(window_manager=None)
            self.addCleanup(desktop.stop)
            self.start_with_ps(desktop)
            self.let_ps(desktop, script)
            desktops[script] = desktop
        for script, desktop in desktops.items():
            with self.subTest(script):
                desktop.panel.wait_hidden()
        for script, desktop in desktops.items():
            with self.subTest(script):
                self.assertEqual(desktop.wait_exit(14), 0)
                self.assertEqual(desktop.messenger_output(), "")
