// SPDX-License-Identifier: MIT
#include "platform/cgroup.h"
#include "platform/large_memory.h"
#include "platform/platform.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <fcntl.h>
#include <string_view>
#include <sys/mman.h>
#include <sys/stat.h>
#include <thread>
#include <unistd.h>

namespace korvalite::core::platform {

static_assert(sizeof(off_t) == 8, "build with -D_FILE_OFFSET_BITS=64: offsets are 64-bit");

namespace {

bool namesNothing(const char* path) {
    return path == nullptr || *path == '\0';
}

void appendOnOneLine(std::string& line, const char* text) {
    for (const char c : std::string_view(text != nullptr ? text : "")) {
        if (c == '\n')
            line += "\\n";
        else
            line += c;
    }
}

// 0 if the system does not say.
std::uint64_t availableInSystem() {
    // Unlike the count of free pages, this includes what the system would give up from its caches.
    if (std::FILE* file = std::fopen("/proc/meminfo", "r"); file != nullptr) {
        char line[128];
        unsigned long long kilobytes = 0;
        bool isFound = false;
        while (!isFound && std::fgets(line, sizeof line, file) != nullptr)
            isFound = std::sscanf(line, "MemAvailable: %llu kB", &kilobytes) == 1;
        std::fclose(file);
        if (isFound) return std::uint64_t{kilobytes} * 1024;
    }
#if defined(_SC_PHYS_PAGES)
    const long pages = sysconf(_SC_PHYS_PAGES);
    const long pageBytes = sysconf(_SC_PAGESIZE);
    if (pages > 0 && pageBytes > 0)
        return static_cast<std::uint64_t>(pages) / 2 * static_cast<std::uint64_t>(pageBytes);
#endif
    return 0;
}

}  // namespace

std::FILE* openFile(const char* path, const char* mode) {
    if (namesNothing(path)) return nullptr;
    std::FILE* file = std::fopen(path, mode);
    if (file == nullptr) return nullptr;
    // fopen opens a folder for reading and only the first read fails; Windows refuses to open it.
    struct stat status {};
    if (fstat(fileno(file), &status) == 0 && S_ISDIR(status.st_mode)) {
        std::fclose(file);
        return nullptr;
    }
    return file;
}

std::FILE* createExclusively(const char* path) {
    if (namesNothing(path)) return nullptr;
    const int descriptor = open(path, O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (descriptor < 0) return nullptr;
    std::FILE* file = fdopen(descriptor, "wb+");
    if (file == nullptr) {
        close(descriptor);
        unlink(path);
    }
    return file;
}

bool seek(std::FILE* file, std::int64_t offset, int whence) {
    return fseeko(file, offset, whence) == 0;
}

std::int64_t tell(std::FILE* file) {
    return ftello(file);
}

bool exists(const char* path) {
    return !namesNothing(path) && access(path, F_OK) == 0;
}

bool isRegularFile(const char* path) {
    struct stat status {};
    return !namesNothing(path) && stat(path, &status) == 0 && S_ISREG(status.st_mode);
}

bool deleteFile(const char* path) {
    return !namesNothing(path) && unlink(path) == 0;
}

std::string currentDirectory() {
    char buffer[512 + 1];
    return getcwd(buffer, sizeof buffer) != nullptr ? std::string(buffer) : std::string();
}

void messageBox(const char* caption, const char* text) {
    std::string line;
    appendOnOneLine(line, caption);
    line += '\t';
    appendOnOneLine(line, text);
    line += '\n';
    // A single call keeps lines of several processes on one terminal from mixing.
    std::fwrite(line.data(), 1, line.size(), stderr);
    std::fflush(stderr);
}

bool counterFrequency(std::int64_t& ticksPerSecond) {
    using Period = std::chrono::steady_clock::period;
    static_assert(Period::num == 1, "the counter must tick a whole number of times a second");
    ticksPerSecond = Period::den;
    return true;
}

bool counterValue(std::int64_t& ticks) {
    ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    return true;
}

std::int64_t clockMilliseconds() {
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

void sleepMilliseconds(int milliseconds) {
    std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::uint64_t availableMemory() {
    const std::uint64_t inSystem = availableInSystem();
    const std::uint64_t inGroups = memoryLeftInGroups();
    if (inGroups == kNoMemoryLimit) return inSystem;
    // 0 would mean that nobody knows.
    return std::max<std::uint64_t>(inSystem == 0 ? inGroups : std::min(inSystem, inGroups), 1);
}

std::string commandTail(int argc, char** argv) {
    std::string tail;
    for (int i = 1; i < argc; ++i) {
        if (i > 1) tail += ' ';
        tail += argv[i];
    }
    return tail;
}

void adviseLargePages([[maybe_unused]] void* begin, [[maybe_unused]] std::size_t byteCount) {
#if defined(MADV_HUGEPAGE)
    constexpr std::size_t kWorthIt = std::size_t{4} << 20U;
    constexpr std::uintptr_t kPage = 4096;
    if (byteCount < kWorthIt) return;
    const auto first = (reinterpret_cast<std::uintptr_t>(begin) + kPage - 1) / kPage * kPage;
    const auto end = (reinterpret_cast<std::uintptr_t>(begin) + byteCount) / kPage * kPage;
    // NOLINTNEXTLINE(performance-no-int-to-ptr): pages are rounded as integers.
    madvise(reinterpret_cast<void*>(first), end - first, MADV_HUGEPAGE);
#endif
}

void* allocateZeroed(std::size_t byteCount) {
    void* const memory = std::calloc(std::max<std::size_t>(byteCount, 1), 1);
    if (memory != nullptr) adviseLargePages(memory, byteCount);
    return memory;
}

void freeZeroed(void* memory) {
    std::free(memory);
}

}  // namespace korvalite::core::platform
