// SPDX-License-Identifier: MIT
#include "korva/batch/mesh_pool.h"

#include <korvalite/korvalite.h>

#include <new>
#include <thread>
#include <utility>
#include <vector>

namespace korva {

namespace {

bool isBadAlloc(const std::exception_ptr& failure) {
    try {
        if (failure) std::rethrow_exception(failure);
    } catch (const std::bad_alloc&) {
        return true;
    } catch (...) {
        return false;
    }
    return false;
}

bool isCancelled(const std::exception_ptr& failure) {
    try {
        if (failure) std::rethrow_exception(failure);
    } catch (const korvalite::Error& error) {
        return error.code() == korvalite::ErrorCode::Cancelled;
    } catch (...) {
        return false;
    }
    return false;
}

}  // namespace

MeshPool::MeshPool(Schedule schedule, std::function<bool()> isInterrupted)
    : schedule_(std::move(schedule)), isInterrupted_(std::move(isInterrupted)) {}

void MeshPool::startWorkers(std::size_t count, const Calls& calls,
                            std::vector<std::jthread>& workers) {
    try {
        while (workers.size() + 1 < count)
            workers.emplace_back([&] { workThrough(calls); });
    } catch (const std::exception&) {
        return;  // the system has no more threads or memory for them, and fewer do as well
    }
}

void MeshPool::run(std::size_t threads, const Calls& calls) {
    {
        std::vector<std::jthread> workers;
        startWorkers(threads, calls, workers);
        workThrough(calls);
    }
    if (failure_) std::rethrow_exception(failure_);
}

void MeshPool::workThrough(const Calls& calls) {
    while (const std::optional<std::size_t> mesh = take(calls)) {
        std::exception_ptr failure;
        try {
            calls.work(*mesh);
        } catch (...) {
            failure = std::current_exception();
        }
        finish(calls, *mesh, failure);
    }
}

std::optional<std::size_t> MeshPool::take(const Calls& calls) {
    std::unique_lock lock(mutex_);
    for (;;) {
        if (isStopping() || schedule_.allStarted()) return std::nullopt;
        if (const std::optional<std::size_t> mesh = schedule_.next()) {
            try {
                calls.starts(*mesh);
                return mesh;
            } catch (...) {
                stopFor(std::current_exception());
                return std::nullopt;
            }
        }
        // After an interrupt, a running mesh ends and wakes the threads that wait.
        changed_.wait(lock);
    }
}

void MeshPool::finish(const Calls& calls, std::size_t mesh, const std::exception_ptr& failure) {
    const std::lock_guard lock(mutex_);
    try {
        end(calls, mesh, failure);
    } catch (...) {
        stopFor(std::current_exception());
    }
    changed_.notify_all();
}

void MeshPool::end(const Calls& calls, std::size_t mesh, const std::exception_ptr& failure) {
    if (isBadAlloc(failure)) {
        if (schedule_.finishForLackOfMemory(mesh)) return;
    } else {
        schedule_.finish(mesh);
    }
    if (isCancelled(failure) && isStopping()) return;
    calls.ended(mesh, failure);
}

void MeshPool::stopFor(std::exception_ptr failure) {
    isStopping_ = true;
    if (!failure_) failure_ = std::move(failure);
    changed_.notify_all();
}

}  // namespace korva
