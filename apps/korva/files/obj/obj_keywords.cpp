// SPDX-License-Identifier: MIT
#include "korva/files/obj/obj_keywords.h"

#include <algorithm>
#include <array>

namespace korva {

namespace {

struct Keyword {
    std::string_view word;
    std::optional<ObjLoss> loss;
};
constexpr std::array kKeywords{
    Keyword{"usemtl", ObjLoss::Material}, Keyword{"mtllib", ObjLoss::Material},
    Keyword{"usemap", ObjLoss::Material}, Keyword{"maplib", ObjLoss::Material},
    Keyword{"o", ObjLoss::Group},         Keyword{"g", ObjLoss::Group},
    Keyword{"s", ObjLoss::Smoothing},     Keyword{"mg", ObjLoss::Smoothing},
    Keyword{"l", ObjLoss::Polyline},      Keyword{"p", ObjLoss::Point},
    Keyword{"vp", ObjLoss::FreeForm},     Keyword{"cstype", ObjLoss::FreeForm},
    Keyword{"deg", ObjLoss::FreeForm},    Keyword{"bmat", ObjLoss::FreeForm},
    Keyword{"step", ObjLoss::FreeForm},   Keyword{"curv", ObjLoss::FreeForm},
    Keyword{"curv2", ObjLoss::FreeForm},  Keyword{"surf", ObjLoss::FreeForm},
    Keyword{"parm", ObjLoss::FreeForm},   Keyword{"trim", ObjLoss::FreeForm},
    Keyword{"hole", ObjLoss::FreeForm},   Keyword{"scrv", ObjLoss::FreeForm},
    Keyword{"sp", ObjLoss::FreeForm},     Keyword{"end", ObjLoss::FreeForm},
    Keyword{"con", ObjLoss::FreeForm},    Keyword{"bevel", std::nullopt},
    Keyword{"c_interp", std::nullopt},    Keyword{"d_interp", std::nullopt},
    Keyword{"lod", std::nullopt},         Keyword{"shadow_obj", std::nullopt},
    Keyword{"trace_obj", std::nullopt},   Keyword{"ctech", std::nullopt},
    Keyword{"stech", std::nullopt},
};

}  // namespace

std::optional<ObjLoss> lossByIgnoring(std::string_view keyword) {
    const auto found = std::find_if(kKeywords.begin(), kKeywords.end(),
                                    [&](const Keyword& known) { return known.word == keyword; });
    return found == kKeywords.end() ? ObjLoss::UnknownKeyword : found->loss;
}

}  // namespace korva
