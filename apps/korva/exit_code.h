// SPDX-License-Identifier: MIT
#pragma once

#include <korvalite/korvalite.h>

namespace korva {

/// What the process returns. docs/korva.md lists them.
enum class ExitCode {
    Done = 0,
    Usage = 1,         // an option is unknown, missing or out of its range
    BadInput = 2,      // a file cannot be read, or its mesh cannot be used
    TargetMissed = 3,  // only with --strict
    NoMemory = 4,
    Cancelled = 5,
    CannotWrite = 6,
};

[[nodiscard]] constexpr ExitCode exitCodeOf(korvalite::ErrorCode code) {
    switch (code) {
    case korvalite::ErrorCode::BadMesh:
    case korvalite::ErrorCode::CannotRead: return ExitCode::BadInput;
    case korvalite::ErrorCode::BadOption: return ExitCode::Usage;
    case korvalite::ErrorCode::CannotWrite: return ExitCode::CannotWrite;
    case korvalite::ErrorCode::Cancelled: return ExitCode::Cancelled;
    }
    return ExitCode::BadInput;
}

}  // namespace korva
