"""The small changes that script/mutate makes to a source file, and the list of equivalent ones."""

import dataclasses
import re

TOKEN = re.compile(
    r"""(?P<comment>//[^\n]*|/\*.*?\*/|^\#[^\n]*)
      | (?P<string>"(?:\\.|[^"\\\n])*")
      | (?P<character>'(?:\\.|[^'\\])+')
      | (?P<number>\b(?:0[xX][0-9a-fA-F]+|[0-9]+)[uU]?\b)
      | (?P<word>[A-Za-z_]\w*)
      | (?P<operator><<=|>>=|->|::|\+\+|--|<<|>>|<=|>=|==|!=|&&|\|\||[-+*/%&|^]=|[^\s\w])
    """,
    re.VERBOSE | re.MULTILINE | re.DOTALL,
)

# Only where blanks stand on both sides: so formatted, these are no pointers, references, template
# brackets or signs.
BINARY = {
    "<": ("<=", ">="), "<=": ("<", ">"), ">": (">=", "<="), ">=": (">", "<"),
    "==": ("!=",), "!=": ("==",), "&&": ("||",), "||": ("&&",),
    "+": ("-",), "-": ("+",), "*": ("/",), "/": ("*",), "%": ("/",),
    "&": ("|",), "|": ("&",), "^": ("|",), "<<": (">>",), ">>": ("<<",),
    "+=": ("-=",), "-=": ("+=",), "*=": ("/=",), "/=": ("*=",),
}
ANYWHERE = {"++": ("--",), "--": ("++",), "true": ("false",), "false": ("true",),
            "qMin": ("qMax",), "qMax": ("qMin",)}
OPENING = {"(": ")", "[": "]", "{": "}"}
NO_CALLS = {"if", "for", "while", "switch", "return", "sizeof", "static_assert", "offsetof"}
# Their first two arguments may be exchanged at will: addressPlus() adds in 64 bits, and memcmp(),
# sameTarget() and sameText() are only asked whether the two are the same.
COMMUTATIVE = {"qMin", "qMax", "addressPlus", "memcmp", "sameTarget", "sameText"}
STATEMENT = re.compile(r"(?:\+\+|--)?[\w.:]+(?:\(.*\)|\[.*\]|(?:\.|->)\w+)*\s*"
                       r"(?:[-+*/%&|^]?=(?!=)|\(|<<|\+\+|--|$)", re.DOTALL)


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclasses.dataclass(frozen=True)
class Change:
    file: str
    function: str  # that it lies in, empty outside of any
    start: int
    end: int
    replacement: str
    before: str  # the code of the lines that it touches, in one line
    after: str

    def apply(self, text):
        return text[: self.start] + self.replacement + text[self.end:]

    def key(self):
        return self.file, self.function, self.before, self.after

    def __str__(self):
        return f"{self.file} {self.function}\n  - {self.before}\n  + {self.after}"


def changes_of(file, text):
    """All changes of one source file, in its order."""
    tokens = [Token(match.lastgroup, match.group(), match.start(), match.end())
              for match in TOKEN.finditer(text) if match.lastgroup != "comment"]
    tokens = without_static_asserts(tokens)
    found = set()
    for finder in (operators, constants, conditions, statements, arguments, alternatives):
        found.update(finder(text, tokens))
    return [described(file, text, *edit) for edit in sorted(found)]


def described(file, text, start, end, replacement):
    first = text.rfind("\n", 0, start) + 1
    last = text.find("\n", end)
    before = code_of(text[first:last])
    after = code_of(text[first:start] + replacement + text[end:last])
    return Change(file, function_at(text, start), start, end, replacement, before, after)


def code_of(lines):
    """Without comments, in one line."""
    code = TOKEN.sub(lambda match: "" if match.lastgroup == "comment" else match.group(), lines)
    return " ".join(code.split())


def function_at(text, position):
    """The name in the last definition that begins in the first column."""
    name = ""
    for line in re.finditer(r"^(\S[^\n]*)$", text[:position], re.MULTILINE):
        head = re.match(r"(?:__attribute__\(\(\w+\)\) )?[\w:<>*& ]*?([\w:]+)\(", line.group(1))
        if head and not line.group(1).endswith(";"):
            name = head.group(1)
        elif line.group(1).startswith("}"):
            name = ""
    return name


def without_static_asserts(tokens):
    kept, skipping = [], False
    for token in tokens:
        skipping = skipping or token.text == "static_assert"
        if not skipping:
            kept.append(token)
        if token.text == ";":
            skipping = False
    return kept


def closing(tokens, opening):
    """Index of the bracket that closes the one at index `opening`."""
    depth = 0
    for index in range(opening, len(tokens)):
        depth += tokens[index].text in OPENING
        depth -= tokens[index].text in OPENING.values()
        if depth == 0:
            return index
    raise ValueError("a bracket is not closed")


def operators(text, tokens):
    for token in tokens:
        spaced = text[token.start - 1] in " \n" and text[token.end] in " \n"
        for replacement in BINARY.get(token.text, ()) if spaced else ():
            yield token.start, token.end, replacement
        for replacement in ANYWHERE.get(token.text, ()):
            yield token.start, token.end, replacement


def constants(text, tokens):
    del text
    for token in tokens:
        if token.kind == "number":
            value = int(token.text.rstrip("uU"), 0)
            for other in (value + 1, value - 1):
                suffix = "u" if token.text[-1] in "uU" and other >= 0 else ""
                yield token.start, token.end, f"{other}{suffix}"
        elif token.kind == "character":
            plain = len(token.text) == 3
            other = chr(ord(token.text[1]) + 1) if plain else "x"
            yield token.start, token.end, f"'{other}'"
        elif token.kind == "string":
            inner = token.text[1:-1]
            other = inner[:-1] + chr(ord(inner[-1]) + 1) if inner else "x"
            yield token.start, token.end, f'"{other}"'


def conditions(text, tokens):
    for index, token in enumerate(tokens):
        if token.text not in ("if", "while", "for") or token.kind != "word":
            continue
        end = closing(tokens, index + 1)
        inside = tokens[index + 2: end]
        if token.text == "for":
            limits = [part for part in inside if part.text == ";"]
            if len(limits) != 2:
                continue
            start, stop = limits[0].end, limits[1].start
        else:
            start, stop = tokens[index + 1].end, tokens[end].start
        condition = text[start:stop].strip()
        start = text.index(condition, start)
        yield start, start + len(condition), f"!({condition})"


def statements(text, tokens):
    """Calls, assignments and jumps; no declarations, and nothing that returns a value."""
    for index, token in enumerate(tokens):
        previous = tokens[index - 1].text if index else ";"
        if previous not in (";", "{", "}", ")", "else", ":"):
            continue
        end = index
        while end < len(tokens) and tokens[end].text not in (";", "{", "}"):
            end = closing(tokens, end) + 1 if tokens[end].text in "([" else end + 1
        if end >= len(tokens) or tokens[end].text != ";":
            continue
        statement = text[token.start: tokens[end].start]
        if statement in ("break", "continue", "return"):
            yield token.start, tokens[end].start, ""
        elif token.text not in NO_CALLS and STATEMENT.match(statement):
            yield token.start, tokens[end].start, ""


def parts(tokens, opening):
    """The (start, end) of what commas divide inside the bracket at index `opening`."""
    end = closing(tokens, opening)
    start = opening + 1
    index = start
    while index < end:
        if tokens[index].text in OPENING:
            index = closing(tokens, index)
        elif tokens[index].text == ",":
            yield tokens[start].start, tokens[index - 1].end
            start = index + 1
        index += 1
    if start < end:
        yield tokens[start].start, tokens[end - 1].end


def arguments(text, tokens):
    """Neighbouring arguments of a call exchanged."""
    for index, token in enumerate(tokens[:-1]):
        if token.kind != "word" or token.text in NO_CALLS or tokens[index + 1].text != "(":
            continue
        listed = list(parts(tokens, index + 1))
        if any(re.search(r"\w[ ]+[*&]*\w", text[start:end]) for start, end in listed):
            continue  # the parameters of a definition
        neighbours = list(zip(listed, listed[1:]))
        first = 1 if token.text in COMMUTATIVE else 0
        for (start, end), (next_start, next_end) in neighbours[first:]:
            left, right = text[start:end], text[next_start:next_end]
            if left != right:
                yield start, next_end, right + text[end:next_start] + left


def alternatives(text, tokens):
    """The two values of `condition ? one : other` exchanged."""
    for index, token in enumerate(tokens):
        if token.text != "?":
            continue
        colon = index + 1
        while tokens[colon].text != ":":
            colon = closing(tokens, colon) + 1 if tokens[colon].text in OPENING else colon + 1
        end = colon + 1
        while tokens[end].text not in (";", ",", ")", "]", "}"):
            end = closing(tokens, end) + 1 if tokens[end].text in OPENING else end + 1
        one = text[token.end + 1: tokens[colon].start - 1]
        other = text[tokens[colon].end + 1: tokens[end - 1].end]
        yield token.end + 1, tokens[end - 1].end, f"{other} : {one}"


def read_equivalents(file):
    """The keys of the changes that the list proves equivalent. See the head of the list."""
    keys, block = {}, {}
    for line in file.read_text().splitlines() + [""]:
        field = re.match(r"(in|-|\+|why):? +(.*)", line)
        if field and field.group(1) == "+":
            block.setdefault("+", []).append(field.group(2).strip())
        elif field:
            block[field.group(1)] = field.group(2).strip()
        elif line.startswith("      ") and "why" in block:
            block["why"] += " " + line.strip()
        elif not line.strip() and block:
            where, _, function = block["in"].partition(" ")
            if not block["why"]:
                raise ValueError(f"an entry has no reason: {block}")
            for after in block["+"]:
                keys[where, function, block["-"], after] = block["why"]
            block = {}
    return keys
