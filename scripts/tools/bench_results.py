# SPDX-License-Identifier: MIT
"""Keeps the figures of the tables as data, in bench/results.csv: one row per figure.

A figure that no table shows stays in the file until somebody changes it by hand.
"""
import csv
import pathlib

import bench_hard

RESULTS = pathlib.Path("bench/results.csv")
HEADER = ("benchmark", "mesh", "vertices", "threads", "metric", "value", "unit", "note")
# The columns of each table. A column is METRIC|UNIT or METRIC|UNIT|THREADS. With a '=' it is part of
# what identifies the figures of its row: '=form' becomes the first words of their metric.
TABLES = {
    "tool": ("=triangles", "=vertices", "time|s", "processor time|s", "vertices per second|1/s",
             "processor time per collapse|µs", "time per collapse over first row|ratio",
             "peak memory|MB", "peak memory per vertex|B", "memory budget per vertex|B"),
    "stages": ("=triangles", "read|s", "analyse|s", "collapse|s", "reorder|s", "write|s",
               "collapses|count", "loop time per collapse|µs",
               "time per collapse over first row|ratio"),
    "kvm": ("=triangles", "=vertices", "build time|s", "peak memory|MB", "peak memory per vertex|B",
            "file size|MB", "splits|count", "splits up per second|1/s", "splits down per second|1/s"),
    "levels": ("=form", "decimated time|s", "decimated peak memory per vertex|B", "partial time|s",
               "decimated over partial time|ratio", "partial peak memory per vertex|B",
               "full time|s", "decimated over full time|ratio", "full peak memory per vertex|B"),
    "threads": ("=threads", "analyse|s", "collapse|s", "collapse over one alone|ratio",
                "analyse and collapse over one alone|ratio", "peak memory per vertex|B"),
    "queue": ("=threads", "turns|count", "candidates per turn|count", "time per turn|µs",
              "time under lock per turn|µs", "share of time under lock|%",
              "share of time waiting for lock|%"),
    "cores": ("=threads", "predicted speedup|ratio"),
    "quality": ("=mesh", "RMS distance|diagonal|1", "RMS distance|diagonal|2",
                "RMS distance of two over one|ratio|2", "maximum distance|diagonal|1",
                "maximum distance|diagonal|2", "maximum distance of two over one|ratio|2"),
    "obj": ("=triangles", "=form", "=form", "file size|MB", "fprintf time|s", "saveObj time|s",
            "fprintf over saveObj time|ratio", "saveObj speed|MB/s", "copy time|s"),
    "drivers": ("=mesh", "=form", "=vertices", "vertices after|count", "time|s",
                "peak memory per vertex|B", "RMS distance|diagonal", "maximum distance|diagonal"),
    "hard": ("=mesh", "=vertices", "processor time|s", "processor time per collapse|µs",
             "time per collapse over first row|ratio"),
    "korva": ("=triangles", "=form", "processor time|s", "processor time over simplify|%",
              "peak memory|MB"),
}
# Meshes of the tables that do not name theirs.
MESHES = {"levels": "torus 4000000 triangles", "threads": "torus 1000000 triangles",
          "queue": "torus 1000000 triangles", "cores": "torus 1000000 triangles"}
THREADS = {"two-threads": "2"}
NOTES = {"kvm": "; splits per second of the best of 3 walks",
         "threads": "; medians of 5 runs in a round", "queue": "; medians of 5 runs in a round",
         "cores": "; computed from the times of two threads",
         "quality": "; medians of 5 runs in a round", "obj": "; times are the best of 3 turns"}


def cells(text):
    lines = [[cell.strip() for cell in line.strip("|").split("|")]
             for line in text.splitlines() if line.startswith("|")]
    return lines[:1] + lines[2:]  # without the rule below the heading


def number(text):
    return text.replace(",", "").rstrip(" x%")


def figures_of_row(table, row, note):
    known = {"mesh": MESHES.get(table, ""), "vertices": "", "threads": "1"}
    form = []
    found = []
    for column, cell in zip(TABLES[table], row):
        if column == "=form":
            form.append(cell)
            known["threads"] = THREADS.get(cell, known["threads"])
        elif column == "=threads":
            known["threads"] = cell if cell.isdigit() else "1"
            form += [] if cell.isdigit() else ["alone"]
        elif column == "=triangles" or cell.endswith(" triangles"):
            known["mesh"] = f"torus {number(cell.removesuffix(' triangles'))} triangles"
        elif column == "=mesh":
            known["mesh"] = cell.strip("`").replace(",", "")
        elif column == "=vertices":
            known["vertices"] = number(cell)
        else:
            metric, unit, *threads = column.split("|")
            words = f"{' '.join(form)}: {metric}" if form else metric
            found.append({"benchmark": table, "metric": words, "value": number(cell), "unit": unit,
                          "note": note} | ({"threads": threads[0]} if threads else {}))
    return [known | figure for figure in found]


def figures(tables, notes):
    """The figures of tables, given as the texts in the pages. Each row gets the note of its table."""
    found = []
    for table, text in tables.items():
        rows = cells(text)
        if table == "cores":
            rows = list(zip(*rows))  # the only table with one figure per column
        for row in rows[1:]:
            found += figures_of_row(table, row, notes[table])
    return with_vertices(found)


def with_vertices(found):
    """Fills in the vertices of a mesh where only another table shows them, or only the file."""
    vertices = {figure["mesh"]: figure["vertices"] for figure in found if figure["vertices"]}
    for figure in found:
        mesh = figure["mesh"]
        sample = pathlib.Path("samples") / f"{mesh}.Vok"
        if mesh not in vertices and sample.exists():
            vertices[mesh] = bench_hard.vertex_count(sample)
        figure["vertices"] = vertices.get(mesh, "")
    return found


def write(machine_line, tables):
    """Replaces the figures of the tables, and keeps those that no table shows."""
    kept = []
    if RESULTS.exists():
        with open(RESULTS, encoding="utf-8", newline="") as file:
            kept = [row for row in csv.DictReader(file) if row["benchmark"] not in TABLES]
    notes = {table: f"scripts/bench; {machine_line}{NOTES.get(table, '')}" for table in tables}
    rows = figures(tables, notes) + kept
    with open(RESULTS, "w", encoding="utf-8", newline="") as file:
        writer = csv.DictWriter(file, HEADER, lineterminator="\n")
        writer.writeheader()
        writer.writerows(rows)
