"""The window "Set AutoReading", operated through the accessibility tree."""

import os
import subprocess
import sys
import unittest

from desk import Atspi, Program, one_in, press, select, until

BINARIES = sys.argv.pop(1)
BUTTON = Atspi.Role.PUSH_BUTTON
BUS = ["--fast", "--seed", "1", "--readout", "5:A", "--ring", "5:20,18,2"]


class AutoreadWindow(unittest.TestCase):
    """Readout 5, whose ring of 20 has wrapped, before the program."""

    def setUp(self):
        self.program = Program(BINARIES, "quorvel", bus=BUS)
        self.addCleanup(self.program.close)
        self.program.address("A", "5")
        self.window = self.program.open("Automatic Readings", "Set AutoReading")

    def test_the_interval_is_shown_and_set(self):
        select(one_in(self.window, Atspi.Role.COMBO_BOX, "01 hour"), "05 minutes")
        press(one_in(self.window, BUTTON, "Set Auto_Reading Mode"))
        self.assertEqual(self.program.answer("Yes"),
                         "Current Interval is 1 hours 0 minutes 0 seconds\nChange AutoReading Mode?")
        self.assertEqual(self.program.answer("OK"), "Set OK")
        self.assertEqual(self.program.state(5)["auto"]["values"][:3], [0, 5, 0])

    def test_the_ring_is_downloaded_and_an_existing_file_kept(self):
        path = os.path.join(self.program.folder.name, "dam.mdb")
        press(one_in(self.window, BUTTON, "Get Auto_Reading Data"))
        self.program.choose_file("Database File", path)
        one_in(self.window, Atspi.Role.LABEL, "Total 20 records. 20 records have been received.")
        rows = subprocess.run(["mdb-export", path, "data"], capture_output=True, text=True, check=True).stdout
        self.assertEqual(len(rows.splitlines()), 21)
        until(lambda: self.program.frames(), "the frames so far")
        press(one_in(self.window, BUTTON, "Get Auto_Reading Data"))
        self.program.choose_file("Database File", path)
        self.assertEqual(self.program.answer("No"), "File already exists, overwrite this file?")
        self.assertEqual(self.program.frames(), [":0522FF"])

    def test_the_stored_data_are_deleted_after_a_question(self):
        press(one_in(self.window, BUTTON, "Delete Data from Readout"))
        self.assertEqual(self.program.answer("Yes"), "Are you sure to delete data saved in Pendulum Readout")
        self.assertEqual(self.program.answer("OK"), "Data Deleted")
        self.assertEqual(self.program.state(5)["ring"]["stored"], 0)
        press(one_in(self.window, BUTTON, "Get Auto_Reading Data"))
        self.assertEqual(self.program.answer("OK"), "No Data")


if __name__ == "__main__":
    unittest.main(verbosity=2)
