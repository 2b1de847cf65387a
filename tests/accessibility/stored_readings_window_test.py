"""The window "Stored Readings", operated through the accessibility tree."""

import os
import sys
import unittest

from desk import Atspi, Program, has_state, one_in, press, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
BUS = ["--fast", "--seed", "1", "--readout", "5:A", "--ring", "5:100,10,25"]


class StoredReadingsWindow(unittest.TestCase):
    """Readout 5, which holds 15 records, before the program."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel", bus=BUS)
        self.addCleanup(self.program.close)
        self.program.address("A", "5")
        self.window = self.program.tool("Stored Readings")

    def path(self, name):
        return os.path.join(self.program.folder.name, name)

    def report(self):
        return one_in(self.window, Atspi.Role.TEXT, "Report").get_text(0, -1)

    def shown(self, words):
        """Waits for a label or the report that holds these words."""
        texts = lambda: [node.get_name() for node in self.program.all(Atspi.Role.LABEL)] + [self.report()]  # noqa: E731
        return until(lambda: next((text for text in texts() if words in text), None), words)

    def press(self, name):
        """Presses a button as soon as the step before it has ended."""
        button = one_in(self.window, BUTTON, name)
        until(lambda: has_state(button, Atspi.StateType.ENABLED), name)
        press(button)

    def new_file(self, name):
        self.press("New File ...")
        self.program.choose_file("New File", self.path(name), "Save")
        self.shown("Records: 15 of 15, complete")

    def test_every_control_has_a_name_and_can_be_reached_by_tab(self):
        names = [("Address", Atspi.Role.TEXT), ("Query", BUTTON), ("New File ...", BUTTON),
                 ("Continue File ...", BUTTON), ("Check", BUTTON), ("Delete ...", BUTTON), ("Report", Atspi.Role.TEXT),
                 ("Ask for each record until two answers agree (takes twice the time)", Atspi.Role.CHECK_BOX)]
        for name, role in names:
            self.assertTrue(has_state(one_in(self.window, role, name), Atspi.StateType.FOCUSABLE), name)
        one_in(self.window, Atspi.Role.PROGRESS_BAR, "Progress")

    def test_readings_are_taken_home_and_then_deleted(self):
        self.new_file("dam.mdb")
        self.press("Check")
        self.shown("Safe to delete: all")
        self.press("Delete ...")
        self.assertIn("Delete the 15 records in readout 5 now?", self.program.answer("Yes"))
        until(lambda: self.program.state(5)["ring"]["stored"] == 0, "the empty ring")

    def test_a_file_is_continued(self):
        self.new_file("dam.csv")
        self.program.tell_bus("take 5 3")
        self.press("Continue File ...")
        self.program.choose_file("Continue File", self.path("dam.csv"))
        self.shown("Records: 3 of 3, complete")
        with open(self.path("dam.csv"), encoding="ascii") as rows:
            self.assertEqual(len(rows.readlines()), 19)

    def test_what_is_not_safe_is_deleted_only_after_the_loss_was_told(self):
        self.press("Delete ...")
        question = self.program.answer("No")
        self.assertIn("Not safe to delete", question)
        self.assertIn("lost for good", question)
        self.assertEqual(self.program.state(5)["ring"]["stored"], 15)


if __name__ == "__main__":
    unittest.main(verbosity=2)
