#!/usr/bin/env python3
"""Prints the summary of `llvm-cov export -summary-only` (standard input) as a table of files.

Exit codes: 0 everything in driver/ is reached, 1 something is not.
"""

import json
import pathlib
import sys

PARTS = ("lines", "branches", "mcdc")
GROUPS = ("driver", "modbus", "simulator", "host")


def cell(part):
    count, covered = part["count"], part["covered"]
    share = 100.0 * covered / count if count else 100.0
    return f"{covered:5}/{count:<5}{share:6.1f} %"


def line(name, summary):
    print(f"{name:34}" + "  ".join(cell(summary[part]) for part in PARTS))


def total(summaries):
    return {
        part: {key: sum(summary[part][key] for summary in summaries) for key in ("count", "covered")}
        for part in PARTS
    }


def main():
    root = pathlib.Path(__file__).resolve().parent.parent
    files = {}
    for entry in json.load(sys.stdin)["data"][0]["files"]:
        files[str(pathlib.Path(entry["filename"]).relative_to(root))] = entry["summary"]
    print(f"{'':34}{'lines':^19}  {'branches':^19}  {'MC/DC':^19}")
    for group in GROUPS:
        of_group = {name: files[name] for name in sorted(files) if name.startswith(group + "/")}
        for name, summary in of_group.items():
            line(name, summary)
        line(group, total(of_group.values()))
        print()
    driver = total(summary for name, summary in files.items() if name.startswith("driver/"))
    return int(any(driver[part]["covered"] < driver[part]["count"] for part in PARTS))


sys.exit(main())
