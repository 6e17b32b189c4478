// SPDX-License-Identifier: MIT
#pragma once

#include "support/host_follower.h"

#include <vector>

namespace korvalite::core::test {

class StepRecorder : public HostFollower {
public:
    void step(RunStep step) override { numbers.push_back(static_cast<int>(step)); }
    std::vector<int> numbers;
};

}  // namespace korvalite::core::test
