#!/usr/bin/env python3
"""run_ratios.py - runs kiBench and prints each ki case beside its peers.

Usage: run_ratios.py path/to/kiBench [extra benchmark arguments...]

Benchmarks are named BM_<Case>/<side>/<args>, side being "ki" or a peer
("std", "std_build", ...). The binary runs with five repetitions and only
the aggregates reported; for every case the table shows the median times and
peer / ki (above 1: ki is faster), with the coefficient of variation of each
side so that a noisy pair stands out. On a shared machine pin the run to
one CPU, and let the repetitions of both sides alternate so that they meet
the same noise:
  taskset -c 0 run_ratios.py build/bench/kiBench --benchmark_enable_random_interleaving=true
"""

import json
import subprocess
import sys

UNIT_NS = {"ns": 1.0, "us": 1e3, "ms": 1e6, "s": 1e9}


def run(binary, extra):
    command = [binary, "--benchmark_repetitions=5",
               "--benchmark_report_aggregates_only=true",
               "--benchmark_format=json"] + extra
    done = subprocess.run(command, stdout=subprocess.PIPE, check=False)
    if done.returncode != 0:
        sys.exit("%s failed with status %d" % (binary, done.returncode))
    return json.loads(done.stdout)


def collect(report):
    """{(case, args): {side: {"median": ns, "cv": fraction}}}"""
    cases = {}
    for b in report.get("benchmarks", []):
        parts = b.get("run_name", b["name"]).split("/")
        if len(parts) < 2:
            continue
        key = (parts[0], "/".join(parts[2:]))
        entry = cases.setdefault(key, {}).setdefault(parts[1], {})
        if b.get("error_occurred"):
            entry["error"] = b.get("error_message", "error")
            continue
        aggregate = b.get("aggregate_name")
        if aggregate == "median":
            entry["median"] = b["real_time"] * UNIT_NS[b.get("time_unit", "ns")]
        elif aggregate == "cv":
            entry["cv"] = b["real_time"]
    return cases


def show_time(ns):
    for unit, scale in (("s", 1e9), ("ms", 1e6), ("us", 1e3)):
        if ns >= scale:
            return "%.3g %s" % (ns / scale, unit)
    return "%.3g ns" % ns


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    report = run(sys.argv[1], sys.argv[2:])
    context = report.get("context", {})
    print("%s: %s CPU(s) at %s MHz (Google Benchmark itself built as %s)" % (
        sys.argv[1], context.get("num_cpus", "?"), context.get("mhz_per_cpu", "?"),
        context.get("library_build_type", "?")))
    rows = []
    cases = collect(report)
    order = lambda key: (key[0], [int(a) if a.isdigit() else a for a in key[1].split("/")])
    for case, args in sorted(cases, key=order):
        sides = cases[(case, args)]
        ki = sides.get("ki", {})
        for side, peer in sorted(sides.items()):
            if side == "ki":
                continue
            row = [case, args, side]
            if "median" in ki and "median" in peer:
                row += [show_time(ki["median"]), "%.1f%%" % (100 * ki.get("cv", 0)),
                        show_time(peer["median"]), "%.1f%%" % (100 * peer.get("cv", 0)),
                        "%.3g" % (peer["median"] / ki["median"])]
            else:
                row += ["-", "", "-", "", ki.get("error") or peer.get("error") or "unpaired"]
            rows.append(row)
    header = ["case", "args", "peer", "ki median", "ki cv", "peer median", "peer cv",
              "peer/ki"]
    widths = [max(len(str(r[i])) for r in rows + [header]) for i in range(len(header))]
    line = lambda r: "  ".join(str(c).rjust(w) if i >= 3 else str(c).ljust(w)
                               for i, (c, w) in enumerate(zip(r, widths)))
    print(line(header))
    print("  ".join("-" * w for w in widths))
    for r in rows:
        print(line(r))


if __name__ == "__main__":
    main()
