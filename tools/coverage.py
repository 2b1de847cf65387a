#!/usr/bin/env python3
"""coverage.py BUILD-FOLDER [ROOM]: prints the lines and branches that were reached, a row for each folder of sources.

With a ROOM ("src/jet") it prints the lines of it that were not reached instead. A line counts once, however many units it was compiled in. The branches that only an exception takes are left out.
"""

import collections
import concurrent.futures
import json
import os
import pathlib
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent


def units(notes):
    """What gcov says about one unit: (source file, its lines). A program that has not run has notes and no data."""
    command = ["gcov", "--json-format", "--branch-probabilities", "--stdout", str(notes)]
    done = subprocess.run(command, capture_output=True, text=True, check=False, cwd=notes.parent)
    if done.returncode != 0:
        sys.exit(done.stderr)
    for text in done.stdout.splitlines():
        said = json.loads(text)
        folder = pathlib.Path(said["current_working_directory"])
        for file in said["files"]:
            yield pathlib.Path(os.path.normpath(folder / file["file"])), file["lines"]


def room_of(path):
    """The folder of sources that a file belongs to; None when it is not one of ours."""
    if not path.is_relative_to(ROOT):
        return None
    folder = path.relative_to(ROOT).parent
    return str(folder) if folder.parts and folder.parts[0] in ("src", "sim") else None


def percent(reached, label):
    share = 100.0 * sum(reached) / len(reached) if reached else 100.0
    return f"{sum(reached):6} of {len(reached):6} {label} {share:5.1f} %"


def print_missed(lines):
    for (path, number), reached in sorted(lines.items()):
        if not reached:
            print(f"{path.relative_to(ROOT)}:{number}: {path.read_text().splitlines()[number - 1].strip()}")


def main():
    if len(sys.argv) not in (2, 3):
        sys.exit(__doc__)
    notes = sorted(pathlib.Path(sys.argv[1]).resolve().glob("**/*.gcno"))
    lines = collections.defaultdict(lambda: collections.defaultdict(bool))
    branches = collections.defaultdict(lambda: collections.defaultdict(bool))
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for unit in pool.map(lambda note: list(units(note)), notes):
            for path, found in unit:
                room = room_of(path)
                if room is None:
                    continue
                for line in found:
                    place = (path, line["line_number"])
                    lines[room][place] |= line["count"] > 0
                    ways = [way for way in line["branches"] if not way["throw"]]
                    for number, way in enumerate(ways):
                        branches[room][(*place, line.get("function_name"), number)] |= way["count"] > 0
    if not lines:
        sys.exit(f"Nothing was counted in {sys.argv[1]}.")
    if len(sys.argv) == 3:
        print_missed(lines[sys.argv[2]])
        return
    for room in sorted(lines):
        print(f"{room:18} {percent(lines[room].values(), 'lines')} {percent(branches[room].values(), 'branches')}")
    every = [[reached for room in kind.values() for reached in room.values()] for kind in (lines, branches)]
    print(f"{'all':18} {percent(every[0], 'lines')} {percent(every[1], 'branches')}")


if __name__ == "__main__":
    main()
