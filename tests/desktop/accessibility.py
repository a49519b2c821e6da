"""Plays a user of a screen reader, who knows the program only by what it tells assistive technology. Runs a pass and
visits every window through accessibility actions alone. Checks that every control that can have the focus has a name
and the right role.
"""

import contextlib
import sys
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 20_000  # milliseconds to wait for an answer of the program, also while it starts
Atspi.set_timeout(PATIENCE, PATIENCE)


def wait_for(what, look):
    """Returns the first true result of `look`. An error is no result: what it looks at may be changing."""
    end = time.time() + 60
    while time.time() < end:
        with contextlib.suppress(GLib.GError):
            if found := look():
                return found
        time.sleep(0.02)
    sys.exit(f"FAILED: nothing found: {what}")


def children(parent):
    found = (parent.get_child_at_index(i) for i in range(parent.get_child_count())) if parent else ()
    return [child for child in found if child]


def everything(parent):
    for child in children(parent):
        yield child
        yield from everything(child)


def has(thing, state):
    return thing.get_state_set().contains(state)


def window(title):
    program = next((app for app in children(Atspi.get_desktop(0)) if app.get_name() == "Quillmere"), None)
    return next((top for top in children(program) if (top.get_name() or "").startswith(title)), None)


def actions(thing):
    return [thing.get_action_name(i) for i in range(thing.get_n_actions())]


def find(parent, role, name, action=None):
    return wait_for(f"{role} {name} {action or ''}",
                    lambda: next((thing for thing in everything(parent)
                                  if thing.get_role_name() == role and thing.get_name() == name
                                  and (action is None or action in actions(thing))), None))


def act(parent, role, name, action="Press"):
    thing = find(parent, role, name, action)
    index = actions(thing).index(action)
    Atspi.set_timeout(100, 100)
    with contextlib.suppress(GLib.GError):  # an action that opens a window may answer only when that window is closed
        thing.do_action(index)
    Atspi.set_timeout(PATIENCE, PATIENCE)


def check_controls(top, *expected):
    """Compares the controls that can have the focus with lines of the form "role: name, name"."""
    controls = {}
    for thing in everything(top):
        if has(thing, Atspi.StateType.FOCUSABLE) and thing.get_role_name() not in ("list item", "menu item"):
            controls.setdefault(thing.get_role_name(), []).append(thing.get_name())
    actual = sorted(f"{role}: {', '.join(names)}" for role, names in controls.items())
    if actual != sorted(expected):
        sys.exit(f"FAILED: controls of {top.get_name()}\n  expected: {sorted(expected)}\n  actual:   {actual}")


main = wait_for("main window", lambda: window("Quillmere"))
check_controls(main, "check box: Filter Rectangles, Filter Items, Filter Faucets",
               "radio button: In Rectangle, Not In Rectangle, Equal To, Not Equal, In Facet, Not in Facet",
               "push button: Rectangle and Item List Editor, Run, Halt, Exit",
               "text: Facet Number:, Status log")
act(main, "check box", "Filter Faucets", "Toggle")
act(main, "radio button", "Not in Facet")
wait_for("the choice", lambda: [has(find(main, "radio button", name), Atspi.StateType.CHECKED)
                                for name in ("In Facet", "Not in Facet")] == [False, True])
find(main, "text", "Facet Number:").set_text_contents("0")
act(main, "push button", "Run")
log = find(main, "text", "Status log")
wait_for("report in the log", lambda: "Processed 241 items." in log.get_text(0, log.get_character_count()))

for opener, title, closer, *controls in (
        (("push button", "Rectangle and Item List Editor"), "Rectangle and Item List Editor",
         ("menu item", "Close Window"),
         "list: Rectangle Listing, Item Listing",
         "text: Rectangle Name:, X1:, Y1:, X2:, Y2:, Item Name:, Item Code:",
         "push button: Add, Edit, Delete, Add, Edit, Delete"),
        (("menu item", "Help"), "Halp", ("push button", "Ok"), "text: Help text", "push button: Ok, ????"),
        (("menu item", "About"), "About", ("push button", "Ok"),
         "link: support@quillmere.example, https://quillmere.example/", "push button: Ok")):
    act(main, *opener)
    check_controls(wait_for(title, lambda: window(title)), *controls)
    act(window(title), *closer)
    wait_for(f"end of {title}", lambda: not window(title))
act(main, "push button", "Exit")
