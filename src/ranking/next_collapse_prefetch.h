// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/corner_lists.h"

#include <cstdint>

namespace korvalite::core {

/// Brings the memory around the vertex that will probably collapse next into the cache, step by
/// step while other work goes on, one link further each time, so it has arrived when the next turn
/// starts. Changes nothing but the cache.
class NextCollapsePrefetch {
public:
    /// The corner lists of the vertex and its partner; `next` may be kNone.
    void lists(const DMesh& mesh, std::int32_t next);
    void triangles(const DMesh& mesh) const;
    void ring(const DMesh& mesh);
    void outerRing(const DMesh& mesh) const;

private:
    IndexList pair_;
    IndexList ring_;
};

}  // namespace korvalite::core
