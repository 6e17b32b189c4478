// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite::bench {

/// Takes a mesh without colours to a percentage of its vertices on one thread and on several, each
/// in a process of its own. Prints a line of NAME=VALUE for each: threads (0 for the driver that
/// knows one only), wall seconds of the preparation and of the loop, turns and the candidates they
/// looked at, and the peak of resident memory above that of an idle process. A second line of the
/// multi-threaded driver, measured=1, has the seconds of all threads in the loop, under csQueue and
/// waiting for it. To know them makes it slower: four readings of the clock in each turn, one of
/// which falls into the stay and one into the wait; clock is the seconds of one. False if one of
/// them failed.
bool printThreadTimes(const char* input, float percent);

}  // namespace korvalite::bench
