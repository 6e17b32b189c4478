// SPDX-License-Identifier: MIT
#include "yardstick.h"

#include <OpenMesh/Core/Mesh/TriMesh_ArrayKernelT.hh>
#include <OpenMesh/Tools/Decimater/DecimaterT.hh>
#include <OpenMesh/Tools/Decimater/ModQuadricT.hh>

using yardstick::Mesh;

namespace {

using Surface = OpenMesh::TriMesh_ArrayKernelT<>;

Surface surfaceOf(const Mesh& mesh) {
    Surface surface;
    std::vector<Surface::VertexHandle> vertices;
    for (std::size_t i = 0; i < mesh.positions.size(); i += 3) {
        vertices.push_back(surface.add_vertex(
            Surface::Point(mesh.positions[i], mesh.positions[i + 1], mesh.positions[i + 2])));
    }
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        surface.add_face(vertices[mesh.triangles[i]], vertices[mesh.triangles[i + 1]],
                         vertices[mesh.triangles[i + 2]]);
    }
    return surface;
}

Mesh meshOf(const Surface& surface) {
    Mesh mesh;
    for (const Surface::VertexHandle vertex : surface.vertices()) {
        const Surface::Point& p = surface.point(vertex);
        mesh.positions.insert(mesh.positions.end(), {p[0], p[1], p[2]});
    }
    for (const Surface::FaceHandle face : surface.faces()) {
        for (const Surface::VertexHandle vertex : surface.fv_range(face))
            mesh.triangles.push_back(static_cast<std::uint32_t>(vertex.idx()));
    }
    return mesh;
}

Mesh simplify(const Mesh& mesh, std::size_t triangles, std::string_view /*variant*/,
              double& seconds) {
    Surface surface = surfaceOf(mesh);
    // The decimater takes its own away at its end, and what it has deleted would come back.
    surface.request_vertex_status();
    surface.request_edge_status();
    surface.request_face_status();
    seconds = yardstick::secondsOf([&] {
        OpenMesh::Decimater::DecimaterT<Surface> decimater(surface);
        OpenMesh::Decimater::ModQuadricT<Surface>::Handle quadrics;
        decimater.add(quadrics);
        decimater.module(quadrics).unset_max_err();
        decimater.initialize();
        decimater.decimate_to_faces(0, triangles);
    });
    surface.garbage_collection();
    return meshOf(surface);
}

}  // namespace

int main(int argc, char** argv) {
    return yardstick::run(argc, argv, simplify);
}
