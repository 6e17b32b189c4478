// SPDX-License-Identifier: MIT
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

namespace korvalite::core::test {

// The 176 bytes of a progress file as a host sees them, written independently, so that a change of
// the product's own layout is noticed.
class ProgressImage {
public:
    static constexpr std::size_t kByteCount = 176;
    static constexpr std::size_t kOpen = 0;
    static constexpr std::size_t kMainActive = 1;
    static constexpr std::size_t kSubActive = 2;
    static constexpr std::size_t kReserved = 163;
    static constexpr std::size_t kStageFlag1 = 172;
    static constexpr std::size_t kStageFlag2 = 173;
    static constexpr std::size_t kStopCurrent = 174;
    static constexpr std::size_t kStopAll = 175;

    ProgressImage() : bytes_(kByteCount, '\0') {}
    explicit ProgressImage(std::string bytes) : bytes_(std::move(bytes)) {}

    // What a host writes before it starts the tool.
    static ProgressImage opened() {
        ProgressImage image;
        image.setByte(kOpen, 1);
        return image;
    }

    const std::string& bytes() const { return bytes_; }
    bool isWhole() const { return bytes_.size() == kByteCount; }
    int byte(std::size_t offset) const {
        return offset < bytes_.size() ? static_cast<unsigned char>(bytes_[offset]) : -1;
    }
    void setByte(std::size_t offset, int value) { bytes_.at(offset) = static_cast<char>(value); }

    std::string mainText() const { return textAt(3); }
    std::string subText() const { return textAt(83); }
    std::int32_t subTotal() const { return wordAt(164); }
    std::int32_t subDone() const { return wordAt(168); }

private:
    std::string textAt(std::size_t offset) const {
        if (!isWhole()) return {};
        const std::string field = bytes_.substr(offset, 80);
        return field.substr(0, field.find('\0'));
    }
    std::int32_t wordAt(std::size_t offset) const {
        std::uint32_t word = 0;
        for (std::size_t i = 0; i < 4; ++i)
            word |= static_cast<std::uint32_t>(byte(offset + i)) << (8 * i);
        return static_cast<std::int32_t>(word);
    }

    std::string bytes_;
};

}  // namespace korvalite::core::test
