// SPDX-License-Identifier: MIT
#pragma once

#include "korva/console.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <mutex>
#include <string>
#include <vector>

namespace korva {

/// One bar for many meshes, each with a share in proportion to its bytes. Several threads may call
/// it at once.
class BatchProgress {
public:
    BatchProgress(const Console& console, std::vector<std::uint64_t> bytesOfMeshes);

    /// A mesh is done to `fraction`, from 0 to 1.
    void show(std::size_t mesh, double fraction);

    /// Prints a line without spoiling the bar.
    void print(std::FILE* stream, const std::string& line);

private:
    std::mutex mutex_;
    std::vector<std::uint64_t> bytes_;
    std::vector<std::uint64_t> done_;
    std::uint64_t allDone_ = 0;
    std::uint64_t total_ = 0;
    ProgressBar bar_;
};

}  // namespace korva
