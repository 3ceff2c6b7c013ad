#!/usr/bin/env python3
"""Runs the commands of a page, and reports output that differs from what the page shows.

    page_test.py PAGE KMR LIBRARY     in the folder of the repository
"""
import glob
import os
import re
import signal
import socket
import subprocess
import sys
import tempfile
import time

import page

# The ports of simulators and a broker on pages. They are replaced by free ports, so that tests can
# run in parallel.
PORTS = ("8888", "8889", "1883")
DONE = "page_test: done"
SECONDS = 20  # a command that takes longer hangs


def free_ports(count):
    probes = [socket.socket() for _ in range(count)]
    for probe in probes:
        probe.bind(("127.0.0.1", 0))
    ports = [str(probe.getsockname()[1]) for probe in probes]
    for probe in probes:
        probe.close()
    return ports


def exchanged(text, words, others):
    """The text with the others for these words."""
    for word, other in zip(words, others):
        text = re.sub(rf"\b{word}\b", other, text)
    return text


class Shell:
    """One bash for all commands of a page."""

    def __init__(self, folder, kmr, library):
        self.ports = free_ports(len(PORTS))
        environment = {key: value for key, value in os.environ.items()
                       if not key.startswith("KMR_")}
        environment["PATH"] = os.path.dirname(kmr) + ":" + environment["PATH"]
        environment["KMR_DRIVER"] = library
        environment["LC_ALL"] = "C.UTF-8"
        self.outputs = os.path.join(folder, "..")
        self.count = 0
        self.process = subprocess.Popen(
            ["bash", "--noprofile", "--norc"], cwd=folder, env=environment, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE, start_new_session=True)

    def run(self, text, lines_to_wait_for):
        """The exit code of a command and the lines that it printed. For a command in the background
        it waits until that has printed so many lines."""
        self.count += 1
        output = os.path.join(self.outputs, f"output{self.count}")
        text = exchanged(text, PORTS, self.ports)
        # A command may show how the one before it ended, with $?.
        self.process.stdin.write(
            f"(exit ${{page_test_code:-0}}); {{ {text}\n}} </dev/null >'{output}' 2>&1\n"
            f"page_test_code=$?; echo \"{DONE} $page_test_code\"\n")
        self.process.stdin.flush()
        code = self.process.stdout.readline()
        lines = self.lines(output)
        while text.endswith("&") and len(lines) < lines_to_wait_for:
            time.sleep(0.01)
            lines = self.lines(output)
        if not code.startswith(DONE):
            raise page.PageError("the shell has ended")
        return int(code.split()[-1]), lines

    def lines(self, output):
        with open(output, encoding="utf-8") as file:
            return exchanged(file.read(), self.ports, PORTS).splitlines()

    def end(self):
        """Ends what the page has begun; what writes files at its end has done so then."""
        os.killpg(self.process.pid, signal.SIGTERM)
        self.process.wait()
        end = time.monotonic() + SECONDS
        try:
            while time.monotonic() < end:
                os.killpg(self.process.pid, 0)
                time.sleep(0.01)
        except ProcessLookupError:
            pass


def hangs(*_):
    raise page.PageError(f"takes more than {SECONDS} seconds")


def shows_exit_code(command):
    return command is not None and re.search(r"\$\?", command.text)


def check(shell, command, following):
    """Runs a command and returns what is wrong, or an empty text."""
    signal.signal(signal.SIGALRM, hangs)
    signal.alarm(SECONDS)
    try:
        code, lines = shell.run(command.text, len(command.output or []))
    except page.PageError as error:
        return str(error)
    finally:
        signal.alarm(0)
    if code != 0 and not shows_exit_code(following):
        return f"ends with {code} and says:\n" + "\n".join(lines)
    if command.output is None:
        return ""
    if command.note == "output varies":
        good = "..." in command.output or len(lines) == len(command.output)
    else:
        good = page.fits(command.output, lines)
    if good:
        return ""
    return "\n".join(["the page shows:", *command.output, "it says:", *lines])


def missing_files(name, text):
    paths, links = page.references(text)
    linked = {os.path.join(os.path.dirname(name), link) for link in links}
    return [path for path in sorted(paths | linked) if not glob.glob(path)]


def main(name, kmr, library):
    with open(name, encoding="utf-8") as file:
        text = file.read()
    faults = [f"{name}: no such file: {path}" for path in missing_files(name, text)]
    todo = [command for command in page.commands(text) if command.note != "not run"]
    with tempfile.TemporaryDirectory() as work:
        folder = os.path.join(work, "work")
        os.mkdir(folder)
        shell = Shell(folder, kmr, library)
        try:
            for command, following in zip(todo, todo[1:] + [None]):
                fault = check(shell, command, following)
                if fault:
                    faults.append(f"{name}:{command.line}: {command.text}\n{fault}")
                    break
        finally:
            shell.end()
    print("\n".join(faults) or f"{name}: {len(todo)} commands run")
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:]))
