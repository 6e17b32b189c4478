// SPDX-License-Identifier: MIT
#pragma once

#include "host/progress_channel.h"
#include "support/progress_image.h"
#include "support/scratch_folder.h"

namespace korvalite::core::test {

// The process's progress channel with a host, open during the lifetime of this object.
class HostedProgress {
public:
    explicit HostedProgress(ProgressImage image = ProgressImage::opened()) {
        const std::string path = folder_ / u8"job.kvc.running";
        writeWhole(path, image.bytes());
        progressChannel().openFile(path.c_str());
        progressChannel().setEnabled(true);
    }
    ~HostedProgress() {
        progressChannel().setEnabled(false);
        progressChannel().Close();
    }
    // Writes the request and makes the tool read it at once.
    static void askToStop() {
        progressChannel().WriteRecord();
        const std::string path = progressChannel().path().c_str();
        ProgressImage image(readWhole(path));
        image.setByte(ProgressImage::kStopCurrent, 1);
        writeWhole(path, image.bytes());
        progressChannel().ReadRecord();
    }
    HostedProgress(const HostedProgress&) = delete;
    HostedProgress& operator=(const HostedProgress&) = delete;

private:
    ScratchFolder folder_;
};

// A host that has asked to stop the current decimation.
class StopRequest : public HostedProgress {
public:
    StopRequest() : HostedProgress(asking()) {}

private:
    static ProgressImage asking() {
        ProgressImage image = ProgressImage::opened();
        image.setByte(ProgressImage::kStopCurrent, 1);
        return image;
    }
};

}  // namespace korvalite::core::test
