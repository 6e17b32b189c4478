// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_rows.h"

#include "korva/files/words.h"

#include <bit>
#include <cstring>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

namespace korva {

namespace {

constexpr std::size_t kRowBlock = std::size_t{1} << 18U;
constexpr std::int64_t kLongList = 1000;

template <typename To, typename Value>
To converted(Value value) {
    if constexpr (std::is_same_v<To, float>)
        return static_cast<float>(value);
    else if constexpr (std::is_floating_point_v<Value>)
        return wholeNumber(static_cast<double>(value));
    else
        return value;
}

template <bool isSwapped, typename To>
To loadAs(PlyType type, const char* from) {
    return withTypeOf(type, [&](auto zero) {
        return converted<To>(loadNumber<decltype(zero), isSwapped>(from));
    });
}

template <bool isSwapped, typename To>
void loadList(PlyType type, const char* from, std::size_t count, std::vector<To>& to) {
    to.resize(count);
    withTypeOf(type, [&](auto zero) {
        using Value = decltype(zero);
        for (std::size_t i = 0; i < count; ++i)
            to[i] = converted<To>(loadNumber<Value, isSwapped>(from + i * sizeof(Value)));
    });
}

template <bool isSwapped>
class BinaryRows final : public PlyRows {
public:
    explicit BinaryRows(InputFile& file) : PlyRows(file), buffer_(kRowBlock) {}

    void start(const PlyElement& element, std::vector<int> goesTo) override {
        PlyRows::start(element, std::move(goesTo));
        numbers_.clear();
        rowBytes_ = 0;
        hasLists_ = false;
        for (std::size_t i = 0; i < element.properties.size(); ++i) {
            const PlyProperty& property = element.properties[i];
            hasLists_ = hasLists_ || property.isList;
            if (goesTo_[i] >= 0)
                numbers_.push_back(
                    {property.type, rowBytes_, static_cast<std::size_t>(goesTo_[i])});
            rowBytes_ += byteSizeOf(property.type);
        }
    }

    void readRow(PlyRow& row) override {
        ++rowsBegun_;
        if (hasLists_) {
            readRowWithLists(row);
            return;
        }
        const char* bytes = take(rowBytes_);
        for (const Number& number : numbers_)
            row.numbers[number.goesTo] =
                loadAs<isSwapped, float>(number.type, bytes + number.offset);
    }

    std::uint64_t left() const override { return file_.left() + (end_ - begin_); }

    bool goesOn() override { return left() > 0; }

protected:
    std::string place() const override {
        return printable(element_->name) + " " + std::to_string(rowsBegun_ - 1) +
               " (counted from 0)";
    }

private:
    /// A property that is wanted, of a row without lists.
    struct Number {
        PlyType type;
        std::size_t offset;
        std::size_t goesTo;
    };

    /// The next bytes, valid until the next call.
    const char* take(std::size_t byteCount) {
        if (byteCount > end_ - begin_) fill(byteCount);
        const char* bytes = buffer_.data() + begin_;
        begin_ += byteCount;
        return bytes;
    }

    void fill(std::size_t byteCount) {
        if (byteCount > left()) failCutOff();
        std::memmove(buffer_.data(), buffer_.data() + begin_, end_ - begin_);
        end_ -= begin_;
        begin_ = 0;
        if (byteCount > buffer_.size()) buffer_.resize(byteCount);
        end_ += file_.read(buffer_.data() + end_, buffer_.size() - end_);
        if (byteCount > end_) failCutOff();
    }

    [[noreturn]] void failCutOff() const { fail("the file ends here; is it cut off?"); }

    void readRowWithLists(PlyRow& row) {
        const int* goesTo = goesTo_.data();
        for (const PlyProperty& property : element_->properties) {
            if (property.isList)
                readList(property, *goesTo, row);
            else
                readNumber(property, *goesTo, row);
            ++goesTo;
        }
    }

    void readNumber(const PlyProperty& property, int goesTo, PlyRow& row) {
        const char* bytes = take(byteSizeOf(property.type));
        if (goesTo >= 0)
            row.numbers[static_cast<std::size_t>(goesTo)] =
                loadAs<isSwapped, float>(property.type, bytes);
    }

    void readList(const PlyProperty& property, int goesTo, PlyRow& row) {
        const auto count = loadAs<isSwapped, std::int64_t>(property.countType,
                                                           take(byteSizeOf(property.countType)));
        const std::size_t itemBytes = byteSizeOf(property.type);
        if (count < 0) fail("the length of list " + printable(property.name) + " is not a count.");
        // The division takes time, and take() finds out about short lists.
        if (count > kLongList && static_cast<std::uint64_t>(count) > left() / itemBytes)
            fail("its list " + printable(property.name) + " has " + std::to_string(count) +
                 " numbers, but the file ends before; is it damaged or cut off?");
        const auto length = static_cast<std::size_t>(count);
        const char* bytes = take(length * itemBytes);
        if (goesTo == kPlyIndices)
            loadList<isSwapped>(property.type, bytes, length, row.indices);
        else if (goesTo == kPlyUVs)
            loadList<isSwapped>(property.type, bytes, length, row.uvs);
    }

    std::vector<Number> numbers_;
    std::size_t rowBytes_ = 0;  // unless there are lists
    bool hasLists_ = false;

    std::vector<char> buffer_;
    std::size_t begin_ = 0;  // of what is not taken yet
    std::size_t end_ = 0;
};

}  // namespace

std::unique_ptr<PlyRows> binaryPlyRows(InputFile& file, PlyEncoding encoding) {
    const bool isLittle = encoding == PlyEncoding::LittleEndian;
    if (isLittle == (std::endian::native == std::endian::little))
        return std::make_unique<BinaryRows<false>>(file);
    return std::make_unique<BinaryRows<true>>(file);
}

}  // namespace korva
