// SPDX-License-Identifier: MIT
#pragma once

#include "platform/platform.h"
#include "support/progress_image.h"
#include "support/scratch_folder.h"
#include "support/tool_run.h"

#include <csignal>
#include <fcntl.h>
#include <functional>
#include <stdexcept>
#include <string>
#include <unistd.h>
#include <utility>
#include <vector>

namespace korvalite::core::test {

// The marker file of a host that sees every record the tool writes, however fast the tool is.
//
// A lease on the file makes the system hold any process that opens it to write. Before such a write
// may continue, a new file with a lease takes over the path, so that the next write is held as
// well.
class HeldMarker {
public:
    HeldMarker(std::string path, const ProgressImage& image) : path_(std::move(path)) {
        oldHandler_ = std::signal(SIGIO, SIG_IGN);  // sent by the system when it holds a writer
        file_ = place(image.bytes());
    }
    ~HeldMarker() {
        release(written_);
        release(file_);
        std::signal(SIGIO, oldHandler_);
    }
    HeldMarker(const HeldMarker&) = delete;
    HeldMarker& operator=(const HeldMarker&) = delete;

    // Follows the tool to its end and returns the records in the order of their writes. Once the
    // tool waits for its next write, `seen` gets the last record; if it returns false, the marker
    // is deleted at once.
    std::vector<ProgressImage> follow(RunningTool& tool,
                                      const std::function<bool(const ProgressImage&)>& seen) {
        std::vector<ProgressImage> records;
        while (waitForWriter(tool)) {
            if (takeRecord(records) && !seen(records.back())) {
                platform::deleteFile(path_.c_str());
                release(file_);
                tool.wait();
                return records;
            }
            letWrite();
        }
        takeRecord(records);
        return records;
    }
    std::vector<ProgressImage> follow(RunningTool& tool) {
        return follow(tool, [](const ProgressImage&) { return true; });
    }

private:
    // Puts a new file at the path, ready to hold a writer, and returns it open for reading.
    int place(const std::string& bytes) const {
        const std::string fresh = path_ + ".fresh";
        writeWhole(fresh, bytes);
        const int file = open(fresh.c_str(), O_RDONLY | O_CLOEXEC);
        if (file < 0 || fcntl(file, F_SETLEASE, F_RDLCK) != 0)
            throw std::runtime_error("no lease on " + fresh);
        std::filesystem::rename(pathOfUtf8(fresh), pathOfUtf8(path_));
        return file;
    }
    // Returns false if the tool has ended without another write.
    bool waitForWriter(RunningTool& tool) const {
        bool isRunning = true;
        while (isRunning) {
            isRunning = tool.isRunning();
            if (fcntl(file_, F_GETLEASE) != F_RDLCK) return true;
            platform::sleepMilliseconds(1);
        }
        return false;
    }
    void letWrite() {
        written_ = std::exchange(file_, place(contentOf(file_)));
        fcntl(written_, F_SETLEASE, F_UNLCK);
    }
    // Takes what the tool wrote when it last could. Returns false if it has not written yet.
    bool takeRecord(std::vector<ProgressImage>& records) {
        if (written_ < 0) return false;
        records.emplace_back(contentOf(written_));
        release(written_);
        return true;
    }
    static std::string contentOf(int file) {
        std::string bytes(2 * ProgressImage::kByteCount, '\0');
        const ssize_t got = pread(file, bytes.data(), bytes.size(), 0);
        bytes.resize(got > 0 ? static_cast<std::size_t>(got) : 0);
        return bytes;
    }
    static void release(int& file) {
        if (file >= 0) close(file);
        file = -1;
    }

    std::string path_;
    int file_ = -1;     // now at the path
    int written_ = -1;  // previously at the path
    void (*oldHandler_)(int) = nullptr;
};

}  // namespace korvalite::core::test
