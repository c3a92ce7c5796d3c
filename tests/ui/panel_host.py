#!/usr/bin/python3
"""A stand-in for a desktop panel on a private session bus, for panel_e2e_test.

It can own org.kde.StatusNotifierWatcher (and count as the panel that shows the items), keeps
the items that register, and reads and clicks them as a panel would. Commands come one per
line on standard input; each gets one JSON line on standard output:

    watch           own the watcher's name, with a panel present
    items           the registered items ("bus-name/path")
    tooltip         the first item's tooltip: its title and text
    item            the first item's Status, Title, and its icon's sizes and pixels' digest
    menu            the first item's menu, as a panel opens it: AboutToShow, then GetLayout;
                    a list of {id, label, toggle, visible}, each label as a panel shows it
    click LABEL     Event(id, "clicked") on the menu entry whose label starts with LABEL
    activate        a left click on the item (Activate)
    quit            leave

Errors come back as {"error": "..."}. Every call to an item has a deadline of five seconds.
"""

import hashlib
import json
import re
import sys
import time

import dbus
import dbus.service
from dbus.mainloop.glib import DBusGMainLoop
from gi.repository import GLib

WATCHER = "org.kde.StatusNotifierWatcher"
WATCHER_PATH = "/StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PROPS = "org.freedesktop.DBus.Properties"
TIMEOUT = 5

# Qt reads the watcher's properties through introspection, so they have to be declared here.
INTROSPECTION = """<!DOCTYPE node PUBLIC "-//freedesktop//DTD D-BUS Object Introspection 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/introspect.dtd">
<node>
  <interface name="org.kde.StatusNotifierWatcher">
    <method name="RegisterStatusNotifierItem"><arg name="service" type="s" direction="in"/></method>
    <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
    <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
    <property name="ProtocolVersion" type="i" access="read"/>
    <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
    <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
    <signal name="StatusNotifierHostRegistered"/>
    <signal name="StatusNotifierHostUnregistered"/>
  </interface>
</node>
"""


def shown(label):
    """A menu label as a panel shows it: "__" is one underscore, a single one marks an access key."""
    return re.sub("_(_?)", r"\1", label)


class Watcher(dbus.service.Object):
    def __init__(self, bus):
        super().__init__(bus, WATCHER_PATH)
        self.items = []

    @dbus.service.method("org.freedesktop.DBus.Introspectable", out_signature="s")
    def Introspect(self):
        return INTROSPECTION

    @dbus.service.method(PROPS, in_signature="ss", out_signature="v")
    def Get(self, interface, name):
        return self.GetAll(interface)[name]

    @dbus.service.method(PROPS, in_signature="s", out_signature="a{sv}")
    def GetAll(self, interface):
        return {
            "RegisteredStatusNotifierItems": dbus.Array(self.items, signature="s"),
            "IsStatusNotifierHostRegistered": dbus.Boolean(True),
            "ProtocolVersion": dbus.Int32(0),
        }

    @dbus.service.method(WATCHER, in_signature="s", sender_keyword="sender")
    def RegisterStatusNotifierItem(self, service, sender=None):
        # The argument is a bus name, or an object path on the caller's own connection.
        item = sender + service if service.startswith("/") else service + "/StatusNotifierItem"
        if item not in self.items:
            self.items.append(item)
            self.StatusNotifierItemRegistered(item)

    @dbus.service.signal(WATCHER, signature="s")
    def StatusNotifierItemRegistered(self, item):
        pass

    @dbus.service.signal(WATCHER, signature="")
    def StatusNotifierHostRegistered(self):
        pass


class Panel:
    def __init__(self):
        self.bus = dbus.SessionBus()
        self.watcher = Watcher(self.bus)
        self.name = None

    def first_item(self):
        if not self.watcher.items:
            raise RuntimeError("no item registered")
        bus_name, _, path = self.watcher.items[0].partition("/")
        return self.bus.get_object(bus_name, "/" + path, introspect=False)

    def prop(self, obj, interface, name):
        return obj.Get(interface, name, dbus_interface=PROPS, timeout=TIMEOUT)

    def command(self, line):
        word, _, rest = line.strip().partition(" ")
        if word == "watch":
            self.name = dbus.service.BusName(WATCHER, self.bus)
            self.watcher.StatusNotifierHostRegistered()
            return "ok"
        if word == "items":
            return list(self.watcher.items)
        if word == "tooltip":
            tip = self.prop(self.first_item(), ITEM, "ToolTip")
            return [str(tip[2]), str(tip[3])]
        if word == "item":
            item = self.first_item()
            pixmaps = self.prop(item, ITEM, "IconPixmap")
            digest = hashlib.sha1(b"".join(bytes(p[2]) for p in pixmaps)).hexdigest()
            return {
                "status": str(self.prop(item, ITEM, "Status")),
                "title": str(self.prop(item, ITEM, "Title")),
                "iconSizes": sorted(int(p[0]) for p in pixmaps),
                "icon": digest,
            }
        if word == "menu":
            return self.menu_entries()
        if word == "click":
            entry = next((e for e in self.menu_entries() if e["label"].startswith(rest)), None)
            if entry is None:
                raise RuntimeError("no entry " + rest)
            self.menu_object().Event(dbus.Int32(entry["id"]), "clicked", dbus.String("", variant_level=1),
                                     dbus.UInt32(int(time.time())), dbus_interface=MENU, timeout=TIMEOUT)
            return "ok"
        if word == "activate":
            self.first_item().Activate(dbus.Int32(0), dbus.Int32(0), dbus_interface=ITEM, timeout=TIMEOUT)
            return "ok"
        raise RuntimeError("unknown command " + word)

    def menu_object(self):
        item = self.first_item()
        path = self.prop(item, ITEM, "Menu")
        return self.bus.get_object(item.requested_bus_name, path, introspect=False)

    def menu_entries(self):
        menu = self.menu_object()
        menu.AboutToShow(dbus.Int32(0), dbus_interface=MENU, timeout=TIMEOUT)
        _, layout = menu.GetLayout(dbus.Int32(0), dbus.Int32(-1), dbus.Array([], signature="s"),
                                   dbus_interface=MENU, timeout=TIMEOUT)
        entries = []
        for child in layout[2]:
            ident, props = int(child[0]), child[1]
            if props.get("type") == "separator":
                continue
            entries.append({
                "id": ident,
                "label": shown(str(props.get("label", ""))),
                "toggle": int(props.get("toggle-state", -1)) if "toggle-type" in props else None,
                "visible": bool(props.get("visible", True)),
            })
        return entries


def main():
    DBusGMainLoop(set_as_default=True)
    panel = Panel()
    loop = GLib.MainLoop()

    def on_input(channel, condition):
        line = sys.stdin.readline()
        if not line or line.strip() == "quit":
            loop.quit()
            return False
        try:
            reply = panel.command(line)
        except Exception as error:  # every failure is an answer, so the test never waits on one
            reply = {"error": str(error)}
        sys.stdout.write(json.dumps(reply) + "\n")
        sys.stdout.flush()
        return True

    GLib.io_add_watch(sys.stdin, GLib.PRIORITY_DEFAULT, GLib.IO_IN | GLib.IO_HUP, on_input)
    sys.stdout.write(json.dumps("ready") + "\n")
    sys.stdout.flush()
    loop.run()


if __name__ == "__main__":
    main()
