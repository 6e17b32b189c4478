// SPDX-License-Identifier: MIT
//
// Simplifies a mesh to a tenth of its vertices, shows the progress, and says what came out.
#include "bumpy_ball.h"

#include <korvalite/korvalite.h>

#include <cstdio>
#include <exception>

namespace {

const char* nameOf(korvalite::Phase phase) {
    switch (phase) {
    case korvalite::Phase::Analysing: return "analysing";
    case korvalite::Phase::Simplifying: return "simplifying";
    case korvalite::Phase::Reordering: return "reordering";
    case korvalite::Phase::ChangingLevel: return "changing the level";
    case korvalite::Phase::Measuring: return "measuring";
    }
    return "";
}

bool showProgress(const korvalite::Progress& progress) {
    if (progress.total > 0)
        std::fprintf(stderr, "%s: %llu of %llu\n", nameOf(progress.phase),
                     static_cast<unsigned long long>(progress.done),
                     static_cast<unsigned long long>(progress.total));
    return true;  // false would cancel
}

}  // namespace

int main() {
    try {
        const korvalite::Mesh ball = bumpyBall(300, 400);
        const korvalite::MeshCheck check = korvalite::check(ball.view());
        std::printf("%llu vertices, %llu border edges\n",
                    static_cast<unsigned long long>(check.vertices),
                    static_cast<unsigned long long>(check.borderEdges));

        korvalite::Options options;
        options.target = korvalite::Target::percent(10);
        const korvalite::Result result = korvalite::simplify(ball.view(), options, showProgress);

        std::printf("%u vertices asked for, %u reached\n", result.report.asked,
                    result.report.reached);
        if (result.report.missed) std::printf("%s\n", result.report.advice.c_str());
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
