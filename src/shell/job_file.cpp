// SPDX-License-Identifier: MIT
#include "shell/job_file.h"

#include "base/numeric.h"
#include "platform/file.h"

#include <array>
#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace korvalite::core {

namespace {

struct Word {
    const char* text;
    std::int32_t value;
};

bool equalsNoCase(const HeapString& left, const char* right) {
    return CompareNoCase(left.c_str(), right) == 0;
}

// COMPAT: a value that is not in the list leaves the field unchanged; old jobs rely on it.
template <typename Field, std::size_t count>
void storeWord(const HeapString& value, const std::array<Word, count>& words, Field& field) {
    for (const Word& word : words)
        if (equalsNoCase(value, word.text)) field = static_cast<Field>(word.value);
}

/// The number at the start of the text. The decimal point is a dot because nothing ever sets a
/// locale.
std::optional<float> leadingNumber(const HeapString& text) {
    char* end = nullptr;
    const float number = std::strtof(text.c_str(), &end);
    if (end == text.c_str()) return std::nullopt;
    return number;
}

void storeInteger(const HeapString& value, std::int32_t& field) {
    // COMPAT: read as a float; above 2^24 an integer in a job is only as exact as a float.
    if (const auto number = leadingNumber(value)) field = truncateToInt32(double{*number});
}

/// The settings of the open entry, or else of the job.
BatchSettings& settingsInScope(JobConfig& job) {
    return job.currentEntry != nullptr ? job.currentEntry->settings : job.settings;
}

using Handler = void (*)(const HeapString&, JobConfig&);

// Handlers for the entry or the job.

template <HeapString BatchSettings::*field>
void textKey(const HeapString& value, JobConfig& job) {
    settingsInScope(job).*field = value;
}

template <bool BatchSettings::*field>
void boolKey(const HeapString& value, JobConfig& job) {
    settingsInScope(job).*field = ParseBool(value);
}

template <std::int32_t BatchSettings::*field>
void integerKey(const HeapString& value, JobConfig& job) {
    storeInteger(value, settingsInScope(job).*field);
}

template <float BatchSettings::*field>
void floatKey(const HeapString& value, JobConfig& job) {
    if (const auto number = leadingNumber(value)) settingsInScope(job).*field = *number;
}

void symmetryKey(const HeapString& value, JobConfig& job) {
    static constexpr std::array kWords{Word{"no", kSymmetryNone}, Word{"x", kSymmetryX},
                                       Word{"y", kSymmetryY}, Word{"z", kSymmetryZ},
                                       Word{"auto", kSymmetryAuto}};
    storeWord(value, kWords, settingsInScope(job).Symmetry);
}

void useMaskKey(const HeapString& value, JobConfig& job) {
    static constexpr std::array kWords{Word{"NO", 0}, Word{"YES", 1}};
    storeWord(value, kWords, settingsInScope(job).UseMask);
}

// Handlers only for the job.

/// Takes effect anywhere in the file.
template <bool JobConfig::*field>
void jobBoolKey(const HeapString& value, JobConfig& job) {
    job.*field = ParseBool(value);
}

/// Takes effect only outside StartBatch..EndBatch.
template <Handler handler>
void outsideEntries(const HeapString& value, JobConfig& job) {
    if (job.currentEntry == nullptr) handler(value, job);
}

template <std::int32_t JobConfig::*field>
void jobIntegerKey(const HeapString& value, JobConfig& job) {
    storeInteger(value, job.*field);
}

void appModeKey(const HeapString& value, JobConfig& job) {
    static constexpr std::array kWords{Word{"korvalite", 0}, Word{"Trimwright BATCH", 1},
                                       Word{"full proto", 3}, Word{"empty", 4}};
    storeWord(value, kWords, job.AppMode);
}

void displayModeKey(const HeapString& value, JobConfig& job) {
    static constexpr std::array kWords{Word{"NO", 0}, Word{"BASIC", 1}, Word{"VBO", 2}};
    storeWord(value, kWords, job.DisplayMode);
}

std::int32_t versionCodeOf(std::int32_t hundredths) {
    if (hundredths < 310) return 1;
    if (hundredths < 312) return 310;
    if (hundredths < 315) return 312;
    if (hundredths < 325) return 320;
    return 401;
}

void fennikVersionKey(const HeapString& value, JobConfig& job) {
    // COMPAT: the 0.2 corrects floats just below their decimal text, such as a host's 3.12.
    if (const auto number = leadingNumber(value))
        job.versionCode = versionCodeOf(truncateToInt32(double{*number} * 100.0 + 0.2));
}

void startBatchKey(const HeapString& value, JobConfig& job) {
    static constexpr std::array kWords{Word{"Build progressive mesh", kBuildProgressiveMesh},
                                       Word{"Decimate mesh", kDecimateMesh},
                                       Word{"Decimate progressive mesh", kDecimateProgressiveMesh}};
    job.batchList.emplace_front();
    job.currentEntry = &job.batchList.front();
    storeWord(value, kWords, job.currentEntry->kind);
}

void endBatchKey(const HeapString&, JobConfig& job) {
    job.currentEntry = nullptr;
}

constexpr ConfigKeyEntry kKeys[] = {
    {"AppMode", appModeKey},
    {"FennikVersion", fennikVersionKey},
    {"InputFile", textKey<&BatchSettings::InputFile>},
    {"OutputFile", textKey<&BatchSettings::OutputFile>},
    {"MemSpeedTradeOff", integerKey<&BatchSettings::MemSpeedTradeOff>},
    {"DeleteConfigFile", jobBoolKey<&JobConfig::DeleteConfigFile>},
    {"DeleteInputFile", boolKey<&BatchSettings::DeleteInputFile>},
    {"Symmetry", symmetryKey},
    {"FreezeBorder", boolKey<&BatchSettings::FreezeBorder>},
    {"ProgressiveMeshMinNum", integerKey<&BatchSettings::ProgressiveMeshMinNum>},
    {"DecimationTargetNum", integerKey<&BatchSettings::DecimationTargetNum>},
    {"DecimationTargetPourcent", floatKey<&BatchSettings::DecimationTargetPourcent>},
    {"AvoidNormalReverse", boolKey<&BatchSettings::AvoidNormalReverse>},
    {"ProtectTopology", boolKey<&BatchSettings::ProtectTopology>},
    {"AllowFinishStep", boolKey<&BatchSettings::AllowFinishStep>},
    {"UseAreaWeighting", boolKey<&BatchSettings::UseAreaWeighting>},
    {"IFlipX", boolKey<&BatchSettings::IFlipX>},
    {"IFlipY", boolKey<&BatchSettings::IFlipY>},
    {"IFlipZ", boolKey<&BatchSettings::IFlipZ>},
    {"ISwitchYZ", boolKey<&BatchSettings::ISwitchYZ>},
    {"NumThread", integerKey<&BatchSettings::NumThread>},
    {"KeepUVs", boolKey<&BatchSettings::KeepUVs>},
    {"UseVtxColors", boolKey<&BatchSettings::UseVtxColors>},
    {"UseVtxColorsCoef", floatKey<&BatchSettings::UseVtxColorsCoef>},
    {"MessageChannelId", outsideEntries<jobIntegerKey<&JobConfig::MessageChannelId>>},
    {"MessageReaderId", outsideEntries<jobIntegerKey<&JobConfig::MessageReaderId>>},
    {"ProcessId", outsideEntries<jobIntegerKey<&JobConfig::ProcessId>>},
    {"QueueId", outsideEntries<jobIntegerKey<&JobConfig::QueueId>>},
    {"DisplayMode", outsideEntries<displayModeKey>},
    {"UseMask", useMaskKey},
    {"StartBatch", startBatchKey},
    {"EndBatch", endBatchKey},
    {"UseProgressBar", outsideEntries<jobBoolKey<&JobConfig::UseProgressBar>>},
    {"DoReorder", boolKey<&BatchSettings::DoReorder>},
    {"KeepTempFiles", outsideEntries<jobBoolKey<&JobConfig::KeepTempFiles>>},
};

bool startsWithNoCase(std::string_view text, std::string_view start) {
    if (text.size() < start.size()) return false;
    for (std::size_t i = 0; i < start.size(); ++i)
        if (foldCase(text[i]) != foldCase(start[i])) return false;
    return true;
}

std::string_view withoutBlanks(std::string_view line) {
    const std::size_t first = line.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return line.substr(first, line.find_last_not_of(" \t") - first + 1);
}

// COMPAT: a key alone has an empty value, one with only separators is ignored; old jobs have both.
void dispatch(const ConfigKeyEntry& entry, std::string_view behindKey, JobConfig& job) {
    if (behindKey.empty()) {
        entry.handler(HeapString(""), job);
        return;
    }
    const std::size_t valueStart = behindKey.find_first_not_of("\t :=");
    if (valueStart == std::string_view::npos) return;
    entry.handler(HeapString(behindKey.substr(valueStart)), job);
}

void parseLine(std::string_view line, JobConfig& job) {
    for (auto entry = std::rbegin(kKeys); entry != std::rend(kKeys); ++entry) {
        const std::string_view key = entry->key;
        // COMPAT: a key need not end at a word boundary; old jobs may say "UseMaskYES".
        if (!startsWithNoCase(line, key)) continue;
        dispatch(*entry, line.substr(key.size()), job);
        return;
    }
}

void parseText(std::string_view text, JobConfig& job) {
    while (!text.empty()) {
        const std::string_view line = text.substr(0, text.find_first_of("\r\n"));
        parseLine(withoutBlanks(line), job);
        text.remove_prefix(line.size());
        const std::size_t next = text.find_first_not_of("\r\n");
        text.remove_prefix(next == std::string_view::npos ? text.size() : next);
    }
}

}  // namespace

std::span<const ConfigKeyEntry> keyTable() {
    return kKeys;
}

void ResetJobConfig(JobConfig& job) {
    job = JobConfig();
}

bool LoadJobFile(const HeapString& path, JobConfig& job) {
    platform::File file = platform::File::open(path.c_str(), "rb");
    const std::int64_t byteCount = file.bytesLeft();
    if (byteCount <= 0) return false;
    std::string text(static_cast<std::size_t>(byteCount), '\0');
    file.read(text.data(), text.size());
    parseText(std::string_view(text.c_str()), job);
    return true;
}

bool ParseBool(const HeapString& text) {
    // COMPAT: everything else is true, even an empty text; old jobs rely on it.
    return !(equalsNoCase(text, "No") || equalsNoCase(text, "0") || equalsNoCase(text, "False") ||
             equalsNoCase(text, "#f"));
}

}  // namespace korvalite::core
