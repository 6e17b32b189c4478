// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::core::bench {

/// Loads a .kvm in full and walks it up and down a few times. Prints one line of NAME=VALUE:
/// vertices, splits, the seconds of the fastest walk from the coarsest to the full level ("up") and
/// back ("down"). Loading is not timed. False if the file could not be loaded.
bool printLevelTimes(const char* input);

/// Extracts a level from a .kvm like a job, but loads the whole file, as a program would that keeps
/// running and moves between levels. False if a file cannot be read or written.
bool writeLevelByFullLoad(const char* input, const char* output, float percent);

}  // namespace korvalite::core::bench
