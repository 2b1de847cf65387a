#!/usr/bin/env python3
"""Downloads stored readings over simulated cables with bit errors, and compares each file with what the readout holds.

    bench/noisy_lines.py --rate 0.0001 --retries 3 --verify     # 50 runs of 300 records, each with a seed of its own
    bench/noisy_lines.py --paced --runs 4 --records 100 ...     # at 9600 baud, with the time over its floor

One line for each run, and a sum. Ends with status 1 when a run was not complete or a row not equal to its record.
The floor is the prescribed pauses and the replies' characters at 10 bits each, once for each record, twice with --verify.
"""

import argparse
import concurrent.futures
import csv
import datetime
import json
import os
import pathlib
import statistics
import subprocess
import sys
import tempfile
import time

ADDRESS = "5"
FRAME = 13  # characters of a question for a record
REPLY = {"A": 41, "C": 57}  # characters of its answer
POINTERS_FLOOR = 0.03 + 9 * 0.005 + 21 * 10 / 9600  # seconds


def options():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    root = pathlib.Path(__file__).resolve().parent.parent
    parser.add_argument("--binaries", default=root / "build/release/bin")
    parser.add_argument("--runs", type=int, default=50)
    parser.add_argument("--seed", type=int, default=1, help="of the first run; each run takes the next one")
    parser.add_argument("--records", type=int, default=300)
    parser.add_argument("--type", choices=REPLY, default="A")
    parser.add_argument("--rate", default="0.0001", help="of characters with a wrong bit, each way")
    parser.add_argument("--retries", type=int, default=3)
    parser.add_argument("--verify", action="store_true")
    parser.add_argument("--paced", action="store_true", help="9600 baud instead of --fast")
    parser.add_argument("--jobs", type=int, default=10, help="runs at a time; 1 with --paced")
    return parser.parse_args()


class Bus:
    """A simulated bus with one readout."""

    def __init__(self, wanted, seed):
        pace = [] if wanted.paced else ["--fast"]
        self.process = subprocess.Popen(
            [os.path.join(wanted.binaries, "quorvel-sim"), *pace, "--seed", str(seed), "--clock", "2024-05-17T09:05:30",
             "--readout", f"{ADDRESS}:{wanted.type}", "--ring", f"{ADDRESS}:1000,0,{wanted.records}"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        self.port = self.process.stdout.readline().strip()

    def tell(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        return json.loads(self.process.stdout.readline())

    def close(self):
        self.process.stdin.close()
        self.process.wait()
        self.process.stdout.close()


def row_of(fields):
    """The row that a record gives."""
    moment = datetime.datetime.strptime("20" + fields[0], "%Y%m%d%H%M%S").isoformat()
    return [moment, *(float(field) for field in fields[1:])]


def rows_in(path):
    """The rows of a file; what is no number is None."""
    def number(cell):
        return round(float(cell), 3) if cell else None
    if not os.path.exists(path):
        return []
    with open(path, newline="", encoding="ascii") as file:
        return [[row[0], *map(number, row[1:])] for row in list(csv.reader(file))[1:]]


def run(wanted, seed):
    """One download: its figures."""
    bus = Bus(wanted, seed)
    with tempfile.TemporaryDirectory() as folder:
        path = os.path.join(folder, "stored.csv")
        expected = [row_of(record["fields"]) for record in bus.tell(f"records {ADDRESS}")["records"]]
        bus.tell(f"biterrors {wanted.rate},{seed}")
        begun = time.monotonic()
        ended = subprocess.run(
            [os.path.join(wanted.binaries, "quorvelctl"), "--no-journal", "--port", bus.port, "--address", ADDRESS,
             "--type", wanted.type, "download", path, "--retries", str(wanted.retries),
             *(["--verify"] if wanted.verify else [])],
            capture_output=True, text=True, check=False)
        seconds = time.monotonic() - begun
        counts = bus.tell("biterrors")
        rows = rows_in(path)
    bus.close()
    return {"seed": seed, "status": ended.returncode, "rows": len(rows),
            "wrong": sum(row != record for row, record in zip(rows, expected)), "missing": len(expected) - len(rows),
            "hit": counts["toReadouts"]["hit"] + counts["fromReadouts"]["hit"], "seconds": seconds,
            "words": ended.stderr.strip().splitlines()[-1:] if ended.returncode else []}


def main():
    wanted = options()
    each = 0.03 + FRAME * 0.005 + (REPLY[wanted.type] * 10 / 9600 if wanted.paced else 0)
    floor = POINTERS_FLOOR + wanted.records * each * (2 if wanted.verify else 1)
    with concurrent.futures.ThreadPoolExecutor(1 if wanted.paced else wanted.jobs) as pool:
        runs = [pool.submit(run, wanted, wanted.seed + number) for number in range(wanted.runs)]
        results = []
        for future in runs:
            done = future.result()
            results.append(done)
            print("seed {seed}: status {status}, {rows} rows, {wrong} wrong, {missing} missing, {hit} characters hit, "
                  "{seconds:.1f} s, {ratio:.3f} of the floor {words}"
                  .format(ratio=done["seconds"] / floor, **{**done, "words": " ".join(done["words"])}), flush=True)
    whole = [done for done in results if done["status"] == 0 and done["missing"] == 0]
    equal = [done for done in whole if done["wrong"] == 0]
    rows = sum(done["rows"] for done in results)
    print(f"rate {wanted.rate}, type {wanted.type}, {wanted.records} records, retries {wanted.retries}, "
          f"{'verified' if wanted.verify else 'not verified'}: {len(whole)} of {len(results)} complete, {len(equal)} of them "
          f"equal; {sum(done['wrong'] for done in results)} of {rows} rows wrong; time over the floor: median "
          f"{statistics.median(done['seconds'] / floor for done in results):.3f}, "
          f"worst {max(done['seconds'] / floor for done in results):.3f}")
    return 0 if len(equal) == len(results) else 1


if __name__ == "__main__":
    sys.exit(main())
