// SPDX-License-Identifier: MIT
#include "shell/input_files.h"

#include "shell/apply_settings.h"

#include <unordered_set>

namespace korvalite::core {

namespace {

std::string folded(const HeapString& path) {
    std::string text(path.view());
    for (char& c : text)
        c = static_cast<char>(foldCase(c));
    return text;
}

// COMPAT: cuts at the last dot, even one in a folder's name: "a.b/c" is "a" in the message.
std::string_view shownName(const HeapString& path) {
    const std::string_view text = path.view().substr(0, path.view().rfind('.'));
    return text.substr(text.find_last_of("/\\") + 1);
}

}  // namespace

std::string duplicateInputLines(const std::forward_list<BatchEntry>& entries) {
    std::unordered_set<std::string> seen;
    std::string lines;
    for (const BatchEntry& entry : entries) {
        if (seen.insert(folded(entry.settings.InputFile)).second) continue;
        lines += "   - ";
        lines += shownName(entry.settings.InputFile);
        lines += '\n';
    }
    return lines;
}

FileContent LoadInputInProgMesh(const BatchSettings& settings, ProgressiveMesh& pm) {
    const FileFormat& format = fileFormatOf(settings.InputFile);
    const bool loaded = format.read(settings.InputFile, pm, [&](std::uint32_t vertexCount) {
        return targetVertexCount(settings, vertexCount);
    });
    applySettings(settings, pm);
    return loaded ? format.content : FileContent::None;
}

}  // namespace korvalite::core
