"""Status notifications as tools post them."""

import dbus
import dbus.lowlevel

PATH = "/com/brackwater/DistributedNotifications"
INTERFACE = "com.brackwater.DistributedNotifications"
MEMBER = "Posted"
OBJECTS = {"scanner": "KQMS", "backup": "KQBackup", "defragmenter": "KQDefrag"}


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
