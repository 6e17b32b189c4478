// SPDX-License-Identifier: MIT
#include "decimation/permute.h"

#include <array>
#include <utility>

namespace korvalite {

namespace {

/// `load(i)` gives item i by value, `store(i, item)` writes it.
template <typename Load, typename Store>
void permuteInPlace(IndexMap& map, Load load, Store store) {
    const auto count = static_cast<std::int32_t>(map.size());
    for (std::int32_t i = 0; i < count; ++i) {
        std::int32_t to = map[static_cast<std::size_t>(i)];
        if (to < 0) continue;
        map[static_cast<std::size_t>(i)] = ~to;
        auto held = load(i);
        while (to != i) {
            auto displaced = load(to);
            store(to, held);
            held = displaced;
            std::int32_t& next = map[static_cast<std::size_t>(to)];
            to = std::exchange(next, ~next);
        }
        store(i, held);
    }
    for (std::int32_t& entry : map)
        entry = ~entry;
}

template <typename Items>
void permuteItems(Items& items, IndexMap& map) {
    permuteInPlace(
        map, [&](std::int32_t i) { return items[static_cast<std::size_t>(i)]; },
        [&](std::int32_t i, const auto& item) { items[static_cast<std::size_t>(i)] = item; });
}

}  // namespace

void PermuteTriples(std::vector<std::uint32_t>& words, IndexMap& map) {
    using Triple = std::array<std::uint32_t, 3>;
    permuteInPlace(
        map,
        [&](std::int32_t i) {
            const std::uint32_t* triple = &words[3 * static_cast<std::size_t>(i)];
            return Triple{triple[0], triple[1], triple[2]};
        },
        [&](std::int32_t i, const Triple& triple) {
            std::copy(triple.begin(), triple.end(),
                      words.begin() + 3 * static_cast<std::ptrdiff_t>(i));
        });
}

void PermuteBits(BitArray& bits, IndexMap& map) {
    const BitArray old = bits;
    for (std::int32_t i = 0; i < bits.count(); ++i) {
        bits.Assign(map[static_cast<std::size_t>(i)], old.Test(i));
    }
}

void PermuteVertexRecords(VertexRecords& records, IndexMap& map) {
    permuteItems(records, map);
}

void PermuteWords(std::vector<std::uint32_t>& words, IndexMap& map) {
    permuteItems(words, map);
}

void PermuteBytes(std::vector<std::uint8_t>& bytes, IndexMap& map) {
    permuteItems(bytes, map);
}

}  // namespace korvalite
