# SPDX-License-Identifier: MIT
"""Runs the drivers side by side on the same meshes. A part of bench_jobs.py.

Jobs can only use the low-memory driver; korvalite_bench runs them all, each in its own process, and
measures how far the result is from the input.
"""
import pathlib
import sys

import bench_report
import tool_runs

SIZE = 1_000_000  # triangles
QUICK_SIZE = 100_000
SAMPLE = pathlib.Path("samples/boot.Vok")
PERCENT = 10
HEADINGS = {
    "drivers": f"The drivers, each to {PERCENT} %; bytes are peak memory per vertex of the input;\n"
               "RMS and maximum distance between input and result, as fractions of the diagonal:",
}


def measure(tools, folder, quick):
    size = QUICK_SIZE if quick else SIZE
    mesh = folder / "mesh.Vok"
    bench_report.run_bench(tools.bench, "--write-mesh", size, mesh)
    rows = []
    for name, path in ((f"{size:,} triangles", mesh), (f"`{SAMPLE.stem}`", SAMPLE)):
        print(f"{path.name} with each driver", file=sys.stderr)
        rows += [row | {"mesh": name}
                 for row in bench_report.run_bench(tools.bench, "--drivers", path, PERCENT)]
    return rows


def tables(rows):
    lines = [(" mesh", " driver", "vertices", "after", "seconds", "bytes/vertex", "RMS", "maximum")]
    for row in rows:
        lines.append((row["mesh"], row["driver"], f"{row['vertices']:,.0f}", f"{row['after']:,.0f}",
                      f"{row['seconds']:.2f}", f"{row['peak'] / row['vertices']:.0f}",
                      f"{row['rms']:.6f}", f"{row['max']:.6f}"))
    return {"drivers": tool_runs.table(lines)}


def complaints(_):
    return []
