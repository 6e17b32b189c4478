// SPDX-License-Identifier: MIT
//
// The first `cost` and `partner` of every vertex, and the cost queue filled with them.
//
// Drivers that store no quadrics allocate one per vertex for this step only, and fall back on a
// form without an array if that fails.
// COMPAT: the forms give different results, so outputs depend on which one fits into memory.
//
// A stop request ends the ranking early; the queue is built anyway.
#pragma once

#include "collapse/working_mesh.h"

namespace korvalite::core {

/// Which forms to try, for direct users of the drivers; each needs an array.
struct CostFormSettings {
    bool tryStoreDoubleMat = true;
    bool tryStoreFloatMat = true;
};

/// Tries the forms in order: doubles, floats (plain metric only), none. Frees the vertex corner
/// lists while an array form runs, to keep the peak memory low, and rebuilds them afterwards. With
/// `logForms`, writes the form used to the log.
template <typename Metric>
void InitVerticesCost_LM(WorkingMesh& work, const CostFormSettings& forms, bool logForms = false);

/// The array forms only walk `triangles`. False means that the array could not be allocated and no
/// vertex was touched.
template <typename Metric>
bool InitVerticesCostDoubleMat(WorkingMesh& work);
bool InitVerticesCostFloatMat(WorkingMesh& work);

/// Without an array: no border factor, plane quadric or symmetry rule, and a vertex is only ranked
/// against neighbours with a higher index. REQUIRES: the vertex corner lists.
template <typename Metric>
void InitVerticesCostNoMat(WorkingMesh& work);

}  // namespace korvalite::core
