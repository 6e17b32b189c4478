// SPDX-License-Identifier: MIT
//
// Whether a routine has the mesh to itself or shares it with other threads. Collapse, UV update,
// ranking and driver take one of two policies as a template parameter and are otherwise the same
// code:
//
//   Alone    No locks. Costs and the queue change at once.
//   Shared   One of several threads, each working on vertices that it has reserved. Locks protect
//            what reservations do not: bit arrays, in which several vertices share a byte, and
//            their counters. Changes of costs and of the queue become entries in the work record
//            of the thread, which commits them under csQueue at the end of its turn.
#pragma once

#include "base/critical_section.h"
#include "collapse/work_record.h"
#include "collapse/working_mesh.h"

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <mutex>
#include <span>

namespace korvalite::core {

/// No thread may ever hold two sections at once, so they need no locking order.
struct CriticalSections {
    CriticalSection csActiveVertices;   // vertexActive, numActiveVertices
    CriticalSection csActiveTriangles;  // triangleActive, numActiveTriangles
    CriticalSection csBorderVertices;   // borderVertices
    CriticalSection csSymmetrySlaves;   // symmetrySlaves
    CriticalSection csUvSeams;          // uvSeamVertices, uvSeamCorners
    CriticalSection csCornerBlocks;     // the blocks of vertexCorners
    CriticalSection csQueue;            // the queue, the reservations, the split list, progress
};

class Alone {
public:
    static constexpr bool kIsShared = false;

    explicit Alone(WorkingMesh& work) : work_(work) {}

    struct Guard {
        ~Guard() {}  // avoids warnings about unused guards
    };
    static Guard activeVertices() { return {}; }
    static Guard activeTriangles() { return {}; }
    static Guard borderVertices() { return {}; }
    static Guard symmetrySlaves() { return {}; }
    static Guard uvSeams() { return {}; }
    static Guard cornerBlocks() { return {}; }

    void unqueue(std::int32_t vertex) { work_.costQueue.Remove(vertex); }
    void penalize(std::int32_t vertex) { Penalize(work_.mesh, work_.costQueue, vertex); }
    void rankAgain(std::int32_t vertex, const RankedVertex& ranked) {
        work_.costQueue.Remove(vertex);
        storeRanking(work_.mesh.vertices[vertex], ranked);
        work_.costQueue.Insert(vertex);
    }

    void beginRing(std::span<const std::int32_t> ring) {
        for (const std::int32_t vertex : ring) {
            work_.costQueue.Remove(vertex);
            forgetCost(work_.mesh.vertices[vertex]);
        }
    }
    void rank(std::uint16_t /*slot*/, std::int32_t vertex, const RankedVertex& ranked) {
        storeRanking(work_.mesh.vertices[vertex], ranked);
    }
    void endRing(std::span<const std::int32_t> ring) {
        queued_.clear();
        for (const std::int32_t vertex : ring) {
            if (!work_.isSymmetrySlave(vertex)) queued_.push_back(vertex);
        }
        work_.costQueue.InsertAll(queued_);
    }

    [[nodiscard]] std::int32_t guessNext() const { return work_.costQueue.peek(); }

private:
    WorkingMesh& work_;
    IndexList queued_;
};

class Shared {
public:
    static constexpr bool kIsShared = true;

    Shared(WorkingMesh& work, ThreadWorkRecord& record, CriticalSections& sections)
        : work_(work), record_(record), sections_(sections) {}

    using Guard = std::lock_guard<CriticalSection>;
    [[nodiscard]] Guard activeVertices() const { return Guard(sections_.csActiveVertices); }
    [[nodiscard]] Guard activeTriangles() const { return Guard(sections_.csActiveTriangles); }
    [[nodiscard]] Guard borderVertices() const { return Guard(sections_.csBorderVertices); }
    [[nodiscard]] Guard symmetrySlaves() const { return Guard(sections_.csSymmetrySlaves); }
    [[nodiscard]] Guard uvSeams() const { return Guard(sections_.csUvSeams); }
    [[nodiscard]] Guard cornerBlocks() const { return Guard(sections_.csCornerBlocks); }

    void unqueue(std::int32_t vertex) { record_.removedVertices.push_back(vertex); }
    /// A vertex that is not queued belongs to this thread alone.
    void penalize(std::int32_t vertex) {
        VertexRecord& refused = work_.mesh.vertices[vertex];
        if (work_.costQueue.isQueued(vertex)) {
            record_.appendUpdate(vertex, penalizedCost(refused.cost), refused.partner);
        } else {
            refused.cost = penalizedCost(refused.cost);
        }
    }
    void rankAgain(std::int32_t vertex, const RankedVertex& ranked) {
        record_.appendUpdate(vertex, ranked.cost, ranked.partner);
    }

    // The entry of slot s is s places after the first one appended.
    void beginRing(std::span<const std::int32_t> ring) {
        first_ = record_.updateVertices.size();
        for (const std::int32_t vertex : ring)
            record_.appendUpdate(vertex, kNotCollapsible, kNone);
    }
    void rank(std::uint16_t slot, std::int32_t /*vertex*/, const RankedVertex& ranked) {
        record_.updateCosts[first_ + slot] = ranked.cost;
        record_.updatePartners[first_ + slot] = ranked.partner;
    }
    static void endRing(std::span<const std::int32_t> /*ring*/) {}

    // With other threads at work there is no good guess.
    [[nodiscard]] static std::int32_t guessNext() { return kNone; }

private:
    WorkingMesh& work_;
    ThreadWorkRecord& record_;
    CriticalSections& sections_;
    std::size_t first_ = 0;
};

/// What Alone and Shared offer: a guard for each kind of data that several vertices share, changes
/// of the queue, and the ranking of a kept vertex and its ring, in which slot s is the place of a
/// vertex in the ring.
template <typename Sharing>
concept SharingPolicy = requires(Sharing& sharing, std::int32_t vertex, const RankedVertex& ranked,
                                 std::span<const std::int32_t> ring, std::uint16_t slot) {
    { Sharing::kIsShared } -> std::convertible_to<bool>;
    sharing.activeVertices();
    sharing.activeTriangles();
    sharing.borderVertices();
    sharing.symmetrySlaves();
    sharing.uvSeams();
    sharing.cornerBlocks();

    sharing.unqueue(vertex);            // takes it out of the queue
    sharing.penalize(vertex);           // raises its cost, queued or not
    sharing.rankAgain(vertex, ranked);  // stores a new cost and queues it by that

    sharing.beginRing(ring);  // forgets the costs
    sharing.rank(slot, vertex, ranked);
    sharing.endRing(ring);  // queues all but the slaves

    /// The vertex that will probably collapse next, or kNone.
    { sharing.guessNext() } -> std::same_as<std::int32_t>;
};
static_assert(SharingPolicy<Alone> && SharingPolicy<Shared>);

}  // namespace korvalite::core
