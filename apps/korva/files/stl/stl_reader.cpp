// SPDX-License-Identifier: MIT
#include "korva/files/stl/stl_reader.h"

#include "korva/files/stl/soup_welder.h"
#include "korva/files/stl/stl_format.h"
#include "korva/files/stl/stl_text_reader.h"
#include "korva/files/words.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

namespace korva {

namespace {

std::uint32_t countAt(const char* bytes) {
    std::uint32_t count = 0;
    std::memcpy(&count, bytes, sizeof count);
    return count;
}

std::uint64_t sizeWith(std::uint32_t facets) {
    return kStlHeaderBytes + std::uint64_t{kStlFacetBytes} * facets;
}

bool contains(std::string_view text, std::string_view small) {
    for (std::size_t i = 0; i + small.size() <= text.size(); ++i) {
        if (isWord(text.substr(i, small.size()), small)) return true;
    }
    return false;
}

bool isControl(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < '\t' || (byte > '\r' && byte < ' ');
}

/// The header of a binary file may begin with "solid", too, so a size that fits its count decides.
bool isText(InputFile& file) {
    std::vector<char> start(4096);
    start.resize(file.read(start.data(), start.size()));
    file.rewind();
    if (start.size() >= kStlHeaderBytes &&
        sizeWith(countAt(start.data() + kStlNoteBytes)) == file.size())
        return false;
    std::string_view text(start.data(), start.size());
    skipByteOrderMark(text);
    const std::string_view first = takeWord(text);
    if (!isWord(first, "solid")) return false;
    return contains(text, "facet") || contains(text, "endsolid") ||
           std::none_of(start.begin(), start.end(), isControl);
}

[[noreturn]] void failOnSize(const InputFile& file, std::uint32_t facets) {
    const std::string wanted = "its header announces " + std::to_string(facets) + " triangles, ";
    if (file.size() < sizeWith(facets)) {
        const std::uint64_t whole = (file.size() - kStlHeaderBytes) / kStlFacetBytes;
        failToRead(file.path(), wanted + "but it ends after " + std::to_string(whole) +
                                    ". It is cut off, damaged or not STL.");
    }
    failToRead(file.path(), wanted + "but " + std::to_string(file.size() - sizeWith(facets)) +
                                " bytes follow them, which would be lost. Export it again.");
}

std::uint32_t readHeader(InputFile& file, ImportedMesh& imported) {
    char header[kStlHeaderBytes];
    if (file.size() == 0) failToRead(file.path(), "it is empty.");
    if (file.read(header, sizeof header) < sizeof header)
        failToRead(file.path(), "it is too short for an STL file.");
    const std::uint32_t facets = countAt(header + kStlNoteBytes);
    // Some programs pad their files with a few bytes.
    if (file.size() < sizeWith(facets) || file.size() - sizeWith(facets) >= kStlFacetBytes)
        failOnSize(file, facets);
    if (file.size() > sizeWith(facets))
        imported.notes.push_back(std::to_string(file.size() - sizeWith(facets)) +
                                 " bytes after the last triangle are ignored.");
    if (contains({header, kStlNoteBytes}, "color="))
        imported.notes.emplace_back("The colour in the header of the STL file is ignored.");
    return facets;
}

ImportedMesh readBinary(InputFile& file) {
    constexpr std::size_t kFacetsAtOnce = 1024;
    ImportedMesh imported;
    const std::uint32_t facets = readHeader(file, imported);
    SoupWelder welder(facets);
    std::vector<char> bytes(kStlFacetBytes * kFacetsAtOnce);
    std::uint32_t withAttributes = 0;
    for (std::uint32_t done = 0; done < facets;) {
        const std::size_t part = std::min<std::size_t>(facets - done, kFacetsAtOnce);
        const std::size_t wanted = kStlFacetBytes * part;
        if (file.read(bytes.data(), wanted) < wanted)
            failToRead(file.path(), "it became shorter while it was read.");
        for (std::size_t i = 0; i < part; ++i) {
            const StlFacet facet = unpackStlFacet(bytes.data() + kStlFacetBytes * i);
            if (facet.attributes != 0) ++withAttributes;
            if (!welder.add(facet.corners))
                failToRead(file.path(), "it has more than 715827882 triangles.");
        }
        done += static_cast<std::uint32_t>(part);
    }
    imported.mesh = welder.take();
    if (withAttributes > 0)
        imported.notes.push_back("The attributes of " + std::to_string(withAttributes) +
                                 (withAttributes == 1 ? " triangle" : " triangles") +
                                 ", which may be colours, are ignored.");
    return imported;
}

}  // namespace

ImportedMesh readStl(const std::filesystem::path& path, const ByteProgress& progress) {
    InputFile file(path, progress);
    return isText(file) ? readStlText(file) : readBinary(file);
}

}  // namespace korva
