// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/scene.h"
#include "korva/goal.h"
#include "korva/measured_error.h"

#include <korvalite/korvalite.h>

#include <functional>
#include <optional>

namespace korva {

/// Makes the monitor of a step that takes the work from `from` to `to`, where all of it is 1.
using MonitorMaker = std::function<korvalite::Monitor(double from, double to)>;

struct SceneReport {
    korvalite::Report report;
    std::optional<MeasuredError> error;  // if it was measured
};

/// Divides a target among meshes in proportion to their sizes. The shares of a count add up to it.
class TargetShares {
public:
    TargetShares(const korvalite::Target& target, const Scene& scene);

    /// The share of the next mesh of the scene.
    [[nodiscard]] korvalite::Target next(const korvalite::Mesh& mesh);

private:
    [[nodiscard]] std::uint64_t upTo(std::uint64_t items) const;

    korvalite::Target target_;
    std::uint64_t whole_;
    std::uint64_t passed_ = 0;  // vertices or triangles of the meshes so far
};

/// Adds the report of a mesh. The advice is that of the first mesh that missed its target.
void addReport(korvalite::Report& sum, const korvalite::Report& report);

/// Simplifies each mesh of a scene to its share of the options' target. Measures the error if
/// `measures` is set.
[[nodiscard]] SceneReport simplifyScene(Scene& scene, const korvalite::Options& options,
                                        const MonitorMaker& monitorFor, bool measures = false);

/// Simplifies each mesh of a scene as far as the limit allows. `millimetre` is as in
/// ErrorLimit. In the report, `asked` is what was reached.
[[nodiscard]] SceneReport simplifyWithin(Scene& scene, const ErrorLimit& limit, double millimetre,
                                         const korvalite::Options& options,
                                         const MonitorMaker& monitorFor);

}  // namespace korva
