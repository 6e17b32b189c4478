// SPDX-License-Identifier: MIT
#pragma once

#include "host/job_paths.h"
#include "platform/file.h"
#include "splits/vsplit_list.h"
#include "splits/vsplit_samples.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <vector>

namespace korvalite::core::test {

// Each test has its own job folder.
class VSplitListTest : public testing::Test {
protected:
    void SetUp() override { SetJobDirectory(folder.path().c_str()); }
    void TearDown() override { SetJobDirectory(HeapString()); }

    std::size_t filesInFolder() const {
        const std::filesystem::directory_iterator files(pathOfUtf8(folder.path()));
        return static_cast<std::size_t>(std::distance(begin(files), end(files)));
    }
    platform::File reopened(const char8_t* name) const {
        return platform::File::open((folder / name).c_str(), "rb");
    }

    ScratchFolder folder;
    VSplitSamples samples;
};

// Its scratch files are in the job folder.
struct ScratchedList : VSplitList {
    ScratchedList() { scratchFolder = JobDirectory(); }
};

inline constexpr std::uint32_t kManyVertices = 100000;

inline void appendAll(VSplitList& list, const std::vector<VSplit>& splits) {
    for (const VSplit& split : splits) {
        list.append(split);
        list.spillIfFull();
    }
}

// The first position whose record differs from the model; -1 if there is none.
inline std::int64_t firstDifference(VSplitList& list, const std::vector<VSplit>& model,
                                    VSplitFormat format) {
    if (list.NumVtxSplit() != model.size()) return static_cast<std::int64_t>(model.size());
    for (std::size_t i = 0; i < model.size(); ++i) {
        if (wordsOf(list.ensureLoaded(static_cast<std::int32_t>(i))) != wordsOf(model[i], format))
            return static_cast<std::int64_t>(i);
    }
    return -1;
}

inline std::size_t recordBytes(const std::vector<VSplit>& splits, VSplitFormat format) {
    std::size_t words = 0;
    for (const VSplit& split : splits)
        words += wordsOf(split, format).size();
    return words * 4;
}

}  // namespace korvalite::core::test
