#!/usr/bin/python3
"""Under a real X server and a session bus of its own (run by xvfb-run and dbus-run-session), this plays the desktop's
tray host. velmora, started as the login item before any tray host is there, waits for one (the watcher first says no
host is registered, then announces one), registers its StatusNotifierItem, whose tooltip carries the count of outdated
apps of a store checked by velmora-cli against velmora-service; activating the item opens the panel, and its exported
menu holds the gear menu's items, whose Quit quits.
Usage: check-tray-item.py VELMORA VELMORA-CLI VELMORA-SERVICE INSTALLED-APPLICATIONS-FOLDER"""

import os
import re
import shutil
import subprocess
import sys
import tempfile
import time

from gi.repository import Gio, GLib

WATCHER = "org.kde.StatusNotifierWatcher"
ITEM = "org.kde.StatusNotifierItem"
WATCHER_XML = f"""<node><interface name="{WATCHER}">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
  <signal name="StatusNotifierHostRegistered"/>
</interface></node>"""


class Watcher:
    def __init__(self, bus):
        self.bus = bus
        self.host = False
        self.host_asked = False
        self.items = []  # (bus name, object path) of each registered item
        interface = Gio.DBusNodeInfo.new_for_xml(WATCHER_XML).interfaces[0]
        bus.register_object("/StatusNotifierWatcher", interface, self.call, self.get, None)

    def call(self, bus, sender, path, interface, method, parameters, invocation):
        if method == "RegisterStatusNotifierItem":
            # Either a bus name (with the usual path) or a path on the caller's own connection.
            (name,) = parameters.unpack()
            self.items.append((sender, name) if name.startswith("/") else (name, "/StatusNotifierItem"))
        invocation.return_value(None)

    def get(self, bus, sender, path, interface, name):
        if name == "IsStatusNotifierHostRegistered":
            self.host_asked = not self.host
            return GLib.Variant("b", self.host)
        if name == "ProtocolVersion":
            return GLib.Variant("i", 0)
        return GLib.Variant("as", [item[0] for item in self.items])

    def announce_host(self):
        self.host = True
        self.bus.emit_signal(None, "/StatusNotifierWatcher", WATCHER, "StatusNotifierHostRegistered", None)


def fail(message, log=None):
    print(message)
    if log:
        print(open(log).read())
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
        settings = {key: f"http://{address}" for key in ("serviceHost", "siteHost", "dealsHost", "analyticsHost")}
        settings.update(volumeRoot=f"{work}/volume")
        for key, value in settings.items():
            subprocess.run([cli, "defaults", "write", key, "-string", value], env=env, check=True)
        for key in ("sendAnalytics", "startupItem"):
            subprocess.run([cli, "defaults", "write", key, "-bool", "NO"], env=env, check=True)
        subprocess.run([cli, "check"], env=env, check=True, stdout=subprocess.DEVNULL)
        outdated = subprocess.run([cli, "list", "--outdated"], env=env, check=True, capture_output=True, text=True)
        count = len(outdated.stdout.splitlines())
        if count < 2:
            fail(f"the check found {count} outdated apps:\n{outdated.stdout}")

        bus = Gio.bus_get_sync(Gio.BusType.SESSION)
        # What the bus starts for velmora (the keyring) lives in the test's home too.
        call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
             "UpdateActivationEnvironment", ({key: env[key] for key in env if key.startswith(("HOME", "XDG_"))},),
             "(a{ss})")
        log = f"{work}/velmora.log"
        desktop = subprocess.Popen([velmora, "--login-item"], env=env, stderr=open(log, "w"))
        processes.append(desktop)
        wait_for(lambda: "waiting for a tray host" in open(log).read(), "velmora to wait for a tray host", log)
        watcher = Watcher(bus)
        if call(bus, "org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "RequestName",
                (WATCHER, 4), "(su)") != (1,):
            fail(f"could not own {WATCHER}")
        wait_for(lambda: watcher.host_asked, "velmora to ask whether a tray host is registered", log)
        watcher.announce_host()
        wait_for(lambda: watcher.items, "velmora to register its item", log)
        if "no tray host registered within" in open(log).read():
            fail("velmora missed the tray host's announcement", log)

        name, path = watcher.items[0]
        properties = {}

        def tooltip_counts():
            # The item may show itself before velmora has read its store: its tooltip follows.
            properties.update(call(bus, name, path, "org.freedesktop.DBus.Properties", "GetAll", (ITEM,), "(s)")[0])
            return re.search(rf"\b{count} update", " ".join(properties["ToolTip"][2:]))

        wait_for(tooltip_counts, lambda: f"the tooltip to count {count} outdated apps: {properties.get('ToolTip')}", log)
        if not properties.get("IconName") and not any(w * h * 4 == len(data) > 0
                                                      for w, h, data in properties.get("IconPixmap", [])):
            fail(f"the item has no icon: {properties}", log)
        if properties["Status"] != "Active":
            fail(f"the item's status is {properties['Status']}", log)

        call(bus, name, path, ITEM, "Activate", (20, 20), "(ii)")
        wait_for(lambda: "panel opened" in open(log).read(), "the panel to open", log)

        labels = menu_labels(bus, name, properties["Menu"])
        for label in ("Update All", "Launch Desktop", "Preferences", "Quit Velmora Desktop"):
            if label not in labels:
                fail(f"the item's menu has no {label!r}: {sorted(labels)}", log)
        call(bus, name, properties["Menu"], "com.canonical.dbusmenu", "Event",
             (labels["Quit Velmora Desktop"], "clicked", GLib.Variant("s", ""), 0), "(isvu)")
        wait_for(lambda: desktop.poll() is not None, "velmora to quit from its menu", log)
        if desktop.returncode != 0:
            fail(f"velmora quit with status {desktop.returncode}", log)
        print(f"velmora's tray item registered late, counted {count} updates, opened the panel and quit from its menu")
    finally:
        for process in processes:
            process.kill()
            process.wait()
        shutil.rmtree(work)


if __name__ == "__main__":
    main(*sys.argv[1:5])
