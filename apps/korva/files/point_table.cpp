// SPDX-License-Identifier: MIT
#include "korva/files/point_table.h"

#include <bit>
#include <cstring>

namespace korva {

namespace {

/// The bits that are compared.
std::uint32_t bitsOf(float value) {
    const auto bits = std::bit_cast<std::uint32_t>(value);
    return bits == 0x80000000U ? 0 : bits;
}

std::uint32_t hashOf(const float* point) {
    return hashOfWords(bitsOf(point[0]), bitsOf(point[1]), bitsOf(point[2]));
}

bool areSame(const float* a, const float* b) {
    return bitsOf(a[0]) == bitsOf(b[0]) && bitsOf(a[1]) == bitsOf(b[1]) &&
           bitsOf(a[2]) == bitsOf(b[2]);
}

}  // namespace

void PointTable::findOrAdd(float* positions, std::span<const float> points,
                           std::uint32_t* indices) {
    const auto pointAt = [positions](std::uint32_t index) {
        return positions + std::size_t{3} * index;
    };
    const std::size_t count = points.size() / 3;
    table_.makeRoom(count, [&](std::uint32_t i) { return hashOf(pointAt(i)); });
    // All slots are prefetched before the first is read, so the waits for memory overlap.
    for (std::size_t i = 0; i < count; ++i) {
        hashes_[i] = hashOf(&points[3 * i]);
        table_.fetchSlot(hashes_[i]);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t guess = table_.firstGuess(hashes_[i]);
        if (guess < table_.size()) fetchAhead(pointAt(guess));
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::uint32_t before = table_.size();
        const float* point = &points[3 * i];
        const auto isSame = [&](std::uint32_t index) { return areSame(pointAt(index), point); };
        indices[i] = table_.findOrAdd(hashes_[i], isSame);
        if (indices[i] == before) std::memcpy(pointAt(before), point, 3 * sizeof(float));
    }
}

}  // namespace korva
