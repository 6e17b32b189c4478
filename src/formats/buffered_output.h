// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

namespace korvalite {

/// Gathers pieces of a few bytes into large writes to an open file. Remembers failure, so that the
/// last flush() tells whether all went out; nothing goes out by itself at the end. The file must
/// outlive it.
class BufferedOutput {
public:
    static constexpr std::size_t kBytes = 65536;

    explicit BufferedOutput(platform::File& file) : file_(file), bytes_(kBytes) {}

    template <typename T, std::size_t N>
    void put(const std::array<T, N>& element) {
        constexpr std::size_t size = sizeof(T) * N;
        char* const place = room(size);
        std::memcpy(place, element.data(), size);
        advanceTo(place + size);
    }

    /// A place for up to so many bytes. What is written there is kept from the call of advanceTo()
    /// on, which tells where it ends. REQUIRES: byteCount <= kBytes.
    char* room(std::size_t byteCount) {
        if (byteCount > bytes_.size() - used_) flush();
        return bytes_.data() + used_;
    }
    void advanceTo(const char* end) { used_ = static_cast<std::size_t>(end - bytes_.data()); }

    bool flush() {
        good_ = good_ && file_.write(bytes_.data(), used_);
        used_ = 0;
        return good_;
    }

private:
    platform::File& file_;
    std::vector<char> bytes_;
    std::size_t used_ = 0;
    bool good_ = true;
};

}  // namespace korvalite
