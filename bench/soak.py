#!/usr/bin/python3
"""A soak from outside: the real program of the build in KQU_BUILD, by default the release preset's,
on a private desktop, under a million updates of the three tools over twenty rows, with new texts
each and rows that come and go. Fails when its resident memory grows by more than 1 MiB after the
warm-up, or when its descriptors, threads or X resources become more."""

import argparse
import dataclasses
import pathlib
import re
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "desktop"))

# pylint: disable=wrong-import-position
from support import Desktop, wait_until  # noqa: E402
from support.panel import ROW  # noqa: E402

MOST_GROWTH_KIB = 1024
# Rows whose processes end and are followed by new ones, at each change.
CHANGED_ROWS = 2
# On a busy machine listing the processes takes so long that the reaper's passes overlap, each after
# the other has begun: then rows go late, or even by mistake, and are back with their next update.
PATIENCE = 200


@dataclasses.dataclass(frozen=True)
class Sample:
    updates: int
    resident_kib: int
    descriptors: int
    threads: int
    windows: int
    pixmaps: int
    contexts: int
    others: int

    def counts(self):
        """All that must not grow by one."""
        return dataclasses.astuple(self)[2:]


def x_resources(desktop):
    """Windows, pixmaps, graphics contexts and all else that the X server keeps for the program."""
    told = desktop.output("xrestop", "-b", "-m", "1")
    for client in re.split(r"^\d+ - ", told, flags=re.MULTILINE):
        if client.startswith("Brackwater"):
            counts = dict(re.findall(r"^\t(\w[\w ]*?)\s*: (\d+)$", client, re.MULTILINE))
            named = [int(counts.pop(name)) for name in ("windows", "pixmaps", "GCs")]
            others = sum(int(counts[name]) for name in counts
                         if not name.startswith("res_") and not name.endswith("bytes"))
            return *named, others
    raise AssertionError(f"the X server knows no such client: {told}")


class Soak:
    """A life of `updates` updates over `rows` rows on this desktop, on which the program listens."""

    def __init__(self, desktop, updates, rows=20, burst=2500, bursts_between_changes=8):
        self.desktop, self.updates, self.rows = desktop, updates, rows
        self.burst, self.bursts_between_changes = burst, bursts_between_changes
        self.posted = self.changes = 0
        self.jobs = {}
        self.samples = []

    def _add_rows(self):
        while len(self.jobs) < self.rows:
            self.jobs[f"KQS_disk.{self.changes}.{len(self.jobs)}"] = self.desktop.start_job()
        self.changes += 1

    def _end_rows(self):
        for name in list(self.jobs)[:CHANGED_ROWS]:
            self.desktop.end_job(self.jobs.pop(name))
        # The panel has to lose them before new ones come, or their number would prove nothing.
        wait_until("the rows to go", lambda: self._height() <= len(self.jobs) * ROW, PATIENCE)

    def _height(self):
        at = self.desktop.panel.geometry()
        if at is None:
            raise AssertionError(f"the panel has gone; status {self.desktop.messenger.poll()}")
        return at.height

    def _wait_rows(self):
        def all_there():
            self._post(len(self.jobs))
            return self._height() == len(self.jobs) * ROW
        wait_until("all rows", all_there, PATIENCE)

    def _post(self, count):
        rows = [f"{name}={job.pid}" for name, job in self.jobs.items()]
        flood = self.desktop.build / "bench" / "flood" / "kqu_flood"
        subprocess.run([flood, self.desktop.session_bus.address, str(self.posted), str(count), *rows],
                       env=self.desktop.env, check=True, timeout=300)
        self.posted += count

    def _sample(self):
        facts = self.desktop.messenger_facts()
        # A command that runs is read through a pipe; on a busy machine one runs nearly always.
        descriptors = min(self._descriptors(facts) for _ in range(40))
        return Sample(self.posted, facts.resident_kib(), descriptors, int(facts.field("Threads")),
                      *x_resources(self.desktop))

    def _descriptors(self, facts):
        time.sleep(0.03)
        return len(facts.descriptors())

    def run(self, tell=lambda sample: None):
        """Fills `samples`, one for each change of rows, and hands each to `tell`."""
        self._add_rows()
        while self.posted < self.updates:
            for _ in range(self.bursts_between_changes):
                self._post(min(self.burst, max(self.updates - self.posted, 1)))
                # Long enough for the panel to be repainted with the texts of this burst.
                time.sleep(0.55)
            self._wait_rows()
            self.samples.append(self._sample())
            tell(self.samples[-1])
            self._end_rows()
            self._add_rows()

    def growth(self, warm_up):
        """By how many KiB the memory grew after that many updates, and the counts that grew."""
        warm = [sample for sample in self.samples if sample.updates >= warm_up]
        first, last = warm[0], warm[1:]
        names = [field.name for field in dataclasses.fields(Sample)][2:]
        grown = [name for index, name in enumerate(names)
                 if min(sample.counts()[index] for sample in last) > first.counts()[index]]
        return max(sample.resident_kib for sample in last) - first.resident_kib, grown


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--updates", type=int, default=1_000_000)
    parser.add_argument("--rows", type=int, default=20)
    parser.add_argument("--warm-up", type=float, default=0.05, help="share of the updates")
    options = parser.parse_args()
    desktop = Desktop(screen=(1024, 74 * options.rows + 60))
    began = time.monotonic()

    def tell(values):
        print(f"{time.monotonic() - began:7.0f}", *(f"{value!s:>12}" for value in values), flush=True)

    try:
        desktop.start_messenger()
        desktop.wait_listening()
        print("seconds", *(f"{field.name:>12}" for field in dataclasses.fields(Sample)))
        soak = Soak(desktop, options.updates, options.rows)
        soak.run(lambda sample: tell(dataclasses.astuple(sample)))
        growth, grown = soak.growth(options.updates * options.warm_up)
        printed = desktop.messenger_output()
    finally:
        desktop.stop()
    print(f"resident memory: {growth:+d} KiB at most after the warm-up; "
          f"grown counts: {', '.join(grown) or 'none'}; printed: {printed or 'nothing'}")
    return 1 if growth > MOST_GROWTH_KIB or grown or printed else 0


if __name__ == "__main__":
    sys.exit(main())
