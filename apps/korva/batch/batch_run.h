// SPDX-License-Identifier: MIT
#pragma once

#include "korva/batch/work_list.h"
#include "korva/console.h"
#include "korva/exit_code.h"
#include "korva/load_scene.h"

#include <korvalite/korvalite.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>

namespace korva {

struct BatchOptions {
    std::filesystem::path source;  // a folder or a list
    WorkListOptions list;
    korvalite::Options engine;
    InputOptions input;
    std::uint64_t memoryBytes = 0;  // the budget
    std::size_t mostAtOnce = 1;
    bool doAgain = false;  // what was done already, too
    bool isStrict = false;
};

/// Everything that decides what the outputs hold, as text: what is done already counts only if it
/// is the same.
[[nodiscard]] std::string settingsText(const BatchOptions& options);

/// Simplifies many meshes. Failures of single meshes are reported, and their code is returned at
/// the end. Throws Error for what concerns them all: one of makeWorkList, CannotWrite if the
/// summary cannot be written, and Cancelled if `isInterrupted`, which several threads may call at
/// once, returns true.
ExitCode runBatch(const BatchOptions& options, const Console& console,
                  const std::function<bool()>& isInterrupted);

}  // namespace korva
