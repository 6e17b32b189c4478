// SPDX-License-Identifier: MIT
#include "mesh/borders_and_seams.h"

#include "mesh/corner_lists.h"

#include <cmath>
#include <functional>
#include <unordered_map>
#include <utility>

namespace korvalite::core {

namespace {

constexpr std::uint32_t kUnassigned = 0xFFFFFFFFU;
constexpr float kWeldDistanceSq = 1e-5F;

UVCoord uvAt(const DMesh& mesh, std::int32_t uvIndex) {
    return mesh.coordsUV[uvIndex];
}

UVCoord direction(UVCoord to, UVCoord from) {
    UVCoord d{to.u - from.u, to.v - from.v};
    const float length = std::sqrt(d.u * d.u + d.v * d.v);
    const double wide = static_cast<double>(length);
    if (!(wide >= -1e-6 && wide <= 1e-6)) {
        d.u /= length;
        d.v /= length;
    }
    return d;
}

bool seamBends(const DMesh& mesh, std::int32_t u, std::int32_t a, std::int32_t b, double t) {
    const UVCoord d1 = direction(uvAt(mesh, a), uvAt(mesh, u));
    const UVCoord d2 = direction(uvAt(mesh, u), uvAt(mesh, b));
    const float dot = d1.u * d2.u + d1.v * d2.v;
    return 1.0 - t >= static_cast<double>(dot);
}

void markSeams(DMesh& mesh, IndexList& neighbours, IndexList& corners) {
    const auto count = static_cast<std::int32_t>(mesh.coordsUV.size());
    for (std::int32_t u = 0; u < count; ++u) {
        GetUVCornersAndNeighbours(mesh, u, neighbours, corners);
        if (neighbours.size() == corners.size()) continue;
        mesh.uvSeamCoords.Set(u);
        mesh.uvSeamVertices.Set(vertexAt(mesh, corners.front()));
    }
}

void markSeamCorners(DMesh& mesh, IndexList& neighbours, IndexList& corners) {
    // COMPAT: an angle of 0 stands for -0.1, which makes every vertex on a seam a seam corner.
    const double t = mesh.uvSeamAngle == 0.0F ? static_cast<double>(-0.1F)
                                              : static_cast<double>(mesh.uvSeamAngle);
    IndexList onSeam;
    const auto count = static_cast<std::int32_t>(mesh.coordsUV.size());
    for (std::int32_t u = 0; u < count; ++u) {
        if (!mesh.uvSeamCoords.Test(u)) continue;
        GetUVCornersAndNeighbours(mesh, u, neighbours, corners);
        if (neighbours.size() <= corners.size()) continue;
        onSeam.clear();
        for (const std::int32_t x : neighbours) {
            if (mesh.uvSeamCoords.Test(x)) onSeam.push_back(x);
        }
        const bool isCorner = onSeam.size() == 1 || onSeam.size() >= 3 ||
                              (onSeam.size() == 2 && seamBends(mesh, u, onSeam[0], onSeam[1], t));
        if (isCorner) mesh.uvSeamCorners.Set(vertexAt(mesh, corners.front()));
    }
}

bool isClose(UVCoord a, UVCoord b) {
    const float du = a.u - b.u;
    const float dv = a.v - b.v;
    return du * du + dv * dv < kWeldDistanceSq;
}

/// The records that the corners of one vertex keep, grouped by grid cell. No two of them are
/// close, so a cell holds only a few.
class KeptRecords {
public:
    explicit KeptRecords(const IndexedArray<UVCoord>& coords) : coords_(coords) {}

    void add(std::uint32_t record) {
        const UVCoord uv = coords_[record];
        // Nothing is close to a record that is not finite.
        if (std::isfinite(uv.u) && std::isfinite(uv.v)) cells_[cellOf(uv, 0, 0)].push_back(record);
    }

    /// The first record close to `uv`; kUnassigned if there is none.
    [[nodiscard]] std::uint32_t firstClose(UVCoord uv) const {
        std::uint32_t first = kUnassigned;
        for (const double du : {-1.0, 0.0, 1.0}) {
            for (const double dv : {-1.0, 0.0, 1.0}) {
                const auto cell = cells_.find(cellOf(uv, du, dv));
                if (cell == cells_.end()) continue;
                for (const std::uint32_t record : cell->second) {
                    if (record < first && isClose(coords_[record], uv)) first = record;
                }
            }
        }
        return first;
    }

private:
    using Cell = std::pair<double, double>;
    struct HashOfCell {
        std::size_t operator()(const Cell& cell) const {
            return std::hash<double>()(cell.first) * 31 + std::hash<double>()(cell.second);
        }
    };
    // A little wider than the welding distance: close records are in the same or adjacent cells.
    static constexpr double kCellSize = 0.0032;

    [[nodiscard]] static Cell cellOf(UVCoord uv, double du, double dv) {
        return {std::floor(static_cast<double>(uv.u) / kCellSize) + du,
                std::floor(static_cast<double>(uv.v) / kCellSize) + dv};
    }

    const IndexedArray<UVCoord>& coords_;
    std::unordered_map<Cell, IndexedArray<std::uint32_t>, HashOfCell> cells_;
};

/// Does the work of weldVertex for a vertex with many corners, without comparing all pairs.
void weldHub(DMesh& mesh, const IndexList& corners, BitArray& duplicates) {
    KeptRecords kept(mesh.coordsUV);
    for (const std::int32_t corner : corners) {
        const auto record = static_cast<std::uint32_t>(corner);
        if (mesh.indicesUV[record] != kUnassigned) continue;
        const std::uint32_t first = kept.firstClose(mesh.coordsUV[record]);
        if (first == kUnassigned) {
            mesh.indicesUV[record] = record;
            kept.add(record);
        } else {
            mesh.indicesUV[record] = first;
            duplicates.Set(record);
        }
    }
}

/// Points the unassigned corners of one vertex, in ascending order, at the first record that is
/// close enough, and marks the records that are no longer needed.
// COMPAT: the first record is kept as it is, not a mean of the close ones; outputs depend on it.
void weldVertex(DMesh& mesh, const IndexList& corners, BitArray& duplicates) {
    constexpr std::size_t kMostCompared = 64;
    if (corners.size() > kMostCompared) return weldHub(mesh, corners, duplicates);
    std::size_t unassigned = corners.size();
    for (std::size_t i = 0; i < corners.size() && unassigned > 0; ++i) {
        const auto a = static_cast<std::uint32_t>(corners[i]);
        if (mesh.indicesUV[a] != kUnassigned) continue;
        mesh.indicesUV[a] = a;
        --unassigned;
        for (std::size_t j = i + 1; j < corners.size(); ++j) {
            const auto b = static_cast<std::uint32_t>(corners[j]);
            if (mesh.indicesUV[b] != kUnassigned) continue;
            if (isClose(mesh.coordsUV[a], mesh.coordsUV[b])) {
                duplicates.Set(b);
                mesh.indicesUV[b] = a;
                --unassigned;
            }
        }
    }
}

/// Drops the marked records and renumbers the indices.
void compactCoords(DMesh& mesh, const BitArray& duplicates) {
    IndexedArray<std::uint32_t> newIndex(mesh.coordsUV.size());
    IndexedArray<UVCoord> kept;
    kept.reserve(mesh.coordsUV.size() - static_cast<std::size_t>(duplicates.CountSet()));
    for (std::uint32_t i = 0; i < mesh.coordsUV.size(); ++i) {
        if (duplicates.Test(i)) continue;
        newIndex[i] = static_cast<std::uint32_t>(kept.size());
        kept.push_back(mesh.coordsUV[i]);
    }
    mesh.coordsUV.swap(kept);
    for (std::uint32_t& index : mesh.indicesUV)
        index = newIndex[index];
}

}  // namespace

void ComputeBorderVertices(DMesh& mesh) {
    mesh.borderVertices.Free();
    mesh.borderVertices.Resize(mesh.vertexCount(), false);
    IndexList neighbours;
    IndexList corners;
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        GetVertexCornersAndNeighbours(mesh, vertex, neighbours, corners);
        // COMPAT: a non-manifold vertex may count as border too; the bit decides what collapses.
        if (neighbours.size() != corners.size()) mesh.borderVertices.Set(vertex);
    }
}

void WeldCornerUVs(DMesh& mesh) {
    if (!mesh.indicesUV.empty() || mesh.coordsUV.size() != mesh.triangles.size()) {
        if (mesh.indicesUV.size() != mesh.triangles.size()) {
            IndexedArray<std::uint32_t>().swap(mesh.indicesUV);
            IndexedArray<UVCoord>().swap(mesh.coordsUV);
        }
        return;
    }
    BitArray duplicates;
    duplicates.Reset(static_cast<std::int32_t>(mesh.coordsUV.size()));
    mesh.indicesUV.assign(mesh.triangles.size(), kUnassigned);
    IndexList corners;
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        GetVertexCorners(mesh, vertex, corners);
        std::sort(corners.begin(), corners.end());
        weldVertex(mesh, corners, duplicates);
    }
    compactCoords(mesh, duplicates);
}

void ComputeUVSeams(DMesh& mesh) {
    mesh.uvSeamCoords.Free();
    mesh.uvSeamCoords.Resize(static_cast<std::int32_t>(mesh.coordsUV.size()), false);
    for (BitArray* perVertex : {&mesh.uvSeamVertices, &mesh.uvSeamCorners}) {
        perVertex->Free();
        perVertex->Resize(mesh.vertexCount(), false);
    }
    IndexList neighbours;
    IndexList corners;
    markSeams(mesh, neighbours, corners);
    markSeamCorners(mesh, neighbours, corners);
}

}  // namespace korvalite::core
