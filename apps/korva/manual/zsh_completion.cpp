// SPDX-License-Identifier: MIT
#include "korva/manual/completion.h"

#include "korva/manual/option_table.h"

#include <utility>

namespace korva {

namespace {

/// Escapes text for single quotes, and with backslashes what _arguments and _describe would read.
std::string zshQuoted(const std::string& text) {
    std::string result;
    for (const char c : text) {
        if (c == '\'') {
            result += "'\\''";
            continue;
        }
        if (c == '[' || c == ']' || c == ':' || c == '\\') result += '\\';
        result += c;
    }
    return result;
}

std::string actionFor(const OptionRow& row) {
    if (!row.values.empty()) return "(" + spaced(row.values) + ")";
    return row.takesNumber() ? " " : "_files";
}

std::string specsOf(const OptionRow& row) {
    if (row.isPositional)
        return " \\\n        '*:" + zshQuoted(row.names[0]) + ":" + actionFor(row) + "'";
    std::string specs;
    for (const std::string& name : row.names) {
        const bool joinsValue = row.takesValue() && name.starts_with("--");
        specs += " \\\n        '" + name + (joinsValue ? "=[" : "[") +
                 zshQuoted(shortened(row.description)) + "]";
        if (row.takesValue()) specs += ":" + zshQuoted(row.type) + ":" + actionFor(row);
        specs += "'";
    }
    return specs;
}

/// Takes only the first positional: its pattern applies to all words that are not options.
std::string argumentsOf(const CLI::App& command) {
    std::string text = "_arguments";
    bool hasPositional = false;
    for (const OptionRow& row : optionRows(command)) {
        if (row.isPositional && std::exchange(hasPositional, true)) continue;
        text += specsOf(row);
    }
    return text;
}

}  // namespace

std::string zshCompletion(const CLI::App& app) {
    std::string commands;
    std::string cases;
    for (const CLI::App* command : commandsIn(app)) {
        commands += "        '" + zshQuoted(command->get_name()) + ":" +
                    zshQuoted(command->get_description()) + "'\n";
        cases += "    " + command->get_name() + ") " + argumentsOf(*command) + " ;;\n";
    }
    return "#compdef korva\n"
           "_korva() {\n"
           "    local -a commands=(\n" +
           commands +
           "    )\n"
           "    if (( CURRENT == 2 )) && [[ $words[2] != -* ]]; then\n"
           "        _describe command commands\n"
           "        return\n"
           "    fi\n"
           "    if [[ $words[2] != -* ]]; then\n"
           "        shift words\n"
           "        (( CURRENT-- ))\n"
           "    fi\n"
           "    case $words[1] in\n" +
           cases + "    *) " + argumentsOf(app) +
           " ;;\n"
           "    esac\n"
           "}\n"
           "_korva \"$@\"\n";
}

}  // namespace korva
