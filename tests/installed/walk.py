"""A walk through the installed programs under Wine: walk.py PROGRAMS SIMULATOR COM-LINK FOLDER [PICTURE].

PROGRAMS is the folder they were installed to, as Windows names it, COM-LINK what Wine has for the port of the
environment variable QUORVEL_COM_PORT, FOLDER an empty one for what is written. packaging/windows/test runs it.
"""

import csv
import datetime
import io
import json
import os
import signal
import sys
import time
import unittest

from wine_desk import AFTER_KEYS, PATIENCE, Bus, Program, Window, answer_box, copied, keys, output, picture, set_text
from wine_desk import type_text, until, windows_path

PROGRAMS, SIMULATOR, LINK, FOLDER, PICTURE, *TESTS = sys.argv[1:]
sys.argv[1:] = TESTS
COM = os.environ["QUORVEL_COM_PORT"]
MAIN = "QUORVEL V4.11"
RECORDS = 50
PIXELS, Z_PIXELS = 7450, 2048  # of X of type A, of Z
POINTS = 11
# Down-arrows from the first item of a menu to an item, and right-arrows from the first menu to the menu.
OFFSET, AUTOMATIC, X_GRAYSCALE, X_CALIBRATION = (0, 2), (1, 1), (1, 2), (2, 0)


class Walk(unittest.TestCase):
    def start(self, program, *options, kind="A", folder=None):
        """The program, its port chosen from the list and opened; calibration files in a folder of their own, if named."""
        self.bus = Bus(SIMULATOR, LINK, "--seed", "1", *options)
        self.addCleanup(self.bus.close)
        self.trace = os.path.join(FOLDER, self.id() + ".jsonl")
        own = ["--folder", windows_path(folder)] if folder else []
        self.program = Program(PROGRAMS + "\\" + program, "--trace", windows_path(self.trace), *own)
        self.addCleanup(self.program.kill)
        self.windows = [Window(MAIN)]
        keys(*["Down"] * "ABCD".index(kind), "Tab")
        type_text(COM)
        keys("Tab", "space")  # OpenComm

    def address(self, digits):
        keys("Tab", "Tab", "Tab", "Tab")
        set_text(digits)

    def open(self, item, caption):
        menu, row = item
        keys("alt", *["Right"] * menu, "Down", *["Down"] * row, "Return")
        self.windows.append(Window(caption))

    def tool(self, letter, caption):
        """A window of the menu of the button "Tools"."""
        keys("ctrl+t")
        keys(letter)
        self.windows.append(Window(caption))

    @staticmethod
    def choose(dialog, file):
        Window(dialog)
        set_text(windows_path(file))
        keys("Return")

    def exchanges(self):
        """What the program has recorded of its traffic, the answered part."""
        if not os.path.exists(self.trace):
            return []
        with open(self.trace, encoding="utf-8") as lines:
            return [entry for entry in map(json.loads, lines) if "outcome" in entry]

    def test_search_and_a_reading_at_a_full_ten_seconds(self):
        self.start("quorvel.exe", "--readout", "5:A", "--readout", "12:B", "--readout", "33:C")
        keys("Tab", "space")  # Search CCD
        found = until(self.exchanges, "the answers to the search")[0]
        self.assertEqual((found["outcome"], found["reply"]), ("complete", ":05\r\n:0C\r\n:21\r\n"))
        keys("Tab", "Tab", "Tab")
        set_text("5")
        keys("shift+Tab", "space")  # Immediate Reading
        until(lambda: self.exchanges()[3:], "three readings")
        for entry in self.exchanges()[1:]:
            self.assertEqual(entry["frame"], ":052101FF\r\n")
            self.assertEqual(datetime.datetime.fromisoformat(entry["time"][:-1]).second % 10, 0, entry["time"])
        if PICTURE:
            picture(PICTURE, self.windows[0])
        keys("space")  # Stop
        keys("Tab", "Tab", "Home")
        reply = self.exchanges()[1]["reply"]
        self.assertRegex(copied(), rf"^\d\d:\d\d:\d0 +X: \{reply[7:15]} +Y: \{reply[15:23]} *$")
        self.quit()

    def test_an_offset_reaches_the_readout(self):
        self.start("quorvel.exe", "--readout", "5:A")
        self.address("5")
        self.open(OFFSET, "Offset Setting")
        keys("Tab", "Tab", "Tab")
        set_text("1.5")
        keys("Return")  # Set
        self.assertEqual(answer_box(), "Set OK!")
        self.assertEqual(self.bus.state(5)["offsets"]["X"], "+1.50000")
        self.quit()

    def test_a_download_that_mdbtools_reads(self):
        self.start("quorvel.exe", "--fast", "--readout", "5:A", "--ring", f"5:1000,0,{RECORDS}")
        self.address("5")
        self.open(AUTOMATIC, "Set AutoReading")
        file = os.path.join(FOLDER, "dam.mdb")
        keys("Tab", "Tab", "Tab", "space")
        self.choose("Database File", file)
        until(lambda: self.rows(file) and len(self.rows(file)) == RECORDS, f"{RECORDS} records in the file")
        for row, record in zip(self.rows(file), self.bus.tell("records 5")["records"]):
            _, x, y, *_ = record["fields"]
            # the file has single precision
            self.assertEqual([round(float(row[key]), 3) for key in "xy"], [float(x), float(y)], record)
        self.quit()

    def test_grayscale_is_drawn_and_saved(self):
        self.start("quorvel.exe", "--fast", "--readout", "5:A")
        self.address("5")
        self.open(X_GRAYSCALE, "Gray Scale Graph")
        # each character lets events run, which costs Wine more than Windows
        reply = until(self.exchanges, "the pixels", patience=2 * PATIENCE)[0]["reply"]
        file = os.path.join(FOLDER, "lamp.mdb")
        keys("Tab", "Tab", "space")  # Save Data
        self.choose("Database File", file)
        until(lambda: self.rows(file), "the saved pixels")
        count = int(reply[5:9], 16)
        pixels = [int(reply[start:start + 2], 16) for start in range(9, 9 + 2 * count, 2)]
        self.assertEqual(count, PIXELS)
        self.assertEqual([int(row["hd"]) for row in self.rows(file)], pixels)
        self.quit()

    def test_a_calibration_reaches_the_readout(self):
        self.start("quorvel-factory.exe", "--fast", "--readout", "5:A")
        self.address("5")
        self.open(X_CALIBRATION, "X向标定")
        for column, first, step in ((1, 0, 5), (2, 1, 10)):
            keys("ctrl+Home", *["Right"] * column)
            for point in range(POINTS):
                type_text(str(first + step * point))
                keys("Return")
        keys("Tab", "Tab")
        set_text("5")
        keys("Tab", "space")  # 下载标定数据
        self.assertEqual(answer_box(), "X向标定参数下载完毕！")
        self.assertEqual(self.bus.state(5)["calibration"]["X"],
                         [[1 + 10 * point, 5 * point] for point in range(POINTS)])
        self.quit()

    def test_a_site_is_swept_saved_and_reported(self):
        self.start("quorvel.exe", "--fast", "--readout", "5:A", "--readout", "12:C")
        keys("Tab", "space")  # Search CCD
        until(self.exchanges, "the answer to the search")
        self.tool("i", "Site")
        keys("alt+f")  # New from Search
        self.windows[-1] = Window("Site*")
        before = len(self.exchanges())
        keys("alt+w")  # Sweep
        until(lambda: self.exchanges()[before + 2:], "the sweep")
        self.assertEqual([(entry["frame"], entry["outcome"]) for entry in self.exchanges()[before:]],
                         [(frame + "FF\r\n", "complete") for frame in (":052101", ":0C2101", ":0C2102")])
        file = os.path.join(FOLDER, "坝 1.quorvel-site.json")
        keys("alt+a")  # Save As ...
        self.choose("Save Site", file)
        self.windows[-1] = Window("Site: " + os.path.basename(file))
        with open(file, encoding="utf-8") as site:
            readouts = json.load(site)["readouts"]
        self.assertEqual([(readout["address"], readout["type"]) for readout in readouts], [(5, "A"), (12, "C")])
        keys("alt+i")  # Site Report ...
        Window("Site Report")
        keys("Return")  # Save ...
        page = os.path.join(FOLDER, "visit.pdf")
        self.choose("Save Site Report", page)
        self.saved(page, b"%PDF-")
        self.quit()

    def test_pixels_are_read_and_saved(self):
        self.start("quorvel.exe", "--fast", "--readout", "5:C", kind="C")
        self.address("5")
        self.tool("x", "Pixels")
        keys("Tab", "End")  # Direction: Z2, which has the fewest pixels
        keys("Tab", "Return")  # Readings, which presses "Read"
        reply = until(self.exchanges, "the pixels", patience=2 * PATIENCE)[0]["reply"]
        time.sleep(AFTER_KEYS)
        keys("Tab", "Tab", "Tab", "Tab", "Tab", "space")  # Save Picture ...
        drawn = os.path.join(FOLDER, "pixels.jpg")
        self.choose("Save Picture", drawn)
        self.saved(drawn, b"\xff\xd8\xff")
        Window("Pixels")
        keys("Tab", "space")  # Save Pixels ...
        file = os.path.join(FOLDER, "pixels.mdb")
        self.choose("Save Pixels", file)
        until(lambda: self.rows(file), "the saved pixels")
        self.assertTrue(reply.startswith(":057804" + f"{Z_PIXELS:04X}"), reply[:11])
        pixels = [int(reply[start:start + 2], 16) for start in range(11, 11 + 2 * Z_PIXELS, 2)]
        self.assertEqual([int(row["hd"]) for row in self.rows(file)], pixels)
        self.quit()

    def test_a_calibration_record_from_the_first_point_to_the_page(self):
        folder = os.path.join(FOLDER, "record")
        os.mkdir(folder)
        self.start("quorvel-factory.exe", "--fast", "--readout", "5:A", folder=folder)
        self.address("5")
        self.tool("c", "Calibration Record")
        keys("alt+r")  # Dial reading
        for point in range(POINTS):
            self.bus.tell(f"set 5 x {10 + 0.5 * point}")
            type_text(str(point))
            keys("Return")
            until(lambda: self.exchanges()[point:], f"the reading of point {point}")
        keys("alt+d")  # Download ...
        self.assertIn("Send the measured points to readout 5?", answer_box("alt+y"))
        until(lambda: self.exchanges()[POINTS:], "the answer to the download")
        table = self.bus.state(5)["calibration"]["X"]
        self.assertEqual([dial for _, dial in table], list(range(POINTS)))
        for point, (reading, _) in enumerate(table):
            self.assertAlmostEqual(reading, 10 + 0.5 * point, delta=0.1)
        Window("Calibration Record")
        keys("alt+s")  # Save Record ...
        page = os.path.join(FOLDER, "record.pdf")
        self.choose("Save Record", page)
        self.saved(page, b"%PDF-")
        with open(os.path.join(folder, "XDirection.record.json"), encoding="utf-8") as file:
            self.assertEqual(len(json.load(file)["runs"]["measured"]["points"]), POINTS)
        self.assertEqual(len(self.rows(os.path.join(folder, "XDirection.mdb"), "Calibration")), POINTS)
        self.quit()

    def saved(self, file, beginning):
        """Files of ours get their name when they are whole."""
        until(lambda: os.path.exists(file), file)
        with open(file, "rb") as content:
            self.assertEqual(content.read(len(beginning)), beginning)

    @staticmethod
    def rows(file, table="data"):
        return list(csv.DictReader(io.StringIO(output("mdb-export", file, table))))

    def quit(self):
        """Closes the windows as a user does, by Alt+F4, and looks at the program's exit status."""
        for window in reversed(self.windows):
            Window(window.caption)
            keys("alt+F4")
            window.closes()
        # Wine's server kills a program whose threads take longer than a second to end
        self.assertIn(self.program.ends(), (0, -signal.SIGKILL))


if __name__ == "__main__":
    unittest.main(verbosity=2)
