// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::bench {

/// Takes a mesh without colours to a percentage of its vertices on one thread and on several, each
/// in a process of its own. Prints a line of NAME=VALUE for each: threads, wall seconds of the
/// preparation and of the loop, and for the multi-threaded driver the turns, the candidates they
/// looked at, and the seconds of all threads in the loop, under csQueue and waiting for it. The
/// scratch file of the splits goes into the current folder. False if one of them failed.
bool printThreadTimes(const char* input, float percent);

}  // namespace korvalite::bench
