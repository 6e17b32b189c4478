// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/gltf/gltf_item.h"

#include <string>
#include <vector>

namespace korva {

/// A sentence for each kind of content that is not carried over.
[[nodiscard]] std::vector<std::string> gltfLosses(const GltfItem& root);

/// Throws korvalite::Error(CannotRead) if the file requires an extension that is not supported.
void refuseGltfExtensions(const GltfItem& root);

}  // namespace korva
