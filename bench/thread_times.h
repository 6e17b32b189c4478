// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::core::bench {

/// Decimates a mesh without colours to a percentage of its vertices on one thread and on several,
/// each in its own process. Prints a line of NAME=VALUE for each: threads (0 for the
/// single-threaded driver), wall seconds of the preparation and of the loop, turns and the
/// candidates tried, and the peak resident memory above that of an idle process. A second line for
/// the multi-threaded driver, measured=1, has the seconds that all threads spent in the loop,
/// holding csQueue, and waiting for it. Measuring these slows the loop down: it reads the clock
/// four times per turn, once while holding csQueue and once while waiting; `clock` is the seconds
/// per reading. False if any of them failed.
bool printThreadTimes(const char* input, float percent);

}  // namespace korvalite::core::bench
