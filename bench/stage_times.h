// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::core::bench {

/// Runs the steps of a job on a mesh without colours, with a job's default settings, and prints one
/// line of NAME=VALUE: vertices, triangles, collapses, and the CPU seconds of each stage. The
/// scratch file of the splits goes into the current folder. False if a file cannot be read or
/// written.
bool printStageTimes(const char* input, const char* output, float percent);

}  // namespace korvalite::core::bench
