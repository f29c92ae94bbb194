"""Status notifications as stock clients post them, each client with the command a user would type."""

import subprocess

import dbus
import dbus.lowlevel

PATH = "/com/brackwater/DistributedNotifications"
INTERFACE = "com.brackwater.DistributedNotifications"
MEMBER = "Posted"
OBJECTS = {"scanner": "KQMS", "backup": "KQBackup", "defragmenter": "KQDefrag"}
CLIENTS = ("dbus-send", "kqu-post")


def command_of(client, bus, name, tool, info, kqu_post="kqu-post"):
    """The command line by which `client` posts a notification of one of the three tools."""
    text = {key: str(value) for key, value in info.items()}
    if client == "kqu-post":
        system = ["--system"] if bus.kind == "system" else []
        pairs = [f"{key}={value}" for key, value in text.items()]
        return [str(kqu_post), "--tool", tool, "--name", name, *system, *pairs]
    if client == "dbus-send":
        pairs = [part for pair in text.items() for part in pair]
        return ["dbus-send", f"--{bus.kind}", "--type=signal", PATH,
                f"{INTERFACE}.{MEMBER}", f"string:{name}", f"string:{OBJECTS[tool]}",
                "dict:string:string:" + ",".join(pairs)]
    raise ValueError(f"no client {client}")


def post_by_command(client, bus, env, name, tool, info, kqu_post="kqu-post"):
    subprocess.run(command_of(client, bus, name, tool, info, kqu_post), env=env, check=True,
                   timeout=20, capture_output=True)


def post_raw(bus, *arguments, signature="ssa{sv}"):
    """Posts over the test's own connection, with any arguments of any types."""
    message = dbus.lowlevel.SignalMessage(PATH, INTERFACE, MEMBER)
    if signature:
        message.append(*arguments, signature=signature)
    bus.connection().send_message(message)
    bus.connection().flush()


def post(bus, name, tool, **info):
    """The short way for tests that care about what is posted and not about how."""
    post_raw(bus, name, OBJECTS.get(tool, tool),
             {key: str(value) for key, value in info.items()}, signature="ssa{ss}")
