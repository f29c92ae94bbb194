"""Waiting for events: every wait has a deadline and says what it waited for and what it saw."""

import time

DEADLINE = 20.0
INTERVAL = 0.02


def wait_until(what, probe, timeout=DEADLINE):
    """Asks `probe` until it answers with something true, and returns the answer."""
    end = time.monotonic() + timeout
    while True:
        seen = probe()
        if seen:
            return seen
        if time.monotonic() >= end:
            raise AssertionError(f"waited {timeout:g} s for {what}; last seen: {seen!r}")
        time.sleep(INTERVAL)


def wait_for_value(what, probe, wanted, timeout=DEADLINE):
    """Asks `probe` until its answer equals `wanted`."""
    seen = []

    def is_wanted():
        seen[:] = [probe()]
        return seen[0] == wanted

    try:
        wait_until(what, is_wanted, timeout)
    except AssertionError:
        raise AssertionError(f"waited {timeout:g} s for {what} to be {wanted!r}; "
                             f"last seen: {seen[0]!r}") from None


def hold(what, probe, seconds):
    """Watches that `probe` keeps answering with something true for the given time."""
    end = time.monotonic() + seconds
    while time.monotonic() < end:
        seen = probe()
        if not seen:
            raise AssertionError(f"{what} did not last; seen: {seen!r}")
        time.sleep(INTERVAL)
