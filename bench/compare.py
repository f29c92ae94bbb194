#!/usr/bin/python3
"""The messenger and dunst side by side: the same rows, the same texts, posted by one client at the
same rate, each figure taken of both in turns. Prints a table in Markdown."""

import argparse
import collections
import datetime
import os
import pathlib
import random
import statistics
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path[:0] = [str(ROOT / "tests" / "desktop"), str(ROOT / "bench")]

# pylint: disable=wrong-import-position
from desktop import DEADLINE, ROWS, Ears, Load, machine, memory_of, settled_load  # noqa: E402
from dunst import NAME, Dunst  # noqa: E402
from onlooker import Onlooker  # noqa: E402
from screenshot import Screenshot  # noqa: E402
from support import Desktop, wait_until  # noqa: E402
from support.posting import INTERFACE  # noqa: E402
from support.processes import ProcessFacts  # noqa: E402

PANEL_WIDTH = 340
ICON = ROOT / "resources" / "173-DefragToolBar.png"
UPDATES = 10_000
RATE = 200
# The first row's texts and bar, in either window.
FIRST_ROW = (48, 4, 280, 60)
PROGRESS = (250, 500, 750)

DIFFERENCES = f"""
- Both show the same {ROWS} rows: icon, three lines of text, bar. One client posts to both, over one
  connection of libdbus, {RATE} updates a second as long as dunst keeps up.
- dunst answers every call and paints after every one. The messenger's notifications are signals
  without an answer; by its rules it paints twice a second, and at once only for a new row. So an
  update waits for up to 500 ms.
- By its rules the messenger asks once every three seconds and for every row for the list of
  processes, through a shell. What these commands cost stands in lines of its own. dunst does not
  know whether a poster is still there.
- dunst is given the icon by its path with every update, as it can't be told that the icon stays.
- Listening begins with the request for the name (dunst) and for the signals (messenger), which puts
  fonts and icons off to the first row.
- dunst's window is not managed; the messenger's is mapped by the window manager.
- Resident memory counts pages of shared libraries in full, proportional memory (Pss) its share of
  them. Both programs run at the same time, so that each shares with the other.
- Wake-ups are counted by the kernel as voluntary changes of context.
"""


class Messenger:
    """The messenger, with the interface of its counterpart."""

    name = "messenger"

    def __init__(self, desktop):
        self._desktop = desktop

    @property
    def pid(self):
        return self._desktop.messenger.pid

    def start(self):
        self._desktop.launch_messenger()

    def wait_ready(self):
        self._desktop.wait_listening()

    def window(self):
        window = self._desktop.panel.find()
        return window and int(window, 16)

    def post(self, row, progress, lines):
        self._desktop.post(f"KQS_disk.{row}", "scanner", PID=os.getpid(), Progress=progress,
                           VolName=lines[0].removeprefix("Volume: "), ScanType=0, BSD="sda1",
                           Item=lines[2].removeprefix("File: "))

    def settle(self):
        """Nothing is answered."""

    def end(self):
        self._desktop.processes.end(self._desktop.messenger)


def lines_of(row, progress):
    """The texts of a row, as the panel words them."""
    return [f"Volume: Volume {row}", "Scanning File Sectors...",
            f"File: /srv/data/some folder of {row}/file {progress}.bin"]


class Comparison:
    """Figures of both programs: lists of numbers by what they are and whose."""

    def __init__(self, pictures):
        self.desktop = Desktop(screen=(1280, 1024), logind=True)
        self.pictures = pictures
        self.programs = [Dunst(self.desktop, ROWS, PANEL_WIDTH, ICON), Messenger(self.desktop)]
        self.figures = collections.defaultdict(lambda: collections.defaultdict(list))
        self._looks = {}

    def note(self, program, name, value):
        self.figures[name][program.name].append(value)

    def post(self, program, row, progress):
        program.post(row, progress, lines_of(row, progress))

    def in_turns(self, *parts):
        """Every part for both, and who goes first changes from round to round."""
        for part in parts:
            for program in self.programs:
                part(program)

    def round(self, updates):
        self.in_turns(self.start, lambda program: self.weigh(program, "no row"),
                      self.watch_first_row, self.watch_updates, self.fill,
                      lambda program: self.weigh(program, f"{ROWS} rows"),
                      lambda program: self.flood(program, updates, 1),
                      lambda program: self.flood(program, updates, ROWS))
        self.end()
        self.programs.reverse()

    def end(self):
        for program in self.programs:
            program.onlooker.close()
            program.end()

    def start(self, program):
        member, word = ("RequestName", NAME) if program.name == "dunst" else ("AddMatch", INTERFACE)
        ears = Ears(self.desktop, self.desktop.session_bus, member)
        began = time.monotonic()
        program.start()
        self.note(program, "start to listening, ms", 1000 * (ears.wait_for(word) - began))
        ears.close()
        program.wait_ready()
        program.onlooker = Onlooker(self.desktop.env["DISPLAY"],
                                    wait_until("a window", program.window))
        self.rest(program)

    def rest(self, program):
        program.settle()
        return settled_load(ProcessFacts(program.pid))

    def weigh(self, program, state):
        self.rest(program)
        for name, mib in memory_of(program.pid).items():
            self.note(program, f"{name} memory, {state}, MiB", mib)

    def watch_first_row(self, program):
        with_map = program.onlooker.wait_mapped
        self.watch(program, PROGRESS[0], "a first row posted to its pixels seen, ms", with_map)

    def watch_updates(self, program):
        for progress in PROGRESS[1:]:
            # Anywhere between two repaints.
            time.sleep(0.6 + random.random() / 2)
            self.watch(program, progress, "an update posted to its pixels seen, ms")

    def watch(self, program, progress, name, first=lambda _: None):
        """The time until the row looks as it does in the end, which the first round finds out."""
        looks = self._looks.get((program.name, progress))
        began = time.monotonic()
        self.post(program, 0, progress)
        first(DEADLINE)
        if looks is None:
            time.sleep(1.5)
            self._looks[program.name, progress] = program.onlooker.pixels(*FIRST_ROW)
        else:
            seen = program.onlooker.wait_equal(FIRST_ROW, looks, DEADLINE)
            self.note(program, name, 1000 * (seen - began))
        program.settle()

    def fill(self, program):
        """All rows, each with a few updates."""
        for progress in (250, 400, 600):
            for row in range(ROWS):
                self.post(program, row, progress)
            self.rest(program)
            time.sleep(0.6)

    def flood(self, program, updates, rows):
        """Many updates at a rate that both keep up with, until the program has come to rest."""
        before = self.rest(program)
        began = time.monotonic()
        for number in range(updates):
            time.sleep(max(0.0, began + number / RATE - time.monotonic()))
            self.post(program, number % rows, number * 1000 // updates)
        program.settle()
        took = time.monotonic() - began
        time.sleep(0.6)  # the messenger's last repaint
        after = self.rest(program)
        what = "one row" if rows == 1 else f"{rows} rows in turns"
        scale = UPDATES / updates
        cpu, commands = after.cpu_ms - before.cpu_ms, after.children_ms - before.children_ms
        self.note(program, f"CPU for {UPDATES:,} updates of {what}, ms", cpu * scale)
        self.note(program, f"the same with its commands, {what}, ms", (cpu + commands) * scale)
        self.note(program, f"updates posted in a second, {what}", updates / took)

    def idle(self, seconds):
        """What both cost at the same time while nothing changes."""
        for state in ("no row", f"{ROWS} rows"):
            self.in_turns(self.start)
            if state != "no row":
                self.in_turns(self.fill)
                self.take_pictures()
            self.in_turns(self.rest)
            before = {program: Load(ProcessFacts(program.pid)) for program in self.programs}
            time.sleep(seconds)
            for program in self.programs:
                after, factor = Load(ProcessFacts(program.pid)), 60 / seconds
                woken = (after.wake_ups - before[program].wake_ups).total()
                self.note(program, f"wake-ups in an idle minute, {state}", woken * factor)
                for what, part in (("CPU of an idle minute, ms", "cpu_ms"),
                                   ("CPU of its commands in it, ms", "children_ms")):
                    used = getattr(after, part) - getattr(before[program], part)
                    self.note(program, f"{what}, {state}", used * factor)
            self.end()

    def take_pictures(self):
        if self.pictures:
            for program in self.programs:
                Screenshot.take(hex(program.window()), self.desktop.env).save(
                    self.pictures / f"{program.name}.png")


def print_table(figures):
    print("| | dunst | messenger | ratio |\n|---|---|---|---|")
    for name, of in figures.items():
        dunst, messenger = of["dunst"], of["messenger"]
        # Where dunst needs nothing, if only at times, a ratio says nothing.
        ratios = [ours / theirs for theirs, ours in zip(dunst, messenger) if theirs > 0]
        ratio = f"{statistics.median(ratios):.2f}" if len(ratios) == len(dunst) else "-"
        print(f"| {name} | {spread(dunst)} | {spread(messenger)} | {ratio} |")


def spread(values):
    middle = statistics.median(values)
    digits = 0 if middle >= 100 else 1
    numbers = [f"{value:,.{digits}f}" for value in (middle, min(values), max(values))]
    return numbers[0] if len(values) == 1 else "{} ({} to {})".format(*numbers)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rounds", type=int, default=5, help="how often each figure is taken")
    parser.add_argument("--seconds", type=int, default=30, help="how long to watch them idle")
    parser.add_argument("--pictures", type=pathlib.Path, help="a folder for pictures of both")
    options = parser.parse_args()
    comparison = Comparison(options.pictures)
    before = machine()
    try:
        # The first round shows how the rows look, and warms the machine up.
        for number in range(options.rounds + 1):
            comparison.round(UPDATES // options.rounds // 2 if number else 20)
            if number == 0:
                comparison.figures.clear()
        comparison.idle(options.seconds)
    finally:
        comparison.desktop.stop()
    print(f"{datetime.date.today()}, {before} before and "
          f"{machine().rpartition(', ')[2]} after; median (least to most) of "
          f"{options.rounds} rounds\n")
    print_table(comparison.figures)
    print(DIFFERENCES)


if __name__ == "__main__":
    main()
