# SPDX-License-Identifier: GPL-2.0-or-later
"""The part of a desktop's portal that is about the end of the session (org.freedesktop.portal.Inhibit, version 3).

Prints a line "ready", then one for whatever it is asked for. A number that it reads is the state that it tells to the
monitor: 1 the session runs, 2 it is to end, 3 it ends."""

import sys

from gi.repository import Gio, GLib

PATH = "/org/freedesktop/portal/desktop"
INHIBIT = "org.freedesktop.portal.Inhibit"
INTERFACES = Gio.DBusNodeInfo.new_for_xml(f"""
<node>
  <interface name="{INHIBIT}">
    <method name="Inhibit">
      <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="a{{sv}}" direction="in"/>
      <arg type="o" direction="out"/>
    </method>
    <method name="CreateMonitor">
      <arg type="s" direction="in"/><arg type="a{{sv}}" direction="in"/><arg type="o" direction="out"/>
    </method>
    <method name="QueryEndResponse"><arg type="o" direction="in"/></method>
    <signal name="StateChanged"><arg type="o"/><arg type="a{{sv}}"/></signal>
  </interface>
  <interface name="org.freedesktop.portal.Request"><method name="Close"/></interface>
</node>""")


def say(line):
    print(line, flush=True)


class Portal:
    def __init__(self, bus):
        self.bus = bus
        self.granted = 0
        self.monitor = None
        bus.register_object(PATH, INTERFACES.interfaces[0], self.called, None, None)

    def called(self, _bus, sender, _path, _interface, method, arguments, invocation):
        if method == "Inhibit":
            invocation.return_value(GLib.Variant("(o)", [self.grant(arguments.unpack()[2].get("reason"))]))
        elif method == "CreateMonitor":
            caller = sender[1:].replace(".", "_")
            self.monitor = f"{PATH}/session/{caller}/{arguments.unpack()[1]['session_handle_token']}"
            say("monitor")
            invocation.return_value(GLib.Variant("(o)", [f"{PATH}/request/{caller}/monitor"]))
        else:
            say("acknowledged" if arguments.unpack()[0] == self.monitor else "acknowledged by a stranger")
            invocation.return_value(None)

    def grant(self, reason):
        self.granted += 1
        path = f"{PATH}/request/held/{self.granted}"
        self.bus.register_object(path, INTERFACES.interfaces[1], self.released, None, None)
        say(f"held: {reason}")
        return path

    def released(self, _bus, _sender, _path, _interface, _method, _arguments, invocation):
        say("released")
        invocation.return_value(None)

    def tell(self, state):
        details = {"screensaver-active": GLib.Variant("b", False), "session-state": GLib.Variant("u", state)}
        self.bus.emit_signal(None, PATH, INHIBIT, "StateChanged", GLib.Variant("(oa{sv})", (self.monitor, details)))


def main():
    bus = Gio.bus_get_sync(Gio.BusType.SESSION)
    portal = Portal(bus)
    loop = GLib.MainLoop()
    Gio.bus_own_name_on_connection(bus, "org.freedesktop.portal.Desktop", Gio.BusNameOwnerFlags.NONE,
                                   lambda *_: say("ready"), None)

    def read(*_):
        line = sys.stdin.readline()
        if not line:
            loop.quit()
            return False
        portal.tell(int(line))
        return True
    GLib.io_add_watch(sys.stdin.fileno(), GLib.IO_IN | GLib.IO_HUP, read)
    loop.run()


main()
