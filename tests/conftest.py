"""How pytest runs the tests from outside, against the build in KQU_BUILD. A missing X server or bus
fails, and so does a run without tests. The closing line is "N passed, N failed"; a test that only
root can run is named above it when somebody else runs the tests."""

import os

import pytest


def pytest_xdist_auto_num_workers():
    """The tests wait more than they work."""
    return 2 * (os.cpu_count() or 1)


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item, call):
    """Lets a test that failed keep its evidence before its desktop ends."""
    report = (yield).get_result()
    keep = getattr(item.instance, "keep_evidence", None)
    if report.failed and call.when == "call" and keep:
        try:
            keep()
        except Exception as error:  # the failure itself is what has to be reported
            report.sections.append(("no evidence was kept", repr(error)))


@pytest.hookimpl(hookwrapper=True, tryfirst=True)
def pytest_terminal_summary(terminalreporter):
    yield

    def names(*outcomes):
        return {report.nodeid for outcome in outcomes
                for report in terminalreporter.getreports(outcome)}

    failed = names("failed", "error")
    for word, tests in (("NOT RUN", names("skipped")), ("FAILED", failed)):
        for test in sorted(tests):
            terminalreporter.write_line(f"{word} {test}")
    terminalreporter.write_line(f"{len(names('passed') - failed)} passed, {len(failed)} failed")
