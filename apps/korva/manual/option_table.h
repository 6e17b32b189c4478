// SPDX-License-Identifier: MIT
//
// What man pages and completions say about an option, taken from the parser.
#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <vector>

namespace korva {

struct OptionRow {
    std::vector<std::string> names;   // with their hyphens; a positional has one, without any
    std::string type;                 // TEXT, INT and so on; empty for a flag and for a positional
    std::vector<std::string> values;  // all possible ones, if they are few
    std::string range;                // such as "1 to 100"; empty for any
    std::string preset;               // its value if it is not given
    std::string needs;                // the option without which it may not be given
    std::string group;
    std::string description;
    bool isPositional = false;
    bool isRequired = false;

    [[nodiscard]] bool takesValue() const { return !type.empty(); }
    [[nodiscard]] bool takesNumber() const { return takesValue() && type != "TEXT"; }
};

/// The options and positionals of a command in the order of its help, without hidden ones.
[[nodiscard]] std::vector<OptionRow> optionRows(const CLI::App& command);

/// The commands that are not hidden.
[[nodiscard]] std::vector<const CLI::App*> commandsIn(const CLI::App& app);

/// The start of a description, up to its first full stop or semicolon.
[[nodiscard]] std::string shortened(const std::string& description);

/// The parts with a space after each but the last.
[[nodiscard]] std::string spaced(const std::vector<std::string>& parts);

}  // namespace korva
