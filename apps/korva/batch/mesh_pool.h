// SPDX-License-Identifier: MIT
#pragma once

#include "korva/batch/schedule.h"

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <exception>
#include <functional>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace korva {

/// Works on several meshes at once, as a schedule allows.
class MeshPool {
public:
    struct Calls {
        /// Does the work for a mesh, on one of the pool's threads. Throws if it fails.
        std::function<void(std::size_t mesh)> work;
        /// Never called for two meshes at once: before the work for one starts, and after it has
        /// ended, with what it threw, if anything. An exception from either ends everything.
        std::function<void(std::size_t mesh)> starts;
        std::function<void(std::size_t mesh, std::exception_ptr failure)> ended;
    };

    /// `isInterrupted` may be called from several threads at once.
    MeshPool(Schedule schedule, std::function<bool()> isInterrupted);

    /// Returns when all meshes have ended or, after an interrupt, the running ones. Throws the
    /// first exception from `starts` or `ended`. May be called once.
    void run(std::size_t threads, const Calls& calls);

    /// Whether running meshes should end at once. They then throw Error(Cancelled), which is not
    /// reported.
    [[nodiscard]] bool isStopping() const { return isStopping_ || isInterrupted_(); }

private:
    /// The calling thread is one of `count`.
    void startWorkers(std::size_t count, const Calls& calls, std::vector<std::jthread>& workers);
    void workThrough(const Calls& calls);
    /// Waits for a mesh to work on. Nothing if there is no more.
    std::optional<std::size_t> take(const Calls& calls);
    void finish(const Calls& calls, std::size_t mesh, const std::exception_ptr& failure);
    void end(const Calls& calls, std::size_t mesh, const std::exception_ptr& failure);
    void stopFor(std::exception_ptr failure);

    Schedule schedule_;
    std::function<bool()> isInterrupted_;
    std::mutex mutex_;  // held for the schedule and the calls
    std::condition_variable changed_;
    std::exception_ptr failure_;
    std::atomic<bool> isStopping_ = false;
};

}  // namespace korva
