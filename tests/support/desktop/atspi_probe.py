"""Reads and drives text fields of other programs through AT-SPI, for tests that must not trust the program's own reading.

Speaks JSON lines: {"do": NAME, ...} on standard input, one {"ok": true, "result": ...} or {"ok": false, "error": TEXT}
for each on standard output. Offsets are code points, whatever unit the toolkit counts. Elements are numbers that stay
valid as long as this process runs. Every call to a program is bounded, so a hung one gives an error.
"""

import json
import sys
import time

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

CALL_MS = 2000
ACCESSIBLE = "org.a11y.atspi.Accessible"
TEXT = "org.a11y.atspi.Text"
EDITABLE = "org.a11y.atspi.EditableText"
COMPONENT = "org.a11y.atspi.Component"
APPLICATION = "org.a11y.atspi.Application"
ROOT = ("org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
STATE_EDITABLE, STATE_FOCUSED, STATE_MULTI_LINE = 7, 12, 17
ROLE_PASSWORD = 40


def connect_to(address):
    flags = Gio.DBusConnectionFlags
    return Gio.DBusConnection.new_for_address_sync(
        address, flags.AUTHENTICATION_CLIENT | flags.MESSAGE_BUS_CONNECTION, None, None)


def accessibility_bus():
    session = Gio.bus_get_sync(Gio.BusType.SESSION, None)
    reply = session.call_sync("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress", None, None,
                              Gio.DBusCallFlags.NONE, CALL_MS, None)
    return connect_to(reply.unpack()[0])


class Probe:
    def __init__(self):
        self.bus = accessibility_bus()
        self.elements = []

    # Calls. An object is a pair of bus name and path.

    def call(self, obj, interface, method, arguments=None, timeout=CALL_MS):
        reply = self.bus.call_sync(obj[0], obj[1], interface, method, arguments, None, Gio.DBusCallFlags.NONE,
                                   timeout, None).unpack()
        return reply[0] if len(reply) == 1 else reply

    def get(self, obj, interface, name):
        return self.call(obj, "org.freedesktop.DBus.Properties", "Get", GLib.Variant("(ss)", (interface, name)))

    def states(self, obj):
        low, high = self.call(obj, ACCESSIBLE, "GetState")
        bits = low | high << 32
        return {bit for bit in range(64) if bits >> bit & 1}

    def number_of(self, obj):
        if obj not in self.elements:
            self.elements.append(obj)
        return self.elements.index(obj)

    def object_of(self, request):
        return self.elements[request["element"]]

    # Applications and their fields.

    def application(self, pid):
        for child in self.call(ROOT, ACCESSIBLE, "GetChildren"):
            try:
                owner = self.call(("org.freedesktop.DBus", "/org/freedesktop/DBus"), "org.freedesktop.DBus",
                                  "GetConnectionUnixProcessID", GLib.Variant("(s)", (child[0],)))
            except GLib.Error:
                continue  # it left the bus meanwhile
            if owner == pid:
                return tuple(child)
        return None

    def walk(self, start):
        """Every object below an application, nearest first. A vanished one is left out with what was below it."""
        queue, seen = [start], {start}
        while queue:
            obj = queue.pop(0)
            try:
                children = self.call(obj, ACCESSIBLE, "GetChildren")
            except GLib.Error as error:
                if "imeout" in error.message or "imed out" in error.message:
                    raise
                continue
            yield obj
            for child in map(tuple, children):
                if child not in seen and child[1] != "/org/a11y/atspi/null":
                    seen.add(child)
                    queue.append(child)

    def describe(self, obj):
        if TEXT not in self.call(obj, ACCESSIBLE, "GetInterfaces"):
            return None
        states, role = self.states(obj), self.call(obj, ACCESSIBLE, "GetRole")
        is_field = EDITABLE in self.call(obj, ACCESSIBLE, "GetInterfaces") or STATE_EDITABLE in states
        if not is_field and role != ROLE_PASSWORD:
            return None
        return {
            "element": self.number_of(obj),
            "role": self.call(obj, ACCESSIBLE, "GetRoleName"),
            "name": self.get(obj, ACCESSIBLE, "Name"),
            "focused": STATE_FOCUSED in states,
            "editable": STATE_EDITABLE in states,
            "multiline": STATE_MULTI_LINE in states,
            "password": role == ROLE_PASSWORD,
        }

    def do_fields(self, request):
        application = self.application(request["pid"])
        if application is None:
            return []
        found = []
        for obj in self.walk(application):
            try:
                description = self.describe(obj)
            except GLib.Error:
                continue
            if description:
                found.append(description)
        return found

    def do_field_at(self, request):
        found = self.describe((request["bus"], request["path"]))
        if not found:
            raise ValueError("no field there")
        return found

    def do_tree(self, request):
        """Role and name of everything, for finding out why a test found nothing."""
        application = self.application(request["pid"])
        return [] if application is None else [
            [self.call(obj, ACCESSIBLE, "GetRoleName"), self.get(obj, ACCESSIBLE, "Name")]
            for obj in self.walk(application)]

    # Text, with the toolkit's offsets turned into code points and back.

    def whole_text(self, obj):
        text = self.call(obj, TEXT, "GetText", GLib.Variant("(ii)", (0, -1)))
        counts_utf16 = len(text) != self.get(obj, TEXT, "CharacterCount") == len(text.encode("utf-16-le")) // 2
        return text, counts_utf16

    @staticmethod
    def to_code_points(text, offset, counts_utf16):
        if not counts_utf16 or offset < 0:
            return offset
        return len(text.encode("utf-16-le")[:2 * offset].decode("utf-16-le", "replace"))

    @staticmethod
    def from_code_points(text, offset, counts_utf16):
        return len(text[:offset].encode("utf-16-le")) // 2 if counts_utf16 and offset >= 0 else offset

    def do_read(self, request):
        obj = self.object_of(request)
        text, utf16 = self.whole_text(obj)
        selections = []
        for index in range(self.call(obj, TEXT, "GetNSelections")):
            ends = self.call(obj, TEXT, "GetSelection", GLib.Variant("(i)", (index,)))
            start, end = (self.to_code_points(text, value, utf16) for value in ends)
            if start != end:  # some toolkits report the caret as an empty selection
                selections.append([min(start, end), max(start, end)])
        caret = self.to_code_points(text, self.get(obj, TEXT, "CaretOffset"), utf16)
        states = self.states(obj)
        return {"text": text, "caret": caret, "selections": selections, "focused": STATE_FOCUSED in states}

    def do_set_caret(self, request):
        obj = self.object_of(request)
        text, utf16 = self.whole_text(obj)
        offset = self.from_code_points(text, request["offset"], utf16)
        try:
            # LibreOffice goes on selecting otherwise, even where nothing is selected any more.
            self.call(obj, TEXT, "RemoveSelection", GLib.Variant("(i)", (0,)), timeout=200)
        except GLib.Error:
            pass
        self.call(obj, TEXT, "SetCaretOffset", GLib.Variant("(i)", (offset,)))
        return self.until(lambda: self.get(obj, TEXT, "CaretOffset") == offset, 1)

    def do_select(self, request):
        obj = self.object_of(request)
        text, utf16 = self.whole_text(obj)
        start, end = (self.from_code_points(text, request[name], utf16) for name in ("start", "end"))

        def is_selected():
            found = self.do_read(request)["selections"]
            return found == ([[request["start"], request["end"]]] if start != end else [])

        if self.call(obj, TEXT, "GetNSelections") > 0:
            self.call(obj, TEXT, "SetSelection", GLib.Variant("(iii)", (0, start, end)))
            if self.until(is_selected, 0.3):
                return True
        try:
            # GTK 4 adds the selection and never answers.
            self.call(obj, TEXT, "AddSelection", GLib.Variant("(ii)", (start, end)), timeout=200)
        except GLib.Error:
            pass
        return self.until(is_selected, 1)

    def do_set_text(self, request):
        obj = self.object_of(request)
        self.call(obj, EDITABLE, "SetTextContents", GLib.Variant("(s)", (request["text"],)))
        return self.until(lambda: self.whole_text(obj)[0] == request["text"], 1)

    def do_grab_focus(self, request):
        obj = self.object_of(request)
        self.call(obj, COMPONENT, "GrabFocus")
        return self.until(lambda: STATE_FOCUSED in self.states(obj), 1)

    def do_wait_text(self, request):
        obj = self.object_of(request)
        read = None

        def fits():
            nonlocal read
            read = self.whole_text(obj)[0]
            return read == request["equals"] if "equals" in request else request["contains"] in read

        return {"ok": self.until(fits, request["seconds"]), "text": read}

    def do_extents(self, request):
        obj = self.object_of(request)
        return list(self.call(obj, COMPONENT, "GetExtents", GLib.Variant("(u)", (0,))))

    def do_range_extents(self, request):
        obj = self.object_of(request)
        text, utf16 = self.whole_text(obj)
        start, end = (self.from_code_points(text, request[name], utf16) for name in ("start", "end"))
        return list(self.call(obj, TEXT, "GetRangeExtents", GLib.Variant("(iiu)", (start, end, 0))))

    @staticmethod
    def until(condition, seconds):
        deadline = time.monotonic() + seconds
        while not condition():
            if time.monotonic() >= deadline:
                return False
            time.sleep(0.01)
        return True


def main():
    probe = Probe()
    print(json.dumps({"ok": True, "result": "ready"}), flush=True)
    for line in sys.stdin:
        request = json.loads(line)
        try:
            reply = {"ok": True, "result": getattr(probe, "do_" + request["do"])(request)}
        except Exception as error:  # whatever it was, the test has to hear of it
            reply = {"ok": False, "error": f"{request['do']}: {error}"}
        print(json.dumps(reply), flush=True)


main()
