// SPDX-License-Identifier: MIT
#include "shell/batch_driver.h"

#include "base/debug_log.h"
#include "drivers/run_decimation.h"
#include "formats/file_formats.h"
#include "host/host_monitor.h"
#include "host/job_paths.h"
#include "host/progress_channel.h"
#include "platform/platform.h"
#include "progressive/level_update.h"
#include "progressive/progressive_mesh.h"
#include "shell/apply_settings.h"
#include "shell/input_files.h"

namespace korvalite::core {

namespace {

constexpr int kDone = 0;
constexpr int kFailed = 1;  // nothing was done: the files do not match the kind
constexpr int kOutOfMemory = 2;

// COMPAT: also after a failure, and even if it is the new output; hosts rely on it.
void deleteInputIfAsked(const BatchSettings& settings) {
    if (settings.DeleteInputFile && !settings.InputFile.empty())
        platform::deleteFile(settings.InputFile.c_str());
}

/// Returns true if two inputs have the same name, after showing a message box and deleting the
/// inputs of entries that ask for it.
bool refuseDuplicateInputs(const std::forward_list<BatchEntry>& entries) {
    const std::string lines = duplicateInputLines(entries);
    if (lines.empty()) return false;
    // COMPAT: inputs are deleted although no entry runs; hosts rely on it.
    for (const BatchEntry& entry : entries)
        deleteInputIfAsked(entry.settings);
    const std::string text =
        "Several Subforms have the same name in this tool:\n" + lines +
        "Please, change these Subform names and ensure all Subforms have unique names!";
    platform::messageBox("Cannot preprocess this Tool!", text.c_str());
    return true;
}

void nameCurrentMesh(const HeapString& inputFile) {
    HeapString name = inputFile.GetFileBaseName();
    // COMPAT: hosts show the name without an ".I" at its end.
    if (name.EndsWith(".I")) name.cutAt(name.length() - 2);
    SetCurrentMeshName(name);
}

int decimate(ProgressiveMesh& pm, std::int32_t target) {
    // COMPAT: a negative target becomes huge, so nothing is decimated; old jobs rely on it.
    pm.TargetNumItem = static_cast<std::uint32_t>(target);
    pm.targetCountsVertices = true;
    pm.recordVSplits = true;
    const int result = RunDecimation(pm);
    if (result == kDone) pm.CurVtxSplitPos = static_cast<std::int32_t>(pm.vsplitList.NumVtxSplit());
    return result;
}

int changeLevel(ProgressiveMesh& pm, std::int32_t target) {
    pm.targetCountsVertices = true;
    return updateMeshAtLevel(pm, target);
}

std::int32_t lowestVertexCount(const BatchSettings& settings, std::uint32_t) {
    return settings.ProgressiveMeshMinNum;
}

/// What an entry of a kind needs and runs. No two kinds need the same files, so an entry without a
/// kind gets it from its files.
struct KindRow {
    BatchKind kind;
    FileContent input;
    FileContent output;
    std::int32_t (*target)(const BatchSettings& settings, std::uint32_t vertexCount);
    int (*run)(ProgressiveMesh& pm, std::int32_t target);
};

constexpr KindRow kKinds[] = {
    {kBuildProgressiveMesh, FileContent::Mesh, FileContent::ProgressiveMesh, lowestVertexCount,
     decimate},
    {kDecimateMesh, FileContent::Mesh, FileContent::Mesh, targetVertexCount, decimate},
    {kDecimateProgressiveMesh, FileContent::ProgressiveMesh, FileContent::Mesh, targetVertexCount,
     changeLevel},
};

int work(const BatchEntry& entry, FileContent input, ProgressiveMesh& pm) {
    const FileContent output = fileFormatOf(entry.settings.OutputFile).content;
    const auto vertexCount = static_cast<std::uint32_t>(pm.mesh.vertices.size());
    for (const KindRow& row : kKinds) {
        const bool kindFits = entry.kind == kBatchKindUnset || entry.kind == row.kind;
        if (kindFits && input == row.input && output == row.output)
            return row.run(pm, row.target(entry.settings, vertexCount));
    }
    return kFailed;
}

void save(const HeapString& outputFile, ProgressiveMesh& pm, std::int32_t versionCode) {
    progressChannel().BeginSubTask("Writing file to disk", -1);
    // COMPAT: a failure shows no message box; hosts look for the file.
    fileFormatOf(outputFile).write(outputFile, pm, versionCode);
    progressChannel().EndSubTask();
}

// COMPAT: all failures share one text that hosts know; only the dash tells them from a real lack.
void showFailure(int result, const HeapString& inputFile) {
    const char* reason =
        result == kOutOfMemory ? "Not Enough Memory For " : "- Not Enough Memory For ";
    const HeapString text = reason + inputFile;
    platform::messageBox("Korvalite", text.c_str());
}

void performBatch(const BatchEntry& entry, std::int32_t versionCode) {
    const BatchSettings& settings = entry.settings;
    ProgressChannel& progress = progressChannel();
    ProgressiveMesh pm;
    pm.monitor = &hostMonitor();
    pm.vsplitList.scratchFolder = JobDirectory();
    nameCurrentMesh(settings.InputFile);

    progress.BeginMainTask(CurrentMeshName());
    progress.BeginSubTask("Read mesh file", -1);
    const FileContent input = LoadInputInProgMesh(settings, pm);
    progress.EndSubTask();

    const int result = work(entry, input, pm);
    if (result == kDone)
        save(settings.OutputFile, pm, versionCode);
    else
        showFailure(result, settings.InputFile);
    progress.EndMainTask();
    deleteInputIfAsked(settings);
}

}  // namespace

void PerformAllBatch(const JobConfig& job) {
    if (refuseDuplicateInputs(job.batchList)) return;
    for (const BatchEntry& entry : job.batchList) {
        DebugLog("ONE BATCH ...");
        if (progressChannel().stopAllRequested()) return;
        performBatch(entry, job.versionCode);
    }
}

}  // namespace korvalite::core
