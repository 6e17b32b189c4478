// SPDX-License-Identifier: MIT
//
// Checks docs/job-file.md against the table of keys.
#include "shell/describe_job.h"
#include "shell/job_file.h"
#include "support/scratch_folder.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <map>
#include <sstream>
#include <string>
#include <vector>

namespace korvalite::core {
namespace {

using Cells = std::vector<std::string>;

std::string trimmed(const std::string& text) {
    const std::size_t first = text.find_first_not_of(' ');
    return first == std::string::npos ? ""
                                      : text.substr(first, text.find_last_not_of(' ') - first + 1);
}

Cells cellsOf(const std::string& line) {
    Cells cells;
    std::istringstream row(line.substr(1));
    for (std::string cell; std::getline(row, cell, '|');)
        cells.push_back(trimmed(cell));
    return cells;
}

struct DocumentedKey {
    std::string key;
    std::map<std::string, std::string> columns;
};

/// The rows of every table whose first column is "Key".
std::vector<DocumentedKey> documentedKeys() {
    std::vector<DocumentedKey> keys;
    std::istringstream page(test::readWhole(KORVALITE_SOURCE_DIR "/docs/job-file.md"));
    Cells header;
    for (std::string line; std::getline(page, line);) {
        if (line.empty() || line[0] != '|') {
            header.clear();
            continue;
        }
        const Cells cells = cellsOf(line);
        if (header.empty()) {
            header = cells;
        } else if (header[0] == "Key" && cells[0].front() == '`') {
            DocumentedKey row{cells[0].substr(1, cells[0].size() - 2), {}};
            for (std::size_t i = 1; i < cells.size(); ++i)
                row.columns[header.at(i)] = cells[i];
            keys.push_back(row);
        }
    }
    return keys;
}

std::string loaded(const std::string& text) {
    const test::ScratchFolder folder;
    const std::string path = folder / u8"job.kvc";
    test::writeWhole(path, text);
    JobConfig job;
    EXPECT_TRUE(LoadJobFile(path.c_str(), job));
    return test::describe(job);
}

TEST(JobFileDocs, HaveExactlyOneRowPerKey) {
    std::vector<std::string> documented;
    for (const DocumentedKey& row : documentedKeys())
        documented.push_back(row.key);
    std::vector<std::string> known;
    for (const ConfigKeyEntry& entry : keyTable())
        known.emplace_back(entry.key);
    std::sort(documented.begin(), documented.end());
    std::sort(known.begin(), known.end());
    EXPECT_EQ(documented, known);
}

TEST(JobFileDocs, StateTheRealDefaults) {
    int defaultCount = 0;
    for (const DocumentedKey& row : documentedKeys()) {
        const std::string& value = row.columns.at("Default");
        if (value.empty()) continue;
        ++defaultCount;
        const std::string line = row.key + "=" + value + "\n";
        EXPECT_EQ(loaded(line), loaded(" ")) << line;
    }
    EXPECT_GT(defaultCount, 25);
}

/// A value of the row's kind that differs from the default and has a meaning.
std::string otherValue(const DocumentedKey& row) {
    const std::string& kind = row.columns.at("Value");
    const std::string& value = row.columns.at("Default");
    if (kind == "yes/no") return value == "Yes" ? "No" : "Yes";
    if (kind == "number" || kind == "whole number") return "17";
    if (kind == "word") {
        // A word in backticks in the last column that is not the default.
        const std::string& effect = row.columns.at("Effect");
        std::size_t start = effect.find('`');
        while (start != std::string::npos) {
            const std::size_t end = effect.find('`', start + 1);
            const std::string word = effect.substr(start + 1, end - start - 1);
            if (word != value && word.find("NumThread") == std::string::npos) return word;
            start = effect.find('`', end + 1);
        }
    }
    return "some text";
}

TEST(JobFileDocs, StateTheKindAndPlaceOfEveryKey) {
    for (const DocumentedKey& row : documentedKeys()) {
        if (row.key == "EndBatch") continue;
        const std::string line = row.key + "=" + otherValue(row) + "\n";
        EXPECT_NE(loaded(line), loaded(" ")) << line;
        const auto inside = row.columns.find("Inside an entry");
        const bool ignored = inside != row.columns.end() && inside->second == "ignored";
        EXPECT_EQ(loaded("StartBatch\n" + line) == loaded("StartBatch\n"), ignored) << line;
    }
}

}  // namespace
}  // namespace korvalite::core
