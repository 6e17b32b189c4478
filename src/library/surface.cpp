// SPDX-License-Identifier: MIT
#include "library/mesh_view.h"
#include "library/surface_tree.h"

#include <cmath>

namespace korvalite {

namespace {

void requireMeasurable(const MeshView& mesh) {
    requireFittingSizes(mesh);
    for (std::size_t vertex = 0; vertex < mesh.vertexCount(); ++vertex)
        requireFinite(mesh, vertex);
    forEachTriangle(mesh, [&](std::size_t triangle, const auto& corners) {
        for (const std::size_t corner : corners) {
            if (mesh.faces[corner] >= mesh.vertexCount())
                refuseIndex(triangle, "vertex", mesh.faces[corner], mesh.vertexCount());
        }
    });
    if (mesh.faces.empty())
        throw Error(ErrorCode::BadMesh, "The mesh has no triangles to measure.");
}

std::unique_ptr<const SurfaceTree> makeTree(const MeshView& mesh, const Monitor& monitor) {
    requireMeasurable(mesh);
    WorkReport report(monitor, Phase::Measuring, countTriangles(mesh));
    return std::make_unique<const SurfaceTree>(mesh.positions, buildTree(mesh, report));
}

}  // namespace

Surface::Surface(const MeshView& mesh, const Monitor& monitor) : tree_(makeTree(mesh, monitor)) {}
Surface::Surface(Surface&& other) noexcept = default;
Surface& Surface::operator=(Surface&& other) noexcept = default;
Surface::~Surface() = default;

SurfacePoint Surface::nearest(const std::array<double, 3>& point) const {
    const core::DoubleVec3 p{point[0], point[1], point[2]};
    const SurfaceTree::Hit hit = tree_->nearest(p);
    const core::DoubleVec3 place = p + hit.offset;
    return {{place.x, place.y, place.z}, std::sqrt(hit.square), tree_->triangles()[hit.triangle]};
}

double Surface::area() const {
    return tree_->area();
}

double Surface::volume() const {
    return tree_->volume();
}

double Surface::diagonal() const {
    const Box& box = tree_->box();
    double square = 0;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const double length =
            static_cast<double>(box.high[axis]) - static_cast<double>(box.low[axis]);
        square += length * length;
    }
    return std::sqrt(square);
}

}  // namespace korvalite
