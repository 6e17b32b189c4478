// SPDX-License-Identifier: MIT
#include "korva/manual/man_page.h"

#include "korva/exit_code.h"
#include "korva/manual/option_table.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <utility>

namespace korva {

namespace {

// What docs/korva.md says, in the order of the codes.
constexpr std::array<std::pair<ExitCode, const char*>, 7> kExitCodes{{
    {ExitCode::Done, "Done."},
    {ExitCode::Usage, "An option is unknown, missing or out of its range."},
    {ExitCode::BadInput, "A file cannot be read, or its mesh cannot be used."},
    {ExitCode::TargetMissed, "The target was not reached (only with --strict)."},
    {ExitCode::NoMemory, "There was not enough memory."},
    {ExitCode::Cancelled, "The command was cancelled."},
    {ExitCode::CannotWrite, "A file cannot be written."},
}};

bool isProgram(const CLI::App& command) {
    return command.get_parent() == nullptr;
}

std::string bold(const std::string& text) {
    return "\\fB" + roffText(text) + "\\fR";
}

std::string italic(const std::string& text) {
    return "\\fI" + roffText(text) + "\\fR";
}

/// A reference to a page, which is not hyphenated at the end of a line.
std::string reference(const CLI::App& command) {
    return "\\%" + bold(manPageName(command)) + "(1)";
}

std::string withFullStop(std::string sentence) {
    if (!sentence.empty() && !sentence.ends_with('.')) sentence += '.';
    return sentence;
}

std::string entry(const std::string& tag, const std::string& text) {
    return ".TP\n" + tag + "\n" + text + "\n";
}

std::string nameSection(const CLI::App& command) {
    std::string purpose = command.get_description();
    if (!purpose.empty())
        purpose[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(purpose[0])));
    if (purpose.ends_with('.')) purpose.pop_back();
    return ".SH NAME\n" + roffText(manPageName(command)) + " \\- " + roffText(purpose) + "\n";
}

std::string synopsis(const CLI::App& command) {
    std::string line = bold("korva") + " ";
    line += isProgram(command) ? italic("COMMAND") : bold(command.get_name());
    for (const OptionRow& row : optionRows(command))
        if (row.isPositional)
            line += row.isRequired ? " " + italic(row.names[0]) : " [" + italic(row.names[0]) + "]";
    return ".SH SYNOPSIS\n" + line + " [" + italic("OPTION") + "]...\n";
}

std::string description(const CLI::App& command) {
    std::string text =
        ".SH DESCRIPTION\n" + roffText(withFullStop(command.get_description())) + "\n";
    for (const OptionRow& row : optionRows(command))
        if (row.isPositional)
            text += entry(italic(row.names[0]), roffText(withFullStop(row.description)));
    return text;
}

std::string commandList(const CLI::App& app) {
    std::string text = ".SH COMMANDS\n";
    for (const CLI::App* command : commandsIn(app))
        text +=
            entry(bold(command->get_name()), roffText(withFullStop(command->get_description())) +
                                                 "\nSee " + reference(*command) + ".");
    return text;
}

/// The description of an option, and what the parser knows about its value.
std::string details(const OptionRow& row) {
    std::string text = withFullStop(row.description);
    if (!row.values.empty())
        text += " Possible values: " + CLI::detail::join(row.values, ", ") + ".";
    if (!row.range.empty()) text += " Range: " + row.range + ".";
    if (!row.preset.empty()) text += " Default: " + row.preset + ".";
    if (!row.needs.empty()) text += " Needs " + row.needs + ".";
    if (row.isRequired) text += " Required.";
    return roffText(text);
}

std::string options(const CLI::App& command) {
    std::string text = ".SH OPTIONS\n";
    const std::vector<OptionRow> rows = optionRows(command);
    for (const std::string& group : command.get_groups()) {
        bool isFirst = group != "Options";
        for (const OptionRow& row : rows) {
            if (row.isPositional || row.group != group) continue;
            if (std::exchange(isFirst, false)) text += ".SS " + roffText(group) + "\n";
            std::string tag;
            for (const std::string& name : row.names)
                tag += (tag.empty() ? "" : ", ") + bold(name);
            if (row.takesValue()) tag += " " + italic(row.type);
            text += entry(tag, details(row));
        }
    }
    return text;
}

/// The footer of a command is its example.
std::string example(const CLI::App& command) {
    std::string line = command.get_footer();
    constexpr std::string_view kLabel = "Example: ";
    if (line.starts_with(kLabel)) line.erase(0, kLabel.size());
    return line.empty() ? "" : roffText(line) + "\n";
}

std::string examples(const CLI::App& command) {
    std::string lines = example(command);
    for (const CLI::App* inner : commandsIn(command))
        lines += example(*inner);
    return lines.empty() ? "" : ".SH EXAMPLES\n.nf\n" + lines + ".fi\n";
}

std::string exitStatus() {
    std::string text = ".SH EXIT STATUS\n";
    for (const auto& [code, meaning] : kExitCodes)
        text += entry(std::to_string(static_cast<int>(code)), roffText(meaning));
    return text;
}

std::string seeAlso(const CLI::App& command) {
    std::string list;
    if (!isProgram(command)) list = reference(*command.get_parent());
    for (const CLI::App* inner : commandsIn(command))
        list += (list.empty() ? "" : ",\n") + reference(*inner);
    return ".SH SEE ALSO\n" + list + "\n";
}

}  // namespace

std::string roffText(const std::string& text) {
    std::string result;
    bool startsLine = true;
    for (const char c : text) {
        if (startsLine && c == '.') result += "\\&";
        startsLine = c == '\n';
        switch (c) {
        case '\\': result += "\\e"; break;
        case '-': result += "\\-"; break;
        case '\'': result += "\\(aq"; break;
        case '"': result += "\\(dq"; break;
        case '`': result += "\\(ga"; break;
        case '^': result += "\\(ha"; break;
        case '~': result += "\\(ti"; break;
        default: result += c;
        }
    }
    return result;
}

std::string manPageName(const CLI::App& command) {
    if (isProgram(command)) return command.get_name();
    return manPageName(*command.get_parent()) + "-" + command.get_name();
}

std::string manPage(const CLI::App& command) {
    std::string title = manPageName(command);
    std::ranges::transform(title, title.begin(),
                           [](unsigned char c) { return static_cast<char>(std::toupper(c)); });
    std::string page = ".TH " + roffText(title) + " 1 \"\" \"Korvalite " +
                       roffText(std::string(korvalite::version())) + "\" \"User Commands\"\n";
    page += nameSection(command) + synopsis(command) + description(command);
    if (isProgram(command)) page += commandList(command);
    page += options(command) + examples(command);
    if (isProgram(command)) page += exitStatus();
    return page + seeAlso(command);
}

}  // namespace korva
