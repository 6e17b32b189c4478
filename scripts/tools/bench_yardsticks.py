# SPDX-License-Identifier: MIT
"""Simplifies the same mesh with other libraries, in turns with the tool. A part of bench_jobs.py.

All simplify to the same number of triangles in their standard settings. Of the others, only the call
is timed; of the tool, the whole job, from the start of the process to the written file. Times are of
the processor, with one thread. Distances are two-sided, as korva measures them.
"""
import json
import subprocess
import sys

import bench_report
import tool_runs

SIZES = (100_000, 1_000_000, 4_000_000)  # triangles
QUICK_SIZES = SIZES[:1]
PROGRAMS = (
    ("VTK, quadric decimation", "vtk", ""),
    ("CGAL, Garland-Heckbert", "cgal", "garland-heckbert"),
    ("CGAL, Lindstrom-Turk", "cgal", "lindstrom-turk"),
    ("OpenMesh, quadrics", "openmesh", ""),
    ("meshoptimizer", "meshoptimizer", ""),
)
HEADINGS = {"yardsticks": "To 10 % of the vertices, on one thread; times over that of the tool:"}
OURS = "Korvalite, whole job"
distances = {}  # of each mesh and program, which are the same in every round


def measure(tools, folder, quick):
    rows = []
    for size in QUICK_SIZES if quick else SIZES:
        rows += measure_size(tools, folder, size)
    return rows


def measure_size(tools, folder, size):
    mesh, obj, ours = folder / "mesh.Vok", folder / "mesh.obj", folder / "ours.obj"
    bench_report.run_bench(tools.bench, "--write-mesh", size, mesh)
    korva(tools, "convert", mesh, obj)
    job = folder / "job.kvc"
    tool_runs.write_job(job, [[("InputFile", mesh), ("OutputFile", ours),
                               ("DecimationTargetPourcent", 10)]])
    print(f"{size:,} triangles with {OURS}", file=sys.stderr)
    cpu = tool_runs.run_job(tools.tool, job).cpu_seconds
    triangles = sum(line.startswith("f ") for line in ours.open(encoding="ascii"))
    rows = [row_of(tools, size, OURS, cpu, cpu, obj, ours)]
    for name, program, variant in PROGRAMS:
        path = tools.tool.parents[1] / "yardsticks" / f"yardstick_{program}"
        if not path.exists():
            continue
        print(f"{size:,} triangles with {name}", file=sys.stderr)
        result = folder / f"{program}.obj"
        said = subprocess.run([path, obj, str(triangles), result, variant], check=True,
                              stdout=subprocess.PIPE, text=True).stdout
        seconds = bench_report.values_of(said.strip())["cpu"]
        rows.append(row_of(tools, size, name, seconds, cpu, obj, result))
    return rows


def korva(tools, *arguments):
    return subprocess.run([tools.tool.with_name("korva"), *map(str, arguments), "--quiet"],
                          check=True, stdout=subprocess.PIPE, text=True).stdout


def row_of(tools, size, program, seconds, ours, original, result):
    key = (size, program)
    if key not in distances:
        measured = json.loads(korva(tools, "measure", original, result, "--json"))
        distances[key] = [100 * measured[name] / measured["diagonal"] for name in ("largest", "rms")]
    largest, rms = distances[key]
    return {"triangles": size, "program": program, "cpu": seconds, "ours": ours,
            "largest": largest, "rms": rms}


def tables(rows):
    lines = [("triangles", " program", "CPU s", "over the tool", "RMS, % of diagonal",
              "largest, %")]
    for row in rows:
        lines.append((f"{row['triangles']:,.0f}", row["program"], f"{row['cpu']:.2f}",
                      f"{row['cpu'] / row['ours']:.2f}", f"{row['rms']:.4f}",
                      f"{row['largest']:.3f}"))
    return {"yardsticks": tool_runs.table(lines)}


def complaints(_rows):
    return []
