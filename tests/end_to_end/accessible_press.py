#!/usr/bin/python3
"""Uses the program as assistive technology does, which needs neither a mouse nor keys: presses the first thing shown of

    accessible_press.py ROLE NAME

It asks through the library that screen readers use. Exits with 1 where there is no such thing, or it cannot be pressed."""

import sys

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

PROGRAM = "permora"


def find(thing, role, name):
    """The first such thing in the tree below `thing`, or None."""
    if thing is None or not thing.get_state_set().contains(Atspi.StateType.VISIBLE):
        return None
    if thing.get_role_name() == role and thing.get_name() == name:
        return thing
    children = (thing.get_child_at_index(index) for index in range(thing.get_child_count()))
    return next((found for child in children if (found := find(child, role, name))), None)


def press(thing):
    """Whether the thing can be pressed, which is its first action, and was."""
    return Atspi.Action.get_n_actions(thing) > 0 and Atspi.Action.do_action(thing, 0)


desktop = Atspi.get_desktop(0)
programs = [desktop.get_child_at_index(index) for index in range(desktop.get_child_count())]
windows = [
    program.get_child_at_index(index)
    for program in programs
    if program.get_name() == PROGRAM
    for index in reversed(range(program.get_child_count()))
]
wanted = next((found for window in windows if (found := find(window, *sys.argv[1:]))), None)
sys.exit(0 if wanted and press(wanted) else 1)
