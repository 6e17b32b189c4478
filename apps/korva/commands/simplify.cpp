// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/files/file_table.h"
#include "korva/goal.h"
#include "korva/report_text.h"
#include "korva/simplify_scene.h"

#include <chrono>
#include <memory>

namespace korva {

namespace {

struct Arguments {
    std::string input;
    std::string output;
    std::string target = "50%";
    std::string maxError;  // empty for none
    bool measures = false;
    bool strict = false;
    InputOptions inputOptions;
    EngineOptions engine;
};

Goal goalOf(const Arguments& arguments) {
    if (arguments.maxError.empty()) return parseGoal(arguments.target);
    Goal goal;
    goal.limit = parseErrorLimit(arguments.maxError);
    return goal;
}

/// Simplifies the scene and fills in what came out.
void run(Scene& scene, const Goal& goal, const Arguments& arguments, const MonitorMaker& monitorFor,
         Outcome& outcome) {
    const korvalite::Options options = arguments.engine.with(goal.target);
    SceneReport report;
    if (goal.limit)
        report = simplifyWithin(scene, *goal.limit, fileKindOf(outcome.input).millimetre, options,
                                monitorFor);
    else
        report = simplifyScene(scene, options, monitorFor, arguments.measures);
    outcome.report = report.report;
    outcome.error = report.error;
    outcome.vertices = scene.vertexCount();
    outcome.triangles = scene.triangleCount();
}

ExitCode simplify(const Arguments& arguments, const Console& console) {
    const auto start = std::chrono::steady_clock::now();
    const Goal goal = goalOf(arguments);
    Outcome outcome;
    outcome.input = pathOf(arguments.input);
    outcome.output = pathOf(arguments.output);
    if (goal.limit)
        outcome.limit = arguments.maxError.empty() ? arguments.target : arguments.maxError;
    outcome.countsTriangles = goal.target.unit() == korvalite::Target::Unit::Triangles;
    // An unknown suffix should not show only after an hour.
    static_cast<void>(fileKindOf(outcome.output));
    {
        ProgressBar bar = console.progress({{"reading", 1}, {"simplifying", 10}, {"writing", 1}});
        Scene scene = loadScene(outcome.input, arguments.inputOptions, followBytes(bar, 0));
        requireTriangles(scene, outcome.input);
        outcome.notes = std::move(scene.notes);
        const auto monitorFor = [&bar](double from, double to) {
            return followWork(bar, 1, from, to);
        };
        run(scene, goal, arguments, monitorFor, outcome);
        const std::string loss = saveScene(outcome.output, scene, followBytes(bar, 2));
        if (!loss.empty()) outcome.notes.push_back(loss);
    }
    outcome.seconds =
        std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    show(console, outcome);
    return outcome.report.missed && arguments.strict ? ExitCode::TargetMissed : ExitCode::Done;
}

}  // namespace

void addSimplify(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("simplify", "Simplify a mesh");
    command->add_option("IN", arguments->input, "The mesh to simplify")->required();
    command
        ->add_option("OUT", arguments->output,
                     "Where the result goes; its suffix decides the format")
        ->required();
    CLI::Option* to =
        command
            ->add_option("--to", arguments->target,
                         "The target: 10% of the vertices, 50000v (vertices), 100000t (triangles), "
                         "or as few as stay within a distance: 0.2mm or 0.2u (in the unit of the "
                         "file)")
            ->capture_default_str();
    command
        ->add_option("--max-error", arguments->maxError,
                     "As few vertices as stay within a distance: 0.1% of the diagonal, 0.2mm, or "
                     "0.2 in the unit of the file")
        ->excludes(to);
    command->add_flag("--measure", arguments->measures,
                      "Also measure how far the result is from the input");
    command->add_flag("--strict", arguments->strict, "Exit with 3 if the target is not reached");
    addEngineOptions(*command, arguments->engine);
    addInputOptions(*command, arguments->inputOptions);
    finishCommand(*command, chosen, arguments, simplify,
                  "korva simplify scan.ply scan-small.obj --to 10%");
}

}  // namespace korva
