// SPDX-License-Identifier: MIT
//
// Any bytes as a small mesh with options: points of an integer grid, a few of them extreme or not
// finite, and any triangles between them. It is decimated by one of the drivers, taken up and down
// its levels, and decimated further by each of the others. Whatever the mesh, counts, bits and
// triangles must agree, finite coordinates must stay finite, and the way up must restore the
// initial mesh.
#include "drivers/run_decimation.h"
#include "fuzz/byte_reader.h"
#include "mesh/borders_and_seams.h"
#include "mesh/corner_lists.h"
#include "progressive/progressive_mesh.h"
#include "support/level_walk.h"
#include "support/mesh_builder.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <set>
#include <utility>

namespace {

using namespace korvalite::core;
using test::ByteReader;

constexpr std::uint32_t kMostPoints = 40;
constexpr std::uint32_t kMostTriangles = 120;

void require(bool holds, int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "line %d does not hold\n", line);
    std::abort();
}

float coordinate(ByteReader& bytes) {
    const std::uint8_t byte = bytes.byte();
    switch (byte) {
    case 0xFF: return std::numeric_limits<float>::quiet_NaN();
    case 0xFE: return std::numeric_limits<float>::infinity();
    case 0xFD: return -std::numeric_limits<float>::infinity();
    case 0xFC: return 1e30F;
    case 0xFB: return 1e-30F;
    case 0xFA: return std::numeric_limits<float>::max();
    default: return static_cast<float>(byte % 16) - 8.0F;
    }
}

struct Options {
    bool manifoldEdges = false;  // drop triangles that give an edge a third side
    bool mirrored = false;
    bool uvs = false;
    bool colors = false;
    bool mask = false;
};

DMesh readSurface(ByteReader& bytes, const Options& options, int axis) {
    test::Points points;
    const std::uint32_t pointCount = bytes.below(kMostPoints + 1);
    for (std::uint32_t i = 0; i < pointCount; ++i) {
        const float x = coordinate(bytes);
        const float y = coordinate(bytes);
        points.push_back({x, y, coordinate(bytes)});
    }
    test::Faces faces;
    const std::uint32_t faceCount = pointCount == 0 ? 0 : bytes.below(kMostTriangles + 1);
    std::set<std::pair<std::uint32_t, std::uint32_t>> edges;
    for (std::uint32_t i = 0; i < faceCount && !bytes.isEmpty(); ++i) {
        const std::uint32_t a = bytes.below(pointCount);
        const std::uint32_t b = bytes.below(pointCount);
        const std::uint32_t c = bytes.below(pointCount);
        if (options.manifoldEdges) {
            if (a == b || b == c || c == a) continue;
            if (edges.count({a, b}) + edges.count({b, c}) + edges.count({c, a}) != 0) continue;
            edges.insert({{a, b}, {b, c}, {c, a}});
        }
        faces.push_back({a, b, c});
    }
    const DMesh half = test::buildMesh(points, faces);
    return options.mirrored ? test::withMirrorImage(half, axis) : half;
}

void readAttributes(ByteReader& bytes, const Options& options, DMesh& mesh) {
    if (options.uvs) test::addCornerUVs(mesh, [&](std::uint32_t) { return bytes.below(3); });
    if (options.colors) {
        test::addColors(mesh,
                        [&](const FloatVec3&) { return std::uint32_t{bytes.byte()} * 0x010203U; });
    }
    if (options.mask) test::addMask(mesh, [&](const FloatVec3&) { return 255U - bytes.byte(); });
}

void readSettings(ByteReader& bytes, ProgressiveMesh& pm) {
    const std::uint8_t flags = bytes.byte();
    pm.ProtectTopology = (flags & 1U) == 0;
    pm.AvoidNormalReverse = (flags & 2U) == 0;
    pm.UseAreaWeighting = (flags & 4U) != 0;
    pm.BorderMode = (flags & 8U) != 0 ? BORDERMODE_FREEZE : BORDERMODE_PROTECT;
    pm.AllowFinishStep = (flags & 16U) != 0;
    pm.tryStoreDoubleMat = (flags & 32U) == 0;
    pm.tryStoreFloatMat = (flags & 64U) == 0;
    pm.targetCountsVertices = (flags & 128U) == 0;
    pm.recordVSplits = true;
    pm.vsplitList.pageCapacity = bytes.below(4);
    pm.TargetNumItem = bytes.below(kMostPoints);
    const std::uint32_t symmetry = bytes.below(4);
    pm.handleSymmetry = symmetry < 3;
    pm.mesh.symmetryMode = symmetry < 3 ? 1 : 0;
    pm.mesh.symmetryAxis = symmetry < 3 ? static_cast<std::int32_t>(symmetry) : kNone;
}

// Reads the driver last, so that older and shorter inputs keep their meaning.
void readDriver(ByteReader& bytes, ProgressiveMesh& pm) {
    constexpr std::int32_t kDrivers[] = {MEMSPEED_TRADEOFF_LOW_MEM, MEMSPEED_TRADEOFF_LOW_MEM,
                                         MEMSPEED_TRADEOFF_HIGH_SPEED, MEMSPEED_TRADEOFF_MELAX};
    pm.MemSpeedTradeOff = kDrivers[bytes.below(4)];
}

bool hasRepeatedCorner(const DMesh& mesh, std::int32_t t) {
    const std::uint32_t* v = &mesh.triangles[3 * static_cast<std::size_t>(t)];
    return v[0] == v[1] || v[1] == v[2] || v[2] == v[0];
}

void requireSound(const DMesh& mesh, bool mayRepeatCorners) {
    require(mesh.vertexActive.count() == mesh.vertexCount());
    require(mesh.triangleActive.count() == mesh.triangleCount());
    std::uint32_t vertices = 0;
    std::uint32_t triangles = 0;
    for (std::int32_t v = 0; v < mesh.vertexCount(); ++v)
        vertices += mesh.vertexActive.Test(v) ? 1U : 0U;
    for (std::int32_t t = 0; t < mesh.triangleCount(); ++t) {
        if (!mesh.triangleActive.Test(t)) continue;
        ++triangles;
        for (std::int32_t c = 3 * t; c < 3 * t + 3; ++c)
            require(mesh.vertexActive.Test(vertexAt(mesh, c)));
        require(mayRepeatCorners || !hasRepeatedCorner(mesh, t));
    }
    require(vertices == mesh.numActiveVertices && triangles == mesh.numActiveTriangles);
}

std::size_t countNotFinite(const DMesh& mesh) {
    return static_cast<std::size_t>(
        std::count_if(mesh.vertices.begin(), mesh.vertices.end(),
                      [](const VertexRecord& vertex) { return !isFinite(vertex.position()); }));
}

// Each vertex has collapsed at most once, and each triangle has been removed at most once.
void requireDistinctRecords(ProgressiveMesh& pm) {
    std::set<std::int32_t> vertices;
    std::set<std::int32_t> triangles;
    for (std::uint32_t i = 0; i < pm.vsplitList.NumVtxSplit(); ++i) {
        const VSplitView split = pm.vsplitList.ensureLoaded(static_cast<std::int32_t>(i));
        require(vertices.insert(split.vertex()).second);
        for (const std::int32_t triangle : split.removedTriangles())
            require(triangles.insert(triangle).second);
    }
}

// Whether the rules of the UV update can be undone exactly. They cannot where two UVs of a vertex
// merge into one, which is then exchanged twice in the same order; nor where a triangle is removed
// without a pair, because its corners then stay on their UV's list and are renamed with it for
// good.
bool restoresUVs(ProgressiveMesh& pm) {
    for (std::uint32_t i = 0; i < pm.vsplitList.NumVtxSplit(); ++i) {
        const VSplitView split = pm.vsplitList.ensureLoaded(static_cast<std::int32_t>(i));
        const auto words = split.uvIndexPairWords();
        if (words.empty() && !split.removedTriangles().empty()) return false;
        std::set<std::int32_t> merged;
        for (std::size_t k = 0; k + 1 < words.size(); k += 2) {
            if (words[k] == words[k + 1] || !merged.insert(words[k + 1]).second) return false;
        }
    }
    return true;
}

void walkLevels(ByteReader& bytes, ProgressiveMesh& pm, bool mayRepeatCorners) {
    while (!bytes.isEmpty()) {
        updateMeshAtLevel(pm, static_cast<std::int32_t>(bytes.below(kMostTriangles + 2)) - 1);
        requireSound(pm.mesh, mayRepeatCorners);
    }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    ByteReader bytes(data, size);
    ProgressiveMesh pm;
    readSettings(bytes, pm);
    const int axis = pm.mesh.symmetryAxis;
    const std::int32_t mode = pm.mesh.symmetryMode;
    const std::uint8_t flags = bytes.byte();
    const Options options{(flags & 1U) != 0, (flags & 2U) != 0 && axis != kNone, (flags & 4U) != 0,
                          (flags & 8U) != 0, (flags & 16U) != 0};
    pm.DoReorder = (flags & 32U) != 0;
    pm.mesh = readSurface(bytes, options, axis);
    pm.mesh.symmetryAxis = axis;
    pm.mesh.symmetryMode = mode;
    readAttributes(bytes, options, pm.mesh);
    readDriver(bytes, pm);

    bool repeated = false;
    for (std::int32_t t = 0; t < pm.mesh.triangleCount(); ++t)
        repeated = repeated || hasRepeatedCorner(pm.mesh, t);

    DMesh original = pm.mesh;
    if (!original.coordsUV.empty()) {
        BuildVertexCorners(original);
        WeldCornerUVs(original);
    }

    const auto requireRun = [&] {
        require(RunDecimation(pm) == 0);
        requireSound(pm.mesh, repeated);
        requireDistinctRecords(pm);
        require(countNotFinite(pm.mesh) == countNotFinite(original));
    };
    requireRun();

    if (pm.MemSpeedTradeOff != MEMSPEED_TRADEOFF_MELAX) {
        test::markAllApplied(pm);
        const bool compareUVs = pm.m_handleUVs_internal && !repeated && restoresUVs(pm);
        const auto uvs = compareUVs ? test::UVs::Compared : test::UVs::Ignored;
        const auto lowest = test::surfaceOf(pm.mesh, uvs);
        test::goAllUp(pm);
        require(pm.CurVtxSplitPos == 0);
        requireSound(pm.mesh, repeated);
        require(test::surfaceOf(pm.mesh, uvs) == test::surfaceOf(original, uvs));

        test::goAllDown(pm);
        requireSound(pm.mesh, repeated);
        require(test::surfaceOf(pm.mesh, uvs) == lowest);
        walkLevels(bytes, pm, repeated);
    }

    // A mesh at any level can be decimated further, by the same driver and by any other.
    pm.TargetNumItem /= 2;
    requireRun();
    for (const std::int32_t driver : {MEMSPEED_TRADEOFF_MELAX, MEMSPEED_TRADEOFF_LOW_MEM,
                                      MEMSPEED_TRADEOFF_HIGH_SPEED, MEMSPEED_TRADEOFF_LOW_MEM}) {
        pm.MemSpeedTradeOff = driver;
        pm.TargetNumItem = pm.activeCount() * 3 / 4;
        requireRun();
    }
    return 0;
}
