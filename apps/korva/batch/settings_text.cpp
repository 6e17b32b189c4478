// SPDX-License-Identifier: MIT
#include "korva/batch/batch_run.h"

#include <array>
#include <cstdio>
#include <string>

namespace korva {

namespace {

std::string textOfNumber(float value) {
    std::array<char, 32> text{};
    std::snprintf(text.data(), text.size(), "%.9g", static_cast<double>(value));
    return text.data();
}

std::string textOfTarget(const korvalite::Target& target) {
    switch (target.unit()) {
    case korvalite::Target::Unit::Percent: return textOfNumber(target.percentage()) + '%';
    case korvalite::Target::Unit::Vertices: return std::to_string(target.count()) + 'v';
    case korvalite::Target::Unit::Triangles: return std::to_string(target.count()) + 't';
    }
    return {};
}

}  // namespace

std::string settingsText(const BatchOptions& options) {
    const korvalite::Options& engine = options.engine;
    const InputOptions& input = options.input;
    std::string text = "--to " + textOfTarget(engine.target);
    text += " --threads " + std::to_string(engine.threads);
    text += " --colors-weight " + textOfNumber(engine.colorWeight);
    if (engine.symmetry != korvalite::Symmetry::None)
        text += std::string(" --symmetry ") + " xyz"[static_cast<std::size_t>(engine.symmetry)];
    const auto add = [&](bool isSet, const char* flag) {
        if (isSet) text += flag;
    };
    add(engine.freezeBorder, " --freeze-border");
    add(!engine.protectTopology, " --no-protect-topology");
    add(!engine.protectNormals, " --no-protect-normals");
    add(engine.weightByArea, " --weight-by-area");
    add(input.weld, " --weld");
    add(!input.repair, " --no-repair");
    add(!input.colors, " --no-colors");
    add(!input.mask, " --no-mask");
    add(!input.uvs, " --no-uvs");
    if (!input.maskSource.empty()) text += " --mask " + input.maskSource;
    return text;
}

}  // namespace korva
