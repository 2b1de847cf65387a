"""Operates the programs as a screen reader does: through the accessibility tree of the desktop."""

import json
import os
import shutil
import subprocess
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi, GLib  # noqa: E402

PATIENCE = 20.0  # seconds
RETURN_KEY = 0xff0d
ESCAPE_KEY = 0xff1b
SPACE_KEY = 0x20
CONTROL_KEYCODE, ALT_KEYCODE = 37, 64  # of the keyboard of the virtual screen
MENU_OPENS = 0.5  # seconds
MENU_TRIES = 2
# The letters of the menu "Tools" by the captions of the windows that they open.
TOOLS = {"Traffic": "t", "Line Health": "h", "Journal": "j", "Stored Readings": "e", "Settings": "s",
         "Why no answer?": "w", "Find Readouts One by One": "f", "Site": "i",
         "Pixels": "x", "Calibration Record": "c"}
READ_ONLY = "r"


def until(condition, what, patience=PATIENCE):
    """Waits until condition() gives something true, and gives it."""
    end = time.monotonic() + patience
    while time.monotonic() < end:
        try:
            found = condition()
            if found:
                return found
        except GLib.Error:
            pass  # something went away while it was read
        time.sleep(0.05)
    raise AssertionError("waited in vain for " + what)


def descendants(node):
    for index in range(node.get_child_count()):
        child = node.get_child_at_index(index)
        if child is None:
            continue
        yield child
        yield from descendants(child)


def has_state(node, state):
    return node.get_state_set().contains(state)


class OwnFolder:
    """A folder of this name, which must be free, until cleanup()."""

    def __init__(self, name):
        os.mkdir(name)
        self.name = name

    def cleanup(self):
        shutil.rmtree(self.name)


class Program:
    """A running program and its simulated bus, if any. Its files are in `folder`, or in a temporary one."""

    def __init__(self, binaries, name, *arguments, bus=None, folder=None):
        self.folder = OwnFolder(folder) if folder else tempfile.TemporaryDirectory()
        self.bus = None
        ports = []
        if bus is not None:
            self.bus = subprocess.Popen(
                [os.path.join(binaries, "quorvel-sim"), *bus],
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
            ports = ["--port", self.bus.stdout.readline().strip()]
        self.process = subprocess.Popen(
            [os.path.join(binaries, name), *ports, "--folder", self.folder.name, *arguments],
            env={**os.environ, "XDG_DATA_HOME": self.folder.name})
        self.application = until(self._find, name + " on the desktop")

    def _find(self):
        if self.process.poll() is not None:
            raise AssertionError(f"{self.process.args[0]} ended with status {self.process.returncode}")
        desktop = Atspi.get_desktop(0)
        for index in range(desktop.get_child_count()):
            application = desktop.get_child_at_index(index)
            if application and application.get_process_id() == self.process.pid:
                return application
        return None

    def close(self):
        self.process.terminate()
        try:
            self.process.wait(timeout=PATIENCE)
        except subprocess.TimeoutExpired:  # a question is open
            self.process.kill()
            self.process.wait()
        if self.bus:
            self.bus.stdin.close()
            self.bus.wait()
            self.bus.stdout.close()
        self.folder.cleanup()

    def address(self, letter, address):
        """Chooses an instrument type, opens the port, and addresses a readout; "" leaves that to a search."""
        self.press(Atspi.Role.RADIO_BUTTON, "Sensor Type " + letter)
        type_into(self.one(Atspi.Role.TEXT, "CCD Address"), address)
        self.press(Atspi.Role.PUSH_BUTTON, "OpenComm")
        self.one(Atspi.Role.PUSH_BUTTON, "CloseComm")

    def open(self, item, caption):
        """Chooses a menu item, and gives the window that it opens."""
        self.press(Atspi.Role.MENU_ITEM, item)
        return self.window(caption)

    def tool(self, caption):
        """Chooses an item of the button "Tools" by the keyboard, and gives the window that it opens."""
        return self.strike_in_tools(TOOLS[caption], lambda: self.windows().get(caption), caption)

    def strike_in_tools(self, letter, outcome, what):
        """Opens the menu "Tools" and strikes a letter: its items are not in the tree. Gives the outcome when it is there."""
        for _ in range(MENU_TRIES):
            click(self.one(Atspi.Role.LABEL, "CCD Address"))  # keys go to the window below the mouse
            strike_with_control("t")
            time.sleep(MENU_OPENS)
            type_keys(letter)
            try:
                return until(outcome, what, patience=PATIENCE / MENU_TRIES)
            except AssertionError:
                pass  # the letter came before the menu, on a busy machine
        return until(outcome, what)

    def tell_bus(self, line):
        self.bus.stdin.write(line + "\n")
        self.bus.stdin.flush()
        return self.bus.stdout.readline()

    def frames(self):
        """The frames that reached the bus since the last call, without their line ends."""
        return [frame["text"].rstrip() for frame in json.loads(self.tell_bus("frames"))["frames"]]

    def state(self, address):
        """All that a readout holds."""
        return json.loads(self.tell_bus(f"state {address}"))

    def all(self, role, name=None):
        return [node for node in descendants(self.application)
                if node.get_role() == role and (name is None or node.get_name() == name)]

    def one(self, role, name=None):
        return until(lambda: next(iter(self.all(role, name)), None), f"{role.value_nick} {name!r}")

    def windows(self):
        """The open windows by their captions."""
        children = (self.application.get_child_at_index(index)
                    for index in range(self.application.get_child_count()))
        return {child.get_name(): child for child in children if child}

    def window(self, name):
        return until(lambda: self.windows().get(name), f"window {name!r}")

    def boxes(self):
        """The open message boxes by their texts."""
        found = {}
        for box in self.all(Atspi.Role.ALERT):
            texts = [node.get_name() for node in descendants(box) if node.get_role() == Atspi.Role.LABEL]
            found[next(filter(None, texts), None)] = box
        found.pop(None, None)
        return found

    def box_text(self):
        """The text of the message box that is open."""
        return next(iter(until(self.boxes, "a message box")))

    def answer(self, button):
        """Answers the message box that is open, and gives its text when it is gone."""
        text, box = next(iter(until(self.boxes, "a message box").items()))
        press(one_in(box, Atspi.Role.PUSH_BUTTON, button))
        until(lambda: text not in self.boxes(), "the end of " + text)
        return text

    def choose_file(self, caption, path, button="Open"):
        """Types a path into the file dialog, accepts it, and waits until the dialog has gone: what is pressed before that
        is lost."""
        dialog = self.window(caption)
        type_into(one_in(dialog, Atspi.Role.TEXT, "File name:"), path)
        accept = one_in(dialog, Atspi.Role.PUSH_BUTTON, button)
        until(lambda: has_state(accept, Atspi.StateType.ENABLED), button)
        press(accept)
        until(lambda: caption not in self.windows(), f"the end of {caption!r}")

    def children(self):
        """The process ids of the programs that this one started and that still run."""
        pid = self.process.pid
        with open(f"/proc/{pid}/task/{pid}/children", encoding="ascii") as children:
            return [int(child) for child in children.read().split()]

    def press(self, role, name):
        press(self.one(role, name))


def press(node):
    """Does the node's first action: a button is pressed, a menu item chosen, a radio button switched on."""
    assert node.get_n_actions() > 0, node.get_name() + " has no action"
    node.do_action(0)


def one_in(node, role, name):
    """What is inside a node by its role and name."""
    return until(lambda: next((found for found in descendants(node)
                               if found.get_role() == role and found.get_name() == name), None),
                 f"{role.value_nick} {name!r} in {node.get_name()!r}")


def row(window, name):
    """The controls that stand in the row of a label, or in a frame with a caption."""
    for node in descendants(window):
        if node.get_role() == Atspi.Role.PANEL and node.get_name() == name:
            return list(descendants(node))
    top = one_in(window, Atspi.Role.LABEL, name).get_extents(Atspi.CoordType.SCREEN).y
    return [node for node in descendants(window) if node.get_extents(Atspi.CoordType.SCREEN).y == top]


def click(node):
    """A click of the mouse in the middle of a node."""
    place = node.get_extents(Atspi.CoordType.SCREEN)
    Atspi.generate_mouse_event(place.x + place.width // 2, place.y + place.height // 2, "b1c")


def type_keys(text):
    """Strikes the keys of a text, Return for a line feed."""
    for part in text.splitlines(keepends=True):
        Atspi.generate_keyboard_event(0, part.rstrip("\n"), Atspi.KeySynthType.STRING)
        if part.endswith("\n"):
            Atspi.generate_keyboard_event(RETURN_KEY, None, Atspi.KeySynthType.SYM)


def strike(key):
    """Strikes a key by its symbol number."""
    Atspi.generate_keyboard_event(key, None, Atspi.KeySynthType.SYM)


def strike_with(keycode, letter):
    """Strikes a letter while a key is held down."""
    Atspi.generate_keyboard_event(keycode, None, Atspi.KeySynthType.PRESS)
    Atspi.generate_keyboard_event(ord(letter), None, Atspi.KeySynthType.SYM)
    Atspi.generate_keyboard_event(keycode, None, Atspi.KeySynthType.RELEASE)


def strike_with_control(letter):
    strike_with(CONTROL_KEYCODE, letter)


def strike_with_alt(letter):
    strike_with(ALT_KEYCODE, letter)


def point_at(node):
    """Moves the mouse to the middle of a node: keys go to the window below it."""
    place = node.get_extents(Atspi.CoordType.SCREEN)
    Atspi.generate_mouse_event(place.x + place.width // 2, place.y + place.height // 2, "abs")


def select(combo, entry):
    """Opens a drop-down list and clicks one of its entries."""
    press(combo)
    item = one_in(combo, Atspi.Role.LIST_ITEM, entry)
    until(lambda: has_state(item.get_parent(), Atspi.StateType.SHOWING), "the open list")
    click(item)
    until(lambda: combo.get_name() == entry, entry)


def type_into(node, text):
    node.set_text_contents(text)
