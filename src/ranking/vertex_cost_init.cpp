// SPDX-License-Identifier: MIT
#include "ranking/vertex_cost_init.h"

#include "base/debug_log.h"
#include "mesh/corner_lists.h"
#include "metric/metric.h"
#include "ranking/initial_edges.h"
#include "ranking/vertex_cost.h"

#include <new>

namespace korvalite::core {

namespace {

/// An array form defines what is stored per vertex, how to compute it for a triangle, and how to
/// evaluate the sum of two.
template <typename Metric>
struct StoredAsIs {
    using Element = typename Metric::Quadric;
    static Element triangleQuadric(const WorkingMesh& work, std::int32_t triangle) {
        return Metric::triangleQuadric(work.mesh, work, triangle);
    }
    static void evaluate(const WorkingMesh& work, EdgeEvaluation& result, std::int32_t a,
                         std::int32_t b, const Element& sum) {
        Metric::evaluateEdge(work.mesh, work, result, a, b, sum);
    }
};

struct StoredAsFloats {
    using Element = Quadric3DFloat;
    static Element triangleQuadric(const WorkingMesh& work, std::int32_t triangle) {
        return ComputeTriangleQuadricFloat(work.mesh, work, triangle);
    }
    static void evaluate(const WorkingMesh& work, EdgeEvaluation& result, std::int32_t a,
                         std::int32_t b, const Element& sum) {
        EvaluateEdgeCost(work.mesh, work, result, a, b, widened(sum));
    }
};

template <typename Form>
void addTriangleQuadrics(const WorkingMesh& work,
                         IndexedArray<typename Form::Element>& vertexQuadrics) {
    forEachTriangle(work.mesh, [&](std::int32_t triangle) {
        const auto quadric = Form::triangleQuadric(work, triangle);
        for (const std::int32_t corner : cornersOf(triangle)) {
            vertexQuadrics[vertexAt(work.mesh, corner)] += quadric;
        }
    });
}

template <typename Form>
void rankFromArray(WorkingMesh& work, IndexedArray<typename Form::Element>& vertexQuadrics) {
    addTriangleQuadrics<Form>(work, vertexQuadrics);
    for (std::int32_t vertex = 0; vertex < work.mesh.vertexCount(); ++vertex) {
        addBorderAndPlane(work.mesh, work, vertexQuadrics[vertex], vertex);
        forgetCost(work.mesh.vertices[vertex]);
    }
    rankInitialEdges(
        work,
        [&](EdgeEvaluation& edge, std::int32_t a, std::int32_t b) {
            Form::evaluate(work, edge, a, b, vertexQuadrics[a] + vertexQuadrics[b]);
        },
        [](std::int32_t, const EdgeEvaluation&) {});  // the position is not needed
}

template <typename Form>
bool initFromArray(WorkingMesh& work) {
    {
        IndexedArray<typename Form::Element> vertexQuadrics;
        try {
            reserveLarge(vertexQuadrics, work.mesh.vertices.size());
            vertexQuadrics.resize(work.mesh.vertices.size());
        } catch (const std::bad_alloc&) {
            return false;
        }
        rankFromArray<Form>(work, vertexQuadrics);
    }
    fillQueue(work);  // after the array has been freed
    return true;
}

}  // namespace

template <typename Metric>
bool InitVerticesCostDoubleMat(WorkingMesh& work) {
    return initFromArray<StoredAsIs<Metric>>(work);
}

bool InitVerticesCostFloatMat(WorkingMesh& work) {
    return initFromArray<StoredAsFloats>(work);
}

template <typename Metric>
void InitVerticesCostNoMat(WorkingMesh& work) {
    DMesh& mesh = work.mesh;
    IndexList ring;
    for (std::int32_t vertex = 0; vertex < mesh.vertexCount(); ++vertex) {
        // COMPAT: done only now, so it discards what lower vertices wrote; costs depend on it.
        forgetCost(mesh.vertices[vertex]);
        typename Metric::Quadric own;
        typename Metric::Quadric neighbours;  // accumulates over the ring, see rankVertex
        Metric::addVertexQuadric(work.mesh, work, own, vertex);
        GetVertexNeighbours(mesh, vertex, ring);
        for (const std::int32_t x : ring) {
            if (x <= vertex || isHeldBySeam(work, vertex, x)) continue;
            Metric::addVertexQuadric(work.mesh, work, neighbours, x);
            EdgeEvaluation edge;
            Metric::evaluateEdge(work.mesh, work, edge, vertex, x, own + neighbours);
            VertexRecord& end = mesh.vertices[vertex];
            VertexRecord& other = mesh.vertices[x];
            takeIfLower(end.cost, end.partner, edge.cost, x);
            takeIfLower(other.cost, other.partner, edge.cost, vertex);
        }
        if (work.monitor->stopRequested()) break;
    }
    fillQueue(work);
}

template <typename Metric>
void InitVerticesCost_LM(WorkingMesh& work, const CostFormSettings& forms, bool logForms) {
    const auto log = [logForms](bool done, const char* success, const char* failure) {
        if (logForms) DebugLog("%s", done ? success : failure);
        return done;
    };
    const bool tryArrays = forms.tryStoreDoubleMat || forms.tryStoreFloatMat;
    if (tryArrays) ReleaseVertexCorners(work.mesh);
    bool done =
        forms.tryStoreDoubleMat && log(InitVerticesCostDoubleMat<Metric>(work),
                                       "   InitVerticesCost by storing DoubleMat succeeded !",
                                       "   InitVerticesCost by storing DoubleMat FAILED !");
    if constexpr (!Metric::kHasColor) {
        done = done ||
               (forms.tryStoreFloatMat && log(InitVerticesCostFloatMat(work),
                                              "   InitVerticesCost by storing FloatMat succeeded !",
                                              "   InitVerticesCost by storing FloatMat FAILED !"));
    }
    if (tryArrays) {
        BuildVertexCorners(work.mesh);
        dropDeadVertexCorners(work.mesh);
    }
    if (done) return;
    if (logForms) DebugLog("   InitVerticesCost without storing matrices!");
    InitVerticesCostNoMat<Metric>(work);
}

template bool InitVerticesCostDoubleMat<PlainMetric>(WorkingMesh&);
template bool InitVerticesCostDoubleMat<ColorMetric>(WorkingMesh&);
template void InitVerticesCostNoMat<PlainMetric>(WorkingMesh&);
template void InitVerticesCostNoMat<ColorMetric>(WorkingMesh&);
template void InitVerticesCost_LM<PlainMetric>(WorkingMesh&, const CostFormSettings&, bool);
template void InitVerticesCost_LM<ColorMetric>(WorkingMesh&, const CostFormSettings&, bool);

}  // namespace korvalite::core
