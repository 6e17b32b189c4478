# SPDX-License-Identifier: MIT
"""Decimates meshes of increasing size, with the tool and stage by stage. A part of bench_jobs.py.

The cost of a collapse is in processor time, which other work on the machine affects less.
"""
import sys

import bench_report
import tool_runs

SIZES = (500_000, 1_000_000, 2_000_000, 4_000_000, 10_000_000)  # triangles
QUICK_SIZES = SIZES[:2]
PERCENT = 10
# The memory that the tool may use for a plain mesh.
BUDGET_BYTES_PER_VERTEX = 130
BUDGET_BASE_BYTES = 32e6
STAGES = ("read", "analyse", "collapse", "reorder", "write")
HEADINGS = {
    "tool": f"The tool, from start to end, plain metric, to {PERCENT} % on one thread:",
    "stages": "The same work, in CPU seconds per stage; the time per collapse counts only the loop:",
}


def measure(tools, folder, quick):
    return [measure_size(tools, folder, size) for size in (QUICK_SIZES if quick else SIZES)]


def measure_size(tools, folder, size):
    """Measures one size: runs the tool on a job, then times the same work stage by stage."""
    print(f"{size:,} triangles to {PERCENT} %", file=sys.stderr)
    mesh, output, job = folder / "mesh.Vok", folder / "out.Vok", folder / "bench.kvc"
    bench_report.run_bench(tools.bench, "--write-mesh", size, mesh)
    tool_runs.write_job(job, [[("InputFile", mesh), ("OutputFile", output),
                               ("DecimationTargetPourcent", PERCENT)]])
    run = tool_runs.run_job(tools.tool, job)
    # If the outputs of the job and the stages differ, the work was not the same.
    expected = output.read_bytes()
    values, = bench_report.run_bench(tools.bench, "--stages", mesh, output, PERCENT, folder=folder)
    if output.read_bytes() != expected:
        raise tool_runs.RunError(f"{size} triangles: the timed stages and the job differ")
    return values | {"seconds": run.seconds, "cpu": run.cpu_seconds, "peak": run.peak_bytes}


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


def tables(rows):
    return {"tool": tool_table(rows), "stages": stage_table(rows)}


def complaints(rows):
    return [f"{row['triangles']:,.0f} triangles take more memory than the budget" for row in rows
            if row["peak"] > BUDGET_BASE_BYTES + BUDGET_BYTES_PER_VERTEX * row["vertices"]]
