#!/usr/bin/env python3
"""Soaks 'kmr publish' in all that can go wrong, at random moments and all at once: the broker is
stopped and started, the connection to it cut and stalled, the line lost, the disk full, the process
killed with -9. Then it judges what a subscriber got that the broker keeps messages for:

- each change that was read arrived, in order for each topic; nothing arrived that never was
- the last retained value of each name is the controller's, and good
- a lost line made each value stale

A change counts as read once the simulator has logged three reads after it. One that was made within
the last two seconds before a kill may be missing: one second is allowed, on a quiet machine.

    publish_soak.py KMR LIBRARY ROUNDS [SEED]
"""
import json
import os
import pathlib
import random
import resource
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

NAMES = ("D100", "D101", "D102")  # one request reads them all
PATIENCE = 120  # seconds for what must happen
MAY_BE_LOST = 2.0  # seconds before a kill


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def wait_for(what, condition):
    end = time.monotonic() + PATIENCE
    while not condition():
        if time.monotonic() > end:
            raise TimeoutError(what)
        time.sleep(0.01)


class Proxy:
    """Passes bytes on between the publisher and the broker, and can cut or stall the connections."""

    def __init__(self, target):
        self.target = target
        self.connections = []
        self.flows = threading.Event()
        self.flows.set()
        self.server = socket.create_server(("127.0.0.1", 0))
        self.port = self.server.getsockname()[1]
        threading.Thread(target=self.serve, daemon=True).start()

    def serve(self):
        while True:
            client, _ = self.server.accept()
            try:
                broker = socket.create_connection(("127.0.0.1", self.target))
            except OSError:
                client.close()
                continue
            self.connections += [client, broker]
            for source, sink in ((client, broker), (broker, client)):
                threading.Thread(target=self.pass_on, args=(source, sink), daemon=True).start()

    def pass_on(self, source, sink):
        try:
            while data := source.recv(65536):
                self.flows.wait()
                sink.sendall(data)
        except OSError:
            pass
        for end in (source, sink):
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass

    def cut(self):
        for connection in self.connections:
            try:
                connection.shutdown(socket.SHUT_RDWR)
                connection.close()
            except OSError:
                pass
        self.connections = []


class Simulator:
    """kmr sim on a port of its own, whose memory this program sets and whose reads it counts."""

    def __init__(self, kmr, environment):
        self.kmr, self.environment, self.port = kmr, environment, free_port()
        self.values = dict.fromkeys(NAMES, 0)
        self.process = None
        self.start()

    def start(self):
        self.reads = 0
        self.process = subprocess.Popen(
            [self.kmr, "sim", "--listen", f"tcp://127.0.0.1:{self.port}", "--control", "--log"],
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
            env=self.environment)
        assert self.process.stdout.readline().startswith("ready")
        threading.Thread(target=self.count, args=(self.process,), daemon=True).start()
        for name, value in self.values.items():
            self.tell(name, value)

    def count(self, process):
        for line in process.stderr:
            if "read 3 registers from 1064, answered" in line:
                self.reads += 1

    def tell(self, name, value):
        self.process.stdin.write(f"{name}={value}\n")
        self.process.stdin.flush()
        assert self.process.stdout.readline() == "ok\n"

    def stop(self):
        self.process.terminate()
        self.process.wait(PATIENCE)


class Soak:
    def __init__(self, kmr, library, rounds, seed):
        self.kmr, self.rounds, self.random = kmr, rounds, random.Random(seed)
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="publish-soak-"))
        self.environment = {**os.environ, "KMR_DRIVER": library}
        self.changes = {name: [] for name in NAMES}  # (value, when it was made, whether it was read)
        self.kills = []
        self.losses = 0
        self.broker_port = free_port()
        self.write_broker_settings()
        self.broker = self.start_broker()
        self.proxy = Proxy(self.broker_port)
        self.subscriber = self.start_subscriber()
        self.simulator = Simulator(kmr, self.environment)
        self.told = ""  # by the publisher
        self.publisher = self.start_publisher()

    def write_broker_settings(self):
        (self.folder / "mosquitto.conf").write_text(
            f"user root\nlistener {self.broker_port} 127.0.0.1\nallow_anonymous true\n"
            f"persistence true\npersistence_location {self.folder}/\nmax_queued_messages 0\n",
            encoding="utf-8")

    def start_broker(self):
        process = subprocess.Popen(["/usr/sbin/mosquitto", "-c", self.folder / "mosquitto.conf"],
                                   stderr=subprocess.DEVNULL)
        wait_for("the broker", lambda: self.is_listening(process))
        return process

    def is_listening(self, process):
        assert process.poll() is None, "the broker has ended"
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", self.broker_port)) == 0

    def start_subscriber(self):
        output = open(self.folder / "received", "w", encoding="utf-8")
        process = subprocess.Popen(
            ["stdbuf", "-oL", "mosquitto_sub", "-p", str(self.broker_port), "-t", "line/#", "-i",
             "judge", "-c", "-q", "1", "-F", "%t %p"], stdout=output, stderr=subprocess.DEVNULL)
        wait_for("the subscriber", self.has_subscriber)
        return process

    def has_subscriber(self):
        subprocess.run(["mosquitto_pub", "-p", str(self.broker_port), "-t", "line/hello", "-m", "x"],
                       check=True)
        return "line/hello" in (self.folder / "received").read_text(encoding="utf-8")

    def start_publisher(self):
        process = subprocess.Popen(
            [self.kmr, "publish", *NAMES, "--prefix", "line", "--cycle", "10", "--timeout", "200",
             "--broker", f"mqtt://127.0.0.1:{self.proxy.port}", "--link",
             f"tcp://127.0.0.1:{self.simulator.port}", "--spool", self.folder / "spool"],
            stderr=subprocess.PIPE, text=True, env=self.environment, restore_signals=False)
        threading.Thread(target=self.listen, args=(process,), daemon=True).start()
        return process

    def listen(self, process):
        for line in process.stderr:
            self.told += line

    def change(self):
        name = self.random.choice(NAMES)
        value = self.simulator.values[name] = self.simulator.values[name] + 1
        self.simulator.tell(name, value)
        made, before = time.monotonic(), self.simulator.reads
        wait_for("a read", lambda: self.simulator.reads >= before + 4)
        self.changes[name].append((value, made))

    def some_changes(self):
        for _ in range(self.random.randint(0, 4)):
            self.change()

    def stop_broker(self):
        """And something else meanwhile, perhaps."""
        self.broker.terminate()
        self.broker.wait(PATIENCE)
        self.some_changes()
        self.random.choice([self.kill, self.lose_line, self.some_changes])()
        self.broker = self.start_broker()

    def cut(self):
        self.proxy.cut()
        self.some_changes()

    def stall(self):
        self.proxy.flows.clear()
        self.some_changes()
        self.proxy.flows.set()

    def lose_line(self):
        before = self.stale_count()
        self.simulator.stop()
        self.losses += 1
        if self.broker.poll() is None:
            wait_for("stale", lambda: self.stale_count() > before)
        self.simulator.start()
        wait_for("the line", lambda: self.simulator.reads > 3)

    def stale_count(self):
        return (self.folder / "received").read_text(encoding="utf-8").count('"stale"')

    def fill_disk(self):
        """While the broker is away, so that the disk is needed."""
        self.broker.terminate()
        self.broker.wait(PATIENCE)
        before = self.told.count("cannot spool")
        resource.prlimit(self.publisher.pid, resource.RLIMIT_FSIZE, (0, -1))
        self.change()
        wait_for("the full disk", lambda: self.told.count("cannot spool") > before)
        self.some_changes()
        resource.prlimit(self.publisher.pid, resource.RLIMIT_FSIZE, (-1, -1))
        self.broker = self.start_broker()
        wait_for("the disk", lambda: self.told.count("can be written again") ==
                 self.told.count("cannot spool"))

    def kill(self):
        self.kills.append(time.monotonic())
        self.publisher.kill()
        self.publisher.wait(PATIENCE)
        self.publisher = self.start_publisher()
        before = self.simulator.reads
        wait_for("the publisher", lambda: self.simulator.reads > before + 3)

    def run(self):
        faults = [self.stop_broker, self.cut, self.stall, self.lose_line, self.fill_disk, self.kill]
        for number in range(self.rounds):
            fault = faults[number % len(faults)] if number < len(faults) else \
                self.random.choice(faults)
            print(f"{number}: {fault.__name__}", flush=True)
            self.some_changes()
            time.sleep(self.random.random() / 4)
            fault()
        for _ in NAMES:
            self.change()
        wait_for("the last values", lambda: all(self.retained(name) == value for name, value in
                                                self.simulator.values.items()))
        self.publisher.terminate()
        assert self.publisher.wait(PATIENCE) == 0, "the publisher has dropped messages"

    def retained(self, name):
        found = subprocess.run(
            ["mosquitto_sub", "-p", str(self.broker_port), "-t", f"line/{name}", "-C", "1", "-W",
             "5"], capture_output=True, check=False).stdout
        message = json.loads(found or "{}")
        return message.get("value") if message.get("quality") == "good" else None

    def received(self):
        """Of each name the good values in the order of their first arrival."""
        values = {name: [] for name in NAMES}
        for line in (self.folder / "received").read_text(encoding="utf-8").splitlines():
            topic, _, payload = line.partition(" ")
            name = topic.removeprefix("line/")
            if name not in NAMES:
                continue
            message = json.loads(payload)
            if message["quality"] == "good" and message["value"] not in values[name]:
                values[name].append(message["value"])
        return values

    def may_be_missing(self, made):
        return any(0 <= kill - made <= MAY_BE_LOST for kill in self.kills)

    def faults(self):
        found = []
        for name, values in self.received().items():
            if values != sorted(values):
                found.append(f"{name}: not in order: {values}")
            if values and values[-1] > self.simulator.values[name]:
                found.append(f"{name}: {values[-1]} never was")
            found += [f"{name}: {value} is missing" for value, made in self.changes[name]
                      if value not in values and not self.may_be_missing(made)]
        return found

    def end(self):
        for process in (self.publisher, self.subscriber, self.broker):
            if process.poll() is None:
                process.terminate()
                process.wait(PATIENCE)
        self.simulator.stop()


def main(kmr, library, rounds, seed=None):
    seed = int(seed) if seed else random.randrange(10**6)
    print(f"seed {seed}", flush=True)
    soak = Soak(kmr, library, int(rounds), seed)
    try:
        soak.run()
        faults = soak.faults()
    finally:
        soak.end()
    changes = sum(len(made) for made in soak.changes.values())
    print("\n".join(faults) or f"good: {changes} changes, {len(soak.kills)} kills, "
          f"{soak.losses} losses of the line")
    if faults:
        (soak.folder / "publisher.log").write_text(soak.told, encoding="utf-8")
        print(f"see {soak.folder}")
        return 1
    subprocess.run(["rm", "-r", soak.folder], check=True)
    return 0


if __name__ == "__main__":
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # which the publisher inherits
    sys.exit(main(*sys.argv[1:]))
