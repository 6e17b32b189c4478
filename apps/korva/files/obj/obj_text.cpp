// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_text.h"

#include "korva/files/obj/obj_line.h"
#include "korva/files/words.h"

#include <algorithm>
#include <cstddef>

namespace korva {

namespace {

/// The comment and the statements with names (o, g, usemtl, mtllib and so on) end with their line:
/// a name may end in a backslash, and a statement that it swallowed would be missed.
constexpr std::string_view kStartsOfWholeLines = "#ogum";

/// Cuts blanks off the end, and the backslash that is there. False if there is none.
bool cutBackslash(std::string_view& line) {
    std::size_t size = line.size();
    while (size > 0 && ObjLine::isBlank(line[size - 1]))
        --size;
    const bool hasBackslash = size > 0 && line[size - 1] == '\\';
    line = line.substr(0, hasBackslash ? size - 1 : size);
    return hasBackslash;
}

bool mayGoOn(std::string_view line) {
    const auto start = std::find_if_not(line.begin(), line.end(), ObjLine::isBlank);
    return start != line.end() && kStartsOfWholeLines.find(*start) == std::string_view::npos &&
           line.find('#') == std::string_view::npos;
}

}  // namespace

bool ObjText::next(std::string_view& line) {
    if (!file_.readLine(line)) return false;
    lineNumber_ = ++linesTaken_;
    if (lineNumber_ == 1) skipByteOrderMark(line);
    std::string_view part = line;
    if (cutBackslash(part) && mayGoOn(part)) {
        line = part;
        join(line);
    }
    return true;
}

void ObjText::join(std::string_view& line) {
    joined_ = line;
    for (bool goesOn = true; goesOn && file_.readLine(line);) {
        ++linesTaken_;
        goesOn = cutBackslash(line);
        joined_ += ' ';
        joined_ += line;
    }
    line = joined_;
}

}  // namespace korva
