"""Processes of a test: starting, ending, finding what was left over, and what /proc tells."""

import collections
import os
import pathlib
import signal
import subprocess

from support.waiting import wait_until

MARK = "KQU_DESKTOP"


class ProcessFacts:
    """What the kernel tells about a process, read anew at each question."""

    def __init__(self, pid):
        self.pid = pid
        self._folder = pathlib.Path("/proc", str(pid))

    def _status(self, key):
        for line in (self._folder / "status").read_text().splitlines():
            if line.startswith(key + ":"):
                return line.split(":", 1)[1].split()
        return []

    def field(self, key):
        """The first word of a line of /proc/PID/status."""
        return self._status(key)[0]

    def ids(self, key):
        """For "Uid" and "Gid" the real, effective, saved and file system ids; or the "Groups"."""
        return [int(number) for number in self._status(key)]

    def resident_kib(self):
        return int(self._status("VmRSS")[0])

    def wake_ups(self):
        """How often each of its threads has gone to sleep and been woken. A difference of two such
        counts leaves out the threads that have ended in between."""
        woken = collections.Counter()
        for task in (self._folder / "task").iterdir():
            try:
                lines = (task / "status").read_text().splitlines()
            except FileNotFoundError:  # a thread that has just ended
                continue
            woken[task.name] = sum(int(line.split()[1]) for line in lines
                                   if line.startswith("voluntary_ctxt_switches"))
        return woken

    def descriptors(self):
        """What each open descriptor refers to."""
        targets = {}
        for link in (self._folder / "fd").iterdir():
            try:
                targets[int(link.name)] = os.readlink(link)
            except FileNotFoundError:
                pass
        return targets

    def children(self):
        children = []
        for task in (self._folder / "task").iterdir():
            try:
                children += map(int, (task / "children").read_text().split())
            except FileNotFoundError:  # a thread that has just ended
                pass
        return children

    def cpu_seconds(self):
        fields = (self._folder / "stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def program(self):
        return os.readlink(self._folder / "exe")


class Processes:
    """Starts the processes of one desktop and ends them in reverse order. All of them carry `mark`
    in their environment, by which what was left over is found."""

    def __init__(self, folder):
        self.folder = pathlib.Path(folder)
        self.mark = {MARK: str(folder)}
        self._running = []

    def start(self, command, env, log=None, **options):
        """`log` names the file in the desktop's folder that takes what the process prints."""
        path = self.folder / (log or os.path.basename(command[0]) + ".log")
        with open(path, "ab") as out:
            process = subprocess.Popen(command, env=env, stdin=subprocess.DEVNULL, stdout=out,
                                       stderr=out, **options)
        process.log = path
        self._running.append(process)
        return process

    def end(self, process, with_signal=signal.SIGTERM):
        """Ends and reaps a process; one that is deaf to the signal is killed."""
        if process.poll() is None:
            process.send_signal(with_signal)
            try:
                process.wait(5)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait(5)
        if process in self._running:
            self._running.remove(process)

    def end_all(self):
        """Ends everything, and tells what outlived those who had started it."""
        for process in reversed(self._running[:]):
            self.end(process)
        left = self.marked()
        for pid in left:
            try:
                os.kill(pid, signal.SIGKILL)
            except ProcessLookupError:
                pass
        wait_until("the left-over processes to end", lambda: not self.marked(), 5)
        return left

    def marked(self):
        """Processes that carry the mark of this desktop in their environment, with their names."""
        mark = f"{MARK}={self.folder}".encode()
        found = {}
        for folder in pathlib.Path("/proc").iterdir():
            try:
                if folder.name.isdigit() and mark in (folder / "environ").read_bytes().split(b"\0"):
                    found[int(folder.name)] = (folder / "comm").read_text().strip()
            except OSError:
                pass
        return found
