// SPDX-License-Identifier: MIT
#include "driver_times.h"

#include "best_time.h"
#include "drivers/run_decimation.h"
#include "formats/vok_reader.h"
#include "formats/vok_writer.h"
#include "host/job_paths.h"
#include "job_settings.h"
#include "mesh/dmesh.h"
#include "own_process.h"
#include "progressive/progressive_mesh.h"
#include "support/scratch_folder.h"
#include "support/surface_distance.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <string_view>

namespace korvalite::core::bench {

namespace {

constexpr std::size_t kSamples = 1'000'000;

struct Driver {
    std::string_view name;
    std::int32_t memSpeedTradeOff;
    std::int32_t numThread;
};

constexpr std::array kDrivers{
    Driver{"high-speed", MEMSPEED_TRADEOFF_HIGH_SPEED, 1},
    Driver{"low-memory", MEMSPEED_TRADEOFF_LOW_MEM, 1},
    Driver{"two-threads", MEMSPEED_TRADEOFF_LOW_MEM_MT, 2},
    Driver{"melax", MEMSPEED_TRADEOFF_MELAX, 1},
};

const Driver* driverNamed(std::string_view name) {
    const auto* const found = std::find_if(kDrivers.begin(), kDrivers.end(),
                                           [&](const Driver& row) { return row.name == name; });
    return found == kDrivers.end() ? nullptr : found;
}

bool load(const char* input, DMesh& mesh) {
    if (!importDMesh(input, mesh) || !canBeDecimated(mesh)) return false;
    dropUniformMask(mesh);
    return true;
}

// No job key selects the driver, so this sets it on the object.
bool decimate(const Driver& driver, ProgressiveMesh& pm, float percent) {
    askForPercent(pm, percent);
    pm.MemSpeedTradeOff = driver.memSpeedTradeOff;
    pm.NumThread = driver.numThread;
    return RunDecimation(pm) == 0;
}

// Reads the input again for the distance, so that a copy does not count as memory of the run.
bool printDistance(const char* input, const DMesh& result) {
    DMesh original;
    if (!load(input, original)) return false;
    const test::SurfaceDistance distance = test::surfaceDistance(original, result, kSamples);
    const auto diagonal = static_cast<double>(original.boundingBox.diagonal());
    std::printf(" rms=%.9g max=%.9g\n", distance.rms / diagonal, distance.maximum / diagonal);
    return true;
}

bool printDriver(const Driver& driver, const char* input, float percent) {
    const test::ScratchFolder folder;
    SetJobDirectory(folder.path().c_str());
    const long idleBytes = peakBytes();
    ProgressiveMesh pm;
    if (!load(input, pm.mesh)) return false;
    const std::int32_t vertexCount = pm.mesh.vertexCount();
    BestTime time;
    bool isDone = false;
    time.measure([&] { isDone = decimate(driver, pm, percent); });
    std::printf("driver=%s vertices=%d after=%u seconds=%.4f peak=%ld", driver.name.data(),
                vertexCount, pm.mesh.numActiveVertices, time.seconds(), peakBytes() - idleBytes);
    return isDone && printDistance(input, pm.mesh);
}

}  // namespace

bool printDriverTimes(const char* input, float percent) {
    return std::all_of(kDrivers.begin(), kDrivers.end(), [&](const Driver& driver) {
        return inOwnProcess([&] { return printDriver(driver, input, percent); });
    });
}

bool printDriverTime(const char* driver, const char* input, float percent) {
    const Driver* const found = driverNamed(driver);
    return found != nullptr && printDriver(*found, input, percent);
}

bool decimateWith(const char* driver, const char* input, const char* output, float percent) {
    const Driver* const found = driverNamed(driver);
    if (found == nullptr) return false;
    const test::ScratchFolder folder;
    SetJobDirectory(folder.path().c_str());
    ProgressiveMesh pm;
    return load(input, pm.mesh) && decimate(*found, pm, percent) && exportDMesh(output, pm.mesh);
}

}  // namespace korvalite::core::bench
