// SPDX-License-Identifier: MIT
#pragma once

#include "korva/files/obj/obj_losses.h"

#include <optional>
#include <string_view>

namespace korva {

/// What is lost by ignoring a statement of OBJ, or nothing if it only says how to display the mesh.
/// UnknownKeyword for words that OBJ does not have.
[[nodiscard]] std::optional<ObjLoss> lossByIgnoring(std::string_view keyword);

}  // namespace korva
