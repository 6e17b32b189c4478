# SPDX-License-Identifier: MIT
"""Shared by the parts of scripts/demo: runs, measures and checks one job on one sample."""
import pathlib
from dataclasses import dataclass, field

import check_vok
import tool_runs

SAMPLES = pathlib.Path("samples")
OUTPUTS = pathlib.Path("build/demo")


@dataclass
class Outcome:
    output: pathlib.Path
    run: tool_runs.Run = None  # None, as are the meshes, if the job failed
    source: check_vok.Mesh = None
    mesh: check_vok.Mesh = None
    faults: list = field(default_factory=list)

    @property
    def check(self):
        return "FAILED" if self.run is None else "OFF" if self.faults else "sound"


def sample_path(sample):
    return SAMPLES / f"{sample}.Vok"


def run_job(tool, kind, source, output, keys):
    """Runs a job with one entry, next to its output; RunError if anything goes wrong."""
    output.unlink(missing_ok=True)
    job = output.with_suffix(".kvc")
    tool_runs.write_job(job, [[("InputFile", source), ("OutputFile", output), *keys.items()]],
                        kind=kind)
    run = tool_runs.run_job(tool, job)
    if not output.exists():
        raise tool_runs.RunError(f"{output} was not written")
    return run


def run_to_percent(tool, kind, sample, source, output, percent, keys):
    """Reduces a sample, or a mesh made from it, to a percentage and checks the result."""
    outcome = Outcome(output)
    try:
        run = run_job(tool, kind, source, output, {"DecimationTargetPourcent": percent, **keys})
        outcome.source = check_vok.read_vok(sample_path(sample))
        outcome.mesh = check_vok.read_vok(output)
    except (tool_runs.RunError, check_vok.VokError) as error:
        outcome.faults = [str(error)]
        return outcome
    outcome.run = run
    outcome.faults = check_vok.faults(outcome.mesh, outcome.source, keys.get("Symmetry"))
    # The last collapse may be a mirrored pair, which removes two vertices.
    target = outcome.source.vertex_count * percent // 100
    if outcome.mesh.vertex_count < target - 1:
        outcome.faults.append(
            f"only {outcome.mesh.vertex_count} vertices are left, but the target is {target}")
    return outcome
