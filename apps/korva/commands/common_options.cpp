// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/files/file_table.h"
#include "korva/interrupt.h"
#include "korva/json_text.h"
#include "korva/work_fraction.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <iterator>
#include <thread>

namespace korva {

void addConsoleOptions(CLI::App& command, Console& console) {
    command.add_flag("--json", console.json, "Print the result as one JSON object");
    command.add_flag("-q,--quiet", console.quiet, "Show no progress and no remarks");
}

void addInputOptions(CLI::App& command, InputOptions& input) {
    const auto* group = "Input";
    command.add_flag("--weld", input.weld, "Join vertices at exactly the same place")->group(group);
    command
        .add_flag(
            "!--no-repair", input.repair,
            "Keep unused vertices, and triangles that are there twice, have a vertex twice or a "
            "vertex that is not finite")
        ->group(group);
    command.add_flag("!--no-colors", input.colors, "Leave the colours out")->group(group);
    CLI::Option* noMask =
        command.add_flag("!--no-mask", input.mask, "Leave the mask out")->group(group);
    command
        .add_option("--mask", input.maskSource,
                    "Take the mask from a channel of the colours (red, green, blue or alpha), or "
                    "from a text file with a number for each vertex: 255 simplifies freely, lower "
                    "numbers less, 0 not at all")
        ->excludes(noMask)
        ->group(group);
    command.add_flag("!--no-uvs", input.uvs, "Leave the UVs out")->group(group);
}

void addEngineOptions(CLI::App& command, EngineOptions& engine) {
    const auto* group = "Simplification";
    korvalite::Options& options = engine.options;
    command
        .add_option("--symmetry", engine.symmetry,
                    "Keep the mesh symmetric across the plane through the origin that mirrors this "
                    "axis: x, y, z or none")
        ->check(CLI::IsMember({"none", "x", "y", "z"}, CLI::ignore_case))
        ->capture_default_str()
        ->group(group);
    command
        .add_flag("--freeze-border", options.freezeBorder, "Keep open borders exactly as they are")
        ->group(group);
    command
        .add_flag("!--no-protect-topology", options.protectTopology,
                  "Let holes close, and parts join or come apart")
        ->group(group);
    command.add_flag("!--no-protect-normals", options.protectNormals, "Let triangles turn over")
        ->group(group);
    command
        .add_flag("--weight-by-area", options.weightByArea,
                  "Count an error by the area of its triangles")
        ->group(group);
    command
        .add_option("--colors-weight", options.colorWeight,
                    "How much colours count beside shape, from 1 (not at all) to 100")
        ->check(CLI::Range(1.0F, 100.0F))
        ->capture_default_str()
        ->group(group);
    addThreads(command, engine.threads,
               "With one thread the same input always gives the same output")
        ->group(group);
}

CLI::Option* addThreads(CLI::App& command, int& threads, std::string_view remark) {
    return command
        .add_option("--threads", threads,
                    "How many threads to use, from 1 to 1024; 0 uses all processors. " +
                        std::string(remark))
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
}

int threadCount(int asked) {
    const auto processors = static_cast<int>(std::thread::hardware_concurrency());
    return asked > 0 ? asked : std::clamp(processors, 1, 1024);
}

korvalite::Options EngineOptions::with(const korvalite::Target& target) const {
    korvalite::Options result = options;
    result.target = target;
    const char axis = static_cast<char>(symmetry.front() | 0x20);
    if (axis == 'x') result.symmetry = korvalite::Symmetry::X;
    if (axis == 'y') result.symmetry = korvalite::Symmetry::Y;
    if (axis == 'z') result.symmetry = korvalite::Symmetry::Z;
    result.threads = threadCount(threads);
    return result;
}

void requireSuffix(const std::filesystem::path& path, std::string_view suffix,
                   std::string_view rule) {
    if (lowerSuffixOf(path) == suffix) return;
    std::string sentence(rule);
    sentence += ", but this is " + textOf(path) + ".";
    throw korvalite::Error(korvalite::ErrorCode::BadOption, sentence);
}

std::string formatIn(const std::string& text) {
    std::string suffix = text.substr(text.starts_with('.') ? 1 : 0);
    if (!suffix.empty()) static_cast<void>(fileKindOf(pathOf("x." + suffix)));
    return suffix;
}

korvalite::Mesh loadAsItIs(const std::string& path, InputOptions options,
                           std::vector<std::string>& notes, const ByteProgress& progress) {
    options.repair = false;
    Scene scene = loadScene(pathOf(path), options, progress);
    std::ranges::move(scene.notes, std::back_inserter(notes));
    return joinMeshes(scene.meshes);
}

void printJson(const nlohmann::json& result) {
    std::printf("%s\n", jsonText(result).c_str());
}

ByteProgress followBytes(ProgressBar& bar, std::size_t part) {
    return [&bar, part](std::uint64_t done, std::uint64_t total) {
        throwIfInterrupted();
        bar.show(part, done, total);
    };
}

korvalite::Monitor followWork(ProgressBar& bar, std::size_t part, double from, double to) {
    return [=, &bar](const korvalite::Progress& progress) {
        constexpr double kSteps = 10000;
        const double fraction = from + (to - from) * std::min(fractionOf(progress), 1.0);
        bar.show(part, static_cast<std::uint64_t>(fraction * kSteps),
                 static_cast<std::uint64_t>(kSteps));
        return !isInterrupted();
    };
}

}  // namespace korva
