// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/files/file_table.h"
#include "korva/interrupt.h"
#include "korva/io/output_file.h"
#include "korva/json_text.h"
#include "korva/level_list.h"
#include "korva/measured_levels.h"
#include "korva/numbers.h"
#include "korva/report_text.h"

#include <nlohmann/json.hpp>

#include <memory>
#include <system_error>
#include <utility>

namespace korva {

namespace {

using korvalite::Target;

struct Arguments {
    std::string input;
    std::string folder;
    std::string levels = "50%,25%,10%";
    int halve = 0;       // 0 takes `levels`
    std::string format;  // empty for that of the input
    bool asGlb = false;
    InputOptions inputOptions;
    EngineOptions engine;
};

/// The levels of detail of a scene: those of its meshes.
class SceneLevels {
public:
    /// Takes the meshes out of the scene.
    SceneLevels(Scene& scene, const korvalite::Options& options, const MonitorMaker& monitorFor)
        : hadNormals_(scene.hadNormals) {
        const auto whole = static_cast<double>(scene.triangleCount());
        TargetShares shares(options.target, scene);
        for (auto& [name, mesh] : scene.meshes) {
            shape_.meshes.push_back({name, {}});
            korvalite::Options own = options;
            own.target = shares.next(mesh);
            const double from = passed_ / whole;
            passed_ += static_cast<double>(mesh.triangleCount());
            meshes_.emplace_back(std::move(mesh), own, monitorFor(from, passed_ / whole));
        }
    }

    /// How many vertices or triangles the targets ask for. There is one for each mesh.
    [[nodiscard]] std::uint64_t asked(const std::vector<Target>& targets) const {
        std::uint64_t sum = 0;
        for (std::size_t i = 0; i < meshes_.size(); ++i)
            sum += targets[i].countFor(meshes_[i].finestVertexCount());
        return sum;
    }

    Scene level(const std::vector<Target>& targets, const korvalite::Monitor& monitor,
                MeasuredError& error) {
        Scene scene;
        scene.hadNormals = hadNormals_;
        for (std::size_t i = 0; i < meshes_.size(); ++i) {
            MeasuredLevels::Level level = meshes_[i].level(targets[i], monitor);
            error.add(level.measurement);
            scene.meshes.push_back({shape_.meshes[i].name, std::move(level.mesh)});
        }
        return scene;
    }

private:
    bool hadNormals_;
    Scene shape_;  // the names
    double passed_ = 0;
    std::vector<MeasuredLevels> meshes_;
};

/// What each mesh gets of each level.
std::vector<std::vector<Target>> sharesOf(const std::vector<Target>& levels, const Scene& scene) {
    std::vector<std::vector<Target>> shares;
    for (const Target& level : levels) {
        TargetShares own(level, scene);
        shares.emplace_back();
        for (const NamedMesh& named : scene.meshes)
            shares.back().push_back(own.next(named.mesh));
    }
    return shares;
}

/// Where the files go and what the index says of them.
struct Output {
    std::filesystem::path folder;
    std::string stem;
    std::string suffix;
    nlohmann::json index = nlohmann::json::array();
    std::vector<std::string> lines;
    std::vector<std::string> notes;
    Scene all;  // for the GLB with all levels

    [[nodiscard]] std::filesystem::path path(const std::string& ending) const {
        return folder / pathOf(stem + ending);
    }
};

/// One of the levels, and what was asked for.
struct Level {
    int number;  // from 1
    std::uint64_t asked;
    bool countsTriangles;
    Scene scene;
    MeasuredError error;
};

void describe(Output& output, const std::string& name, const Level& level) {
    const std::uint64_t vertices = level.scene.vertexCount();
    const std::uint64_t triangles = level.scene.triangleCount();
    const bool isMissed = (level.countsTriangles ? triangles : vertices) > level.asked;
    output.index.push_back({{"file", name},
                            {"vertices", vertices},
                            {"triangles", triangles},
                            {"asked", level.asked},
                            {"missed", isMissed},
                            {"error", jsonOf(level.error)}});
    std::string line = name + ": " + withCommas(vertices) + " vertices, " + withCommas(triangles) +
                       " triangles, at most " + withDigits(level.error.atMost) + " from the input.";
    if (isMissed) line += " Its target of " + withCommas(level.asked) + " was not reached.";
    output.lines.push_back(line);
}

void save(Output& output, Level level, bool asGlb, const ByteProgress& progress) {
    const std::string number = std::to_string(level.number);
    const std::string ending = "-lod" + number + output.suffix;
    describe(output, output.stem + ending, level);
    if (asGlb)
        for (const NamedMesh& named : level.scene.meshes)
            output.all.meshes.push_back(
                {(named.name.empty() ? output.stem : named.name) + " LOD" + number, named.mesh});
    const std::string loss = saveScene(output.path(ending), level.scene, progress);
    if (!loss.empty() && level.number == 1) output.notes.push_back(loss);
}

void makeFolder(const std::filesystem::path& folder) {
    std::error_code failure;
    std::filesystem::create_directories(folder, failure);
    if (failure)
        throw korvalite::Error(korvalite::ErrorCode::CannotWrite,
                               "Cannot create " + textOf(folder) + "; is the folder protected?");
}

void writeIndex(const Output& output, const std::filesystem::path& input) {
    OutputFile file(output.path("-lods.json"));
    const nlohmann::json index = {{"input", textOf(input)}, {"levels", output.index}};
    file.write(jsonText(index) + "\n");
    file.commit();
}

Output startOutput(const Arguments& arguments) {
    Output output;
    const std::filesystem::path input = pathOf(arguments.input);
    output.folder = pathOf(arguments.folder);
    output.stem = textOf(input.stem());
    const std::string format = formatIn(arguments.format);
    output.suffix = format.empty() ? textOf(input.extension()) : "." + format;
    static_cast<void>(fileKindOf(output.path(output.suffix)));
    return output;
}

ExitCode lods(const Arguments& arguments, const Console& console) {
    const std::vector<Target> levels =
        arguments.halve > 0 ? halvedLevels(arguments.halve) : parseLevels(arguments.levels);
    const std::filesystem::path input = pathOf(arguments.input);
    Output output = startOutput(arguments);
    {
        ProgressBar bar = console.progress({{"reading", 1}, {"simplifying", 10}, {"levels", 8}});
        Scene scene = loadScene(input, arguments.inputOptions, followBytes(bar, 0));
        requireTriangles(scene, input);
        output.notes = std::move(scene.notes);
        output.all.hadNormals = scene.hadNormals;
        const auto shares = sharesOf(levels, scene);
        SceneLevels all(scene, arguments.engine.with(levels.back()),
                        [&bar](double from, double to) { return followWork(bar, 1, from, to); });
        makeFolder(output.folder);
        const auto whileWriting = [](std::uint64_t, std::uint64_t) { throwIfInterrupted(); };
        for (std::size_t i = 0; i < levels.size(); ++i) {
            const auto count = static_cast<double>(levels.size());
            const auto done = static_cast<double>(i);
            Level level{static_cast<int>(i) + 1,
                        all.asked(shares[i]),
                        levels[i].unit() == Target::Unit::Triangles,
                        {},
                        {}};
            level.scene = all.level(shares[i], followWork(bar, 2, done / count, (done + 1) / count),
                                    level.error);
            save(output, std::move(level), arguments.asGlb, whileWriting);
        }
        if (arguments.asGlb) saveScene(output.path("-lods.glb"), output.all, whileWriting);
        writeIndex(output, input);
    }
    console.say(output.notes);
    if (console.json)
        printJson({{"input", textOf(input)}, {"levels", output.index}, {"notes", output.notes}});
    else
        for (const std::string& line : output.lines)
            std::printf("%s\n", line.c_str());
    return ExitCode::Done;
}

}  // namespace

void addLods(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = app.add_subcommand("lods", "Make a chain of levels of detail");
    command->add_option("IN", arguments->input, "The mesh")->required();
    command
        ->add_option("OUTDIR", arguments->folder,
                     "The folder for the levels, NAME-lod1 and so on, and their index")
        ->required();
    CLI::Option* levels = command
                              ->add_option("--levels", arguments->levels,
                                           "The levels, all in %, v (vertices) or t (triangles)")
                              ->capture_default_str();
    command
        ->add_option("--halve", arguments->halve,
                     "How many levels to write, from 1 to 30, each with half of the vertices of "
                     "the one before")
        ->check(CLI::Range(1, 30))
        ->excludes(levels);
    command->add_option("--format", arguments->format,
                        "The format of the levels, for example glb; by default that of the input");
    command->add_flag("--glb", arguments->asGlb,
                      "Also write all levels into one GLB, as meshes NAME LOD1 and so on");
    addEngineOptions(*command, arguments->engine);
    addInputOptions(*command, arguments->inputOptions);
    finishCommand(*command, chosen, arguments, lods,
                  "korva lods statue.obj levels --halve 5 --glb");
}

}  // namespace korva
