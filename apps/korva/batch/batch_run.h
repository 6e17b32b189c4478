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
    bool doAgain = false;  // also simplify what is done already
    bool isStrict = false;
};

/// Every setting that affects what the outputs hold, as text. What an earlier run did counts as
/// done only if this text is the same.
[[nodiscard]] std::string settingsText(const BatchOptions& options);

/// Simplifies many meshes. Failures of single meshes are reported, and their code is returned at
/// the end. Throws what makeWorkList throws, Error(CannotWrite) if the summary cannot be written,
/// and Error(Cancelled) if `isInterrupted`, which several threads may call at once, returns true.
ExitCode runBatch(const BatchOptions& options, const Console& console,
                  const std::function<bool()>& isInterrupted);

}  // namespace korva
