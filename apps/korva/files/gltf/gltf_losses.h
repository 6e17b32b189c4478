// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_item.h"

#include <string>
#include <vector>

namespace korva {

/// What of a file is not carried over, a sentence each.
[[nodiscard]] std::vector<std::string> gltfLosses(const GltfItem& root);

/// Throws korvalite::Error(CannotRead) if the file cannot be understood without an extension that
/// is unknown here.
void refuseGltfExtensions(const GltfItem& root);

}  // namespace korva
