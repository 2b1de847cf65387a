#!/usr/bin/env python3
"""Holds the examples of site files against docs/quorvel-site.schema.json: the good ones pass, the others do not."""
import json
import pathlib
import sys

import jsonschema

HERE = pathlib.Path(__file__).resolve().parent
# What a schema cannot say, and the program alone finds.
BEYOND_THE_SCHEMA = {"wrong-address-twice.json", "wrong-limits-crossed.json", "wrong-key-twice.json"}

schema = json.loads((HERE.parents[1] / "docs" / "quorvel-site.schema.json").read_text())
validator_class = jsonschema.validators.validator_for(schema)
validator_class.check_schema(schema)
validator = validator_class(schema)

examples = sorted((HERE / "examples").glob("*.json"))
faults = []
for example in examples:
    try:
        site = json.loads(example.read_text())
        passes = validator.is_valid(site)
    except json.JSONDecodeError:
        passes = False
    expected = example.name.startswith("good-") or example.name in BEYOND_THE_SCHEMA
    if passes != expected:
        faults.append(f"{example.name}: {'passes' if passes else 'does not pass'}")
if len(examples) < 13:
    faults.append(f"only {len(examples)} examples in {HERE / 'examples'}")
sys.exit("\n".join(faults) or 0)
