// SPDX-License-Identifier: MIT
#pragma once

namespace korva {

/// From now on Ctrl-C, and a request to end, only set a flag; a second one ends the process at
/// once.
void catchInterrupts();

[[nodiscard]] bool isInterrupted();

/// Throws Error(Cancelled) if the flag is set.
void throwIfInterrupted();

}  // namespace korva
