"""The window "Site", operated through the accessibility tree."""

import json
import os
import sys
import unittest

from desk import Atspi, Program, has_state, one_in, press, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
BUS = ["--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C"]
SITE = {"name": "North dam", "readouts": [{"address": 5, "type": "A", "name": "Block 7", "limitsMm": {"x": {"high": 1}}},
                                          {"address": 12, "type": "C", "name": "Block 9"}]}


class SiteWindow(unittest.TestCase):
    """Readouts 5 and 12 before the program."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel", bus=BUS)
        self.addCleanup(self.program.close)
        self.program.address("A", "5")
        self.window = self.program.tool("Site")

    def path(self, name):
        return os.path.join(self.program.folder.name, name)

    def press(self, name):
        """Presses a button as soon as it can be pressed."""
        button = one_in(self.window, BUTTON, name)
        until(lambda: has_state(button, Atspi.StateType.ENABLED), name)
        press(button)

    def shown(self, words):
        """Waits for a label that holds these words."""
        return until(lambda: next((node.get_name() for node in self.program.all(Atspi.Role.LABEL)
                                   if words in node.get_name()), None), words)

    def cells(self):
        table = one_in(self.window, Atspi.Role.TABLE, "Readouts")
        return [[Atspi.Table.get_accessible_at(table, row, column).get_name()
                 for column in range(Atspi.Table.get_n_columns(table))]
                for row in range(Atspi.Table.get_n_rows(table))]

    def open_site(self):
        with open(self.path("dam.quorvel-site.json"), "w", encoding="utf-8") as file:
            json.dump(SITE, file)
        self.press("Open ...")
        self.program.choose_file("Open Site", self.path("dam.quorvel-site.json"))
        self.window = self.program.window("Site: dam.quorvel-site.json")

    def test_every_control_has_a_name_and_can_be_reached_by_tab(self):
        self.open_site()
        box, text = Atspi.Role.CHECK_BOX, Atspi.Role.TEXT
        names = [("New", BUTTON), ("New from Search", BUTTON), ("Open ...", BUTTON), ("Save", BUTTON),
                 ("Save As ...", BUTTON), ("Site Report ...", BUTTON), ("Name", text), ("Port", text), ("Note", text), ("Add Readout", BUTTON),
                 ("Remove Readout", BUTTON), ("Readouts", Atspi.Role.TABLE), ("Sweep", BUTTON),
                 ("Repeat sweeps", box), ("Seconds from sweep to sweep", Atspi.Role.SPIN_BUTTON), ("Stop", BUTTON),
                 ("Mark Zero", BUTTON), ("Ask Clocks", BUTTON), ("Log to File ...", box),
                 ("a new file each day", box), ("all", Atspi.Role.COMBO_BOX), ("5 Block 7", Atspi.Role.COMBO_BOX),
                 ("changes from the first value in sight", box), ("Picture ...", BUTTON), ("CSV ...", BUTTON),
                 ("Trend", Atspi.Role.CHART)]
        for name, role in names:
            self.assertTrue(has_state(one_in(self.window, role, name), Atspi.StateType.FOCUSABLE), name)
        one_in(self.window, Atspi.Role.PROGRESS_BAR, "Progress")

    def test_site_is_opened_and_swept(self):
        self.program.tell_bus("set 5 x 1.5")
        self.program.tell_bus("fault silent@12/2101")
        self.open_site()
        self.press("Sweep")
        self.shown("1 of 2 readouts answered")
        first, second = self.cells()
        self.assertIn("X above 1", first)
        self.assertIn("complete", first)
        self.assertIn("silent", second)

    def test_report_is_saved_in_three_clicks(self):
        self.open_site()
        self.press("Site Report ...")
        dialog = self.program.window("Site Report")
        for role, name in [(Atspi.Role.TEXT, "Person"), (Atspi.Role.TEXT, "Remark"), (BUTTON, "Cancel"),
                           (Atspi.Role.CHECK_BOX, "ask readings, clocks and settings of all readouts first")]:
            self.assertTrue(has_state(one_in(dialog, role, name), Atspi.StateType.FOCUSABLE), name)
        press(one_in(dialog, BUTTON, "Save ..."))
        self.program.choose_file("Save Site Report", self.path("visit.html"), "Save")
        self.shown("The report is saved as")
        with open(self.path("visit.html"), encoding="utf-8") as page:
            text = page.read()
        for words in ("Site report: North dam", "Block 7", "Reference feature", "Nothing, according to the journal"):
            self.assertIn(words, text)

    def test_site_is_made_of_the_last_search(self):
        press(self.program.one(BUTTON, "Search CCD"))
        self.program.one(Atspi.Role.LABEL, "05,12")
        self.press("New from Search")
        self.shown("Readouts: 2 of 2 found.")
        types = [row[2] for row in self.cells()]
        self.assertEqual(types, ["A", "C"])
        self.press("Save As ...")
        self.program.choose_file("Save Site", self.path("made.quorvel-site.json"), "Save")
        self.shown("Saved as")
        with open(self.path("made.quorvel-site.json"), encoding="utf-8") as file:
            self.assertEqual([readout["address"] for readout in json.load(file)["readouts"]], [5, 12])


if __name__ == "__main__":
    unittest.main(verbosity=2)
