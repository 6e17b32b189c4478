// SPDX-License-Identifier: MIT
#include "korva/manual/option_table.h"

#include <algorithm>

namespace korva {

namespace {

/// The parser offers its checks only as text: "{a,b}", "INT in [0 - 9]" or "POSITIVE".
void addCheck(OptionRow& row, const std::string& check) {
    const std::size_t range = check.find(" in [");
    if (check.starts_with('{') && check.ends_with('}')) {
        row.values = CLI::detail::split(check.substr(1, check.size() - 2), ',');
    } else if (range != std::string::npos && check.ends_with(']')) {
        row.range = check.substr(range + 5, check.size() - range - 6);
        const std::size_t middle = row.range.find(" - ");
        if (middle != std::string::npos) row.range.replace(middle, 3, " to ");
    } else if (check == "POSITIVE") {
        row.range = "above 0";
    } else {
        row.range = check;
    }
}

OptionRow rowOf(const CLI::Option& option) {
    OptionRow row;
    row.isPositional = option.get_positional();
    row.isRequired = option.get_required();
    row.group = option.get_group();
    row.description = option.get_description();
    for (const std::string& name : option.get_snames())
        row.names.push_back("-" + name);
    for (const std::string& name : option.get_lnames())
        row.names.push_back("--" + name);
    if (row.isPositional) row.names = {option.get_name(true)};
    if (option.get_type_size() == 0) return row;

    const std::string type = option.get_type_name();
    const std::size_t colon = type.find(':');
    if (colon != std::string::npos) addCheck(row, type.substr(colon + 1));
    if (row.isPositional) return row;
    row.type = type.substr(0, colon);
    row.preset = option.get_default_str();
    for (const CLI::Option* needed : option.get_needs())
        row.needs = needed->get_name();
    return row;
}

}  // namespace

std::vector<OptionRow> optionRows(const CLI::App& command) {
    std::vector<OptionRow> rows;
    for (const CLI::Option* option : command.get_options({}))
        if (!option->get_group().empty()) rows.push_back(rowOf(*option));
    return rows;
}

std::vector<const CLI::App*> commandsIn(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App* command) {
        return !command->get_name().empty() && !command->get_group().empty();
    });
}

std::string shortened(const std::string& description) {
    return description.substr(0, std::min(description.find("; "), description.find(". ")));
}

std::string spaced(const std::vector<std::string>& parts) {
    return CLI::detail::join(parts, " ");
}

}  // namespace korva
