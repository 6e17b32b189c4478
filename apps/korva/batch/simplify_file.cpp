// SPDX-License-Identifier: MIT
#include "korva/batch/simplify_file.h"

#include "korva/files/file_table.h"
#include "korva/simplify_scene.h"
#include "korva/work_fraction.h"

#include <chrono>
#include <system_error>
#include <utility>

namespace korva {

namespace {

// The shares of a usual run.
constexpr double kRead = 1.0 / 12;
constexpr double kSimplified = 11.0 / 12;

void report(const FractionMonitor& monitor, double fraction) {
    if (!monitor(fraction)) throw korvalite::Error(korvalite::ErrorCode::Cancelled, "Cancelled.");
}

void makeFolderOf(const std::filesystem::path& output) {
    std::error_code failure;
    std::filesystem::create_directories(output.parent_path(), failure);
    if (failure)
        throw korvalite::Error(korvalite::ErrorCode::CannotWrite,
                               "Cannot write " + textOf(output) +
                                   ": its folder cannot be created; is it protected?");
}

MonitorMaker monitorsFor(const FractionMonitor& monitor) {
    return [&monitor](double from, double to) {
        return [&monitor, from, to](const korvalite::Progress& progress) {
            const double fraction = from + (to - from) * fractionOf(progress);
            return monitor(kRead + (kSimplified - kRead) * fraction);
        };
    };
}

}  // namespace

Outcome simplifyFile(const WorkItem& item, const BatchOptions& options,
                     const FractionMonitor& monitor) {
    const auto start = std::chrono::steady_clock::now();
    Outcome outcome;
    outcome.input = item.input;
    outcome.output = item.output;
    outcome.countsTriangles = options.engine.target.unit() == korvalite::Target::Unit::Triangles;
    report(monitor, 0);
    static_cast<void>(fileKindOf(item.output));
    makeFolderOf(item.output);
    Scene scene =
        loadScene(item.input, options.input, [&](std::uint64_t done, std::uint64_t total) {
            const double part = static_cast<double>(done) / static_cast<double>(total + 1);
            report(monitor, kRead * part);
        });
    requireTriangles(scene, item.input);
    outcome.notes = std::move(scene.notes);
    outcome.report = simplifyScene(scene, options.engine, monitorsFor(monitor)).report;
    outcome.vertices = scene.vertexCount();
    outcome.triangles = scene.triangleCount();
    report(monitor, kSimplified);
    const std::string loss = saveScene(item.output, scene);
    if (!loss.empty()) outcome.notes.push_back(loss);
    outcome.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    return outcome;
}

}  // namespace korva
