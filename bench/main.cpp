// SPDX-License-Identifier: MIT
//
// korvalite_bench [Google Benchmark arguments]            the kernels
// korvalite_bench --write-mesh TRIANGLES FILE.Vok         a synthetic mesh for whole jobs
// korvalite_bench --stages INPUT.Vok OUTPUT.Vok PERCENT   one decimation, timed stage by stage
// korvalite_bench --obj TRIANGLES                         saveObj against fprintf
//
// scripts/bench puts them together; a process of its own for each mesh keeps one measurement out of
// the memory of the next.
#include "bumpy_torus.h"
#include "obj_times.h"
#include "stage_times.h"

#include <benchmark/benchmark.h>

#include <cstdio>
#include <cstdlib>
#include <string_view>

namespace {

int finish(bool succeeded, const char* path) {
    if (succeeded) return 0;
    std::fprintf(stderr, "korvalite_bench: %s could not be read or its output not written\n", path);
    return 1;
}

int runKernels(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    benchmark::Shutdown();
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    const std::string_view mode = argc > 1 ? argv[1] : "";
    if (mode == "--write-mesh" && argc == 4) {
        const auto triangles = static_cast<std::int32_t>(std::atol(argv[2]));
        return finish(korvalite::bench::writeBumpyTorus(argv[3], triangles), argv[3]);
    }
    if (mode == "--stages" && argc == 5) {
        const auto percent = static_cast<float>(std::atof(argv[4]));
        return finish(korvalite::bench::printStageTimes(argv[2], argv[3], percent), argv[2]);
    }
    if (mode == "--obj" && argc == 3) {
        const auto triangles = static_cast<std::int32_t>(std::atol(argv[2]));
        return finish(korvalite::bench::printObjTimes(triangles), "an OBJ");
    }
    return runKernels(argc, argv);
}
