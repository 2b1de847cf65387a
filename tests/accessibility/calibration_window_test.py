"""The calibration windows of the factory edition, operated through the accessibility tree."""

import os
import subprocess
import sys
import unittest

from desk import Atspi, Program, click, descendants, one_in, press, type_into, type_keys, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
POINTS = 11


def stands_in(button, cell):
    outer, inner = (node.get_extents(Atspi.CoordType.SCREEN) for node in (cell, button))
    return inner.y == outer.y and outer.x < inner.x < outer.x + outer.width


class CalibrationWindow(unittest.TestCase):
    """Readout 33, of three directions, before the program."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel-factory", bus=["--fast", "--seed", "1", "--readout", "33:C"])
        self.addCleanup(self.program.close)
        self.program.address("C", "33")

    def open(self, direction):
        self.window = self.program.open(f"{direction} Direction", f"{direction}向标定")
        self.grid = one_in(self.window, Atspi.Role.TABLE, f"{direction}_Direction")

    def path(self, name):
        return os.path.join(self.program.folder.name, name)

    def exported(self, name):
        text = subprocess.run(["mdb-export", self.path(name), "Calibration"],
                              capture_output=True, text=True, check=True).stdout
        return [line.split(",") for line in text.splitlines()]

    def cell(self, row, column):
        return Atspi.Table.get_accessible_at(self.grid, row, column)

    def shows(self, row, column, text):
        until(lambda: self.cell(row, column).get_name() == text, f"{text} in row {row}, column {column}")

    def type_dial_readings(self):
        click(self.cell(0, 1))
        type_keys("".join(f"{point * 5}\n" for point in range(POINTS)))
        self.shows(POINTS - 1, 1, str(5 * (POINTS - 1)))

    def measure_points(self, place, filled):
        """Puts the wire before each point and clicks the button of its cell."""
        for point in range(POINTS):
            for sensor in place:
                self.program.tell_bus(f"set 33 {sensor} {place[sensor](point)}")
            click(self.cell(point, 2))
            button = one_in(self.window, BUTTON, "Measure")
            until(lambda: stands_in(button, self.cell(point, 2)), "the button in its cell")
            click(button)
            for column in filled:
                until(lambda: self.cell(point, column).get_name(), f"a reading of point {point}")

    def test_x_is_measured_fitted_downloaded_saved_and_loaded(self):
        self.open("X")
        self.type_dial_readings()
        self.measure_points({"x": lambda point: 1 + 10 * point}, filled=[2])
        press(one_in(self.window, BUTTON, "计算非线性容差"))
        self.assertEqual(self.program.answer("OK"),
                         "X: Y=2.0000*X+(1.000)\nNonlinear Error: 0.000, Max Error: 0.000")
        press(one_in(self.window, BUTTON, "下载标定数据"))
        self.assertEqual(self.program.answer("OK"), "X向标定参数下载完毕！")
        self.assertEqual(len(self.program.state(33)["calibration"]["X"]), POINTS)

        press(one_in(self.window, BUTTON, "保存标定数据"))
        self.program.choose_file("Save As", self.path("cal1"), "Save")
        until(lambda: os.path.exists(self.path("cal1.mdb")), "the saved file")
        click(self.cell(0, 1))
        type_keys("7.25\n")
        self.shows(0, 1, "7.25")
        press(one_in(self.window, BUTTON, "加载标定数据"))
        self.program.choose_file("Open", self.path("cal1.mdb"))
        self.shows(0, 1, "0")
        self.assertEqual(self.exported("XDirection.mdb"), self.exported("cal1.mdb"))

    def test_one_click_measures_both_sensors_of_z(self):
        self.open("Z")
        self.type_dial_readings()
        self.measure_points({"z1": lambda point: 5 * point, "z2": lambda point: 1 + 5 * point}, filled=[2, 3])
        press(one_in(self.window, BUTTON, "下载标定数据"))
        self.assertEqual(self.program.answer("OK"), "Z1向标定参数下载完毕！")
        self.assertEqual(self.program.answer("OK"), "Z2向标定参数下载完毕！")
        rows = self.exported("ZDirection.mdb")
        self.assertEqual(rows[0], ["SN", "Rule_Data", "Z1_Data", "Z2_Data"])
        self.assertEqual([float(text) for text in rows[POINTS]], [10, 50, 50, 51])

    def test_a_text_that_is_no_number_keeps_the_old_value(self):
        self.open("Y")
        click(self.cell(0, 1))
        type_keys("3.5\n")
        self.shows(0, 1, "3.5")
        click(self.cell(0, 1))
        type_keys("abc\n")
        until(lambda: [node for node in descendants(self.window)
                       if node.get_role() == Atspi.Role.LABEL and "abc" in node.get_name()], "the reason")
        self.shows(0, 1, "3.5")


class Stitching(unittest.TestCase):
    def test_it_is_set_and_queried(self):
        program = Program(BINARIES, "quorvel-factory", bus=["--fast", "--seed", "1", "--readout", "12:B"])
        self.addCleanup(program.close)
        program.address("B", "12")
        window = program.open("Stitching Location", "Y-Direction Stitching")
        type_into(one_in(window, Atspi.Role.TEXT, "Location"), "512")
        press(one_in(window, BUTTON, "Set"))
        self.assertEqual(program.answer("OK"), "Location input error, pls input 4 numbers")
        type_into(one_in(window, Atspi.Role.TEXT, "Location"), "0512")
        press(one_in(window, BUTTON, "Set"))
        self.assertEqual(program.answer("OK"), "SetOK!")
        press(one_in(window, BUTTON, "Query"))
        self.assertEqual(program.answer("OK"), "Y-Direction stitching location is 0512")


if __name__ == "__main__":
    unittest.main(verbosity=2)
