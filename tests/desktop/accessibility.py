"""Plays a user of a screen reader, who knows the program only by what it tells assistive technology. Checks that every
control that can have the focus has a name and the right role. Does the main job and visits every window through
accessibility actions alone.

Usage: accessibility.py FOLDER_WITH_WORLD_AND_LIST
"""

import sys
import time
import warnings

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

warnings.simplefilter("ignore")
Atspi.set_timeout(800, 5000)  # milliseconds: for an answer, and for one from a program that is starting
folder = sys.argv[-1]
failures = 0


def check(what, expected, actual):
    global failures
    if expected != actual:
        failures += 1
        print(f"FAILED: {what}\n  expected: {expected}\n  actual:   {actual}")


def wait_for(what, look):
    """Returns the first true result of `look`. An error is no result: what it looks at may be changing."""
    end = time.time() + 10
    while time.time() < end:
        try:
            found = look()
            if found:
                return found
        except gi.repository.GLib.GError:
            pass
        time.sleep(0.05)
    print(f"FAILED: nothing found: {what}")
    sys.exit(1)


def children(parent):
    if parent is None:
        return []
    found = (parent.get_child_at_index(i) for i in range(parent.get_child_count()))
    return [child for child in found if child]


def everything(parent):
    for child in children(parent):
        yield child
        yield from everything(child)


def has(thing, state):
    return thing.get_state_set().contains(state)


def program():
    return next((app for app in children(Atspi.get_desktop(0)) if app.get_name() == "Quillmere"), None)


def window(title):
    tops = wait_for("the program", lambda: children(program()))
    return next((top for top in tops if (top.get_name() or "").startswith(title)), None)


def find(parent, role, name):
    return wait_for(f"{role} {name}",
                    lambda: next((thing for thing in everything(parent)
                                  if thing.get_role_name() == role and thing.get_name() == name), None))


def act(thing, action):
    names = [thing.get_action_name(i) for i in range(thing.get_n_actions())]
    if action not in names:
        check(f"actions of {thing.get_name()}", action, names)
        return
    try:
        thing.do_action(names.index(action))
    except gi.repository.GLib.GError:
        pass  # an action that opens a window answers only when that window is closed
    time.sleep(0.2)


def choose(parent, item):
    menus = [thing for thing in everything(parent) if thing.get_role_name() == "popup menu"]
    holders = [menu for menu in menus if item in (entry.get_name() for entry in children(menu))]
    act(find(holders[0], "menu item", item), "Press")


def answer_file_dialog(path, button):
    dialog = wait_for("file dialog", lambda: window("Select "))
    name = wait_for("file name", lambda: next((thing for thing in everything(dialog)
                                               if thing.get_role_name() == "text"
                                               and has(thing, Atspi.StateType.EDITABLE)), None))
    name.set_text_contents(path)
    act(find(dialog, "push button", button), "Press")
    wait_for("end of the file dialog", lambda: not window("Select "))


def text_of(thing):
    return thing.get_text(0, thing.get_character_count())


def focusable(top):
    return [(thing.get_role_name(), thing.get_name()) for thing in everything(top)
            if has(thing, Atspi.StateType.FOCUSABLE) and thing.get_role_name() not in ("list item", "menu item")]


main = wait_for("main window", lambda: window("Quillmere"))
options = ["In Rectangle", "Not In Rectangle", "Equal To", "Not Equal", "In Facet", "Not in Facet"]
buttons = ["Rectangle and Item List Editor", "Run", "Halt", "Exit"]
check("controls of the main window",
      sorted([("check box", f"Filter {what}") for what in ("Rectangles", "Items", "Faucets")]
             + [("radio button", name) for name in options] + [("push button", name) for name in buttons]
             + [("text", "Status log"), ("text", "Facet Number:")]), sorted(focusable(main)))

# The main job.
choose(main, "Load a List")
answer_file_dialog(f"{folder}/list.lst", "Open")
choose(main, "File to Read")
answer_file_dialog(f"{folder}/world.scp", "Open")
choose(main, "Save Output As")
answer_file_dialog(f"{folder}/spoken.scp", "Save")
for name in ("Filter Rectangles", "Filter Items", "Filter Faucets"):
    act(find(main, "check box", name), "Toggle")
act(find(main, "radio button", "Not In Rectangle"), "Press")
check("the chosen option is checked", True, has(find(main, "radio button", "Not In Rectangle"), Atspi.StateType.CHECKED))
check("the other one is not", False, has(find(main, "radio button", "In Rectangle"), Atspi.StateType.CHECKED))
find(main, "text", "Facet Number:").set_text_contents("0")
check("what Run would work with", f"Reads: {folder}/world.scp\nWrites: {folder}/spoken.scp",
      find(main, "push button", "Run").get_description())
act(find(main, "push button", "Run"), "Press")
wait_for("report in the log", lambda: "Processed 241 items." in text_of(find(main, "text", "Status log")))

# The other windows.
act(find(main, "push button", "Rectangle and Item List Editor"), "Press")
editor = wait_for("list editor", lambda: window("Rectangle and Item List Editor"))
boxes = ["Rectangle Name:", "X1:", "Y1:", "X2:", "Y2:"]
check("controls of the editor",
      sorted([("list", "Rectangle Listing"), ("list", "Item Listing"), ("text", "Item Name:"), ("text", "Item Code:")]
             + [("text", name) for name in boxes]
             + 2 * [("push button", name) for name in ("Add", "Edit", "Delete")]), sorted(focusable(editor)))
choose(editor, "Close Window")
wait_for("end of the editor", lambda: not window("Rectangle and Item List Editor"))

choose(main, "Help")
help_window = wait_for("help window", lambda: window("Halp"))
check("controls of the help window", [("text", "Help text"), ("push button", "Ok"), ("push button", "????")],
      focusable(help_window))
act(find(help_window, "push button", "Ok"), "Press")

choose(main, "About")
about = wait_for("about box", lambda: window("About"))
check("controls of the about box",
      sorted([("link", "support@quillmere.example"), ("link", "https://quillmere.example/"), ("push button", "Ok")]),
      sorted(focusable(about)))
act(find(about, "push button", "Ok"), "Press")
wait_for("end of the about box", lambda: not window("About"))
act(find(main, "push button", "Exit"), "Press")

sys.exit(1 if failures else 0)
