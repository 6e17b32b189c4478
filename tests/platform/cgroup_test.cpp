// SPDX-License-Identifier: MIT
#include "platform/cgroup.h"

#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace korvalite::core::platform {
namespace {

class Cgroup : public testing::Test {
protected:
    void write(const std::string& name, const std::string& text) const {
        const std::string path = folder_.path() + name;
        std::filesystem::create_directories(test::pathOfUtf8(path).parent_path());
        test::writeWhole(path, text);
    }
    [[nodiscard]] std::uint64_t left() const { return memoryLeftInGroups(folder_.path()); }

    test::ScratchFolder folder_;
};

TEST_F(Cgroup, WithoutGroupsThereIsNoLimit) {
    EXPECT_EQ(left(), kNoMemoryLimit);
    write("/proc/self/cgroup", "");
    EXPECT_EQ(left(), kNoMemoryLimit);
    write("/proc/self/cgroup", "nonsense\n0:\n::\n0::/gone\n7:memory:/gone\n");
    EXPECT_EQ(left(), kNoMemoryLimit);
}

TEST_F(Cgroup, Version2SubtractsWhatIsUsedButNotTheCacheOfFiles) {
    write("/proc/self/cgroup", "0::/user/job\n");
    write("/sys/fs/cgroup/user/job/memory.max", "1000000\n");
    EXPECT_EQ(left(), 1000000U);
    write("/sys/fs/cgroup/user/job/memory.current", "700000\n");
    EXPECT_EQ(left(), 300000U);
    write("/sys/fs/cgroup/user/job/memory.stat", "anon 5\nfile 600000\ninactive_file 200000\n");
    EXPECT_EQ(left(), 500000U);
    write("/sys/fs/cgroup/user/job/memory.current", "100\n");
    EXPECT_EQ(left(), 1000000U);
    write("/sys/fs/cgroup/user/job/memory.current", "9000000\n");
    EXPECT_EQ(left(), 0U);
    write("/sys/fs/cgroup/user/job/memory.max", "max\n");
    EXPECT_EQ(left(), kNoMemoryLimit);
}

TEST_F(Cgroup, TheTightestOfTheGroupsAroundCounts) {
    write("/proc/self/cgroup", "0::/a/b/c\n");
    write("/sys/fs/cgroup/a/b/c/memory.max", "900\n");
    write("/sys/fs/cgroup/a/memory.max", "800\n");
    EXPECT_EQ(left(), 800U);
    write("/sys/fs/cgroup/memory.max", "700\n");
    EXPECT_EQ(left(), 700U);
    write("/sys/fs/cgroup/a/b/memory.max", "600\n");
    EXPECT_EQ(left(), 600U);
}

TEST_F(Cgroup, AContainerSeesItsLimitAtTheTop) {
    write("/proc/self/cgroup", "0::/\n");
    write("/sys/fs/cgroup/memory.max", "123\n");
    EXPECT_EQ(left(), 123U);
}

TEST_F(Cgroup, Version1HasAHierarchyForMemory) {
    write("/proc/self/cgroup", "8:cpu:/x\n4:hugetlb,memory:/outside/of/here\n0::/\n");
    write("/sys/fs/cgroup/memory/memory.limit_in_bytes", "5000\n");
    write("/sys/fs/cgroup/memory/memory.usage_in_bytes", "4000\n");
    write("/sys/fs/cgroup/memory/memory.stat", "inactive_file 1\ntotal_inactive_file 500\n");
    EXPECT_EQ(left(), 1500U);
    write("/sys/fs/cgroup/memory/outside/memory.limit_in_bytes", "9223372036854771712\n");
    EXPECT_EQ(left(), 1500U);
    write("/sys/fs/cgroup/memory/outside/of/here/memory.limit_in_bytes", "900\n");
    EXPECT_EQ(left(), 900U);
}

}  // namespace
}  // namespace korvalite::core::platform
