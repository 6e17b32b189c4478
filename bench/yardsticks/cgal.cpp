// SPDX-License-Identifier: MIT
//
// Variants: garland-heckbert, or lindstrom-turk.
#include "yardstick.h"

#include <CGAL/Simple_cartesian.h>
#include <CGAL/Surface_mesh.h>
#include <CGAL/Surface_mesh_simplification/Policies/Edge_collapse/Bounded_normal_change_placement.h>
#include <CGAL/Surface_mesh_simplification/Policies/Edge_collapse/Count_stop_predicate.h>
#include <CGAL/Surface_mesh_simplification/Policies/Edge_collapse/GarlandHeckbert_plane_policies.h>
#include <CGAL/Surface_mesh_simplification/edge_collapse.h>

using yardstick::Mesh;

namespace {

namespace sms = CGAL::Surface_mesh_simplification;
using Kernel = CGAL::Simple_cartesian<double>;
using Surface = CGAL::Surface_mesh<Kernel::Point_3>;

Surface surfaceOf(const Mesh& mesh) {
    Surface surface;
    std::vector<Surface::Vertex_index> vertices;
    for (std::size_t i = 0; i < mesh.positions.size(); i += 3) {
        vertices.push_back(
            surface.add_vertex({mesh.positions[i], mesh.positions[i + 1], mesh.positions[i + 2]}));
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        surface.add_face(vertices[mesh.triangles[i]], vertices[mesh.triangles[i + 1]],
                         vertices[mesh.triangles[i + 2]]);
    }
    return surface;
}

Mesh meshOf(const Surface& surface) {
    Mesh mesh;
    for (const Surface::Vertex_index vertex : surface.vertices()) {
        const Kernel::Point_3& p = surface.point(vertex);
        for (const double coordinate : {p.x(), p.y(), p.z()})
            mesh.positions.push_back(static_cast<float>(coordinate));
    }
    for (const Surface::Face_index face : surface.faces()) {
        for (const auto vertex : vertices_around_face(surface.halfedge(face), surface))
            mesh.triangles.push_back(static_cast<std::uint32_t>(vertex));
    }
    return mesh;
}

Mesh simplify(const Mesh& mesh, std::size_t triangles, std::string_view variant, double& seconds) {
    Surface surface = surfaceOf(mesh);
    const sms::Count_stop_predicate<Surface> stop(3 * triangles / 2);
    seconds = yardstick::secondsOf([&] {
        if (variant == "lindstrom-turk") {
            sms::edge_collapse(surface, stop);
            return;
        }
        using Policies = sms::GarlandHeckbert_plane_policies<Surface, Kernel>;
        const Policies policies(surface);
        const sms::Bounded_normal_change_placement<Policies::Get_placement> placement(
            policies.get_placement());
        sms::edge_collapse(
            surface, stop,
            CGAL::parameters::get_cost(policies.get_cost()).get_placement(placement));
    });
    surface.collect_garbage();
    return meshOf(surface);
}

}  // namespace

int main(int argc, char** argv) {
    return yardstick::run(argc, argv, simplify);
}
