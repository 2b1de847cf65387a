"""Makes the Debian packages, unpacks them into a folder, and uses what is in it."""

import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

CONFIG, CPACK, VERSION = sys.argv[1:4]
PATIENCE = 20.0  # seconds


def output_of(*command, **options):
    return subprocess.run([str(part) for part in command], check=True, text=True,
                          capture_output=True, **options).stdout


def children_of(process):
    """The programs that a process has started and that still run."""
    children = pathlib.Path(f"/proc/{process.pid}/task/{process.pid}/children")
    return [pathlib.Path(f"/proc/{child}/exe").resolve() for child in children.read_text().split()]


class Packages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        folder = tempfile.TemporaryDirectory()
        cls.addClassCleanup(folder.cleanup)
        made = pathlib.Path(folder.name, "made")
        output_of(CPACK, "--config", CONFIG, "-B", made)
        cls.files = {path.name.split("_")[0]: path for path in made.glob("*.deb")}
        cls.roots = {}
        for name, path in cls.files.items():
            cls.roots[name] = pathlib.Path(folder.name, name)
            output_of("dpkg-deb", "--extract", path, cls.roots[name])

    def test_there_is_one_for_operators_and_one_for_the_maker(self):
        self.assertEqual(set(self.files), {"quorvel", "quorvel-factory"})
        for name, programs in (("quorvel", {"quorvel", "quorvelctl", "quorvel-sim"}),
                               ("quorvel-factory", {"quorvel-factory", "quorvelctl-factory"})):
            links = list((self.roots[name] / "usr/bin").iterdir())
            self.assertEqual({link.name for link in links}, programs)
            for link in links:
                self.assertTrue(link.is_symlink() and os.access(link, os.X_OK), link)

    def test_they_name_what_they_need(self):
        def field(name, key):
            return output_of("dpkg-deb", "--field", self.files[name], key).strip()
        self.assertEqual(field("quorvel", "Version"), VERSION)
        for library in ("libqt6widgets6", "libqt6serialport6", "libqcustomplot"):
            self.assertIn(library, field("quorvel", "Depends"))
        self.assertIn(f"quorvel (= {VERSION})", field("quorvel-factory", "Depends"))

    def test_the_desktop_entry_names_a_program_and_an_icon(self):
        usr = self.roots["quorvel"] / "usr"
        entry = dict(line.split("=", 1) for line in
                     (usr / "share/applications/quorvel.desktop").read_text().splitlines() if "=" in line)
        self.assertTrue((usr / "bin" / entry["Exec"]).exists())
        self.assertTrue((usr / "share/icons/hicolor/scalable/apps" / (entry["Icon"] + ".svg")).exists())

    def test_the_programs_run(self):
        usr = self.roots["quorvel"] / "usr"
        self.assertIn(VERSION, output_of(usr / "bin/quorvelctl", "--version"))
        self.assertTrue((usr / "lib/quorvel/readme.txt").read_text().strip())
        with tempfile.TemporaryDirectory() as folder, \
                subprocess.Popen([usr / "bin/quorvel", "--demo", "--folder", folder]) as program:
            simulator = usr.resolve() / "lib/quorvel/quorvel-sim"
            end = time.monotonic() + PATIENCE
            while simulator not in children_of(program) and program.poll() is None and time.monotonic() < end:
                time.sleep(0.05)
            started = children_of(program)
            program.terminate()
        self.assertEqual(started, [simulator])


if __name__ == "__main__":
    sys.argv[1:] = []
    unittest.main(verbosity=2)
