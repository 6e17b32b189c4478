// SPDX-License-Identifier: MIT
#include "library/mesh_copy.h"
#include "library/simplify_run.h"
#include <korvalite/korvalite.h>

namespace korvalite {

std::string_view version() noexcept {
    return KORVALITE_VERSION;
}

Result simplify(const MeshView& mesh, const Options& options, const Monitor& monitor) {
    core::ProgressiveMesh pm;
    Result result;
    result.report = runSimplification(pm, mesh, options, monitor);
    result.mesh = copyOut(pm.mesh);
    if (!mesh.mask.empty() && result.mesh.mask.empty()) {
        // It had the same value everywhere.
        result.mesh.mask.assign(result.mesh.vertexCount(), mesh.mask.front());
    }
    return result;
}

}  // namespace korvalite
