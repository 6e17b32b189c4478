// SPDX-License-Identifier: MIT
//
// Each command adds itself to the parser, with its options, its help and what it runs.
#pragma once

#include "korva/console.h"
#include "korva/exit_code.h"
#include "korva/load_scene.h"

#include <CLI/CLI.hpp>
#include <korvalite/korvalite.h>
#include <nlohmann/json_fwd.hpp>

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

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
/// --threads; `remark` says what depends on it.
CLI::Option* addThreads(CLI::App& command, int& threads, std::string_view remark);
/// What --threads asks for, or one thread for each processor if that is 0.
[[nodiscard]] int threadCount(int asked);

/// Ends the definition of a command that talks: if it is chosen, `run` gets its arguments.
template <typename Arguments>
void finishCommand(CLI::App& command, Chosen& chosen, const std::shared_ptr<Arguments>& arguments,
                   ExitCode (*run)(const Arguments&, const Console&), std::string_view example) {
    addConsoleOptions(command, chosen.console);
    command.footer("Example: " + std::string(example));
    command.callback([arguments, run, &chosen] {
        chosen.run = [arguments, run, &chosen] { return run(*arguments, chosen.console); };
    });
}

/// Throws Error(BadOption) with "`rule`, but this is PATH." unless the path has the suffix, in
/// either case.
void requireSuffix(const std::filesystem::path& path, std::string_view suffix,
                   std::string_view rule);

/// The suffix that --format asks for, without its point; empty if it was not given. Throws
/// Error(BadOption) if it is not known.
[[nodiscard]] std::string formatIn(const std::string& text);

/// A file as one mesh, without repairs. What was lost is added to the notes.
[[nodiscard]] korvalite::Mesh loadAsItIs(const std::string& path, InputOptions options,
                                         std::vector<std::string>& notes,
                                         const ByteProgress& progress);

void printJson(const nlohmann::json& result);

/// The options of a simplification, except the target.
struct EngineOptions {
    korvalite::Options options;
    std::string symmetry = "none";
    int threads = 0;  // 0 means all

    [[nodiscard]] korvalite::Options with(const korvalite::Target& target) const;
};
void addEngineOptions(CLI::App& command, EngineOptions& engine);

/// What a reader or writer and a call of the library report to: shows a part of the progress, and
/// lets Ctrl-C end the work. The call is the share of its part from `from` to `to`.
[[nodiscard]] ByteProgress followBytes(ProgressBar& bar, std::size_t part);
[[nodiscard]] korvalite::Monitor followWork(ProgressBar& bar, std::size_t part, double from = 0,
                                            double to = 1);

}  // namespace korva
