// SPDX-License-Identifier: MIT
//
// The on-disk form of one VSplit, in both the scratch file and the .kvm file: an array of
// little-endian 32-bit words.
//
//   vertex, position x y z, n, n corners, n, n removedTriangles,
//   [savedColor],                                                    with colours
//   [n, n savedUVs (u, v), n, n cornerUVIndices, n, n uvIndexPair words]  with UVs
//
// Floats are stored bit for bit. Records have the same form in memory, so reading and writing them
// is a plain copy.
#pragma once

#include "splits/vsplit.h"

#include <bit>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace korvalite::core {

static_assert(std::endian::native == std::endian::little,
              "arrays go to and from little-endian files as they stand in memory");

/// What a record holds beyond vertex, position, corners and removed triangles. This is not stored
/// in the records: reader and writer must agree.
struct VSplitFormat {
    bool hasColors = false;
    bool hasUVs = false;
};

/// The number of words of a record with empty lists: no record is shorter.
constexpr std::uint32_t minVSplitWords(VSplitFormat format) {
    return 6U + (format.hasColors ? 1U : 0U) + (format.hasUVs ? 3U : 0U);
}
inline constexpr std::size_t kMaxEmptyVSplitWords = minVSplitWords({true, true});

/// The number of words that `split` takes.
std::size_t vsplitWords(const VSplit& split, VSplitFormat format);

/// Appends `split` to `words`. Leaves `words` unchanged if out of memory.
void appendVSplit(std::vector<std::uint32_t>& words, const VSplit& split, VSplitFormat format);

/// The number of words of the record at the start of `words`, which may end anywhere and contain
/// anything. A result above words.size() means that the record is incomplete and is its minimum
/// length.
std::uint64_t measureVSplit(std::span<const std::uint32_t> words, VSplitFormat format);

/// A record in memory, which can be read and changed in place. List lengths never change, so a
/// record never moves. A view is only an address: see VSplitList for how long it is valid.
///
/// In a file from an untrusted source the lengths of lists may disagree: savedUVCount() may differ
/// from the number of pairs, and the length of cornerUVIndices() from that of corners().
class VSplitView {
public:
    /// REQUIRES: a whole record begins at `words`.
    VSplitView(std::uint32_t* words, VSplitFormat format);

    /// kNone if the record was lost with the scratch file; all lists are empty then.
    [[nodiscard]] std::int32_t vertex() const { return std::bit_cast<std::int32_t>(words_[0]); }
    void setVertex(std::int32_t vertex) { words_[0] = std::bit_cast<std::uint32_t>(vertex); }

    [[nodiscard]] FloatVec3 position() const { return {real(1), real(2), real(3)}; }
    void setPosition(const FloatVec3& position) {
        setReal(1, position.x);
        setReal(2, position.y);
        setReal(3, position.z);
    }

    [[nodiscard]] std::span<std::int32_t> corners() const { return list(4); }
    [[nodiscard]] std::span<std::int32_t> removedTriangles() const { return list(removedAt_); }

    /// REQUIRES: the format has colours.
    [[nodiscard]] std::uint32_t savedColor() const { return words_[colorAt_]; }
    void setSavedColor(std::uint32_t color) { words_[colorAt_] = color; }

    /// The lists below are empty if the format has no UVs.
    [[nodiscard]] std::uint32_t savedUVCount() const { return hasUVs_ ? words_[savedUVsAt_] : 0; }
    /// REQUIRES, also for setSavedUV: k < savedUVCount().
    [[nodiscard]] UVCoord savedUV(std::uint32_t k) const {
        const std::size_t at = savedUVsAt_ + 1 + std::size_t{k} * 2;
        return {real(at), real(at + 1)};
    }
    void setSavedUV(std::uint32_t k, UVCoord uv) {
        const std::size_t at = savedUVsAt_ + 1 + std::size_t{k} * 2;
        setReal(at, uv.u);
        setReal(at + 1, uv.v);
    }
    [[nodiscard]] std::span<std::int32_t> cornerUVIndices() const {
        return hasUVs_ ? list(cornerUVsAt_) : std::span<std::int32_t>();
    }
    /// Two words per pair: old index, new index.
    [[nodiscard]] std::span<std::int32_t> uvIndexPairWords() const {
        return hasUVs_ ? list(pairsAt_) : std::span<std::int32_t>();
    }

    /// The whole record.
    [[nodiscard]] std::span<const std::uint32_t> words() const {
        return {words_, hasUVs_ ? pairsAt_ + 1 + words_[pairsAt_] : savedUVsAt_};
    }

private:
    [[nodiscard]] float real(std::size_t at) const { return std::bit_cast<float>(words_[at]); }
    void setReal(std::size_t at, float value) { words_[at] = std::bit_cast<std::uint32_t>(value); }
    /// The list whose count is at the given word. Signed and unsigned types may alias.
    [[nodiscard]] std::span<std::int32_t> list(std::size_t at) const {
        return {reinterpret_cast<std::int32_t*>(words_ + at + 1), words_[at]};
    }

    std::uint32_t* words_;
    // The index of each list's count, and of the colour, or where it would be.
    std::size_t removedAt_;
    std::size_t colorAt_;
    std::size_t savedUVsAt_;
    std::size_t cornerUVsAt_ = 0;
    std::size_t pairsAt_ = 0;
    bool hasUVs_;
};

}  // namespace korvalite::core
