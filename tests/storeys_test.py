#!/usr/bin/env python3
"""Each folder of the project, and each folder of host/, includes only those below it; and the tests
have at most 1.3 lines for each line of product."""
import pathlib
import re
import sys
import unittest

ROOMS = ["host", "host/line", "host/tags", "host/session", "host/project"]  # each uses those before
USES = {"driver": [], "modbus": [], "simulator": ["modbus"]}
for number, name in enumerate(ROOMS):
    USES[name] = ["modbus", *ROOMS[:number]]
USES["kmr"] = USES["view"] = ["modbus", "simulator", *ROOMS]

PUBLIC = "ostrel_kmr.h"  # the driver's only header that others include
INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)


def room_of(folder):
    """The room of a folder, which may be one within it: kmr/watch belongs to kmr."""
    while folder not in USES and folder != ".":
        folder = str(pathlib.PurePath(folder).parent)
    return folder


def is_allowed(user, used):
    return user == used or used == "." or used in USES[user]


def wrong_includes(root):
    inside_driver = {path.name for path in (root / "driver").glob("*.h")} - {PUBLIC}
    wrong = []
    for path in sorted(root.rglob("*.[hc]*")):
        user = room_of(str(path.parent.relative_to(root)))
        if user == "." or path.suffix not in (".h", ".cpp"):
            continue
        for included in INCLUDE.findall(path.read_text()):
            used = room_of(str(pathlib.PurePath(included).parent))
            if included in inside_driver and user != "driver":
                used = "driver"
            if not is_allowed(user, used):
                wrong.append(f"{path.relative_to(root)} includes {included}")
    return wrong


def lines_of(folders, suffixes):
    return sum(len(path.read_text().splitlines()) for folder in folders
               for path in folder.rglob("*") if path.suffix in suffixes)


class Weight(unittest.TestCase):
    def test_rules_are_proved_once(self):
        storeys = [ROOT / name for name in ("driver", "modbus", "simulator", "host", "kmr")]
        product = lines_of(storeys, {".h", ".cpp"})
        tests = lines_of([ROOT / "tests"], {".h", ".cpp", ".py"})
        self.assertLessEqual(tests, 1.3 * product)


class Storeys(unittest.TestCase):
    def test_includes_go_down(self):
        self.assertEqual(wrong_includes(ROOT), [])

    def test_an_include_that_goes_up_is_noticed(self):
        for user, used in [("host/session", "host/tags"), ("host/line", "host"),
                           ("host/line", "modbus"), ("kmr", "simulator"), ("kmr", "kmr")]:
            self.assertTrue(is_allowed(user, used), (user, used))
        for user, used in [("host/line", "host/tags"), ("host/tags", "host/project"),
                           ("host/session", "host/project"), ("host", "host/line"),
                           ("modbus", "host"), ("simulator", "host"), ("host/line", "simulator"),
                           ("host", "kmr"), ("host", "driver"), ("driver", "modbus")]:
            self.assertFalse(is_allowed(user, used), (user, used))
        self.assertEqual(room_of("kmr/commands"), "kmr")
        self.assertEqual(room_of("host/line"), "host/line")
        self.assertEqual(room_of("tests/host"), ".")


if __name__ == "__main__":
    ROOT = pathlib.Path(sys.argv.pop(1))
    unittest.main()
