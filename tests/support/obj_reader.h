// SPDX-License-Identifier: MIT
#pragma once

#include "support/scratch_folder.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

namespace korvalite::core::test {

// An OBJ as any reader sees it, parsed without any code of the product. Indices are 0-based here.
struct ObjFile {
    std::vector<std::array<double, 3>> points;
    std::vector<std::array<double, 2>> uvs;
    std::vector<std::array<int, 3>> faces;
    std::vector<std::array<int, 3>> faceUVs;    // empty, or one for each face
    std::vector<std::array<unsigned, 4>> mrgb;  // mask, red, green, blue
    std::vector<std::string> otherLines;        // comments and unknown lines
};

inline std::vector<std::string> wordsOf(const std::string& line) {
    std::istringstream stream(line);
    std::vector<std::string> words;
    for (std::string word; stream >> word;)
        words.push_back(word);
    return words;
}

template <std::size_t N>
bool readObjNumbers(const std::vector<std::string>& words, std::array<double, N>& numbers) {
    static const std::regex form("-?[0-9]+\\.[0-9]{9}");
    if (words.size() != N + 1) return false;
    for (std::size_t i = 0; i < N; ++i) {
        if (!std::regex_match(words[i + 1], form)) return false;
        numbers[i] = std::stod(words[i + 1]);
    }
    return true;
}

inline bool readObjFace(const std::vector<std::string>& words, ObjFile& obj) {
    static const std::regex form("([0-9]+)(/([0-9]+))?");
    if (words.size() != 4) return false;
    std::array<int, 3> face{};
    std::array<int, 3> uvs{};
    std::size_t cornersWithUV = 0;
    for (std::size_t k = 0; k < 3; ++k) {
        std::smatch match;
        if (!std::regex_match(words[k + 1], match, form)) return false;
        face[k] = std::stoi(match[1]) - 1;
        if (!match[3].matched) continue;
        uvs[k] = std::stoi(match[3]) - 1;
        ++cornersWithUV;
    }
    obj.faces.push_back(face);
    if (cornersWithUV == 3) obj.faceUVs.push_back(uvs);
    return cornersWithUV % 3 == 0;
}

inline bool readObjColors(const std::vector<std::string>& words, ObjFile& obj) {
    if (words.size() != 2 || words[1].size() % 8 != 0) return false;
    for (std::size_t i = 0; i < words[1].size(); i += 8) {
        std::array<unsigned, 4> entry{};
        for (std::size_t k = 0; k < 4; ++k)
            entry[k] =
                static_cast<unsigned>(std::stoul(words[1].substr(i + 2 * k, 2), nullptr, 16));
        obj.mrgb.push_back(entry);
    }
    return true;
}

inline bool readObjLine(const std::string& line, ObjFile& obj) {
    const std::vector<std::string> words = wordsOf(line);
    if (words.empty()) return false;
    if (words[0] == "v") return readObjNumbers(words, obj.points.emplace_back());
    if (words[0] == "vt") return readObjNumbers(words, obj.uvs.emplace_back());
    if (words[0] == "f") return readObjFace(words, obj);
    return words[0] == "#MRGB" && readObjColors(words, obj);
}

inline ObjFile readObj(const std::string& path) {
    ObjFile obj;
    std::istringstream text(readWhole(path));
    for (std::string line; std::getline(text, line);)
        if (!readObjLine(line, obj)) obj.otherLines.push_back(line);
    return obj;
}

}  // namespace korvalite::core::test
