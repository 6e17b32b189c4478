// SPDX-License-Identifier: MIT
#include "yardstick.h"

#include <meshoptimizer.h>

#include <limits>

using yardstick::Mesh;

namespace {

Mesh simplify(const Mesh& mesh, std::size_t triangles, std::string_view /*variant*/,
              double& seconds) {
    Mesh result;
    result.triangles.resize(mesh.triangles.size());
    std::size_t indices = 0;
    seconds = yardstick::secondsOf([&] {
        indices =
            meshopt_simplify(result.triangles.data(), mesh.triangles.data(), mesh.triangles.size(),
                             mesh.positions.data(), mesh.vertexCount(), 3 * sizeof(float),
                             3 * triangles, std::numeric_limits<float>::max(), 0, nullptr);
    });
    result.triangles.resize(indices);
    // It leaves the vertices as they are; those that are still used stay.
    std::vector<std::uint32_t> place(mesh.vertexCount(), ~0U);
    for (std::uint32_t& vertex : result.triangles) {
        if (place[vertex] == ~0U) {
            place[vertex] = static_cast<std::uint32_t>(result.vertexCount());
            const float* const p = &mesh.positions[3 * std::size_t{vertex}];
            result.positions.insert(result.positions.end(), p, p + 3);
        }
        vertex = place[vertex];
    }
    return result;
}

}  // namespace

int main(int argc, char** argv) {
    return yardstick::run(argc, argv, simplify);
}
