#!/usr/bin/python3 -B
"""Whether the active window can be used without seeing it and without a mouse:

    judge_window.py TITLE [ROLE [PAGE]]

prints what is wrong with it, and fails then. It reads what assistive technology reads, and goes once through the window by
the keyboard: Tab comes to every control that takes input and back to the first one, the arrow keys to the others of a group
and to the rows of a list, and whatever gets the keyboard looks different from before. It is a "dialog" unless ROLE says
otherwise; PAGE is the page of a sheet that must be shown."""

import ctypes
import os
import subprocess
import sys
import time

from accessible import Atspi, children_of, has_state, windows

PATIENCE = float(os.environ.get("PERMORA_PATIENCE", 60))  # seconds
INPUTS = {"push button", "check box", "radio button", "text", "combo box", "list", "tree", "page tab list"}
# What is read with the control that it is in.
PARTS = {"list item", "table cell", "page tab", "menu item"}
# They only hold others, or move what is held; the unknown one is the grip of a status bar, for which the toolkit has no word.
HOLDERS = {"filler", "panel", "layered pane", "tool bar", "menu bar", "status bar", "scroll bar", "unknown"}
READ_ONLY = {"label", "icon", "image", "progress bar"}
# Can be used beside all others.
NOT_MODAL = {"Permora Help"}
# Lists of lines of text.
WITH_BLANK_LINES = {"Deletion status"}

found_faults = []


def fault(text):
    """Told at once: what follows may take too long."""
    found_fault(text)
    print(text, flush=True)


class Image(ctypes.Structure):
    """The beginning of the X library's."""

    _fields_ = [
        ("width", ctypes.c_int),
        ("height", ctypes.c_int),
        ("offset", ctypes.c_int),
        ("format", ctypes.c_int),
        ("data", ctypes.c_void_p),
    ]


class Screen:
    """What can be seen, 4 bytes a pixel."""

    SIZE = 1280, 900

    def __init__(self):
        self.x11 = ctypes.CDLL("libX11.so.6")
        self.x11.XOpenDisplay.restype = ctypes.c_void_p
        self.x11.XDefaultRootWindow.restype = ctypes.c_ulong
        self.x11.XGetImage.restype = ctypes.POINTER(Image)
        self.display = ctypes.c_void_p(self.x11.XOpenDisplay(None))
        self.root = ctypes.c_ulong(self.x11.XDefaultRootWindow(self.display))

    def picture(self):
        width, height = self.SIZE
        all_planes, pixmap = ctypes.c_ulong(0xFFFFFFFF), 2
        image = self.x11.XGetImage(self.display, self.root, 0, 0, width, height, all_planes, pixmap)
        pixels = ctypes.string_at(image.contents.data, 4 * width * height)
        self.x11.XDestroyImage(image)
        return pixels

    def part(self, pixels, box):
        width, height = self.SIZE
        left, right = max(box.x, 0), min(box.x + box.width, width)
        rows = range(max(box.y, 0), min(box.y + box.height, height))
        return [pixels[4 * (width * y + left) : 4 * (width * y + right)] for y in rows]


def wait(condition):
    """What the condition gives as soon as that is something; nothing when it takes too long."""
    end = time.monotonic() + PATIENCE
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
        time.sleep(0.01)
    return None


def press(key):
    subprocess.run(["xdotool", "key", key], check=True)


def name_of(thing):
    """That of a combo box is what is chosen in it, and its label is its name."""
    if thing.get_role_name() != "combo box":
        return thing.get_name().strip()
    labels = [each for each in thing.get_relation_set() if each.get_relation_type() == Atspi.RelationType.LABELLED_BY]
    return labels[0].get_target(0).get_name().strip() if labels else ""


def describe(thing):
    return f'{thing.get_role_name()} "{name_of(thing)}"'


def below(thing):
    """All that is shown in it."""
    for child in children_of(thing):
        if has_state(child, "visible"):
            yield child
            yield from below(child)


def bindings_of(thing):
    if "Action" not in thing.get_interfaces():
        return set()
    keys = (Atspi.Action.get_key_binding(thing, i) for i in range(Atspi.Action.get_n_actions(thing)))
    return {key.upper() for key in keys if key.startswith("Alt+")}


def judge_thing(thing):
    role = thing.get_role_name()
    if role not in INPUTS | PARTS | HOLDERS | READ_ONLY or role in HOLDERS and has_state(thing, "focusable"):
        fault(f"{describe(thing)} has no fitting role")
    says_something = role in INPUTS | PARTS or role in READ_ONLY and role != "label"
    is_blank_line = role == "list item" and thing.get_parent().get_name() in WITH_BLANK_LINES
    if says_something and not name_of(thing) and not is_blank_line:
        fault(f"a {role} has no name")
    if "<qt>" in thing.get_description():
        fault(f"{describe(thing)} is described in markup")
    if role == "text" and "Text" not in thing.get_interfaces():
        fault(f"{describe(thing)} has no value")


def judge_all(window, things, role, page):
    if window.get_role_name() != role:
        fault(f"the window is a {window.get_role_name()}")
    if role == "dialog" and has_state(window, "modal") == (window.get_name() in NOT_MODAL):
        fault("the window is modal, or should be")
    for thing in things:
        judge_thing(thing)
    tabs = [each.get_name() for each in things if each.get_role_name() == "page tab" and has_state(each, "selected")]
    if tabs != ([page] if page else []):
        fault(f"the pages shown are {tabs}")
    owners = {}
    for thing in things:
        for key in bindings_of(thing):
            if key in owners:
                fault(f"{key} is {describe(thing)} and {owners[key]}")
            owners[key] = describe(thing)
    inputs = [thing for thing in things if thing.get_role_name() in INPUTS]
    named = [describe(thing) for thing in inputs]
    for name in {name for name in named if named.count(name) > 1}:
        fault(f"there are two of {name}")
    defaults = [thing for thing in inputs if has_state(thing, "is_default")]
    if len(defaults) > 1:
        fault(f"several default buttons: {[describe(each) for each in defaults]}")
    for thing in inputs:
        if thing.get_role_name() == "push button" and has_state(thing, "focused") and role != "frame":
            if thing not in defaults:
                fault(f"{describe(thing)} has the keyboard and is not the default button")
    return inputs


class Walk:
    """Through what takes input in a window."""

    def __init__(self, inputs):
        self.screen = Screen()
        self.inputs = inputs
        self.reached = []

    def unreached(self):
        """What is chosen on the way may enable others, and what ends may hide some."""
        usable = [each for each in self.inputs if has_state(each, "enabled") and has_state(each, "visible")]
        return [each for each in usable if each not in self.reached]

    def focused(self):
        found = [each for each in self.inputs if has_state(each, "focused")]
        return found[0] if len(found) == 1 else None

    def go(self, key, last):
        """To another one, which then looks different; nothing when the key does not lead there."""
        before = self.screen.picture()
        press(key)
        current = wait(lambda: (found := self.focused()) and found != last and found)
        if current is None:
            fault(f"{key} does not lead on from {describe(last)}")
            return None
        self.expect_change(before, current, f"one does not see that {describe(current)} has the keyboard")
        if current not in self.reached:
            self.reached.append(current)
        return current

    def expect_change(self, before, thing, text):
        box = Atspi.Component.get_extents(thing, Atspi.CoordType.SCREEN)
        old = self.screen.part(before, box)
        if not wait(lambda: self.screen.part(self.screen.picture(), box) != old):
            fault(text)

    def round(self, key, first, visit=lambda stop: stop):
        """All to which the key leads until it is back. A visit gives what has the keyboard after it."""
        current = first
        for _ in range(2 * len(self.inputs)):
            current = self.go(key, current)
            if current is None or current == first:
                return
            current = visit(current)
        fault(f"{key} does not lead back to {describe(first)}")

    def others_of_group(self, stop):
        """Those to which only the arrow keys lead."""
        unreached = self.unreached()
        if stop.get_role_name() == "radio button":
            radios = [each for each in self.inputs if each.get_role_name() == "radio button" and has_state(each, "enabled")]
            place = radios.index(stop)
            if any(each in unreached for each in radios[max(place - 1, 0) : place + 2]):
                self.round("Down", stop)
        elif stop.get_parent().get_role_name() == "tool bar":
            bar = [each for each in self.inputs if each.get_parent() == stop.get_parent() and has_state(each, "enabled")]
            for key, end in ("Left", bar[0]), ("Right", bar[-1]):
                while stop != end and any(each in unreached for each in bar):
                    stop = self.go(key, stop) or end
        return stop

    def rows(self, stop):
        """Those of a list, to which the arrow keys lead."""
        count = stop.get_child_count() if stop.get_role_name() == "list" else 0
        if count > 1:
            first = focused_row(stop)
            before = self.screen.picture()
            press("Up" if first > 1 else "Down")
            if not wait(lambda: (found := focused_row(stop)) and found != first):
                fault(f"the arrow keys do not lead on in {describe(stop)}")
            self.expect_change(before, stop, f"one does not see which row of {describe(stop)} has the keyboard")
        return stop

    def run(self):
        if len(self.unreached()) < 2:
            return
        first = wait(self.focused)
        if first is None:
            fault("nothing has the keyboard, or several have")
            return
        self.rows(first)
        self.round("Tab", first, self.rows)
        if self.unreached():
            self.round("Tab", self.others_of_group(first), self.others_of_group)
        for each in self.unreached():
            fault(f"the keyboard does not come to {describe(each)}")


def focused_row(shown):
    """Counted from 1; 0: none."""
    return next((row for row, each in enumerate(children_of(shown), 1) if has_state(each, "focused")), 0)


def main(title, role="dialog", page=None):
    active = wait(lambda: [each for each in windows() if each.get_name() == title and has_state(each, "active")])
    if not active:
        sys.exit("it is not active")
    things = list(below(active[0]))
    Walk(judge_all(active[0], things, role, page)).run()
    sys.exit(1 if found_faults else 0)


if __name__ == "__main__":
    main(*sys.argv[1:])
