#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Measures whole jobs on synthetic meshes and prints their costs. See scripts/bench.

Usage: scripts/tools/bench_jobs.py TOOL BENCH [--quick] [--repeat N] [--only PART] [--write-docs]
[--against OTHER_TOOL] from the root of the repository.

Every measurement is a separate process. With --repeat, each part runs N times and the medians are
shown. With --write-docs, the results replace the tables in docs/performance.md and their figures in
bench/results.csv. The exit status is 1 if a run fails or misses a goal of the project.

A part is a module with measure(tools, folder, quick), which returns rows of values; HEADINGS and
tables(rows), keyed by the names of the tables; and complaints(rows).
"""
import argparse
import pathlib
import subprocess
import sys
import tempfile
from collections import namedtuple

import bench_against
import bench_drivers
import bench_hard
import bench_korva
import bench_levels
import bench_obj
import bench_report
import bench_results
import bench_sizes
import bench_threads
import bench_yardsticks
import tool_runs

PARTS = {"sizes": bench_sizes, "threads": bench_threads, "levels": bench_levels, "obj": bench_obj,
         "drivers": bench_drivers, "hard": bench_hard, "korva": bench_korva}
# These compare with other programs, so they run only if asked for.
COMPARISONS = {"yardsticks": bench_yardsticks, "against": bench_against}
Tools = namedtuple("Tools", "tool bench against")


def an_absolute_path(text):
    return pathlib.Path(text).resolve()


def rounds_of(part, tools, quick, count):
    for turn in range(count):
        print(f"round {turn + 1} of {count}", file=sys.stderr)
        with tempfile.TemporaryDirectory(prefix="korvalite-bench-") as folder:
            yield part.measure(tools, pathlib.Path(folder), quick)


def arguments_of_command():
    parser = argparse.ArgumentParser(description="Measures whole jobs.")
    parser.add_argument("tool", type=an_absolute_path)
    parser.add_argument("bench", type=an_absolute_path)
    parser.add_argument("--quick", action="store_true", help="small meshes only")
    parser.add_argument("--repeat", type=int, default=1, help="medians of REPEAT rounds")
    parser.add_argument("--only", choices=[*PARTS, *COMPARISONS], help="only one part")
    parser.add_argument("--against", type=an_absolute_path, help="another build of the tool")
    parser.add_argument("--write-docs", action="store_true",
                        help="update docs/performance.md and bench/results.csv")
    arguments = parser.parse_args()
    if (arguments.only == "against") != (arguments.against is not None):
        parser.error("--against and --only against belong together")
    if arguments.write_docs and (arguments.quick or arguments.only):
        parser.error("--write-docs needs all parts in full: leave out --quick and --only")
    return arguments


def main():
    arguments = arguments_of_command()
    tools = Tools(arguments.tool, arguments.bench, arguments.against)
    machine = f"{bench_report.machine()}; medians of {arguments.repeat}"
    print(f"{machine}\nMB are 10^6 bytes.", flush=True)
    tables = {}
    complaints = []
    for name in [arguments.only] if arguments.only else PARTS:
        part = (PARTS | COMPARISONS)[name]
        rounds = rounds_of(part, tools, arguments.quick, arguments.repeat)
        rows = [bench_report.medians(runs) for runs in zip(*rounds)]
        for table, text in part.tables(rows).items():
            tables[table] = text
            print(f"\n{part.HEADINGS[table]}\n\n{text}", flush=True)
        complaints += part.complaints(rows)
    if arguments.write_docs:
        bench_report.write_page(machine, tables)
        bench_results.write(machine, tables)
    for text in complaints:
        print(f"bench: {text}", file=sys.stderr)
    return 1 if complaints else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (tool_runs.RunError, subprocess.CalledProcessError) as fault:
        sys.exit(f"bench: {fault}")
