// SPDX-License-Identifier: MIT
#pragma once

#include "platform/file.h"

#include <array>
#include <cstddef>
#include <cstring>
#include <vector>

namespace korvalite::core {

/// Collects small pieces into large writes to an open file. Remembers failures, so the last flush()
/// returns whether everything was written. The destructor does not flush. The file must outlive the
/// buffer.
class BufferedOutput {
public:
    static constexpr std::size_t kBytes = 65536;

    explicit BufferedOutput(platform::File& file) : file_(file), bytes_(kBytes) {}

    template <typename T, std::size_t N>
    void put(const std::array<T, N>& element) {
        constexpr std::size_t kSize = sizeof(T) * N;
        char* const place = room(kSize);
        std::memcpy(place, element.data(), kSize);
        advanceTo(place + kSize);
    }

    /// Returns room for up to `byteCount` bytes. A call of advanceTo() with the end of what was
    /// written there commits it. REQUIRES: byteCount <= kBytes.
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

}  // namespace korvalite::core
