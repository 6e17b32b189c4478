// SPDX-License-Identifier: MIT
//
// The first `cost` and `partner` of every vertex, and the cost queue filled with them.
//
// Drivers that store no quadric borrow the memory for one per vertex, for this one step, and fall
// back on a form without an array when that fails. The forms differ in their results and are not
// interchangeable.
//
// A stop request ends the ranking early; the queue is built all the same.
#pragma once

#include "mesh/progressive_mesh.h"

namespace korvalite {

/// Tries the forms in order: doubles, floats (plain metric only), none. The vertex corner lists are
/// given back while an array form runs, which is what keeps the peak low, and rebuilt. `logForms`
/// tells the log which form it was.
template <typename Metric>
void InitVerticesCost_LM(ProgressiveMesh& pm, bool logForms = false);

/// The array forms walk `triangles` only. False means that the array could not be allocated and
/// that no vertex has been touched.
template <typename Metric>
bool InitVerticesCostDoubleMat(ProgressiveMesh& pm);
bool InitVerticesCostFloatMat(ProgressiveMesh& pm);

/// Without an array: no border factor, no plane quadric and no symmetry rule, and a vertex is
/// ranked against neighbours of higher index only. REQUIRES: the vertex corner lists.
template <typename Metric>
void InitVerticesCostNoMat(ProgressiveMesh& pm);

}  // namespace korvalite
