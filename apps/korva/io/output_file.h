// SPDX-License-Identifier: MIT
#pragma once

#include "korva/io/input_file.h"
#include "korva/io/partial_file.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string_view>
#include <vector>

namespace korva {

/// A file that appears only when it is complete, written from its start to its end through a
/// buffer. Throws korvalite::Error(CannotWrite) if anything fails, and leaves nothing behind.
class OutputFile {
public:
    /// Calls `progress`, if there is one, for every block with the bytes so far, and 0 for the
    /// total.
    explicit OutputFile(const std::filesystem::path& path, ByteProgress progress = {});

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
    void writeOut(const char* bytes, std::size_t byteCount);

    PartialFile file_;
    std::ofstream stream_;  // closed before file_ deletes the file
    std::vector<char> buffer_;
    ByteProgress progress_;
    std::uint64_t written_ = 0;
    bool isFinished_ = false;
};

}  // namespace korva
