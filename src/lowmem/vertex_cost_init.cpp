// SPDX-License-Identifier: MIT
#include "lowmem/vertex_cost_init.h"

#include "decimation/initial_edges.h"
#include "decimation/metric.h"
#include "decimation/vertex_cost.h"
#include "mesh/corner_lists.h"
#include "shell/base/debug_log.h"
#include "shell/base/progress_channel.h"

#include <new>

namespace korvalite {

namespace {

std::size_t at(std::int32_t index) {
    return static_cast<std::size_t>(index);
}

/// An array form defines what is stored per vertex, how to compute it for a triangle, and how to
/// evaluate the sum of two.
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

void rank(VertexRecord& vertex, std::int32_t partner, float cost) {
    if (vertex.cost > cost) {
        vertex.cost = cost;
        vertex.partner = partner;
    }
}

template <typename Form>
void addTriangleQuadrics(const ProgressiveMesh& pm,
                         std::vector<typename Form::Element>& vertexQuadrics) {
    forEachTriangle(pm.mesh, [&](std::int32_t triangle) {
        const auto quadric = Form::triangleQuadric(pm, triangle);
        for (std::int32_t corner = 3 * triangle; corner < 3 * triangle + 3; ++corner) {
            vertexQuadrics[at(vertexAt(pm.mesh, corner))] += quadric;
        }
    });
}

template <typename Form>
void rankFromArray(ProgressiveMesh& pm, std::vector<typename Form::Element>& vertexQuadrics) {
    addTriangleQuadrics<Form>(pm, vertexQuadrics);
    for (std::int32_t vertex = 0; vertex < pm.mesh.vertexCount(); ++vertex) {
        addBorderAndPlane(pm, vertexQuadrics[at(vertex)], vertex);
        forgetCost(pm.mesh.vertices[at(vertex)]);
    }
    rankInitialEdges(
        pm,
        [&](EdgeEvaluation& edge, std::int32_t a, std::int32_t b) {
            Form::evaluate(pm, edge, a, b, vertexQuadrics[at(a)] + vertexQuadrics[at(b)]);
        },
        [](std::int32_t, const EdgeEvaluation&) {});  // the position is not needed
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
    fillQueue(pm);  // after the array has been freed
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
        // Done only now, so this discards the costs that lower vertices have written here.
        forgetCost(mesh.vertices[at(vertex)]);
        typename Metric::Quadric own;
        typename Metric::Quadric neighbours;  // accumulates over the ring, see rankVertex
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
void InitVerticesCost_LM(ProgressiveMesh& pm, bool logForms) {
    const auto log = [logForms](bool done, const char* success, const char* failure) {
        if (logForms) DebugLog(done ? success : failure);
        return done;
    };
    const bool tryArrays = pm.tryStoreDoubleMat || pm.tryStoreFloatMat;
    if (tryArrays) ReleaseVertexCorners(pm.mesh);
    bool done = pm.tryStoreDoubleMat && log(InitVerticesCostDoubleMat<Metric>(pm),
                                            "   InitVerticesCost by storing DoubleMat succeeded !",
                                            "   InitVerticesCost by storing DoubleMat FAILED !");
    if constexpr (!Metric::kHasColor) {
        done = done ||
               (pm.tryStoreFloatMat && log(InitVerticesCostFloatMat(pm),
                                           "   InitVerticesCost by storing FloatMat succeeded !",
                                           "   InitVerticesCost by storing FloatMat FAILED !"));
    }
    if (tryArrays) {
        BuildVertexCorners(pm.mesh);
        dropDeadVertexCorners(pm.mesh);
    }
    if (done) return;
    if (logForms) DebugLog("   InitVerticesCost without storing matrices!");
    InitVerticesCostNoMat<Metric>(pm);
}

template bool InitVerticesCostDoubleMat<PlainMetric>(ProgressiveMesh&);
template bool InitVerticesCostDoubleMat<ColorMetric>(ProgressiveMesh&);
template void InitVerticesCostNoMat<PlainMetric>(ProgressiveMesh&);
template void InitVerticesCostNoMat<ColorMetric>(ProgressiveMesh&);
template void InitVerticesCost_LM<PlainMetric>(ProgressiveMesh&, bool);
template void InitVerticesCost_LM<ColorMetric>(ProgressiveMesh&, bool);

}  // namespace korvalite
