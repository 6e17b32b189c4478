# SPDX-License-Identifier: MIT
"""Writes OBJ files, by the tool's writer and line by line with fprintf. A part of bench_jobs.py."""
import sys

import bench_report
import tool_runs

SIZE = 10_000_000  # triangles
QUICK_SIZE = 1_000_000
HEADINGS = {
    "obj": "Writing an OBJ, in wall seconds, against one fprintf for each line (the same bytes), and\n"
           "against a plain copy of the finished file:",
}


def measure(tools, _, quick):
    size = QUICK_SIZE if quick else SIZE
    print(f"{size:,} triangles as OBJ", file=sys.stderr)
    return [row | {"triangles": size} for row in bench_report.run_bench(tools.bench, "--obj", size)]


def tables(rows):
    lines = [("triangles", " mesh", "file MB", "fprintf s", "saveObj s", "ratio", "MB/s", "copy s")]
    for row in rows:
        megabytes = row["bytes"] / tool_runs.MEGABYTE
        lines.append((f"{row['triangles']:,.0f}", row["mesh"], f"{megabytes:.0f}",
                      f"{row['printf']:.2f}", f"{row['saveObj']:.2f}",
                      f"{row['printf'] / row['saveObj']:.1f}", f"{megabytes / row['saveObj']:.0f}",
                      f"{row['copy']:.2f}"))
    return {"obj": tool_runs.table(lines)}


def complaints(_):
    return []
