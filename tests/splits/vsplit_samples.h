// SPDX-License-Identifier: MIT
#pragma once

#include "splits/vsplit_list.h"

#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

namespace korvalite::core::test {

inline constexpr VSplitFormat kAllFormats[] = {
    {false, false}, {true, false}, {false, true}, {true, true}};

// Splits with every list filled, whether or not the format has it.
class VSplitSamples {
public:
    VSplit next() {
        VSplit split;
        split.vertex = number(1000000);
        split.position = position();
        split.corners = numbers(number(12));
        split.removedTriangles = numbers(number(4));
        split.savedColor = static_cast<std::uint32_t>(random_());
        split.cornerUVIndices = numbers(static_cast<std::int32_t>(split.corners.size()));
        for (std::int32_t k = number(4); k > 0; --k) {
            split.savedUVs.push_back({real(), real()});
            split.uvIndexPairs.push_back({number(5000), number(5000)});
        }
        return split;
    }
    std::vector<VSplit> next(std::size_t count) {
        std::vector<VSplit> splits;
        for (std::size_t i = 0; i < count; ++i)
            splits.push_back(next());
        return splits;
    }

    FloatVec3 position() { return {real(), real(), real()}; }
    float real() { return static_cast<float>(number(20001) - 10000) / 64.0F; }
    // A random number from 0 to limit - 1.
    std::int32_t number(std::int32_t limit) {
        return static_cast<std::int32_t>(random_() % static_cast<std::uint32_t>(limit));
    }

private:
    std::vector<std::int32_t> numbers(std::int32_t count) {
        std::vector<std::int32_t> items;
        for (std::int32_t i = 0; i < count; ++i)
            items.push_back(number(1000000) - 1);
        return items;
    }

    std::mt19937 random_{20240229};
};

// The on-disk words of a record, written independently of the product's code.
inline std::vector<std::uint32_t> wordsOf(const VSplit& split, VSplitFormat format) {
    std::vector<std::uint32_t> words;
    const auto put = [&](auto value) {
        static_assert(sizeof value == 4);
        std::uint32_t word = 0;
        std::memcpy(&word, &value, 4);
        words.push_back(word);
    };
    const auto putList = [&](const std::vector<std::int32_t>& items) {
        put(static_cast<std::uint32_t>(items.size()));
        for (const std::int32_t item : items)
            put(item);
    };
    put(split.vertex);
    put(split.position.x);
    put(split.position.y);
    put(split.position.z);
    putList(split.corners);
    putList(split.removedTriangles);
    if (format.hasColors) put(split.savedColor);
    if (!format.hasUVs) return words;
    put(static_cast<std::uint32_t>(split.savedUVs.size()));
    for (const UVCoord& uv : split.savedUVs) {
        put(uv.u);
        put(uv.v);
    }
    putList(split.cornerUVIndices);
    put(static_cast<std::uint32_t>(split.uvIndexPairs.size() * 2));
    for (const UVIndexPair& pair : split.uvIndexPairs) {
        put(pair.oldIndex);
        put(pair.newIndex);
    }
    return words;
}

inline std::string bytesOf(const std::vector<std::uint32_t>& words) {
    std::string bytes;
    for (const std::uint32_t word : words) {
        for (unsigned shift = 0; shift < 32; shift += 8)
            bytes += static_cast<char>((word >> shift) & 0xFFU);
    }
    return bytes;
}

inline std::vector<std::uint32_t> wordsOf(const VSplitView& view) {
    return {view.words().begin(), view.words().end()};
}

}  // namespace korvalite::core::test
