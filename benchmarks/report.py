"""Makes tables and a plot from the measurements of kmr_bench and pymodbus_bench.py.

    report.py KMR_BENCH_JSON PYMODBUS_JSON [DOCS]

Prints the tables. With DOCS, also writes them into DOCS/performance.md between the two marks there
and writes the plot DOCS/exchange-time.svg.
"""

import json
import math
import pathlib
import platform
import re
import sys

import plot

AREAS = (8, 100, 1000, 10000, 100000)
MOST_FLOORS = 10  # that an exchange with 8 areas may take
MOST_GROWTH = {10000: 1.5, 100000: 2}  # times the exchange with 8 areas

# A request of 17 characters and a reply of 43, of 10 bits each.
LINE_NS = {baud: (17 + 43) * 10 / baud * 1e9 for baud in (9600, 115200)}

OPERATIONS = (
    # title, benchmark, goal in ns or as a benchmark that takes at least half the time
    ("`intf_getData`, 8 words, the first of 8 areas", "get/first_8_words_of_8", None),
    ("the same, the last of 10,000 areas", "get/last_8_words_of_10000", "get/first_8_words_of_8"),
    ("`intf_getData`, 16 bits, in the last of 100 areas", "get/16_bits", None),
    ("`intf_setData`, 8 words, full queue", "set/8_words_into_full_queue", None),
    ("`intf_setData`, 8 words, superseding a queued write", "set/8_words_again", None),
    ("`intf_addrMerge`, 1,000 addresses, ordered", "merge/ordered_1000", None),
    ("the same, shuffled", "merge/shuffled_1000", None),
    ("the same, 10 apart: 1,000 blocks", "merge/sparse_1000", None),
    ("the same, all of them known before", "merge/again_1000", None),
    ("`intf_addrMerge`, 1,000 overlapping runs of 4 words", "merge/overlapping_1000", None),
    ("`intf_addrMerge`, 10,000 addresses, ordered", "merge/ordered_10000", 5e6),
    ("`intf_addrMerge`, 100,000 addresses, ordered", "merge/ordered_100000", 50e6),
    ("exchange: read 32 bits, 100 areas", "exchange/kinds/read_32_bits", None),
    ("exchange: read 4 counters, 100 areas", "exchange/kinds/read_4_counters", None),
    ("exchange: the controller refuses", "exchange/kinds/refused", None),
    ("3 × (set 8 words, write them), then a read", "exchange/kinds/3_x_write_8_words_and_read", None),
    ("3 × (set a bit, write it), then a read", "exchange/kinds/3_x_write_bit_and_read", None),
    ("check a typed word address", "editor/check_word", None),
    ("check a typed octal address", "editor/check_octal_bit", None),
    ("check a typed bit of a word", "editor/check_bit_of_word", None),
    ("check with data type", "editor/check_with_data_type", None),
    ("describe an area", "editor/describe_area", None),
    ("series of 100 addresses", "editor/series_of_100", None),
    ("series of 100 octal addresses", "editor/series_of_100_octal", None),
)


def fastest(results):
    """{benchmark: fastest of its rounds in ns of thread CPU time}: other load only adds to it."""
    unit_ns = {"ns": 1, "us": 1e3, "ms": 1e6}
    rounds = {}
    for entry in results["benchmarks"]:
        if entry["run_type"] == "iteration":
            time = entry["cpu_time"] * unit_ns[entry["time_unit"]]
            rounds.setdefault(entry["run_name"], []).append(time)
    return {name: min(times) for name, times in rounds.items()}


def duration(ns):
    for unit, size in (("ms", 1e6), ("µs", 1e3)):
        if ns >= size:
            return f"{ns / size:.3g} {unit}"
    return f"{ns:.0f} ns"


def share(ns, baud):
    """Per cent of a real exchange, with two significant digits."""
    per_cent = 100 * ns / LINE_NS[baud]
    decimals = max(0, 1 - math.floor(math.log10(per_cent)))
    return f"{per_cent:.{decimals}f} %"


def table(head, rows, texts=(0,)):
    """A Markdown table that is also readable as plain text. Columns in `texts` are left-aligned."""
    widths = [max(map(len, column)) for column in zip(head, *rows)]

    def line(cells):
        padded = (cell.ljust(width) if index in texts else cell.rjust(width)
                  for index, (cell, width) in enumerate(zip(cells, widths)))
        return "| " + " | ".join(padded) + " |"

    rule = ["-" * width if index in texts else "-" * (width - 1) + ":"
            for index, width in enumerate(widths)]
    return "\n".join((line(head), line(rule), *map(line, rows)))


def peers_table(times, results, pymodbus):
    context = results["context"]
    in_turn = "exchange/in_turn/unchanged/"
    floor = times["peer/floor"]
    values_only = "frame and values only"
    whole = "cache, change detection, error text"
    rows = (
        ("hand-written floor", floor, "encode, check, decode; no allocation, no cache"),
        (f"libmodbus {context['libmodbus']}, RTU, no system calls", times["peer/libmodbus_rtu"],
         values_only),
        ("**this driver**, 8 areas", times[in_turn + "8"], whole),
        ("**this driver**, 100 areas", times[in_turn + "100"], whole),
        (f"Qt SerialBus {context['qt']}, ASCII", times["peer/qt_serialbus_ascii"], values_only),
        (f"pymodbus {pymodbus['version']}, ASCII", pymodbus["ns"], values_only),
    )
    return table(("an exchange that reads 8 words", "time", "× floor", "at 9600 baud",
                  "at 115200 baud", "does"),
                 [(who, duration(ns), f"{ns / floor:.1f}", share(ns, 9600), share(ns, 115200), does)
                  for who, ns, does in rows], texts=(0, 5))


def stores_table(times):
    def row(areas):
        in_turn = times[f"exchange/in_turn/unchanged/{areas}"]
        smallest = times["exchange/in_turn/unchanged/8"]
        others = [times[f"exchange/{name}/{areas}"]
                  for name in ("in_turn/changed", "first/unchanged", "last/unchanged")]
        goal = f"{MOST_GROWTH[areas]:.1f}" if areas in MOST_GROWTH else ""
        if areas == 8:
            goal = f"{MOST_FLOORS} × floor"
        return (f"{areas:,}", duration(in_turn), f"{in_turn / times['peer/floor']:.1f}",
                f"{in_turn / smallest:.2f}", goal, share(in_turn, 9600), share(in_turn, 115200),
                *map(duration, others))

    return table(("areas in the store", "blocks in turn", "× floor", "× 8 areas", "goal",
                  "at 9600 baud", "at 115200 baud", "in turn, all changed", "first block",
                  "last block"),
                 [row(areas) for areas in AREAS], texts=())


def operations_table(times):
    def shown(goal):
        return duration(2 * times[goal] if isinstance(goal, str) else goal) if goal else ""

    return table(("operation", "time", "goal"),
                 [(title, duration(times[name]), shown(goal)) for title, name, goal in OPERATIONS])


def machine(results):
    cpuinfo = pathlib.Path("/proc/cpuinfo").read_text()
    model = re.search(r"model name\s*: (.*)", cpuinfo)
    context = results["context"]
    caches = ", ".join(f"L{c['level']} {c['size'] // 1024:,} KiB" for c in context["caches"]
                       if c["type"] in ("Data", "Unified"))
    return (f"{model[1] if model else platform.machine()}, {context['num_cpus']} cores ({caches}); "
            f"GCC {context['compiler']} -O3, Qt {context['qt']}; {context['date'][:10]}. "
            "Thread CPU time on one core, the fastest of the rounds.")


def report(results, pymodbus):
    times = fastest(results)
    return "\n\n".join((
        machine(results),
        "The shares are of a real exchange: a request of 17 and a reply of 43 characters of 10 bits "
        "take 62.5 ms at 9600 baud and 5.2 ms at 115200.",
        peers_table(times, results, pymodbus),
        stores_table(times),
        operations_table(times),
    ))


def plot_of(times):
    def curve(name):
        return [(areas, times[f"{name}/{areas}"]) for areas in AREAS]

    return plot.draw(
        curves=(
            plot.Curve("always the last block", curve("exchange/last/unchanged"), "#7fb3d5"),
            plot.Curve("blocks in turn", curve("exchange/in_turn/unchanged"), "#1a5276", bold=True),
            plot.Curve("always the first block", curve("exchange/first/unchanged"), "#7fb3d5"),
            plot.Curve("plain scan of as much memory", curve("scan"), "#888888", dashed=True),
        ),
        goals=[(8, MOST_FLOORS * times["peer/floor"])] +
              [(areas, most * times["exchange/in_turn/unchanged/8"])
               for areas, most in MOST_GROWTH.items()],
        line_ns=LINE_NS[115200],
    )


def put_into(document, text):
    begin, end = "<!-- written by script/bench -->\n", "\n<!-- end -->"
    before, rest = document.read_text().split(begin)
    document.write_text(before + begin + text + end + rest.split(end, 1)[1])


def main():
    results, pymodbus = (json.loads(pathlib.Path(name).read_text()) for name in sys.argv[1:3])
    text = report(results, pymodbus)
    print(text)
    if len(sys.argv) > 3:
        docs = pathlib.Path(sys.argv[3])
        put_into(docs / "performance.md", text)
        (docs / "exchange-time.svg").write_text(plot_of(fastest(results)))


main()
