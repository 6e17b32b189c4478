// SPDX-License-Identifier: MIT
#include "korva/files/ply/ply_rows.h"

#include <utility>

namespace korva {

void PlyRows::start(const PlyElement& element, std::vector<int> goesTo) {
    element_ = &element;
    goesTo_ = std::move(goesTo);
    rowsBegun_ = 0;
}

void PlyRows::fail(const std::string& what) const {
    failToRead(file_.path(), place() + ": " + what);
}

}  // namespace korva
