// SPDX-License-Identifier: MIT
#include "korva/batch/summary.h"

#include "korva/io/output_file.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <cstdio>
#include <utility>

namespace korva {

namespace {

using Clock = std::chrono::steady_clock;

constexpr const char* kCsvName = "korva-batch.csv";

void writeFile(const std::filesystem::path& path, const std::string& text) {
    OutputFile file(path);
    file.write(text);
    file.commit();
}

std::string csvField(const std::string& field) {
    if (field.find_first_of(",\"\r\n") == std::string::npos) return field;
    std::string text = "\"";
    for (const char c : field) {
        if (c == '"') text += '"';
        text += c;
    }
    return text + '"';
}

std::string textOfSeconds(double seconds) {
    std::array<char, 64> text{};
    std::snprintf(text.data(), text.size(), "%.3f", seconds);
    return text.data();
}

std::string csvLineOf(const MeshRecord& record) {
    return csvLine({record.input, record.output, nameOf(record.status),
                    std::to_string(record.verticesBefore), std::to_string(record.trianglesBefore),
                    std::to_string(record.verticesAfter), std::to_string(record.trianglesAfter),
                    std::to_string(record.asked), textOfSeconds(record.seconds),
                    std::to_string(record.memoryBytes), record.sentence});
}

}  // namespace

std::string csvLine(const std::vector<std::string>& fields) {
    std::string line;
    for (const std::string& field : fields)
        line += (&field == &fields.front() ? "" : ",") + csvField(field);
    return line;
}

Summary::Summary(std::filesystem::path outFolder, std::string settings,
                 std::set<std::string> outputs, std::size_t meshCount)
    : outFolder_(std::move(outFolder)), settings_(std::move(settings)),
      outputs_(std::move(outputs)), records_(meshCount) {}

void Summary::saveNowAndThen() {
    const Clock::time_point before = Clock::now();
    if (before < nextSave_) return;
    saveJson();
    constexpr int kMostOftenOneIn = 20;  // of the time
    const Clock::time_point after = Clock::now();
    const Clock::duration taken = after - before;
    if (taken > std::chrono::milliseconds(20)) nextSave_ = after + kMostOftenOneIn * taken;
}

void Summary::save() {
    saveJson();
    std::string csv =
        csvLine({"input", "output", "status", "verticesBefore", "trianglesBefore", "verticesAfter",
                 "trianglesAfter", "asked", "seconds", "memoryBytes", "sentence"}) +
        "\r\n";
    for (const std::optional<MeshRecord>& record : records_) {
        if (record) csv += csvLineOf(*record) + "\r\n";
    }
    writeFile(outFolder_ / kCsvName, csv);
}

void Summary::saveJson() {
    writeFile(outFolder_ / kSummaryName, jsonText() + '\n');
}

std::string Summary::jsonText() const {
    nlohmann::json meshes = nlohmann::json::array();
    for (const std::optional<MeshRecord>& record : records_) {
        if (record) meshes.push_back(*record);
    }
    const std::chrono::duration<double> seconds = Clock::now() - start_;
    const nlohmann::json json = {{"settings", settings_},
                                 {"outputs", outputs_},
                                 {"meshes", std::move(meshes)},
                                 {"totals",
                                  {{"meshes", records_.size()},
                                   {"done", count(MeshStatus::Done)},
                                   {"skipped", count(MeshStatus::Skipped)},
                                   {"missed", count(MeshStatus::Missed)},
                                   {"failed", count(MeshStatus::Failed)},
                                   {"left", left()},
                                   {"seconds", seconds.count()}}}};
    // Names of files need not be valid UTF-8 everywhere.
    return json.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

std::size_t Summary::count(MeshStatus status) const {
    return static_cast<std::size_t>(
        std::ranges::count_if(records_, [&](const std::optional<MeshRecord>& record) {
            return record && record->status == status;
        }));
}

std::size_t Summary::left() const {
    return static_cast<std::size_t>(std::ranges::count_if(
        records_, [](const std::optional<MeshRecord>& record) { return !record.has_value(); }));
}

ExitCode Summary::exitCode(bool isStrict) const {
    for (const std::optional<MeshRecord>& record : records_) {
        if (record && record->code != ExitCode::Done) return record->code;
        if (record && record->missedTarget && isStrict) return ExitCode::TargetMissed;
    }
    return ExitCode::Done;
}

}  // namespace korva
