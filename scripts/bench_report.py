# SPDX-License-Identifier: MIT
"""What the parts of scripts/bench share: running korvalite_bench, medians, and the pages."""
import os
import pathlib
import re
import shutil
import statistics
import subprocess
import textwrap

# A page shows a table of the report between <!-- bench NAME --> and <!-- end -->.
PAGES = ("README.md", "docs/architecture.md")


def values_of(line):
    """The words NAME=VALUE of a line; what is no number stays a text."""
    values = {}
    for word in line.split():
        name, value = word.split("=", 1)
        try:
            values[name] = float(value)
        except ValueError:
            values[name] = value
    return values


def run_bench(bench, *arguments, folder=None, environment=None):
    """Runs korvalite_bench; gives the values of each line that it prints."""
    said = subprocess.run([bench, *map(str, arguments)], check=True, cwd=folder,
                          env=environment, stdout=subprocess.PIPE, text=True).stdout
    return [values_of(line) for line in said.splitlines()]


def medians(runs):
    """One row out of the same row of several rounds."""
    return {name: value if isinstance(value, str) else statistics.median(run[name] for run in runs)
            for name, value in runs[0].items()}


def machine():
    """One line on the machine and the build, as far as it can be known."""
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


def write_pages(machine_line, tables):
    parts = {"machine": textwrap.fill(machine_line, 100), **tables}
    for page in map(pathlib.Path, PAGES):
        text = page.read_text(encoding="utf-8")
        for name, part in parts.items():
            text = re.sub(f"(<!-- bench {name} -->\n).*?(?=<!-- end -->)",
                          lambda match, part=part: match[1] + part + "\n", text, flags=re.DOTALL)
        page.write_text(text, encoding="utf-8")
