#!/usr/bin/env python3
"""Runs the benchmarks, prints them as a table and writes summary.json.

usage: report.py PROGRAM SUMMARY [--count] [--figures NAME,NAME...] [--repetitions N]

Without --count, times are medians of interleaved repetitions. With it, instructions are counted
under callgrind, which repeat exactly; these are held against the limits, and a ratio above its
limit makes the exit code 1.
"""

import argparse
import json
import os
import re
import subprocess
import sys
import tempfile


class Figure:
    def __init__(self, line):
        name, limit, time_limit, factor, is_heap = line.split()
        self.name = name
        self.limit = float(limit)
        self.time_limit = float(time_limit)
        self.factor = float(factor)
        self.is_heap = is_heap == "1"


def read_figures(program, only):
    listing = subprocess.run([program, "--figures"], check=True, capture_output=True, text=True)
    figures = [Figure(line) for line in listing.stdout.splitlines()]
    unknown = set(only) - {figure.name for figure in figures}
    if unknown:
        sys.exit("no such figure: " + ", ".join(sorted(unknown)))
    return [figure for figure in figures if not only or figure.name in only]


def parse_heap(text):
    """The bytes that each side of a heap figure leaves allocated."""
    values = {}
    for name, value, floor in re.findall(r"^heap (\S+) (\d+) (\d+)$", text, re.M):
        values[name + "/value"] = float(value)
        values[name + "/floor"] = float(floor)
    return values


def count(program, figures):
    values = {}
    for figure in figures:
        with tempfile.TemporaryDirectory() as folder:
            command = [program, "--count", figure.name]
            if not figure.is_heap:  # valgrind has a malloc of its own
                command = ["valgrind", "--tool=callgrind", "--collect-atstart=no",
                           f"--callgrind-out-file={folder}/out"] + command
            run = subprocess.run(command, check=True, capture_output=True, text=True)
            values.update(parse_heap(run.stderr))
            for name in os.listdir(folder):
                with open(os.path.join(folder, name), encoding="utf-8", errors="replace") as dump:
                    text = dump.read()
                side = re.search(r"Client Request: (\S+)", text)
                total = re.search(r"^(?:summary|totals): (\d+)", text, re.M)
                if side and total:
                    values[side.group(1)] = float(total.group(1))
    return values


def measure_times(program, figures, repetitions):
    names = "|".join(figure.name for figure in figures)
    with tempfile.NamedTemporaryFile(suffix=".json") as out:
        run = subprocess.run(
            [program, f"--benchmark_filter=^({names})/(value|floor)$",
             f"--benchmark_repetitions={repetitions}", "--benchmark_min_time=0.05",
             "--benchmark_enable_random_interleaving=true",
             "--benchmark_report_aggregates_only=true",
             f"--benchmark_out={out.name}", "--benchmark_out_format=json"],
            check=True, stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True)
        values = parse_heap(run.stderr)
        for result in json.load(out)["benchmarks"]:
            if result.get("aggregate_name") == "median":
                values[result["run_name"]] = result["cpu_time"]
    return values


def summarise(figures, values, unit):
    summary = {}
    for figure in figures:
        value = values.get(figure.name + "/value")
        floor = values.get(figure.name + "/floor")
        if not value or not floor:
            sys.exit(f"{figure.name} was not measured")
        floor *= figure.factor
        timed = unit == "ns" and not figure.is_heap
        limit = figure.time_limit or figure.limit if timed else figure.limit
        summary[figure.name] = {
            "value": value, "floor": floor, "ratio": round(value / floor, 4),
            "unit": "bytes" if figure.is_heap else unit, "limit": limit or None}
    return summary


def above_limit(summary, figures):
    """Names of what is above its limit. Most limits are of instructions, not of times."""
    timed = {figure.name for figure in figures if figure.time_limit}
    return [name for name, entry in summary.items()
            if entry["limit"] and entry["ratio"] > entry["limit"]
            and (entry["unit"] != "ns" or name in timed)]


def print_table(summary, above):
    print(f"{'figure':<26} {'value':>14} {'floor':>14} {'ratio':>8} {'limit':>6}  unit")
    for name, entry in summary.items():
        limit = entry["limit"]
        mark = "  above its limit" if name in above else ""
        print(f"{name:<26} {entry['value']:>14,.0f} {entry['floor']:>14,.0f} "
              f"{entry['ratio']:>8.3f} {limit or '':>6}  {entry['unit']}{mark}")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("summary")
    parser.add_argument("--count", action="store_true")
    parser.add_argument("--figures", default="")
    parser.add_argument("--repetitions", type=int, default=9)
    options = parser.parse_args()
    figures = read_figures(options.program, [name for name in options.figures.split(",") if name])
    if options.count:
        values = count(options.program, figures)
    else:
        values = measure_times(options.program, figures, options.repetitions)
    summary = summarise(figures, values, "instructions" if options.count else "ns")
    above = above_limit(summary, figures)
    print_table(summary, above)
    with open(options.summary, "w", encoding="utf-8") as out:
        json.dump(summary, out, indent=2)
        out.write("\n")
    if options.count and above:
        sys.exit("above the limit: " + ", ".join(above))


if __name__ == "__main__":
    main()
