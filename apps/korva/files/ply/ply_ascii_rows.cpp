// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_rows.h"

#include "korva/files/words.h"

#include <charconv>
#include <string_view>
#include <system_error>

namespace korva {

namespace {

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

/// Like parseFloat. Some programs write NaN as "1.#QNAN".
bool parseFloatOrNaN(std::string_view word, float& value) {
    if (parseFloat(word, value)) return true;
    if (word.find('#') == std::string_view::npos) return false;
    value = std::numeric_limits<float>::quiet_NaN();
    return true;
}

/// Gives kPlyNotWhole for a number that is not whole.
bool parseWhole(std::string_view word, std::int64_t& value) {
    word = withoutPlus(word);
    const char* wordEnd = word.data() + word.size();
    const auto [end, failure] = std::from_chars(word.data(), wordEnd, value);
    if (end == wordEnd && failure == std::errc()) return true;
    double wide = 0;
    const auto [wideEnd, wideFailure] = std::from_chars(word.data(), wordEnd, wide);
    if (wideEnd != wordEnd || wideFailure == std::errc::invalid_argument) return false;
    value = wideFailure == std::errc() ? wholeNumber(wide) : kPlyNotWhole;
    return true;
}

/// A row for each line; blank ones are passed over.
class AsciiRows final : public PlyRows {
public:
    AsciiRows(InputFile& file, std::uint64_t linesBefore) : PlyRows(file), lines_(linesBefore) {}

    void readRow(PlyRow& row) override {
        ++rowsBegun_;
        if (!nextLine())
            fail("the file ends here, with " + std::to_string(element_->count - (rowsBegun_ - 1)) +
                 " of element " + printable(element_->name) + " to come; is it cut off?");
        const int* goesTo = goesTo_.data();
        for (const PlyProperty& property : element_->properties) {
            if (property.isList)
                readList(property, *goesTo, row);
            else
                readNumber(*goesTo, row);
            ++goesTo;
        }
        skipBlanks();
        if (at_ != end_) ++linesWithMore_;
    }

    std::uint64_t left() const override { return file_.left(); }

    bool goesOn() override { return nextLine(); }

    std::vector<std::string> notes() const override {
        if (linesWithMore_ == 0) return {};
        return {std::to_string(linesWithMore_) +
                (linesWithMore_ == 1 ? " line has" : " lines have") +
                " more numbers than the header announces; these are ignored."};
    }

protected:
    std::string place() const override { return "line " + std::to_string(lines_); }

private:
    bool nextLine() {
        std::string_view line;
        while (file_.readLine(line)) {
            ++lines_;
            at_ = line.data();
            end_ = at_ + line.size();
            skipBlanks();
            if (at_ != end_) return true;
        }
        return false;
    }

    void skipBlanks() {
        while (at_ != end_ && isBlank(*at_))
            ++at_;
    }

    std::string_view takeWord() {
        skipBlanks();
        const char* begin = at_;
        while (at_ != end_ && !isBlank(*at_))
            ++at_;
        if (begin == at_) fail("a number is missing at its end.");
        return {begin, static_cast<std::size_t>(at_ - begin)};
    }

    [[noreturn]] void failNoNumber(std::string_view word) const {
        fail("\"" + printable(word) + "\" is not a number.");
    }

    /// Takes a number as most are. False leaves it where it is.
    template <typename Value>
    bool takePlain(Value& value) {
        skipBlanks();
        const auto [end, failure] = std::from_chars(at_, end_, value);
        if (failure != std::errc() || (end != end_ && !isBlank(*end))) return false;
        at_ = end;
        return true;
    }

    float takeFloat() {
        float value = 0;
        if (takePlain(value)) return value;
        const std::string_view word = takeWord();
        if (!parseFloatOrNaN(word, value)) failNoNumber(word);
        return value;
    }

    std::int64_t takeWhole() {
        std::int64_t value = 0;
        if (takePlain(value)) return value;
        const std::string_view word = takeWord();
        if (!parseWhole(word, value)) failNoNumber(word);
        return value;
    }

    void readNumber(int goesTo, PlyRow& row) {
        if (goesTo >= 0)
            row.numbers[static_cast<std::size_t>(goesTo)] = takeFloat();
        else
            takeWord();
    }

    void readList(const PlyProperty& property, int goesTo, PlyRow& row) {
        const std::int64_t count = takeWhole();
        if (count < 0) fail("the length of list " + printable(property.name) + " is not a count.");
        // Each number takes a blank and a digit.
        if (count > (end_ - at_) / 2)
            fail("its list " + printable(property.name) + " has " + std::to_string(count) +
                 " numbers, but the line ends before.");
        const auto length = static_cast<std::size_t>(count);
        if (goesTo == kPlyIndices) {
            row.indices.resize(length);
            for (std::int64_t& index : row.indices)
                index = takeWhole();
        } else if (goesTo == kPlyUVs) {
            row.uvs.resize(length);
            for (float& number : row.uvs)
                number = takeFloat();
        } else {
            for (std::size_t i = 0; i < length; ++i)
                takeWord();
        }
    }

    std::uint64_t lines_;
    std::uint64_t linesWithMore_ = 0;
    const char* at_ = nullptr;  // in the line, which ends at end_
    const char* end_ = nullptr;
};

}  // namespace

std::unique_ptr<PlyRows> asciiPlyRows(InputFile& file, std::uint64_t linesBefore) {
    return std::make_unique<AsciiRows>(file, linesBefore);
}

}  // namespace korva
