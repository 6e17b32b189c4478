// SPDX-License-Identifier: MIT
//
// Analyses a mesh once, stores the result, and takes a chain of levels of detail from it.
#include "bumpy_ball.h"

#include <korvalite/korvalite.h>

#include <cstdio>
#include <exception>

int main() {
    try {
        const korvalite::Mesh ball = bumpyBall(300, 400);
        korvalite::Options options;
        options.target = korvalite::Target::vertices(100);  // the coarsest level
        korvalite::ProgressiveMesh::build(ball.view(), options).save("ball.kvm");

        // Perhaps much later, in another program.
        auto progressive = korvalite::ProgressiveMesh::load("ball.kvm");
        for (const float percent : {50.0F, 25.0F, 10.0F, 1.0F}) {
            const korvalite::Mesh level = progressive.level(korvalite::Target::percent(percent));
            std::printf("%4.0f %%: %zu vertices, %zu triangles\n", static_cast<double>(percent),
                        level.vertexCount(), level.triangleCount());
        }
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
