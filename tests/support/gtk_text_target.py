#!/usr/bin/python3
# A GTK3 entry for the integration tests to type into. It writes its text to a file on
# every change and prints "ready" once its window is active.
#   gtk_text_target.py OUTPUT INITIAL-TEXT
import os
import sys

import gi

gi.require_version("Gtk", "3.0")
from gi.repository import GLib, Gtk  # noqa: E402

output, initial = sys.argv[1], sys.argv[2]


def save(entry):
    with open(output + ".tmp", "w", encoding="utf-8") as f:
        f.write(entry.get_text())
    os.replace(output + ".tmp", output)


window = Gtk.Window(title="GTK target")
entry = Gtk.Entry()
entry.set_text(initial)
entry.connect("changed", save)
window.add(entry)
window.show_all()
entry.grab_focus()
entry.set_position(-1)
save(entry)


def report_ready():
    if window.is_active() and entry.has_focus():
        print("ready", flush=True)
        return False
    return True


GLib.timeout_add(20, report_ready)
Gtk.main()
