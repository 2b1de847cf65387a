"""Operates the programs as a screen reader does: through the accessibility tree of the desktop."""

import os
import subprocess
import tempfile
import time

import gi

gi.require_version("Atspi", "2.0")
from gi.repository import Atspi  # noqa: E402

PATIENCE = 20.0  # seconds


def until(condition, what, patience=PATIENCE):
    """Waits until condition() gives something true, and gives it."""
    end = time.monotonic() + patience
    while time.monotonic() < end:
        found = condition()
        if found:
            return found
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


class Program:
    """A running program and its simulated bus, if any."""

    def __init__(self, binaries, name, *arguments, bus=None):
        self.folder = tempfile.TemporaryDirectory()
        self.bus = None
        ports = []
        if bus is not None:
            self.bus = subprocess.Popen(
                [os.path.join(binaries, "quorvel-sim"), *bus],
                stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
            ports = ["--port", self.bus.stdout.readline().strip()]
        self.process = subprocess.Popen(
            [os.path.join(binaries, name), *ports, "--folder", self.folder.name, *arguments])
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
        self.process.wait()
        if self.bus:
            self.bus.stdin.close()
            self.bus.wait()
            self.bus.stdout.close()
        self.folder.cleanup()

    def tell_bus(self, line):
        self.bus.stdin.write(line + "\n")
        self.bus.stdin.flush()
        return self.bus.stdout.readline()

    def all(self, role, name=None):
        return [node for node in descendants(self.application)
                if node.get_role() == role and (name is None or node.get_name() == name)]

    def one(self, role, name=None):
        return until(lambda: next(iter(self.all(role, name)), None), f"{role.value_nick} {name!r}")

    def window(self, name):
        def find():
            for index in range(self.application.get_child_count()):
                child = self.application.get_child_at_index(index)
                if child and child.get_name() == name:
                    return child
            return None
        return until(find, f"window {name!r}")

    def box_text(self):
        """The text of the message box that is open."""
        def find():
            for role in (Atspi.Role.ALERT, Atspi.Role.DIALOG):
                for box in self.all(role):
                    texts = [node.get_name() for node in descendants(box)
                             if node.get_role() == Atspi.Role.LABEL and node.get_name()]
                    if texts:
                        return texts[0]
            return None
        return until(find, "a message box")

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


def click(node):
    """A click of the mouse in the middle of a node."""
    place = node.get_extents(Atspi.CoordType.SCREEN)
    Atspi.generate_mouse_event(place.x + place.width // 2, place.y + place.height // 2, "b1c")


def type_into(node, text):
    node.set_text_contents(text)
