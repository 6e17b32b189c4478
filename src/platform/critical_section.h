// SPDX-License-Identifier: MIT
#pragma once

#include <mutex>

namespace korvalite {

/// A mutex for stays of a microsecond: who finds it taken looks again for a while before it sleeps,
/// as going to sleep and being woken takes longer than such a stay.
class CriticalSection {
public:
    void lock() {
        constexpr int kLooks = 200;
        for (int look = 0; look < kLooks; ++look) {
            if (mutex_.try_lock()) return;
            pause();
        }
        mutex_.lock();
    }
    void unlock() { mutex_.unlock(); }

private:
    static void pause() {
#if defined(__x86_64__) || defined(__i386__)
        __builtin_ia32_pause();
#endif
    }

    std::mutex mutex_;
};

}  // namespace korvalite
