// SPDX-License-Identifier: MIT
#include "korva/batch/mesh_record.h"

#include <nlohmann/json.hpp>

namespace korva {

// The first is also what any other text is read as.
NLOHMANN_JSON_SERIALIZE_ENUM(MeshStatus, {{MeshStatus::Failed, "failed"},
                                          {MeshStatus::Done, "done"},
                                          {MeshStatus::Skipped, "skipped"},
                                          {MeshStatus::Missed, "missed"}})

namespace {

/// Calls visit(key, field) for each field of a record, const or not.
template <typename Record, typename Visit>
void forEachField(Record& record, const Visit& visit) {
    visit("input", record.input);
    visit("output", record.output);
    visit("bytes", record.bytes);
    visit("modified", record.modified);
    visit("status", record.status);
    visit("missedTarget", record.missedTarget);
    visit("exitCode", record.code);
    visit("verticesBefore", record.verticesBefore);
    visit("trianglesBefore", record.trianglesBefore);
    visit("verticesAfter", record.verticesAfter);
    visit("trianglesAfter", record.trianglesAfter);
    visit("asked", record.asked);
    visit("seconds", record.seconds);
    visit("memoryBytes", record.memoryBytes);
    visit("sentence", record.sentence);
    visit("notes", record.notes);
}

}  // namespace

std::string nameOf(MeshStatus status) {
    return nlohmann::json(status).get<std::string>();
}

void to_json(nlohmann::json& json, const MeshRecord& record) {
    forEachField(record, [&](const char* key, const auto& field) { json[key] = field; });
}

void from_json(const nlohmann::json& json, MeshRecord& record) {
    forEachField(record, [&](const char* key, auto& field) { json.at(key).get_to(field); });
}

}  // namespace korva
