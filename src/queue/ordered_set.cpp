// SPDX-License-Identifier: MIT
#include "queue/ordered_set.h"

#include <algorithm>
#include <functional>
#include <limits>
#include <utility>

namespace korvalite::core {

/// The run that holds the key, or that it belongs in.
OrderedSet::Run& OrderedSet::runOf(Key key) {
    // The first run takes every key that no other run does.
    return *std::prev(std::partition_point(runs_.begin() + 1, runs_.end(),
                                           [key](const Run& run) { return run.bound >= key; }));
}

void OrderedSet::insert(std::int32_t vertex, float cost) {
    const Key key = keyOf(vertex, cost);
    if (runs_.empty()) runs_.push_back({0, 0, std::make_unique<Keys>()});
    Run* run = &runOf(key);
    if (run->count == kRunCapacity) {
        split(*run);
        run = &runOf(key);
    }
    Key* const end = run->keys->data() + run->count;
    Key* const place = std::lower_bound(run->keys->data(), end, key, std::greater<>());
    std::move_backward(place, end, end + 1);
    *place = key;
    ++run->count;
}

/// Moves the lower half into a new run.
void OrderedSet::split(Run& run) {
    constexpr std::size_t kHalf = kRunCapacity / 2;
    auto lower = std::make_unique<Keys>();
    std::copy(run.keys->begin() + kHalf, run.keys->end(), lower->begin());
    const auto place = static_cast<std::size_t>(&run - runs_.data());
    runs_.insert(runs_.begin() + static_cast<std::ptrdiff_t>(place) + 1,
                 {lower->front(), kRunCapacity - kHalf, std::move(lower)});
    runs_[place].count = kHalf;
}

void OrderedSet::erase(std::int32_t vertex, float cost) {
    const Key key = keyOf(vertex, cost);
    Run& run = runOf(key);
    Key* const end = run.keys->data() + run.count;
    Key* const place = std::lower_bound(run.keys->data(), end, key, std::greater<>());
    std::move(place + 1, end, place);
    --run.count;
    if (run.count == 0 && runs_.size() > 1) runs_.erase(runs_.begin() + (&run - runs_.data()));
}

}  // namespace korvalite::core
