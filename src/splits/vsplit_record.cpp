// SPDX-License-Identifier: MIT
#include "splits/vsplit_record.h"

#include <cstring>

namespace korvalite::core {

namespace {

// Writes consecutive words. The destination must be large enough.
class WordCursor {
public:
    explicit WordCursor(std::uint32_t* at) : at_(at) {}

    template <typename T>
    void put(const T& value) {
        static_assert(sizeof(T) % sizeof(std::uint32_t) ==
                      0);  // NOLINT(bugprone-sizeof-expression)
        std::memcpy(at_, &value, sizeof value);
        at_ += sizeof value / sizeof(std::uint32_t);  // NOLINT(bugprone-sizeof-expression)
    }

    // `count` is in words or in items, depending on the list.
    template <typename T>
    void putList(const std::vector<T>& items, std::size_t count) {
        static_assert(sizeof(T) % sizeof(std::uint32_t) == 0);
        put(static_cast<std::uint32_t>(count));
        if (items.empty()) return;
        std::memcpy(at_, items.data(), items.size() * sizeof(T));
        at_ += items.size() * (sizeof(T) / sizeof(std::uint32_t));
    }

private:
    std::uint32_t* at_;
};

}  // namespace

std::size_t vsplitWords(const VSplit& split, VSplitFormat format) {
    std::size_t words =
        minVSplitWords(format) + split.corners.size() + split.removedTriangles.size();
    if (format.hasUVs) {
        words += split.savedUVs.size() * 2 + split.cornerUVIndices.size() +
                 split.uvIndexPairs.size() * 2;
    }
    return words;
}

void appendVSplit(std::vector<std::uint32_t>& words, const VSplit& split, VSplitFormat format) {
    const std::size_t begin = words.size();
    words.resize(begin + vsplitWords(split, format));
    WordCursor cursor(words.data() + begin);
    cursor.put(split.vertex);
    cursor.put(split.position);
    cursor.putList(split.corners, split.corners.size());
    cursor.putList(split.removedTriangles, split.removedTriangles.size());
    if (format.hasColors) cursor.put(split.savedColor);
    if (format.hasUVs) {
        cursor.putList(split.savedUVs, split.savedUVs.size());
        cursor.putList(split.cornerUVIndices, split.cornerUVIndices.size());
        // COMPAT: this count is in words, all others are in items; .kvm files have it so.
        cursor.putList(split.uvIndexPairs, split.uvIndexPairs.size() * 2);
    }
}

std::uint64_t measureVSplit(std::span<const std::uint32_t> words, VSplitFormat format) {
    const std::uint64_t least = minVSplitWords(format);
    std::uint64_t inLists = 0;
    std::uint64_t at = 4;
    // The count of each list, if the words reach that far, gives the start of the next.
    const auto passList = [&](std::uint64_t wordsPerItem) {
        if (at >= words.size()) return false;
        const std::uint64_t length = words[at] * wordsPerItem;
        inLists += length;
        at += 1 + length;
        return true;
    };
    const bool inBounds = passList(1) && passList(1);
    if (inBounds && format.hasUVs) {
        at += format.hasColors ? 1U : 0U;
        (void)(passList(2) && passList(1) && passList(1));
    }
    return least + inLists;
}

VSplitView::VSplitView(std::uint32_t* words, VSplitFormat format)
    : words_(words), removedAt_(std::size_t{5} + words[4]),
      colorAt_(removedAt_ + 1 + words[removedAt_]),
      savedUVsAt_(colorAt_ + (format.hasColors ? 1 : 0)), hasUVs_(format.hasUVs) {
    if (!hasUVs_) return;
    cornerUVsAt_ = savedUVsAt_ + 1 + std::size_t{words[savedUVsAt_]} * 2;
    pairsAt_ = cornerUVsAt_ + 1 + words[cornerUVsAt_];
}

}  // namespace korvalite::core
