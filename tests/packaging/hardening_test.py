"""Looks at the programs of a release: what defends them is in them."""

import pathlib
import re
import subprocess
import sys
import tempfile
import unittest

COMPILER, BINARIES = sys.argv[1:3]
PROGRAMS = ("quorvel", "quorvel-factory", "quorvelctl", "quorvelctl-factory", "quorvelctl-draw", "quorvel-sim")
DEFENCES = {
    "position-independent": r"FLAGS_1.*\bPIE\b",
    "addresses bound at start": r"FLAGS_1.*\bNOW\b",
    "read-only relocations": r"\bGNU_RELRO\b",
    "guarded stack": r"\b__stack_chk_fail\b",
    "checked buffers": r"\b__(?!stack_)\w+_chk\b",
    "checked containers": r"\b_ZSt21__glibcxx_assert_fail",
}


def defences_of(program):
    said = subprocess.run(["readelf", "--wide", "--dynamic", "--segments", "--dyn-syms", program],
                          check=True, text=True, capture_output=True).stdout
    return {name for name, sign in DEFENCES.items() if re.search(sign, said)}


class Programs(unittest.TestCase):
    def test_have_every_defence(self):
        for name in PROGRAMS:
            with self.subTest(name):
                self.assertEqual(defences_of(pathlib.Path(BINARIES, name)), set(DEFENCES))

    def test_a_program_without_them_is_told_apart(self):
        with tempfile.TemporaryDirectory() as folder:
            bare = pathlib.Path(folder, "bare")
            subprocess.run([COMPILER, "-x", "c++", "-", "-o", bare, "-no-pie", "-fno-stack-protector", "-Wl,-z,norelro",
                            "-Wl,-z,lazy"], input="int main() {}", text=True, check=True)
            self.assertEqual(defences_of(bare), set())


if __name__ == "__main__":
    sys.argv[1:] = []
    unittest.main(verbosity=2)
