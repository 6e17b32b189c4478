// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/files/file_table.h"
#include "korva/heat_colors.h"
#include "korva/measurement_text.h"

#include <algorithm>
#include <memory>
#include <thread>
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
    const auto processors = static_cast<int>(std::thread::hardware_concurrency());
    const int all = std::clamp(processors, 1, 1024);
    return {.samples = arguments.samples,
            .threads = arguments.threads > 0 ? arguments.threads : all};
}

void requireColors(const std::filesystem::path& path) {
    const FileKind& kind = fileKindOf(path);
    if (kind.carriesColors) return;
    throw korvalite::Error(korvalite::ErrorCode::BadOption,
                           std::string(kind.name) +
                               " cannot hold colours; write the heat map to .ply, for example.");
}

korvalite::Mesh readWhole(const std::string& path, Result& result, const ByteProgress& progress) {
    InputOptions asItIs;
    asItIs.repair = false;
    Scene scene = loadScene(pathOf(path), asItIs, progress);
    std::ranges::move(scene.notes, std::back_inserter(result.notes));
    return joinMeshes(scene.meshes);
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
    korvalite::Mesh a = readWhole(arguments.a, result, followReading(bar, 0));
    const korvalite::Mesh b = readWhole(arguments.b, result, followReading(bar, 1));
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
    std::printf("%s\n", object.dump(2).c_str());
}

ExitCode measure(const Arguments& arguments, const Console& console) {
    // A suffix that is not possible should not show only at the end.
    if (!arguments.heat.empty()) requireColors(pathOf(arguments.heat));
    const Result result = measureFiles(arguments, console);
    for (const std::string& note : result.notes)
        console.say(note);
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
    command
        ->add_option("--threads", arguments->threads,
                     "How many threads to use, from 1 to 1024; 0 uses all processors. The result "
                     "does not depend on it")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
    addConsoleOptions(*command, chosen.console);
    command->footer("Example: korva measure scan.ply scan-small.ply --heat heat.ply");
    command->callback([arguments, &chosen] {
        chosen.run = [arguments, &chosen] { return measure(*arguments, chosen.console); };
    });
}

}  // namespace korva
