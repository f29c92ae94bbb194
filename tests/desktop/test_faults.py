"""Faults of what the program leans on: message buses that are killed, and a list of processes that
hangs."""

import os
import shutil
import signal

from support import DesktopTest, mounts, posting
from support.panel import ROW
from support.waiting import hold, wait_for_value, wait_until


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
        # On each bus one that listens and one that keeps the machine awake; and the display.
        pid = self.desktop.messenger.pid
        wait_for_value("the connections", lambda: [len(bus.names_of(pid)) for bus in buses], [2, 2])
        descriptors = self.desktop.messenger_facts().descriptors().values()
        self.assertEqual(sum("socket" in target for target in descriptors), 2 + 2 + 1)
        self.assertEqual(self.desktop.messenger_output(), "")


class ListOfProcesses(DesktopTest):
    options = {"window_manager": None}

    def let_ps(self, script):
        new = self.desktop.folder / "new"
        new.write_text(script + "\n")
        new.rename(self.desktop.folder / "does")

    def test_one_that_hangs_holds_the_panel_up_and_costs_it_nothing(self):
        folder = self.desktop.folder
        real = shutil.copy("/bin/ps", folder / "real-ps")
        self.let_ps('exec "$real" "$@"')
        ps = folder / "ps"
        ps.write_text(f'#!/bin/sh\nreal={real}\n. {folder}/does\n')
        ps.chmod(0o755)
        self.desktop.start_messenger(*mounts.with_file(ps, "/bin/ps"))
        self.desktop.wait_listening()
        for number in range(2):
            self.desktop.post(f"KQS_disk.{number}", "scanner", PID=os.getpid())
        self.panel.wait_height(2 * ROW)
        hold("the rows", lambda: self.panel.geometry().height == 2 * ROW, 3.5)
        hanging, gate = folder / "hanging", folder / "gate"
        os.mkfifo(gate)
        self.let_ps(f'"$real" "$@"; touch {hanging}; cat {gate}')
        wait_until("a list that hangs", hanging.exists)
        self.let_ps('exec "$real" "$@"')
        self.desktop.post("KQS_disk.new", "scanner", PID=os.getpid())
        hold("the panel as it was", lambda: self.panel.geometry().height == 2 * ROW, 4)
        gate.write_text("")
        self.panel.wait_height(3 * ROW)
        hold("all rows", lambda: self.panel.geometry().height == 3 * ROW, 3.5)
        self.assertEqual(self.desktop.messenger_output(), "")
