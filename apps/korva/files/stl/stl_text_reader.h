// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/imported_mesh.h"
#include "korva/io/input_file.h"

namespace korva {

/// Reads a text STL file from its start.
ImportedMesh readStlText(InputFile& file);

}  // namespace korva
