"""The main window, operated through the accessibility tree."""

import json
import os
import select
import socket
import sys
import tempfile
import time
import unittest

from desk import PATIENCE, Atspi, Program, click, descendants, has_state, press, type_into, until

BINARIES = sys.argv.pop(1)
BUS = ["--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:B"]
BUTTON = Atspi.Role.PUSH_BUTTON
RADIO = Atspi.Role.RADIO_BUTTON
ITEM = Atspi.Role.MENU_ITEM


class MainWindow(unittest.TestCase):
    program_name = "quorvel"

    def setUp(self):
        self.program = Program(BINARIES, self.program_name, bus=BUS)
        self.addCleanup(self.program.close)
        self.window = self.program.window("QUORVEL V4.11")

    def reading(self):
        return next((node for node in self.program.all(Atspi.Role.LIST_ITEM)
                     if node.get_name()[2:3] == ":"), None)

    def open_port(self):
        press(self.program.one(BUTTON, "OpenComm"))
        until(lambda: self.program.all(BUTTON, "CloseComm"), "CloseComm")

    def test_search_fills_list_and_address(self):
        self.open_port()
        press(self.program.one(BUTTON, "Search CCD"))
        until(lambda: self.program.all(Atspi.Role.LABEL, "05,12"), "the addresses found")
        address = self.program.one(Atspi.Role.TEXT, "CCD Address")
        self.assertEqual(Atspi.Text.get_text(address, 0, -1), "05")

    def test_readings_appear_and_stop(self):
        self.open_port()
        type_into(self.program.one(Atspi.Role.TEXT, "CCD Address"), "12")
        press(self.program.one(BUTTON, "Immediate Reading"))
        stop = self.program.one(BUTTON, "Stop")
        self.assertFalse(has_state(self.program.one(BUTTON, "CloseComm"), Atspi.StateType.ENABLED))
        line = until(self.reading, "a reading")
        self.assertRegex(line.get_name(), r"^\d\d:\d\d:\d0    X: [+-][\d.]{7}  Y: [+-][\d.]{7}  $")
        press(stop)
        self.program.one(BUTTON, "Immediate Reading")
        until(lambda: has_state(self.program.one(BUTTON, "CloseComm"), Atspi.StateType.ENABLED), "CloseComm")

    def test_a_second_press_in_mid_search_starts_nothing(self):
        self.open_port()
        search = self.program.one(BUTTON, "Search CCD")
        press(search)
        time.sleep(0.5)
        press(search)
        press(self.program.one(BUTTON, "CloseComm"))
        until(lambda: self.program.all(Atspi.Role.LABEL, "05,12"), "the addresses found")
        self.assertTrue(self.program.all(BUTTON, "CloseComm"))
        self.assertEqual(self.program.tell_bus("frames").count(":FF01FF"), 1)

    def test_closed_port_gives_the_guard_message(self):
        press(self.program.one(BUTTON, "Search CCD"))
        self.assertEqual(self.program.box_text(), "CommPort not Opened")
        press(self.program.one(BUTTON, "OK"))

    def test_types_change_the_menus(self):
        # items of a closed menu are all invisible; those that are hidden are disabled as well
        def offered(name):
            return has_state(self.program.one(ITEM, name), Atspi.StateType.ENABLED)
        press(self.program.one(RADIO, "Sensor Type D"))
        until(lambda: self.program.all(ITEM, "Invert"), "the caption Invert")
        self.assertTrue(offered("X-GrayScale-Data"))
        self.assertFalse(offered("Y-GrayScale-Data"))
        self.assertFalse(offered("Z2-GrayScale-Data"))
        press(self.program.one(RADIO, "Sensor Type C"))
        until(lambda: self.program.all(ITEM, "Invert and Swap"), "the caption Invert and Swap")
        self.assertTrue(offered("Y-GrayScale-Data"))
        self.assertTrue(offered("Z2-GrayScale-Data"))

    def test_help_without_file_names_it(self):
        press(self.program.one(ITEM, "Help"))
        self.assertIn("readme.txt", self.program.box_text())

    def test_quit_ends_the_program_in_mid_search(self):
        # a slow machine may come too late for the search once
        outcomes = (self.outcome_of_a_search_with_quit() for _ in range(5))
        self.assertIn("abandoned", outcomes)

    def outcome_of_a_search_with_quit(self):
        with tempfile.NamedTemporaryFile() as trace:
            self.program.close()
            self.program = Program(BINARIES, self.program_name, "--trace", trace.name, bus=BUS)
            self.addCleanup(self.program.close)
            self.open_port()
            leave = self.program.one(ITEM, "Quit")  # looking for it takes long
            press(self.program.one(BUTTON, "Search CCD"))
            until(lambda: os.path.getsize(trace.name) > 0, "the frame of the search")
            press(leave)
            self.assertEqual(self.program.process.wait(PATIENCE), 0)
            with open(trace.name, encoding="utf-8") as lines:
                return [json.loads(line).get("outcome") for line in lines][-1]

    def test_user_edition_hides_calibration(self):
        self.assertFalse([node for node in self.program.all(ITEM, "Calibration")
                          if has_state(node, Atspi.StateType.VISIBLE)])
        press(self.program.one(ITEM, "X Direction"))
        self.program.one(Atspi.Role.LABEL, '"X Direction" is not offered here.')


class SlowDeviceServer:
    """A port that takes connections only when told to."""

    def __init__(self):
        self.listener = socket.create_server(("127.0.0.1", 0), backlog=0)
        self.waiting = []
        while not self.waiting or self._is_connected(self.waiting[-1]):
            self.waiting.append(socket.socket())
            self.waiting[-1].setblocking(False)
            self.waiting[-1].connect_ex(self.listener.getsockname())

    @staticmethod
    def _is_connected(client):
        return select.select([], [client], [], 0.3)[1]

    def name(self):
        return "tcp:127.0.0.1:%d" % self.listener.getsockname()[1]

    def take_all(self):
        self.listener.settimeout(60)  # the system asks again after 1, 3, 7, 15 s ...
        for _ in range(len(self.waiting) + 1):
            self.waiting.append(self.listener.accept()[0])

    def close(self):
        for open_socket in [self.listener, *self.waiting]:
            open_socket.close()


class DeviceServer(unittest.TestCase):
    def test_a_second_click_while_it_is_reached_does_not_close_it_again(self):
        server = SlowDeviceServer()
        self.addCleanup(server.close)
        program = Program(BINARIES, "quorvel", "--port", server.name())
        self.addCleanup(program.close)
        button = program.one(BUTTON, "OpenComm")
        until(lambda: has_state(button, Atspi.StateType.SHOWING), "the button")
        click(button)
        time.sleep(0.5)
        click(button)
        time.sleep(0.2)
        self.assertTrue(program.all(BUTTON, "OpenComm"), "the server took the connection untold")
        server.take_all()
        program.one(BUTTON, "CloseComm")
        time.sleep(1)
        self.assertTrue(program.all(BUTTON, "CloseComm"))


class Demo(unittest.TestCase):
    def test_its_bus_comes_first_and_ends_with_the_program(self):
        program = Program(BINARIES, "quorvel", "--demo")
        self.addCleanup(program.close)
        (bus,) = until(program.children, "the simulated bus")
        ports = program.all(Atspi.Role.COMBO_BOX)[0]
        entries = [node.get_name() for node in descendants(ports) if node.get_role() == Atspi.Role.LIST_ITEM]
        self.assertRegex(entries[0], r"^COM1 /dev/pts/\d+$")
        press(program.one(BUTTON, "OpenComm"))
        program.one(BUTTON, "CloseComm")
        press(program.one(BUTTON, "Search CCD"))
        program.one(Atspi.Role.LABEL, "05,12,33,100,249")
        press(program.one(ITEM, "Quit"))
        self.assertEqual(program.process.wait(10), 0)
        until(lambda: not os.path.exists(f"/proc/{bus}"), "the end of the simulated bus")


class FactoryMainWindow(unittest.TestCase):
    def test_factory_edition_shows_calibration(self):
        program = Program(BINARIES, "quorvel-factory", bus=BUS)
        self.addCleanup(program.close)
        program.window("QUORVEL V4.11")
        self.assertTrue(has_state(program.one(ITEM, "Calibration"), Atspi.StateType.VISIBLE))


if __name__ == "__main__":
    unittest.main(verbosity=2)
