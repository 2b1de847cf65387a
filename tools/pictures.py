"""Takes the pictures of the manual: pictures.py BINARIES FOLDER [PICTURE...]. Run it by tools/pictures."""

import datetime
import json
import os
import pathlib
import subprocess
import sys
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests/accessibility"))
from desk import (ESCAPE_KEY, SPACE_KEY, Atspi, OwnFolder, Program, click, descendants, has_state, one_in, press, row,  # noqa: E402
                  strike, type_into, type_keys, until)

BINARIES, FOLDER, *WANTED = sys.argv[1:]
PROGRAM_FOLDER = "/tmp/dam"  # some windows show it
BUTTON = Atspi.Role.PUSH_BUTTON
BUS = ["--fast", "--seed", "1", "--readout", "5:A", "--readout", "12:B", "--readout", "33:C", "--ring", "5:1000,40,100"]
DEVIATIONS = (-5, 7, 6, -4, -12, -9, 4, 13, 9, -2, -8)  # of the points of the calibration from its line, micrometres
REPAINT = 0.5  # seconds
TAB_KEY = 0xff09


def take(window, name):
    """Saves what a window shows."""
    time.sleep(REPAINT)
    place = window.get_extents(Atspi.CoordType.SCREEN)
    subprocess.run(["import", "-window", "root", "-crop", f"{place.width}x{place.height}+{place.x}+{place.y}", "+repage",
                    "-strip", os.path.join(FOLDER, name + ".png")], check=True)


def start(program, letter, address, bus=BUS):
    """A program with an open port before readout `address`."""
    running = Program(BINARIES, program, bus=bus, folder=PROGRAM_FOLDER)
    running.address(letter, address)
    return running


def close(window, label, program):
    """Closes a window by Escape, which goes to the window below the mouse."""
    caption = window.get_name()
    click(one_in(window, Atspi.Role.LABEL, label))
    strike(ESCAPE_KEY)
    until(lambda: caption not in program.windows(), "the end of " + caption)


def main_window():
    program = start("quorvel", "A", "")
    press(program.one(BUTTON, "Search CCD"))
    program.one(Atspi.Role.LABEL, "05,12,33")
    press(program.one(BUTTON, "Immediate Reading"))
    readings = program.one(Atspi.Role.LIST, "Value:")
    until(lambda: readings.get_child_count() >= 4, "four readings", patience=60)
    take(program.window("QUORVEL V4.11"), "main-window")
    program.close()


def traffic():
    program = start("quorvel", "A", "")
    panel = program.tool("Traffic")
    press(program.one(BUTTON, "Search CCD"))
    program.one(Atspi.Role.LABEL, "05,12,33")
    press(program.one(BUTTON, "Immediate Reading"))
    readings = program.one(Atspi.Role.LIST, "Value:")
    until(lambda: readings.get_child_count() >= 2, "two readings", patience=60)
    take(panel, "traffic")
    program.close()


def line_health():
    program = start("quorvel", "C", "33", BUS[1:])  # at the pace of real readouts
    program.tell_bus("fault short@7806:1")
    window = program.open("Offset Setting", "Offset Setting")
    for direction in "XYZZ":
        press(next(node for node in row(window, direction + "-Direction") if node.get_name() == "Query"))
        until(lambda: program.boxes() or "Set Result" in program.windows(), "the answer")
        if "Set Result" in program.windows():
            press(one_in(program.window("Set Result"), BUTTON, "OK"))
            until(lambda: "Set Result" not in program.windows(), "the end of the result box")
        else:
            program.answer("OK")
    close(window, "X-Direction", program)
    for address in ("5", "12", "77"):
        type_into(program.one(Atspi.Role.TEXT, "CCD Address"), address)
        window = program.open("Offset Setting", "Offset Setting")
        press(next(node for node in row(window, "X-Direction") if node.get_name() == "Set"))
        program.answer("OK")
        close(window, "X-Direction", program)
    take(program.tool("Line Health"), "line-health")
    program.close()


def journal():
    program = start("quorvel", "C", "33")
    window = program.open("Offset Setting", "Offset Setting")
    for direction, value in (("X", "1.5"), ("Y", "-0.25"), ("Z", "12.5"), ("X", "1.75")):
        type_into(one_in(window, Atspi.Role.TEXT, direction + "-Direction"), value)
        press(next(node for node in row(window, direction + "-Direction") if node.get_name() == "Set"))
        program.answer("OK")
    close(window, "X-Direction", program)
    press(program.one(Atspi.Role.MENU_ITEM, "Reset Setting"))
    program.answer("Yes")
    program.answer("Yes")
    program.answer("OK")
    take(program.tool("Journal"), "journal")
    program.close()


def settings():
    program = start("quorvel", "C", "33")
    for value in ("offsetx +1.50000", "offsety -0.25000", "offsetz +12.5000", "swap on", "diameter 25"):
        program.tell_bus("set 33 " + value)
    window = program.tool("Settings")

    def read():
        press(one_in(window, BUTTON, "Read"))
        until(lambda: [node for node in descendants(window) if node.get_name().endswith("11 of 11.")], "the settings")

    read()
    path = os.path.join(program.folder.name, "before-the-reset.json")
    press(one_in(window, BUTTON, "Save to File ..."))
    program.choose_file("Save Settings", path, "Save")
    until(lambda: os.path.exists(path), "the file")
    for value in ("offsetx +0.00000", "offsety +0.00000", "offsetz +0.00000", "swap off", "diameter 15"):
        program.tell_bus("set 33 " + value)
    press(one_in(window, BUTTON, "Open File ..."))
    program.choose_file("Open Settings", path)
    read()
    table = one_in(window, Atspi.Role.TABLE, "Settings")
    names = [Atspi.Table.get_accessible_at(table, place, 0).get_name() for place in range(3)]
    for name in ("Wire", "Offset X", "Offset Y"):
        click(Atspi.Table.get_accessible_at(table, names.index(name), 0))
        strike(SPACE_KEY)
        time.sleep(REPAINT)
    press(one_in(window, BUTTON, "Send Chosen to Readout"))
    until(lambda: [node for node in descendants(window) if node.get_name().startswith("Set and verified: ")], "the end")
    take(window, "settings")
    program.close()


def diagnosis():
    program = start("quorvel", "A", "7")
    window = program.tool("Why no answer?")
    until(lambda: [node for node in descendants(window) if "Most likely" in node.get_name()], "the verdict", patience=60)
    take(window, "diagnosis")
    program.close()


def finder():
    program = start("quorvel", "A", "7")
    program.tell_bus("fault twice@12/*")
    window = program.tool("Find Readouts One by One")
    press(one_in(window, BUTTON, "Search"))
    table = one_in(window, Atspi.Role.TABLE, "Readouts found")
    until(lambda: Atspi.Table.get_n_rows(table) == 3, "three readouts", patience=60)
    take(window, "finder")
    program.close()


def offset_setting():
    program = start("quorvel", "C", "33")
    window = program.open("Offset Setting", "Offset Setting")
    for letter, value in zip("XYZ", ("1.5", "-0.25", "12.5")):
        type_into(one_in(window, Atspi.Role.TEXT, letter + "-Direction"), value)
    take(window, "offset-setting")
    program.close()


def automatic_readings():
    program = start("quorvel", "A", "5")
    window = program.open("Automatic Readings", "Set AutoReading")
    press(one_in(window, BUTTON, "Get Auto_Reading Data"))
    program.choose_file("Database File", os.path.join(program.folder.name, "dam.mdb"))
    until(lambda: [node for node in descendants(window) if "35 records" in node.get_name()], "half of the records")
    take(window, "automatic-readings")
    program.close()


def stored_readings():
    program = start("quorvel", "A", "5")
    window = program.tool("Stored Readings")
    press(one_in(window, BUTTON, "New File ..."))
    program.choose_file("New File", os.path.join(program.folder.name, f"readout-5-A-{datetime.date.today()}.mdb"), "Save")
    report = one_in(window, Atspi.Role.TEXT, "Report")
    until(lambda: "complete" in report.get_text(0, -1), "the report")
    press(one_in(window, BUTTON, "Check"))
    until(lambda: "Safe to delete: all" in report.get_text(0, -1), "the check")
    take(window, "stored-readings")
    program.close()


def grayscale():
    program = start("quorvel", "C", "33")
    window = program.open("X-GrayScale-Data", "Gray Scale Graph")
    one_in(window, Atspi.Role.CHART, "Grayscale Graph of CCD's Pixels (X-direction)")
    take(window, "grayscale")
    program.close()


def pixels():
    program = start("quorvel", "A", "5")
    for setting in ("x 21.4", "dust clean", "dust x 37.3 27 0.2", "dust x 12.1 45 0.6"):
        program.tell_bus("set 5 " + setting)
    window = program.tool("Pixels")

    def read(words):
        press(one_in(window, BUTTON, "Read"))
        until(lambda: [node for node in descendants(window) if words in node.get_name()], words, patience=60)

    read("1 of 1 readings")
    take(window, "pixels-before")
    press(one_in(window, BUTTON, "Keep as Reference"))
    program.tell_bus("set 5 dust clean")
    read("Clean: ")
    take(window, "pixels-after")
    program.close()


def calibration():
    program = start("quorvel-factory", "C", "33")
    window = program.open("X Direction", "X向标定")
    table = one_in(window, Atspi.Role.TABLE, "X_Direction")
    click(Atspi.Table.get_accessible_at(table, 0, 1))
    type_keys("".join(f"{point * 5}\n" for point in range(len(DEVIATIONS))))
    for point, deviation in enumerate(DEVIATIONS):
        program.tell_bus(f"set 33 x {point * 5 + 0.026 + deviation / 1000:.3f}")
        cell = Atspi.Table.get_accessible_at(table, point, 2)
        click(cell)
        type_keys(" ")
        until(cell.get_name, f"point {point}")
    press(one_in(window, BUTTON, "计算非线性容差"))
    program.answer("OK")
    take(window, "calibration")
    program.close()


def site():
    """Six plumb lines, one of them silent at last, one beyond its limit."""
    addresses = {5: ("A", "Block 5, crest"), 12: ("B", "Block 7, crest"), 13: ("C", "Block 7, foot"),
                 21: ("A", "Block 9, crest"), 33: ("C", "Block 9, foot"), 40: ("D", "Abutment")}
    bus = ["--fast", "--seed", "1"]
    for address, (letter, _) in addresses.items():
        bus += ["--readout", f"{address}:{letter}"]
    program = start("quorvel", "A", "", bus)
    readouts = [{"address": address, "type": letter, "name": name, "reference": "Zero of 2024-05-17",
                 "limitsMm": {"x": {"low": 10, "high": 28}}} for address, (letter, name) in addresses.items()]
    file = os.path.join(program.folder.name, "dam.quorvel-site.json")
    with open(file, "w", encoding="utf-8") as out:
        json.dump({"name": "North dam", "note": "Gallery 2, key at the gate", "readouts": readouts}, out)
    window = program.tool("Site")
    press(one_in(window, BUTTON, "Open ..."))
    program.choose_file("Open Site", file)
    window = program.window("Site: dam.quorvel-site.json")
    program.tell_bus("set 21 x 28.4")

    def sweep(expected):
        press(one_in(window, BUTTON, "Sweep"))
        until(lambda: [node for node in descendants(window) if f"{expected} of 6 readouts" in node.get_name()], "a sweep")
        until(lambda: has_state(one_in(window, BUTTON, "Sweep"), Atspi.StateType.ENABLED), "its end")
        time.sleep(REPAINT)

    for number in range(12):
        sweep(6)
        if number == 0:
            press(one_in(window, BUTTON, "Mark Zero"))
    program.tell_bus("fault silent@33/2101")
    sweep(5)
    one_in(window, Atspi.Role.CHART, "Trend").grab_focus()
    for keys in ["Left"] * 3 + ["shift+Left"] * 8:
        subprocess.run(["xdotool", "key", keys], check=True)
    take(window, "site")
    program.close()


def calibration_record():
    """A readout with a table of last year is found off, measured anew, and left well; the window and its page."""
    program = start("quorvel-factory", "A", "5")
    window = program.tool("Calibration Record")
    table = one_in(window, Atspi.Role.TABLE, "Points")
    dial = one_in(window, Atspi.Role.TEXT, "Dial reading, mm")

    def take_run(name, off):
        press(one_in(window, Atspi.Role.RADIO_BUTTON, name))
        click(Atspi.Table.get_accessible_at(table, 0, 0))
        for point, deviation in enumerate(DEVIATIONS):
            program.tell_bus(f"set 5 x {point * 5 + 0.026 + off(point) + deviation / 1000:.3f}")
            click(dial)
            type_keys(f"{point * 2.5}\n")
            until(lambda: Atspi.Table.get_accessible_at(table, point, 1).get_name(), f"point {point}")
            time.sleep(REPAINT / 2)

    def command(name):
        press(one_in(window, BUTTON, name))
        program.answer("Yes")
        until(lambda: not program.boxes(), "the end of the question")
        time.sleep(2 * REPAINT)

    take_run("Measured", lambda point: 0)
    command("Download ...")
    command("New Table ...")
    for name, text in (("Serial number", "CL-2019-0042"), ("Gauge", "dial gauge no. 17, certificate 2026-311"),
                       ("Person", "张伟"), ("Remark", "yearly check; window cleaned"), ("Permitted error, mm", "0.02")):
        type_into(one_in(window, Atspi.Role.TEXT, name), text)
        strike(TAB_KEY)
    take_run("As found", lambda point: 0.012 * point - 0.05)
    command("Switch Correction Off ...")
    one_in(window, Atspi.Role.SPIN_BUTTON, "Repeats").set_current_value(3)
    take_run("Measured", lambda point: 0.012 * point - 0.05)
    command("Download ...")
    take_run("As left", lambda point: 0.012 * point - 0.05 + 0.002 * (point % 3))
    press(one_in(window, Atspi.Role.CHECK_BOX, "Live value"))
    until(lambda: [node for node in descendants(window) if "steady" in node.get_name()], "a steady value")
    take(window, "calibration-record")
    subprocess.run([os.path.join(BINARIES, "quorvelctl-factory"), "calibrate", "X", "--folder", program.folder.name,
                    "record", os.path.join(FOLDER, "calibration-record-page.png"), "--force"], check=True)
    program.close()


class Terminal:
    """A terminal in the folder of the pictures, before a simulated bus that its commands find by themselves."""

    SIZE = "114x30"

    def __init__(self, bus):
        self.folder = OwnFolder(PROGRAM_FOLDER)
        self.prompts = os.path.join(self.folder.name, ".prompts")
        self.bus = subprocess.Popen([os.path.join(BINARIES, "quorvel-sim"), *bus], stdin=subprocess.PIPE,
                                    stdout=subprocess.PIPE, text=True)
        settings = {"PATH": os.path.abspath(BINARIES) + os.pathsep + os.environ["PATH"], "PS1": "$ ",
                    "PROMPT_COMMAND": f"echo >>{self.prompts}", "XDG_DATA_HOME": self.folder.name,
                    "QUORVEL_PORT": self.bus.stdout.readline().strip()}
        self.process = subprocess.Popen(
            ["xterm", "-fa", "DejaVu Sans Mono", "-fs", "11", "-geometry", self.SIZE, "-bg", "white", "-fg", "black",
             "+sb", "-b", "8", "-T", "Terminal", "-e", "bash", "--noprofile", "--norc"],
            cwd=self.folder.name, env={**os.environ, **settings})
        until(self.prompted, "the first prompt")
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", "^Terminal$"], check=True,
                               capture_output=True, text=True)
        self.window = found.stdout.split()[-1]
        subprocess.run(["xdotool", "windowfocus", "--sync", self.window], check=True)

    def prompted(self):
        if not os.path.exists(self.prompts):
            return 0
        with open(self.prompts, encoding="utf-8") as prompts:
            return len(prompts.readlines())

    def run(self, command):
        before = self.prompted()
        subprocess.run(["xdotool", "type", "--delay", "20", command], check=True)
        subprocess.run(["xdotool", "key", "Return"], check=True)
        until(lambda: self.prompted() > before, "the end of " + command, patience=60)

    def tell_bus(self, line):
        self.bus.stdin.write(line + "\n")
        self.bus.stdin.flush()
        self.bus.stdout.readline()

    def take(self, name):
        """Saves what the terminal shows, without the rows that are still empty."""
        time.sleep(REPAINT)
        file = os.path.join(FOLDER, name + ".png")
        subprocess.run(["import", "-window", self.window, file], check=True)
        subprocess.run(["mogrify", "-strip", "-trim", "-bordercolor", "white", "-border", "10", "+repage", file], check=True)
        self.process.terminate()
        self.process.wait()
        self.bus.stdin.close()
        self.bus.wait()
        self.folder.cleanup()


def quorvelctl():
    terminal = Terminal(BUS)
    for command in ("quorvelctl search", "quorvelctl read --address 33 --type C", "quorvelctl offset X --address 33",
                    "quorvelctl offset X 1.5 --address 33", "quorvelctl offset X --address 33 --json",
                    "quorvelctl read --address 77", "echo $?"):
        terminal.run(command)
    terminal.take("quorvelctl")


def watch():
    terminal = Terminal(BUS)
    readouts = [{"address": 5, "type": "A", "name": "Block 5, crest"}, {"address": 12, "type": "B", "name": "Block 7, crest"},
                {"address": 33, "type": "C", "name": "Block 7, foot", "limitsMm": {"x": {"low": 10, "high": 28}}}]
    with open(os.path.join(terminal.folder.name, "north.quorvel-site.json"), "w", encoding="utf-8") as out:
        json.dump({"name": "North dam", "readouts": readouts}, out)
    terminal.tell_bus("fault silent@12/*")
    site = "quorvelctl watch --site north.quorvel-site.json"
    for command in (site + " --every 5s --count 2", site + " --count 1 --format prometheus --output north.prom",
                    "grep -E '^quorvel_(position|readout_up)' north.prom"):
        terminal.run(command)
    terminal.take("watch")


SCENES = {"main-window": main_window, "traffic": traffic, "line-health": line_health, "journal": journal,
          "diagnosis": diagnosis, "finder": finder, "site": site,
          "offset-setting": offset_setting, "settings": settings, "automatic-readings": automatic_readings,
          "stored-readings": stored_readings, "grayscale": grayscale, "pixels": pixels, "calibration": calibration,
          "calibration-record": calibration_record, "quorvelctl": quorvelctl, "watch": watch}
for scene in WANTED or SCENES:
    SCENES[scene]()
