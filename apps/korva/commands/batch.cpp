// SPDX-License-Identifier: MIT
#include "korva/batch/batch_run.h"
#include "korva/commands/command.h"
#include "korva/goal.h"
#include "korva/interrupt.h"
#include "platform/platform.h"

#include <charconv>
#include <memory>
#include <string_view>

namespace korva {

namespace {

struct Arguments {
    std::string source;
    std::string outFolder;
    std::string target = "50%";
    std::string format;
    bool isRecursive = false;
    bool doAgain = false;
    bool isStrict = false;
    int jobs = 0;        // 0 means one for each processor
    std::string memory;  // empty means a share of what is free
    InputOptions inputOptions;
    EngineOptions engine;
};

std::uint64_t defaultBudget() {
    constexpr std::uint64_t kIfUnknown = 4'000'000'000;
    const std::uint64_t available = korvalite::core::platform::availableMemory();
    return available > 0 ? available / 4 * 3 : kIfUnknown;
}

/// Reads "8GB", "1.5 GiB" or a number of bytes; the B may be missing.
std::uint64_t budgetIn(const std::string& text) {
    if (text.empty()) return defaultBudget();
    double number = 0;
    const char* end = text.data() + text.size();
    const auto [rest, failure] = std::from_chars(text.data(), end, number);
    std::string unit;
    for (const char* c = rest; c != end; ++c)
        if (*c != ' ') unit += *c >= 'a' && *c <= 'z' ? static_cast<char>(*c - 32) : *c;
    constexpr std::string_view kScales = "KMGT";
    const std::size_t scale = unit.empty() ? std::string::npos : kScales.find(unit.front());
    if (scale != std::string::npos) {
        unit.erase(0, 1);
        const double step = unit == "IB" ? 1024 : 1000;
        for (std::size_t i = 0; i <= scale; ++i)
            number *= step;
        if (unit == "IB") unit = "B";
    }
    const bool isNumber = failure == std::errc() && number >= 1 && number < 1e18;
    if (isNumber && (unit.empty() || unit == "B")) return static_cast<std::uint64_t>(number);
    throw korvalite::Error(korvalite::ErrorCode::BadOption,
                           "'" + text + "' is not an amount of memory; write 8GB, for example.");
}

ExitCode batch(const Arguments& arguments, const Console& console) {
    BatchOptions options;
    options.source = pathOf(arguments.source);
    options.list.outFolder = pathOf(arguments.outFolder);
    options.list.format = formatIn(arguments.format);
    options.list.isRecursive = arguments.isRecursive;
    options.engine = arguments.engine.with(parseTarget(arguments.target));
    options.input = arguments.inputOptions;
    options.mostAtOnce = static_cast<std::size_t>(threadCount(arguments.jobs));
    options.memoryBytes = budgetIn(arguments.memory);
    options.doAgain = arguments.doAgain;
    options.isStrict = arguments.isStrict;
    return runBatch(options, console, isInterrupted);
}

void addBatchOptions(CLI::App& command, Arguments& arguments) {
    command
        .add_option("--to", arguments.target,
                    "The target for each mesh: 10% of the vertices, 50000v (vertices) or 100000t "
                    "(triangles)")
        ->capture_default_str();
    command.add_option("--format", arguments.format,
                       "The format of all outputs, as a suffix such as ply; by default each keeps "
                       "the format of its input");
    command.add_flag("--recursive", arguments.isRecursive, "Also take the folders in a folder");
    command
        .add_option("--jobs", arguments.jobs,
                    "How many meshes at once at most, from 1 to 1024; 0 means one for each "
                    "processor")
        ->check(CLI::Range(0, 1024))
        ->capture_default_str();
    command.add_option(
        "--memory", arguments.memory,
        "How much memory to use, such as 8GB; a mesh that may need more runs alone. By "
        "default three quarters of what is free");
    command.add_flag("--again", arguments.doAgain, "Repeat what is done already");
    command.add_flag("--strict", arguments.isStrict, "Exit with 3 if a target is not reached");
}

}  // namespace

void addBatch(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<Arguments>();
    // Several meshes at once use the processors better, and so outputs are always the same.
    arguments->engine.threads = 1;
    CLI::App* command = app.add_subcommand("batch", "Simplify many meshes");
    command
        ->add_option("IN", arguments->source,
                     "A folder with meshes, or a text file with one path per line")
        ->required();
    command->add_option("OUTDIR", arguments->outFolder, "The folder for the results")->required();
    addBatchOptions(*command, *arguments);
    addEngineOptions(*command, arguments->engine);
    addInputOptions(*command, arguments->inputOptions);
    finishCommand(*command, chosen, arguments, batch,
                  "korva batch scans small --to 10% --format ply");
}

}  // namespace korva
