// SPDX-License-Identifier: MIT
#include "korva/files/gltf/gltf_layout.h"

#include "korva/files/gltf/gltf_accessor.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cmath>

namespace korva {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kVertexData = 34962;  // the "target" of a buffer view
constexpr int kIndexData = 34963;

/// The lowest and highest coordinates of the finite points.
std::array<std::array<float, 3>, 2> boundsOf(const std::vector<float>& positions) {
    std::array<std::array<float, 3>, 2> bounds{};
    for (std::size_t axis = 0; axis < 3; ++axis) {
        float least = INFINITY;
        float most = -INFINITY;
        for (std::size_t i = axis; i < positions.size(); i += 3) {
            if (!std::isfinite(positions[i])) continue;
            least = std::min(least, positions[i]);
            most = std::max(most, positions[i]);
        }
        if (least <= most) {
            bounds[0][axis] = least;
            bounds[1][axis] = most;
        }
    }
    return bounds;
}

class Layout {
public:
    void add(const GltfPart& part) {
        const std::uint64_t vertices = part.vertexCount();
        Json attributes;
        attributes["POSITION"] =
            addAccessor(vertices, "VEC3", NumberType::Float32, 12 * vertices, kVertexData);
        const auto [least, most] = boundsOf(part.mesh().positions);
        accessors_.back()["min"] = least;
        accessors_.back()["max"] = most;
        if (!part.normals.empty())
            attributes["NORMAL"] =
                addAccessor(vertices, "VEC3", NumberType::Float32, 12 * vertices, kVertexData);
        if (!part.splits.uvPoints.empty())
            attributes["TEXCOORD_0"] =
                addAccessor(vertices, "VEC2", NumberType::Float32, 8 * vertices, kVertexData);
        if (!part.mesh().colors.empty()) {
            attributes["COLOR_0"] =
                addAccessor(vertices, "VEC4", NumberType::UInt8, 4 * vertices, kVertexData);
            accessors_.back()["normalized"] = true;
        }
        const std::size_t indices =
            addAccessor(part.mesh().triangles.size(), "SCALAR",
                        part.hasShortIndices() ? NumberType::UInt16 : NumberType::UInt32,
                        part.indexBytes(), kIndexData);
        addMesh(part.named->name, attributes, indices);
    }

    GltfLayout finish(const std::string& uri) {
        Json root;
        root["asset"] = {{"version", "2.0"},
                         {"generator", "Korvalite " + std::string(korvalite::version())}};
        // glTF does not allow empty arrays.
        if (!meshes_.empty()) {
            root["scene"] = 0;
            root["scenes"] = Json::array({{{"nodes", nodeIndices_}}});
            root["nodes"] = std::move(nodes_);
            root["meshes"] = std::move(meshes_);
            root["accessors"] = std::move(accessors_);
            root["bufferViews"] = std::move(views_);
            Json buffer;
            if (!uri.empty()) buffer["uri"] = uri;
            buffer["byteLength"] = bytes_;
            root["buffers"] = Json::array({buffer});
        }
        return {root.dump(-1, ' ', false, Json::error_handler_t::replace), bytes_};
    }

private:
    std::size_t addAccessor(std::uint64_t count, const char* columns, NumberType type,
                            std::uint64_t bytes, int use) {
        views_.push_back(
            {{"buffer", 0}, {"byteOffset", bytes_}, {"byteLength", bytes}, {"target", use}});
        bytes_ += bytes;
        accessors_.push_back({{"bufferView", views_.size() - 1},
                              {"componentType", gltfCodeOf(type)},
                              {"count", count},
                              {"type", columns}});
        return accessors_.size() - 1;
    }

    void addMesh(const std::string& name, const Json& attributes, std::size_t indices) {
        Json mesh;
        Json node;
        if (!name.empty()) mesh["name"] = node["name"] = name;
        mesh["primitives"] =
            Json::array({{{"attributes", attributes}, {"indices", indices}, {"mode", 4}}});
        node["mesh"] = meshes_.size();
        nodeIndices_.push_back(nodes_.size());
        meshes_.push_back(std::move(mesh));
        nodes_.push_back(std::move(node));
    }

    Json nodes_ = Json::array();
    Json nodeIndices_ = Json::array();
    Json meshes_ = Json::array();
    Json accessors_ = Json::array();
    Json views_ = Json::array();
    std::uint64_t bytes_ = 0;
};

}  // namespace

GltfLayout layOutGltf(const std::vector<GltfPart>& parts, const std::string& uri) {
    Layout layout;
    for (const GltfPart& part : parts)
        layout.add(part);
    return layout.finish(uri);
}

}  // namespace korva
