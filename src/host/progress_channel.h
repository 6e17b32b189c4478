// SPDX-License-Identifier: MIT
//
// The only live link to the host: a record of 176 bytes in the marker file, which the host creates,
// watches, and deletes to stop the job. Failures here are silent and lose only the current update.
//
// A channel is closed or open; an open channel may have a main task, and that may have one
// sub-task. An operation that does not match the state does nothing and returns false; otherwise it
// returns true, whether or not the file could be written.
//
// Begin and end operations run on the main thread, SetSubTaskProgress on one thread at a time. The
// stop bytes change only between decimation runs, so any thread may test them.
#pragma once

#include "base/heap_string.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace korvalite::core {

struct ProgressRecord {
    static constexpr std::size_t kByteCount = 176;
    static constexpr std::size_t kTextBytes = 80;  // including the terminating zero
    using Text = std::array<char, kTextBytes>;
    using Image = std::array<unsigned char, kByteCount>;

    std::uint8_t open = 0;
    std::uint8_t mainActive = 0;
    std::uint8_t subActive = 0;
    Text mainText{};
    Text subText{};
    std::uint8_t reserved = 0;  // preserved
    std::int32_t subTotal = 0;  // -1 if unknown
    std::int32_t subDone = 0;
    std::uint8_t stageFlag1 = 0;  // the decimation of a mesh has started
    std::uint8_t stageFlag2 = 0;
    std::uint8_t stopCurrent = 0;  // asks the decimation loop to end
    std::uint8_t stopAll = 0;      // asks the whole batch to end

    /// The file image: fields in order, without padding, words in little-endian.
    [[nodiscard]] Image encode() const;
    static ProgressRecord decode(const Image& image);
};

class ProgressChannel {
public:
    /// Stop bytes have no effect unless the channel is enabled.
    void setEnabled(bool enabled) { enabled_ = enabled; }

    /// Opens without a file: tasks then only change the record in memory. No effect if already
    /// open.
    void openWithoutFile();

    /// Takes `path` as the progress file and reads the record; the channel is then open if the
    /// record's `open` byte is set. False, with no effect, if already open or `path` is not a
    /// regular file.
    bool openFile(const HeapString& path);

    /// True without a file. A short file leaves the rest of the record unchanged. If the file
    /// cannot be opened, closes the channel and returns false.
    bool ReadRecord();

    /// True without a file. Overwrites the file in place and never creates it.
    bool WriteRecord();

    bool BeginMainTask(const HeapString& text);
    bool EndMainTask();

    /// `total` is -1 if unknown.
    bool BeginSubTask(const HeapString& text, std::int32_t total);
    bool EndSubTask();

    /// Changes the text of the running sub-task; it appears in the file with the next write.
    bool SetSubTaskText(const HeapString& text);

    /// Cheap enough for every iteration of a loop. Writes at most about twice a second.
    bool SetSubTaskProgress(std::int32_t done) {
        if (record_.subActive == 0) return false;
        record_.subDone = done;
        if (!path_.empty()) writeIfDue();
        return true;
    }

    /// True without a file. Gives the file half a second to appear. If it does not, the host wants
    /// to stop the whole batch: sets `stopAll` and returns false.
    bool CheckFilePresent();

    /// Clears the record and deletes the file.
    bool Close();

    /// If enabled, tell the host that the decimation of a mesh has started: with only the first
    /// flag if several threads share it, else with both.
    void raiseFirstStageFlag();
    void raiseStageFlags();

    [[nodiscard]] bool stopRequested() const {
        return enabled_ && (record_.stopCurrent != 0 || record_.stopAll != 0);
    }
    [[nodiscard]] bool stopAllRequested() const { return enabled_ && record_.stopAll != 0; }

    [[nodiscard]] bool enabled() const { return enabled_; }
    [[nodiscard]] const HeapString& path() const { return path_; }
    [[nodiscard]] const ProgressRecord& record() const { return record_; }

private:
    void writeIfDue();

    bool enabled_ = false;
    HeapString path_;
    ProgressRecord record_;
    std::int64_t lastWriteClock_ = 0;  // of the last attempt, in milliseconds
};

/// The channel of this process.
ProgressChannel& progressChannel();

}  // namespace korvalite::core
