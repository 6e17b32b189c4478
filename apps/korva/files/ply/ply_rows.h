// SPDX-License-Identifier: MIT
//
// The rows of a PLY file, one after the other, whatever its encoding.
#pragma once

#include "korva/files/ply/ply_header.h"
#include "korva/io/input_file.h"

#include <array>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <string>
#include <vector>

namespace korva {

/// Where a property goes: an index into PlyRow::numbers, or one of these.
inline constexpr int kPlyIgnored = -1;
inline constexpr int kPlyExpected = -2;  // skipped too, but not worth a note
inline constexpr int kPlyIndices = -3;   // a list
inline constexpr int kPlyUVs = -4;       // a list

inline constexpr std::size_t kPlyNumbers = 10;

/// In place of an index that is not a whole number.
inline constexpr std::int64_t kPlyNotWhole = std::numeric_limits<std::int64_t>::min();

struct PlyRow {
    std::array<float, kPlyNumbers> numbers{};
    std::vector<std::int64_t> indices;
    std::vector<float> uvs;
};

/// Throws korvalite::Error(CannotRead) where the file is damaged or ends.
class PlyRows {
public:
    virtual ~PlyRows() = default;
    PlyRows(const PlyRows&) = delete;
    PlyRows& operator=(const PlyRows&) = delete;

    /// Goes on to the next element of the file, which must outlive its rows. `goesTo` has an entry
    /// for each of its properties.
    virtual void start(const PlyElement& element, std::vector<int> goesTo);

    /// Reads a row of the element. What the element does not have stays as it is.
    virtual void readRow(PlyRow& row) = 0;

    /// An estimate of the bytes that are left, never too low.
    [[nodiscard]] virtual std::uint64_t left() const = 0;

    /// Whether anything is left after the last row.
    [[nodiscard]] virtual bool goesOn() = 0;

    /// Sentences about what was ignored.
    [[nodiscard]] virtual std::vector<std::string> notes() const { return {}; }

    /// Throws an Error about the row that was read last: "Cannot read NAME: line 12: WHAT"
    [[noreturn]] void fail(const std::string& what) const;

protected:
    explicit PlyRows(InputFile& file) : file_(file) {}
    [[nodiscard]] virtual std::string place() const = 0;

    InputFile& file_;
    const PlyElement* element_ = nullptr;
    std::vector<int> goesTo_;
    std::uint64_t rowsBegun_ = 0;  // of the element
};

/// For what follows the header. The file must outlive it.
[[nodiscard]] std::unique_ptr<PlyRows> asciiPlyRows(InputFile& file, std::uint64_t linesBefore);
[[nodiscard]] std::unique_ptr<PlyRows> binaryPlyRows(InputFile& file, PlyEncoding encoding);

[[nodiscard]] inline std::int64_t wholeNumber(double value) {
    constexpr double kBeyond = 9007199254740992.0;  // 2^53: all below are exact
    if (!(std::abs(value) < kBeyond) || value != std::trunc(value)) return kPlyNotWhole;
    return static_cast<std::int64_t>(value);
}

}  // namespace korva
