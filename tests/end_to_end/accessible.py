#!/usr/bin/python3
"""What assistive technology reads of the program: prints all that is shown, one thing a line and in the order of the tree, as

    role|name|states|text or value

It asks through the library that screen readers use, and tells of the states those that they speak of."""

import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

PROGRAM = "permora"
STATES = ("active", "focused", "selected", "checked", "editable", "modal")


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


windows = [
    window
    for program in children_of(Atspi.get_desktop(0))
    if program.get_name() == PROGRAM
    for window in children_of(program)
]
for window in windows:
    tell(window)
sys.exit(0 if windows else 1)
