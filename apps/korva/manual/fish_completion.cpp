// SPDX-License-Identifier: MIT
#include "korva/manual/completion.h"

#include "korva/manual/option_table.h"

namespace korva {

namespace {

std::string fishQuoted(const std::string& text) {
    std::string result = "'";
    for (const char c : text) {
        if (c == '\'' || c == '\\') result += '\\';
        result += c;
    }
    return result + "'";
}

std::string nameFlags(const OptionRow& row) {
    std::string flags;
    for (const std::string& name : row.names)
        flags += name.starts_with("--") ? " -l " + name.substr(2) : " -s " + name.substr(1);
    return flags;
}

/// With -x the value is not a file; with -r -F it may be one.
std::string lineFor(const OptionRow& row, const std::string& condition) {
    std::string line = "complete -c korva -n " + fishQuoted(condition);
    if (row.isPositional)
        return row.values.empty() ? "" : line + " -f -a " + fishQuoted(spaced(row.values)) + "\n";
    line += nameFlags(row);
    if (!row.values.empty())
        line += " -x -a " + fishQuoted(spaced(row.values));
    else if (row.takesValue())
        line += row.takesNumber() ? " -x" : " -r -F";
    return line + " -d " + fishQuoted(shortened(row.description)) + "\n";
}

}  // namespace

std::string fishCompletion(const CLI::App& app) {
    const std::string first = "__fish_use_subcommand";
    std::string text = "# fish completion for korva\n";
    for (const OptionRow& row : optionRows(app))
        text += lineFor(row, first);
    for (const CLI::App* command : commandsIn(app)) {
        text += "complete -c korva -f -n " + first + " -a " + fishQuoted(command->get_name()) +
                " -d " + fishQuoted(command->get_description()) + "\n";
        for (const OptionRow& row : optionRows(*command))
            text += lineFor(row, "__fish_seen_subcommand_from " + command->get_name());
    }
    return text;
}

}  // namespace korva
