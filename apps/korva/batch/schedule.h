// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace korva {

/// Decides which mesh of a list starts next, so that what runs fits a budget of memory. Strictly in
/// the order of the list: a large mesh that waits for memory is not overtaken by small ones. Once
/// constructed, it never fails, even if there is no memory left. Not for several threads at once.
class Schedule {
public:
    /// `needs` is the memory of each mesh, in the unit of `budget`. At least one may run at once.
    Schedule(std::vector<std::uint64_t> needs, std::uint64_t budget, std::size_t mostAtOnce);

    /// The mesh to start now, which counts as running from here on. Nothing if it must wait until
    /// another one ends, or if all were started. A mesh beyond the budget starts when nothing else
    /// runs, and runs alone.
    std::optional<std::size_t> next();

    /// A mesh that was running has ended.
    void finish(std::size_t mesh);

    /// A mesh that was running has ended because memory ran out. True if next() will return it once
    /// more, to run alone; false if it has just been alone.
    bool finishForLackOfMemory(std::size_t mesh);

    /// Whether next() has nothing left to return. Meshes may still be running.
    [[nodiscard]] bool allStarted() const { return next_ == needs_.size() && again_.empty(); }

private:
    [[nodiscard]] bool fits(std::size_t mesh) const;
    std::size_t start(std::size_t mesh);

    std::vector<std::uint64_t> needs_;
    std::uint64_t budget_;
    std::size_t mostAtOnce_;
    std::size_t next_ = 0;
    std::vector<std::size_t> again_;    // in the order in which they failed
    std::vector<std::size_t> running_;  // in the order of their start
    std::vector<bool> hadCompany_;
    std::uint64_t used_ = 0;
    bool isOneAlone_ = false;
};

}  // namespace korva
