// SPDX-License-Identifier: MIT
//
// Locks for the data that vertex reservations do not protect: bit arrays, in which several vertices
// share a byte, their counters, and the queue with everything that depends on its order.
//
// No thread may ever hold two sections at once, so they need no locking order.
#pragma once

#include "base/critical_section.h"

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

/// Guards for a routine that one thread runs alone: none.
struct NoGuards {
    struct Guard {
        ~Guard() {}  // avoids warnings about unused guards
    };
    static Guard activeVertices() { return {}; }
    static Guard activeTriangles() { return {}; }
    static Guard borderVertices() { return {}; }
    static Guard symmetrySlaves() { return {}; }
    static Guard uvSeams() { return {}; }
};

/// Guards for a routine that several threads run at once. There is none for the queue, which such a
/// routine does not touch.
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
