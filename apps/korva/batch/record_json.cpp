// SPDX-License-Identifier: MIT
#include "korva/batch/record_json.h"

namespace korva {

NLOHMANN_JSON_SERIALIZE_ENUM(MeshStatus, {{MeshStatus::Failed, "failed"},
                                          {MeshStatus::Done, "done"},
                                          {MeshStatus::Skipped, "skipped"},
                                          {MeshStatus::Missed, "missed"}})

nlohmann::json jsonOf(const MeshRecord& record) {
    return {{"input", record.input},
            {"output", record.output},
            {"bytes", record.bytes},
            {"modified", record.modified},
            {"status", record.status},
            {"missedTarget", record.missedTarget},
            {"exitCode", static_cast<int>(record.code)},
            {"verticesBefore", record.verticesBefore},
            {"trianglesBefore", record.trianglesBefore},
            {"verticesAfter", record.verticesAfter},
            {"trianglesAfter", record.trianglesAfter},
            {"asked", record.asked},
            {"seconds", record.seconds},
            {"memoryBytes", record.memoryBytes},
            {"sentence", record.sentence},
            {"notes", record.notes}};
}

MeshRecord recordOf(const nlohmann::json& json) {
    MeshRecord record;
    json.at("input").get_to(record.input);
    json.at("output").get_to(record.output);
    json.at("bytes").get_to(record.bytes);
    json.at("modified").get_to(record.modified);
    json.at("status").get_to(record.status);
    json.at("missedTarget").get_to(record.missedTarget);
    record.code = static_cast<ExitCode>(json.at("exitCode").get<int>());
    json.at("verticesBefore").get_to(record.verticesBefore);
    json.at("trianglesBefore").get_to(record.trianglesBefore);
    json.at("verticesAfter").get_to(record.verticesAfter);
    json.at("trianglesAfter").get_to(record.trianglesAfter);
    json.at("asked").get_to(record.asked);
    json.at("seconds").get_to(record.seconds);
    json.at("memoryBytes").get_to(record.memoryBytes);
    json.at("sentence").get_to(record.sentence);
    json.at("notes").get_to(record.notes);
    return record;
}

}  // namespace korva
