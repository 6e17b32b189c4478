// SPDX-License-Identifier: MIT
#include "korva/files/stl/stl_writer.h"

#include "korva/files/stl/stl_format.h"
#include "korva/io/output_file.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace korva {

namespace {

/// In double no finite floats overflow on the way, and none vanish.
void setNormal(StlFacet& facet) {
    const float* p = facet.corners;
    const double a[3] = {double{p[3]} - p[0], double{p[4]} - p[1], double{p[5]} - p[2]};
    const double b[3] = {double{p[6]} - p[0], double{p[7]} - p[1], double{p[8]} - p[2]};
    const double normal[3] = {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2],
                              a[0] * b[1] - a[1] * b[0]};
    const double length =
        std::sqrt(normal[0] * normal[0] + normal[1] * normal[1] + normal[2] * normal[2]);
    const bool hasArea = length > 0 && std::isfinite(length);
    for (int axis = 0; axis < 3; ++axis)
        facet.normal[axis] = hasArea ? static_cast<float>(normal[axis] / length) : 0.0F;
}

}  // namespace

void writeStl(const std::filesystem::path& path, const korvalite::Mesh& mesh,
              const ByteProgress& progress) {
    OutputFile file(path, progress);
    // Must not begin with "solid", as text does.
    char note[kStlNoteBytes] = "Binary STL by Korvalite";
    file.write(note, sizeof note);
    file.writeValue(static_cast<std::uint32_t>(mesh.triangleCount()));
    char bytes[kStlFacetBytes];
    StlFacet facet{};
    for (std::size_t i = 0; i < mesh.triangles.size(); i += 3) {
        for (std::size_t corner = 0; corner < 3; ++corner)
            std::copy_n(&mesh.positions[std::size_t{3} * mesh.triangles[i + corner]], 3,
                        &facet.corners[3 * corner]);
        setNormal(facet);
        packStlFacet(facet, bytes);
        file.write(bytes, sizeof bytes);
    }
    file.commit();
}

}  // namespace korva
