# SPDX-License-Identifier: MIT
"""Builds progressive meshes and extracts several levels from each. A part of demo_jobs.py."""
import tool_runs
from demo_run import OUTPUTS, run_job, run_to_percent, sample_path

SAMPLES = ("boot", "spot")
PERCENTS = (50, 25, 10, 5, 1)


def take_levels(tool):
    """Prints a row for each job; returns the number of jobs and the complaints."""
    rows = [(" sample", " level", "vertices", "triangles", "seconds", "decimated", "faster",
             " check", " output file")]
    complaints = []
    job_count = 0
    for sample in SAMPLES:
        kvm = OUTPUTS / f"{sample}.kvm"
        job_count += 1
        try:
            run = run_job(tool, "Build progressive mesh", sample_path(sample), kvm, {})
        except tool_runs.RunError as error:
            complaints.append(f"{sample} as progressive mesh: {error}")
            continue
        rows.append((sample, "all, as .kvm", "", "", f"{run.seconds:.3f}", "", "", "", kvm))
        for percent in PERCENTS:
            row, found = take_level(tool, sample, kvm, percent)
            rows.append(row)
            complaints += [f"{sample}, level of {percent} %: {text}" for text in found]
            job_count += 2
    print("\nLevels of progressive meshes, and the time to decimate to the same level:\n")
    print(tool_runs.table(rows))
    return job_count, complaints


def take_level(tool, sample, kvm, percent):
    """Returns a row of the table and the faults."""
    level = run_to_percent(tool, "Decimate progressive mesh", sample, kvm,
                           OUTPUTS / f"{sample}-level-{percent}.Vok", percent, {})
    direct = run_to_percent(tool, "Decimate mesh", sample, sample_path(sample),
                            OUTPUTS / f"{sample}-{percent}.Vok", percent, {})
    if level.run is None or direct.run is None:
        row = (sample, f"{percent} %", "", "", "", "", "", "FAILED", "")
        return row, level.faults + direct.faults
    found = level.faults + direct.faults
    if counts_of(level.mesh) != counts_of(direct.mesh):
        found.append("its vertex and triangle counts differ from those of the decimated mesh")
    row = (sample, f"{percent} %", *counts_of(level.mesh), f"{level.run.seconds:.3f}",
           f"{direct.run.seconds:.3f}", f"{direct.run.seconds / level.run.seconds:.0f} x",
           "OFF" if found else "sound", level.output)
    return row, found


def counts_of(mesh):
    return mesh.vertex_count, mesh.triangle_count
