// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::core::bench {

/// Decimates a mesh to a percentage of its vertices with each driver in turn, each in its own
/// process and otherwise with a job's default settings. Prints a line of NAME=VALUE for each:
/// vertices before and after, seconds of the decimation, peak resident memory above that of an idle
/// process, and RMS and maximum distance between the surfaces of input and result, as fractions of
/// the diagonal of the input's bounding box. False if any of them failed.
bool printDriverTimes(const char* input, float percent);

/// The same with only the named driver: high-speed, low-memory, two-threads or melax. Also false if
/// there is no such driver.
bool printDriverTime(const char* driver, const char* input, float percent);

/// Decimates with one of these drivers. False if there is no such driver or a file cannot be read
/// or written.
bool decimateWith(const char* driver, const char* input, const char* output, float percent);

}  // namespace korvalite::core::bench
