"""For root: another user's service manager with that user's session bus, both of them real."""

import os
import subprocess

from support.waiting import wait_until

# In a mount namespace of its own, so that the machine's own folders stay as they are. The manager
# has to believe that the machine was booted with it, and wants a control group that it may divide.
SCRIPT = """
user=$1 units=$2
mount -t tmpfs none /run
mkdir -p /run/user/$user/systemd /run/systemd/system
chmod 700 /run/user/$user
cp -r "$units" /run/user/$user/systemd/user
chown -R $user /run/user/$user
umount -R /sys/fs/cgroup || :
mount -t cgroup2 none /sys/fs/cgroup
group=/sys/fs/cgroup/kqu-$$
mkdir $group
chown -R $user $group
trap 'kill $manager' TERM
sh -c 'echo $$ >"$1/cgroup.procs" && exec setpriv --reuid $0 --regid $0 --clear-groups \
    /lib/systemd/systemd --user --unit=basic.target' $user $group &
manager=$!
wait $manager || wait $manager || :
find $group -depth -type d -exec rmdir {} +
"""


class UserManager:
    """Knows the units in the folder `units`, and no display until it is told of one."""

    def __init__(self, desktop, user, units):
        self.user, runtime = user, f"/run/user/{user}"
        self._env = {**desktop.env, "XDG_RUNTIME_DIR": runtime,
                     "DBUS_SESSION_BUS_ADDRESS": f"unix:path={runtime}/bus",
                     "SYSTEMD_LOG_TARGET": "console"}
        display = self._env.pop("DISPLAY")
        self._set_display = ("systemctl", "--user", "set-environment", f"DISPLAY={display}")
        self._process = desktop.processes.start(
            ["unshare", "--mount", "sh", "-ec", SCRIPT, "sh", str(user), str(units)], self._env,
            log="user-manager.log")
        wait_until("the user's service manager", lambda: self.ask(
            "systemctl", "--user", "is-active", "dbus.socket").returncode == 0)

    def inside(self, *command):
        """A command that sees the user's runtime folder."""
        if self._process.poll() is not None:
            raise AssertionError(self._process.log.read_text())
        return ["nsenter", "--mount", f"--target={self._process.pid}", *map(str, command)]

    def ask(self, *command):
        """Runs a command there as the user."""
        return subprocess.run(
            self.inside("setpriv", f"--reuid={self.user}", f"--regid={self.user}",
                        "--clear-groups", *command), env=self._env, timeout=20, check=False,
            capture_output=True, text=True, cwd=os.path.sep)

    def tell_display(self):
        self.ask(*self._set_display).check_returncode()
