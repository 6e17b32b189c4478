// SPDX-License-Identifier: MIT
//
// Every name goes through the wide calls, so paths work whatever the system's code page is.
#include "platform/large_memory.h"
#include "platform/platform.h"

#include "platform/command_line.h"
#include "platform/utf8.h"

#include <fcntl.h>
#include <io.h>
#include <limits>
#include <string_view>
#include <sys/stat.h>
#include <windows.h>

namespace korvalite::core::platform {

namespace {

constexpr DWORD kRefuseBadBytes = MB_ERR_INVALID_CHARS;
constexpr DWORD kReplaceBadBytes = 0;

// The system's code page for narrow text. CP_ACP is the process's own, which the manifest sets to
// UTF-8.
UINT systemCodePage() {
    DWORD codePage = CP_ACP;
    GetLocaleInfoW(LOCALE_SYSTEM_DEFAULT, LOCALE_IDEFAULTANSICODEPAGE | LOCALE_RETURN_NUMBER,
                   reinterpret_cast<wchar_t*>(&codePage), sizeof codePage / sizeof(wchar_t));
    return codePage;
}

// Converts UTF-8 to UTF-16. Empty for null, for "" and for text that cannot be converted.
// COMPAT: text that is not UTF-8 is in the system's code page; hosts may use the narrow calls.
std::wstring wide(const char* text, DWORD badBytes) {
    if (text == nullptr || *text == '\0') return {};
    const UINT codePage = isUtf8(text) ? CP_UTF8 : systemCodePage();
    const int lengthWithZero = MultiByteToWideChar(codePage, badBytes, text, -1, nullptr, 0);
    if (lengthWithZero <= 0) return {};
    std::wstring result(static_cast<std::size_t>(lengthWithZero), L'\0');
    MultiByteToWideChar(codePage, badBytes, text, -1, result.data(), lengthWithZero);
    result.pop_back();
    return result;
}

// Replacement characters could turn two different malformed names into the same one.
std::wstring widePath(const char* path) {
    return wide(path, kRefuseBadBytes);
}

std::string utf8(std::wstring_view text) {
    if (text.empty() || text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        return {};
    const int wideLength = static_cast<int>(text.size());
    const int length =
        WideCharToMultiByte(CP_UTF8, 0, text.data(), wideLength, nullptr, 0, nullptr, nullptr);
    if (length <= 0) return {};
    std::string result(static_cast<std::size_t>(length), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), wideLength, result.data(), length, nullptr,
                        nullptr);
    return result;
}

}  // namespace

std::FILE* openFile(const char* path, const char* mode) {
    const std::wstring widened = widePath(path);
    const std::wstring widenedMode = wide(mode, kRefuseBadBytes);
    if (widened.empty() || widenedMode.empty()) return nullptr;
    return _wfopen(widened.c_str(), widenedMode.c_str());
}

std::FILE* createExclusively(const char* path) {
    const std::wstring widened = widePath(path);
    if (widened.empty()) return nullptr;
    const int descriptor =
        _wopen(widened.c_str(), _O_RDWR | _O_CREAT | _O_EXCL | _O_BINARY | _O_NOINHERIT,
               _S_IREAD | _S_IWRITE);
    if (descriptor < 0) return nullptr;
    std::FILE* file = _fdopen(descriptor, "wb+");
    if (file == nullptr) {
        _close(descriptor);
        DeleteFileW(widened.c_str());
    }
    return file;
}

bool seek(std::FILE* file, std::int64_t offset, int whence) {
    return _fseeki64(file, offset, whence) == 0;
}

std::int64_t tell(std::FILE* file) {
    return _ftelli64(file);
}

bool exists(const char* path) {
    const std::wstring widened = widePath(path);
    return !widened.empty() && _waccess(widened.c_str(), 0) == 0;
}

bool isRegularFile(const char* path) {
    const std::wstring widened = widePath(path);
    struct _stat64 status {};
    return !widened.empty() && _wstat64(widened.c_str(), &status) == 0 &&
           (status.st_mode & _S_IFMT) == _S_IFREG;
}

bool deleteFile(const char* path) {
    const std::wstring widened = widePath(path);
    return !widened.empty() && DeleteFileW(widened.c_str()) != 0;
}

std::string currentDirectory() {
    wchar_t buffer[512 + 1];
    const DWORD length = GetCurrentDirectoryW(512 + 1, buffer);
    if (length == 0 || length > 512) return {};
    std::string result = utf8(std::wstring_view(buffer, length));
    return result.size() <= 512 ? result : std::string();
}

void messageBox(const char* caption, const char* text) {
    MessageBoxW(nullptr, wide(text, kReplaceBadBytes).c_str(),
                wide(caption, kReplaceBadBytes).c_str(), MB_OK);
}

bool counterFrequency(std::int64_t& ticksPerSecond) {
    LARGE_INTEGER value{};
    if (QueryPerformanceFrequency(&value) == 0) return false;
    ticksPerSecond = value.QuadPart;
    return true;
}

bool counterValue(std::int64_t& ticks) {
    LARGE_INTEGER value{};
    if (QueryPerformanceCounter(&value) == 0) return false;
    ticks = value.QuadPart;
    return true;
}

std::int64_t clockMilliseconds() {
    return static_cast<std::int64_t>(GetTickCount64());
}

void sleepMilliseconds(int milliseconds) {
    if (milliseconds > 0) Sleep(static_cast<DWORD>(milliseconds));
}

std::uint64_t availableMemory() {
    MEMORYSTATUSEX status{};
    status.dwLength = sizeof status;
    return GlobalMemoryStatusEx(&status) != 0 ? status.ullAvailPhys : 0;
}

std::string commandTail(int, char**) {
    const std::string commandLine = utf8(GetCommandLineW());
    return std::string(commandTailOf(commandLine));
}

// Large pages need a privilege that users do not have.
void adviseLargePages(void* /*begin*/, std::size_t /*byteCount*/) {}

void* allocateZeroed(std::size_t byteCount) {
    return std::calloc(byteCount > 0 ? byteCount : 1, 1);
}

void freeZeroed(void* memory) {
    std::free(memory);
}

}  // namespace korvalite::core::platform
