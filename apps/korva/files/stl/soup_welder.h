// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/point_table.h"

#include <korvalite/korvalite.h>

#include <array>
#include <cstddef>

namespace korva {

/// Makes a mesh of triangles that each have corners of their own. Corners at equal points become
/// one vertex, as with weld(), so the memory is that of the mesh that comes out and 6 to 12 bytes
/// per vertex.
class SoupWelder {
public:
    /// Takes memory for about this many triangles, 22 to 25 bytes each. That is not a limit.
    explicit SoupWelder(std::size_t triangles);

    /// Three corners of three floats each. False if the mesh would have too many triangles.
    [[nodiscard]] bool add(const float* corners);

    [[nodiscard]] korvalite::Mesh take();

private:
    void flush();

    korvalite::Mesh mesh_;
    PointTable table_;
    std::array<float, 3 * PointTable::kBatch> waiting_{};
    std::size_t waitingFloats_ = 0;
};

}  // namespace korva
