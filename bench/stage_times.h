// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::bench {

/// Takes a mesh without colours through the steps of a job, with a job's default settings, and
/// prints one line of NAME=VALUE: vertices, triangles, collapses, and the CPU seconds of each
/// stage. The scratch file of the splits goes into the current folder. False if a file failed.
bool printStageTimes(const char* input, const char* output, float percent);

}  // namespace korvalite::bench
