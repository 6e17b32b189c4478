// SPDX-License-Identifier: MIT
//
// Full disks and missing folders: no half-written mesh where the host would take it for a whole
// one, and no scratch file left after the run.
#include "jobs/hostile_batch.h"
#include "jobs/job_run.h"
#include "support/full_disk.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <set>
#include <string>

namespace korvalite::core::test {
namespace {

class HostileDisk : public HostileBatch {
protected:
    HostileDisk() {
        std::filesystem::copy_file(KORVALITE_SOURCE_DIR "/samples/spot.Vok",
                                   pathOfUtf8(in("mesh.Vok")));
    }

    std::set<std::string> files() const {
        std::set<std::string> names;
        const auto folder = pathOfUtf8(job.folder().path());
        for (const auto& entry : std::filesystem::directory_iterator(folder))
            names.insert(entry.path().filename().string());
        return names;
    }
    // Shows no message boxes: standard error may be a file too.
    void performOnDiskOf(std::size_t bytes, const BatchEntry& entry) const {
        JobConfig config;
        config.batchList.push_front(entry);
        const FullDisk disk(bytes);
        PerformAllBatch(config);
    }
    BatchEntry toHalf(const std::string& output) const {
        BatchSettings settings;
        settings.DecimationTargetPourcent = 50;
        return entry("mesh.Vok", output, settings);
    }
};

TEST_F(HostileDisk, AMeshIsWrittenInFullOrNotAtAll) {
    perform({toHalf("whole.Vok")});
    const std::string whole = readWhole(in("whole.Vok"));
    const std::size_t sizes[] = {
        0, 1, 31, 32, 100, 4096, 65536, whole.size() / 2, whole.size() - 17, whole.size() - 1};
    ASSERT_GT(whole.size(), 100000U);
    for (const std::size_t size : sizes) {
        performOnDiskOf(size, toHalf("out.Vok"));
        EXPECT_FALSE(exists("out.Vok")) << size;
    }
    EXPECT_EQ(files(), (std::set<std::string>{"mesh.Vok", "whole.Vok"}));
    // The scratch file no longer fits; the result is correct all the same.
    performOnDiskOf(whole.size(), toHalf("out.Vok"));
    EXPECT_TRUE(readWhole(in("out.Vok")) == whole);
}

TEST_F(HostileDisk, OtherFileKindsKeepWhatFitted) {
    for (const char* name : {"out.obj", "out.kvm"}) {
        perform({toHalf(name)});
        const std::string whole = readWhole(in(name));
        for (const std::size_t size : {std::size_t{1}, whole.size() / 3, whole.size() - 1}) {
            remove(name);
            performOnDiskOf(size, toHalf(name));
            EXPECT_TRUE(readWhole(in(name)) == whole.substr(0, size)) << name << ' ' << size;
        }
        remove(name);
    }
    EXPECT_EQ(files(), std::set<std::string>{"mesh.Vok"});
}

TEST_F(HostileDisk, AnOldOutputIsDeletedWhenItsSuccessorDoesNotFit) {
    writeWhole(in("out.Vok"), "the one before");
    performOnDiskOf(1000, toHalf("out.Vok"));
    EXPECT_FALSE(exists("out.Vok"));
}

TEST_F(HostileDisk, AMissingFolderIsNotCreated) {
    for (const char* name : {"no folder/out.Vok", "no folder/out.obj", "no folder/out.kvm"}) {
        EXPECT_EQ(perform({toHalf(name)}), "") << name;
        EXPECT_FALSE(exists("no folder")) << name;
    }
}

TEST_F(HostileDisk, AFolderInPlaceOfTheOutputIsKept) {
    for (const char* name : {"out.Vok", "out.obj", "out.kvm"}) {
        std::filesystem::create_directory(pathOfUtf8(in(name)));
        EXPECT_EQ(perform({toHalf(name)}), "") << name;
        EXPECT_TRUE(std::filesystem::is_directory(pathOfUtf8(in(name)))) << name;
    }
}

TEST_F(HostileDisk, WithoutAScratchFileTheResultIsTheSame) {
    for (const char* name : {"out.Vok", "out.kvm"}) {
        perform({toHalf(name)});
        const std::string expected = readWhole(in(name));
        remove(name);
        SetJobDirectory(in("no folder").c_str());
        perform({toHalf(name)});
        EXPECT_TRUE(readWhole(in(name)) == expected) << name;
        SetJobDirectory(job.folder().path().c_str());
        remove(name);
    }
}

}  // namespace
}  // namespace korvalite::core::test
