// SPDX-License-Identifier: MIT
#include "base/timer.h"

#include "platform/platform.h"

#include <gtest/gtest.h>

namespace korvalite::core {
namespace {

TEST(Timer, MeasuresSecondsSinceItsStart) {
    Timer timer;
    timer.start();
    platform::sleepMilliseconds(20);
    const double elapsed = timer.elapsedSeconds();
    EXPECT_GE(elapsed, 0.020);
    EXPECT_LT(elapsed, 20.0);
    timer.start();
    EXPECT_LT(timer.elapsedSeconds(), elapsed + 10.0);
}

TEST(Timer, TimersAreIndependent) {
    Timer early;
    early.start();
    platform::sleepMilliseconds(5);
    Timer late;
    late.start();
    EXPECT_GT(early.elapsedSeconds(), late.elapsedSeconds());
}

}  // namespace
}  // namespace korvalite::core
