"""Kills downloads of the installed quorvelctl.exe: kills.py PROGRAMS SIMULATOR COM-LINK FOLDER COUNT [SEED].

It does so at random moments. Every record that was counted must be in the file, which mdbtools reads. The arguments are those of walk.py.
packaging/windows/test runs it.
"""

import os
import random
import subprocess
import sys
import time

from wine_desk import Bus, output, until, windows_path

PROGRAMS, SIMULATOR, LINK, FOLDER, COUNT, *SEED = sys.argv[1:]
COM = os.environ["QUORVEL_COM_PORT"]
RECEIVED = " records have been received."
LONGEST_WAIT = 1.5  # seconds
OLD = b"what was there before"


def counted(progress):
    """The count shown last; 0 when none is."""
    with open(progress, encoding="utf-8") as shown:
        head, found, _ = shown.read().rpartition(RECEIVED)
    return int(head.split()[-1]) if found else 0


def kill(file, at_once, wait):
    """Kills a download: so long after its start, or after the first record. Gives what it had counted."""
    progress = file + ".progress"
    with open(progress, "wb") as shown:
        command = subprocess.Popen(["wine", PROGRAMS + "\\quorvelctl.exe", "--port", COM, "--address", "5", "download",
                                    "--progress", "--force", windows_path(file)],
                                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=shown)
        try:
            if not at_once:
                until(lambda: counted(progress) or command.poll() is not None, "the first record")
                assert command.poll() is None, f"it ended by itself with status {command.returncode}"
            time.sleep(wait)
        finally:
            command.kill()
            command.wait()
    return counted(progress)


def look(file, count, old):
    """Gives the records that are in the file, after a look whether they may be those."""
    content = None
    if os.path.exists(file):
        with open(file, "rb") as stream:
            content = stream.read()
    if content == old:
        assert count == 0, f"{count} records were counted, and the file is as it was"
        return []
    assert content is not None, "neither the old file nor a new one"
    rows = output("mdb-export", file, "data").splitlines()[1:]
    # one may be stored and not counted yet
    assert count <= len(rows) <= count + 1, f"{count} records were counted, {len(rows)} are in the file"
    return rows


def main():
    seed = int(SEED[0]) if SEED else random.randrange(1, 1_000_000)
    chance = random.Random(seed)
    bus = Bus(SIMULATOR, LINK, "--fast", "--seed", "1", "--readout", "5:A", "--ring", "5:1000,998,2")
    longest = []
    hits = 0
    for number in range(int(COUNT)):
        file = os.path.join(FOLDER, f"坝 {number}.mdb")
        old = OLD if number % 4 < 2 else None
        if old:
            with open(file, "wb") as stream:
                stream.write(old)
        at_once = number % 2 == 0
        wait = chance.uniform(0, LONGEST_WAIT)
        try:
            count = kill(file, at_once, wait)
            rows = look(file, count, old)
            assert at_once or rows, "no record is there"
            common = min(len(rows), len(longest))
            assert rows[:common] == longest[:common], "other records than before"
        except AssertionError:
            since = "the start" if at_once else "a record"
            print(f"kill {number} of seed {seed}, {wait:.3f} s after {since}:", file=sys.stderr)
            raise
        longest = max(longest, rows, key=len)
        hits += bool(rows)
    bus.close()
    print(f"{COUNT} kills, {hits} of them after a record was stored, the last after {len(longest)}; seed {seed}.")


if __name__ == "__main__":
    main()
