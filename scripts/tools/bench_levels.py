# SPDX-License-Identifier: MIT
"""Builds a progressive mesh and extracts levels from it. A part of bench_jobs.py.

A job loads only the part of a .kvm that its level needs. korvalite_bench loads the whole file and
otherwise does the same as a job. Both are compared with decimating from scratch.
"""
import sys

import bench_report
import tool_runs

SIZE = 4_000_000  # triangles
QUICK_SIZE = 500_000
PERCENTS = (1, 10, 50)
WAYS = ("direct", "partial", "full")
# Goals for extracting a level of 1 percent by partial load.
BYTES_PER_VERTEX_AT_1 = 45
TIMES_FASTER_AT_1 = 20
HEADINGS = {
    "kvm": "Building a progressive mesh, and walking all of its splits up and down in memory:",
    "levels": "Time for a level, from start to end, by decimation, partial load and full load;\n"
              "bytes are peak memory per original vertex:",
}


def measure(tools, folder, quick):
    """Returns one row for building the mesh, then one for each level."""
    size = QUICK_SIZE if quick else SIZE
    mesh, kvm = folder / "mesh.Vok", folder / "mesh.kvm"
    print(f"{size:,} triangles into a .kvm, and levels out of it", file=sys.stderr)
    bench_report.run_bench(tools.bench, "--write-mesh", size, mesh)
    build = run(tools, folder, "Build progressive mesh", mesh, kvm)
    walks, = bench_report.run_bench(tools.bench, "--levels", kvm)
    built = walks | {"triangles": size, "bytes": kvm.stat().st_size} | named("build", build)
    return [built] + [measure_level(tools, folder, percent) | {"vertices": walks["vertices"]}
                      for percent in PERCENTS]


def measure_level(tools, folder, percent):
    mesh, kvm = folder / "mesh.Vok", folder / "mesh.kvm"
    direct, partial, full = (folder / f"{way}.Vok" for way in WAYS)
    target = ("DecimationTargetPourcent", percent)
    runs = {"direct": run(tools, folder, "Decimate mesh", mesh, direct, target),
            "partial": run(tools, folder, "Decimate progressive mesh", kvm, partial, target),
            "full": run_full_load(tools, folder, kvm, full, percent)}
    # If the levels differ, the work was not the same.
    if partial.read_bytes() != full.read_bytes():
        raise tool_runs.RunError(f"{percent} %: partial and full load give different results")
    if partial.stat().st_size != direct.stat().st_size:
        raise tool_runs.RunError(f"{percent} %: the level and the decimated mesh differ in size")
    values = {"percent": percent}
    for way, result in runs.items():
        values |= named(way, result)
    return values


def named(name, result):
    return {f"{name} seconds": result.seconds, f"{name} peak": result.peak_bytes}


def run(tools, folder, kind, source, output, *keys):
    job = folder / "bench.kvc"
    tool_runs.write_job(job, [[("InputFile", source), ("OutputFile", output), *keys]], kind=kind)
    result = tool_runs.run_job(tools.tool, job)
    if not output.exists():
        raise tool_runs.RunError(f"'{kind}' did not write {output.name}")
    return result


def run_full_load(tools, folder, kvm, output, percent):
    errors = folder / "errors.txt"
    status, result = tool_runs.run_measured(
        [str(tools.bench), "--full-level", str(kvm), str(output), str(percent)], errors)
    if status != 0:
        raise tool_runs.RunError(errors.read_text(encoding="utf-8").strip())
    return result


def tables(rows):
    return {"kvm": kvm_table(rows[0]), "levels": level_table(rows[1:])}


def kvm_table(built):
    vertices = built["vertices"]
    peak = built["build peak"]
    return tool_runs.table([
        ("triangles", "vertices", "build s", "peak MB", "bytes/vertex", "file MB", "splits",
         "splits up/s", "splits down/s"),
        (f"{built['triangles']:,.0f}", f"{vertices:,.0f}", f"{built['build seconds']:.2f}",
         f"{peak / tool_runs.MEGABYTE:.0f}", f"{peak / vertices:.1f}",
         f"{built['bytes'] / tool_runs.MEGABYTE:.0f}", f"{built['splits']:,.0f}",
         f"{built['splits'] / built['up']:,.0f}", f"{built['splits'] / built['down']:,.0f}")])


def level_table(levels):
    rows = [("level", "decimated s", "bytes", "partial s", "faster", "bytes", "full s", "faster",
             "bytes")]
    for level in levels:
        cells = [f"{level['percent']:.0f} %"]
        for way in WAYS:
            cells.append(f"{level[f'{way} seconds']:.3f}")
            if way != "direct":
                cells.append(f"{times_faster(level, way):.0f} x")
            cells.append(f"{bytes_per_vertex(level, way):.1f}")
        rows.append(tuple(cells))
    return tool_runs.table(rows)


def times_faster(level, way):
    return level["direct seconds"] / level[f"{way} seconds"]


def bytes_per_vertex(level, way):
    return level[f"{way} peak"] / level["vertices"]


def complaints(rows):
    level = next(row for row in rows[1:] if row["percent"] == 1)
    found = []
    if times_faster(level, "partial") < TIMES_FASTER_AT_1:
        found.append(f"1 % by partial load is not {TIMES_FASTER_AT_1} times faster than decimating")
    if bytes_per_vertex(level, "partial") > BYTES_PER_VERTEX_AT_1:
        found.append(f"1 % by partial load takes more than {BYTES_PER_VERTEX_AT_1} bytes per vertex")
    return found
