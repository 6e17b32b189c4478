// SPDX-License-Identifier: MIT
#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <string>

namespace korvalite::core::test {

// An empty folder for one test, with a name beyond ASCII, removed with all its contents.
class ScratchFolder {
public:
    ScratchFolder() {
        std::random_device random;
        do {
            path_ = std::filesystem::temp_directory_path() /
                    std::filesystem::path(u8"korvalite ä日本 " + digits(random()));
        } while (!std::filesystem::create_directory(path_));
    }
    ~ScratchFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    ScratchFolder(const ScratchFolder&) = delete;
    ScratchFolder& operator=(const ScratchFolder&) = delete;

    // The UTF-8 path of a name in the folder.
    std::string operator/(const char8_t* name) const { return utf8(path_ / name); }
    std::string path() const { return utf8(path_); }

private:
    static std::u8string digits(unsigned number) {
        const std::string text = std::to_string(number);
        return std::u8string(text.begin(), text.end());
    }
    static std::string utf8(const std::filesystem::path& path) {
        const std::u8string text = path.u8string();
        return std::string(text.begin(), text.end());
    }

    std::filesystem::path path_;
};

inline std::filesystem::path pathOfUtf8(const std::string& text) {
    return std::filesystem::path(std::u8string(text.begin(), text.end()));
}

inline void writeWhole(const std::string& path, const std::string& bytes) {
    std::ofstream(pathOfUtf8(path), std::ios::binary) << bytes;
}

inline std::string readWhole(const std::string& path) {
    std::ifstream stream(pathOfUtf8(path), std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

}  // namespace korvalite::core::test
