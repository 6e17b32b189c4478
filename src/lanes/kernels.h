// SPDX-License-Identifier: MIT
//
// Arithmetic on several triangles or edges at once, one in each lane of a vector register. Every
// lane does what the plain routines of the metric do, operation by operation, so the results have
// the same bits whatever the width; the plain routines are the reference, and the fallback where a
// processor or a case has no kernel.
//
// Each width is compiled with its own instruction set, and nothing from a shared header may be
// compiled along: the linker keeps one copy of an inline function, and that could be the one that
// not every processor can run. So the kernels see plain pointers and counts only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace korvalite::core::lanes {

/// Lists are padded to a multiple of this with repetitions, by padded().
inline constexpr std::size_t kGroup = 4;
inline constexpr std::size_t padded(std::size_t count) {
    return (count + kGroup - 1) / kGroup * kGroup;
}

/// A quadric's ten coefficients in the order of a lane: aa bb cc dd ab bc cd ad ac bd.
struct alignas(64) LaneQuadric {
    double q[16];  // the last six are not used
};
/// The place of each coefficient of a PlaneQuadric in that order.
inline constexpr std::size_t kPlaceInLane[10] = {0, 4, 8, 1, 5, 2, 7, 9, 6, 3};

/// The 23 coefficients of a ColorQuadric in its order; the last place is not used.
struct alignas(64) LaneColorQuadric {
    double q[24];
};

/// The positions of vertices: three floats at the start of each record. REQUIRES: 16 bytes of each
/// record can be read.
struct Positions {
    const void* first;
    std::size_t stride;  // in bytes
};

/// The colours of the same vertices, lowest byte first: red, green, blue.
struct Colors {
    const std::uint32_t* first;
    double scale;  // a byte times this is a length
};

/// Triangles whose quadrics are to be summed at their corners.
struct TriangleList {
    const std::uint32_t* vertices;  // three per triangle, in Positions
    const std::uint32_t* sums;      // three per triangle, the place of each corner's sum
    std::size_t count;              // a multiple of kGroup
};

struct EdgeList {
    const std::uint32_t* ends;  // two per edge, both in Positions and in the list of quadrics
    std::size_t count;          // a multiple of kGroup
};

/// The metric's settings for the cost of an edge.
struct EdgeSettings {
    bool useDegeneracySearch;
    std::int32_t numPositionSamples;
    float notCollapsible;
};

struct Kernels {
    const char* name;

    /// Adds each triangle's quadric to the sums of its corners, in the order listed.
    void (*sumTriangleQuadrics)(const Positions& vertices, const TriangleList& triangles,
                                bool areaWeighted, LaneQuadric* sums);
    /// Adds all triangles' quadrics to one sum, in the order listed. `triangles.sums` is not used.
    /// `triangles.count` may be any, but its vertices are padded.
    void (*sumVertexQuadric)(const Positions& vertices, const TriangleList& triangles,
                             bool areaWeighted, LaneQuadric* sum);
    /// Costs of edges off borders and seams, with the sum of both ends' quadrics and no mask. NaN
    /// where the plain routine has to decide; returns whether there is such an edge.
    bool (*evaluateEdges)(const Positions& ends, const LaneQuadric* quadrics, const EdgeList& edges,
                          const EdgeSettings& settings, float* costs);
    // The same with colours. Every cost is decided, since this form does not search.
    void (*sumTriangleColorQuadrics)(const Positions& vertices, const Colors& colors,
                                     const TriangleList& triangles, LaneColorQuadric* sums);
    void (*sumVertexColorQuadric)(const Positions& vertices, const Colors& colors,
                                  const TriangleList& triangles, LaneColorQuadric* sum);
    void (*evaluateColorEdges)(const LaneColorQuadric* quadrics, const EdgeList& edges,
                               float notCollapsible, float* costs);

    /// The distinct ones of up to 16 items, in the order of their first occurrence. All 16 places
    /// of `items` are read and of `distinct` may be written. Returns how many there are.
    std::size_t (*keepDistinct)(const std::int32_t* items, std::size_t count,
                                std::int32_t* distinct);
};

/// The widest kernels that this processor runs; null if the program has none for it. The
/// environment variable KORVALITE_LANES may name others: "avx2", "sse2", or "none" for the plain
/// routines.
[[nodiscard]] const Kernels* kernels();

/// The kernels of that name, or null if the program or the processor lacks them.
[[nodiscard]] const Kernels* kernelsNamed(std::string_view name);

}  // namespace korvalite::core::lanes
