# SPDX-License-Identifier: MIT
"""Runs the tool like a host, with a job file and a marker next to it, and measures the process."""
import os
import pathlib
import time
from dataclasses import dataclass

PROGRESS_RECORD_BYTES = 176
MEGABYTE = 1e6


class RunError(Exception):
    """A run did not follow the protocol."""


@dataclass
class Run:
    seconds: float
    cpu_seconds: float
    peak_bytes: int  # of resident memory


def write_job(path, entries, settings=(), kind="Decimate mesh"):
    """Writes a job file; each entry is a list of (key, value), and all are of the same kind."""
    lines = ["UseProgressBar=YES"] + [f"{key}={value}" for key, value in settings]
    for entry in entries:
        lines += [f"StartBatch={kind}"]
        lines += [f"{key}={value}" for key, value in entry]
        lines += ["EndBatch"]
    pathlib.Path(path).write_text("\n".join(lines) + "\n", encoding="utf-8")


def own_peak_bytes():
    return high_water_mark("self")


def high_water_mark(process):
    """The peak resident memory of a running process in bytes; 0 if it has ended."""
    try:
        with open(f"/proc/{process}/status", encoding="ascii") as status:
            for line in status:
                if line.startswith("VmHWM:"):
                    return 1024 * int(line.split()[1])
    except OSError:
        pass
    return 0


def run_measured(command, error_path):
    """Runs a command to its end; returns its exit status and a Run.

    The system's own figure for a child's peak starts at the size of its parent, so it is exact only
    for a child that outgrows this process. For a smaller one, the high-water mark is read while it
    runs.
    """
    floor = own_peak_bytes()
    with open(error_path, "wb") as errors:
        begin = time.perf_counter()
        child = os.posix_spawn(command[0], command, os.environ,
                               file_actions=[(os.POSIX_SPAWN_DUP2, errors.fileno(), 1),
                                             (os.POSIX_SPAWN_DUP2, errors.fileno(), 2)])
        seen = 0
        while True:
            ended, status, usage = os.wait4(child, os.WNOHANG)
            if ended:
                break
            seen = max(seen, high_water_mark(child))
            time.sleep(min(0.0005 + (time.perf_counter() - begin) / 100, 0.05))
        seconds = time.perf_counter() - begin
    reported = 1024 * usage.ru_maxrss
    peak = reported if reported > floor or not seen else seen
    run = Run(seconds, usage.ru_utime + usage.ru_stime, peak)
    return os.waitstatus_to_exitcode(status), run


def run_job(tool, job):
    """Creates the marker next to the job and runs the tool. RunError if anything goes wrong."""
    job = pathlib.Path(job)
    marker = job.with_name(job.name + ".running")
    marker.write_bytes(b"\x01" + bytes(PROGRESS_RECORD_BYTES - 1))
    errors = job.with_name(job.name + ".errors")
    status, run = run_measured([str(tool), str(job)], errors)
    said = errors.read_text(encoding="utf-8", errors="replace").strip()
    errors.unlink()
    if status != 0:
        raise RunError(f"the tool ended with status {status}" + (f": {said}" if said else ""))
    if said:
        raise RunError(f"the tool showed a message: {said}")
    if marker.exists():
        raise RunError(f"the tool left the marker {marker}")
    return run


def table(rows):
    """A Markdown table with numbers right-aligned; titles of text columns start with a blank."""
    titles, *lines = rows
    widths = [max(len(str(row[i])) for row in rows) for i in range(len(titles))]
    left = [title.startswith(" ") for title in titles]

    def render(row):
        cells = (str(cell).strip().ljust(width) if is_left else str(cell).rjust(width)
                 for cell, width, is_left in zip(row, widths, left))
        return "| " + " | ".join(cells) + " |"

    rule = ("-" * (width + 2) if is_left else "-" * (width + 1) + ":"
            for width, is_left in zip(widths, left))
    return "\n".join([render(titles), "|" + "|".join(rule) + "|"] + [render(row) for row in lines])
