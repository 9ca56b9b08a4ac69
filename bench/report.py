#!/usr/bin/env python3
"""Runs the benchmarks in a build folder, prints them as a table and writes summary.json there.

usage: report.py BUILD [--count] [--figures NAME,NAME...] [--repetitions N]

Without --count, times are medians of interleaved repetitions. With it, instructions are counted
under callgrind, which repeat exactly; these are held to the limits in figures.py, and a ratio above
its limit makes the exit code 1. So does a figure that could not be measured. The name
"quick" stands for the figures that CI runs.
"""

import argparse
import json
import os
import re
import subprocess
import sys
import tempfile

import commands
import figures


class Bench:
    """The benchmark program: which figures it knows, and their measurements."""

    def __init__(self, build):
        self.program = f"{build}/bench/tqxml_bench"
        # Qt reads this when it starts; without it, hashing costs something else in every run.
        os.environ["QT_HASH_SEED"] = "0"
        lines = self.run(["--figures"]).stdout.splitlines()
        self.qt = int(lines[0].split()[1])
        self.factors = {}
        self.heap = set()
        for line in lines[1:]:
            name, factor, unit = line.split()
            self.factors[name] = float(factor)
            if unit == "bytes":
                self.heap.add(name)

    def run(self, arguments, under=()):
        return subprocess.run([*under, self.program, *arguments], check=True,
                              capture_output=True, text=True)

    def pair(self, mode, name):
        """Value and floor as the program itself measures them."""
        _, value, floor = self.run([mode, name]).stderr.split()
        return float(value), float(floor)

    def count(self, name):
        if name in self.heap:  # valgrind has a malloc of its own
            return self.pair("--count", name)
        values = {}
        with tempfile.TemporaryDirectory() as folder:
            self.run(["--count", name], ["valgrind", "--tool=callgrind", "--collect-atstart=no",
                                         f"--callgrind-out-file={folder}/out"])
            for dump in os.listdir(folder):
                with open(os.path.join(folder, dump), encoding="utf-8", errors="replace") as file:
                    text = file.read()
                side = re.search(r"Client Request: \S+/(\S+)", text)
                total = re.search(r"^(?:summary|totals): (\d+)", text, re.M)
                if side and total:
                    values[side.group(1)] = float(total.group(1))
        return values["value"], values["floor"]

    def times(self, names, repetitions):
        with tempfile.NamedTemporaryFile(suffix=".json") as out:
            self.run([f"--benchmark_filter=^({'|'.join(names)})/(value|floor)$",
                      f"--benchmark_repetitions={repetitions}", "--benchmark_min_time=0.05",
                      "--benchmark_enable_random_interleaving=true",
                      "--benchmark_report_aggregates_only=true",
                      f"--benchmark_out={out.name}", "--benchmark_out_format=json"])
            results = json.load(out)["benchmarks"]
        return {result["run_name"]: result["cpu_time"] for result in results
                if result.get("aggregate_name") == "median"}


class Report:
    def __init__(self):
        self.entries = {}
        self.failures = {}

    def add(self, name, unit, pair, factor=1.0, limit=0.0):
        value, floor = pair
        floor *= factor
        self.entries[name] = {"value": value, "floor": floor, "ratio": round(value / floor, 4),
                              "unit": unit, "limit": limit or None}

    def above(self):
        return [name for name, entry in self.entries.items()
                if entry["limit"] and entry["ratio"] > entry["limit"]]

    def print(self):
        print(f"{'figure':<26} {'value':>14} {'floor':>14} {'ratio':>8} {'limit':>6}  unit")
        above = self.above()
        for name, entry in self.entries.items():
            mark = "  above its limit" if name in above else ""
            print(f"{name:<26} {entry['value']:>14,.0f} {entry['floor']:>14,.0f} "
                  f"{entry['ratio']:>8.3f} {entry['limit'] or '':>6}  {entry['unit']}{mark}")
        for name, reason in self.failures.items():
            print(f"{name:<26} not measured: {reason}")

    def write(self, path):
        failures = {name: {"error": reason} for name, reason in self.failures.items()}
        with open(path, "w", encoding="utf-8") as out:
            json.dump({**self.entries, **failures}, out, indent=2)
            out.write("\n")

    def verdict(self):
        """What is wrong with the figures; an empty text when all is well."""
        parts = []
        if self.above():
            parts.append("above the limit: " + ", ".join(self.above()))
        if self.failures:
            parts.append("not measured: " + ", ".join(self.failures))
        return "; ".join(parts)


def count_command(figure, measurements, qt, report):
    pair = getattr(measurements, figure.name)()
    unit = "instructions" if figure.name in commands.COUNTED else figure.floor.split()[0]
    report.add(figure.name, unit, pair, 1, figure.limit(qt))


def count_bench(figure, bench, report):
    unit = "bytes" if figure.name in bench.heap else "instructions"
    factor = bench.factors[figure.name]
    report.add(figure.name, unit, bench.count(figure.name), factor, figure.limit(bench.qt))
    if figure.time_limit:
        report.add(figure.name + ", time", "ns", bench.pair("--best", figure.name), factor,
                   figure.time_limit)


def count(bench, wanted, report, measurements):
    for figure in wanted:
        try:
            if figure.name in bench.factors:
                count_bench(figure, bench, report)
            else:
                count_command(figure, measurements, bench.qt, report)
        except Exception as error:  # the other figures are measured all the same
            report.failures[figure.name] = f"{type(error).__name__}: {error}"


def measure_times(bench, wanted, report, repetitions):
    timed = [figure.name for figure in wanted
             if figure.name in bench.factors and figure.name not in bench.heap]
    times = bench.times(timed, repetitions)
    for name in timed:
        report.add(name, "ns", (times[name + "/value"], times[name + "/floor"]),
                   bench.factors[name])


def select(names):
    unknown = set(names) - {figure.name for figure in figures.FIGURES} - {"quick"}
    if unknown:
        sys.exit("no such figure: " + ", ".join(sorted(unknown)))
    return [figure for figure in figures.FIGURES
            if not names or figure.name in names or (figure.is_quick and "quick" in names)]


def parse_arguments():
    parser = argparse.ArgumentParser()
    parser.add_argument("build")
    parser.add_argument("--count", action="store_true")
    parser.add_argument("--figures", default="", metavar="NAME,NAME...")
    parser.add_argument("--repetitions", type=int, default=9)
    return parser.parse_args()


def main():
    options = parse_arguments()
    wanted = select([name for name in options.figures.split(",") if name])
    bench = Bench(options.build)
    report = Report()
    if options.count:
        count(bench, wanted, report, commands.Commands(options.build, bench.qt))
    else:
        measure_times(bench, wanted, report, options.repetitions)
    report.print()
    report.write(f"{options.build}/summary.json")
    if options.count and report.verdict():
        sys.exit(report.verdict())


if __name__ == "__main__":
    main()
