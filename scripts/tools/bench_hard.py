# SPDX-License-Identifier: MIT
"""Decimates everyday meshes that are harder than a scan: flat ground, hubs, many candidates for a
mirror image. A part of bench_jobs.py.

Compares the cost of a collapse with that on the first mesh, a relief that is nowhere flat.
"""
import os
import sys
from collections import namedtuple

import bench_report
import check_vok
import tool_runs

PERCENT = 10
Case = namedtuple("Case", "kind size keys is_quick", defaults=((), False))
CASES = (
    Case("relief", 300, is_quick=True),
    Case("terrain", 300, is_quick=True),
    Case("terrain", 400),
    Case("terrain", 800),
    Case("plate", 300, is_quick=True),
    Case("plate", 1000),
    Case("cube", 120, is_quick=True),
    Case("cylinders", 512, is_quick=True),
    Case("fan", 5000, is_quick=True),
    Case("fan", 10000),
    Case("patches", 550, (("Symmetry", "x"),)),
)
HEADINGS = {
    "hard": f"Meshes with flat parts, hubs and equal costs to {PERCENT} % on one thread, from start to end;\n"
            "the ratio compares the cost of a collapse with the first row:",
}


def measure(tools, folder, quick):
    return [measure_case(tools, folder, case) for case in CASES if case.is_quick or not quick]


def measure_case(tools, folder, case):
    name = ", ".join([f"{case.kind} {case.size}", *(f"{key} = {word}" for key, word in case.keys)])
    print(f"{name} to {PERCENT} %", file=sys.stderr)
    mesh, output, job = folder / "mesh.Vok", folder / "out.Vok", folder / "bench.kvc"
    bench_report.run_bench(tools.bench, "--hard-mesh", case.kind, case.size, mesh)
    tool_runs.write_job(job, [[("InputFile", mesh), ("OutputFile", output),
                               ("DecimationTargetPourcent", PERCENT), *case.keys]])
    run = tool_runs.run_job(tools.tool, job)
    before, after = vertex_count(mesh), vertex_count(output)
    if after >= before:
        raise tool_runs.RunError(f"{name}: the job removed no vertex")
    return {"mesh": name, "vertices": before, "collapses": before - after, "cpu": run.cpu_seconds}


def vertex_count(path):
    """Reads only the count: more memory in this process would distort the peaks of other parts."""
    with open(path, "rb") as file:
        file.seek(check_vok.FILE_HEADER_BYTES)
        while True:
            tag, size, count, _ = check_vok.BLOCK_HEADER.unpack(
                file.read(check_vok.BLOCK_HEADER.size))
            if tag == check_vok.POINTS:
                return count
            file.seek(size - check_vok.BLOCK_HEADER.size, os.SEEK_CUR)


def tables(rows):
    def micros(row):
        return 1e6 * row["cpu"] / row["collapses"]

    lines = [(" mesh", "vertices", "CPU s", "µs/collapse", "ratio")]
    for row in rows:
        lines.append((row["mesh"], f"{row['vertices']:,.0f}", f"{row['cpu']:.2f}",
                      f"{micros(row):.2f}", f"{micros(row) / micros(rows[0]):.2f}"))
    return {"hard": tool_runs.table(lines)}


def complaints(_):
    return []
