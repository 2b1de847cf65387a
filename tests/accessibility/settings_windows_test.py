"""The windows of the menu "Settings", operated through the accessibility tree."""

import sys
import unittest

from desk import Atspi, Program, descendants, one_in, press, row, select, type_into, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
COMBO = Atspi.Role.COMBO_BOX
TEXT = Atspi.Role.TEXT


class SettingsWindows(unittest.TestCase):
    """Readout 33, of three directions, before the program."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel", bus=["--fast", "--seed", "1", "--readout", "33:C"])
        self.addCleanup(self.program.close)
        self.program.address("C", "33")

    def press_in_row(self, window, name, button):
        press(next(node for node in row(window, name)
                   if node.get_role() == BUTTON and node.get_name() == button))

    def result(self):
        """The two lines of the result box, which is closed."""
        box = self.program.window("Set Result")
        lines = [node.get_name() for node in descendants(box) if node.get_role() == Atspi.Role.LABEL]
        press(one_in(box, BUTTON, "OK"))
        until(lambda: "Set Result" not in self.program.windows(), "the end of the result box")
        return lines

    def test_change_address(self):
        window = self.program.open("Change Address", "Change Address")
        self.assertEqual(Atspi.Text.get_text(one_in(window, TEXT, "Original Address"), 0, -1), "33")
        type_into(one_in(window, TEXT, "New Address(1-249)"), "12")
        press(one_in(window, BUTTON, "OK"))
        self.assertEqual(self.program.answer("OK"), "New Address Setting Successfully")
        self.assertEqual(self.program.state(12)["address"], 12)

    def test_parameter_setting(self):
        window = self.program.open("Parameter Setting", "Set Wire and Calibration Parameter")
        type_into(one_in(window, TEXT, "Diameter(mm)"), "2.4")
        type_into(one_in(window, TEXT, "Permitted Error (mm)"), "0.5")
        press(one_in(window, BUTTON, "Set"))
        self.assertEqual(self.program.answer("OK"), "Diameter Parameters Setted OK")
        press(one_in(window, BUTTON, "Query"))
        self.assertEqual(self.program.answer("OK").rstrip(),
                         "Diameter and permitted Error is set as 2.4mm, 0.5mm")

    def test_offset_setting(self):
        window = self.program.open("Offset Setting", "Offset Setting")
        for direction, said in (("X", "The reference of X-Direction is +1.50000!"),
                                ("Y", "The offset of Y-Direction is +1.50000!"),
                                ("Z", "The offset of Z-Direction is +1.50000!")):
            type_into(one_in(window, TEXT, f"{direction}-Direction"), "1.5")
            self.press_in_row(window, f"{direction}-Direction", "Set")
            self.assertEqual(self.program.answer("OK"), "Set OK!")
            self.assertEqual(self.program.state(33)["offsets"][direction], "+1.50000")
            self.press_in_row(window, f"{direction}-Direction", "Query")
            self.assertEqual(self.result(), [said, ""])

    def test_reference_setting(self):
        self.program.tell_bus("set 33 x 2.5")
        window = self.program.open("Reference Setting", "Reference Setting")
        type_into(one_in(window, TEXT, "X-Direction"), "10")
        self.press_in_row(window, "X-Direction", "Set")
        self.assertEqual(self.program.answer("OK"), "Set OK!The current value is +2.50000, "
                                                    "the Internal Offset Value is +7.50000.")
        self.press_in_row(window, "X-Direction", "Query")
        self.assertEqual(self.result(), ["The reference of X-Direction is +7.50000!",
                                         "The current value without reference is 2.5!"])

    def test_reference_feature(self):
        window = self.program.open("Offset Setting", "Offset Setting")
        self.press_in_row(window, "Reference Feature", "Set")
        self.assertEqual(self.program.answer("OK"), "Set OK!")
        self.assertTrue(self.program.state(33)["reference"])
        select(one_in(window, COMBO, "True"), "False")
        self.press_in_row(window, "Reference Feature", "Set")
        self.assertEqual(self.program.answer("OK"), "Set OK!")
        self.assertFalse(self.program.state(33)["reference"])

    def test_invert_and_swap(self):
        window = self.program.open("Invert and Swap", "Invert and Swap")
        for caption, switch in (("X Direction", "invertX"), ("Y Direction", "invertY"),
                                ("Z Direction", "invertZ"), ("Swap X and Y", "swap")):
            select(next(node for node in row(window, caption) if node.get_role() == COMBO), "True")
            self.press_in_row(window, caption, "Set")
            self.assertEqual(self.program.answer("OK"), "Set OK!")
            self.assertTrue(self.program.state(33)["switches"][switch])
        self.press_in_row(window, "Y Direction", "Query")
        self.assertEqual(self.program.answer("OK"), "Z direction invert function opened!")

    def test_clock_setting(self):
        self.program.tell_bus("set 33 clock 2024-05-17T09:05:30")
        window = self.program.open("Clock Setting", "Set Clock")
        press(one_in(window, BUTTON, "Set"))
        self.assertRegex(self.program.answer("Yes"),
                         r"^Current time is 2024-05-17  09:05:3\d\.\n"
                         r"Are you sure to change Pendulum's RTC time same as PC'time\?$")
        self.assertEqual(self.program.answer("OK"), "Set OK")
        self.assertNotIn("2024", self.program.state(33)["clock"])

    def test_reset_setting(self):
        self.program.tell_bus("set 33 offsetx +1.50000")
        press(self.program.one(Atspi.Role.MENU_ITEM, "Reset Setting"))
        self.assertTrue(self.program.answer("Yes").startswith("Do you want to reset all settings (set diameter"))
        self.assertEqual(self.program.answer("Yes"), "Are you sure?")
        self.assertEqual(self.program.answer("OK"), "Reset OK!")
        self.assertEqual(self.program.state(33)["offsets"]["X"], "+0.00000")
        self.assertEqual(len(self.program.frames()), 12)


if __name__ == "__main__":
    unittest.main(verbosity=2)
