// SPDX-License-Identifier: MIT
#pragma once

#include "korva/command_line.h"
#include "korva/files/file_table.h"
#include "support/scratch_folder.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <filesystem>
#include <iterator>
#include <string>
#include <vector>

namespace korva {

namespace test = korvalite::core::test;

inline bool has(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

/// Runs whole commands, as a user would type them, and has an empty folder for their files.
class CommandTest : public testing::Test {
protected:
    /// Runs the program with these words after its name. What it prints is in out_ and err_.
    ExitCode run(const std::vector<std::string>& words) {
        testing::internal::CaptureStdout();
        testing::internal::CaptureStderr();
        const ExitCode code = runCommandLine(words);
        out_ = testing::internal::GetCapturedStdout();
        err_ = testing::internal::GetCapturedStderr();
        return code;
    }

    /// A name in the folder, as a word of a command and as a path.
    [[nodiscard]] std::string in(const std::string& name) const {
        return folder_ / std::u8string(name.begin(), name.end()).c_str();
    }
    [[nodiscard]] std::filesystem::path path(const std::string& name) const {
        return test::pathOfUtf8(in(name));
    }
    [[nodiscard]] std::size_t fileCount() const {
        return static_cast<std::size_t>(std::distance(
            std::filesystem::directory_iterator(test::pathOfUtf8(folder_.path())), {}));
    }

    static std::string sample(const std::string& name) {
        return std::string(KORVALITE_SOURCE_DIR "/samples/") + name;
    }
    static Scene readScene(const std::string& file) {
        return fileKindOf(test::pathOfUtf8(file)).read(test::pathOfUtf8(file), {});
    }
    /// The first mesh of a file.
    static korvalite::Mesh read(const std::string& file) {
        return readScene(file).meshes.front().mesh;
    }

    test::ScratchFolder folder_;
    std::string out_;
    std::string err_;
};

}  // namespace korva
