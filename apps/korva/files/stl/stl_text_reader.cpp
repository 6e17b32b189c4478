// SPDX-License-Identifier: MIT
#include "korva/files/stl/stl_text_reader.h"

#include "korva/files/stl/soup_welder.h"
#include "korva/files/words.h"

#include <algorithm>
#include <cstdint>
#include <string>
#include <string_view>

namespace korva {

namespace {

class StlTextReader {
public:
    // Programs write some 250 bytes for a facet. A guess that is too low costs a little time.
    explicit StlTextReader(InputFile& file)
        : words_(file), welder_(static_cast<std::size_t>(file.size() / 280)) {}

    ImportedMesh read();

private:
    void readFacets();
    void readFacet();
    void readLoop();
    void readPoint(float* point);
    void expect(std::string_view word, std::string_view expected) const;
    [[noreturn]] void failAtEnd() const;

    Words words_;
    SoupWelder welder_;
    std::uint64_t tooFewCorners_ = 0;
};

ImportedMesh StlTextReader::read() {
    std::uint64_t solids = 0;
    std::string_view word = words_.next();
    for (; !word.empty(); word = words_.next()) {
        expect(word, "solid");
        ++solids;
        words_.skipLine();  // its name
        readFacets();
    }
    ImportedMesh imported;
    imported.mesh = welder_.take();
    if (solids > 1)
        imported.notes.push_back(std::to_string(solids) + " solids are joined into one mesh.");
    if (tooFewCorners_ > 0)
        imported.notes.push_back("Facets with fewer than 3 corners are skipped: " +
                                 std::to_string(tooFewCorners_) + ".");
    return imported;
}

void StlTextReader::readFacets() {
    for (;;) {
        const std::string_view word = words_.next();
        if (isWord(word, "endsolid")) {
            words_.skipLine();
            return;
        }
        if (word.empty()) failAtEnd();
        if (!isWord(word, "facet"))
            words_.fail(quoted(word) + " where 'facet' or 'endsolid' is expected.");
        readFacet();
    }
}

void StlTextReader::readFacet() {
    std::string_view word = words_.next();
    if (isWord(word, "normal")) {
        word = words_.next();
        // Not read: for a facet without an area, each program writes NaN in its own way.
        for (int i = 0; i < 3 && !isWord(word, "outer"); ++i)
            word = words_.next();
    }
    expect(word, "outer");
    expect(words_.next(), "loop");
    readLoop();
    expect(words_.next(), "endfacet");
}

void StlTextReader::readLoop() {
    float corners[9];
    std::size_t count = 0;
    std::string_view word = words_.next();
    for (; !isWord(word, "endloop"); word = words_.next()) {
        expect(word, "vertex");
        // The first corner stays, and the last one is the second of the next triangle of the fan.
        if (count >= 3) std::copy_n(&corners[6], 3, &corners[3]);
        readPoint(&corners[3 * std::min<std::size_t>(count, 2)]);
        ++count;
        if (count >= 3 && !welder_.add(corners))
            words_.fail("it has more than 715827882 triangles.");
    }
    if (count < 3) ++tooFewCorners_;
}

void StlTextReader::readPoint(float* point) {
    for (int axis = 0; axis < 3; ++axis) {
        const std::string_view word = words_.next();
        if (word.empty()) failAtEnd();
        if (!parseFloat(word, point[axis])) words_.fail(quoted(word) + " is not a number.");
    }
}

void StlTextReader::expect(std::string_view word, std::string_view expected) const {
    if (word.empty()) failAtEnd();
    if (!isWord(word, expected))
        words_.fail(quoted(word) + " where '" + std::string(expected) + "' is expected.");
}

void StlTextReader::failAtEnd() const {
    words_.fail("it ends within a solid; it may be cut off. If nothing is missing, add a line "
                "'endsolid'.");
}

}  // namespace

ImportedMesh readStlText(InputFile& file) {
    return StlTextReader(file).read();
}

}  // namespace korva
