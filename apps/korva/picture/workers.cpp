// SPDX-License-Identifier: MIT
#include "korva/picture/workers.h"

#include <atomic>
#include <exception>
#include <mutex>
#include <system_error>
#include <thread>
#include <vector>

namespace korva {

void shareWork(std::size_t count, int threads, const std::function<void(std::size_t)>& work) {
    std::atomic<std::size_t> next = 0;
    std::exception_ptr failure;
    std::mutex failureMutex;
    const auto workOn = [&] {
        try {
            for (std::size_t index = next++; index < count; index = next++)
                work(index);
        } catch (...) {
            const std::scoped_lock lock(failureMutex);
            if (!failure) failure = std::current_exception();
            next = count;
        }
    };
    {
        std::vector<std::jthread> others;
        try {
            for (std::size_t i = 1; i < static_cast<std::size_t>(threads) && i < count; ++i)
                others.emplace_back(workOn);
        } catch (const std::exception&) {
            // No more threads, or no memory for them: those that exist do the work.
        }
        workOn();
    }
    if (failure) std::rethrow_exception(failure);
}

}  // namespace korva
