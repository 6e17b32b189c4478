#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs real jobs on the samples, checks each output and prints a table. See scripts/demo.

Usage: scripts/demo_jobs.py TOOL    from the root of the repository
"""
import pathlib
import sys

import check_vok
import tool_runs

SAMPLES = pathlib.Path("samples")
OUTPUTS = pathlib.Path("build/demo")

# Sample, what it shows, percentages, further keys of the job.
JOBS = [
    ("boot", "plain, a real model", (50, 10, 1), {}),
    ("synth-torus", "plain", (50, 10), {}),
    ("spot", "UVs with seams", (50, 10, 1), {}),
    ("synth-seams", "UVs in six charts", (10,), {}),
    ("spot-colored", "colours and UVs", (50, 10), {"UseVtxColorsCoef": 50}),
    ("spot-everything", "quads, UVs, mask, colours", (50,), {}),
    ("fish-masked", "a mask along x", (50, 10, 1), {}),
    ("synth-symmetric", "mirror symmetry", (50, 10, 1), {"Symmetry": "x"}),
]


def run_one(tool, sample, percent, keys):
    """Runs one job; gives its Run, the output's path and the faults found in it."""
    source_path = SAMPLES / f"{sample}.Vok"
    name = f"{sample}-{percent}"
    output = OUTPUTS / f"{name}.Vok"
    output.unlink(missing_ok=True)
    job = OUTPUTS / f"{name}.kvc"
    tool_runs.write_job(job, [[("InputFile", source_path), ("OutputFile", output),
                               ("DecimationTargetPourcent", percent), *keys.items()]])
    try:
        run = tool_runs.run_job(tool, job)
        source, mesh = check_vok.read_vok(source_path), check_vok.read_vok(output)
    except (tool_runs.RunError, check_vok.VokError) as error:
        return None, None, None, [str(error)]
    found = check_vok.faults(mesh, source, keys.get("Symmetry"))
    # The last collapse may be a mirrored pair, which takes two vertices.
    target = source.vertex_count * percent // 100
    if mesh.vertex_count < target - 1:
        found.append(f"only {mesh.vertex_count} vertices are left, but {target} were asked for")
    return run, source, mesh, found


def row_of(sample, shows, percent, result):
    run, source, mesh, found = result
    name = f"{sample}-{percent}"
    if run is None:
        return (sample, shows, f"{percent} %", "", "", "", "", "", "", "FAILED", "")
    return (sample, shows, f"{percent} %", source.vertex_count, mesh.vertex_count,
            source.triangle_count, mesh.triangle_count, f"{run.seconds:.2f}",
            f"{run.peak_bytes / tool_runs.MEGABYTE:.1f}", "OFF" if found else "sound",
            OUTPUTS / f"{name}.Vok")


def main():
    tool = pathlib.Path(sys.argv[1])
    OUTPUTS.mkdir(parents=True, exist_ok=True)
    rows = [(" sample", " shows", "asked", "vertices", "after", "triangles", "after", "seconds",
             "peak MB", " check", " output file")]
    complaints = []
    above = []
    for sample, shows, percents, keys in JOBS:
        for percent in percents:
            result = run_one(tool, sample, percent, keys)
            rows.append(row_of(sample, shows, percent, result))
            complaints += [f"{sample} at {percent} %: {text}" for text in result[3]]
            if result[2] is not None and \
                    result[2].vertex_count > result[1].vertex_count * percent // 100:
                above.append(f"{sample} at {percent} %")
    print(tool_runs.table(rows))
    if above:
        print("\nAbove the count asked for, because all that is left must stay (ends and bends of seams,"
              "\na mask of 0, borders and seams of a coloured mesh, the topology): "
              + ", ".join(above))
    print(f"\nJob files and outputs are in {OUTPUTS}/.")
    for text in complaints:
        print(f"demo: {text}", file=sys.stderr)
    print(f"demo: {len(rows) - 1} jobs, {len(complaints)} faults")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
