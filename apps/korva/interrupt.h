// SPDX-License-Identifier: MIT
#pragma once

namespace korva {

/// Call it once, from main: from now on Ctrl-C or a request to end sets a flag, and a second ends
/// the process at once. Work that does not see the flag within most of a second is cut off: its
/// unfinished files are deleted, and the process ends with ExitCode::Cancelled.
void catchInterrupts();

[[nodiscard]] bool isInterrupted();

/// Throws Error(Cancelled) if the flag is set.
void throwIfInterrupted();

}  // namespace korva
