// SPDX-License-Identifier: MIT
//
// Each command adds itself to the parser, with its options, its help and what it runs.
#pragma once

#include "korva/console.h"
#include "korva/exit_code.h"
#include "korva/load_scene.h"

#include <CLI/CLI.hpp>
#include <korvalite/korvalite.h>

#include <filesystem>
#include <functional>
#include <string>

namespace korva {

/// What the parser has found: the command to run.
struct Chosen {
    Console console;
    std::function<ExitCode()> run;
};

void addSimplify(CLI::App& app, Chosen& chosen);
void addBatch(CLI::App& app, Chosen& chosen);
void addCheck(CLI::App& app, Chosen& chosen);
void addLods(CLI::App& app, Chosen& chosen);
void addConvert(CLI::App& app, Chosen& chosen);
void addProgressive(CLI::App& app, Chosen& chosen);
void addLevel(CLI::App& app, Chosen& chosen);
void addMeasure(CLI::App& app, Chosen& chosen);
void addPicture(CLI::App& app, Chosen& chosen);
/// These two describe all commands of `app`, which must outlive `chosen`; add them last.
void addCompletion(CLI::App& app, Chosen& chosen);
void addManual(CLI::App& app, Chosen& chosen);

/// Fills `app` with the whole command line.
void addCommands(CLI::App& app, Chosen& chosen);

/// The options of every command that talks.
void addConsoleOptions(CLI::App& command, Console& console);
void addInputOptions(CLI::App& command, InputOptions& input);

/// The options of a simplification, except the target.
struct EngineOptions {
    korvalite::Options options;
    std::string symmetry = "none";
    int threads = 0;  // 0 means all

    [[nodiscard]] korvalite::Options with(const korvalite::Target& target) const;
};
void addEngineOptions(CLI::App& command, EngineOptions& engine);

/// What a reader and a call of the library report to: shows a part of the progress, and lets Ctrl-C
/// end the work. The call is the share of its part from `from` to `to`.
[[nodiscard]] ByteProgress followReading(ProgressBar& bar, std::size_t part);
[[nodiscard]] korvalite::Monitor followWork(ProgressBar& bar, std::size_t part, double from = 0,
                                            double to = 1);

}  // namespace korva
