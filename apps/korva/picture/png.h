// SPDX-License-Identifier: MIT
#pragma once

#include "korva/picture/image.h"

#include <filesystem>

namespace korva {

/// Writes an image of at most 16384 x 16384 pixels as PNG. The file appears when it is complete.
/// Throws Error(CannotWrite), and Error(Cancelled) if the process is interrupted.
void writePng(const std::filesystem::path& path, const Image& image);

}  // namespace korva
