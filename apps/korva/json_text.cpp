// SPDX-License-Identifier: MIT
#include "korva/json_text.h"

#include <nlohmann/json.hpp>

namespace korva {

std::string jsonText(const nlohmann::json& value) {
    return value.dump(2, ' ', false, nlohmann::json::error_handler_t::replace);
}

}  // namespace korva
