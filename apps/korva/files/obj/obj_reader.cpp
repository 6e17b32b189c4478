// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_reader.h"

#include "korva/files/obj/obj_colors.h"
#include "korva/files/obj/obj_keywords.h"
#include "korva/files/obj/obj_line.h"
#include "korva/files/obj/obj_losses.h"
#include "korva/files/obj/obj_text.h"
#include "korva/files/words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korva {

namespace {

constexpr std::size_t kMostItems = std::numeric_limits<std::int32_t>::max();
constexpr std::uint32_t kNoUV = 0xFFFFFFFF;

/// The highest index of a kind, which may still come to exist further down in the file.
struct HighestIndex {
    std::uint32_t count = 0;  // of the items that must exist
    std::uint64_t line = 0;
};

struct Corner {
    std::uint32_t vertex;
    std::uint32_t uv;
};

bool isLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

class ObjParser {
public:
    ObjParser(InputFile& file, ObjColorScale scale)
        : path_(file.path()), text_(file), colors_(scale) {}

    /// False if it stopped because the colours have the other scale.
    bool parse();

    ImportedMesh finish();

private:
    void readLine(ObjLine& line);
    void readVertex(ObjLine& line);
    void readColor(std::uint64_t line, std::span<const float> channels);
    void readUV(ObjLine& line);
    void readFace(ObjLine& line);
    void ignore(std::string_view keyword, ObjLine& line);

    Corner resolve(const ObjCorner& corner, const ObjLine& line);
    void addTriangle(Corner a, Corner b, Corner c, const ObjLine& line);

    void requireExisting(const HighestIndex& highest, std::size_t count, const char* what) const;
    void fillMissingUVs();

    const std::filesystem::path& path_;
    ObjText text_;
    korvalite::Mesh mesh_;
    ObjColors colors_;
    bool hadNormals_ = false;
    ObjLosses losses_;
    HighestIndex highestVertex_;
    HighestIndex highestUV_;
};

bool ObjParser::parse() {
    std::string_view text;
    while (!colors_.isScaleWrong()) {
        if (!text_.next(text)) return true;
        ObjLine line(path_, text_.lineNumber(), text);
        if (line.hasMore()) readLine(line);
    }
    return false;
}

void ObjParser::readLine(ObjLine& line) {
    const std::string_view keyword = line.takeWord();
    if (keyword == "v")
        readVertex(line);
    else if (keyword == "f" || keyword == "fo")  // the latter in old files
        readFace(line);
    else if (keyword == "vt")
        readUV(line);
    else if (keyword == "vn")
        hadNormals_ = true;
    else
        ignore(keyword, line);
}

void ObjParser::readVertex(ObjLine& line) {
    std::array<float, 7> numbers{};
    const std::size_t count = line.takeFloats(numbers);
    if (count < 3) line.fail("a vertex needs three coordinates.");
    const std::size_t vertex = mesh_.vertexCount();
    if (vertex == kMostItems) line.fail("there are more than 2147483647 vertices.");
    mesh_.positions.insert(mesh_.positions.end(), numbers.begin(), numbers.begin() + 3);
    if (count == 4 && numbers[3] != 1) losses_.add(ObjLoss::Weight, line.number());
    if (count >= 6) readColor(line.number(), std::span(numbers).subspan(3, count - 3));
    if (count == 5 || line.hasMore()) losses_.add(ObjLoss::SurplusNumber, line.number());
}

void ObjParser::readColor(std::uint64_t line, std::span<const float> channels) {
    const auto oddities = colors_.add(mesh_.vertexCount() - 1, channels);
    if (oddities.isClamped) losses_.add(ObjLoss::ClampedColor, line);
    if (oddities.hasFraction && colors_.scale() == ObjColorScale::Bytes)
        losses_.add(ObjLoss::DarkColor, line);
}

void ObjParser::readUV(ObjLine& line) {
    std::array<float, 3> numbers{};
    const std::size_t count = line.takeFloats(numbers);
    if (count == 0) line.fail("a UV point needs coordinates.");
    if (mesh_.uvs.size() / 2 == kMostItems) line.fail("there are more than 2147483647 UV points.");
    mesh_.uvs.insert(mesh_.uvs.end(), numbers.begin(), numbers.begin() + 2);
    if (numbers[2] != 0) losses_.add(ObjLoss::UVDepth, line.number());
    if (line.hasMore()) losses_.add(ObjLoss::SurplusNumber, line.number());
}

void ObjParser::readFace(ObjLine& line) {
    Corner first{};
    Corner previous{};
    std::size_t count = 0;
    for (; line.hasMore(); ++count) {
        const Corner corner = resolve(line.takeCorner(), line);
        if (count == 0) first = corner;
        if (count >= 2) addTriangle(first, previous, corner, line);
        previous = corner;
    }
    if (count < 3) losses_.add(ObjLoss::ShortFace, line.number());
}

void ObjParser::ignore(std::string_view keyword, ObjLine& line) {
    const std::optional<ObjLoss> loss = lossByIgnoring(keyword);
    if (!loss) return;
    if (*loss == ObjLoss::UnknownKeyword && !isLetter(keyword.front()))
        line.fail(quoted(keyword) + " is not an OBJ keyword; the file may be damaged.");
    if (*loss == ObjLoss::Smoothing && line.hasMore()) {
        const std::string_view group = line.takeWord();
        if (group == "off" || group == "0") return;
    }
    losses_.add(*loss, line.number());
}

/// `index` counts from 1, or from the last item back. Returns it from 0 on.
std::uint32_t resolveIndex(std::int64_t index, std::size_t count, HighestIndex& highest,
                           const char* what, const ObjLine& line) {
    const auto items = static_cast<std::int64_t>(count);
    const std::int64_t fromOne = index < 0 ? items + 1 + index : index;
    if (fromOne < 1 || fromOne > static_cast<std::int64_t>(kMostItems))
        line.fail("the face has " + std::string(what) + " " + std::to_string(index) +
                  ", which does not exist; the file may be damaged.");
    const auto needed = static_cast<std::uint32_t>(fromOne);
    if (needed > highest.count) highest = {needed, line.number()};
    return needed - 1;
}

Corner ObjParser::resolve(const ObjCorner& corner, const ObjLine& line) {
    hadNormals_ = hadNormals_ || corner.hasNormal;
    Corner resolved{0, kNoUV};
    resolved.vertex =
        resolveIndex(corner.vertex, mesh_.vertexCount(), highestVertex_, "vertex", line);
    if (corner.hasUV)
        resolved.uv = resolveIndex(corner.uv, mesh_.uvs.size() / 2, highestUV_, "UV point", line);
    return resolved;
}

void ObjParser::addTriangle(Corner a, Corner b, Corner c, const ObjLine& line) {
    const std::size_t before = mesh_.triangles.size();
    if (before > kMostItems - 3) line.fail("there are more than 715827882 triangles.");
    mesh_.triangles.insert(mesh_.triangles.end(), {a.vertex, b.vertex, c.vertex});
    const bool hasUV = a.uv != kNoUV || b.uv != kNoUV || c.uv != kNoUV;
    if (!hasUV && mesh_.triangleUVs.empty()) return;
    if (mesh_.triangleUVs.empty()) mesh_.triangleUVs.resize(before, kNoUV);
    mesh_.triangleUVs.insert(mesh_.triangleUVs.end(), {a.uv, b.uv, c.uv});
}

ImportedMesh ObjParser::finish() {
    const std::size_t vertices = mesh_.vertexCount();
    requireExisting(highestVertex_, vertices, "vertex");
    requireExisting(highestUV_, mesh_.uvs.size() / 2, "UV point");
    if (vertices == 0) failToRead(path_, "it has no vertices; is it an OBJ file?");
    if (colors_.count() > 0)
        losses_.add(ObjLoss::VertexWithoutColor, 0, vertices - colors_.count());
    mesh_.colors = colors_.take(vertices);
    fillMissingUVs();
    return {std::move(mesh_), hadNormals_, losses_.notes()};
}

void ObjParser::requireExisting(const HighestIndex& highest, std::size_t count,
                                const char* what) const {
    if (highest.count <= count) return;
    failToRead(path_, "line " + std::to_string(highest.line) + ": the face has " + what + " " +
                          std::to_string(highest.count) + ", but the file has only " +
                          std::to_string(count) + "; the file may be damaged.");
}

void ObjParser::fillMissingUVs() {
    if (mesh_.triangleUVs.empty()) {
        losses_.add(ObjLoss::UnusedUV, 0, mesh_.uvs.size() / 2);
        mesh_.uvs = {};
        return;
    }
    const auto missing = std::count(mesh_.triangleUVs.begin(), mesh_.triangleUVs.end(), kNoUV);
    if (missing == 0) return;
    losses_.add(ObjLoss::CornerWithoutUV, 0, static_cast<std::uint64_t>(missing));
    const auto origin = static_cast<std::uint32_t>(mesh_.uvs.size() / 2);
    mesh_.uvs.insert(mesh_.uvs.end(), {0.0F, 0.0F});
    std::replace(mesh_.triangleUVs.begin(), mesh_.triangleUVs.end(), kNoUV, origin);
}

}  // namespace

ImportedMesh readObj(const std::filesystem::path& path, const ByteProgress& progress) {
    InputFile file(path, progress);
    {
        ObjParser parser(file, ObjColorScale::Unit);
        if (parser.parse()) return parser.finish();
    }
    file.rewind();
    ObjParser parser(file, ObjColorScale::Bytes);
    parser.parse();
    return parser.finish();
}

}  // namespace korva
