"""The windows "Why no answer?" and "Find Readouts One by One", operated through the accessibility tree."""

import sys
import unittest

from desk import Atspi, Program, descendants, has_state, one_in, press, type_into, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
LABEL = Atspi.Role.LABEL
TEXT = Atspi.Role.TEXT
BUS = ["--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:C"]
OFFER = "Why no answer?"
FINDER = "Find Readouts One by One"


class LineWindows(unittest.TestCase):
    """Readouts 5 and 12 before the program, which addresses 7."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel", bus=BUS)
        self.addCleanup(self.program.close)
        self.program.address("A", "7")

    @staticmethod
    def label_with(window, words):
        """Waits for a label of a window that holds these words, and gives its text."""
        found = until(lambda: next((node for node in descendants(window)
                                    if node.get_role() == LABEL and words in node.get_name()), None),
                      words, patience=60)
        return found.get_name()

    @staticmethod
    def cells(window, name):
        """The rows of a table, as texts."""
        table = one_in(window, Atspi.Role.TABLE, name)
        columns = Atspi.Table.get_n_columns(table)
        return [[Atspi.Table.get_accessible_at(table, row, column).get_name() for column in range(columns)]
                for row in range(Atspi.Table.get_n_rows(table))]

    def test_the_fault_of_a_silent_readout_is_said_with_its_steps(self):
        window = self.program.tool(OFFER)
        verdict = self.label_with(window, "Most likely: ")
        self.assertIn("Readout 7 does not answer. 5 and 12 answered the search", verdict)
        self.assertIn("\nNext step: ", verdict)
        self.assertIn("\nNot known: ", verdict)
        steps = self.cells(window, "Steps")
        self.assertEqual([row[0] for row in steps],
                         ["Port", "Adapter", "Noise", "Search", "Readout", "Other readouts", "Type"])
        self.assertEqual(steps[3][1], "Answers: 5 and 12.")
        self.assertNotIn("", [row[1] for row in steps])

    def test_the_test_is_stopped_and_another_address_tested(self):
        window = self.program.tool(OFFER)
        stop = one_in(window, BUTTON, "Stop")
        until(lambda: has_state(stop, Atspi.StateType.ENABLED), "the running test")
        press(stop)
        self.label_with(window, "stopped before its end")
        type_into(one_in(window, TEXT, "CCD Address"), "5")
        press(one_in(window, BUTTON, "Test"))
        self.label_with(window, "Readout 5 answers as it should.")

    def test_controls_have_names_and_take_the_focus(self):
        window = self.program.tool(OFFER)
        self.label_with(window, "Most likely: ")
        for role, name in ((TEXT, "CCD Address"), (BUTTON, "Test"), (BUTTON, "Copy"),
                           (Atspi.Role.TABLE, "Steps")):
            self.assertTrue(has_state(one_in(window, role, name), Atspi.StateType.FOCUSABLE), name)
        one_in(window, Atspi.Role.PROGRESS_BAR, "Progress")

    def test_a_failed_command_offers_the_test(self):
        window = self.program.open("Offset Setting", "Offset Setting")
        self.assertFalse([node for node in descendants(window)
                          if node.get_name() == OFFER and has_state(node, Atspi.StateType.VISIBLE)])
        press(one_in(window, BUTTON, "Query"))
        self.assertEqual(self.program.answer("OK"), "Comm Error")
        offer = one_in(window, BUTTON, OFFER)
        until(lambda: has_state(offer, Atspi.StateType.VISIBLE), "the offer")
        self.assertTrue(has_state(offer, Atspi.StateType.FOCUSABLE))
        press(offer)
        self.label_with(self.program.window(OFFER), "Readout 7 does not answer.")

    def test_a_search_that_finds_nothing_offers_it_too(self):
        self.program.tell_bus("fault silent@01")
        press(self.program.one(BUTTON, "Search CCD"))
        self.program.one(LABEL, "No Sensors(or MCU) Found")
        offer = self.program.one(BUTTON, OFFER)
        until(lambda: has_state(offer, Atspi.StateType.VISIBLE), "the offer")

    def test_readouts_are_found_and_put_into_the_list(self):
        window = self.program.tool(FINDER)
        for name, value in (("From", 4), ("to", 13)):
            Atspi.Value.set_current_value(one_in(window, Atspi.Role.SPIN_BUTTON, name), value)
        press(one_in(window, BUTTON, "Search"))
        self.label_with(window, "Readouts found: 2, in ")
        rows = self.cells(window, "Readouts found")
        self.assertEqual([(row[0], row[2], row[3]) for row in rows], [("05", "A, B or D", ""), ("12", "C", "")])
        press(one_in(window, BUTTON, "Put into CCD List"))
        self.program.one(LABEL, "05,12")
        address = one_in(self.program.window("QUORVEL V4.11"), TEXT, "CCD Address")
        until(lambda: Atspi.Text.get_text(address, 0, -1) == "05", "the first address")

    def test_the_search_is_stopped(self):
        window = self.program.tool(FINDER)
        press(one_in(window, BUTTON, "Search"))
        stop = one_in(window, BUTTON, "Stop")
        until(lambda: has_state(stop, Atspi.StateType.ENABLED), "the running search")
        press(stop)
        self.label_with(window, "Stopped before the end.")


if __name__ == "__main__":
    unittest.main(verbosity=2)
