#!/usr/bin/python3
"""Posts one status notification and stays on the bus for a second.

Usage: post_and_stay.py ADDRESS NAME OBJECT [KEY=VALUE ...] [--repeat-text=N] [--many-keys=N]
"""
import sys
import time

import dbus
import dbus.lowlevel


def values(arguments):
    """The user information that the arguments ask for."""
    result = {}
    for argument in arguments:
        key, value = argument.split("=", 1)
        if key == "--repeat-text":
            result["Item"] = "x" * int(value)
        elif key == "--many-keys":
            result.update({f"key {i}": "v" for i in range(int(value))})
        else:
            result[key] = value
    return dbus.Dictionary(result, signature="sv")


def main():
    """Posts, waits for the bus to have taken it, and stays."""
    connection = dbus.bus.BusConnection(sys.argv[1])
    signal = dbus.lowlevel.SignalMessage(
        "/com/brackwater/DistributedNotifications",
        "com.brackwater.DistributedNotifications", "Posted")
    signal.append(sys.argv[2], sys.argv[3], values(sys.argv[4:]), signature="ssa{sv}")
    connection.send_message(signal)
    connection.flush()
    time.sleep(1)


main()
