"""Holds `quorvelctl watch` against the programs that docs/monitoring.md names. Run by tools/monitoring.

monitoring_test.py BIN ROOT [TEST...]: BIN has quorvelctl and quorvel-sim, ROOT the unpacked Debian packages of mosquitto and
Prometheus."""

import collections
import http.server
import json
import os
import pathlib
import shutil
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time
import unittest

BIN, ROOT = (pathlib.Path(argument).resolve() for argument in sys.argv[1:3])
PROJECT = pathlib.Path(__file__).resolve().parents[2]
LIBRARIES = next(ROOT.glob("usr/lib/*-linux-gnu"))
THEIRS = {**os.environ, "LD_LIBRARY_PATH": f"{LIBRARIES}:{str(LIBRARIES).replace('/usr/lib', '/lib')}"}
PATIENCE = 60.0  # seconds


def wait_until(condition, what):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise AssertionError(f"{what}: not within {PATIENCE:.0f} s")
        time.sleep(0.05)


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def answers(port):
    try:
        socket.create_connection(("127.0.0.1", port), timeout=1).close()
        return True
    except OSError:
        return False


class Monitoring(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def start(self, *command, **options):
        process = subprocess.Popen([str(part) for part in command], **options)

        def end():
            process.kill()
            process.wait()
            for stream in (process.stdin, process.stdout):
                if stream:
                    stream.close()
        self.addCleanup(end)
        return process

    def bus(self, *readouts):
        """A simulated bus; returns what --port takes."""
        options = [part for readout in readouts for part in ("--readout", readout)]
        sim = self.start(BIN / "quorvel-sim", "--fast", "--tcp", "127.0.0.1:0", *options,
                         stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True)
        return sim.stdout.readline().strip()

    def site(self, name, port, *readouts):
        path = self.folder / f"{name}.quorvel-site.json"
        path.write_text(json.dumps({"name": name, "port": port, "readouts": [
            {"address": address, "type": letter, "name": f'of "{name}", {address}', "limitsMm": {"x": {"high": 1}}}
            for address, letter in readouts]}))
        return path

    def test_prometheus_takes_every_file_without_a_remark(self):
        site = self.site("north", self.bus("5:A", "12:C"), (5, "A"), (12, "C"), (77, "A"))
        file = self.folder / "textfile" / "north.prom"
        file.parent.mkdir()
        watch = self.start(BIN / "quorvelctl", "watch", "--site", site, "--every", "2", "--format", "prometheus",
                           "--output", file)
        wait_until(file.exists, "the first file")
        seen = set()
        while len(seen) < 4:
            self.assertIsNone(watch.poll())
            text = file.read_text()
            if text in seen:
                # the exporter reads whatever ends in .prom
                self.assertEqual([path.name for path in file.parent.glob("*.prom")], ["north.prom"])
                time.sleep(0.002)
                continue
            seen.add(text)
            self.assertTrue(text.endswith("\n"))
            self.assertIn("quorvel_sweep_end_timestamp_seconds{", text)
            checked = subprocess.run([ROOT / "usr/bin/promtool", "check", "metrics"], input=text, text=True,
                                     capture_output=True, check=False)
            self.assertEqual((checked.returncode, checked.stdout + checked.stderr), (0, ""))

    def broker(self, port):
        config = self.folder / "mosquitto.conf"
        config.write_text(f"listener {port} 127.0.0.1\nallow_anonymous true\nuser root\npersistence true\n"
                          f"persistence_location {self.folder}/\nautosave_interval 1\nmax_queued_messages 0\n")
        broker = self.start(ROOT / "usr/sbin/mosquitto", "-c", config, env=THEIRS, stderr=subprocess.DEVNULL)
        wait_until(lambda: answers(port), "the broker")
        return broker

    def test_a_broker_that_is_killed_and_started_again_gets_every_reading(self):
        port = free_port()
        broker = self.broker(port)
        received = self.folder / "received"
        with open(received, "wb") as out:
            self.start(ROOT / "usr/bin/mosquitto_sub", "-h", "127.0.0.1", "-p", port, "-q", "1", "-c", "-i", "reader",
                       "-t", "dam/#", stdout=out, env=THEIRS)
        sites = [("north", [(5, "A"), (12, "C")]), ("south", [(5, "B"), (33, "A"), (77, "A")])]
        watches = [self.piped(name, readouts, port) for name, readouts in sites]
        sent = lambda: sum((self.lines(f"{name}.ndjson") for name, _ in sites), [])
        wait_until(lambda: len(sent()) > 10 and len(self.lines("received")) > 10, "readings at the subscriber")
        broker.kill()
        broker.wait()
        before = len(sent())
        wait_until(lambda: len(sent()) > before + 10, "readings without a broker")
        self.broker(port)
        after = len(sent())
        wait_until(lambda: len(sent()) > after + 10, "readings with the broker again")
        for watch in watches:
            watch.send_signal(signal.SIGTERM)
        wait_until(lambda: all(watch.poll() is not None for watch in watches), "the end of the watches")
        whole = sent()
        wait_until(lambda: set(whole) <= set(self.lines("received")), "every reading at the subscriber")
        outcomes = collections.Counter(json.loads(line)["outcome"] for line in whole)
        self.assertGreater(outcomes["complete"], 10)
        self.assertGreater(outcomes["silent"], 0)

    def lines(self, name):
        path = self.folder / name
        return path.read_text().splitlines() if path.exists() else []

    def piped(self, name, readouts, port):
        """A watch whose lines go through `tee`, to count them, into `mosquitto_pub -l`."""
        letters = [f"{address}:{letter}" for address, letter in readouts if address != 77]
        site = self.site(name, self.bus(*letters), *readouts)
        watch = self.start(BIN / "quorvelctl", "watch", "--site", site, "--every", "2", "--format", "ndjson",
                           stdout=subprocess.PIPE)
        tee = self.start("tee", self.folder / f"{name}.ndjson", stdin=watch.stdout, stdout=subprocess.PIPE)
        self.start(ROOT / "usr/bin/mosquitto_pub", "-h", "127.0.0.1", "-p", port, "-q", "1", "-l", "-t", f"dam/{name}",
                   stdin=tee.stdout, env=THEIRS, stderr=subprocess.DEVNULL)
        return watch

    def test_an_influx_endpoint_gets_every_line_although_it_fails_at_first(self):
        received = []

        class Endpoint(http.server.BaseHTTPRequestHandler):
            requests = 0

            def do_POST(self):
                body = self.rfile.read(int(self.headers["Content-Length"])).decode()
                Endpoint.requests += 1
                if Endpoint.requests > 1:
                    received.append(body)
                self.send_response(204 if Endpoint.requests > 1 else 503)
                self.end_headers()

            def log_message(self, *_):
                pass

        server = http.server.HTTPServer(("127.0.0.1", 0), Endpoint)
        self.addCleanup(server.server_close)
        threading.Thread(target=server.serve_forever, daemon=True).start()
        self.addCleanup(server.shutdown)
        site = self.site("north", self.bus("5:A"), (5, "A"), (77, "A"))
        # as in docs/monitoring.md
        subprocess.run(
            ["bash", "-c", '"$0" watch --site "$1" --every 2 --count 2 --format influx | while IFS= read -r line; do '
                           'curl -sS --retry 10 --retry-connrefused --data-binary "$line" "$2"; done',
             BIN / "quorvelctl", site, f"http://127.0.0.1:{server.server_port}/write"], check=True, timeout=PATIENCE)
        self.assertEqual(len(received), 4)
        for line in received:
            self.assertRegex(line, r"^quorvel_reading,address=(5|77),name=of\\ \"north\"\\,\\ (5|77),site=north,type=A "
                                   r"(xMm=[-.\d]+,yMm=[-.\d]+,)?outcome=\"(complete|silent)\" \d{19}$")

    @unittest.skipUnless(shutil.which("systemd-analyze"), "needs systemd")
    def test_the_unit_is_sound_and_sandboxed(self):
        unit = (PROJECT / "packaging/systemd/quorvel-watch@.service").read_text()
        path = self.folder / "quorvel-watch@north.service"
        # neither the program nor its manual need be installed here
        path.write_text("".join(line for line in unit.replace("/usr/bin/quorvelctl", "/usr/bin/true").splitlines(True)
                                if not line.startswith("Documentation=")))
        verified = subprocess.run(["systemd-analyze", "verify", path], capture_output=True, text=True, check=False)
        self.assertEqual((verified.returncode, verified.stdout + verified.stderr), (0, ""))
        exposed = subprocess.run(["systemd-analyze", "security", "--offline=true", "--no-pager", "--threshold=20", path],
                                 capture_output=True, text=True, check=False)
        self.assertEqual(exposed.returncode, 0, exposed.stdout[-200:])


if __name__ == "__main__":
    sys.argv[1:3] = []
    unittest.main(verbosity=2)
