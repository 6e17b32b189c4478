// SPDX-License-Identifier: MIT
#include "base/timer.h"

#include "platform/platform.h"

namespace korvalite::core {

namespace {

struct TickClock {
    double secondsPerTick = 0;
    std::int64_t firstTicks = 0;
    bool ready = false;
};

TickClock tickClock;

void prepareTickClock() {
    std::int64_t ticksPerSecond = 0;
    if (!platform::counterFrequency(ticksPerSecond) || ticksPerSecond == 0) return;
    tickClock.secondsPerTick = 1.0 / static_cast<double>(ticksPerSecond);
    tickClock.ready = platform::counterValue(tickClock.firstTicks);
}

}  // namespace

Timer::Timer() {
    if (!tickClock.ready) prepareTickClock();
}

void Timer::start() {
    platform::counterValue(startTicks_);
}

double Timer::elapsedSeconds() const {
    std::int64_t now = startTicks_;
    platform::counterValue(now);
    return static_cast<double>(now - startTicks_) * tickClock.secondsPerTick;
}

}  // namespace korvalite::core
