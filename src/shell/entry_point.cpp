// SPDX-License-Identifier: MIT
#include "shell/entry_point.h"

#include "base/debug_log.h"
#include "host/job_paths.h"
#include "host/progress_channel.h"
#include "platform/platform.h"
#include "shell/batch_driver.h"
#include "shell/job_file.h"

namespace korvalite::core {

namespace {

constexpr const char* kJobSuffix = ".kvc";
constexpr std::int32_t kJobSuffixLength = 4;

// COMPAT: compares bytes: "job.KVC" is not a job file; hosts rely on it.
bool isJobPath(const HeapString& path) {
    const std::int32_t start = path.length() - kJobSuffixLength;
    return start >= 0 && CompareExact(path.c_str() + start, kJobSuffix) == 0;
}

/// False if the path is refused or cannot be read; the job then has its defaults.
bool readJob(const HeapString& path, JobConfig& job) {
    ResetJobConfig(job);
    if (!isJobPath(path) || !LoadJobFile(path, job)) return false;
    job.batchList.reverse();
    DebugLog("CONFIG PARSED!");
    return true;
}

// COMPAT: a path without a separator is returned whole, and then there is no scratch file.
HeapString directoryOf(const HeapString& path) {
    HeapString directory = path;
    directory.cutAt(path.FindLastOf("/\\"));
    return directory;
}

void keepTempFiles(JobConfig& job) {
    job.DeleteConfigFile = false;
    for (BatchEntry& entry : job.batchList)
        entry.settings.DeleteInputFile = false;
}

void openProgressChannel(const JobConfig& job, const HeapString& markerPath) {
    progressChannel().setEnabled(true);
    if (job.UseProgressBar) {
        progressChannel().openFile(markerPath);
    } else {
        progressChannel().openWithoutFile();
        platform::deleteFile(markerPath.c_str());
    }
}

void runJob(JobConfig& job, const HeapString& jobPath, const HeapString& markerPath) {
    SetJobDirectory(directoryOf(jobPath));
    if (job.KeepTempFiles) keepTempFiles(job);
    openProgressChannel(job, markerPath);
    DebugLog("Before Perform All Batch");
    PerformAllBatch(job);
    DebugLog("After Perform All Batch");
    progressChannel().Close();
}

}  // namespace

// COMPAT: 0 even if entries failed; hosts look at the output files.
int runKorvalite(const HeapString& commandTail) {
    DebugLog("CmdLine=%s", commandTail.c_str());
    const HeapString& jobPath = commandTail;
    const HeapString markerPath = jobPath + ".running";

    JobConfig job;
    if (readJob(jobPath, job)) runJob(job, jobPath, markerPath);

    if (job.DeleteConfigFile) platform::deleteFile(jobPath.c_str());
    platform::deleteFile(markerPath.c_str());
    return 0;
}

}  // namespace korvalite::core
