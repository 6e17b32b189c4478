// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_mesh.h"

#include <array>
#include <initializer_list>
#include <map>
#include <string>

namespace korva {

namespace {

constexpr std::uint64_t kAbsent = ~std::uint64_t{0};

void requireColumns(const GltfAccessor& accessor, const GltfItem& primitive, const char* attribute,
                    std::initializer_list<std::size_t> allowed) {
    for (const std::size_t columns : allowed)
        if (accessor.rows.columns == columns) return;
    primitive.fail(accessor.place + " has the wrong \"type\" for " + attribute + '.');
}

class MeshOpener {
public:
    MeshOpener(GltfFile& file, std::uint64_t index)
        : file_(file), item_(file.root().element("meshes", index, "mesh")) {}

    GltfMesh open() {
        for (std::size_t i = 0; i < item_.length("primitives"); ++i) {
            const std::string kind = item_.place() + ", primitive";
            addPrimitive(item_.element("primitives", i, kind.c_str()));
        }
        return std::move(mesh_);
    }

private:
    void addPrimitive(const GltfItem& item) {
        const std::uint64_t mode = item.whole("mode").value_or(4);
        if (mode > 6) item.fail("its \"mode\" " + std::to_string(mode) + " is unknown.");
        if (mode < 4) {
            ++mesh_.pointsAndLines;
            return;
        }
        const std::optional<GltfItem> attributes = item.object("attributes");
        if (!attributes || !attributes->has("POSITION")) item.fail("it has no positions.");
        refuseCompressed(item, *attributes);
        GltfPrimitive primitive;
        primitive.mode = static_cast<GltfMode>(mode);
        primitive.vertices = verticesOf(item, *attributes);
        primitive.corners = mesh_.vertices[primitive.vertices].positions.rows.count;
        if (const std::optional<std::uint64_t> indices = item.whole("indices")) {
            primitive.indices = openIndices(item, *indices);
            primitive.corners = primitive.indices->rows.count;
        }
        countTriangles(primitive);
        mesh_.hadNormals = mesh_.hadNormals || attributes->has("NORMAL");
        mesh_.primitives.push_back(std::move(primitive));
    }

    /// An extension can replace the accessors even if it is not required.
    void refuseCompressed(const GltfItem& item, const GltfItem& attributes) const {
        const std::optional<GltfItem> extensions = item.object("extensions");
        if (!extensions || !extensions->has("KHR_draco_mesh_compression")) return;
        const std::uint64_t positions = attributes.wholeNeeded("POSITION");
        if (!file_.root().element("accessors", positions, "accessor").has("bufferView"))
            item.fail("it is compressed by KHR_draco_mesh_compression; export it uncompressed.");
    }

    GltfAccessor openIndices(const GltfItem& item, std::uint64_t index) const {
        GltfAccessor indices = openGltfAccessor(file_, index);
        requireColumns(indices, item, "indices", {1});
        const NumberType type = indices.rows.type;
        if (type != NumberType::UInt8 && type != NumberType::UInt16 && type != NumberType::UInt32)
            item.fail(indices.place + " has the wrong \"componentType\" for indices.");
        return indices;
    }

    std::size_t verticesOf(const GltfItem& item, const GltfItem& attributes) {
        const std::array<std::uint64_t, 3> key{attributes.wholeNeeded("POSITION"),
                                               attributes.whole("TEXCOORD_0").value_or(kAbsent),
                                               attributes.whole("COLOR_0").value_or(kAbsent)};
        const auto [found, isNew] = known_.try_emplace(key, mesh_.vertices.size());
        if (!isNew) return found->second;
        GltfVertices vertices;
        vertices.positions = openGltfAccessor(file_, key[0]);
        requireColumns(vertices.positions, item, "POSITION", {3});
        vertices.uvs = openAttribute(item, key[1], vertices);
        if (vertices.uvs) requireColumns(*vertices.uvs, item, "TEXCOORD_0", {2});
        vertices.colors = openAttribute(item, key[2], vertices);
        if (vertices.colors) requireColumns(*vertices.colors, item, "COLOR_0", {3, 4});
        // Integer colours are always normalised, whatever the file says.
        if (vertices.colors)
            vertices.colors->rows.isNormalised = vertices.colors->changes.isNormalised = true;
        mesh_.hasUVs = mesh_.hasUVs || vertices.uvs;
        mesh_.hasColors = mesh_.hasColors || vertices.colors;
        mesh_.vertexCount += vertices.positions.rows.count;
        mesh_.vertices.push_back(std::move(vertices));
        return found->second;
    }

    std::optional<GltfAccessor> openAttribute(const GltfItem& item, std::uint64_t index,
                                              const GltfVertices& vertices) const {
        if (index == kAbsent) return std::nullopt;
        GltfAccessor accessor = openGltfAccessor(file_, index);
        if (accessor.rows.count != vertices.positions.rows.count)
            item.fail(accessor.place + " has " + std::to_string(accessor.rows.count) +
                      " elements, but there are " + std::to_string(vertices.positions.rows.count) +
                      " positions.");
        return accessor;
    }

    void countTriangles(GltfPrimitive& primitive) {
        const std::size_t corners = primitive.corners;
        if (primitive.mode == GltfMode::Triangles) {
            primitive.triangles = corners / 3;
            if (corners % 3 != 0) ++mesh_.incomplete;
        } else {
            primitive.triangles = corners < 3 ? 0 : corners - 2;
        }
        mesh_.triangleCount += primitive.triangles;
    }

    GltfFile& file_;
    GltfItem item_;
    GltfMesh mesh_;
    std::map<std::array<std::uint64_t, 3>, std::size_t> known_;
};

}  // namespace

GltfMesh openGltfMesh(GltfFile& file, std::uint64_t index) {
    return MeshOpener(file, index).open();
}

}  // namespace korva
