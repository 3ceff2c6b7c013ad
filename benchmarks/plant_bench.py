#!/usr/bin/env python3
"""Measures how many lines one machine carries: simulated lines with 50 tags each, one 'kmr publish'
each, one mosquitto and a subscriber. Doubles the lines until something gives, and prints the table of
docs/plant.md. script/bench-plant calls it.

    plant_bench.py KMR LIBRARY PLANT_SIMULATOR [LINES...]

Each run has three parts: nothing changes; one tag of each line changes each second; all 50 do. The
processor time of a line is that of its publisher, in percent of a core; its own memory what it shares
with no other. "machine" is what publishers, broker and simulators take of all cores when all changes.
"""
import json
import os
import pathlib
import platform
import re
import resource
import socket
import statistics
import subprocess
import sys
import tempfile
import time

BAUD = 9600
TAGS = ["D0/uint32"] + [f"D{number}" for number in range(2, 51)]
WORDS = 51  # that hold them
PART = 20  # seconds
MOST = 90  # percent of the machine, of which no more can be used
LATE = 2  # times the delay with the fewest lines


def free_port():
    with socket.socket() as probe:
        probe.bind(("127.0.0.1", 0))
        return probe.getsockname()[1]


def is_listening(port):
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


def cpu_seconds(pid):
    """All threads of a process."""
    total = 0
    for task in pathlib.Path(f"/proc/{pid}/task").iterdir():
        total += int((task / "schedstat").read_text(encoding="ascii").split()[0])
    return total / 1e9


def own_memory(pid):
    """Megabytes that no other process shares: what one more process takes."""
    text = pathlib.Path(f"/proc/{pid}/smaps_rollup").read_text(encoding="ascii")
    return sum(int(size) for size in re.findall(r"^Private_\w+: +(\d+) kB", text, re.M)) / 1000


def percentile(values, percent):
    return sorted(values)[min(len(values) - 1, len(values) * percent // 100)]


class Plant:
    def __init__(self, lines):
        self.lines = lines
        self.folder = pathlib.Path(tempfile.mkdtemp(prefix="plant-"))
        self.port = free_port()
        self.processes = []
        self.received = open(self.folder / "received", "w+", encoding="utf-8")

    def start(self, kmr, library, simulator, options):
        (self.folder / "mosquitto.conf").write_text(
            f"listener {self.port} 127.0.0.1\nallow_anonymous true\nlog_type none\n"
            "max_queued_messages 0\n", encoding="ascii")
        self.broker = self.run("/usr/sbin/mosquitto", "-c", self.folder / "mosquitto.conf")
        while not is_listening(self.port):
            time.sleep(0.1)
        self.subscriber = self.run(
            "stdbuf", "-o1048576", "mosquitto_sub", "-p", str(self.port), "-t", "#", "-q", "1",
            "-F", "%U %t %p", stdout=self.received)
        self.simulator = self.run(simulator, str(self.lines), str(BAUD), text=True,
                                  stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        ports = [int(self.simulator.stdout.readline()) for _ in range(self.lines)]
        environment = {**os.environ, "KMR_DRIVER": library}
        self.publishers = [self.run(
            kmr, "publish", *TAGS, "--prefix", f"line{number}", "--broker",
            f"mqtt://127.0.0.1:{self.port}", "--link", f"tcp://127.0.0.1:{port}", "--spool",
            self.folder / f"spool{number}", *options, env=environment,
            stderr=subprocess.DEVNULL) for number, port in enumerate(ports)]

    def run(self, *command, **settings):
        self.processes.append(subprocess.Popen(command, **settings))
        return self.processes[-1]

    def change(self, words, milliseconds):
        self.simulator.stdin.write(f"{words} {milliseconds}\n")
        self.simulator.stdin.flush()

    def part(self, words):
        """What a part of the run costs, and its messages: (time, topic, payload)."""
        self.change(words, 1000 if words else 0)
        time.sleep(5)
        begin = time.time()
        before = [cpu_seconds(process.pid) for process in self.processes]
        time.sleep(PART)
        seconds = time.time() - begin
        used = {process: 100 * (cpu_seconds(process.pid) - was) / seconds
                for process, was in zip(self.processes, before)}
        return {
            "line": statistics.mean(used[process] for process in self.publishers),
            "broker": used[self.broker], "all": sum(used.values()) / os.cpu_count(),
            "subscriber": used[self.subscriber], "begin": begin, "end": begin + seconds,
        }

    def messages(self):
        self.received.seek(0)
        for line in self.received:
            stamp, topic, payload = line.rstrip("\n").split(" ", 2)
            yield float(stamp), topic, payload

    def end(self):
        """The publishers before the broker, so that they can say goodbye."""
        for process in reversed(self.processes):
            process.terminate()
        for process in self.processes:
            process.wait(60)


def delays(messages, part):
    """Milliseconds from each controller's change to the subscriber."""
    found = []
    for stamp, topic, payload in messages:
        if topic.endswith("/D0/uint32") and part["begin"] <= stamp < part["end"]:
            made = json.loads(payload)["value"]
            found.append((1000 * stamp - made) % 2**32)
    return found


def figures_of_lines(messages):
    """The last $line of each, and how many exchanges each made a second."""
    reports = {}
    for _, topic, payload in messages:
        if topic.endswith("/$line"):
            reports.setdefault(topic, []).append(json.loads(payload))
    rates = []
    for found in reports.values():
        if len(found) > 1:
            seconds = 10 * (len(found) - 1)
            rates.append((found[-1]["exchanges"] - found[0]["exchanges"]) / seconds)
    return [found[-1] for found in reports.values()], statistics.mean(rates)


def measure(kmr, library, simulator, lines, options=()):
    plant = Plant(lines)
    try:
        plant.start(kmr, library, simulator, options)
        time.sleep(10 + lines / 10)
        idle = plant.part(0)
        memory = statistics.mean(own_memory(process.pid) for process in plant.publishers)
        slow = plant.part(2)
        busy = plant.part(WORDS)
    finally:
        plant.end()
    messages = list(plant.messages())
    subprocess.run(["rm", "-r", plant.folder], check=True)
    reports, rate = figures_of_lines(messages)
    requests = int(re.search(r"^cycle: (\d+) requests", subprocess.run(
        [kmr, "plan", *TAGS, *options, "--link", "tcp://127.0.0.1:1"], check=True, text=True,
        env={**os.environ, "KMR_DRIVER": library}, stdout=subprocess.PIPE).stdout, re.M)[1])
    late = delays(messages, slow)
    return {
        "lines": lines, "idle": idle, "slow": slow, "busy": busy, "memory": memory,
        "cycle": 1000 * requests / rate, "median": statistics.median(late),
        "p99": percentile(late, 99), "busy_p99": percentile(delays(messages, busy), 99),
        "rate": sum(busy["begin"] <= stamp < busy["end"] for stamp, _, _ in messages) / PART,
        "bad": sum(report["retries"] + report["give_ups"] + report["dropped"]
                   for report in reports) + lines - len(reports),
    }


HEAD = """| lines | a line, idle | own memory | all 50 change | messages/s | broker | machine | cycle \
| delay, median | p99 | p99 − cycle | p99, all 50 | bad |
| ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: | ---: |"""


def row(run):
    return (f"| {run['lines']} | {run['idle']['line']:.2f} % | {run['memory']:.1f} MB | "
            f"{run['busy']['line']:.2f} % | {run['rate']:,.0f} | {run['busy']['broker']:.1f} % | "
            f"{run['busy']['all']:.0f} % | {run['cycle']:.0f} ms | {run['median']:.0f} ms | "
            f"{run['p99']:.0f} ms | {run['p99'] - run['cycle']:+.0f} ms | {run['busy_p99']:.0f} ms | "
            f"{run['bad']} |")


def main(kmr, library, simulator, *counts):
    most = resource.getrlimit(resource.RLIMIT_NOFILE)[1]
    resource.setrlimit(resource.RLIMIT_NOFILE, (most, most))
    load = os.getloadavg()[0]
    print(f"{os.cpu_count()} cores, {platform.machine()}, load {load:.2f} before; "
          f"{BAUD} baud, {PART} s a part; {time.strftime('%F')}\n\n{HEAD}", flush=True)
    first = None
    for lines in map(int, counts or (25, 50, 100, 200, 400, 800)):
        run = measure(kmr, library, simulator, lines)
        first = first or run
        print(row(run), flush=True)
        gives = run["busy"]["all"] > MOST or run["p99"] > LATE * first["p99"] or run["bad"] > 0
        if gives and not counts:
            break


if __name__ == "__main__":
    main(*sys.argv[1:])
