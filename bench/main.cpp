// SPDX-License-Identifier: MIT
//
// korvalite_bench [Google Benchmark arguments]                  the kernels
// korvalite_bench --write-mesh TRIANGLES FILE.Vok               a synthetic mesh for whole jobs
// korvalite_bench --hard-mesh KIND SIZE FILE.Vok                one with flat ground or hubs
// korvalite_bench --stages INPUT.Vok OUTPUT.Vok PERCENT         a decimation, timed by stages
// korvalite_bench --threads INPUT.Vok PERCENT                   one thread and several
// korvalite_bench --levels FILE.kvm                             all splits up and down, timed
// korvalite_bench --full-level INPUT.kvm OUTPUT.Vok PERCENT     a level, by loading the whole file
// korvalite_bench --obj TRIANGLES                               saveObj against fprintf
// korvalite_bench --drivers INPUT.Vok PERCENT                   all drivers side by side
// korvalite_bench --distance DRIVER INPUT.Vok PERCENT           one of them
// korvalite_bench --decimate DRIVER INPUT.Vok OUTPUT.Vok PERCENT
//                 one driver, including those that no job can select: high-speed, low-memory,
//                 two-threads or melax
//
// scripts/bench combines them and starts a new process for each mesh, so that one measurement does
// not affect the memory of the next.
#include "bumpy_torus.h"
#include "driver_times.h"
#include "formats/vok_writer.h"
#include "level_times.h"
#include "obj_times.h"
#include "stage_times.h"
#include "support/hard_meshes.h"
#include "thread_times.h"

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

std::int32_t wholeNumber(const char* text) {
    return static_cast<std::int32_t>(std::atol(text));
}

float number(const char* text) {
    return static_cast<float>(std::atof(text));
}

bool writeHardMesh(const char* kind, std::int32_t size, const char* path) {
    const auto mesh = korvalite::core::test::hardMesh(kind, size);
    return mesh && korvalite::core::exportDMesh(path, *mesh);
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
    using namespace korvalite::core::bench;
    const std::string_view mode = argc > 1 ? argv[1] : "";
    if (mode == "--write-mesh" && argc == 4)
        return finish(writeBumpyTorus(argv[3], wholeNumber(argv[2])), argv[3]);
    if (mode == "--hard-mesh" && argc == 5)
        return finish(writeHardMesh(argv[2], wholeNumber(argv[3]), argv[4]), argv[4]);
    if (mode == "--stages" && argc == 5)
        return finish(printStageTimes(argv[2], argv[3], number(argv[4])), argv[2]);
    if (mode == "--threads" && argc == 4)
        return finish(printThreadTimes(argv[2], number(argv[3])), argv[2]);
    if (mode == "--levels" && argc == 3) return finish(printLevelTimes(argv[2]), argv[2]);
    if (mode == "--full-level" && argc == 5)
        return finish(writeLevelByFullLoad(argv[2], argv[3], number(argv[4])), argv[2]);
    if (mode == "--obj" && argc == 3) return finish(printObjTimes(wholeNumber(argv[2])), "an OBJ");
    if (mode == "--drivers" && argc == 4)
        return finish(printDriverTimes(argv[2], number(argv[3])), argv[2]);
    if (mode == "--distance" && argc == 5)
        return finish(printDriverTime(argv[2], argv[3], number(argv[4])), argv[3]);
    if (mode == "--decimate" && argc == 6)
        return finish(decimateWith(argv[2], argv[3], argv[4], number(argv[5])), argv[3]);
    return runKernels(argc, argv);
}
