// SPDX-License-Identifier: MIT
//
// What became of each mesh of a batch, as korva-batch.json and korva-batch.csv in the folder of the
// outputs. The next run reads the JSON to see what is done already.
#pragma once

#include "korva/batch/mesh_record.h"
#include "korva/exit_code.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace korva {

/// The name of the JSON.
inline constexpr const char* kSummaryName = "korva-batch.json";

/// A line without its end, quoted as RFC 4180 requires.
[[nodiscard]] std::string csvLine(const std::vector<std::string>& fields);

/// Not for several threads at once.
class Summary {
public:
    /// `outputs` are the files in the folder that no run should take as inputs.
    Summary(std::filesystem::path outFolder, std::string settings, std::set<std::string> outputs,
            std::size_t meshCount);

    void set(std::size_t mesh, MeshRecord record) { records_[mesh] = std::move(record); }

    /// Writes the JSON after a mesh, but not each time once it is so long that writing it would
    /// take a notable share of the run.
    void saveNowAndThen();
    /// Writes both files.
    void save();

    [[nodiscard]] std::string jsonText() const;
    [[nodiscard]] std::size_t count(MeshStatus status) const;
    /// The meshes that have not ended.
    [[nodiscard]] std::size_t left() const;

    /// The code of the first mesh that failed, or, if `isStrict`, missed its target.
    [[nodiscard]] ExitCode exitCode(bool isStrict) const;

private:
    void saveJson();

    std::filesystem::path outFolder_;
    std::string settings_;
    std::set<std::string> outputs_;
    std::vector<std::optional<MeshRecord>> records_;  // nothing for a mesh that has not ended
    std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
    std::chrono::steady_clock::time_point nextSave_ = start_;
};

}  // namespace korva
