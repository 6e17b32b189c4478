// SPDX-License-Identifier: MIT
#include "library/memory_estimate.h"

namespace korvalite {

/// The peak is the first ranking, which keeps a quadric for each vertex. The output comes later,
/// but added to it, it makes up for the lists of corners where vertices have many triangles.
std::uint64_t estimateSimplifyBytes(const MeshSize& size) {
    constexpr std::uint64_t kFixed = 1'000'000;  // records of collapses that wait for the disk
    // The record of a vertex, its quadric, its mirror image, bits; and its position in the output.
    std::uint64_t perVertex = 20 + 80 + 4 + 1 + 12;
    std::uint64_t perTriangle = 12 + 1 + 12;
    if (size.hasColors) perVertex += 4 + 104 + 4;  // 104: a quadric with colours is larger
    if (size.hasMask) perVertex += 1 + 1;
    std::uint64_t bytes = kFixed;
    if (size.hasUVs) {
        // For each corner u, v, the index and the lists of corners; and the index in the output.
        perTriangle += std::uint64_t{3} * (8 + 4 + 8 + 4);
        bytes += 8 * size.uvPoints;
    }
    return bytes + perVertex * size.vertices + perTriangle * size.triangles;
}

}  // namespace korvalite
