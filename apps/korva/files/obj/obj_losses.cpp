// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_losses.h"

namespace korva {

namespace {

// In the order of ObjLoss: what follows the number one, and what follows others.
struct Wording {
    const char* one;
    const char* many;
};
constexpr std::array<Wording, kObjLosses> kWordings{{
    {"material statement is ignored", "material statements are ignored"},
    {"object or group has no effect", "objects and groups become one mesh"},
    {"smoothing group is ignored", "smoothing groups are ignored"},
    {"polyline is ignored", "polylines are ignored"},
    {"point element is ignored", "point elements are ignored"},
    {"statement about curves or surfaces is ignored",
     "statements about curves or surfaces are ignored"},
    {"line with an unknown keyword is ignored", "lines with unknown keywords are ignored"},
    {"face with fewer than 3 corners is skipped", "faces with fewer than 3 corners are skipped"},
    {"vertex has a weight other than 1, which is ignored",
     "vertices have a weight other than 1, which is ignored"},
    {"line has more numbers than its keyword takes, which are ignored",
     "lines have more numbers than their keyword takes, which are ignored"},
    {"UV point has a third coordinate, which is ignored",
     "UV points have a third coordinate, which is ignored"},
    {"UV point is ignored, because no face uses UVs",
     "UV points are ignored, because no face uses UVs"},
    {"triangle corner without a UV gets (0, 0)", "triangle corners without a UV get (0, 0)"},
    {"vertex without a colour becomes white", "vertices without a colour become white"},
    {"vertex colour is out of range and clamped", "vertex colours are out of range and clamped"},
    {"vertex colour has fractions below 1, but is read as 0 to 255 because others are above 1",
     "vertex colours have fractions below 1, but are read as 0 to 255 because others are above 1"},
}};

}  // namespace

void ObjLosses::add(ObjLoss loss, std::uint64_t line, std::uint64_t count) {
    const auto i = static_cast<std::size_t>(loss);
    if (counts_[i] == 0) firstLines_[i] = line;
    counts_[i] += count;
}

std::vector<std::string> ObjLosses::notes() const {
    std::vector<std::string> notes;
    for (std::size_t i = 0; i < kObjLosses; ++i) {
        if (counts_[i] == 0) continue;
        // A single name only says that the mesh is one object, which it stays.
        if (i == static_cast<std::size_t>(ObjLoss::Group) && counts_[i] == 1) continue;
        std::string note = std::to_string(counts_[i]) + " ";
        note += counts_[i] == 1 ? kWordings[i].one : kWordings[i].many;
        if (firstLines_[i] != 0)
            note += (counts_[i] == 1 ? " (line " : " (first in line ") +
                    std::to_string(firstLines_[i]) + ")";
        notes.push_back(note + ".");
    }
    return notes;
}

}  // namespace korva
