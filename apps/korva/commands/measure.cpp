// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/files/file_table.h"
#include "korva/heat_colors.h"
#include "korva/measurement_text.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <utility>

namespace korva {

namespace {

struct Arguments {
    std::string a;
    std::string b;
    std::string heat;    // empty for none
    double heatMax = 0;  // 0 means the largest distance
    std::uint64_t samples = korvalite::MeasureOptions().samples;
    int threads = 0;  // 0 means all
};

/// What is measured, and what came out.
struct Result {
    korvalite::Measurement measurement;
    double heatMax = 0;  // what the end of the ramp stands for
    std::vector<std::string> notes;
};

korvalite::MeasureOptions optionsOf(const Arguments& arguments) {
    return {.samples = arguments.samples, .threads = threadCount(arguments.threads)};
}

void requireColors(const std::filesystem::path& path) {
    const FileKind& kind = fileKindOf(path);
    if (kind.carriesColors) return;
    throw korvalite::Error(korvalite::ErrorCode::BadOption,
                           std::string(kind.name) +
                               " cannot hold colours; write the heat map to .ply, for example.");
}

void writeHeat(const Arguments& arguments, korvalite::Mesh mesh,
               const std::vector<float>& distances, Result& result) {
    result.heatMax = arguments.heatMax > 0 ? arguments.heatMax : largestDistance(mesh, distances);
    paintByDistance(mesh, distances, result.heatMax);
    Scene scene;
    scene.meshes.push_back({"", std::move(mesh)});
    const std::string loss = saveScene(pathOf(arguments.heat), scene);
    if (!loss.empty()) result.notes.push_back(loss);
}

Result measureFiles(const Arguments& arguments, const Console& console) {
    Result result;
    ProgressBar bar = console.progress({{"reading A", 1},
                                        {"reading B", 1},
                                        {"preparing A", 1},
                                        {"preparing B", 1},
                                        {"measuring", 8},
                                        {"colouring", 1}});
    korvalite::Mesh a = loadAsItIs(arguments.a, {}, result.notes, followBytes(bar, 0));
    const korvalite::Mesh b = loadAsItIs(arguments.b, {}, result.notes, followBytes(bar, 1));
    const korvalite::MeasureOptions options = optionsOf(arguments);
    const korvalite::Surface surfaceB(b.view(), followWork(bar, 3));
    {
        const korvalite::Surface surfaceA(a.view(), followWork(bar, 2));
        result.measurement = korvalite::measure(surfaceA, surfaceB, options, followWork(bar, 4));
    }
    if (arguments.heat.empty()) return result;
    const std::vector<float> distances =
        korvalite::vertexDistances(a.view(), surfaceB, options.threads, followWork(bar, 5));
    writeHeat(arguments, std::move(a), distances, result);
    return result;
}

void print(const Arguments& arguments, const Result& result, const Console& console) {
    if (!console.json) {
        std::printf("A: %s\nB: %s\n%s", arguments.a.c_str(), arguments.b.c_str(),
                    tableOf(result.measurement).c_str());
        if (!arguments.heat.empty())
            std::printf("%s: dark blue is 0, red is %g and more.\n", arguments.heat.c_str(),
                        result.heatMax);
        return;
    }
    nlohmann::json object = jsonOf(result.measurement);
    object["a"] = arguments.a;
    object["b"] = arguments.b;
    if (!arguments.heat.empty())
        object["heat"] = {{"path", arguments.heat}, {"max", result.heatMax}};
    object["notes"] = result.notes;
    printJson(object);
}

ExitCode measure(const Arguments& arguments, const Console& console) {
    // A suffix that is not possible should not show only at the end.
    if (!arguments.heat.empty()) requireColors(pathOf(arguments.heat));
    const Result result = measureFiles(arguments, console);
    console.say(result.notes);
    print(arguments, result, console);
    return ExitCode::Done;
}

}  // namespace

void addMeasure(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("measure", "Say how far two surfaces are apart");
    command->add_option("A", arguments->a, "A mesh, usually the original")->required();
    command->add_option("B", arguments->b, "The mesh to compare with it")->required();
    CLI::Option* heat = command->add_option(
        "--heat", arguments->heat, "Write A here, coloured by the distance of each vertex from B");
    command
        ->add_option("--heat-max", arguments->heatMax,
                     "The distance that is red; the largest if this is not given")
        ->check(CLI::PositiveNumber)
        ->needs(heat);
    command
        ->add_option("--samples", arguments->samples,
                     "About how many samples to take on each surface, from 1 to 1000000000; every "
                     "triangle has at least one")
        ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1'000'000'000}))
        ->capture_default_str();
    addThreads(*command, arguments->threads, "The result does not depend on it");
    finishCommand(*command, chosen, arguments, measure,
                  "korva measure scan.ply scan-small.ply --heat heat.ply");
}

}  // namespace korva
