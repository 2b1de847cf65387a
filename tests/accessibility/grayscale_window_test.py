"""The window "Gray Scale Graph", operated through the accessibility tree."""

import os
import subprocess
import sys
import unittest

from desk import Atspi, Program, has_state, one_in, press, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
CHART = Atspi.Role.CHART


class GrayscaleWindow(unittest.TestCase):
    """Readout 33, of three directions, before the program."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel", bus=["--fast", "--seed", "1", "--readout", "33:C"])
        self.addCleanup(self.program.close)
        self.program.address("C", "33")

    def open(self, direction):
        window = self.program.open(f"{direction}-GrayScale-Data", "Gray Scale Graph")
        one_in(window, CHART, f"Grayscale Graph of CCD's Pixels ({direction}-direction)")
        return window

    def test_the_chart_and_the_pixels_are_saved(self):
        window = self.open("Z2")
        picture = os.path.join(self.program.folder.name, "lamp.jpg")
        press(one_in(window, BUTTON, "Save Graph"))
        self.program.choose_file("Chart Picture", picture)
        until(lambda: os.path.exists(picture), picture)
        pixels = os.path.join(self.program.folder.name, "lamp.mdb")
        press(one_in(window, BUTTON, "Save Data"))
        self.program.choose_file("Database File", pixels)
        until(lambda: os.path.exists(pixels), pixels)
        rows = subprocess.run(["mdb-count", pixels, "data"], capture_output=True, text=True, check=True).stdout
        self.assertGreater(int(rows), 2000)
        self.assertEqual(self.program.frames(), [":217804FF"])

    def test_a_malformed_reply_leaves_the_buttons_disabled(self):
        self.program.tell_bus("fault count@65")
        press(self.program.one(Atspi.Role.MENU_ITEM, "X-GrayScale-Data"))
        self.assertEqual(self.program.answer("OK"), "灰度数据位数不准确！")
        window = self.program.window("Gray Scale Graph")
        self.assertFalse(has_state(one_in(window, BUTTON, "Save Data"), Atspi.StateType.ENABLED))
        self.assertFalse(has_state(one_in(window, BUTTON, "Save Graph"), Atspi.StateType.ENABLED))


if __name__ == "__main__":
    unittest.main(verbosity=2)
