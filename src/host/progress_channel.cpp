// SPDX-License-Identifier: MIT
#include "host/progress_channel.h"

#include "base/debug_log.h"
#include "platform/file.h"
#include "platform/platform.h"
#include "platform/utf8.h"

#include <algorithm>

namespace korvalite::core {

namespace {

constexpr std::int64_t kWriteIntervalMs = 501;
constexpr std::int64_t kPresenceTimeoutMs = 500;
constexpr int kPresencePollMs = 10;

// Writes a file image field by field. The reader below uses the same list of fields.
class ImageWriter {
public:
    explicit ImageWriter(ProgressRecord::Image& image) : next_(image.data()) {}

    void field(std::uint8_t value) { *next_++ = value; }
    void field(const ProgressRecord::Text& text) {
        for (const char c : text)
            field(static_cast<std::uint8_t>(c));
    }
    void field(std::int32_t value) {
        const auto word = static_cast<std::uint32_t>(value);
        for (int shift = 0; shift < 32; shift += 8)
            field(static_cast<std::uint8_t>(word >> shift));
    }

private:
    unsigned char* next_;
};

class ImageReader {
public:
    explicit ImageReader(const ProgressRecord::Image& image) : next_(image.data()) {}

    void field(std::uint8_t& value) { value = *next_++; }
    void field(ProgressRecord::Text& text) {
        for (char& c : text)
            c = static_cast<char>(*next_++);
    }
    void field(std::int32_t& value) {
        std::uint32_t word = 0;
        for (int shift = 0; shift < 32; shift += 8)
            word |= std::uint32_t{*next_++} << shift;
        value = static_cast<std::int32_t>(word);
    }

private:
    const unsigned char* next_;
};

template <typename Walker, typename Record>
void walkFields(Walker walker, Record& record) {
    walker.field(record.open);
    walker.field(record.mainActive);
    walker.field(record.subActive);
    walker.field(record.mainText);
    walker.field(record.subText);
    walker.field(record.reserved);
    walker.field(record.subTotal);
    walker.field(record.subDone);
    walker.field(record.stageFlag1);
    walker.field(record.stageFlag2);
    walker.field(record.stopCurrent);
    walker.field(record.stopAll);
}

void fillText(ProgressRecord::Text& target, const HeapString& source) {
    target.fill('\0');
    const std::string_view text = platform::cutAtCharacter(source.view(), target.size() - 1);
    std::copy(text.begin(), text.end(), target.begin());
}

}  // namespace

ProgressRecord::Image ProgressRecord::encode() const {
    Image image{};
    walkFields(ImageWriter(image), *this);
    return image;
}

ProgressRecord ProgressRecord::decode(const Image& image) {
    ProgressRecord record;
    walkFields(ImageReader(image), record);
    return record;
}

void ProgressChannel::openWithoutFile() {
    if (record_.open != 0) return;
    record_.open = 1;
    path_ = HeapString();
}

bool ProgressChannel::openFile(const HeapString& path) {
    if (record_.open != 0 || !platform::exists(path.c_str()) ||
        !platform::isRegularFile(path.c_str()))
        return false;
    path_ = path;
    ReadRecord();
    return true;
}

bool ProgressChannel::ReadRecord() {
    if (path_.empty()) return true;
    platform::File file = platform::File::open(path_.c_str(), "rb");
    if (!file) {
        Close();
        return false;
    }
    ProgressRecord::Image image = record_.encode();
    file.read(image.data(), image.size());
    record_ = ProgressRecord::decode(image);
    return true;
}

bool ProgressChannel::WriteRecord() {
    if (path_.empty()) return true;
    lastWriteClock_ = platform::clockMilliseconds();
    platform::File file = platform::File::open(path_.c_str(), "r+b");
    if (!file) return false;
    const ProgressRecord::Image image = record_.encode();
    const bool written = file.seek(0, SEEK_SET) && file.write(image.data(), image.size());
    return file.close() && written;
}

bool ProgressChannel::BeginMainTask(const HeapString& text) {
    if (record_.open == 0 || record_.mainActive != 0) return false;
    record_.mainActive = 1;
    fillText(record_.mainText, text);
    WriteRecord();
    return true;
}

bool ProgressChannel::EndMainTask() {
    // COMPAT: without a main task a stop request stays set for the next mesh; hosts see that.
    if (record_.mainActive == 0) return false;
    record_.mainActive = 0;
    record_.subActive = 0;
    record_.mainText.fill('\0');
    record_.subText.fill('\0');
    record_.subTotal = -1;
    record_.subDone = 0;
    record_.stageFlag1 = 0;
    record_.stageFlag2 = 0;
    record_.stopCurrent = 0;
    CheckFilePresent();
    WriteRecord();
    return true;
}

bool ProgressChannel::BeginSubTask(const HeapString& text, std::int32_t total) {
    if (record_.mainActive == 0 || record_.subActive != 0) return false;
    record_.subActive = 1;
    fillText(record_.subText, text);
    record_.subTotal = total;
    record_.subDone = 0;
    WriteRecord();
    return true;
}

bool ProgressChannel::EndSubTask() {
    if (record_.subActive == 0) return false;
    record_.subActive = 0;
    record_.subText.fill('\0');
    record_.subTotal = -1;
    record_.subDone = 0;
    WriteRecord();
    return true;
}

bool ProgressChannel::SetSubTaskText(const HeapString& text) {
    if (record_.subActive == 0) return false;
    fillText(record_.subText, text);
    return true;
}

bool ProgressChannel::CheckFilePresent() {
    if (path_.empty()) return true;
    const std::int64_t start = platform::clockMilliseconds();
    std::int64_t now = start;
    do {
        if (platform::exists(path_.c_str()) && platform::isRegularFile(path_.c_str())) {
            DebugLog("Progress-bar file found after %d clocks",
                     static_cast<std::int32_t>(now - start));
            return true;
        }
        platform::sleepMilliseconds(kPresencePollMs);
        now = platform::clockMilliseconds();
    } while (now < start + kPresenceTimeoutMs);
    // COMPAT: hosts stop a batch by deleting the file; stop bytes written later are ignored.
    DebugLog("Progress-bar file not found: asks for STOP-ALL");
    record_.stopAll = 1;
    return false;
}

bool ProgressChannel::Close() {
    if (record_.open == 0) return false;
    const std::uint8_t reserved = record_.reserved;
    record_ = ProgressRecord();
    record_.reserved = reserved;
    if (!path_.empty()) {
        DebugLog("Progress-bar close: delete the file");
        platform::deleteFile(path_.c_str());
        path_ = HeapString();
    }
    return true;
}

void ProgressChannel::raiseFirstStageFlag() {
    if (enabled_) record_.stageFlag1 = 1;
}

void ProgressChannel::raiseStageFlags() {
    raiseFirstStageFlag();
    if (enabled_) record_.stageFlag2 = 1;
}

void ProgressChannel::writeIfDue() {
    if (platform::clockMilliseconds() - lastWriteClock_ >= kWriteIntervalMs) WriteRecord();
}

ProgressChannel& progressChannel() {
    static ProgressChannel channel;
    return channel;
}

}  // namespace korvalite::core
