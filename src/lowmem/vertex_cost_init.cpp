// SPDX-License-Identifier: MIT
#include "lowmem/vertex_cost_init.h"

#include "decimation/metric.h"
#include "decimation/vertex_cost.h"
#include "mesh/corner_lists.h"
#include "shell/base/progress_channel.h"

#include <new>

namespace korvalite {

namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

/// An array form: what is stored for each vertex, how a triangle yields it, and how the sum of two
/// is evaluated.
template <typename Metric>
struct StoredAsIs {
    using Element = typename Metric::Quadric;
    static Element triangleQuadric(const ProgressiveMesh& pm, std::int32_t triangle) {
        return Metric::triangleQuadric(pm, triangle);
    }
    static void evaluate(const ProgressiveMesh& pm, EdgeEvaluation& result, std::int32_t a,
                         std::int32_t b, const Element& sum) {
        Metric::evaluateEdge(pm, result, a, b, sum);
    }
};

struct StoredAsFloats {
    using Element = Quadric3DFloat;
    static Element triangleQuadric(const ProgressiveMesh& pm, std::int32_t triangle) {
        return ComputeTriangleQuadricFloat(pm, triangle);
    }
    static void evaluate(const ProgressiveMesh& pm, EdgeEvaluation& result, std::int32_t a,
                         std::int32_t b, const Element& sum) {
        EvaluateEdgeCost(pm, result, a, b, widened(sum));
    }
};

void forget(VertexRecord& vertex) {
    vertex.cost = kNotCollapsible;
    vertex.partner = kNone;
}

void rank(VertexRecord& vertex, std::int32_t partner, float cost) {
    if (vertex.cost > cost) {
        vertex.cost = cost;
        vertex.partner = partner;
    }
}

void fillQueue(ProgressiveMesh& pm) {
    pm.costQueue.Init(pm.mesh.vertexCount());
    for (std::int32_t vertex = 0; vertex < pm.mesh.vertexCount(); ++vertex) {
        pm.costQueue.Insert(vertex);
    }
}

enum class EdgeVerdict { Evaluate, Skip, SkipUnasked };

/// Which end of an edge may take its cost.
struct EdgeEnds {
    bool updateA = true;
    bool updateB = true;
};

/// Whether the edge from a to b is evaluated. SkipUnasked passes over the stop request too.
EdgeVerdict judgeEdge(const ProgressiveMesh& pm, std::int32_t a, std::int32_t b, EdgeEnds& ends) {
    const DMesh& mesh = pm.mesh;
    // An interior edge is met from both sides and taken at its lower end; a border edge is met
    // once and taken as it lies.
    const bool atBorder = mesh.borderVertices.Test(a) || mesh.borderVertices.Test(b);
    if (a == b || (a > b && !atBorder)) return EdgeVerdict::Skip;
    if (pm.m_handleSymmetry_internal) {
        const auto& pairing = mesh.symmetryCache.pairing;
        if (pairing[at(a)] == a && pairing[at(b)] == b) return EdgeVerdict::Evaluate;
        ends = {!pm.symmetrySlaves.Test(a), !pm.symmetrySlaves.Test(b)};
        if (pairing[at(a)] == b) return EdgeVerdict::Evaluate;
        if (!ends.updateA && !ends.updateB) return EdgeVerdict::SkipUnasked;
    }
    return isHeldBySeam(pm, a, b) ? EdgeVerdict::SkipUnasked : EdgeVerdict::Evaluate;
}

template <typename Form>
void addTriangleQuadrics(const ProgressiveMesh& pm,
                         std::vector<typename Form::Element>& vertexQuadrics) {
    for (std::int32_t triangle = 0; triangle < pm.mesh.triangleCount(); ++triangle) {
        const auto quadric = Form::triangleQuadric(pm, triangle);
        for (std::int32_t corner = 3 * triangle; corner < 3 * triangle + 3; ++corner) {
            vertexQuadrics[at(vertexAt(pm.mesh, corner))] += quadric;
        }
    }
}

template <typename Form>
void rankEdges(ProgressiveMesh& pm, const std::vector<typename Form::Element>& vertexQuadrics) {
    DMesh& mesh = pm.mesh;
    const ProgressChannel& progress = progressChannel();
    EdgeEvaluation edge;
    for (std::int32_t corner = 0; corner < mesh.cornerCount(); ++corner) {
        const std::int32_t a = vertexAt(mesh, corner);
        const std::int32_t b = vertexAt(mesh, nextCorner(corner));
        EdgeEnds ends;
        const EdgeVerdict verdict = judgeEdge(pm, a, b, ends);
        if (verdict == EdgeVerdict::SkipUnasked) continue;
        if (verdict == EdgeVerdict::Evaluate) {
            Form::evaluate(pm, edge, a, b, vertexQuadrics[at(a)] + vertexQuadrics[at(b)]);
            if (ends.updateA) rank(mesh.vertices[at(a)], b, edge.cost);
            if (ends.updateB) rank(mesh.vertices[at(b)], a, edge.cost);
        }
        if (progress.stopRequested()) return;
    }
}

template <typename Form>
void rankFromArray(ProgressiveMesh& pm, std::vector<typename Form::Element>& vertexQuadrics) {
    addTriangleQuadrics<Form>(pm, vertexQuadrics);
    for (std::int32_t vertex = 0; vertex < pm.mesh.vertexCount(); ++vertex) {
        addBorderAndPlane(pm, vertexQuadrics[at(vertex)], vertex);
        forget(pm.mesh.vertices[at(vertex)]);
    }
    rankEdges<Form>(pm, vertexQuadrics);
}

template <typename Form>
bool initFromArray(ProgressiveMesh& pm) {
    {
        std::vector<typename Form::Element> vertexQuadrics;
        try {
            reserveLarge(vertexQuadrics, pm.mesh.vertices.size());
            vertexQuadrics.resize(pm.mesh.vertices.size());
        } catch (const std::bad_alloc&) {
            return false;
        }
        rankFromArray<Form>(pm, vertexQuadrics);
    }
    fillQueue(pm);  // once the array is gone
    return true;
}

}  // namespace

template <typename Metric>
bool InitVerticesCostDoubleMat(ProgressiveMesh& pm) {
    return initFromArray<StoredAsIs<Metric>>(pm);
}

bool InitVerticesCostFloatMat(ProgressiveMesh& pm) {
    return initFromArray<StoredAsFloats>(pm);
}

template <typename Metric>
void InitVerticesCostNoMat(ProgressiveMesh& pm) {
    DMesh& mesh = pm.mesh;
    IndexList ring;
    EdgeEvaluation edge;
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        // In the vertex's own turn: this wipes out what lower vertices wrote into it.
        forget(mesh.vertices[at(vertex)]);
        typename Metric::Quadric own;
        typename Metric::Quadric neighbours;  // sums up over the ring, see RecomputeVertexCost
        Metric::addVertexQuadric(pm, own, vertex);
        GetVertexNeighbours(mesh, vertex, ring);
        for (const std::int32_t x : ring) {
            if (x <= vertex || isHeldBySeam(pm, vertex, x)) continue;
            Metric::addVertexQuadric(pm, neighbours, x);
            Metric::evaluateEdge(pm, edge, vertex, x, own + neighbours);
            rank(mesh.vertices[at(vertex)], x, edge.cost);
            rank(mesh.vertices[at(x)], vertex, edge.cost);
        }
        if (progressChannel().stopRequested()) break;
    }
    fillQueue(pm);
}

template <typename Metric>
void InitVerticesCost_LM(ProgressiveMesh& pm) {
    const bool tryArrays = pm.tryStoreDoubleMat || pm.tryStoreFloatMat;
    if (tryArrays) ReleaseVertexCorners(pm.mesh);
    bool done = pm.tryStoreDoubleMat && InitVerticesCostDoubleMat<Metric>(pm);
    if constexpr (!Metric::kHasColor) {
        done = done || (pm.tryStoreFloatMat && InitVerticesCostFloatMat(pm));
    }
    if (tryArrays) BuildVertexCorners(pm.mesh);
    if (!done) InitVerticesCostNoMat<Metric>(pm);
}

template bool InitVerticesCostDoubleMat<PlainMetric>(ProgressiveMesh&);
template bool InitVerticesCostDoubleMat<ColorMetric>(ProgressiveMesh&);
template void InitVerticesCostNoMat<PlainMetric>(ProgressiveMesh&);
template void InitVerticesCostNoMat<ColorMetric>(ProgressiveMesh&);
template void InitVerticesCost_LM<PlainMetric>(ProgressiveMesh&);
template void InitVerticesCost_LM<ColorMetric>(ProgressiveMesh&);

}  // namespace korvalite
