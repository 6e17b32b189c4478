# SPDX-License-Identifier: MIT
"""Writes OBJ files with the tool's writer and line by line with fprintf. A part of bench_jobs.py.

Writes to the disk for temporary files and, if there is a folder for it, to memory: a disk that is
also used by others can be slower than either writer.
"""
import os
import pathlib
import shutil
import sys
import tempfile

import bench_report
import tool_runs

SIZE = 10_000_000  # triangles
QUICK_SIZE = 1_000_000
MEMORY = pathlib.Path("/dev/shm")
BYTES_PER_TRIANGLE = 3 * 90  # for three files
HEADINGS = {
    "obj": "Writing an OBJ, in wall seconds, compared with one fprintf per line (the same bytes) and with\n"
           "a plain copy of the finished file:",
}


def measure(tools, _, quick):
    size = QUICK_SIZE if quick else SIZE
    rows = []
    for place, folder in places(size):
        print(f"{size:,} triangles as OBJ, {place}", file=sys.stderr)
        rows += [row | {"triangles": size, "place": place} for row in
                 bench_report.run_bench(tools.bench, "--obj", size,
                                        environment={**os.environ, "TMPDIR": str(folder)})]
    return rows


def places(size):
    yield "disk", tempfile.gettempdir()
    if MEMORY.is_dir() and shutil.disk_usage(MEMORY).free > size * BYTES_PER_TRIANGLE:
        yield "memory", MEMORY


def tables(rows):
    lines = [("triangles", " mesh", " written to", "file MB", "fprintf s", "saveObj s", "ratio",
              "MB/s", "copy s")]
    for row in rows:
        megabytes = row["bytes"] / tool_runs.MEGABYTE
        lines.append((f"{row['triangles']:,.0f}", row["mesh"], row["place"], f"{megabytes:.0f}",
                      f"{row['printf']:.2f}", f"{row['saveObj']:.2f}",
                      f"{row['printf'] / row['saveObj']:.1f}", f"{megabytes / row['saveObj']:.0f}",
                      f"{row['copy']:.2f}"))
    return {"obj": tool_runs.table(lines)}


def complaints(_):
    return []
