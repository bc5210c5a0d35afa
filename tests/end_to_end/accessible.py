#!/usr/bin/python3
"""What assistive technology reads of the program: prints all that is shown, one thing a line and in the order of the tree, as

    role|name|states|text or value

or, given such a "role|name", whose name is a regular expression, where on the screen to click for it: the column and the row.
It asks through the library that screen readers use, and tells of the states those that they speak of."""

import re
import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

PROGRAM = "permora"
STATES = ("active", "focused", "selected", "checked", "editable", "modal")


def has_state(thing, name):
    return thing.get_state_set().contains(getattr(Atspi.StateType, name.upper()))


def content_of(thing):
    """The text of a field, or the number of a progress bar."""
    interfaces = thing.get_interfaces()
    if "EditableText" in interfaces:
        return Atspi.Text.get_text(thing, 0, -1)
    return f"{Atspi.Value.get_current_value(thing):g}" if "Value" in interfaces else ""


def tell(thing):
    """Prints a thing that is shown and all in it."""
    has = thing.get_state_set().contains
    if not has(Atspi.StateType.VISIBLE):
        return
    states = [name for name in STATES if has(getattr(Atspi.StateType, name.upper()))]
    if not has(Atspi.StateType.ENABLED):
        states.append("disabled")
    name = thing.get_name().replace("\n", " ")
    print(thing.get_role_name(), name, ",".join(states), content_of(thing), sep="|")
    for child in children_of(thing):
        tell(child)


def children_of(thing):
    """Those that are still there when they are asked for."""
    for index in range(thing.get_child_count()):
        child = thing.get_child_at_index(index)
        if child is not None:
            yield child


def windows():
    """Those of the program."""
    for program in children_of(Atspi.get_desktop(0)):
        if program.get_name() == PROGRAM:
            yield from children_of(program)


def find(thing, role, name):
    """The first one in it that is shown and can be used."""
    if not has_state(thing, "visible"):
        return None
    if thing.get_role_name() == role and re.fullmatch(name, thing.get_name()) and has_state(thing, "enabled"):
        return thing
    return next(filter(None, (find(child, role, name) for child in children_of(thing))), None)


def place_of(wanted):
    """In the newest window that has it. Rows are hit at their first text."""
    role, name = wanted.split("|", 1)
    for window in reversed(list(windows())):
        found = find(window, role, name)
        if found is not None:
            box = Atspi.Component.get_extents(found, Atspi.CoordType.SCREEN)
            across = min(box.width // 2, 40) if role == "list item" else box.width // 2
            return f"{box.x + across} {box.y + box.height // 2}"
    sys.exit(f"nothing is {wanted}")


if __name__ == "__main__":
    if len(sys.argv) > 1:
        print(place_of(sys.argv[1]))
        sys.exit()
    shown = list(windows())
    for window in shown:
        tell(window)
    sys.exit(0 if shown else 1)
