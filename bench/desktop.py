#!/usr/bin/python3
"""Measures the real program from outside, on a private X server, window manager and buses: how soon
it is there, what it weighs, and what it costs while nothing changes and while much does.

The program is that of the build in KQU_BUILD, by default the release preset's. Nothing here passes
or fails; the figures depend on the machine and on what else it does."""

import argparse
import os
import pathlib
import platform
import random
import select
import statistics
import subprocess
import sys
import time

import dbus
import dbus.lowlevel

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tests" / "desktop"), str(ROOT / "bench")]

# pylint: disable=wrong-import-position
from onlooker import Onlooker  # noqa: E402
from support import Desktop, wait_until  # noqa: E402
from support.panel import ROW  # noqa: E402
from support.posting import INTERFACE  # noqa: E402

ROWS = 10
UPDATES = 10_000
DEADLINE = 20.0
# A part of the first row that changes with its progress: where the percentage stands.
PERCENTAGE = (240, 38, 90, 16)


class Load:
    """What a process has used up to now, by the kernel's account."""

    def __init__(self, facts):
        folder = pathlib.Path("/proc", str(facts.pid))
        # The process's own clock, by its number: threads that have ended count as well.
        self.cpu_ms = time.clock_gettime(~facts.pid << 3 | 2) * 1e3
        times = (folder / "stat").read_text().rpartition(")")[2].split()[13:15]
        self.children_ms = sum(int(ticks) for ticks in times) * 1000 / os.sysconf("SC_CLK_TCK")
        self.wake_ups = facts.wake_ups()


class Ears:
    """Hears what is asked of a bus, the moment it is asked."""

    def __init__(self, desktop, bus, member="AddMatch"):
        self._bus = bus
        self._process = subprocess.Popen(
            ["dbus-monitor", "--address", bus.address, "--binary",
             f"type='method_call',member='{member}'",
             "type='signal',interface='com.brackwater.Bench'"],
            env=desktop.env, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
        wait_until("the bus monitor to hear", self._hears_us)

    def _hears_us(self):
        self._bus.connection().send_message(
            dbus.lowlevel.SignalMessage("/", "com.brackwater.Bench", "Heard"))
        self._bus.connection().flush()
        return select.select([self._process.stdout], [], [], 0.1)[0]

    def wait_for(self, text):
        """The monotonic time at which a request for that text was heard."""
        end = time.monotonic() + DEADLINE
        heard = b""
        while time.monotonic() < end:
            if select.select([self._process.stdout], [], [], end - time.monotonic())[0]:
                heard += os.read(self._process.stdout.fileno(), 65536)
                if text.encode() in heard:
                    return time.monotonic()
        raise RuntimeError(f"nobody asked for {text} in time")

    def close(self):
        self._process.kill()
        self._process.wait()
        self._process.stdout.close()


class Bench:
    """One desktop and the figures that were taken on it: lists of numbers by their names."""

    def __init__(self, runs, seconds):
        self.runs, self.seconds = runs, seconds
        self.desktop = Desktop(screen=(1024, 1024), logind=True)
        self.figures = {}

    def note(self, name, unit, value):
        self.figures.setdefault((name, unit), []).append(value)

    def begin(self):
        self.desktop.start_messenger()
        self.desktop.wait_listening()
        return self.desktop.messenger_facts()

    def end(self):
        self.desktop.processes.end(self.desktop.messenger)

    def post(self, row, progress):
        self.desktop.post(f"KQS_disk.{row}", "scanner", PID=os.getpid(), Progress=progress,
                          VolName=f"Volume {row}", ScanType=0, BSD="sda1",
                          Item=f"/srv/data/projects/some folder of {row}/file {progress}.bin")

    def post_rows(self):
        for row in range(ROWS):
            self.post(row, 250)
        self.desktop.panel.wait_height(ROWS * ROW)

    def start(self):
        """From exec to listening, to the first row in sight, to a change in sight."""
        for _ in range(self.runs):
            ears = Ears(self.desktop, self.desktop.session_bus)
            began = time.monotonic()
            self.desktop.launch_messenger()
            self.note("start to listening", "ms", 1000 * (ears.wait_for(INTERFACE) - began))
            ears.close()
            self.note("CPU of the start", "ms", self.settled_load().cpu_ms)
            self.watch_first_row()
            self.end()

    def watch_first_row(self):
        window = int(wait_until("the panel's window", self.desktop.panel.find), 16)
        with Onlooker(self.desktop.env["DISPLAY"], window) as onlooker:
            began = time.monotonic()
            self.post(1, 0)
            self.note("first row posted to panel mapped", "ms",
                      1000 * (onlooker.wait_mapped(DEADLINE) - began))
            for progress in (250, 500, 750):
                # Anywhere between two repaints.
                time.sleep(0.6 + random.random() / 2)
                before = onlooker.pixels(*PERCENTAGE)
                began = time.monotonic()
                self.post(1, progress)
                seen = onlooker.wait_changed(PERCENTAGE, before, DEADLINE)
                self.note("update posted to pixels changed", "ms", 1000 * (seen - began))

    def memory(self):
        """Resident memory with no row and with ten."""
        for _ in range(self.runs):
            facts = self.begin()
            self.settled_load()
            self.note_memory(facts, "no row")
            self.post_rows()
            for progress in (300, 400, 500):
                time.sleep(0.7)
                for row in range(ROWS):
                    self.post(row, progress)
            time.sleep(1.5)
            self.note_memory(facts, f"{ROWS} rows")
            self.end()

    def note_memory(self, facts, state):
        for name, mib in memory_of(facts.pid).items():
            self.note(f"{name} memory, {state}", "MiB", mib)

    def idle(self):
        """What it costs while nothing changes."""
        for state in ("no row", f"{ROWS} rows"):
            facts = self.begin()
            if state != "no row":
                self.post_rows()
            time.sleep(2)
            before = Load(facts)
            time.sleep(self.seconds)
            after = Load(facts)
            per_minute = 60 / self.seconds
            self.note(f"CPU in a minute, {state}", "ms",
                      (after.cpu_ms - before.cpu_ms) * per_minute)
            self.note(f"CPU of its commands in a minute, {state}", "ms",
                      (after.children_ms - before.children_ms) * per_minute)
            self.note(f"wake-ups in a minute, {state}", "",
                      (after.wake_ups - before.wake_ups).total() * per_minute)
            self.end()

    def updates(self):
        """What a flood of updates of one row costs, with the repaints meanwhile."""
        flood = self.desktop.build / "bench" / "flood" / "kqu_flood"
        self.begin()
        self.post(1, 0)
        self.desktop.panel.wait_visible()
        for _ in range(self.runs):
            before = self.settled_load()
            subprocess.run([flood, self.desktop.session_bus.address, "0", str(UPDATES),
                            f"KQS_disk.1={os.getpid()}"], check=True, timeout=120)
            after = self.settled_load()
            self.note(f"CPU for {UPDATES} updates", "ms", after.cpu_ms - before.cpu_ms)
        self.end()

    def settled_load(self):
        return settled_load(self.desktop.messenger_facts())


def memory_of(pid):
    """Kinds of memory of a process, in MiB."""
    lines = pathlib.Path("/proc", str(pid), "smaps_rollup").read_text().splitlines()
    kib = {line.split(":")[0]: int(line.split()[1]) for line in lines[1:]}
    # What is private depends on which libraries others use; what was written to does not.
    kinds = {"resident": kib["Rss"], "proportional": kib["Pss"],
             "private": kib["Private_Clean"] + kib["Private_Dirty"],
             "written": kib["Private_Dirty"]}
    return {name: value / 1024 for name, value in kinds.items()}


def settled_load(facts):
    """Waits until a process has come to rest, and gives what it has used by then."""
    seen = [Load(facts)]

    def rests():
        time.sleep(0.1)
        seen.append(Load(facts))
        return seen[-1].cpu_ms - seen[-2].cpu_ms < 1.0

    wait_until("the process to come to rest", rests)
    return seen[-1]


PARTS = {name: getattr(Bench, name) for name in ("start", "memory", "idle", "updates")}


def machine():
    memory = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 2 ** 30
    load = " ".join(f"{value:.1f}" for value in os.getloadavg())
    return (f"{os.cpu_count()} CPUs, {memory:.0f} GiB, {platform.system()} {platform.release()}, "
            f"load {load}")


def print_table(figures):
    width = max(len(name) for name, _ in figures)
    print(f"{'':{width}}  {'median':>9} {'least':>9} {'most':>9}  runs")
    for (name, unit), values in figures.items():
        numbers = " ".join(f"{value:9.2f}" for value in (statistics.median(values), min(values),
                                                         max(values)))
        print(f"{name:{width}}  {numbers}  {len(values):4} {unit}")


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("parts", nargs="*", metavar="part",
                        help=f"only these parts: {', '.join(PARTS)}")
    parser.add_argument("--runs", type=int, default=9, help="how often each figure is taken")
    parser.add_argument("--seconds", type=int, default=60, help="how long to watch it idle")
    options = parser.parse_args()
    unknown = set(options.parts) - set(PARTS)
    if unknown:
        parser.error(f"no part {', '.join(sorted(unknown))}")
    print(machine())
    bench = Bench(options.runs, options.seconds)
    try:
        for part in options.parts or PARTS:
            PARTS[part](bench)
    finally:
        bench.desktop.stop()
    print_table(bench.figures)
    print(machine())


if __name__ == "__main__":
    main()
