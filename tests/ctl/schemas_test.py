"""Holds what every command of quorvelctl answers with --json against its schema in docs/schemas."""

import json
import os
import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

import jsonschema

BINARIES, SCHEMAS = map(pathlib.Path, sys.argv[1:3])
TOOL = BINARIES / "quorvelctl-factory"
# each with the schema that its lines have to fit; FOLDER is a folder of its own
COMMANDS = (
    ("ports", "ports"), ("search", "search"), ("search", "search --each 4-6"), ("diagnose", "diagnose"),
    ("read", "read"), ("read", "read --address 12 --type C"),
    ("site-create", "site create FOLDER/dam.quorvel-site.json --yes"),
    ("watch", "watch --format ndjson --count 1 --every 1s"),
    ("site", "site create FOLDER/a.quorvel-site.json --yes"),
    ("offset", "offset X 1.5"), ("offset", "offset Y"), ("reference", "reference X"), ("reference", "reference Y 1"),
    ("feature", "feature"), ("feature", "feature on"), ("invert", "invert X"), ("invert", "invert X on"),
    ("swap", "swap"), ("swap", "swap on"), ("wire", "wire"), ("wire", "wire 1.5 0.3"), ("clock", "clock now"),
    ("auto", "auto"), ("auto", "auto 10m"), ("ring", "ring"), ("ring", "ring --address 12"),
    ("download", "download FOLDER/a.csv"), ("download", "download --address 12 FOLDER/c.csv"),
    ("check", "check FOLDER/a.csv"), ("raw", "raw :0572FF"), ("raw", "raw FF01FF"),
    ("stitching", "stitching"), ("stitching", "stitching 0512"),
    ("settings", "settings"), ("settings", "settings --address 12"),
    ("settings-save", "settings save FOLDER/s.json"), ("settings-restore", "settings restore FOLDER/s.json --yes"),
    ("grayscale", "grayscale X"), ("mdb", "mdb FOLDER/a.mdb"), ("mdb", "mdb FOLDER/a.mdb data"),
    ("calibrate", "calibrate X"), ("calibrate", "calibrate X measure --point 0 --dial 0"),
    ("calibrate-fit", "calibrate X fit"), ("calibrate-download", "calibrate X download --yes"),
    ("calibrate-record", "calibrate X record FOLDER/r.json"),
    ("clear", "clear --yes"), ("reset", "reset --yes"), ("address", "address"), ("address", "address 7"),
)
FAILURES = ("offset W", "offset X --address 99", "clear", "mdb FOLDER/missing.mdb", "download FOLDER/a.mdb",
            "--read-only swap on", "--port /dev/ttyNowhere read", "watch --readout 99:A --count 1 --every 1s --wrong")


class Schemas(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        cls.folder = folder.name
        cls.bus = subprocess.Popen([BINARIES / "quorvel-sim", "--fast", "--seed", "1", "--readout", "5:B", "--readout",
                                    "12:C", "--ring", "5:1000,0,3", "--ring", "12:1000,0,3"],
                                   stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        cls.addClassCleanup(cls.bus.communicate)
        cls.port = cls.bus.stdout.readline().strip()
        cls.environment = {**os.environ, "XDG_DATA_HOME": folder.name, "QT_QPA_PLATFORM": "offscreen"}
        cls.run_tool("download FOLDER/a.mdb")
        for point in range(11):
            cls.bus.stdin.write(f"set 5 x {10 + point / 2}\n")
            cls.bus.stdin.flush()
            cls.bus.stdout.readline()
            cls.run_tool(f"calibrate X measure --point {point} --dial {point / 4}")

    @classmethod
    def run_tool(cls, command):
        words = [word.replace("FOLDER", cls.folder) for word in command.split()]
        if "--port" not in words:
            words = ["--port", cls.port, *words]
        if "--address" not in words and "watch" not in words:
            words = ["--address", "5", *words]
        elif "watch" in words and "--readout" not in words:
            words += ["--readout", "5:B"]
        if "calibrate" in words:
            words += ["--folder", cls.folder]
        return subprocess.run([TOOL, "--json", *words], text=True, capture_output=True, env=cls.environment,
                              stdin=subprocess.DEVNULL, check=False, timeout=100)

    def validator(self, name):
        schema = json.loads((SCHEMAS / (name + ".schema.json")).read_text())
        jsonschema.Draft202012Validator.check_schema(schema)
        return jsonschema.Draft202012Validator(schema)

    def hold(self, name, command, status_is_good):
        ended = self.run_tool(command)
        self.assertTrue(status_is_good(ended.returncode), (command, ended.returncode, ended.stderr))
        lines = ended.stdout.splitlines()
        self.assertTrue(lines, command)
        for line in lines:
            self.validator(name).validate(json.loads(line))

    def test_what_is_answered_has_its_schema(self):
        for name, command in COMMANDS:
            with self.subTest(command):
                self.hold(name, command, lambda status: status == 0)

    def test_failures_have_theirs(self):
        for command in FAILURES:
            with self.subTest(command):
                self.hold("error", command, lambda status: status in range(1, 7))

    def test_every_command_has_a_schema_and_every_schema_a_command(self):
        text = subprocess.run([TOOL, "--help"], text=True, capture_output=True, check=True).stdout
        commands = re.findall(r"^  ([a-z]+)  ", text.split("Subcommands:\n")[1].split("\n\n")[0], re.MULTILINE)
        schemas = {path.name.removesuffix(".schema.json") for path in SCHEMAS.glob("*.schema.json")}
        self.assertGreater(len(commands), 20)
        held = {name for name, _ in COMMANDS}
        self.assertEqual(held | {"error"}, schemas)
        self.assertLessEqual(set(commands), held)

    def test_another_answer_is_told_apart(self):
        with self.assertRaises(jsonschema.ValidationError):
            self.validator("offset").validate({"address": 5, "direction": "X", "offset": "+1.50000"})


if __name__ == "__main__":
    sys.argv[1:] = []
    unittest.main(verbosity=2)
