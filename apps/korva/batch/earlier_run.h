// SPDX-License-Identifier: MIT
#pragma once

#include "korva/batch/mesh_record.h"
#include "korva/batch/work_list.h"

#include <filesystem>
#include <map>
#include <set>
#include <string>

namespace korva {

/// What the summary in the folder of the outputs says about the run that wrote it.
struct EarlierRun {
    std::string settings;
    std::map<std::string, MeshRecord> records;  // by input
    std::set<std::string> outputs;  // of this run and those before it, even if they did not end
    bool isDamaged = false;         // then all else is empty
};

/// Empty if there is no summary.
[[nodiscard]] EarlierRun readEarlierRun(const std::filesystem::path& outFolder);

/// The record of a mesh that needs no work, if the settings are the same: its input has not changed
/// since, and its output is there. Null if it needs work.
[[nodiscard]] const MeshRecord* finishedRecord(const EarlierRun& run, const WorkItem& item);

}  // namespace korva
