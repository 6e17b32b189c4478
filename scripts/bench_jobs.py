#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Decimates synthetic meshes of growing size and prints what each costs. See scripts/bench.

Usage: scripts/bench_jobs.py TOOL BENCH [--quick] [--repeat N] [--write-docs]
from the root of the repository.

Every measurement is a process of its own. What a collapse costs is told in processor time, which
others at work on the machine disturb less. With --repeat the whole row of sizes runs N times and the
medians are shown. With --write-docs they replace the tables in the pages that show them. The exit
status is 1 if a run fails or takes more memory than the budget.
"""
import argparse
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import sys
import tempfile

import tool_runs

SIZES = (500_000, 1_000_000, 2_000_000, 4_000_000, 10_000_000)  # triangles
QUICK_SIZES = SIZES[:2]
PERCENT = 10
# The memory that the tool may take for a plain mesh.
BUDGET_BYTES_PER_VERTEX = 130
BUDGET_BASE_BYTES = 32e6
# A page shows a part of the report between <!-- bench NAME --> and <!-- end -->.
PAGES = ("README.md", "docs/architecture.md")
STAGES = ("read", "analyse", "collapse", "reorder", "write")


def measure(tool, bench, folder, size):
    """Runs one size: the tool on a job, then the same work timed stage by stage."""
    mesh, output, job = folder / "mesh.Vok", folder / "out.Vok", folder / "bench.kvc"
    subprocess.run([bench, "--write-mesh", str(size), mesh], check=True)
    tool_runs.write_job(job, [[("InputFile", mesh), ("OutputFile", output),
                               ("DecimationTargetPourcent", PERCENT)]])
    run = tool_runs.run_job(tool, job)
    # The job's output must be the one that the stages make, or they are not the same work.
    expected = output.read_bytes()
    said = subprocess.run([bench, "--stages", mesh, output, str(PERCENT)], check=True, cwd=folder,
                          stdout=subprocess.PIPE, text=True).stdout
    if output.read_bytes() != expected:
        raise tool_runs.RunError(f"{size} triangles: the timed stages and the job differ")
    values = {name: float(value) for name, value in
              (word.split("=") for word in said.split())}
    values |= {"seconds": run.seconds, "cpu": run.cpu_seconds, "peak": run.peak_bytes}
    return values


def medians(runs):
    return {name: statistics.median(run[name] for run in runs) for name in runs[0]}


def tool_table(results):
    def micros(result):
        return 1e6 * result["cpu"] / result["collapses"]

    rows = [("triangles", "vertices", "seconds", "CPU s", "vertices/s", "µs/collapse", "ratio", "peak MB",
             "bytes/vertex", "budget")]
    for result in results:
        vertices = result["vertices"]
        budget = BUDGET_BYTES_PER_VERTEX + BUDGET_BASE_BYTES / vertices
        rows.append((f"{result['triangles']:,.0f}", f"{vertices:,.0f}", f"{result['seconds']:.2f}",
                     f"{result['cpu']:.2f}", f"{vertices / result['seconds']:,.0f}",
                     f"{micros(result):.2f}",
                     f"{micros(result) / micros(results[0]):.2f}",
                     f"{result['peak'] / tool_runs.MEGABYTE:.0f}",
                     f"{result['peak'] / vertices:.1f}", f"{budget:.1f}"))
    return tool_runs.table(rows)


def stage_table(results):
    def micros(result):
        return 1e6 * result["collapse"] / result["collapses"]

    rows = [("triangles", *(f"{stage} s" for stage in STAGES), "collapses", "µs/collapse", "ratio")]
    for result in results:
        rows.append((f"{result['triangles']:,.0f}", *(f"{result[stage]:.2f}" for stage in STAGES),
                     f"{result['collapses']:,.0f}", f"{micros(result):.2f}",
                     f"{micros(result) / micros(results[0]):.2f}"))
    return tool_runs.table(rows)


def machine():
    """One line on the machine and the build, as far as it can be known."""
    model = "unknown processor"
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as info:
            model = next((line.split(":", 1)[1].strip() for line in info
                          if line.startswith("model name")), model)
    except OSError:
        pass
    gigabytes = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 1e9
    words = [model, f"{os.cpu_count()} cores", f"{gigabytes:.0f} GB"]
    for command in (["g++", "--version"], ["git", "describe", "--always", "--dirty"]):
        if shutil.which(command[0]):
            said = subprocess.run(command, capture_output=True, text=True, check=False).stdout
            words += said.splitlines()[:1]
    if os.getloadavg()[0] > 1.5:
        words.append("with other work on the machine")
    return ", ".join(words)


def write_pages(parts):
    for page in map(pathlib.Path, PAGES):
        text = page.read_text(encoding="utf-8")
        for name, part in parts.items():
            text = re.sub(f"(<!-- bench {name} -->\n).*?(?=<!-- end -->)",
                          lambda match, part=part: match[1] + part + "\n", text, flags=re.DOTALL)
        page.write_text(text, encoding="utf-8")


def main():
    parser = argparse.ArgumentParser(description="Measures whole decimations.")
    parser.add_argument("tool", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("bench", type=lambda text: pathlib.Path(text).resolve())
    parser.add_argument("--quick", action="store_true", help="the two smallest sizes only")
    parser.add_argument("--repeat", type=int, default=1, help="medians of so many rounds")
    parser.add_argument("--write-docs", action="store_true", help="renew the tables in the pages")
    arguments = parser.parse_args()
    if arguments.quick and arguments.write_docs:
        parser.error("--write-docs wants all sizes: leave out --quick")
    sizes = QUICK_SIZES if arguments.quick else SIZES
    rounds = []
    with tempfile.TemporaryDirectory(prefix="korvalite-bench-") as name:
        for turn in range(arguments.repeat):
            rounds.append([])
            for size in sizes:
                print(f"round {turn + 1} of {arguments.repeat}: {size:,} triangles to {PERCENT} %",
                      file=sys.stderr)
                rounds[-1].append(measure(arguments.tool, arguments.bench, pathlib.Path(name), size))
    results = [medians(runs) for runs in zip(*rounds)]
    parts = {"machine": f"{machine()}; medians of {arguments.repeat}",
             "tool": tool_table(results), "stages": stage_table(results)}
    print(f"{parts['machine']}\n")
    print(f"The tool, from start to end, plain metric, to {PERCENT} % on one thread (MB: 10^6):\n")
    print(parts["tool"])
    print("\nThe same work, CPU seconds of each stage; a collapse is timed in the loop alone:\n")
    print(parts["stages"])
    if arguments.write_docs:
        write_pages(parts)
    over = [result for result in results if result["peak"] >
            BUDGET_BASE_BYTES + BUDGET_BYTES_PER_VERTEX * result["vertices"]]
    for result in over:
        print(f"bench: {result['triangles']:,.0f} triangles take more memory than the budget",
              file=sys.stderr)
    return 1 if over else 0


if __name__ == "__main__":
    try:
        sys.exit(main())
    except (tool_runs.RunError, subprocess.CalledProcessError) as fault:
        sys.exit(f"bench: {fault}")
