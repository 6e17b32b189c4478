// SPDX-License-Identifier: MIT
#include "korva/batch/earlier_run.h"

#include "korva/batch/summary.h"
#include "korva/io/input_file.h"

#include <nlohmann/json.hpp>

#include <system_error>
#include <utility>

namespace korva {

EarlierRun readEarlierRun(const std::filesystem::path& outFolder) {
    const std::filesystem::path path = outFolder / kSummaryName;
    std::error_code ignored;
    if (!std::filesystem::exists(path, ignored)) return {};
    try {
        InputFile file(path);
        std::string text(file.size(), '\0');
        text.resize(file.read(text.data(), text.size()));
        const nlohmann::json json = nlohmann::json::parse(text);
        EarlierRun run;
        json.at("settings").get_to(run.settings);
        json.at("outputs").get_to(run.outputs);
        for (const nlohmann::json& mesh : json.at("meshes")) {
            auto record = mesh.get<MeshRecord>();
            std::string input = record.input;
            run.records.insert_or_assign(std::move(input), std::move(record));
        }
        return run;
    } catch (const nlohmann::json::exception&) {
    } catch (const korvalite::Error&) {
    }
    EarlierRun damaged;
    damaged.isDamaged = true;
    return damaged;
}

const MeshRecord* finishedRecord(const EarlierRun& run, const WorkItem& item) {
    const auto found = run.records.find(absoluteText(item.input));
    if (found == run.records.end()) return nullptr;
    const MeshRecord& record = found->second;
    std::error_code ignored;
    const bool isFinished = record.status != MeshStatus::Failed && record.bytes == item.bytes &&
                            record.modified == item.modified &&
                            record.output == absoluteText(item.output) &&
                            std::filesystem::is_regular_file(item.output, ignored);
    return isFinished ? &record : nullptr;
}

}  // namespace korva
