"""Makes the Debian packages, unpacks them into a folder, and uses what is in it."""

import gzip
import os
import pathlib
import shutil
import subprocess
import sys
import tempfile
import time
import unittest

CONFIG, CPACK, VERSION, REVISION = sys.argv[1:5]
PACKAGED = f"{VERSION}-{REVISION}"
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
        # whoever makes the packages may keep his own files to himself
        output_of(CPACK, "--config", CONFIG, "-B", made, umask=0o077)
        cls.files = {path.name.split("_")[0]: path for path in made.glob("*.deb")}
        cls.roots = {}
        for name, path in cls.files.items():
            cls.roots[name] = pathlib.Path(folder.name, name)
            output_of("dpkg-deb", "--extract", path, cls.roots[name])

    def test_there_is_one_for_gateways_one_for_operators_and_one_for_the_maker(self):
        self.assertEqual(set(self.files), {"quorvelctl", "quorvel", "quorvel-factory"})
        for name, programs in (("quorvelctl", {"quorvelctl"}),
                               ("quorvel", {"quorvel", "quorvelctl-draw", "quorvel-sim"}),
                               ("quorvel-factory", {"quorvel-factory", "quorvelctl-factory"})):
            links = list((self.roots[name] / "usr/bin").iterdir())
            self.assertEqual({link.name for link in links}, programs)
            for link in links:
                self.assertTrue(link.is_symlink() and os.access(link, os.X_OK), link)

    def test_they_name_what_they_need(self):
        def field(name, key):
            return output_of("dpkg-deb", "--field", self.files[name], key).strip()
        self.assertEqual({field(name, "Version") for name in self.files}, {PACKAGED})
        for library in ("libqt6widgets6", "libqt6serialport6", "libqcustomplot"):
            self.assertIn(library, field("quorvel", "Depends"))
        self.assertIn(f"quorvel (= {PACKAGED})", field("quorvel-factory", "Depends"))
        self.assertIn(f"quorvelctl (= {PACKAGED})", field("quorvel", "Depends"))
        for relation in ("Breaks", "Replaces"):
            self.assertEqual(field("quorvelctl", relation), "quorvel (<< 4.11-2)")

    def test_the_command_line_needs_no_windows_and_no_display(self):
        depends = output_of("dpkg-deb", "--field", self.files["quorvelctl"], "Depends")
        self.assertIn("libqt6core6", depends)
        libraries = output_of("ldd", self.roots["quorvelctl"] / "usr/lib/quorvel/quorvelctl")
        self.assertIn("libQt6Core", libraries)
        for part in ("widgets", "gui", "qcustomplot", "libx11", "libxcb", "wayland", "libgl1", "libgl.so", "fontconfig"):
            self.assertNotIn(part, depends.lower())
            self.assertNotIn(part, libraries.lower())
        # the check can fail
        self.assertIn("libqt6widgets", output_of("ldd", self.roots["quorvel"] / "usr/lib/quorvel/quorvel").lower())

    def test_without_the_package_that_draws_a_chart_is_refused_in_words(self):
        tool = self.roots["quorvelctl"] / "usr/bin/quorvelctl"
        ended = subprocess.run([tool, "--port", "/dev/ttyNowhere", "--address", "5", "grayscale", "X", "--chart",
                                "/tmp/quorvel-none.png"], text=True, capture_output=True, check=False)
        self.assertEqual(ended.returncode, 1)
        self.assertIn("quorvelctl-draw of the package quorvel", ended.stderr)

    def test_each_program_has_a_manual_page_without_a_warning(self):
        for name, root in self.roots.items():
            for program in (root / "usr/bin").iterdir():
                with self.subTest(program.name):
                    page = root / "usr/share/man/man1" / (program.name + ".1.gz")
                    shown = subprocess.run(["groff", "-man", "-Tutf8", "-ww", "-b"], check=True, capture_output=True,
                                           input=gzip.decompress(page.read_bytes()))
                    self.assertEqual(shown.stderr.decode(), "")
                    self.assertIn(b"OPTIONS", shown.stdout)
        page = gzip.decompress((self.roots["quorvelctl"] / "usr/share/man/man1/quorvelctl.1.gz").read_bytes()).decode()
        for part in (".SS offset DIRECTION [VALUE]", ".SH EXIT STATUS", "QUORVEL_PORT", "offset X 1.5"):
            self.assertIn(part, page)

    def completed(self, program, *words):
        """What bash proposes for the last word."""
        root = next(root for root in self.roots.values() if (root / "usr/bin" / program).exists())
        file = root / "usr/share/bash-completion/completions" / program
        typed = " ".join(f"'{word}'" for word in (program, *words))
        return set(output_of("bash", "-c", f"source {file}; COMP_WORDS=({typed}); COMP_CWORD={len(words)}; "
                             f"_{program.replace('-', '_')}; printf '%s\\n' \"${{COMPREPLY[@]}}\"").split())

    def test_bash_completes_commands_options_and_values(self):
        self.assertEqual(self.completed("quorvelctl", "off"), {"offset"})
        self.assertLessEqual({"X", "Y", "Z", "--json"}, self.completed("quorvelctl", "--address", "5", "offset", ""))
        self.assertEqual(self.completed("quorvelctl", "--type", ""), {"A", "B", "C", "D"})
        self.assertEqual(self.completed("quorvelctl", "settings", "re"), {"restore"})
        self.assertEqual(self.completed("quorvelctl", "settings", "restore", "--any"), {"--any-readout"})
        self.assertEqual(self.completed("quorvelctl", "stitch"), set())
        self.assertEqual(self.completed("quorvelctl-factory", "stitch"), {"stitching"})
        self.assertEqual(self.completed("quorvel", "--dem"), {"--demo"})

    def test_the_service_is_there_and_not_enabled(self):
        system = self.roots["quorvelctl"] / "usr/lib/systemd/system"
        self.assertEqual([path.name for path in system.iterdir()], ["quorvel-watch@.service"])
        self.assertIn("ExecStart=/usr/bin/quorvelctl ", (system / "quorvel-watch@.service").read_text())
        self.assertTrue(os.path.lexists(self.roots["quorvelctl"] / "usr/bin/quorvelctl"))

    def test_the_desktop_entry_names_a_program_and_an_icon(self):
        usr = self.roots["quorvel"] / "usr"
        entry = dict(line.split("=", 1) for line in
                     (usr / "share/applications/quorvel.desktop").read_text().splitlines() if "=" in line)
        self.assertTrue((usr / "bin" / entry["Exec"]).exists())
        self.assertTrue((usr / "share/icons/hicolor/scalable/apps" / (entry["Icon"] + ".svg")).exists())

    def test_everybody_may_use_what_is_installed(self):
        for name, path in self.files.items():
            for line in output_of("dpkg-deb", "--contents", path).splitlines():
                mode, owner, *_, file = line.split(maxsplit=5)
                with self.subTest(package=name, file=file):
                    self.assertEqual(owner, "root/root")
                    program = "/lib/quorvel/quorvel" in file
                    allowed = {"d": ["drwxr-xr-x"], "l": ["lrwxrwxrwx"]}.get(
                        mode[0], ["-rwxr-xr-x"] if program else ["-rw-r--r--"])
                    self.assertIn(mode, allowed)

    def test_an_upgrade_replaces_the_programs_and_leaves_the_users_files(self):
        with tempfile.TemporaryDirectory() as folder:
            root, user = pathlib.Path(folder, "root"), pathlib.Path(folder, "user")
            older = [self.older(name, pathlib.Path(folder)) for name in ("quorvel", "quorvel-factory")]
            self.install(root, older)
            home = root / "usr/lib/quorvel"
            self.assertTrue((home / "of-the-older-quorvel").exists())
            environment = {**os.environ, "XDG_DATA_HOME": str(user)}
            # a file of the user's in his folder, and one that somebody put beside the programs
            output_of(home / "quorvelctl-factory", "--version", env=environment)
            (user / "quorvel").mkdir(parents=True)
            kept = {user / "quorvel/XDirection.mdb": b"points", home / "my notes.txt": b"notes"}
            for path, content in kept.items():
                path.write_bytes(content)
            self.install(root, self.files.values())
            for name in self.files:
                self.assertFalse((home / ("of-the-older-" + name)).exists())
            for path, content in kept.items():
                self.assertEqual(path.read_bytes(), content)
            self.assertIn(VERSION, output_of(root / "usr/bin/quorvelctl", "--version", env=environment))
            self.assertEqual(output_of("dpkg-query", f"--admindir={root}/var/lib/dpkg", "--show",
                                       "--showformat=${Package} ${Version} ${db:Status-Status}\n").splitlines(),
                             [f"{name} {PACKAGED} installed" for name in sorted(self.files)])

    def older(self, name, folder):
        """The package as an older version, with a file that the present one lacks. That with the windows had the command
        line in it."""
        tree = folder / ("tree-" + name)
        output_of("dpkg-deb", "--raw-extract", self.files[name], tree)
        control = tree / "DEBIAN/control"
        control.write_text(control.read_text().replace(PACKAGED, "0.1"))
        (tree / "usr/lib/quorvel" / ("of-the-older-" + name)).write_text("")
        if name == "quorvel":
            for file in ("lib/quorvel/quorvelctl", "lib/quorvel/installed", "bin/quorvelctl"):
                shutil.copy2(self.roots["quorvelctl"] / "usr" / file, tree / "usr" / file, follow_symlinks=False)
        made = folder / (name + "_0.1.deb")
        output_of("dpkg-deb", "--root-owner-group", "--build", tree, made)
        return made

    def install(self, root, packages):
        """Installs packages into a folder, as if it were the machine; what they depend on is on this one."""
        for part in ("info", "updates", "triggers"):
            (root / "var/lib/dpkg" / part).mkdir(parents=True, exist_ok=True)
        for file in ("status", "available"):
            (root / "var/lib/dpkg" / file).touch()
        output_of("dpkg", f"--root={root}", f"--log={root}/log", "--auto-deconfigure", "--force-depends", "--force-not-root", "--install",
                  *packages)

    def test_the_programs_run(self):
        usr = self.roots["quorvel"] / "usr"
        self.assertIn(VERSION, output_of(self.roots["quorvelctl"] / "usr/bin/quorvelctl", "--version"))
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
