#!/usr/bin/python3
"""The part of a user's service manager that the agent makes use of: it starts transient units, without their limits,
and prints what it was asked for, one JSON object a line:

    {"event": "reloaded"}
    {"event": "started", "unit", "process", "properties": {...}}      {"event": "killed", "unit", "signal"}

    usermanager.py [--result RESULT]      how its jobs end; with any other than `done` nothing is started
"""
import argparse
import json
import os
import signal
import subprocess

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

MANAGER = "org.freedesktop.systemd1.Manager"


def plain(value):
    if isinstance(value, dbus.types.UnixFd):
        return "descriptor"
    if isinstance(value, (dbus.Array, dbus.Struct)):
        return [plain(element) for element in value]
    return {dbus.String: str, dbus.Boolean: bool}.get(type(value), int)(value)


class Manager(dbus.service.Object):
    def __init__(self, bus, result):
        super().__init__(bus, "/org/freedesktop/systemd1")
        self.result, self.units = result, {}

    @dbus.service.method(MANAGER, "", "")
    def Subscribe(self):
        pass

    @dbus.service.method(MANAGER, "", "")
    def Reload(self):
        print(json.dumps({"event": "reloaded"}), flush=True)

    @dbus.service.method(MANAGER, "ssa(sv)a(sa(sv))", "o")
    def StartTransientUnit(self, unit, _mode, properties, _more):
        properties = dict((str(name), value) for name, value in properties)
        process = self.start(unit, properties) if self.result == "done" else None
        print(json.dumps({"event": "started", "unit": unit, "process": process,
                          "properties": {name: plain(value) for name, value in properties.items()}}), flush=True)
        GLib.idle_add(self.JobRemoved, 1, "/org/freedesktop/systemd1/job/1", unit, self.result)
        return "/org/freedesktop/systemd1/job/1"

    def start(self, unit, properties):
        (program, arguments, _), = properties["ExecStart"]
        descriptors = [properties[f"Standard{name}FileDescriptor"].take() for name in ("Input", "Output", "Error")]
        environment = dict(assignment.split("=", 1) for assignment in properties["Environment"])
        self.units[unit] = subprocess.Popen([str(a) for a in arguments], executable=str(program), env=environment,
                                            stdin=descriptors[0], stdout=descriptors[1], stderr=descriptors[2])
        for descriptor in descriptors:
            os.close(descriptor)
        return self.units[unit].pid

    @dbus.service.method(MANAGER, "ssi", "")
    def KillUnit(self, unit, _who, number):
        print(json.dumps({"event": "killed", "unit": unit, "signal": int(number)}), flush=True)
        self.units[unit].send_signal(int(number))

    @dbus.service.signal(MANAGER, "uoss")
    def JobRemoved(self, number, job, unit, result):
        pass


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--result", default="done")
    options = parser.parse_args()
    DBusGMainLoop(set_as_default=True)
    bus = dbus.SessionBus()
    manager = Manager(bus, options.result)
    name = dbus.service.BusName("org.freedesktop.systemd1", bus)
    loop = GLib.MainLoop()
    for number in (signal.SIGTERM, signal.SIGINT):
        GLib.unix_signal_add(GLib.PRIORITY_DEFAULT, number, loop.quit)
    loop.run()
    del manager, name


if __name__ == "__main__":
    main()
