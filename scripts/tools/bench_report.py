# SPDX-License-Identifier: MIT
"""Shared by the parts of scripts/bench: running korvalite_bench, medians, and the page of tables."""
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import textwrap

# In the page, a table of the report is between <!-- bench NAME --> and <!-- end -->.
PAGE = pathlib.Path("docs/performance.md")


def values_of(line):
    """The words NAME=VALUE of a line; values that are not numbers stay texts."""
    values = {}
    for word in line.split():
        name, value = word.split("=", 1)
        try:
            values[name] = float(value)
        except ValueError:
            values[name] = value
    return values


def run_bench(bench, *arguments, folder=None, environment=None):
    """Runs korvalite_bench and returns the values of each line that it prints."""
    said = subprocess.run([bench, *map(str, arguments)], check=True, cwd=folder,
                          env=environment, stdout=subprocess.PIPE, text=True).stdout
    return [values_of(line) for line in said.splitlines()]


def absolute(path):
    """A job resolves paths against its own folder."""
    return pathlib.Path(path).resolve()


def medians(runs):
    """The medians of the same row over several rounds."""
    return {name: value if isinstance(value, str) else statistics.median(run[name] for run in runs)
            for name, value in runs[0].items()}


def machine():
    """One line about the machine and the build, as far as they can be determined."""
    model = "unknown processor"
    try:
        with open("/proc/cpuinfo", encoding="utf-8") as info:
            model = next((line.split(":", 1)[1].strip() for line in info
                          if line.startswith("model name")), model)
    except OSError:
        pass
    gigabytes = os.sysconf("SC_PAGE_SIZE") * os.sysconf("SC_PHYS_PAGES") / 1e9
    words = [model, f"{os.cpu_count()} cores", f"{gigabytes:.0f} GB"]
    for command in (["g++", "--version"], ["git", "describe", "--always", "--dirty"]):
        if shutil.which(command[0]):
            said = subprocess.run(command, capture_output=True, text=True, check=False).stdout
            words += said.splitlines()[:1]
    if os.getloadavg()[0] > 1.5:
        words.append("with other work on the machine")
    return ", ".join(words)


def write_page(machine_line, tables):
    parts = {"machine": textwrap.fill(machine_line, 100), **tables}
    text = PAGE.read_text(encoding="utf-8")
    for name, part in parts.items():
        text = re.sub(f"(<!-- bench {name} -->\n).*?(?=<!-- end -->)",
                      lambda match, part=part: match[1] + part + "\n", text, flags=re.DOTALL)
    PAGE.write_text(text, encoding="utf-8")
