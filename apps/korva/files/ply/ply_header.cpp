// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_header.h"

#include "korva/files/words.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <system_error>
#include <utility>

namespace korva {

namespace {

constexpr std::size_t kLongestLine = std::size_t{1} << 20U;

struct TypeName {
    std::string_view name;
    PlyType type;
};

constexpr std::array kTypeNames = {
    TypeName{"char", PlyType::Int8},      TypeName{"int8", PlyType::Int8},
    TypeName{"uchar", PlyType::UInt8},    TypeName{"uint8", PlyType::UInt8},
    TypeName{"short", PlyType::Int16},    TypeName{"int16", PlyType::Int16},
    TypeName{"ushort", PlyType::UInt16},  TypeName{"uint16", PlyType::UInt16},
    TypeName{"int", PlyType::Int32},      TypeName{"int32", PlyType::Int32},
    TypeName{"uint", PlyType::UInt32},    TypeName{"uint32", PlyType::UInt32},
    TypeName{"float", PlyType::Float32},  TypeName{"float32", PlyType::Float32},
    TypeName{"double", PlyType::Float64}, TypeName{"float64", PlyType::Float64},
};

std::optional<PlyType> typeOf(std::string_view name) {
    for (const TypeName& entry : kTypeNames)
        if (entry.name == name) return entry.type;
    return std::nullopt;
}

std::optional<std::uint64_t> countOf(std::string_view text) {
    std::uint64_t count = 0;
    const auto [end, failure] = std::from_chars(text.data(), text.data() + text.size(), count);
    if (failure != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return count;
}

/// The header line by line. It goes byte by byte because a line that ends in CR may be followed by
/// binary data that starts with an LF of its own; the first line shows which ends a file has.
class HeaderLines {
public:
    explicit HeaderLines(InputFile& file) : file_(file) {}

    [[nodiscard]] std::uint64_t count() const { return count_; }

    std::string_view next() {
        line_.clear();
        if (heldBack_ != 0) line_.push_back(std::exchange(heldBack_, '\0'));
        ++count_;
        for (char c = 0; file_.read(&c, 1) == 1;) {
            if (c == end_) return withoutBlankEnd();
            if (c == '\r' && count_ == 1) return endWithCr();
            if (line_.size() == kLongestLine) fail("is longer than a line of a header can be.");
            line_.push_back(c);
        }
        failToRead(file_.path(), "the file ends within its header; is it cut off?");
    }

    [[noreturn]] void fail(const std::string& what) const {
        failToRead(file_.path(), "line " + std::to_string(count_) + " of the header " + what);
    }

private:
    std::string_view endWithCr() {
        char following = '\n';
        file_.read(&following, 1);
        if (following != '\n') {
            end_ = '\r';
            heldBack_ = following;
        }
        return withoutBlankEnd();
    }

    std::string_view withoutBlankEnd() {
        line_.resize(line_.find_last_not_of(" \t\r") + 1);
        return line_;
    }

    InputFile& file_;
    std::string line_;
    std::uint64_t count_ = 0;
    char end_ = '\n';
    char heldBack_ = 0;  // the first of the next line, if it was read already
};

std::string_view takeName(std::string_view& text) {
    const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
    const auto begin = std::find_if_not(text.begin(), text.end(), isBlank);
    const auto end = std::find_if(begin, text.end(), isBlank);
    const auto offset = static_cast<std::size_t>(begin - text.begin());
    const std::string_view word = text.substr(offset, static_cast<std::size_t>(end - begin));
    text.remove_prefix(offset + word.size());
    return word;
}

void parseFormat(const HeaderLines& lines, std::string_view rest, PlyHeader& header) {
    const std::string_view name = takeName(rest);
    if (name == "ascii")
        header.encoding = PlyEncoding::Ascii;
    else if (name == "binary_little_endian")
        header.encoding = PlyEncoding::LittleEndian;
    else if (name == "binary_big_endian")
        header.encoding = PlyEncoding::BigEndian;
    else
        lines.fail("has the unknown format \"" + printable(name) + "\".");
}

void parseElement(const HeaderLines& lines, std::string_view rest, PlyHeader& header) {
    PlyElement element;
    element.name = takeName(rest);
    const std::optional<std::uint64_t> count = countOf(takeName(rest));
    if (!count || !takeName(rest).empty()) lines.fail("is not an element with its count.");
    element.count = *count;
    header.elements.push_back(std::move(element));
}

PlyType parseType(const HeaderLines& lines, std::string_view name) {
    const std::optional<PlyType> type = typeOf(name);
    if (!type) lines.fail("has the unknown type \"" + printable(name) + "\".");
    return *type;
}

void parseProperty(const HeaderLines& lines, std::string_view rest, PlyHeader& header) {
    if (header.elements.empty()) lines.fail("has a property before any element.");
    PlyProperty property;
    std::string_view word = takeName(rest);
    property.isList = word == "list";
    if (property.isList) {
        property.countType = parseType(lines, takeName(rest));
        word = takeName(rest);
    }
    property.type = parseType(lines, word);
    property.name = takeName(rest);
    if (property.name.empty() || !takeName(rest).empty())
        lines.fail("is not a property with its name.");
    header.elements.back().properties.push_back(std::move(property));
}

/// Memory is reserved by these counts later, so the file must have room for all the rows.
void checkFileSize(const InputFile& file, const PlyHeader& header) {
    // The last line of a text may have no end.
    std::uint64_t left = file.left() + (header.encoding == PlyEncoding::Ascii ? 1 : 0);
    for (const PlyElement& element : header.elements) {
        const std::uint64_t rowBytes = fewestRowBytes(element, header.encoding);
        if (rowBytes == 0) continue;
        if (element.count > left / rowBytes)
            failToRead(file.path(), "it is too short for the " + std::to_string(element.count) +
                                        " of element " + printable(element.name) +
                                        " that its header announces; is it cut off?");
        left -= element.count * rowBytes;
    }
}

}  // namespace

std::uint64_t fewestRowBytes(const PlyElement& element, PlyEncoding encoding) {
    // A digit and a blank or line end for each number.
    if (encoding == PlyEncoding::Ascii) return 2 * element.properties.size();
    std::uint64_t bytes = 0;
    for (const PlyProperty& property : element.properties)
        bytes += byteSizeOf(property.isList ? property.countType : property.type);
    return bytes;
}

PlyHeader readPlyHeader(InputFile& file) {
    PlyHeader header;
    HeaderLines lines(file);
    char start[3] = {};
    if (file.read(start, 3) != 3 || std::string_view(start, 3) != "ply" || !lines.next().empty())
        failToRead(file.path(), "it does not start with \"ply\"; is it a PLY file?");
    bool hasFormat = false;
    for (;;) {
        std::string_view rest = lines.next();
        const std::string_view keyword = takeName(rest);
        if (keyword == "end_header") break;
        if (keyword == "format") {
            parseFormat(lines, rest, header);
            hasFormat = true;
        } else if (keyword == "element") {
            parseElement(lines, rest, header);
        } else if (keyword == "property") {
            parseProperty(lines, rest, header);
        } else if (keyword == "comment") {
            if (takeName(rest) == "TextureFile") ++header.textureCount;
        } else if (keyword != "obj_info" && !keyword.empty()) {
            lines.fail("starts with the unknown word \"" + printable(keyword) + "\".");
        }
    }
    if (!hasFormat) failToRead(file.path(), "its header does not name a format.");
    header.lineCount = lines.count();
    checkFileSize(file, header);
    return header;
}

}  // namespace korva
