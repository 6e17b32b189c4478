// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace korva {

/// A file that appears only when it is complete: it is written under another name in the same
/// folder and takes its own name at the end, so a file that was there before survives a failure.
/// Throws korvalite::Error(CannotWrite) if anything fails; then nothing is left.
class OutputFile {
public:
    explicit OutputFile(const std::filesystem::path& path);
    ~OutputFile();
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    void write(const void* bytes, std::size_t byteCount);
    void write(std::string_view text) { write(text.data(), text.size()); }

    /// The bytes of a value, in the order of this machine.
    template <typename Value>
    void writeValue(const Value& value) {
        write(&value, sizeof value);
    }

    /// Puts the rest on the disk, so that commit() can only fail to give the file its name. Nothing
    /// may be written afterwards.
    void finish();

    /// Gives the file its name. Nothing may be written afterwards.
    void commit();

private:
    void flush();
    [[noreturn]] void fail(const char* reason) const;

    std::filesystem::path path_;
    std::filesystem::path partialPath_;
    std::ofstream stream_;
    std::vector<char> buffer_;
    bool isFinished_ = false;
    bool isCommitted_ = false;
};

}  // namespace korva
