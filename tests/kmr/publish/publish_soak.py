#!/usr/bin/env python3
"""Soaks 'kmr publish' in all that can go wrong, at random moments and all at once: in each round the
broker is stopped and started, and meanwhile, perhaps, the connection to it is cut or stalled, the
line is lost, the disk is full, the process killed with -9. Then it judges what a subscriber got that
the broker keeps messages for:

- each change that was read arrived, in order for each topic; nothing arrived that never was
- no message says that a value is good which the controller did not have at the message's time
- a lost line made each value stale
- the last retained value of each name is the controller's, and good

A change counts as read once the simulator has logged three reads after it. One that was made within
the last two seconds before a kill may be missing (one second is allowed, on a quiet machine), and so
may one that was made while the disk was full, if the process was killed before it could be written
again.

    publish_soak.py KMR LIBRARY ROUNDS [SEED]
"""
import datetime
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
LATE = 2.0  # seconds that an answer may wait for this busy machine


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


def time_of(message):
    return datetime.datetime.fromisoformat(message["time"].replace("Z", "+00:00")).timestamp()


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

    def __init__(self, kmr, environment, memory):
        self.kmr, self.environment, self.port = kmr, environment, free_port()
        self.values = dict.fromkeys(NAMES, 0)
        self.memory = memory  # a file of it
        self.start()

    def start(self):
        """With the values that it had."""
        self.reads = 0
        self.memory.write_text("tag,value\n" + "".join(
            f"{name},{value}\n" for name, value in self.values.items()), encoding="ascii")
        self.process = subprocess.Popen(
            [self.kmr, "sim", "--listen", f"tcp://127.0.0.1:{self.port}", "--control", "--log",
             "--load", self.memory], stdin=subprocess.PIPE, stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, text=True, env=self.environment)
        assert self.process.stdout.readline().startswith("ready")
        threading.Thread(target=self.count, args=(self.process,), daemon=True).start()

    def count(self, process):
        for line in process.stderr:
            if "read 3 registers from 1064, answered" in line:
                self.reads += 1

    def set_value(self, name, value):
        self.process.stdin.write(f"{name}={value}\n")
        self.process.stdin.flush()
        assert self.process.stdout.readline() == "ok\n"

    def stop(self):
        if self.process:
            self.process.terminate()
            self.process.wait(PATIENCE)
        self.process = None


class Soak:
    def __init__(self, kmr, library, rounds, seed):
        self.kmr, self.rounds, self.random = kmr, rounds, random.Random(seed)
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="publish-soak-"))
        self.environment = {**os.environ, "KMR_DRIVER": library,
                            "NOTIFY_SOCKET": str(self.folder / "manager")}
        # As a service the publisher waits for a line that is not there.
        self.manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.manager.bind(self.environment["NOTIFY_SOCKET"])
        threading.Thread(target=self.take_notices, daemon=True).start()
        self.changes = {name: [] for name in NAMES}  # (value, when it was made)
        self.kills = []  # (since when changes may be missing, when)
        self.losses = []  # of the line: (begin, end)
        self.is_line_lost = False
        self.full_since = None  # the disk, for the publisher
        self.counts = {}  # of all that went wrong
        self.broker_port = free_port()
        self.write_broker_settings()
        self.broker = self.start_broker()
        self.proxy = Proxy(self.broker_port)
        self.subscriber = self.start_subscriber()
        self.simulator = Simulator(kmr, self.environment, self.folder / "memory.csv")
        self.log = self.reports = ""  # by all publishers, and by the last
        self.publisher = self.start_publisher()

    def take_notices(self):
        while True:
            self.manager.recv(100)

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
        limit = "unlimited" if self.full_since is None else 0
        process = subprocess.Popen(
            ["prlimit", f"--fsize={limit}:", self.kmr, "publish", *NAMES, "--prefix", "line",
             "--cycle", "10", "--timeout", "200", "--broker",
             f"mqtt://127.0.0.1:{self.proxy.port}", "--link",
             f"tcp://127.0.0.1:{self.simulator.port}", "--spool", self.folder / "spool"],
            stderr=subprocess.PIPE, text=True, env=self.environment, restore_signals=False)
        self.reports = ""
        threading.Thread(target=self.listen, args=(process,), daemon=True).start()
        return process

    def listen(self, process):
        for line in process.stderr:
            self.log += line
            if process is self.publisher:
                self.reports += line

    def change(self):
        name = self.random.choice(NAMES)
        value = self.simulator.values[name] = self.simulator.values[name] + 1
        self.changes[name].append((value, time.time()))
        self.simulator.set_value(name, value)
        self.await_reads()

    def await_reads(self):
        before = self.simulator.reads
        wait_for("a read", lambda: self.simulator.reads >= before + 4)

    def some_changes(self):
        for _ in range(0 if self.is_line_lost else self.random.randint(0, 4)):
            self.change()

    def stop_broker(self):
        self.broker.terminate()
        self.broker.wait(PATIENCE)

    def begin_broker(self):
        self.broker = self.start_broker()

    def lose_line(self):
        self.is_line_lost = True
        self.simulator.stop()
        self.losses.append((time.time(), None))
        time.sleep(1)  # the publisher is to notice it

    def bring_line_back(self):
        self.losses[-1] = (self.losses[-1][0], time.time())
        self.simulator.start()
        self.is_line_lost = False
        self.await_reads()

    def fill_disk(self):
        self.full_since = time.time()
        resource.prlimit(self.publisher.pid, resource.RLIMIT_FSIZE, (0, -1))

    def empty_disk(self):
        resource.prlimit(self.publisher.pid, resource.RLIMIT_FSIZE, (-1, -1))
        wait_for("the disk", lambda: self.reports.count("can be written again") ==
                 self.reports.count("cannot spool"))
        self.full_since = None

    def cut(self):
        self.proxy.cut()

    def stall(self):
        self.proxy.flows.clear()

    def flow(self):
        self.proxy.flows.set()

    def kill(self):
        now = time.time()
        self.kills.append((min(now, self.full_since or now) - MAY_BE_LOST, now))
        self.publisher.kill()
        self.publisher.wait(PATIENCE)
        self.publisher = self.start_publisher()
        if not self.is_line_lost:
            self.await_reads()

    def round(self):
        lasting = {self.stall: self.flow, self.lose_line: self.bring_line_back,
                   self.fill_disk: self.empty_disk}
        begun = [fault for fault in lasting if self.random.random() < 0.3]
        once = [fault for fault in (self.cut, self.kill) if self.random.random() < 0.3]
        lasting[self.stop_broker] = self.begin_broker
        begin = [self.stop_broker, *begun]
        end = [lasting[fault] for fault in begin]
        self.random.shuffle(begin)
        self.random.shuffle(end)
        steps = begin + end
        for fault in once:
            steps.insert(self.random.randint(0, len(steps)), fault)
        for step in steps:
            self.some_changes()
            time.sleep(self.random.random() / 4)
            step()
            self.counts[step.__name__] = self.counts.get(step.__name__, 0) + 1
        return [step.__name__ for step in steps]

    def run(self):
        for number in range(self.rounds):
            print(f"{number}: {' '.join(self.round())}", flush=True)
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
        """Of each name the messages, in order of their arrival."""
        messages = {name: [] for name in NAMES}
        for line in (self.folder / "received").read_text(encoding="utf-8").splitlines():
            topic, _, payload = line.partition(" ")
            name = topic.removeprefix("line/")
            if name in NAMES:
                messages[name].append(json.loads(payload))
        return messages

    def may_be_missing(self, made):
        return any(since <= made <= kill for since, kill in self.kills)

    def faults(self):
        found = []
        for name, messages in self.received().items():
            good = [message for message in messages if message["quality"] == "good"]
            values = list(dict.fromkeys(message["value"] for message in good))
            if values != sorted(values):
                found.append(f"{name}: not in order: {values}")
            found += [f"{name}: {value} is missing" for value, made in self.changes[name]
                      if value not in values and not self.may_be_missing(made)]
            found += [f"{name}: {message} is false" for message in good
                      if not self.was_true(name, message)]
            found += [f"{name}: was not stale from {begin} to {end}" for begin, end in self.losses
                      if not any(since < end and begin < kill for since, kill in self.kills) and
                      not self.was_stale(messages, begin)]
        return found

    def was_true(self, name, message):
        """The controller was there at that time, and had the value."""
        when, value = time_of(message), message["value"]
        made = [0, *(made for _, made in self.changes[name]), time.time()]
        return 0 <= value < len(made) - 1 and made[value] - 0.1 <= when <= made[value + 1] + LATE \
            and not any(begin + LATE < when < end for begin, end in self.losses)

    @staticmethod
    def was_stale(messages, begin):
        """With the time of the last answer before the loss of the line."""
        return any(message["quality"] == "stale" and message["time"] and
                   -3 < time_of(message) - begin < LATE for message in messages)

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
        (soak.folder / "publisher.log").write_text(soak.log, encoding="utf-8")
    if faults:
        print("\n".join(faults))
        print(f"see {soak.folder}")
        return 1
    changes = sum(len(made) for made in soak.changes.values())
    print(f"good: {changes} changes; {json.dumps(soak.counts)}")
    subprocess.run(["rm", "-r", soak.folder], check=True)
    return 0


if __name__ == "__main__":
    signal.signal(signal.SIGXFSZ, signal.SIG_IGN)  # which the publisher inherits
    sys.exit(main(*sys.argv[1:]))
