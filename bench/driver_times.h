// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::bench {

/// Takes a mesh to a percentage of its vertices with each driver in turn, each in a process of its
/// own, with a job's default settings otherwise. Prints a line of NAME=VALUE for each: vertices
/// before and after, seconds of the decimation, the peak of resident memory above that of an idle
/// process, and RMS and maximum distance between the input's surface and the result's, as parts of
/// the diagonal of the input's bounding box. False if one of them failed.
bool printDriverTimes(const char* input, float percent);

/// The same with the driver of that name: high-speed, low-memory, two-threads or melax. False if
/// there is no such driver, too.
bool printDriverTime(const char* driver, const char* input, float percent);

/// Decimates with one of these drivers. False if there is no such driver, or a file failed.
bool decimateWith(const char* driver, const char* input, const char* output, float percent);

}  // namespace korvalite::bench
