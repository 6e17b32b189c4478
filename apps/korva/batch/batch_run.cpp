// SPDX-License-Identifier: MIT
#include "korva/batch/batch_run.h"

#include "korva/batch/batch_progress.h"
#include "korva/batch/earlier_run.h"
#include "korva/batch/memory_need.h"
#include "korva/batch/mesh_pool.h"
#include "korva/batch/simplify_file.h"
#include "korva/batch/summary.h"
#include "korva/numbers.h"

#include <algorithm>
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <set>
#include <system_error>
#include <utility>

namespace korva {

namespace {

namespace fs = std::filesystem;

void makeFolder(const fs::path& folder) {
    std::error_code failure;
    fs::create_directories(folder, failure);
    if (!fs::is_directory(folder, failure))
        throw korvalite::Error(korvalite::ErrorCode::CannotWrite,
                               "Cannot write to the folder " + textOf(folder) +
                                   ": it cannot be created; is it protected, or a file?");
}

/// Fills in the sentence and the code for what the work on a mesh threw.
void describe(const std::exception_ptr& failure, MeshRecord& record) {
    record.status = MeshStatus::Failed;
    try {
        std::rethrow_exception(failure);
    } catch (const korvalite::Error& error) {
        record.code = exitCodeOf(error.code());
        record.sentence = error.what();
    } catch (const std::bad_alloc&) {
        record.code = ExitCode::NoMemory;
        record.sentence = "There is not enough memory for this mesh.";
    } catch (const std::exception& error) {
        record.code = ExitCode::BadInput;
        record.sentence = error.what();
    } catch (...) {
        record.code = ExitCode::BadInput;
        record.sentence = "It failed for an unknown reason.";
    }
}

void fill(MeshRecord& record, const Outcome& outcome) {
    const korvalite::Report& report = outcome.report;
    record.status = report.missed ? MeshStatus::Missed : MeshStatus::Done;
    record.missedTarget = report.missed;
    record.verticesBefore = report.inputVertices;
    record.trianglesBefore = report.inputTriangles;
    record.verticesAfter = outcome.vertices;
    record.trianglesAfter = outcome.triangles;
    record.asked = report.asked;
    record.seconds = outcome.seconds;
    record.sentence = report.advice;
    record.notes = outcome.notes;
}

std::string gigabytes(std::uint64_t bytes) {
    const std::uint64_t tenths = (bytes + 99'999'999) / 100'000'000;
    return std::to_string(tenths / 10) + '.' + std::to_string(tenths % 10) + " GB";
}

class Batch {
public:
    Batch(const BatchOptions& options, const Console& console, std::function<bool()> isInterrupted);
    ExitCode run();

private:
    static WorkListOptions listOptions(const BatchOptions& options, const EarlierRun& earlier);
    [[nodiscard]] std::set<std::string> allOutputs() const;
    void skipWhatIsDone();
    void estimate();
    void work(MeshPool& pool, std::size_t index);
    void starts(std::size_t index);
    void ended(std::size_t index, const std::exception_ptr& failure);
    void finish();
    [[nodiscard]] std::string totals() const;
    [[nodiscard]] std::vector<std::uint64_t> bytesToDo() const;

    const BatchOptions& options_;
    const Console& console_;
    std::function<bool()> isInterrupted_;
    EarlierRun earlier_;
    std::vector<WorkItem> items_;
    Summary summary_;
    // Of the meshes that are not done yet:
    std::vector<std::size_t> toDo_;  // as indices of items_
    std::vector<std::uint64_t> needs_;
    std::vector<Outcome> outcomes_;
    std::unique_ptr<BatchProgress> progress_;
};

Batch::Batch(const BatchOptions& options, const Console& console,
             std::function<bool()> isInterrupted)
    : options_(options), console_(console), isInterrupted_(std::move(isInterrupted)),
      earlier_(readEarlierRun(options.list.outFolder)),
      items_(makeWorkList(options.source, listOptions(options, earlier_))),
      summary_(options.list.outFolder, settingsText(options), allOutputs(), items_.size()) {}

WorkListOptions Batch::listOptions(const BatchOptions& options, const EarlierRun& earlier) {
    WorkListOptions list = options.list;
    list.earlierOutputs = earlier.outputs;
    return list;
}

/// Those of this run, whether it ends or not, and of earlier runs if they are still there.
std::set<std::string> Batch::allOutputs() const {
    std::set<std::string> outputs;
    for (const std::string& output : earlier_.outputs) {
        std::error_code ignored;
        if (fs::exists(pathOf(output), ignored)) outputs.insert(output);
    }
    for (const WorkItem& item : items_)
        outputs.insert(absoluteText(item.output));
    return outputs;
}

ExitCode Batch::run() {
    makeFolder(options_.list.outFolder);
    if (earlier_.isDamaged)
        console_.say("The summary in " + textOf(options_.list.outFolder) +
                     " is damaged; every mesh is done again.");
    skipWhatIsDone();
    // From here on, an output may be newer than what the old summary says about it.
    summary_.save();
    estimate();
    outcomes_.resize(toDo_.size());
    progress_ = std::make_unique<BatchProgress>(console_, bytesToDo());
    const std::size_t threads = std::min(options_.mostAtOnce, toDo_.size());
    MeshPool pool(Schedule(needs_, options_.memoryBytes, options_.mostAtOnce), isInterrupted_);
    pool.run(threads, {.work = [&](std::size_t i) { work(pool, i); },
                       .starts = [&](std::size_t i) { starts(i); },
                       .ended = [&](std::size_t i, const std::exception_ptr& f) { ended(i, f); }});
    progress_.reset();
    finish();
    return summary_.exitCode(options_.isStrict);
}

void Batch::skipWhatIsDone() {
    const bool mayBeDone = !options_.doAgain && earlier_.settings == settingsText(options_);
    for (std::size_t i = 0; i < items_.size(); ++i) {
        const MeshRecord* finished = mayBeDone ? finishedRecord(earlier_, items_[i]) : nullptr;
        if (finished == nullptr) {
            toDo_.push_back(i);
            continue;
        }
        MeshRecord record = *finished;
        record.status = MeshStatus::Skipped;
        summary_.set(i, std::move(record));
        if (!console_.json) std::printf("%s: done already.\n", textOf(items_[i].output).c_str());
    }
}

void Batch::estimate() {
    for (const std::size_t i : toDo_) {
        // After an interrupt nothing starts, so it does not matter what it needs.
        needs_.push_back(isInterrupted_() ? 0
                                          : memoryNeedOf(items_[i].input, options_.engine.threads));
    }
}

std::vector<std::uint64_t> Batch::bytesToDo() const {
    std::vector<std::uint64_t> bytes;
    for (const std::size_t i : toDo_)
        bytes.push_back(items_[i].bytes);
    return bytes;
}

void Batch::work(MeshPool& pool, std::size_t index) {
    outcomes_[index] = simplifyFile(items_[toDo_[index]], options_, [&](double fraction) {
        progress_->show(index, fraction);
        return !pool.isStopping();
    });
}

void Batch::starts(std::size_t index) {
    if (needs_[index] <= options_.memoryBytes || console_.quiet) return;
    progress_->print(stderr, textOf(items_[toDo_[index]].input) + ": this may take " +
                                 gigabytes(needs_[index]) + " of memory, more than the " +
                                 gigabytes(options_.memoryBytes) + " allowed, so it runs alone.");
}

void Batch::ended(std::size_t index, const std::exception_ptr& failure) {
    const WorkItem& item = items_[toDo_[index]];
    const std::string name = textOf(item.input);
    const Outcome outcome = std::exchange(outcomes_[index], {});
    MeshRecord record;
    record.input = absoluteText(item.input);
    record.output = absoluteText(item.output);
    record.bytes = item.bytes;
    record.modified = item.modified;
    record.memoryBytes = needs_[index];
    progress_->show(index, 1);
    if (failure) {
        describe(failure, record);
        const bool isNamed = record.sentence.find(name) != std::string::npos;
        progress_->print(stderr, isNamed ? record.sentence : name + ": " + record.sentence);
    } else {
        fill(record, outcome);
        for (const std::string& note : outcome.notes)
            if (!console_.quiet) progress_->print(stderr, std::string(name).append(": ") + note);
        if (!console_.json) progress_->print(stdout, sentenceOf(outcome));
    }
    summary_.set(toDo_[index], std::move(record));
    summary_.saveNowAndThen();
}

void Batch::finish() {
    summary_.save();
    std::printf("%s\n", (console_.json ? summary_.jsonText() : totals()).c_str());
    const std::size_t left = summary_.left();
    if (left == 0) return;
    throw korvalite::Error(korvalite::ErrorCode::Cancelled,
                           "Cancelled; " + withCommas(left) + " of " + withCommas(items_.size()) +
                               " meshes are left. Run the same command again to do them.");
}

std::string Batch::totals() const {
    std::string text = withCommas(items_.size()) + (items_.size() == 1 ? " mesh: " : " meshes: ");
    text += withCommas(summary_.count(MeshStatus::Done)) + " simplified";
    const auto add = [&](MeshStatus status, const char* what) {
        const std::size_t count = summary_.count(status);
        if (count > 0) text += ", " + withCommas(count) + what;
    };
    add(MeshStatus::Missed, " simplified, but not to the target");
    add(MeshStatus::Skipped, " done already");
    add(MeshStatus::Failed, " failed");
    if (summary_.left() > 0) text += ", " + withCommas(summary_.left()) + " left";
    return text + '.';
}

}  // namespace

ExitCode runBatch(const BatchOptions& options, const Console& console,
                  const std::function<bool()>& isInterrupted) {
    return Batch(options, console, isInterrupted).run();
}

}  // namespace korva
