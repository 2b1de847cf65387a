#!/usr/bin/env python3
"""schema_test.py QUORVELCTL_FACTORY: holds what the program writes, and what it refuses, against the schema of records."""
import copy
import json
import pathlib
import subprocess
import sys
import tempfile

import jsonschema

PROGRAM = sys.argv[1]
SCHEMA = pathlib.Path(__file__).resolve().parents[2] / "docs" / "calibration-record.schema.json"
TAKE = {"at": "2024-05-17T09:30:00", "address": 5, "readings": [1.5]}
RECORD = {
    "format": "quorvel calibration record", "version": 1, "direction": "X", "readout": {"address": 5, "serial": "42"},
    "gauge": "17", "person": "张伟", "remark": "", "tolerance": 0.02, "room": "cellar",
    "runs": {run: {"points": [{"passes": [{"dial": point, "down": way, "takes": [TAKE]} for way in (False, True)]}
                              for point in range(11)]} for run in ("found", "measured", "left")},
    "downloads": [{"at": TAKE["at"], "address": 5, "column": "X_Data", "zeros": False, "frame": ":056111",
                   "verdict": "agrees", "largestDifference": 0.001}]}


def changed(path, value):
    record = copy.deepcopy(RECORD)
    node = record
    for key in path[:-1]:
        node = node[key]
    node[path[-1]] = value
    return record


WRONG = [changed(["version"], 2), changed(["direction"], "W"), changed(["readout", "address"], 250),
         changed(["tolerance"], 0), changed(["downloads", 0, "verdict"], "fine"),
         changed(["runs", "left", "points", 0, "passes", 0, "takes", 0, "readings"], ["1.5"])]

schema = json.loads(SCHEMA.read_text())
validator = jsonschema.validators.validator_for(schema)
validator.check_schema(schema)
faults = []
with tempfile.TemporaryDirectory() as folder:
    kept = pathlib.Path(folder, "XDirection.record.json")
    archive = pathlib.Path(folder, "r.json")
    command = [PROGRAM, "calibrate", "X", "--folder", folder, "record", str(archive), "--force"]
    kept.write_text(json.dumps(RECORD))
    subprocess.run(command, check=True, capture_output=True)
    written = json.loads(archive.read_text())
    faults += [f"{error.json_path}: {error.message}" for error in validator(schema).iter_errors(written)]
    if written["room"] != "cellar" or written["judgement"]["left"]["columns"][0]["points"][3]["error"] != -1.5:
        faults.append("the record does not hold what it should")
    for record in [RECORD, *WRONG]:
        kept.write_text(json.dumps(record))
        told = subprocess.run(command, check=True, capture_output=True, text=True).stderr
        taken = "cannot be used" not in told
        if taken != (record is RECORD) or validator(schema).is_valid(record) != taken:
            faults.append(f"schema and program do not agree: {told}")
sys.exit("\n".join(faults) or 0)
