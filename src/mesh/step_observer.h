// SPDX-License-Identifier: MIT
#pragma once

namespace korvalite {

/// Follows a run from within the process: drivers call step() on the main thread each time they
/// reach one of these steps.
///
///   4, 5   corner lists and borders are built       10  the loop begins
///   7      symmetry is decided                      11  every 200 successful turns
///   8      UVs and colours are decided              12  the loop has ended
///   9      all vertices are ranked and queued       14  a level update has ended
class StepObserver {
public:
    virtual ~StepObserver() = default;
    virtual void step(int number) = 0;
};

}  // namespace korvalite
