"""The windows of the button "Tools", operated through the accessibility tree."""

import json
import os
import sys
import unittest

from desk import (ESCAPE_KEY, READ_ONLY, SPACE_KEY, Atspi, Program, click, descendants, has_state, one_in, press, row,
                  select, strike, type_into, until)

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
COMBO = Atspi.Role.COMBO_BOX
LABEL = Atspi.Role.LABEL
TABLE = Atspi.Role.TABLE
TEXT = Atspi.Role.TEXT


def cells(table):
    """The texts of a table, row by row."""
    def text(place, column):
        cell = Atspi.Table.get_accessible_at(table, place, column)
        return cell.get_name() or "" if cell else ""  # hidden

    return [[text(place, column) for column in range(Atspi.Table.get_n_columns(table))]
            for place in range(Atspi.Table.get_n_rows(table))]


def texts(window):
    return [node.get_name() for node in descendants(window) if node.get_role() == LABEL]


class ToolsWindows(unittest.TestCase):
    """Readouts 5 (type A) and 33 (type C) before the program, which addresses 5."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel",
                               bus=["--fast", "--seed", "1", "--readout", "5:A", "--readout", "33:C"])
        self.addCleanup(self.program.close)
        self.program.address("A", "5")

    def set_offset(self, value):
        """Sets the offset of X in its window, which is closed again. @return what the window said."""
        window = self.program.open("Offset Setting", "Offset Setting")
        type_into(one_in(window, TEXT, "X-Direction"), value)
        press(next(node for node in row(window, "X-Direction")
                   if node.get_role() == BUTTON and node.get_name() == "Set"))
        said = self.program.answer("OK")
        click(one_in(window, LABEL, "X-Direction"))
        strike(ESCAPE_KEY)
        until(lambda: "Offset Setting" not in self.program.windows(), "the end of the window")
        return said

    def is_read_only(self):
        """Whether the main window shows the mark of Read Only."""
        mark = self.program.one(LABEL, "\U0001F512 Read Only")
        return has_state(mark, Atspi.StateType.SHOWING)

    def test_traffic(self):
        window = self.program.tool("Traffic")
        self.assertEqual(self.set_offset("1.5"), "Set OK!")
        lines = one_in(window, TABLE, "Traffic")
        shown = until(lambda: next((line for line in cells(lines) if "complete" in line), None), "the exchange")
        self.assertIn("Set the offset of X to +1.50000", shown)
        self.assertTrue(any(":0571+1.50000FF" in cell for cell in shown), shown)
        kinds = next(node for node in descendants(window) if node.get_role() == COMBO)
        select(kinds, "query")
        until(lambda: not cells(lines), "no line but queries")
        select(kinds, "all")
        until(lambda: cells(lines), "all lines")
        press(one_in(window, BUTTON, "Clear"))
        until(lambda: not cells(lines), "no lines")

    def test_line_health(self):
        self.assertEqual(self.set_offset("1.5"), "Set OK!")
        window = self.program.tool("Line Health")
        readouts = one_in(window, TABLE, "Readouts")
        self.assertEqual(until(lambda: cells(readouts), "a readout")[0][:6], ["5", "1", "1", "0", "0", "0"])
        press(one_in(window, BUTTON, "Reset"))
        until(lambda: not cells(readouts), "no readouts")

    def test_journal(self):
        self.assertEqual(self.set_offset("1.5"), "Set OK!")
        self.assertEqual(self.set_offset("2.5"), "Set OK!")
        window = self.program.tool("Journal")
        lines = one_in(window, TABLE, "Journal")
        shown = cells(lines)
        self.assertEqual([line[2] for line in shown],
                         ["Set the offset of X to +1.50000", "Set the offset of X to +2.50000"])
        self.assertEqual(shown[1][3:6], ["+1.50000", "+2.50000", "yes"])
        type_into(one_in(window, TEXT, "Search"), "2.5")
        until(lambda: len(cells(lines)) == 1, "one line")

    def test_read_only(self):
        self.program.strike_in_tools(READ_ONLY, self.is_read_only, "the mark of Read Only")
        self.program.frames()
        self.assertEqual(self.set_offset("1.5"), "Comm Error")
        self.assertEqual(self.program.frames(), [])
        self.program.strike_in_tools(READ_ONLY, lambda: not self.is_read_only(), "the end of Read Only")
        self.assertEqual(self.set_offset("1.5"), "Set OK!")

    def test_settings(self):
        self.program.tell_bus("set 5 offsetx +1.00000")
        window = self.program.tool("Settings")
        self.assertTrue([text for text in texts(window) if text.startswith("Calibration tables are not among")])
        press(one_in(window, BUTTON, "Read"))
        table = one_in(window, TABLE, "Settings")
        until(lambda: [text for text in texts(window) if text.endswith("9 of 9.")], "the end of the reading")
        path = os.path.join(self.program.folder.name, "a.json")
        press(one_in(window, BUTTON, "Save to File ..."))
        self.program.choose_file("Save Settings", path, "Save")
        until(lambda: os.path.exists(path), "the file")
        with open(path, encoding="utf-8") as file:
            self.assertEqual(json.load(file)["settings"]["offsetX"], "+1.00000")

        self.program.tell_bus("set 5 offsetx +0.00000")
        self.program.tell_bus("set 5 swap on")
        press(one_in(window, BUTTON, "Open File ..."))
        self.program.choose_file("Open Settings", path)
        press(one_in(window, BUTTON, "Read"))
        until(lambda: [text for text in texts(window) if text.endswith("9 of 9.")], "the end of the reading")
        shown = cells(table)
        self.assertIn(["Offset X", "+0.00000", "+1.00000", "", "File differs."], [line[:5] for line in shown])
        box = Atspi.Table.get_accessible_at(table, [line[0] for line in shown].index("Offset X"), 0)
        self.assertFalse(has_state(box, Atspi.StateType.CHECKED))
        click(box)
        strike(SPACE_KEY)
        until(lambda: has_state(box, Atspi.StateType.CHECKED), "the chosen row")
        press(one_in(window, BUTTON, "Send Chosen to Readout"))
        until(lambda: [text for text in texts(window) if text == "Set and verified: 1 of 1."], "the end of the sending")
        self.assertEqual(self.program.state(5)["offsets"]["X"], "+1.00000")
        self.assertTrue(self.program.state(5)["switches"]["swap"], "was not chosen")

    def test_settings_of_another_readout(self):
        self.program.tell_bus("set 33 offsety +2.00000")
        window = self.program.tool("Settings")
        type_into(one_in(window, TEXT, "Other Readout"), "33")
        select([node for node in descendants(window) if node.get_role() == COMBO][1], "C")
        press(one_in(window, BUTTON, "Read"))
        until(lambda: [text for text in texts(window) if text.endswith("9 of 9.")], "the end of the reading")
        press(one_in(window, BUTTON, "Read Other"))
        until(lambda: [text for text in texts(window) if text.endswith("11 of 11.")], "the end of the reading")
        select(one_in(window, COMBO, "File"), "Other Readout")
        press(one_in(window, BUTTON, "Choose What Differs"))
        press(one_in(window, BUTTON, "Send Chosen to Readout"))
        self.assertEqual(self.program.answer("Yes"),
                         "The values are of readout 33, type C. Send 1 of them to readout 5, type A?")
        until(lambda: self.program.state(5)["offsets"]["Y"] == "+2.00000", "the offset")


if __name__ == "__main__":
    unittest.main(verbosity=2)
