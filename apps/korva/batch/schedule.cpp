// SPDX-License-Identifier: MIT
#include "korva/batch/schedule.h"

#include <algorithm>
#include <utility>

namespace korva {

Schedule::Schedule(std::vector<std::uint64_t> needs, std::uint64_t budget, std::size_t mostAtOnce)
    : needs_(std::move(needs)), budget_(budget), mostAtOnce_(std::max<std::size_t>(mostAtOnce, 1)),
      hadCompany_(needs_.size()) {
    again_.reserve(needs_.size());
    running_.reserve(needs_.size());
}

std::optional<std::size_t> Schedule::next() {
    if (isOneAlone_) return std::nullopt;
    if (!again_.empty()) {
        if (!running_.empty()) return std::nullopt;
        const std::size_t mesh = again_.front();
        again_.erase(again_.begin());
        isOneAlone_ = true;
        hadCompany_[mesh] = false;
        return start(mesh);
    }
    if (next_ == needs_.size() || !fits(next_)) return std::nullopt;
    return start(next_++);
}

bool Schedule::fits(std::size_t mesh) const {
    if (running_.empty()) return true;
    return running_.size() < mostAtOnce_ && used_ < budget_ && needs_[mesh] <= budget_ - used_;
}

std::size_t Schedule::start(std::size_t mesh) {
    used_ += needs_[mesh];
    running_.push_back(mesh);
    if (running_.size() > 1) {
        for (const std::size_t other : running_)
            hadCompany_[other] = true;
    }
    return mesh;
}

void Schedule::finish(std::size_t mesh) {
    std::erase(running_, mesh);
    used_ -= needs_[mesh];
    isOneAlone_ = false;
}

bool Schedule::finishForLackOfMemory(std::size_t mesh) {
    finish(mesh);
    if (hadCompany_[mesh]) again_.push_back(mesh);
    return hadCompany_[mesh];
}

}  // namespace korva
