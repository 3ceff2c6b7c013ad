#!/usr/bin/env python3
"""'kmr publish --sparkplug' with a host whose encoder and decoder are another program's, the package
sparkplug-payload of npm: it understands births, data and deaths, asks for a rebirth, and writes.

    sparkplug_peer_test.py KMR LIBRARY FOLDER

The package is installed into FOLDER, in the versions and with the checksums of
sparkplug_peer/package-lock.json. Exits with 77 where that is not possible.
"""
import json
import os
import pathlib
import queue
import shutil
import socket
import subprocess
import sys
import tempfile
import threading

PATIENCE = 60  # seconds
NAMES = """name,tag,unit,scale,texts,writable
oven,D100/int16,°C,0.1,,yes
valve,M5,,,0=closed;1=open,yes
frost,D101/int16,,,,yes
total,CV2200,,,,yes
flow,D102/float32,,,,yes
label,D110x2/text,,,,no
empty,D120/float32,,,,no
"""
VALUES = ["D100=215", "M5=1", "D101=65531", "CV2200=4294967295", "D102=0", "D103=16812",
          "D110=16961", "D111=0", "D120=65535", "D121=65535"]
BORN = {"oven": ("Double", 21.5), "valve": ("String", "open"), "frost": ("Int16", -5),
        "total": ("Int64", 4294967295), "flow": ("Float", 21.5), "label": ("String", "AB"),
        "empty": ("Float", None)}


def skip(why):
    print("skipped:", why)
    sys.exit(77)


def install(folder):
    if not shutil.which("node") or not shutil.which("npm"):
        skip("node or npm is missing")
    source = pathlib.Path(__file__).parent / "sparkplug_peer"
    wanted, installed = source / "package-lock.json", pathlib.Path(folder, "package-lock.json")
    if installed.exists() and installed.read_bytes() == wanted.read_bytes():
        shutil.copy(source / "peer.js", folder)
        return
    shutil.rmtree(folder, ignore_errors=True)
    shutil.copytree(source, folder)
    done = subprocess.run(["npm", "ci", "--ignore-scripts", "--no-audit", "--no-fund"], cwd=folder,
                          capture_output=True, text=True, check=False)
    if done.returncode != 0:
        installed.unlink()
        skip("npm can't install the package:\n" + done.stderr)


class Peer:
    """The other program."""

    def __init__(self, folder):
        self.process = subprocess.Popen(["node", "peer.js"], cwd=folder, stdin=subprocess.PIPE,
                                        stdout=subprocess.PIPE, text=True)

    def ask(self, line):
        self.process.stdin.write(line + "\n")
        self.process.stdin.flush()
        return self.process.stdout.readline().strip()

    def decode(self, digits):
        return json.loads(self.ask("decode " + digits))

    def encode(self, payload):
        return bytes.fromhex(self.ask("encode " + json.dumps(payload)))


class Host:
    """Subscribes to a node and keeps what its metrics are now."""

    def __init__(self, peer, port):
        self.peer, self.port = peer, str(port)
        self.metrics, self.next_seq, self.session = {}, None, None
        self.lines = queue.Queue()
        self.process = subprocess.Popen(
            ["stdbuf", "-oL", "mosquitto_sub", "-h", "127.0.0.1", "-p", self.port, "-F", "%t %x",
             "-t", "spBv1.0/plant/NBIRTH/line1", "-t", "spBv1.0/plant/NDATA/line1",
             "-t", "spBv1.0/plant/NDEATH/line1", "-t", "up"], stdout=subprocess.PIPE, text=True)
        threading.Thread(target=self.read, daemon=True).start()
        assert self.lines.get(timeout=PATIENCE).startswith("up")  # retained: it is subscribed

    def read(self):
        for line in self.process.stdout:
            self.lines.put(line)

    def take(self):
        """The kind of the next message, which must be in sequence."""
        topic, digits = self.lines.get(timeout=PATIENCE).split()
        kind, payload = topic.split("/")[2], self.peer.decode(digits)
        metrics = {metric["name"]: metric for metric in payload["metrics"]}
        if kind == "NDEATH":
            assert metrics["bdSeq"]["value"] == self.session and len(metrics) == 1, payload
            return kind
        if kind == "NBIRTH":
            self.next_seq, self.metrics = 0, {}
            self.session = metrics["bdSeq"]["value"]
            assert metrics["Node Control/Rebirth"]["value"] is False, payload
        assert payload["seq"] == self.next_seq, payload
        self.next_seq = (self.next_seq + 1) % 256
        self.metrics.update(metrics)
        return kind

    def take_until(self, condition):
        while not condition(self.take()):
            pass

    def command(self, *metrics):
        payload = self.peer.encode({"timestamp": 1795321800000, "metrics": list(metrics)})
        subprocess.run(["mosquitto_pub", "-h", "127.0.0.1", "-p", self.port, "-s",
                        "-t", "spBv1.0/plant/NCMD/line1"], input=payload, check=True)

    def value(self, name):
        return self.metrics[name]["value"]

    def is_read(self):
        return all(self.metrics[name]["timestamp"] and self.properties(name)["Quality"] == quality
                   for name, quality in [(name, 0 if name == "empty" else 192) for name in BORN])

    def properties(self, name):
        return {key: entry["value"] for key, entry in self.metrics[name]["properties"].items()}


def judge(host, publisher):
    host.take_until(lambda kind: host.is_read() and all(
        host.value(name) == value for name, (_, value) in BORN.items() if name != "empty"))
    host.command({"name": "Node Control/Rebirth", "type": "Boolean", "value": True})
    host.take_until(lambda kind: kind == "NBIRTH")
    seen = {name: (host.metrics[name]["type"], host.value(name)) for name in BORN}
    assert seen == BORN, seen
    assert host.properties("oven") == {"Quality": 192, "engUnit": "°C"}, host.metrics["oven"]
    writes = [("oven", "Double", 25.5), ("valve", "String", "closed"), ("frost", "Int16", -7),
              ("total", "Int64", 8), ("flow", "Float", 1.5)]
    host.command(*({"name": name, "type": kind, "value": value} for name, kind, value in writes))
    host.take_until(lambda kind: all(host.value(name) == value for name, _, value in writes))
    host.command({"name": "label", "type": "String", "value": "no"})
    host.take_until(lambda kind: "label is not marked writable" in host.value("Write/Outcome"))
    publisher.kill()
    host.take_until(lambda kind: kind == "NDEATH")


def main():
    kmr, library, folder = sys.argv[1:]
    install(folder)
    with socket.create_server(("127.0.0.1", 0)) as probe:
        port = probe.getsockname()[1]
    started = []

    def start(*command, **settings):
        started.append(subprocess.Popen(command, **settings))
        return started[-1]

    with tempfile.TemporaryDirectory() as place:
        environment = {**os.environ, "KMR_DRIVER": library}
        try:
            pathlib.Path(place, "names.csv").write_text(NAMES)
            start("/usr/sbin/mosquitto", "-p", str(port), stderr=subprocess.DEVNULL)
            simulator = start(kmr, "sim", "--listen", "tcp://127.0.0.1:0", "--control",
                              stdin=subprocess.PIPE, stdout=subprocess.PIPE, text=True,
                              env=environment)
            link = simulator.stdout.readline().split()[1]
            for value in VALUES:
                simulator.stdin.write(value + "\n")
                simulator.stdin.flush()
                assert simulator.stdout.readline() == "ok\n", value
            while subprocess.run(["mosquitto_pub", "-h", "127.0.0.1", "-p", str(port), "-t", "up",
                                  "-r", "-m", "1"], capture_output=True, check=False).returncode != 0:
                pass
            peer = Peer(folder)
            host = Host(peer, port)
            started.extend([peer.process, host.process])
            publisher = start(kmr, "publish", *BORN, "--names", "names.csv", "--allow-write",
                              "--sparkplug", "plant/line1", "--broker", f"mqtt://127.0.0.1:{port}",
                              "--link", link, cwd=place, env=environment)
            judge(host, publisher)
        finally:
            for process in started:
                process.kill()
                process.wait()


main()
