"""The window "Pixels", operated through the accessibility tree."""

import os
import sys
import unittest

from desk import SPACE_KEY, Atspi, Program, click, descendants, has_state, one_in, press, strike, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
CHART = Atspi.Role.CHART
END_KEY = 0xff57
LEFT_KEY = 0xff51
TAB_KEY = 0xff09
SHIFT_KEYCODE = 50  # of the keyboard of the virtual screen


def strike_with_shift_tab():
    Atspi.generate_keyboard_event(SHIFT_KEYCODE, None, Atspi.KeySynthType.PRESS)
    strike(TAB_KEY)
    Atspi.generate_keyboard_event(SHIFT_KEYCODE, None, Atspi.KeySynthType.RELEASE)


class PixelsWindow(unittest.TestCase):
    """Readout 33, of three directions, with dust before X, before the program."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel", bus=["--fast", "--seed", "1", "--readout", "33:C"])
        self.addCleanup(self.program.close)
        self.program.address("C", "33")
        for setting in ("x 21.4", "dust clean", "dust x 37.3 27 0.2"):
            self.program.tell_bus("set 33 " + setting)
        self.window = self.program.tool("Pixels")

    def said(self, words):
        """Waits for a label of the window that holds these words."""
        return until(lambda: next((node.get_name() for node in descendants(self.window) if words in node.get_name()), None),
                     words)

    def press(self, name):
        """Presses a button as soon as the step before it has ended."""
        button = one_in(self.window, BUTTON, name)
        until(lambda: has_state(button, Atspi.StateType.ENABLED), name)
        press(button)

    def test_every_control_has_a_name_and_can_be_reached_by_tab(self):
        names = [("Address", Atspi.Role.TEXT), ("Readings", Atspi.Role.SPIN_BUTTON), ("Read", BUTTON),
                 ("Keep as Reference", BUTTON), ("Open Reference ...", BUTTON), ("No Reference", BUTTON),
                 ("Save Picture ...", BUTTON), ("Save Pixels ...", BUTTON), ("Print ...", BUTTON),
                 ("Say below the picture what it is", Atspi.Role.CHECK_BOX), ("No pixels were read yet", CHART)]
        for name, role in names:
            self.assertTrue(has_state(one_in(self.window, role, name), Atspi.StateType.FOCUSABLE), name)
        one_in(self.window, Atspi.Role.PROGRESS_BAR, "Progress")
        one_in(self.window, Atspi.Role.TREE, "Figures")
        self.assertTrue(has_state(one_in(self.window, Atspi.Role.COMBO_BOX, "X"), Atspi.StateType.FOCUSABLE))

    def test_another_direction_is_chosen_by_the_keyboard(self):
        click(one_in(self.window, Atspi.Role.SPIN_BUTTON, "Readings"))
        strike_with_shift_tab()
        strike(END_KEY)
        self.press("Read")
        self.said("1 of 1 readings of 2048 pixels.")
        self.assertEqual(self.program.frames(), [":217804FF"])

    def test_before_and_after_cleaning(self):
        self.press("Read")
        self.said("Dust at 37.3 mm, 2")
        self.press("Keep as Reference")
        self.program.tell_bus("set 33 dust clean")
        self.press("Read")
        self.said("Clean: lamp level ")
        self.assertEqual(self.program.frames(), [":2165FF", ":2165FF"])
        path = os.path.join(self.program.folder.name, "after.csv")
        self.press("Save Pixels ...")
        self.program.choose_file("Save Pixels", path, "Save")
        until(lambda: os.path.exists(path), path)
        with open(path, encoding="utf-8") as file:
            self.assertIn("# address: 33\n# type: C\n# direction: X\n", file.read())

    def test_the_chart_is_read_with_the_keyboard(self):
        self.press("Read")
        self.said("1 of 1 readings")
        chart = until(lambda: next((node for node in descendants(self.window) if node.get_role() == CHART), None), "chart")
        click(chart)
        self.said("Pixel ")
        strike(SPACE_KEY)
        strike(LEFT_KEY)
        self.said("Pixel ")


if __name__ == "__main__":
    unittest.main()
