// SPDX-License-Identifier: MIT
#include "korva/simplify_scene.h"

#include "korva/measured_levels.h"

#include <algorithm>
#include <cstdint>
#include <utility>

namespace korva {

namespace {

using korvalite::Report;
using korvalite::Target;

/// Calls work(mesh, from, to) for each mesh of a scene, with its share of all the work.
template <typename Work>
void forEachMesh(Scene& scene, const Work& work) {
    const auto whole = static_cast<double>(std::max<std::size_t>(scene.triangleCount(), 1));
    std::size_t passed = 0;
    for (auto& [name, mesh] : scene.meshes) {
        const auto from = static_cast<double>(passed) / whole;
        passed += mesh.triangleCount();
        work(mesh, from, static_cast<double>(passed) / whole);
    }
}

}  // namespace

TargetShares::TargetShares(const Target& target, const Scene& scene)
    : target_(target), whole_(target.unit() == Target::Unit::Triangles ? scene.triangleCount()
                                                                       : scene.vertexCount()) {}

Target TargetShares::next(const korvalite::Mesh& mesh) {
    if (target_.unit() == Target::Unit::Percent) return target_;
    const bool isTriangles = target_.unit() == Target::Unit::Triangles;
    const std::uint64_t before = upTo(passed_);
    passed_ += isTriangles ? mesh.triangleCount() : mesh.vertexCount();
    const auto share = static_cast<std::uint32_t>(upTo(passed_) - before);
    return isTriangles ? Target::triangles(share) : Target::vertices(share);
}

std::uint64_t TargetShares::upTo(std::uint64_t items) const {
    return whole_ == 0 ? 0 : target_.count() * items / whole_;
}

void addReport(Report& sum, const Report& report) {
    sum.inputVertices += report.inputVertices;
    sum.inputTriangles += report.inputTriangles;
    sum.asked += report.asked;
    sum.reached += report.reached;
    if (report.missed && !sum.missed) sum.advice = report.advice;
    sum.missed = sum.missed || report.missed;
    for (auto count : {&korvalite::BlockedEdges::mask, &korvalite::BlockedEdges::border,
                       &korvalite::BlockedEdges::seam, &korvalite::BlockedEdges::symmetry,
                       &korvalite::BlockedEdges::noCost, &korvalite::BlockedEdges::flip,
                       &korvalite::BlockedEdges::topology})
        sum.blockedEdges.*count += report.blockedEdges.*count;
}

SceneReport simplifyScene(Scene& scene, const korvalite::Options& options,
                          const MonitorMaker& monitorFor, bool measures) {
    TargetShares shares(options.target, scene);
    SceneReport sum;
    if (measures) sum.error.emplace();
    forEachMesh(scene, [&](korvalite::Mesh& mesh, double from, double to) {
        korvalite::Options own = options;
        own.target = shares.next(mesh);
        const double simplified = measures ? from + 0.6 * (to - from) : to;
        korvalite::Result result =
            korvalite::simplify(mesh.view(), own, monitorFor(from, simplified));
        if (measures && result.mesh.triangleCount() > 0)
            sum.error->add(
                korvalite::measure(mesh.view(), result.mesh.view(),
                                   {.samples = kErrorSamples, .threads = options.threads},
                                   monitorFor(simplified, to)));
        mesh = std::move(result.mesh);
        addReport(sum.report, result.report);
    });
    return sum;
}

SceneReport simplifyWithin(Scene& scene, const ErrorLimit& limit, double millimetre,
                           const korvalite::Options& options, const MonitorMaker& monitorFor) {
    korvalite::Options toTheEnd = options;
    toTheEnd.target = Target::vertices(0);
    SceneReport sum;
    sum.error.emplace();
    forEachMesh(scene, [&](korvalite::Mesh& mesh, double from, double to) {
        const double built = from + 0.4 * (to - from);
        MeasuredLevels levels(std::exchange(mesh, {}), toTheEnd, monitorFor(from, built));
        MeasuredLevels::Level found = levels.coarsestWithin(
            limit.forMesh(levels.diagonal(), millimetre), [&](double a, double b) {
                return monitorFor(built + a * (to - built), built + b * (to - built));
            });
        mesh = std::move(found.mesh);
        sum.error->add(found.measurement);
        Report report = levels.report();
        report.asked = report.reached = static_cast<std::uint32_t>(mesh.vertexCount());
        report.missed = false;
        report.advice.clear();
        report.blockedEdges = {};
        addReport(sum.report, report);
    });
    return sum;
}

}  // namespace korva
