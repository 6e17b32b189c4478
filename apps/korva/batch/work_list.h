// SPDX-License-Identifier: MIT
#pragma once

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

namespace korva {

struct WorkItem {
    std::filesystem::path input;
    std::filesystem::path output;
    std::uint64_t bytes = 0;    // of the input
    std::int64_t modified = 0;  // a time in a unit of the system
};

struct WorkListOptions {
    std::filesystem::path outFolder;
    std::string format;  // the suffix of all outputs, without its dot; empty keeps that of inputs
    bool isRecursive = false;

    /// Absolute paths, as text, of files in the folder that are not inputs.
    std::set<std::string> earlierOutputs;
};

/// The meshes of a folder, sorted by name, or of a list with one path per line. An output keeps the
/// folders of its input below the folder of all; an input elsewhere goes directly into outFolder.
/// A missing file in a list is an item like others.
///
/// Throws Error(CannotRead) if `source` cannot be read or has no meshes; Error(BadOption) if two
/// outputs have the same name, or if one would overwrite an input; and Error(Cancelled) if the
/// process is interrupted.
[[nodiscard]] std::vector<WorkItem> makeWorkList(const std::filesystem::path& source,
                                                 const WorkListOptions& options);

/// The absolute path as text in UTF-8, without "." and "..".
[[nodiscard]] std::string absoluteText(const std::filesystem::path& path);

}  // namespace korva
