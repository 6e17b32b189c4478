// SPDX-License-Identifier: MIT
#include "korva/files/off/off_reader.h"

#include "korva/files/imported_mesh.h"
#include "korva/files/off/off_colors.h"
#include "korva/files/words.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace korva {

namespace {

class OffReader {
public:
    OffReader(const std::filesystem::path& path, const ByteProgress& progress)
        : file_(path, progress), words_(file_) {
        words_.skipComments();
    }
    ImportedMesh read();

private:
    void readHeader();
    void setVariant(std::string_view keyword);
    std::size_t readCount(std::string_view word) const;
    void readVertices();
    void readVertex(std::string_view word);
    void readFaces();
    void readFace(std::string_view firstWord);
    std::uint32_t readCorner();
    void addNotes();
    std::string_view firstWordOfNextLine();
    [[noreturn]] void failAtEnd(const char* what, std::size_t done, std::size_t wanted) const;

    InputFile file_;
    Words words_;
    ImportedMesh imported_;
    korvalite::Mesh& mesh_ = imported_.mesh;
    OffColors colors_;
    std::size_t vertexCount_ = 0;
    std::size_t faceCount_ = 0;
    bool hasColors_ = false;
    bool hasUVs_ = false;
    std::size_t channels_ = 0;  // of a colour: 3 or 4, 0 until the first
    std::size_t tooFewCorners_ = 0;
    bool hasMoreNumbers_ = false;
    bool hasFaceColors_ = false;
};

ImportedMesh OffReader::read() {
    readHeader();
    readVertices();
    readFaces();
    addNotes();
    return std::move(imported_);
}

void OffReader::readHeader() {
    std::string_view word = firstWordOfNextLine();
    if (word.empty()) failToRead(file_.path(), "it is empty.");
    std::size_t ignored = 0;
    // The keyword may be missing.
    if (!parseCount(word, ignored)) {
        setVariant(word);
        word = words_.nextOfLine();
        if (isWord(word, "binary"))
            words_.fail("this is binary OFF, which is not supported. Export it as text.");
        if (word.empty()) word = firstWordOfNextLine();
    }
    vertexCount_ = readCount(word);
    faceCount_ = readCount(words_.nextOfLine());
    // The number of edges may follow; nobody needs it.
    if (vertexCount_ > kMostElements || faceCount_ > kMostElements)
        words_.fail("there are more than 2147483647 vertices or faces.");
}

void OffReader::setVariant(std::string_view keyword) {
    std::string_view rest = keyword;
    while (!rest.empty() && rest != "OFF") {
        const std::size_t letters = rest.starts_with("ST") ? 2 : 1;
        if (letters == 2)
            hasUVs_ = true;
        else if (rest[0] == 'C')
            hasColors_ = true;
        else if (rest[0] == 'N')
            imported_.hadNormals = true;
        else if (rest == "4OFF" || rest == "nOFF" || rest == "4nOFF")
            words_.fail(quoted(keyword) + " has vertices that are not in three dimensions.");
        else
            break;
        rest.remove_prefix(letters);
    }
    if (rest != "OFF") words_.fail("it begins with " + quoted(keyword) + " instead of OFF.");
}

std::size_t OffReader::readCount(std::string_view word) const {
    std::size_t count = 0;
    if (word.empty()) words_.fail("the numbers of vertices and faces are missing.");
    if (!parseCount(word, count)) words_.fail(quoted(word) + " is not a count.");
    return count;
}

void OffReader::readVertices() {
    // A vertex takes at least six bytes.
    const auto most = static_cast<std::size_t>(file_.left() / 6 + 1);
    mesh_.positions.reserve(3 * std::min(vertexCount_, most));
    if (hasColors_) colors_.reserve(std::min(vertexCount_, most));
    if (hasUVs_) mesh_.uvs.reserve(2 * std::min(vertexCount_, most));
    for (std::size_t i = 0; i < vertexCount_; ++i) {
        const std::string_view word = firstWordOfNextLine();
        if (word.empty()) failAtEnd("vertex", i, vertexCount_);
        readVertex(word);
    }
    if (hasColors_) mesh_.colors = colors_.take();
}

/// A position and, depending on the keyword, a normal, a colour of three or four channels and a UV
/// point. `word` is the first number.
void OffReader::readVertex(std::string_view word) {
    constexpr std::size_t kMostNumbers = 12;
    std::array<float, kMostNumbers> numbers{};
    const std::size_t beforeColor = imported_.hadNormals ? 6 : 3;
    const std::size_t least = beforeColor + (hasColors_ ? 3U : 0U) + (hasUVs_ ? 2U : 0U);
    const std::size_t most = hasColors_ ? least + 1 : least;
    std::size_t count = 0;
    for (; count < most && !word.empty(); word = words_.nextOfLine()) {
        if (!parseFloat(word, numbers[count++])) words_.fail(quoted(word) + " is not a number.");
    }
    if (!word.empty()) hasMoreNumbers_ = true;
    if (count < least)
        words_.fail("a vertex has " + std::to_string(count) + " numbers instead of " +
                    std::to_string(least) + ".");
    mesh_.positions.insert(mesh_.positions.end(), numbers.begin(), numbers.begin() + 3);
    if (hasColors_) {
        const std::size_t channels = count == most ? 4 : 3;
        if (channels_ == 0) channels_ = channels;
        if (channels != channels_) words_.fail("only some of the colours have an alpha value.");
        colors_.add(&numbers[beforeColor], channels);
    }
    if (hasUVs_) mesh_.uvs.insert(mesh_.uvs.end(), {numbers[count - 2], numbers[count - 1]});
}

void OffReader::readFaces() {
    // A face takes at least eight bytes.
    const auto most = static_cast<std::size_t>(file_.left() / 8 + 1);
    mesh_.triangles.reserve(3 * std::min(faceCount_, most));
    for (std::size_t i = 0; i < faceCount_; ++i) {
        const std::string_view word = firstWordOfNextLine();
        if (word.empty()) failAtEnd("face", i, faceCount_);
        readFace(word);
    }
    if (hasUVs_) mesh_.triangleUVs = mesh_.triangles;
}

void OffReader::readFace(std::string_view firstWord) {
    std::size_t corners = 0;
    if (!parseCount(firstWord, corners))
        words_.fail(quoted(firstWord) + " is not a count of corners.");
    if (corners < 3) {
        ++tooFewCorners_;
        return;
    }
    const std::uint32_t first = readCorner();
    std::uint32_t previous = readCorner();
    for (std::size_t i = 2; i < corners; ++i) {
        const std::uint32_t corner = readCorner();
        if (mesh_.triangles.size() + 3 > kMostElements)
            words_.fail("the faces make more than 715827882 triangles.");
        mesh_.triangles.insert(mesh_.triangles.end(), {first, previous, corner});
        previous = corner;
    }
    if (!words_.nextOfLine().empty()) hasFaceColors_ = true;
}

std::uint32_t OffReader::readCorner() {
    const std::string_view word = words_.nextOfLine();
    if (word.empty()) words_.fail("the face has fewer corners than its first number says.");
    std::size_t corner = 0;
    if (!parseCount(word, corner) || corner >= vertexCount_)
        words_.fail(quoted(word) + " is not one of the " + std::to_string(vertexCount_) +
                    " vertices, which are counted from 0.");
    return static_cast<std::uint32_t>(corner);
}

void OffReader::addNotes() {
    std::vector<std::string>& notes = imported_.notes;
    if (tooFewCorners_ > 0)
        notes.push_back(
            "Faces with fewer than 3 corners are skipped: " + std::to_string(tooFewCorners_) + ".");
    if (hasFaceColors_) notes.emplace_back("The colours of faces are ignored.");
    if (hasMoreNumbers_)
        notes.emplace_back("Some vertices have more numbers than the first line of the file "
                           "announces; these are ignored.");
    if (colors_.outOfRange() > 0)
        notes.push_back("Colour values out of range are clamped: " +
                        std::to_string(colors_.outOfRange()) + ".");
    if (!firstWordOfNextLine().empty())
        notes.push_back("What follows the last face, from line " + std::to_string(words_.line()) +
                        " on, is ignored.");
}

/// Empty at the end of the file.
std::string_view OffReader::firstWordOfNextLine() {
    while (words_.nextLine()) {
        const std::string_view word = words_.nextOfLine();
        if (!word.empty()) return word;
    }
    return {};
}

void OffReader::failAtEnd(const char* what, std::size_t done, std::size_t wanted) const {
    failToRead(file_.path(), "it ends after " + std::string(what) + " " + std::to_string(done) +
                                 " of " + std::to_string(wanted) +
                                 ". It is cut off, or its counts are wrong.");
}

}  // namespace

ImportedMesh readOff(const std::filesystem::path& path, const ByteProgress& progress) {
    return OffReader(path, progress).read();
}

}  // namespace korva
