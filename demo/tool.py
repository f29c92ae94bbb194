"""What the demonstration's three tools share: posting what they do, and a pace to watch it at."""

import argparse
import os
import pathlib
import subprocess
import time

POST_EVERY = 0.25
PIECE = 256 * 1024


class Tool:
    """One job. It posts with kqu-post, under its own process id, so that its row leaves with it."""

    def __init__(self, kind, options, **always):
        self._command = [options.post, "--tool", kind, "--name", f"KQS_disk.{kind}.{os.getpid()}"]
        if options.system:
            self._command.append("--system")
        self._always = {"PID": os.getpid(), **always}
        if options.extra:
            self._always["Extra"] = options.extra
        self._began = time.monotonic()
        self._seconds = options.seconds
        self._next_post = 0.0

        self._posting = None

    def post(self, **info):
        """Posts once the post before this one has gone out, so that their order stays."""
        if self._posting is not None and self._posting.wait() != 0:
            raise RuntimeError(f"{self._command[0]} failed")
        pairs = [f"{key}={value}" for key, value in {**self._always, **info}.items()]
        self._posting = subprocess.Popen([*self._command, *pairs])

    def post_now_and_then(self, **info):
        """Posts unless the last time is too short ago, or its post is still on its way: a job does
        not wait for those who watch it."""
        now = time.monotonic()
        if now >= self._next_post and (self._posting is None or self._posting.poll() is not None):
            self._next_post = now + POST_EVERY
            self.post(**info)

    def finish(self, **info):
        """The last post, gone out when this returns."""
        self.post(**info)
        self._posting.wait()

    def keep_pace(self, share_done):
        """Waits until so much of the job may be done (0 to 1) that all of it takes its time."""
        ahead = self._began + share_done * self._seconds - time.monotonic()
        if ahead > 0:
            time.sleep(min(ahead, POST_EVERY))

    def is_over_time(self):
        return time.monotonic() > self._began + self._seconds


def options_of(description, *arguments):
    """The options that all three have, and the tool's own positional arguments."""
    parser = argparse.ArgumentParser(description=description)
    parser.add_argument("--post", required=True, help="the kqu-post command")
    parser.add_argument("--seconds", type=float, default=60.0, help="about how long it takes")
    parser.add_argument("--system", action="store_true", help="post on the system bus")
    parser.add_argument("--extra", choices=("sleep", "shutdown"),
                        help="what the machine should do afterwards")
    for name, told in arguments:
        parser.add_argument(name, type=pathlib.Path, help=told)
    return parser.parse_args()


def regular_files(folder):
    """(path, size) of each file below a folder that can be read, links not followed."""
    for parent, folders, names in os.walk(folder):
        folders.sort()
        for name in sorted(names):
            path = os.path.join(parent, name)
            if os.path.isfile(path) and not os.path.islink(path) and os.access(path, os.R_OK):
                yield path, os.path.getsize(path)


def volume_name(path):
    """The last component of the place where the file system of a path is mounted."""
    place = mount_point(path)
    return place.name or "/"


def mount_point(path):
    place = pathlib.Path(path).resolve()
    while not os.path.ismount(place):
        place = place.parent
    return place
