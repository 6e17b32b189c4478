# SPDX-License-Identifier: MIT
"""Compares the tool with another build of it, in turns. A part of bench_jobs.py.

Both do the same jobs, one after the other, and the one that begins changes from pair to pair. Times
are of the processor. The outputs must be the same bytes.
"""
import statistics
import sys

import bench_report
import tool_runs

PAIRS = 5
SIZES = (100_000, 1_000_000, 4_000_000)  # triangles
QUICK_SIZES = SIZES[:1]
SAMPLES = ("boot", "spot", "spot-colored", "spot-everything")
HEADINGS = {"against": f"Over the other build, medians of {PAIRS} pairs; to 10 % of the vertices:"}


def measure(tools, folder, quick):
    mesh = folder / "mesh.Vok"
    rows = []
    for size in QUICK_SIZES if quick else SIZES:
        bench_report.run_bench(tools.bench, "--write-mesh", size, mesh)
        rows.append(compare(tools, folder, f"torus, {size:,} triangles", mesh))
    for sample in SAMPLES:
        rows.append(compare(tools, folder, sample, f"samples/{sample}.Vok"))
    return rows


def compare(tools, folder, name, mesh):
    print(f"{name} against {tools.against}", file=sys.stderr)
    times = {tools.tool: [], tools.against: []}
    outputs = set()
    for pair in range(PAIRS):
        for tool in list(times)[:: 1 if pair % 2 == 0 else -1]:
            output, job = folder / "out.Vok", folder / "job.kvc"
            tool_runs.write_job(job, [[("InputFile", bench_report.absolute(mesh)),
                                       ("OutputFile", output),
                                       ("DecimationTargetPourcent", 10)]])
            times[tool].append(tool_runs.run_job(tool, job).cpu_seconds)
            outputs.add(output.read_bytes())
    ratios = [new / old for new, old in zip(times[tools.tool], times[tools.against])]
    return {"mesh": name, "this": statistics.median(times[tools.tool]),
            "other": statistics.median(times[tools.against]), "ratio": statistics.median(ratios),
            "least": min(ratios), "most": max(ratios), "outputs": len(outputs)}


def tables(rows):
    lines = [(" mesh", "CPU s", "other CPU s", "ratio", "from", "to")]
    for row in rows:
        lines.append((row["mesh"], f"{row['this']:.2f}", f"{row['other']:.2f}",
                      f"{row['ratio']:.3f}", f"{row['least']:.3f}", f"{row['most']:.3f}"))
    return {"against": tool_runs.table(lines)}


def complaints(rows):
    return [f"{row['mesh']}: the other build writes other bytes"
            for row in rows if row["outputs"] > 1]
