# SPDX-License-Identifier: MIT
"""Runs the command korva: formats in and out, a whole simplification, and measuring. A part of
bench_jobs.py.

Times are of the processor, with one thread. A conversion reads a file and writes it again in the same
format.
"""
import sys

import bench_report
import tool_runs

SIZES = (1_000_000, 10_000_000)  # triangles
QUICK_SIZES = SIZES[:1]
# The goals for a conversion, as a share of the simplification.
MOST = {"ply": 0.15, "stl": 0.15, "glb": 0.15, "obj": 0.5}
HEADINGS = {
    "korva": "The command on one thread; `convert` reads a file and writes it again in the same format:",
}


def measure(tools, folder, quick):
    korva = tools.tool.with_name("korva")
    if not korva.exists():
        raise tool_runs.RunError(f"{korva} was not built: its libraries are missing")
    rows = []
    for size in QUICK_SIZES if quick else SIZES:
        print(f"{size:,} triangles with korva", file=sys.stderr)
        rows += measure_size(tools.bench, korva, folder, size)
    return rows


def measure_size(bench, korva, folder, size):
    mesh, ply, small = folder / "mesh.Vok", folder / "mesh.ply", folder / "small.ply"
    bench_report.run_bench(bench, "--write-mesh", size, mesh)
    rows = []
    for suffix in MOST:
        source, copy = folder / f"mesh.{suffix}", folder / f"copy.{suffix}"
        run(korva, folder, "convert", mesh, source)
        again = run(korva, folder, "convert", source, copy, "--no-repair")
        rows.append(row_of(size, f"convert .{suffix}", again))
        copy.unlink()
        if suffix != "ply":
            source.unlink()
    simplified = run(korva, folder, "simplify", ply, small, "--to", "10%", "--threads", "1")
    measured = run(korva, folder, "measure", ply, small, "--threads", "1")
    rows += [row_of(size, "simplify .ply to 10 %", simplified),
             row_of(size, "measure the result", measured)]
    return [row | {"whole": simplified.cpu_seconds} for row in rows]


def run(korva, folder, *arguments):
    errors = folder / "errors"
    status, result = tool_runs.run_measured([str(korva), *map(str, arguments), "--quiet"], errors)
    if status != 0:
        raise tool_runs.RunError(f"korva ended with status {status}: {errors.read_text()}")
    return result


def row_of(size, command, result):
    return {"triangles": size, "command": command, "cpu": result.cpu_seconds,
            "peak": result.peak_bytes}


def tables(rows):
    lines = [("triangles", " command", "CPU s", "of simplify", "peak MB")]
    for row in rows:
        lines.append((f"{row['triangles']:,.0f}", row["command"], f"{row['cpu']:.2f}",
                      f"{row['cpu'] / row['whole']:.0%}", f"{row['peak'] / tool_runs.MEGABYTE:.0f}"))
    return {"korva": tool_runs.table(lines)}


def complaints(rows):
    return [f"{row['triangles']:,.0f} triangles: {row['command']} takes more than "
            f"{MOST[suffix]:.0%} of the simplification"
            for row in rows for suffix in MOST
            if row["command"] == f"convert .{suffix}" and row["cpu"] > MOST[suffix] * row["whole"]]
