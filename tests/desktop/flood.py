#!/usr/bin/python3
"""Posts updates of one row as fast as the bus takes them: flood.py ADDRESS NAME COUNT PID."""

import sys

import dbus
import dbus.lowlevel


def main():
    address, name, count, pid = sys.argv[1:]
    connection = dbus.bus.BusConnection(address)
    for number in range(int(count)):
        message = dbus.lowlevel.SignalMessage("/com/brackwater/DistributedNotifications",
                                              "com.brackwater.DistributedNotifications", "Posted")
        message.append(name, "KQMS", {"PID": pid, "Progress": str((number + 1) * 1000 // int(count)),
                                      "Item": f"item {number}"}, signature="ssa{ss}")
        connection.send_message(message)
    connection.flush()
    # The bus answers in order: after this it has taken every one of them.
    connection.get_object("org.freedesktop.DBus", "/org/freedesktop/DBus").GetId(
        dbus_interface="org.freedesktop.DBus")


main()
