// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/files/file_table.h"
#include "korva/goal.h"
#include "korva/io/partial_file.h"
#include "korva/report_text.h"

#include <chrono>
#include <memory>

namespace korva {

namespace {

struct Arguments {
    std::string input;
    std::string output;
    std::string target;
    InputOptions inputOptions;
    EngineOptions engine;
};

void requireKvm(const std::filesystem::path& path) {
    requireSuffix(path, ".kvm", "A progressive mesh is a .kvm file");
}

korvalite::ProgressiveMesh build(Scene& scene, const korvalite::Options& options,
                                 const korvalite::Monitor& monitor) {
    const korvalite::Mesh mesh = joinMeshes(scene.meshes);
    return korvalite::ProgressiveMesh::build(mesh.view(), options, monitor);
}

ExitCode progressive(const Arguments& arguments, const Console& console) {
    const auto start = std::chrono::steady_clock::now();
    Outcome outcome;
    outcome.input = pathOf(arguments.input);
    outcome.output = pathOf(arguments.output);
    requireKvm(outcome.output);
    const korvalite::Options options = arguments.engine.with(parseTarget(arguments.target));
    {
        ProgressBar bar = console.progress({{"reading", 1}, {"simplifying", 10}, {"writing", 1}});
        Scene scene = loadScene(outcome.input, arguments.inputOptions, followBytes(bar, 0));
        requireTriangles(scene, outcome.input);
        outcome.notes = std::move(scene.notes);
        korvalite::ProgressiveMesh mesh = build(scene, options, followWork(bar, 1));
        bar.show(2, 0, 1);
        PartialFile file(outcome.output);
        mesh.save(file.partialPath());
        file.commit();
        outcome.report = mesh.report();
        outcome.vertices = mesh.vertexCount();
        outcome.triangles = mesh.triangleCount();
    }
    outcome.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    show(console, outcome);
    return ExitCode::Done;
}

/// Of the level that it was taken to.
korvalite::Report reportOf(const korvalite::ProgressiveMesh& progressive,
                           const korvalite::Target& target) {
    const bool countsTriangles = target.unit() == korvalite::Target::Unit::Triangles;
    korvalite::Report report;
    report.inputVertices = progressive.finestVertexCount();
    report.inputTriangles = progressive.finestTriangleCount();
    report.asked = target.countFor(progressive.finestVertexCount());
    report.reached = countsTriangles ? progressive.triangleCount() : progressive.vertexCount();
    report.missed = report.reached > report.asked;
    if (report.missed) report.advice = "This is the coarsest level of the file.";
    return report;
}

ExitCode level(const Arguments& arguments, const Console& console) {
    const std::filesystem::path input = pathOf(arguments.input);
    requireKvm(input);
    Outcome outcome;
    outcome.input = input;
    outcome.output = pathOf(arguments.output);
    static_cast<void>(fileKindOf(outcome.output));
    const korvalite::Target target = parseTarget(arguments.target);
    outcome.countsTriangles = target.unit() == korvalite::Target::Unit::Triangles;
    {
        ProgressBar bar = console.progress({{"level", 2}, {"writing", 1}});
        korvalite::ProgressiveMesh progressive = korvalite::ProgressiveMesh::load(input);
        Scene scene;
        scene.meshes.push_back({"", progressive.level(target, followWork(bar, 0))});
        outcome.report = reportOf(progressive, target);
        outcome.vertices = scene.vertexCount();
        outcome.triangles = scene.triangleCount();
        const std::string loss = saveScene(outcome.output, scene, followBytes(bar, 1));
        if (!loss.empty()) outcome.notes.push_back(loss);
    }
    show(console, outcome);
    return ExitCode::Done;
}

}  // namespace

void addProgressive(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    arguments->target = "100v";
    CLI::App* command = app.add_subcommand(
        "progressive", "Store a mesh with all its levels of detail in a .kvm file");
    command->add_option("IN", arguments->input, "The mesh")->required();
    command->add_option("OUT", arguments->output, "The .kvm file")->required();
    command->add_option("--to", arguments->target, "The coarsest level: 1%, 100v or 200t")
        ->capture_default_str();
    addEngineOptions(*command, arguments->engine);
    addInputOptions(*command, arguments->inputOptions);
    finishCommand(*command, chosen, arguments, progressive, "korva progressive scan.ply scan.kvm");
}

void addLevel(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    arguments->target = "50%";
    CLI::App* command = app.add_subcommand("level", "Take a level of detail from a .kvm file");
    command->add_option("IN", arguments->input, "The .kvm file")->required();
    command
        ->add_option("OUT", arguments->output,
                     "Where the level goes; its suffix decides the format")
        ->required();
    command->add_option("--to", arguments->target, "The level: 10%, 50000v or 100000t")
        ->capture_default_str();
    finishCommand(*command, chosen, arguments, level,
                  "korva level scan.kvm scan-1000.obj --to 1000v");
}

}  // namespace korva
