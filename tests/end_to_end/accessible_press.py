#!/usr/bin/python3 -B
"""Uses the program as assistive technology does, which needs neither a mouse nor keys: presses the first thing shown of

    accessible_press.py ROLE NAME

whose name is a regular expression. Exits with 1 where there is no such thing, or it cannot be pressed."""

import sys

from accessible import Atspi, find, windows


def press(thing):
    """Whether the thing can be pressed, which is its first action, and was."""
    return Atspi.Action.get_n_actions(thing) > 0 and Atspi.Action.do_action(thing, 0)


wanted = next(filter(None, (find(window, *sys.argv[1:]) for window in reversed(list(windows())))), None)
sys.exit(0 if wanted and press(wanted) else 1)
