#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
"""Runs real jobs on the samples, checks each output and prints tables. See scripts/demo.

Usage: scripts/tools/demo_jobs.py TOOL    from the root of the repository
"""
import pathlib
import sys

import demo_levels
import tool_runs
from demo_run import OUTPUTS, run_to_percent, sample_path

# Sample, what it shows, percentages, additional keys of the job.
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


def row_of(sample, shows, percent, outcome):
    if outcome.run is None:
        return (sample, shows, f"{percent} %", "", "", "", "", "", "", outcome.check, "")
    source, mesh, run = outcome.source, outcome.mesh, outcome.run
    return (sample, shows, f"{percent} %", source.vertex_count, mesh.vertex_count,
            source.triangle_count, mesh.triangle_count, f"{run.seconds:.2f}",
            f"{run.peak_bytes / tool_runs.MEGABYTE:.1f}", outcome.check, outcome.output)


def is_above_target(outcome, percent):
    return outcome.run is not None and \
        outcome.mesh.vertex_count > outcome.source.vertex_count * percent // 100


def decimate_samples(tool):
    """Prints a row for each job; returns the number of jobs and the complaints."""
    rows = [(" sample", " shows", "asked", "vertices", "after", "triangles", "after", "seconds",
             "peak MB", " check", " output file")]
    complaints = []
    above = []
    for sample, shows, percents, keys in JOBS:
        for percent in percents:
            outcome = run_to_percent(tool, "Decimate mesh", sample, sample_path(sample),
                                     OUTPUTS / f"{sample}-{percent}.Vok", percent, keys)
            rows.append(row_of(sample, shows, percent, outcome))
            complaints += [f"{sample} at {percent} %: {text}" for text in outcome.faults]
            if is_above_target(outcome, percent):
                above.append(f"{sample} at {percent} %")
    print(tool_runs.table(rows))
    if above:
        print("\nAbove the target, because nothing else may be removed (ends and bends of seams, a mask"
              "\nof 0, borders and seams of a coloured mesh, the topology): "
              + ", ".join(above))
    return len(rows) - 1, complaints


def main():
    tool = pathlib.Path(sys.argv[1])
    OUTPUTS.mkdir(parents=True, exist_ok=True)
    job_count, complaints = decimate_samples(tool)
    level_job_count, level_complaints = demo_levels.take_levels(tool)
    complaints += level_complaints
    print(f"\nJob files and outputs are in {OUTPUTS}/.")
    for text in complaints:
        print(f"demo: {text}", file=sys.stderr)
    print(f"demo: {job_count + level_job_count} jobs, {len(complaints)} faults")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
