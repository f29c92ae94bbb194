"""Waiting for events: every wait has a deadline and says what it waited for and what it saw."""

import pathlib
import time

DEADLINE = 60.0
# For what the program does within three seconds; the rest is for a machine with other work.
PROMPTLY = 12.0
INTERVAL = 0.02


def wait_until(what, probe, timeout=DEADLINE, is_wanted=bool):
    """Asks `probe` until it answers with something true, or wanted, and returns the answer."""
    end = time.monotonic() + timeout
    while True:
        seen = probe()
        if is_wanted(seen):
            return seen
        if time.monotonic() >= end:
            raise AssertionError(f"waited {timeout:g} s for {what}; last seen: {seen!r}")
        time.sleep(INTERVAL)


def wait_for_value(what, probe, wanted, timeout=DEADLINE):
    """Asks `probe` until its answer equals `wanted`."""
    wait_until(f"{what} to be {wanted!r}", probe, timeout, lambda seen: seen == wanted)


def content(path):
    """What a file holds, None while there is none: the program replaces its file at each save."""
    try:
        return pathlib.Path(path).read_text("utf-8")
    except FileNotFoundError:
        return None


def hold(what, probe, seconds):
    """Watches that `probe` keeps answering with something true for the given time."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        seen = probe()
        if not seen:
            raise AssertionError(f"{what} did not last; seen: {seen!r}")
        time.sleep(INTERVAL)
