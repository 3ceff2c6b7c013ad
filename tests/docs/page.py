"""Reads a page of the documentation: its commands, what they print, and what it refers to.

A page shows commands in fenced blocks:

  console   a session: lines that begin with "$ " are commands, the lines after one are its output.
            A line "..." matches any number of lines. Lines that begin with "> " continue
            a command that has a here-document.
  sh        commands alone

All commands of a page run in one shell, from the top to the bottom, in an empty folder. An HTML
comment directly above a block says what is different about it, and why:

  <!-- not run: REASON -->          its commands are not run
  <!-- output varies: REASON -->    they run, but only the number of lines is compared
"""
import re

NOTE = re.compile(r"<!-- (not run|output varies): (\S.*) -->")
FENCE = re.compile(r"```(\w*)$")
PATH = re.compile(r"(?<![\w/-])(?:script|driver|host|simulator|modbus|tests|examples|docs)"
                  r"/[\w./*-]*[\w*]/?")
LINK = re.compile(r"\]\(([^)#:]+)(?:#[^)]*)?\)")


class PageError(Exception):
    """A page that breaks the rules above."""


class Command:
    """A command of a page and the lines that the page shows as its output; None: not shown."""

    def __init__(self, line, text, output, note):
        self.line = line
        self.text = text
        self.output = output
        self.note = note


def blocks(text):
    """Each fenced block: (line number of its first line, language, lines, note above it)."""
    note = language = None
    for number, line in enumerate(text.split("\n"), 1):
        fence = FENCE.match(line)
        if language is not None:
            if line == "```":
                yield first, language, lines, note
                language = note = None
            else:
                lines.append(line)
        elif fence:
            first, language, lines = number + 1, fence[1], []
        elif re.match(r" {4}(\$ |script/|kmr |cmake |sudo )", line):
            raise PageError(f"line {number}: commands belong in a block ```console or ```sh")
        else:
            found = NOTE.fullmatch(line)
            if not found and re.match(r"<!-- (not run|output varies)", line):
                raise PageError(f"line {number}: a note needs a reason: {line}")
            note = found[1] if found else None
    if language is not None:
        raise PageError(f"line {first}: the block does not end")


def commands(text):
    """All commands of a page in their order."""
    found = []
    for number, language, lines, note in blocks(text):
        inside = False
        for at, line in enumerate(lines, number):
            if language == "sh" and line:
                found.append(Command(at, line, None, note))
            elif language != "console":
                continue
            elif line.startswith("$ "):
                found.append(Command(at, line[2:], [], note))
                inside = True
            elif inside and "<<" in found[-1].text and line.startswith("> "):
                found[-1].text += "\n" + line[2:]
            elif inside:
                found[-1].output.append(line)
            else:
                raise PageError(f"line {at}: output without a command")
    for command in found:
        # The blank line that sets off the next command.
        while command.output and command.output[-1] == "":
            command.output.pop()
    return found


def references(text):
    """Paths that a page names, which may hold a "*", and files that it links to."""
    return set(PATH.findall(text)), set(LINK.findall(text))


# What differs from run to run: each match is written as the word before comparison.
MASKS = [
    (re.compile(r"\d{4}-\d\d-\d\d[T ]\d\d:\d\d:\d\d(\.\d+)?(Z|[+-]\d\d:\d\d)?"), "TIME"),
    (re.compile(r"\b\d\d:\d\d:\d\d\.\d{3}\b"), "TIME"),
    (re.compile(r"\b\d+\.\d+(/\d+\.\d+)* ms"), "DURATION ms"),
    (re.compile(r"\bQt \d+(\.\d+)+"), "Qt VERSION"),
    (re.compile(r"\S*/libostrel_kmr\.so\.1"), "LIBRARY"),
    (re.compile(r" {2,}"), "  "),  # columns are as wide as their longest text
]


def masked(line):
    """A line without what differs from run to run and without blanks at its end."""
    for pattern, word in MASKS:
        line = pattern.sub(word, line)
    return line.rstrip()


def fits(shown, actual):
    """Whether the lines that a command printed are those that the page shows."""
    if not shown:
        return not actual
    if shown[0] == "...":
        return any(fits(shown[1:], actual[skip:]) for skip in range(len(actual) + 1))
    return bool(actual) and masked(shown[0]) == masked(actual[0]) and fits(shown[1:], actual[1:])
