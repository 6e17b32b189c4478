// SPDX-License-Identifier: MIT
#include "platform/cgroup.h"

#include <algorithm>
#include <fstream>

namespace korvalite::core::platform {

namespace {

// Where a version keeps its numbers.
struct GroupFiles {
    const char* limit;
    const char* used;
    const char* cacheKey;  // in memory.stat: what `used` has of files that were read once
};
constexpr GroupFiles kVersion1{"/memory.limit_in_bytes", "/memory.usage_in_bytes",
                               "total_inactive_file"};
constexpr GroupFiles kVersion2{"/memory.max", "/memory.current", "inactive_file"};

// `otherwise` if there is no such file or it says "max".
std::uint64_t numberIn(const std::string& path, std::uint64_t otherwise) {
    std::uint64_t number = 0;
    return std::ifstream(path) >> number ? number : otherwise;
}

std::uint64_t cacheIn(const std::string& path, const std::string& wanted) {
    std::ifstream file(path);
    std::string key;
    std::uint64_t number = 0;
    while (file >> key >> number)
        if (key == wanted) return number;
    return 0;
}

std::uint64_t leftIn(const std::string& folder, const GroupFiles& files) {
    const std::uint64_t limit = numberIn(folder + files.limit, kNoMemoryLimit);
    if (limit == kNoMemoryLimit) return limit;
    const std::uint64_t used = numberIn(folder + files.used, 0);
    const std::uint64_t cache = cacheIn(folder + "/memory.stat", files.cacheKey);
    return limit - std::min(limit, used - std::min(used, cache));
}

// The limits of all groups around a group hold, too. In a container the path may be that outside,
// and then only the outermost folder is there.
std::uint64_t leftInAll(const std::string& outermost, std::string group, const GroupFiles& files) {
    std::uint64_t left = leftIn(outermost, files);
    while (!group.empty()) {
        left = std::min(left, leftIn(outermost + group, files));
        group.resize(std::min(group.rfind('/'), group.size() - 1));
    }
    return left;
}

}  // namespace

std::uint64_t memoryLeftInGroups(const std::string& root) {
    const std::string folder = root + "/sys/fs/cgroup";
    std::uint64_t left = kNoMemoryLimit;
    std::ifstream groups(root + "/proc/self/cgroup");
    // Each line is NUMBER:CONTROLLERS:GROUP, and that of version 2 has no controllers.
    for (std::string line; std::getline(groups, line);) {
        const std::size_t first = line.find(':');
        const std::size_t second = line.find(':', first + 1);
        if (first == std::string::npos || second == std::string::npos) continue;
        const std::string controllers = ',' + line.substr(first + 1, second - first - 1) + ',';
        const std::string group = line.substr(second + 1);
        if (controllers == ",,")
            left = std::min(left, leftInAll(folder, group, kVersion2));
        else if (controllers.find(",memory,") != std::string::npos)
            left = std::min(left, leftInAll(folder + "/memory", group, kVersion1));
    }
    return left;
}

}  // namespace korvalite::core::platform
