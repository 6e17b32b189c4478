// SPDX-License-Identifier: MIT
#include "korva/batch/batch_progress.h"

#include <algorithm>
#include <utility>

namespace korva {

BatchProgress::BatchProgress(const Console& console, std::vector<std::uint64_t> bytesOfMeshes)
    : bytes_(std::move(bytesOfMeshes)), done_(bytes_.size()),
      bar_(console.progress({{"of the meshes", 1}})) {
    for (const std::uint64_t bytes : bytes_)
        total_ += bytes;
}

void BatchProgress::show(std::size_t mesh, double fraction) {
    const std::lock_guard lock(mutex_);
    const double done = static_cast<double>(bytes_[mesh]) * std::clamp(fraction, 0.0, 1.0);
    allDone_ -= done_[mesh];
    done_[mesh] = static_cast<std::uint64_t>(done);
    allDone_ += done_[mesh];
    bar_.show(0, allDone_, total_);
}

void BatchProgress::print(std::FILE* stream, const std::string& line) {
    const std::lock_guard lock(mutex_);
    bar_.clear();
    std::fprintf(stream, "%s\n", line.c_str());
    std::fflush(stream);
}

}  // namespace korva
