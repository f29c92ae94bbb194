"""One private desktop for one test, side by side with others."""

import os
import pathlib
import re
import select
import shutil
import subprocess
import tempfile

from support import posting
from support.buses import Bus, Logind
from support.panel import Panel, Pointer
from support.processes import Processes, ProcessFacts
from support.waiting import DEADLINE, wait_until

ROOT = pathlib.Path(__file__).resolve().parents[3]
WINDOW_MANAGERS = {
    "openbox": ["openbox", "--sm-disable"],
    "icewm": ["icewm"],
    # Those that only scripts/managers starts.
    "metacity": ["metacity", "--sm-disable", "--no-composite"],
    "metacity-composite": ["metacity", "--sm-disable", "--composite"],
    "marco": ["marco", "--sm-disable", "--no-composite"],
    "marco-composite": ["marco", "--sm-disable", "--composite"],
    "xfwm4": ["xfwm4", "--compositor=off"],
    "xfwm4-composite": ["xfwm4", "--compositor=on", "--vblank=off"],
    "mutter": ["mutter", "--x11", "--sm-disable"],
    "i3": ["sh", "-c", "echo font pango:sans 8 >$HOME/i3 && exec i3 -c $HOME/i3"],
    "bspwm": ["bspwm", "-c", "/bin/true"],
    "dwm": ["dwm"],
    "kwin": ["kwin_x11"],
}
# Wayland compositors with an X server of their own, which show their screen in a window.
COMPOSITORS = {
    "weston": ["weston", "--backend=x11-backend.so", "--use-pixman", "--width=1280", "--height=900", "--xwayland",
               "--idle-time=0"],
    "mutter-wayland": ["env", "MUTTER_DEBUG_DUMMY_MODE_SPECS=1280x900", "mutter", "--nested", "--wayland",
                       "--sm-disable"],
    # A copy has none of the file's capabilities, which not every kernel lets it have.
    "kwin-wayland": ["sh", "-c", "cp $(command -v kwin_wayland) $HOME && KWIN_COMPOSE=Q exec $HOME/kwin_wayland "
                     "--xwayland --x11-display $DISPLAY --width 1280 --height 900 'sh -c \"echo display $DISPLAY\"'"],
}


def settled_user():
    """The user that a messenger started by us settles on: root gives way to the console's owner,
    or to the user at the seat. A console that cannot be found counts as root's."""
    if os.geteuid() != 0 or not os.path.lexists("/dev/console"):
        return os.geteuid()
    seat = pathlib.Path("/run/systemd/seats/seat0")
    owner = os.lstat("/dev/console").st_uid
    if owner == 0 and seat.exists():
        known = dict(line.partition("=")[::2] for line in seat.read_text().splitlines())
        owner = int(known.get("ACTIVE_UID", 0))
    return owner if owner < 1 << 31 else 0


class Desktop:
    """An X server, a window manager ("openbox", "icewm" or None), a session bus and a system bus.
    The screen may be given a third number, its depth; `logind` adds the stand-in for logind to the
    system bus."""

    def __init__(self, screen=(1024, 768), window_manager="openbox", logind=False):
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="kqu-desktop-"))
        self.folder.chmod(0o755)
        self.build = pathlib.Path(os.environ.get("KQU_BUILD", ROOT / "build" / "release")).resolve()
        self.processes = Processes(self.folder)
        self.env = self._make_environment()
        self.messenger = self.session_bus = self.system_bus = self.logind = None
        self.xserver = self.window_manager = None
        self.panel = Panel(self.env)
        self.pointer = Pointer(self.env)
        try:
            self._start_display(screen)
            if window_manager:
                self.start_window_manager(window_manager)
            self._start_buses()
            if logind:
                self.logind = Logind(self.system_bus, self.processes, self.env)
        except BaseException:
            self.stop()
            raise

    def _make_environment(self):
        env = {key: os.environ[key] for key in ("PATH", "ASAN_OPTIONS", "UBSAN_OPTIONS")
               if key in os.environ}
        env.update(self.processes.mark, LANG="C.UTF-8")
        # Addresses where nobody listens, so that a missing bus is missing and not the machine's own.
        env["DBUS_SESSION_BUS_ADDRESS"] = f"unix:path={self.folder}/no-session-bus"
        env["DBUS_SYSTEM_BUS_ADDRESS"] = f"unix:path={self.folder}/no-system-bus"
        for key, name in (("HOME", "home"), ("XDG_CONFIG_HOME", "config"), ("XDG_DATA_HOME", "data"),
                          ("XDG_CACHE_HOME", "cache"), ("XDG_RUNTIME_DIR", "runtime")):
            folder = self.folder / name
            folder.mkdir()
            folder.chmod(0o777)
            env[key] = str(folder)
        return env

    def _start_display(self, screen):
        reading, writing = os.pipe()
        size = "x".join(str(number) for number in (*screen, 24)[:3])
        self.xserver = self.processes.start(
            ["Xvfb", "-displayfd", str(writing), "-screen", "0", size, "-nolisten", "tcp", "-ac",
             "-noreset"], self.env, pass_fds=[writing])
        os.close(writing)
        with os.fdopen(reading) as answer:
            ready, _, _ = select.select([answer], [], [], 20)
            number = answer.readline().strip() if ready else ""
        if not number:
            raise AssertionError(f"Xvfb did not start: {self.xserver.log.read_text()}")
        self.env["DISPLAY"] = f":{number}"

    def start_window_manager(self, name):
        self.window_manager = self.processes.start((WINDOW_MANAGERS | COMPOSITORS)[name], self.env)
        if name in COMPOSITORS:
            self._enter_xwayland()
        wait_until(f"{name} to manage the screen",
                   lambda: "window id" in self.root_property("_NET_SUPPORTING_WM_CHECK"))
        if name not in ("openbox", "icewm"):
            return

        # What comes while openbox starts lies until the next event: only one that has done what it
        # was asked to is known to have begun.
        def obeys():
            self.output("wmctrl", "-n", "2")
            return self.root_property("_NET_NUMBER_OF_DESKTOPS").strip().endswith("= 2")

        wait_until(f"{name} to do what it is asked", obeys)

    def _enter_xwayland(self):
        """The X server of a compositor that shows itself on this one; the hand stays outside."""
        self.pointer = Pointer(dict(self.env))
        self.env["DISPLAY"] = wait_until("the compositor's display", lambda: next(
            iter(re.findall(r"display (:\d+)", self.window_manager.log.read_text())), None))
        for key in pathlib.Path(self.env["XDG_RUNTIME_DIR"]).glob(".*Xwaylandauth*"):
            self.env["XAUTHORITY"] = str(key)
        wait_until("it to answer", lambda: subprocess.run(
            ["xprop", "-root"], env=self.env, capture_output=True, check=False).returncode == 0)

    def _start_buses(self):
        owner = settled_user()
        self.session_bus = Bus("session", self.processes, self.env,
                               owner if owner != os.geteuid() else None)
        self.system_bus = Bus("system", self.processes, self.env)
        buses = (self.session_bus, self.system_bus)
        # What one of them starts by its name has to find the other.
        self.env.update({f"DBUS_{bus.kind.upper()}_BUS_ADDRESS": bus.address for bus in buses})
        for bus in buses:
            bus.start()

    def root_property(self, name):
        return self.output("xprop", "-root", name)

    def output(self, *command):
        """What a command prints on this desktop."""
        return subprocess.run(command, env=self.env, check=True, capture_output=True, text=True,
                              timeout=20).stdout

    def start_messenger(self, *prefix, **environment):
        """Starts the program; `prefix` is put before its command (for example "setpriv", ...).
        The panel's window is there when this returns."""
        self.launch_messenger(*prefix, **environment)
        wait_until("the panel's window", lambda: self.panel.find() or self._ended_early())
        return self.messenger

    def launch_messenger(self, *prefix, **environment):
        """The same without waiting for anything. A variable that is given as None is left out."""
        env = {**self.env, **environment}
        env = {key: value for key, value in env.items() if value is not None}
        self.messenger = self.processes.start([*prefix, str(self.build / "kqu-messenger")], env,
                                              log="messenger.log")
        return self.messenger

    def console_of(self, user, seat_user=None):
        """For root: a prefix for start_messenger, to whom the console then belongs to that user,
        while the login manager knows `seat_user` or nobody at the seat."""
        console, run = self.folder / "console", self.folder / "console-run"
        console.touch()
        os.chown(console, user, -1)
        seats = run / "systemd" / "seats"
        seats.mkdir(parents=True, exist_ok=True)
        if seat_user is not None:
            (seats / "seat0").write_text(f"IS_SEAT0=1\nACTIVE=1\nACTIVE_UID={seat_user}\n")
        return ["unshare", "--mount", "sh", "-c", f"mount --bind {console} /dev/console &&"
                f' mount --bind {run} /run && exec "$0" "$@"']

    def _ended_early(self):
        if self.messenger.poll() is not None:
            raise AssertionError(f"the messenger ended with status {self.messenger.returncode}: "
                                 f"{self.messenger_output()!r}")
        return False

    def messenger_output(self):
        """What the messenger printed, the commands that it runs included."""
        return self.messenger.log.read_text()

    def messenger_facts(self):
        return ProcessFacts(self.messenger.pid)

    def wait_listening(self, bus=None):
        """Waits until the messenger listens on a bus: from then on no notification is lost."""
        bus = bus or self.session_bus
        wait_until(f"the messenger to listen on the {bus.kind} bus",
                   lambda: bus.hears(self.messenger.pid, posting.INTERFACE) or self._ended_early())

    def wait_exit(self, timeout=DEADLINE):
        """The messenger's exit status."""
        wait_until("the messenger to end", lambda: self.messenger.poll() is not None, timeout)
        return self.messenger.returncode

    def start_job(self):
        """A real process to be named in "PID"; end_job ends it and lets it vanish from the list."""
        return self.processes.start(["sleep", "600"], self.env)

    def end_job(self, job):
        self.processes.end(job)

    def post(self, name, tool, **info):
        """Posts on the session bus. A tool that is none of the three is the object as it stands."""
        posting.post(self.session_bus, name, tool, **info)

    def post_on_system_bus(self, name, pid):
        """Posts a scanner's row with the command."""
        self.output(str(self.build / "kqu-post"), "--system", "--tool", "scanner", "--name", name,
                    f"PID={pid}")

    def stop(self):
        """Ends everything and removes the folder; complains about processes that were left over."""
        for bus in (self.session_bus, self.system_bus):
            if bus is not None:
                bus.stop()
        left = self.processes.end_all()
        shutil.rmtree(self.folder, ignore_errors=True)
        if left:
            raise AssertionError(f"processes were left over: {left}")
