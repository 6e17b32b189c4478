// SPDX-License-Identifier: MIT
//
// Meshes and settings for properties that hold for every run: samples and generated meshes, with
// and without borders, with each attribute, some of them from several seeds.
#pragma once

#include "support/decimation_run.h"
#include "support/mesh_builder.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

namespace korvalite::core::test {

enum class Surface { Closed, Open };
// A mask of 0, or colours next to seams, may forbid most of the collapses.
enum class Hindrance { None, Strong };

struct RunCase {
    std::string name;
    Surface surface = Surface::Closed;
    std::function<DMesh()> mesh;
    std::function<void(ProgressiveMesh&)> set = [](ProgressiveMesh&) {};
    Hindrance hindrance = Hindrance::None;
};
inline void PrintTo(const RunCase& runCase, std::ostream* out) {
    *out << runCase.name;
}
inline std::string nameOfRun(const testing::TestParamInfo<RunCase>& row) {
    return row.param.name;
}

// Mirror-symmetric bit for bit, and otherwise uneven in a way that depends on the seed.
inline DMesh unevenMirrored(int axis, std::uint32_t seed) {
    DMesh whole = sphere(3);
    Random random(seed);
    std::vector<float> factors;
    for (std::size_t v = 0; v < whole.vertices.size(); ++v)
        factors.push_back(1.0F + random.around(0.12F));
    // The factors of the lower side are also used on the other side.
    std::map<std::array<float, 3>, std::size_t> places;
    const auto keyOf = [](const FloatVec3& p) { return std::array<float, 3>{p.x, p.y, p.z}; };
    for (std::size_t v = 0; v < whole.vertices.size(); ++v)
        places[keyOf(whole.vertices[v].position())] = v;
    Points points;
    for (std::size_t v = 0; v < whole.vertices.size(); ++v) {
        FloatVec3 p = whole.vertices[v].position();
        FloatVec3 twin = p;
        setComponent(twin, axis, -component(p, axis));
        const float factor = factors[component(p, axis) > 0.0F ? places.at(keyOf(twin)) : v];
        points.push_back({p.x * factor, p.y * factor, p.z * factor});
    }
    for (std::size_t v = 0; v < points.size(); ++v)
        whole.vertices[v].setPosition(points[v]);
    recomputeBoundingBox(whole);
    return whole;
}

inline DMesh unevenSphere(std::uint32_t seed) {
    DMesh mesh = sphere(3);
    jitter(mesh, 0.05F, seed);
    return mesh;
}

inline DMesh unevenHills(std::uint32_t seed) {
    DMesh mesh = grid(22, 18, hills);
    jitter(mesh, 0.2F, seed);
    return mesh;
}

inline std::uint32_t redOrBlue(const FloatVec3& p) {
    return p.x + 0.3F * p.y < 0.1F ? packColor(250, 10, 20) : packColor(20, 10, 240);
}

inline int growingMask(const FloatVec3& p) {
    return p.x < -0.6F ? 0 : (p.x < -0.4F ? 3 : (p.x < -0.2F ? 7 : 60));
}

inline std::vector<RunCase> runCases() {
    const auto mirrored = [](int axis) {
        return [axis](ProgressiveMesh& pm) { askForSymmetry(pm, axis); };
    };
    const auto unchanged = [](ProgressiveMesh&) {};
    const auto from = [](const char* file) { return [file] { return sample(file); }; };
    std::vector<RunCase> cases{
        {"Torus", Surface::Closed, from("synth-torus.Vok")},
        {"Seams", Surface::Closed, from("synth-seams.Vok")},
        {"Colored", Surface::Closed, coloredTorus},
        {"Everything", Surface::Closed, from("spot-everything.Vok"), unchanged, Hindrance::Strong},
        {"Symmetric", Surface::Closed, from("synth-symmetric.Vok"), mirrored(0)},
        {"SymmetricEverything", Surface::Closed, from("spot-everything.Vok"), mirrored(0),
         Hindrance::Strong},
        {"AskedForTheWrongAxis", Surface::Closed, from("spot.Vok"), mirrored(1)},
        {"ByArea", Surface::Closed, from("synth-torus.Vok"),
         [](ProgressiveMesh& pm) { pm.UseAreaWeighting = true; }},
        {"WithReversedNormals", Surface::Closed, from("synth-torus.Vok"),
         [](ProgressiveMesh& pm) { pm.AvoidNormalReverse = false; }},
        {"Masked", Surface::Closed,
         [] {
             DMesh mesh = unevenSphere(5);
             addMask(mesh, growingMask);
             return mesh;
         }},
        {"TwoColors", Surface::Open,
         [] {
             DMesh mesh = unevenHills(8);
             addColors(mesh, redOrBlue);
             return mesh;
         }},
        {"FrozenBorder", Surface::Open, [] { return unevenHills(4); },
         [](ProgressiveMesh& pm) { pm.BorderMode = BORDERMODE_FREEZE; }},
        {"UnguardedBorder", Surface::Open, [] { return unevenHills(4); },
         [](ProgressiveMesh& pm) { pm.BorderMode = BORDER_MODE_NONE; }},
        {"ByTriangles", Surface::Closed, [] { return unevenSphere(9); },
         [](ProgressiveMesh& pm) { pm.targetCountsVertices = false; }},
    };
    for (const std::uint32_t seed : {1U, 2U, 3U}) {
        const std::string number = std::to_string(seed);
        cases.push_back(
            {"UnevenSphere" + number, Surface::Closed, [seed] { return unevenSphere(seed); }});
        cases.push_back(
            {"UnevenHills" + number, Surface::Open, [seed] { return unevenHills(seed); }});
        const int axis = static_cast<int>(seed) - 1;
        cases.push_back({"UnevenMirrored" + number, Surface::Closed,
                         [axis, seed] { return unevenMirrored(axis, seed); }, mirrored(axis)});
    }
    return cases;
}

template <typename Wanted>
std::vector<RunCase> casesWhere(Wanted wanted) {
    std::vector<RunCase> cases = runCases();
    std::erase_if(cases, [&](const RunCase& runCase) { return !wanted(runCase); });
    return cases;
}

// A vertex that could still be collapsed has a finite cost below the penalties and a living
// partner.
inline bool isLeftUntried(const DMesh& mesh, std::int32_t v) {
    constexpr float kRefusedOnce = 1e10F;
    const VertexRecord& vertex = mesh.vertices[static_cast<std::size_t>(v)];
    return mesh.vertexActive.Test(v) && vertex.cost < kRefusedOnce && vertex.partner != kNone &&
           mesh.vertexActive.Test(vertex.partner);
}

// The most that one turn can remove from the count: a collapse, or a mirrored pair.
inline std::uint32_t mostOfATurn(const ProgressiveMesh& pm) {
    return (pm.targetCountsVertices ? 1U : 2U) * (pm.m_handleSymmetry_internal ? 2U : 1U);
}

// The base of tests over runCases(), each with its own job folder.
class RunTest : public testing::TestWithParam<RunCase> {
protected:
    // Decimates to a percentage of the vertices, or of the triangles if the case counts those.
    template <typename Set>
    MeshPtr decimatedTo(float percent, Set set) const {
        return decimated(GetParam().mesh(), [&](ProgressiveMesh& pm) {
            GetParam().set(pm);
            const auto full =
                pm.targetCountsVertices ? pm.mesh.vertexCount() : pm.mesh.triangleCount();
            pm.TargetNumItem =
                static_cast<std::uint32_t>(static_cast<float>(full) * (percent / 100.0F));
            set(pm);
        });
    }
    MeshPtr decimatedTo(float percent) const {
        return decimatedTo(percent, [](ProgressiveMesh&) {});
    }

    JobFolder job;
};

}  // namespace korvalite::core::test
