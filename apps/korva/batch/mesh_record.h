// SPDX-License-Identifier: MIT
#pragma once

#include "korva/exit_code.h"

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <string>
#include <vector>

namespace korva {

enum class MeshStatus { Done, Skipped, Missed, Failed };

/// As in the summary.
[[nodiscard]] std::string nameOf(MeshStatus status);

/// What became of a mesh of a batch.
struct MeshRecord {
    std::string input;  // absolute, in UTF-8, as is the output
    std::string output;
    std::uint64_t bytes = 0;    // of the input
    std::int64_t modified = 0;  // the input, in a unit of the system
    MeshStatus status = MeshStatus::Failed;
    bool missedTarget = false;
    ExitCode code = ExitCode::Done;  // of the mesh alone, without --strict
    std::uint64_t verticesBefore = 0;
    std::uint64_t trianglesBefore = 0;
    std::uint64_t verticesAfter = 0;
    std::uint64_t trianglesAfter = 0;
    std::uint64_t asked = 0;  // in vertices, or triangles if the target counts them
    double seconds = 0;
    std::uint64_t memoryBytes = 0;  // the estimate
    std::string sentence;           // why it failed or missed the target
    std::vector<std::string> notes;
};

/// docs/korva.md describes the object. Reading throws nlohmann::json::exception if anything is
/// missing or has the wrong type.
void to_json(nlohmann::json& json, const MeshRecord& record);
void from_json(const nlohmann::json& json, MeshRecord& record);

}  // namespace korva
