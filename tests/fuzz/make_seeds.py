#!/usr/bin/env python3
"""Writes the fuzzers' seeds in tests/fuzz/corpus: `script/fuzz --seeds`.

A seed is a simple case from which a fuzzer starts. Texts are seeds as they are; for a reply and the
editor the numbers below choose as described in tests/fuzz/byte_source.h and the fuzzers.
"""

import pathlib

CORPUS = pathlib.Path(__file__).parent / "corpus"

# Choices of ByteSource::area().
X, M, TV, D, CV2, TV_BIT = 0, 2, 6, 8, 9, 11

# A number below 64, and station 1.
def number(value):
    return [0, value]


def session():
    """The first byte asks for a session that the model knows (0) or for anything (1), the others
    choose calls and arguments, whichever they are."""
    ascending = [(7 * i) % 256 for i in range(600)]
    return {"defined": [0] + ascending, "anything": [1] + ascending,
            "backwards": [0] + ascending[::-1], "plain": [0] + [1] * 200}


def reply():
    poll, once, write, upload, download = range(5)
    data = b":01031012345678ABCDEF0012345678ABCDEF00B2\r\n"
    return {
        "words": bytes([poll, D, 1, 0, 8]) + data,
        "bits": bytes([poll, M, 0, 16, 32]) + b":010204FFFF0000FB\r\n",
        "counters": bytes([once, CV2, 2, 0, 8]) + data,
        "acknowledged": bytes([write, D, 0, 7, 3]) + b":01101007000ADE\r\n",
        "refused": bytes([write, M, 0, 7, 1]) + b":0185027A\r\n\n",
        "uploaded": bytes([upload, TV, 0, 7, 8]) + data + data,
        "downloaded": bytes([download, D, 0, 7, 8]) + b":01101007000ADE\r\n" * 2,
    }


def editor():
    def case(area, text):
        return bytes([area] + number(1) + [1] + number(5) + number(1) + number(9)) + text

    return {"octal": case(X, b"17"), "word_bit": case(TV_BIT, b"5.15"), "word": case(D, b"11999"),
            "counter": case(CV2, b"200"), "signed": case(D, b"-1"), "blank": case(D, b" 1")}


def simulator():
    return {
        "read_words": b":01031064000880\r\n",
        "read_bits": b":010208000010E5\r\n",
        "set_bit": b":01050800FF00F3\r\n",
        "write_words": b":01101064000102123432\r\n",
        "read_message": b"\x03\x10\x64\x00\x08",
        "write_message": b"\x10\x10\x64\x00\x02\x04\x12\x34\x56\x78",
        "two_lines": b"x:01031064000880\r\n:010310:01031064000880\r\n",
    }


def tag():
    return {"word": b"D100", "octal": b"X17", "run": b"2#M0x16", "word_bit": b"TV5.3",
            "counter": b"CV2200", "counter_or_word": b"CV21", "unknown": b"Q1",
            "word_bit_beyond_32_bits": b"D1111111111.10"}


def link():
    return {"serial": b"serial:///dev/ttyUSB0?baud=9600&frame=7E1", "tcp": b"tcp://plc:8888",
            "address": b"tcp://[::1]:502", "bad": b"serial://?baud=x&frame=9Z3"}


def filter():
    return {
        "answer": bytes([0, 3]) + b":010310000000000000000000000000000000EC\r\n",
        "echo": bytes([2, 15]) + b":01050800FF00F3\r\n:01050800FF00F3\r\n",
        "noise": bytes([2, 0]) + b"??:010:01050800FF00F3\r\n",
        "exception": bytes([3, 7]) + b":0190026D\r\n",
    }


def metric(name, *fields):
    """A metric of Sparkplug B, for a payload."""
    content = bytes([0x0A, len(name)]) + name + bytes.fromhex("".join(fields))
    return bytes([0x12, len(content)]) + content


def set_request():
    """A byte of flags, the name, the response topic, the payload; or a byte and a command."""
    return {
        "sparkplug_number": b"\0\x08\xe8\x07" + metric(b"n", "690000000000803540") +
                            metric(b"f", "650000c03f") + metric(b"c", "5805") +
                            metric(b"n", "200250fbffffff0f"),
        "sparkplug_list": b"\0" + metric(b"l", "202082010503000000a0") + metric(b"b", "7001") +
                          metric(b"t", "7a024142") + metric(b"no", "3801") +
                          metric(b"Node Control/Rebirth", "7001"),
        "number": b"\x00n\n\n21.5 C",
        "json": b'\x02n\na/b\n{"value": 21.5, "id": "a7", "expires": "2099-01-01T00:00:00Z"}',
        "list": b"\x04l\n\n[1, true, 0]",
        "texts": b'\x00l\n\n["closed", "not open", 0]',
        "truth": b'\x00b\n\n{"value": true}',
        "text": b'\x00t\n\n{"value": "AB\\u00e9\\\\x41"}',
        "float": b"\x00f\n\n-1.5e-3",
        "counter": b"\x00c\n\n0xFFFFFFFF",
        "forbidden": b"\x00no\n\n1",
        "retained": b"\x01n\n\n1",
    }


def main():
    for target in (session, reply, editor, simulator, tag, link, filter, set_request):
        directory = CORPUS / target.__name__.removesuffix("_request")
        directory.mkdir(parents=True, exist_ok=True)
        for old in directory.iterdir():
            old.unlink()
        for name, seed in target().items():
            (directory / name).write_bytes(bytes(seed))


main()
