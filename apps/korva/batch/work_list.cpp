// SPDX-License-Identifier: MIT
#include "korva/batch/work_list.h"

#include "korva/files/file_table.h"
#include "korva/files/words.h"
#include "korva/interrupt.h"
#include "korva/io/input_file.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <system_error>

namespace korva {

namespace {

namespace fs = std::filesystem;

[[noreturn]] void refuse(const std::string& sentence) {
    throw korvalite::Error(korvalite::ErrorCode::BadOption, sentence);
}

bool hasKnownSuffix(const fs::path& path) {
    const std::string suffix = textOf(path.extension());
    return std::ranges::any_of(fileKinds(),
                               [&](const FileKind& kind) { return isWord(suffix, kind.suffix); });
}

bool isSame(const fs::path& a, const fs::path& b) {
    std::error_code ignored;
    return fs::equivalent(a, b, ignored);
}

void checkFolder(const fs::path& folder, const std::error_code& failure) {
    if (failure) failToRead(folder, "the folder, or one in it, is protected.");
}

/// The meshes below a folder, as paths relative to it.
std::vector<fs::path> meshesIn(const fs::path& folder, const WorkListOptions& options) {
    std::vector<fs::path> found;
    std::error_code failure;
    fs::recursive_directory_iterator place(folder, failure);
    checkFolder(folder, failure);
    for (; place != fs::recursive_directory_iterator(); place.increment(failure)) {
        throwIfInterrupted();
        std::error_code ignored;
        if (place->is_directory(ignored)) {
            if (!options.isRecursive || isSame(place->path(), options.outFolder))
                place.disable_recursion_pending();
        } else if (hasKnownSuffix(place->path()) && place->is_regular_file(ignored) &&
                   !options.earlierOutputs.contains(absoluteText(place->path()))) {
            found.push_back(place->path().lexically_relative(folder));
        }
    }
    checkFolder(folder, failure);
    std::ranges::sort(found, {}, [](const fs::path& path) { return path.generic_u8string(); });
    if (found.empty())
        failToRead(
            folder,
            std::string("it has no meshes with a known suffix.") +
                (options.isRecursive ? "" : " To include the folders in it, add --recursive."));
    return found;
}

/// The paths of a list, as they are written there.
std::vector<fs::path> pathsIn(const fs::path& list) {
    if (hasKnownSuffix(list))
        refuse(textOf(list) + " is a mesh. Give a folder or a text file with one path per line, or "
                              "use korva simplify.");
    InputFile file(list);
    std::vector<fs::path> found;
    std::string_view line;
    for (bool isFirst = true; file.readLine(line); isFirst = false) {
        if (isFirst) skipByteOrderMark(line);
        if (line.starts_with('#') || line.find_first_not_of(" \t") == std::string_view::npos)
            continue;
        if (line.find('\0') != std::string_view::npos)
            failToRead(list, "it is not a text file with one path per line.");
        found.emplace_back(std::u8string(line.begin(), line.end()));
    }
    if (found.empty()) failToRead(list, "it lists no meshes.");
    return found;
}

/// Where an output goes below the folder of all.
fs::path relativeOutput(const fs::path& written, const std::string& format) {
    fs::path name = written.lexically_normal();
    if (name.is_absolute() || name.has_root_name() || name.has_root_directory() ||
        (!name.empty() && *name.begin() == ".."))
        name = name.filename();
    if (!format.empty()) name.replace_extension(format);
    return name;
}

WorkItem itemFor(const fs::path& folder, const fs::path& written, const WorkListOptions& options) {
    WorkItem item;
    item.input = folder / written;
    item.output = options.outFolder / relativeOutput(written, options.format);
    std::error_code failure;
    const std::uintmax_t bytes = fs::file_size(item.input, failure);
    if (!failure) item.bytes = bytes;
    const fs::file_time_type modified = fs::last_write_time(item.input, failure);
    if (!failure) item.modified = static_cast<std::int64_t>(modified.time_since_epoch().count());
    return item;
}

/// What two paths to the same file have in common.
std::string keyOf(const fs::path& path) {
    std::error_code failure;
    const fs::path real = fs::weakly_canonical(path, failure);
    std::string text = failure ? absoluteText(path) : textOf(real);
    constexpr bool kIgnoresCase = fs::path::preferred_separator == '\\';
    if (kIgnoresCase) {
        std::ranges::transform(text, text.begin(), [](char c) {
            return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c;
        });
    }
    return text;
}

void checkClashes(const std::vector<WorkItem>& items) {
    std::map<std::string, const WorkItem*> inputs;
    for (const WorkItem& item : items) {
        throwIfInterrupted();
        inputs.emplace(keyOf(item.input), &item);
    }
    std::map<std::string, const WorkItem*> outputs;
    for (const WorkItem& item : items) {
        throwIfInterrupted();
        const std::string key = keyOf(item.output);
        const auto [other, isNew] = outputs.emplace(key, &item);
        if (!isNew)
            refuse(textOf(other->second->input) + " and " + textOf(item.input) +
                   " would both become " + textOf(item.output) +
                   ". Rename one, or process them separately.");
        if (const auto input = inputs.find(key); input != inputs.end())
            refuse("The output for " + textOf(item.input) + " would overwrite the input " +
                   textOf(input->second->input) + ". Choose another folder for the outputs.");
    }
}

}  // namespace

std::string absoluteText(const fs::path& path) {
    std::error_code failure;
    const fs::path absolute = fs::absolute(path, failure);
    return textOf((failure ? path : absolute).lexically_normal());
}

std::vector<WorkItem> makeWorkList(const fs::path& source, const WorkListOptions& options) {
    std::error_code ignored;
    const bool isFolder = fs::is_directory(source, ignored);
    const fs::path folder = isFolder ? source : source.parent_path();
    std::vector<WorkItem> items;
    for (const fs::path& written : isFolder ? meshesIn(source, options) : pathsIn(source)) {
        throwIfInterrupted();
        items.push_back(itemFor(folder, written, options));
    }
    checkClashes(items);
    return items;
}

}  // namespace korva
