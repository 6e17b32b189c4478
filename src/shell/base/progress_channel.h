// SPDX-License-Identifier: MIT
//
// The only live link to the host: a record of 176 bytes in the marker file, which the host creates,
// watches, and deletes to stop the job. Every failure here is silent and costs that update only.
//
// A channel is closed, then open, then has a main task and within it a sub-task, nested one deep.
// An operation that does not fit the state does nothing and returns false; else it returns true,
// whether or not the file could be written.
//
// Begin and end operations run on the main thread; SetSubTaskProgress from one thread at a time.
// The stop bytes change between decimation runs only, so any thread may test them.
#pragma once

#include "shell/base/heap_string.h"

#include <array>
#include <cstddef>
#include <cstdint>

namespace korvalite {

struct ProgressRecord {
    static constexpr std::size_t kByteCount = 176;
    static constexpr std::size_t kTextBytes = 80;  // with the zero at the end
    using Text = std::array<char, kTextBytes>;
    using Image = std::array<unsigned char, kByteCount>;

    std::uint8_t open = 0;
    std::uint8_t mainActive = 0;
    std::uint8_t subActive = 0;
    Text mainText{};
    Text subText{};
    std::uint8_t reserved = 0;  // kept as read
    std::int32_t subTotal = 0;  // -1 for no total
    std::int32_t subDone = 0;
    std::uint8_t stageFlag1 = 0;  // the decimation of a mesh has begun
    std::uint8_t stageFlag2 = 0;
    std::uint8_t stopCurrent = 0;  // asks the decimation loop to end
    std::uint8_t stopAll = 0;      // asks the whole batch to end

    /// The file image: fields in order, no padding, little-endian words.
    [[nodiscard]] Image encode() const;
    static ProgressRecord decode(const Image& image);
};

class ProgressChannel {
public:
    /// While it is not enabled, stop bytes have no effect.
    void setEnabled(bool enabled) { enabled_ = enabled; }

    /// Opens without a file: tasks then act on the record in memory. Nothing if already open.
    void openWithoutFile();

    /// Takes `path` as the progress file and reads the record, whose `open` byte then tells whether
    /// the channel is open. False, with nothing done, if already open or `path` is no regular file.
    bool openFile(const HeapString& path);

    /// True without a file. A short file leaves the rest of the record as it was; one that cannot
    /// be opened closes the channel and gives false.
    bool ReadRecord();

    /// True without a file. Overwrites the file in place and never creates it.
    bool WriteRecord();

    bool BeginMainTask(const HeapString& text);
    bool EndMainTask();

    /// `total` is -1 for no total.
    bool BeginSubTask(const HeapString& text, std::int32_t total);
    bool EndSubTask();

    /// A new text for the running sub-task; the file shows it with the next write.
    bool SetSubTaskText(const HeapString& text);

    /// Cheap: for every turn of a loop. Writes at most about twice a second.
    bool SetSubTaskProgress(std::int32_t done) {
        if (record_.subActive == 0) return false;
        record_.subDone = done;
        if (!path_.empty()) writeIfDue();
        return true;
    }

    /// True without a file. Gives the file half a second to show up; if it stays away, the host
    /// asks to stop the whole batch: `stopAll` is set, and the result is false.
    bool CheckFilePresent();

    /// Clears the record and deletes the file.
    bool Close();

    /// If enabled, tell the host that the decimation of a mesh has begun: with the first flag alone
    /// when several threads share it, else with both.
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
    std::int64_t lastWriteClock_ = 0;  // milliseconds, of the last attempt
};

/// The channel of this process.
ProgressChannel& progressChannel();

}  // namespace korvalite
