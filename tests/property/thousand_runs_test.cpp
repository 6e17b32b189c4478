// SPDX-License-Identifier: MIT
//
// A thousand small runs with random settings, stopped at random moments: rare faults get many
// chances here. A failure names the run by its number, which determines the settings but not the
// timing.
#include "property/chart_cases.h"
#include "property/run_cases.h"

#include "drivers/threads/multi_thread_driver.h"
#include "progressive/reorder.h"
#include "support/allocation_counter.h"
#include "support/host_follower.h"
#include "support/level_walk.h"
#include "support/mesh_validator.h"
#include "support/stop_request.h"
#include "support/thread_run.h"
#include "support/watchdog.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <mutex>
#include <sstream>
#include <string>

namespace korvalite::core::test {
namespace {

constexpr std::uint32_t kRunsPerTest = 100;

enum class Stop { Never, Beforehand, DuringPreparation, FromAnotherThread };

struct Settings : MetricSettings, CollapseSettings, RunSettings {};

struct RandomRun {
    DMesh mesh;
    Stop stop = Stop::Never;
    float percent = 0;
    int axis = kNone;  // of the requested symmetry
    Settings settings;
    std::uint32_t pageCapacity = 0;
    std::uint32_t patience = 0;  // of the thread that asks to stop
    std::string text;            // describes all of this
};

DMesh randomMesh(Random& random, std::ostream& text) {
    const auto kind = random.below(7);
    const auto width = random.below(20);
    const auto height = random.below(8);
    const auto seed = random.word();
    text << "mesh " << kind;
    DMesh mesh;
    switch (kind) {
    case 0: return octahedron();
    case 1: mesh = sphere(1 + width % 3); break;
    case 2: mesh = torus(4 + width, 4 + height); break;
    case 3: mesh = grid(1 + width, 1 + height, hills); break;
    case 4: return withMirrorImage(grid(2 + width / 2, 2 + height, hills), 0);
    case 5: return unevenMirrored(static_cast<int>(width % 3), seed);
    default: return hillsOfTwoCharts(seed);
    }
    jitter(mesh, 0.05F, seed);
    return mesh;
}

void addRandomAttributes(DMesh& mesh, Random& random, std::ostream& text) {
    if (mesh.coordsUV.empty() && random.onceIn(2)) {
        const auto charts = 1 + random.below(4);
        const auto width = 1 + random.below(40);
        addCornerUVs(mesh, [&](std::uint32_t triangle) { return triangle / width % charts; });
        text << ", " << charts << " charts";
    }
    if (random.onceIn(3)) {
        addColors(mesh, redOrBlue);
        text << ", colours";
    }
    if (random.onceIn(4)) {
        addMask(mesh, growingMask);
        text << ", mask";
    }
}

RandomRun randomRun(std::uint32_t number) {
    Random random(number);
    RandomRun run;
    std::ostringstream text;
    text << "run " << number << ": ";
    run.mesh = randomMesh(random, text);
    text << " of " << run.mesh.vertices.size() << " vertices";
    addRandomAttributes(run.mesh, random, text);
    if (random.onceIn(3)) run.axis = random.between(0, 2);
    Settings& s = run.settings;
    s.NumThread = random.between(1, 16);
    s.BorderMode = random.between(BORDER_MODE_NONE, BORDERMODE_FREEZE);
    s.ProtectTopology = !random.onceIn(6);
    s.AvoidNormalReverse = !random.onceIn(6);
    s.UseAreaWeighting = random.onceIn(2);
    s.targetCountsVertices = !random.onceIn(4);
    s.recordVSplits = !random.onceIn(6);
    s.DoReorder = random.onceIn(2);
    run.percent = random.onceIn(4) ? 0.0F : 90 * random.unit();
    run.pageCapacity = random.onceIn(2) ? VSplitList::kAllRecords : 3 + random.below(40);
    constexpr Stop kStops[] = {Stop::Never,
                               Stop::Never,
                               Stop::Never,
                               Stop::Never,
                               Stop::Beforehand,
                               Stop::DuringPreparation,
                               Stop::FromAnotherThread,
                               Stop::FromAnotherThread};
    run.stop = kStops[random.below(8)];
    run.patience = random.below(random.onceIn(2) ? 20 : 2000);
    text << ", axis " << run.axis << ", " << s.NumThread << " threads, to " << run.percent
         << "% of the " << (s.targetCountsVertices ? "vertices" : "triangles") << ", border mode "
         << s.BorderMode << ", topology " << s.ProtectTopology << ", normals "
         << s.AvoidNormalReverse << ", area " << s.UseAreaWeighting << ", splits "
         << s.recordVSplits << " by " << run.pageCapacity << ", reorder " << s.DoReorder
         << ", stop " << static_cast<int>(run.stop) << " after " << run.patience;
    run.text = text.str();
    return run;
}

MeshPtr readyToRun(const RandomRun& run) {
    MeshPtr pm = prepared(run.mesh);
    static_cast<MetricSettings&>(*pm) = run.settings;
    static_cast<CollapseSettings&>(*pm) = run.settings;
    static_cast<RunSettings&>(*pm) = run.settings;
    askForThreads(*pm, run.settings.NumThread);
    if (run.axis != kNone) askForSymmetry(*pm, run.axis);
    const auto full = pm->targetCountsVertices ? pm->mesh.vertexCount() : pm->mesh.triangleCount();
    pm->TargetNumItem =
        static_cast<std::uint32_t>(static_cast<float>(full) * (run.percent / 100.0F));
    pm->vsplitList.pageCapacity = run.pageCapacity;
    return pm;
}

class ThousandRuns : public DecimationTest, public testing::WithParamInterface<std::uint32_t> {
protected:
    ThousandRuns() { askToStop(false); }

    // The host asks all the time; a run learns of it only while the channel is enabled.
    static void askToStop(bool asked) { progressChannel().setEnabled(asked); }

    class StopAtStep : public HostFollower {
    public:
        explicit StopAtStep(int number) : number_(number) {}
        void step(RunStep step) override {
            const auto number = static_cast<int>(step);
            if (number == number_) askToStop(true);
        }

    private:
        int number_;
    };

    // The stop bytes are read under csQueue, so a thread that holds it may change them.
    static void stopFromAnotherThread(SharedRun& shared, std::uint32_t patience) {
        for (std::uint32_t entries = 0; entries < patience; ++entries)
            const std::lock_guard lock(shared.sections.csQueue);
        const std::lock_guard lock(shared.sections.csQueue);
        askToStop(true);
    }

    template <typename Metric>
    static void runWhileAnotherThreadStops(ProgressiveMesh& pm, std::uint32_t patience) {
        doDecimationInit_LM_MT<Metric>(pm);
        SharedRun shared;
        runLoops<Metric>(pm, shared, [&] { stopFromAnotherThread(shared, patience); });
        if (pm.ProtectTopology) {
            EXPECT_TRUE(cornerListsAreSound(pm.mesh));
        }
        EXPECT_TRUE(nothingIsHeld(pm));
        ReorderAndClean(pm, pm.DoReorder);
    }

    static void start(const RandomRun& run, ProgressiveMesh& pm) {
        const Watchdog watchdog(run.text);
        StopAtStep observer(run.patience % 2 == 0 ? 7 : 10);
        if (run.stop == Stop::DuringPreparation) pm.monitor = &observer;
        const ReleaseCheck check(pm);
        askToStop(run.stop == Stop::Beforehand);
        if (run.stop == Stop::FromAnotherThread) {
            pm.m_useVertexColors_internal = pm.mesh.hasColors();
            pm.m_useVertexColors_internal
                ? runWhileAnotherThreadStops<ColorMetric>(pm, run.patience)
                : runWhileAnotherThreadStops<PlainMetric>(pm, run.patience);
        } else {
            EXPECT_EQ(RunDecimation(pm), 0);
        }
        pm.monitor = &hostMonitor();  // it is destroyed at the end of this call
        askToStop(false);
        markAllApplied(pm);
    }

    static void expectAllRight(const RandomRun& run, ProgressiveMesh& pm) {
        EXPECT_TRUE(isSound(pm.mesh));
        EXPECT_TRUE(nothingIsHeld(pm));
        if (pm.ProtectTopology && isClosedManifold(run.mesh)) {
            EXPECT_TRUE(isClosedManifold(pm.mesh));
        }
        if (pm.DoReorder && pm.recordVSplits && pm.ProtectTopology) {
            EXPECT_TRUE(isAPrefix(pm.mesh));
        }
        if (pm.m_handleUVs_internal && !pm.DoReorder) {
            EXPECT_TRUE(noTriangleMixesChartsOf(welded(run.mesh), pm.mesh));
        }
        if (run.stop == Stop::Beforehand || run.stop == Stop::DuringPreparation) {
            EXPECT_EQ(pm.activeCount(), static_cast<std::uint32_t>(pm.targetCountsVertices
                                                                       ? run.mesh.vertexCount()
                                                                       : run.mesh.triangleCount()));
        }
        const auto turns = static_cast<std::uint32_t>(pm.NumThread);
        EXPECT_GT(pm.activeCount() + turns * mostOfATurn(pm), pm.TargetNumItem);
    }

    static void expectTheWayBack(const RandomRun& run, ProgressiveMesh& pm) {
        if (!pm.recordVSplits) return;
        const UVs uvs = comparableUVs(pm);
        const Words coarse = arraysOf(pm.mesh, Part::Active, uvs);
        goAllUp(pm);
        EXPECT_TRUE(isSound(pm.mesh));
        if (!pm.DoReorder) {
            const DMesh before = pm.m_handleUVs_internal ? welded(run.mesh) : run.mesh;
            EXPECT_TRUE(arraysOf(pm.mesh, Part::All, uvs) == arraysOf(before, Part::All, uvs));
        }
        goAllDown(pm);
        EXPECT_TRUE(arraysOf(pm.mesh, Part::Active, uvs) == coarse);
    }

    // Returns the number of allocations that the run leaves behind.
    static std::int64_t carryOut(std::uint32_t number) {
        const LiveAllocations live;
        {
            const RandomRun run = randomRun(number);
            SCOPED_TRACE(run.text);
            const MeshPtr pm = readyToRun(run);
            start(run, *pm);
            expectAllRight(run, *pm);
            expectTheWayBack(run, *pm);
        }
        return live.count();
    }

    StopRequest host;
};

INSTANTIATE_TEST_SUITE_P(Hundred, ThousandRuns, testing::Range(0U, 10U));

TEST_P(ThousandRuns, EndSoundAndLeakNothing) {
    const std::uint32_t first = GetParam() * kRunsPerTest;
    // Allocations made once per process are made now.
    carryOut(first);
    for (std::uint32_t number = first; number < first + kRunsPerTest; ++number) {
        const std::int64_t left = carryOut(number);
        ASSERT_FALSE(HasFailure());
        ASSERT_EQ(left, 0) << randomRun(number).text;
    }
}

}  // namespace
}  // namespace korvalite::core::test
