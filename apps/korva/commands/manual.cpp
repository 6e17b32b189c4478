// SPDX-License-Identifier: MIT
#include "korva/commands/command.h"
#include "korva/manual/completion.h"
#include "korva/manual/man_page.h"
#include "korva/manual/option_table.h"

#include <cstdio>
#include <fstream>
#include <memory>
#include <vector>

namespace korva {

namespace {

struct ManualArguments {
    std::string command;
    std::string folder;
};

void writePage(const std::filesystem::path& folder, const CLI::App& command) {
    const std::filesystem::path path = folder / (manPageName(command) + ".1");
    std::ofstream stream(path, std::ios::binary);
    stream << manPage(command);
    stream.close();
    if (stream) return;
    const std::u8string name = path.u8string();
    throw korvalite::Error(korvalite::ErrorCode::CannotWrite,
                           "Cannot write " + std::string(name.begin(), name.end()) +
                               ": the folder is missing or not writable, or the disk is full.");
}

ExitCode manual(const CLI::App& app, const ManualArguments& arguments) {
    if (arguments.folder.empty()) {
        const CLI::App& command =
            arguments.command.empty() ? app : *app.get_subcommand(arguments.command);
        std::fputs(manPage(command).c_str(), stdout);
        return ExitCode::Done;
    }
    const std::filesystem::path folder = pathOf(arguments.folder);
    writePage(folder, app);
    for (const CLI::App* command : commandsIn(app))
        writePage(folder, *command);
    return ExitCode::Done;
}

ExitCode completion(const CLI::App& app, const std::string& shell) {
    std::string text;
    if (shell == "bash") text = bashCompletion(app);
    if (shell == "zsh") text = zshCompletion(app);
    if (shell == "fish") text = fishCompletion(app);
    std::fputs(text.c_str(), stdout);
    return ExitCode::Done;
}

}  // namespace

void addCompletion(CLI::App& app, Chosen& chosen) {
    auto shell = std::make_shared<std::string>();
    CLI::App* command =
        app.add_subcommand("completion", "Print what a shell needs to complete commands");
    command->add_option("SHELL", *shell, "bash, zsh or fish")
        ->required()
        ->check(CLI::IsMember({"bash", "zsh", "fish"}));
    command->footer("Example: korva completion bash > ~/.local/share/bash-completion/completions/"
                    "korva");
    command->callback(
        [shell, &app, &chosen] { chosen.run = [shell, &app] { return completion(app, *shell); }; });
}

void addManual(CLI::App& app, Chosen& chosen) {
    auto arguments = std::make_shared<ManualArguments>();
    CLI::App* command = app.add_subcommand("manual", "Print a manual page");
    std::vector<std::string> names;
    for (const CLI::App* other : commandsIn(app))
        names.push_back(other->get_name());
    CLI::Option* which = command->add_option(
        "COMMAND", arguments->command, "The command; the program itself if this is not given");
    which->check(CLI::IsMember(names));
    command
        ->add_option("--into", arguments->folder,
                     "Write the pages of all commands into this folder instead")
        ->excludes(which);
    command->footer("Example: korva manual simplify | man -l -");
    command->callback([arguments, &app, &chosen] {
        chosen.run = [arguments, &app] { return manual(app, *arguments); };
    });
}

}  // namespace korva
