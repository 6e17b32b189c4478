// SPDX-License-Identifier: MIT
#include "korva/manual/completion.h"

#include "korva/manual/option_table.h"

namespace korva {

namespace {

// Bash makes "=" a word of its own, so in "--name=value" the name is two words before the value.
constexpr const char* kBegin = R"(# bash completion for korva
_korva() {
    local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD-1]}
    local command= names= values= i
    COMPREPLY=()
    if [[ $current == "=" ]]; then
        current=
    elif [[ $previous == "=" ]]; then
        previous=${COMP_WORDS[COMP_CWORD-2]}
    fi
    for ((i = 1; i < COMP_CWORD; i++)); do
        if [[ ${COMP_WORDS[i]} != -* ]]; then
            command=${COMP_WORDS[i]}
            break
        fi
    done
    case $command in
)";

// If nothing is offered, bash completes the names of files.
constexpr const char* kEnd = R"(    esac
    if [[ $current == -* ]]; then
        values=$names
    fi
    COMPREPLY=($(compgen -W "$values" -- "$current"))
}
complete -o bashdefault -o default -F _korva korva
)";

std::string answerAfter(const OptionRow& row) {
    if (!row.values.empty())
        return "COMPREPLY=($(compgen -W \"" + spaced(row.values) + "\" -- \"$current\")); return";
    if (row.takesNumber()) return "compopt +o bashdefault +o default 2>/dev/null; return";
    return "return";
}

/// The values of the positionals.
std::string valuesOf(const std::vector<OptionRow>& rows) {
    std::vector<std::string> values;
    for (const OptionRow& row : rows)
        if (row.isPositional) values.insert(values.end(), row.values.begin(), row.values.end());
    return spaced(values);
}

std::string caseOf(const std::string& name, const std::vector<OptionRow>& rows,
                   const std::string& values) {
    std::vector<std::string> names;
    std::string answers;
    for (const OptionRow& row : rows) {
        if (row.isPositional) continue;
        names.insert(names.end(), row.names.begin(), row.names.end());
        if (row.takesValue())
            answers += "                " + CLI::detail::join(row.names, "|") + ") " +
                       answerAfter(row) + " ;;\n";
    }
    std::string text = "        " + name + ")\n            names=\"" + spaced(names) + "\"\n";
    if (!values.empty()) text += "            values=\"" + values + "\"\n";
    if (!answers.empty())
        text += "            case $previous in\n" + answers + "            esac\n";
    return text + "            ;;\n";
}

}  // namespace

std::string bashCompletion(const CLI::App& app) {
    std::vector<std::string> commands;
    for (const CLI::App* command : commandsIn(app))
        commands.push_back(command->get_name());
    std::string text = kBegin + caseOf("\"\"", optionRows(app), spaced(commands));
    for (const CLI::App* command : commandsIn(app)) {
        const std::vector<OptionRow> rows = optionRows(*command);
        text += caseOf(command->get_name(), rows, valuesOf(rows));
    }
    return text + kEnd;
}

}  // namespace korva
