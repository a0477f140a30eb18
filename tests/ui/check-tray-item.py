#!/usr/bin/python3
"""Under a real X server and a session bus of its own (run by xvfb-run and dbus-run-session), this plays the desktop's
tray host. velmora, started as the login item before any tray host is there, waits for one (the watcher first says no
host is registered, then announces one), registers its StatusNotifierItem, titled with the product's name, whose tooltip carries the count of outdated
apps of a store checked by velmora-cli against velmora-service; activating the item opens the panel, and its exported
menu holds the gear menu's items, whose Quit quits. Started again with the watcher but no host, it takes an XEmbed
tray that comes up (the test owns its selection on the X server) without waiting out its wait for a host.
Usage: check-tray-item.py VELMORA VELMORA-CLI VELMORA-SERVICE INSTALLED-APPLICATIONS-FOLDER"""

import ctypes
import ctypes.util
import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

from gi.repository import Gio, GLib

BUS = ("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus")
WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
WATCHER_XML = f"""<node><interface name="{WATCHER}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>"""


class Watcher:
    def __init__(self, bus):
        self.bus = bus
        self.host = False
        self.asked_before_host = False
        self.items = []  # (bus name, object path) of each registered item
        interface = Gio.DBusNodeInfo.new_for_xml(WATCHER_XML).interfaces[0]
        bus.register_object("/StatusNotifierWatcher", interface, self.call, self.get, None)

    def call(self, bus, sender, path, interface, method, parameters, invocation):
        # RegisterStatusNotifierItem: a bus name (with the usual path) or a path on the caller's own connection.
        (name,) = parameters.unpack()
        self.items.append((sender, name) if name.startswith("/") else (name, "/StatusNotifierItem"))
        invocation.return_value(None)

    def get(self, bus, sender, path, interface, name):
        if name == "IsStatusNotifierHostRegistered":
            self.asked_before_host = self.asked_before_host or not self.host
            return GLib.Variant("b", self.host)
        if name == "ProtocolVersion":
            return GLib.Variant("i", 0)
        return GLib.Variant("as", [item[0] for item in self.items])

    def announce_host(self):
        self.host = True
        self.bus.emit_signal(None, "/StatusNotifierWatcher", WATCHER, "StatusNotifierHostRegistered", None)


class XEmbedTray:
    """Owns the X server's _NET_SYSTEM_TRAY_S0 selection, as an XEmbed tray does, and sees the icons' dock requests."""

    def __init__(self):
        class Iterator(ctypes.Structure):
            _fields_ = [("data", ctypes.POINTER(ctypes.c_uint32)), ("rem", ctypes.c_int), ("index", ctypes.c_int)]

        xcb = self.xcb = ctypes.CDLL(ctypes.util.find_library("xcb"))
        xcb.xcb_connect.restype = xcb.xcb_get_setup.restype = ctypes.c_void_p
        xcb.xcb_setup_roots_iterator.restype = Iterator
        xcb.xcb_intern_atom_reply.restype = ctypes.POINTER(ctypes.c_uint32)
        xcb.xcb_poll_for_event.restype = ctypes.POINTER(ctypes.c_uint8)
        self.connection = ctypes.c_void_p(xcb.xcb_connect(None, None))
        root = xcb.xcb_setup_roots_iterator(ctypes.c_void_p(xcb.xcb_get_setup(self.connection))).data[0]
        window = xcb.xcb_generate_id(self.connection)
        xcb.xcb_create_window(self.connection, 0, window, root, 0, 0, 1, 1, 0, 2, 0, 0, None)  # 2: input only
        name = b"_NET_SYSTEM_TRAY_S0"
        atom = xcb.xcb_intern_atom_reply(self.connection, xcb.xcb_intern_atom(self.connection, 0, len(name), name),
                                         None)[2]  # the reply's atom follows its 8-byte header
        xcb.xcb_set_selection_owner(self.connection, window, atom, 0)
        xcb.xcb_flush(self.connection)
        self.docked = False

    def dock_requested(self):
        while event := self.xcb.xcb_poll_for_event(self.connection):
            self.docked = self.docked or event[0] & 0x7f == 33  # a ClientMessage: the dock request
        return self.docked


def logged(log):
    with open(log) as file:
        return file.read()


def fail(message, log=None):
    print(message)
    if log:
        print(logged(log))
    sys.exit(1)


def wait_for(condition, what, log, seconds=60):
    """Serves the bus until condition() holds; fails after `seconds` without it."""
    deadline = time.monotonic() + seconds
    while not condition():
        if time.monotonic() > deadline:
            fail(f"timed out waiting for {what() if callable(what) else what}", log)
        GLib.MainContext.default().iteration(True)


def call(bus, name, path, interface, method, arguments=None, signature=None):
    reply = bus.call_sync(name, path, interface, method, arguments and GLib.Variant(signature, arguments), None,
                          Gio.DBusCallFlags.NONE, 10000, None)
    return reply.unpack() if reply else None


def menu_labels(bus, name, path):
    """The labels of a com.canonical.dbusmenu menu's top level, as the tray host shows them."""
    call(bus, name, path, "com.canonical.dbusmenu", "AboutToShow", (0,), "(i)")
    _, (_, _, children) = call(bus, name, path, "com.canonical.dbusmenu", "GetLayout", (0, 1, []), "(iias)")
    return {child[1].get("label", "").replace("&", ""): child[0] for child in children}


def main(velmora, cli, service, installed):
    work = tempfile.mkdtemp()
    env = dict(os.environ, HOME=f"{work}/home", XDG_CONFIG_HOME=f"{work}/home/.config", TMPDIR=f"{work}/tmp",
               XDG_DATA_HOME=f"{work}/home/.local/share", XDG_RUNTIME_DIR=f"{work}/run", VELMORA_LOG="stderr")
    for folder in ("home", "tmp", "run"):
        os.makedirs(f"{work}/{folder}", mode=0o700)
    shutil.copytree(installed, f"{work}/volume/Applications", symlinks=True)
    processes = []
    GLib.timeout_add(100, lambda: True)  # wakes wait_for to look at its condition and the clock
    try:
        server = subprocess.Popen([service, "serve", "--listen", "127.0.0.1:0"], stdout=subprocess.PIPE,
                                  stderr=open(f"{work}/service.log", "w"), text=True)
        processes.append(server)
        address = re.search(r"127\.0\.0\.1:\d+", server.stdout.readline()).group(0)
        hosts = ("serviceHost", "siteHost", "dealsHost", "analyticsHost")
        settings = [(key, "-string", f"http://{address}") for key in hosts]
        settings += [("volumeRoot", "-string", f"{work}/volume"), ("sendAnalytics", "-bool", "NO"),
                     ("startupItem", "-bool", "NO")]
        for setting in settings:
            subprocess.run([cli, "defaults", "write", *setting], env=env, check=True)
        subprocess.run([cli, "check"], env=env, check=True, stdout=subprocess.DEVNULL)
        outdated = subprocess.run([cli, "list", "--outdated"], env=env, check=True, capture_output=True, text=True)
        count = len(outdated.stdout.splitlines())

        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        # What the bus starts for velmora (the keyring) lives in the test's home too.
        call(bus, *BUS, "UpdateActivationEnvironment", ({k: v for k, v in env.items() if k[:4] in ("HOME", "XDG_")},),
             "(a{ss})")
        log = f"{work}/velmora.log"
        desktop = subprocess.Popen([velmora, "--login-item"], env=env, stderr=open(log, "w"))
        processes.append(desktop)
        wait_for(lambda: "waiting for a tray host" in logged(log), "velmora to wait for a tray host", log)
        watcher = Watcher(bus)
        if call(bus, *BUS, "RequestName", (WATCHER, 4), "(su)") != (1,):  # do not queue; 1: the owner now
            fail(f"could not own {WATCHER}")
        wait_for(lambda: watcher.asked_before_host, "velmora to ask whether a tray host is registered", log)
        watcher.announce_host()
        wait_for(lambda: watcher.items, "velmora to register its item", log)
        if "no tray host registered within" in logged(log):
            fail("velmora missed the tray host's announcement", log)

        name, path = watcher.items[0]
        properties = {}

        def tooltip_counts():
            # The item may show itself before velmora has read its store: its tooltip follows.
            properties.update(call(bus, name, path, "org.freedesktop.DBus.Properties", "GetAll", (ITEM,), "(s)")[0])
            return re.search(rf"\b{count} update", " ".join(properties["ToolTip"][2:]))

        wait_for(tooltip_counts, lambda: f"the tooltip to count {count} updates: {properties.get('ToolTip')}", log)
        if not properties.get("IconName") and not any(w * h * 4 == len(data) > 0
                                                      for w, h, data in properties.get("IconPixmap", [])):
            fail(f"the item has no icon: {properties}", log)
        if properties["Status"] != "Active":
            fail(f"the item's status is {properties['Status']}", log)
        if properties["Title"] != "Velmora Desktop":
            fail(f"the item's title is {properties['Title']!r}", log)

        call(bus, name, path, ITEM, "Activate", (20, 20), "(ii)")
        wait_for(lambda: "panel opened" in logged(log), "the panel to open", log)

        labels = menu_labels(bus, name, properties["Menu"])
        for label in ("Update All", "Launch Desktop", "Preferences", "Quit Velmora Desktop"):
            if label not in labels:
                fail(f"the item's menu has no {label!r}: {sorted(labels)}", log)
        call(bus, name, properties["Menu"], "com.canonical.dbusmenu", "Event",
             (labels["Quit Velmora Desktop"], "clicked", GLib.Variant("s", ""), 0), "(isvu)")
        wait_for(lambda: desktop.poll() is not None, "velmora to quit from its menu", log)
        if desktop.returncode != 0:
            fail(f"velmora quit with status {desktop.returncode}", log)

        watcher.host = False
        log = f"{work}/velmora-xembed.log"
        desktop = subprocess.Popen([velmora, "--login-item"], env=env, stderr=open(log, "w"))
        processes.append(desktop)
        wait_for(lambda: "waiting for a tray host" in logged(log), "velmora to wait for a tray host again", log)
        tray = XEmbedTray()
        wait_for(tray.dock_requested, "velmora to dock its icon in the XEmbed tray", log)
        if "no tray host registered within" in logged(log):
            fail("velmora waited out its wait although an XEmbed tray was there", log)
        print(f"velmora's tray item registered late, counted {count} updates, opened the panel and quit from its menu; "
              "started again, it docked in an XEmbed tray that came up")
    finally:
        for process in processes:
            process.kill()
            process.wait()
        shutil.rmtree(work)


if __name__ == "__main__":
    main(*sys.argv[1:5])
