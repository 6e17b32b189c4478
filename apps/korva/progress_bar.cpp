// SPDX-License-Identifier: MIT
#include "korva/progress_bar.h"

#include <algorithm>
#include <cmath>
#include <utility>

#ifdef _WIN32
#include <io.h>
#else
#include <unistd.h>
#endif

namespace korva {

namespace {

bool isTerminal(std::FILE* stream) {
#ifdef _WIN32
    return _isatty(_fileno(stream)) != 0;
#else
    return isatty(fileno(stream)) != 0;
#endif
}

}  // namespace

ProgressBar::ProgressBar(Style style, std::vector<Part> parts, std::FILE* stream)
    : style_(style), parts_(std::move(parts)), stream_(stream) {
    double sum = 0;
    for (const Part& part : parts_)
        sum += part.share;
    for (Part& part : parts_)
        part.share /= sum;
}

ProgressBar::~ProgressBar() {
    clear();
}

void ProgressBar::clear() {
    if (width_ == 0) return;
    std::fprintf(stream_, "\r%*s\r", static_cast<int>(width_), "");
    std::fflush(stream_);
    width_ = 0;
    lastDraw_ = {};
}

ProgressBar::Style ProgressBar::styleFor(std::FILE* stream) {
    return isTerminal(stream) ? Style::Bar : Style::Lines;
}

void ProgressBar::show(std::size_t part, std::uint64_t done, std::uint64_t total) {
    if (style_ == Style::None) return;
    double fraction = 0;
    for (std::size_t i = 0; i < part; ++i)
        fraction += parts_[i].share;
    if (total > 0)
        fraction += parts_[part].share * static_cast<double>(std::min(done, total)) /
                    static_cast<double>(total);
    shown_ = std::max(shown_, fraction);
    if (style_ == Style::Bar) {
        draw(part);
        return;
    }
    for (; lines_ < static_cast<int>(shown_ * 10 + 1e-9); ++lines_)
        std::fprintf(stream_, "%d%% %s\n", 10 * (lines_ + 1), parts_[part].name.c_str());
}

void ProgressBar::draw(std::size_t part) {
    constexpr auto kInterval = std::chrono::milliseconds(100);
    const auto now = std::chrono::steady_clock::now();
    if (now - lastDraw_ < kInterval) return;
    lastDraw_ = now;
    constexpr std::size_t kCells = 30;
    const auto full = static_cast<std::size_t>(shown_ * kCells);
    std::string line = "[" + std::string(full, '#') + std::string(kCells - full, '.') + "] ";
    line += std::to_string(static_cast<int>(shown_ * 100)) + "% " + parts_[part].name;
    line += timeLeft();
    const std::size_t width = line.size();
    if (width < width_) line.append(width_ - width, ' ');
    width_ = width;
    std::fprintf(stream_, "\r%s", line.c_str());
    std::fflush(stream_);
}

std::string ProgressBar::timeLeft() const {
    const std::chrono::duration<double> elapsed = std::chrono::steady_clock::now() - start_;
    if (elapsed.count() < 2 || shown_ < 0.02) return {};
    const auto seconds = static_cast<int>(std::ceil(elapsed.count() * (1 - shown_) / shown_));
    const std::string minutes = seconds >= 60 ? std::to_string(seconds / 60) + " min " : "";
    return ", " + minutes + std::to_string(seconds % 60) + " s left";
}

}  // namespace korva
