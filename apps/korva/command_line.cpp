// SPDX-License-Identifier: MIT
#include "korva/command_line.h"

#include "korva/commands/command.h"
#include "korva/nearest_name.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <new>

namespace korva {

namespace {

std::vector<std::string> namesIn(const CLI::App& app) {
    std::vector<std::string> names;
    for (const CLI::App* command : app.get_subcommands({}))
        names.push_back(command->get_name());
    for (const CLI::Option* option : app.get_options({}))
        for (const std::string& name : option->get_lnames())
            names.push_back("--" + name);
    return names;
}

/// The command that the words name, or the program itself.
const CLI::App& commandIn(const CLI::App& app, const std::vector<std::string>& words) {
    for (const CLI::App* command : app.get_subcommands({}))
        if (!words.empty() && words.front() == command->get_name()) return *command;
    return app;
}

ExitCode explain(const CLI::App& app, const std::vector<std::string>& words,
                 const CLI::ParseError& error) {
    const CLI::App& command = commandIn(app, words);
    std::fprintf(stderr, "%s\n", error.what());
    const std::vector<std::string> names = namesIn(command);
    for (const std::string& word : words) {
        const std::string name = word.substr(0, word.find('='));
        const bool isKnown = std::ranges::find(names, name) != names.end();
        const bool isName = name.starts_with("--") || (&command == &app && word == words.front());
        if (isKnown || !isName) continue;
        const std::string nearest = nearestName(name, names);
        if (!nearest.empty())
            std::fprintf(stderr, "%s is not known; did you mean %s?\n", name.c_str(),
                         nearest.c_str());
    }
    const std::string which = &command == &app ? "korva" : "korva " + command.get_name();
    std::fprintf(stderr, "%s --help shows what is possible.\n", which.c_str());
    return ExitCode::Usage;
}

ExitCode parseAndRun(const std::vector<std::string>& words) {
    CLI::App app;
    Chosen chosen;
    addCommands(app, chosen);
    try {
        std::vector<std::string> reversed(words.rbegin(), words.rend());
        app.parse(reversed);
    } catch (const CLI::Success& success) {  // --help and --version
        app.exit(success);
        return ExitCode::Done;
    } catch (const CLI::ParseError& error) {
        return explain(app, words, error);
    }
    return chosen.run();
}

ExitCode fail(ExitCode code, const char* sentence) {
    std::fprintf(stderr, "%s\n", sentence);
    return code;
}

}  // namespace

void addCommands(CLI::App& app, Chosen& chosen) {
    app.name("korva");
    app.description("Simplifies triangle meshes: scans, game assets, printable parts.");
    app.set_version_flag("--version", std::string(korvalite::version()));
    app.require_subcommand(1);
    addSimplify(app, chosen);
    addBatch(app, chosen);
    addLods(app, chosen);
    addCheck(app, chosen);
    addConvert(app, chosen);
    addProgressive(app, chosen);
    addLevel(app, chosen);
    addMeasure(app, chosen);
    addPicture(app, chosen);
    addCompletion(app, chosen);
    addManual(app, chosen);
}

ExitCode runCommandLine(const std::vector<std::string>& words) {
    try {
        const ExitCode code = parseAndRun(words);
        // A closed pipe or a full disk shows when the output really goes out.
        if (std::fflush(stdout) != 0 && code == ExitCode::Done)
            return fail(ExitCode::CannotWrite, "Cannot write to standard output.");
        return code;
    } catch (const korvalite::Error& error) {
        return fail(exitCodeOf(error.code()), error.what());
    } catch (const std::bad_alloc&) {
        return fail(ExitCode::NoMemory, "There is not enough memory for this mesh.");
    } catch (const std::exception& error) {
        return fail(ExitCode::BadInput, error.what());
    }
}

}  // namespace korva
