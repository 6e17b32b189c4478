// SPDX-License-Identifier: MIT
//
// What guards the data that a vertex reservation cannot: the bit arrays, in which the bits of
// several vertices share a byte, their counters, and the queue with all that is ordered by it.
//
// No thread ever holds two sections at once, so that there is no order between them. None may be
// introduced.
#pragma once

#include "platform/critical_section.h"

#include <mutex>

namespace korvalite {

struct CriticalSections {
    CriticalSection csActiveVertices;   // vertexActive, numActiveVertices
    CriticalSection csActiveTriangles;  // triangleActive, numActiveTriangles
    CriticalSection csBorderVertices;   // borderVertices
    CriticalSection csSymmetrySlaves;   // symmetrySlaves
    CriticalSection csUvSeams;          // uvSeamVertices, uvSeamCorners
    CriticalSection csQueue;            // the queue, the reservations, the split list, progress
};

/// The guards of a routine that one thread runs alone: none.
struct NoGuards {
    struct Guard {
        ~Guard() {}  // what tells the compiler that it is held, not unused
    };
    static Guard activeVertices() { return {}; }
    static Guard activeTriangles() { return {}; }
    static Guard borderVertices() { return {}; }
    static Guard symmetrySlaves() { return {}; }
    static Guard uvSeams() { return {}; }
};

/// The guards of a routine that several threads run at once. The queue has none here: such a
/// routine leaves it alone.
class ThreadGuards {
public:
    using Guard = std::lock_guard<CriticalSection>;

    explicit ThreadGuards(CriticalSections& sections) : sections_(sections) {}

    [[nodiscard]] Guard activeVertices() const { return Guard(sections_.csActiveVertices); }
    [[nodiscard]] Guard activeTriangles() const { return Guard(sections_.csActiveTriangles); }
    [[nodiscard]] Guard borderVertices() const { return Guard(sections_.csBorderVertices); }
    [[nodiscard]] Guard symmetrySlaves() const { return Guard(sections_.csSymmetrySlaves); }
    [[nodiscard]] Guard uvSeams() const { return Guard(sections_.csUvSeams); }

private:
    CriticalSections& sections_;
};

}  // namespace korvalite
