// SPDX-License-Identifier: MIT
#pragma once

#include "mesh/step_observer.h"

#include <vector>

namespace korvalite::test {

class StepRecorder : public StepObserver {
public:
    void step(int number) override { numbers.push_back(number); }
    std::vector<int> numbers;
};

}  // namespace korvalite::test
