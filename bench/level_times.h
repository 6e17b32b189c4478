// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::bench {

/// Loads a .kvm in full and walks it up and down a few times. Prints one line of NAME=VALUE:
/// vertices, splits, the seconds of the fastest walk from the coarsest level to the full one ("up")
/// and back ("down"). The load is not timed. False if the file could not be loaded.
bool printLevelTimes(const char* input);

/// What a job does that takes a level out of a .kvm, but with the whole file loaded, as a program
/// that stays and moves between levels has it. False if a file failed.
bool writeLevelByFullLoad(const char* input, const char* output, float percent);

}  // namespace korvalite::bench
