// SPDX-License-Identifier: MIT
//
// Looks up mirror candidates by the two coordinates that a mirror image shares with its vertex.
//
// The sweep of pairVertices narrows candidates by one coordinate only. On a flat side of a model,
// where all vertices share it, that leaves the whole side for each vertex. The pairing turns to
// these cells only there, and finds in them exactly what walking the whole side would find.
#pragma once

#include "geometry/remaining_places.h"

#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

namespace korvalite {

/// The coordinates off the sweep's axis, in double so that cell borders need no care for rounding.
struct PlanePosition {
    double a = 0.0;
    double b = 0.0;

    [[nodiscard]] bool isFinite() const { return std::isfinite(a) && std::isfinite(b); }
};

enum class CandidateVerdict {
    Keep,
    Remove,  // not a candidate any more, for any later vertex either
    Leave,   // nothing at or below this place in the cell is of interest now
};

class MirrorCandidates {
public:
    /// `reach` is the farthest that a candidate may lie from a vertex in either coordinate.
    /// REQUIRES: reach > 0; it may be infinite.
    explicit MirrorCandidates(float reach);

    /// Enters the candidate at place `place` of the sweep; one with a coordinate that is not finite
    /// matches nothing and is left out.
    void add(std::int32_t place, const PlanePosition& position);

    /// REQUIRES: called once, after the last add and before the first visit.
    void finish();

    /// Calls judge(place) for every candidate within reach and at or below `highest`, and perhaps
    /// for others and for some twice. The places of one cell come in descending order.
    /// REQUIRES: the position is finite.
    template <typename Judge>
    void visit(const PlanePosition& position, std::int32_t highest, Judge&& judge);

private:
    struct Entry {
        std::uint32_t cell;
        std::int32_t place;
    };

    [[nodiscard]] std::int64_t cellIndex(double coordinate) const;
    [[nodiscard]] static std::uint32_t cellKey(std::int64_t a, std::int64_t b);
    /// The last entry that is at or before the cell's entry for `highest`, -1 for none.
    [[nodiscard]] std::int32_t lastEntry(std::uint32_t cell, std::int32_t highest) const;
    template <typename Judge>
    void visitCell(std::uint32_t cell, std::int32_t highest, Judge&& judge);

    std::vector<Entry> entries_;                // by cell, then by place
    std::optional<RemainingPlaces> remaining_;  // of entries_
    double reach_;
    double cellSize_;
};

template <typename Judge>
void MirrorCandidates::visit(const PlanePosition& position, std::int32_t highest, Judge&& judge) {
    const std::int64_t lastA = cellIndex(position.a + reach_);
    const std::int64_t lastB = cellIndex(position.b + reach_);
    for (std::int64_t a = cellIndex(position.a - reach_); a <= lastA; ++a) {
        for (std::int64_t b = cellIndex(position.b - reach_); b <= lastB; ++b) {
            visitCell(cellKey(a, b), highest, judge);
        }
    }
}

template <typename Judge>
void MirrorCandidates::visitCell(std::uint32_t cell, std::int32_t highest, Judge&& judge) {
    std::int32_t e = remaining_->atOrBelow(lastEntry(cell, highest));
    while (e >= 0) {
        const Entry& entry = entries_[static_cast<std::size_t>(e)];
        if (entry.cell != cell) return;
        const CandidateVerdict verdict = judge(entry.place);
        if (verdict == CandidateVerdict::Leave) return;
        if (verdict == CandidateVerdict::Remove) remaining_->remove(e);
        e = remaining_->atOrBelow(e - 1);
    }
}

}  // namespace korvalite
