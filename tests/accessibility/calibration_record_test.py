"""The window "Calibration Record": a whole job by the keyboard alone."""

import json
import os
import sys
import unittest

from desk import Atspi, Program, click, has_state, one_in, point_at, strike_with_alt, type_keys, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
TEXT = Atspi.Role.TEXT
POINTS = 11


class CalibrationRecord(unittest.TestCase):
    """Readout 5 before the program, its wire moved from point to point."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel-factory", bus=["--fast", "--seed", "1", "--readout", "5:A"])
        self.addCleanup(self.program.close)
        self.program.address("A", "5")
        self.window = self.program.tool("Calibration Record")
        self.keys = 2  # Ctrl+T and the letter
        self.take_keyboard()

    def take_keyboard(self):
        """What a window manager does when a window opens and when a box closes; this desktop has none."""
        click(one_in(self.window, Atspi.Role.LABEL, "Point 0" if self.keys == 2 else f"Point {POINTS - 1}"))

    def alt(self, letter):
        strike_with_alt(letter)
        self.keys += 1

    def type(self, text):
        type_keys(text)
        self.keys += len(text)

    def cell(self, row, column):
        table = one_in(self.window, Atspi.Role.TABLE, "Points")
        return Atspi.Table.get_accessible_at(table, row, column).get_name() or ""

    def take_points(self):
        for point in range(POINTS):
            self.program.tell_bus(f"set 5 x {10 + 0.5 * point}")
            self.type(f"{point}\n")
            until(lambda: self.cell(point, 3) == "3", f"three takes of point {point}")

    def focus(self, role, name):
        until(lambda: has_state(one_in(self.window, role, name), Atspi.StateType.FOCUSED), name + " with the keyboard")

    def words(self, text):
        until(lambda: [node for node in self.program.all(Atspi.Role.LABEL) if text in node.get_name()], text)

    def test_measured_downloaded_left_and_saved_by_the_keyboard(self):
        self.alt("t")
        self.focus(Atspi.Role.SPIN_BUTTON, "Repeats")
        self.type("3")
        self.alt("r")
        self.focus(TEXT, "Dial reading, mm")
        self.take_points()
        self.words("Y=0.5000*X+(10.000)")
        self.alt("d")
        question = self.program.box_text()
        self.assertIn("Send the measured points to readout 5?", question)
        point_at(one_in(self.program.boxes()[question], BUTTON, "Yes"))
        self.type("\n")
        self.words("Readout 5 took the table of X_Data")
        self.assertEqual(len(self.program.state(5)["calibration"]["X"]), POINTS)

        self.take_keyboard()
        self.alt("l")
        left = one_in(self.window, Atspi.Role.RADIO_BUTTON, "As left")
        until(lambda: has_state(left, Atspi.StateType.CHECKED), "As left")
        self.alt("r")
        self.focus(TEXT, "Dial reading, mm")
        self.take_points()
        self.alt("s")
        dialog = self.program.window("Save Record")
        name = one_in(dialog, TEXT, "File name:")
        until(lambda: has_state(name, Atspi.StateType.FOCUSED), "the name")
        point_at(name)
        self.type("r.pdf\n")
        page = os.path.join(self.program.folder.name, "r.pdf")
        until(lambda: os.path.exists(page), page)
        with open(page, "rb") as file:
            self.assertEqual(file.read(5), b"%PDF-")
        with open(os.path.join(self.program.folder.name, "XDirection.record.json"), encoding="utf-8") as file:
            record = json.load(file)
        for run in ("measured", "left"):
            takes = [point["passes"][0]["takes"] for point in record["runs"][run]["points"]]
            self.assertEqual([len(of_point) for of_point in takes], [3] * POINTS)
        print(f"keys struck: {self.keys}", file=sys.stderr)
        self.assertLessEqual(self.keys, 64)

    def test_every_control_has_a_name_and_can_be_reached_by_tab(self):
        names = [("X", Atspi.Role.COMBO_BOX), ("Address", TEXT), ("Serial number", TEXT), ("Gauge", TEXT),
                 ("Permitted error, mm", TEXT), ("Steady within, mm", TEXT), ("Person", TEXT), ("Remark", TEXT),
                 ("Dial reading, mm", TEXT), ("Judgement", TEXT), ("Repeats", Atspi.Role.SPIN_BUTTON),
                 ("Going down", Atspi.Role.CHECK_BOX), ("The zero of the gauge is free", Atspi.Role.CHECK_BOX),
                 ("Live value", Atspi.Role.CHECK_BOX), ("As found", Atspi.Role.RADIO_BUTTON),
                 ("Measured", Atspi.Role.RADIO_BUTTON), ("As left", Atspi.Role.RADIO_BUTTON),
                 ("Download ...", BUTTON), ("Switch Correction Off ...", BUTTON), ("Clear Run ...", BUTTON),
                 ("New Table ...", BUTTON), ("Save Record ...", BUTTON)]
        for name, role in names:
            self.assertTrue(has_state(one_in(self.window, role, name), Atspi.StateType.FOCUSABLE), name)


if __name__ == "__main__":
    unittest.main(verbosity=2)
