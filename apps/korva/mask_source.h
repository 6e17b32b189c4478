// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/scene.h"

#include <string>

namespace korva {

/// Sets the mask of all meshes: from a channel of the colours ("red", "green", "blue" or "alpha"),
/// or from a text file with a number from 0 to 255 for each vertex, in the order of the vertices.
/// Throws Error(BadOption) if there are no colours, and Error(CannotRead) if the file does not fit.
void setMask(Scene& scene, const std::string& source);

}  // namespace korva
