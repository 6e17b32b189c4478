// SPDX-License-Identifier: MIT
#include "korva/progress_bar.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace korva {
namespace {

class Output {
public:
    ~Output() { std::fclose(stream_); }
    std::FILE* stream() { return stream_; }
    std::string text() {
        std::rewind(stream_);
        std::array<char, 4096> bytes{};
        return {bytes.data(), std::fread(bytes.data(), 1, bytes.size(), stream_)};
    }

private:
    std::FILE* stream_ = std::tmpfile();
};

TEST(ProgressBar, PrintsALineForEachTenPercent) {
    Output output;
    ProgressBar bar(ProgressBar::Style::Lines, {{"reading", 1}, {"working", 9}}, output.stream());
    for (unsigned i = 0; i <= 100; ++i)
        bar.show(0, i, 100);
    EXPECT_EQ(output.text(), "10% reading\n");
    bar.show(1, 2, 9);
    bar.show(1, 9, 9);
    EXPECT_EQ(output.text(), "10% reading\n20% working\n30% working\n40% working\n50% working\n"
                             "60% working\n70% working\n80% working\n90% working\n100% working\n");
}

TEST(ProgressBar, NeverGoesBack) {
    Output output;
    ProgressBar bar(ProgressBar::Style::Lines, {{"a", 1}}, output.stream());
    bar.show(0, 1, 2);
    bar.show(0, 0, 2);
    bar.show(0, 1, 2);
    EXPECT_EQ(output.text(), "10% a\n20% a\n30% a\n40% a\n50% a\n");
}

TEST(ProgressBar, AnUnknownTotalShowsNothingNew) {
    Output output;
    ProgressBar bar(ProgressBar::Style::Lines, {{"a", 1}}, output.stream());
    bar.show(0, 7, 0);
    EXPECT_EQ(output.text(), "");
}

TEST(ProgressBar, QuietPrintsNothing) {
    Output output;
    {
        ProgressBar bar(ProgressBar::Style::None, {{"a", 1}}, output.stream());
        bar.show(0, 1, 1);
    }
    EXPECT_EQ(output.text(), "");
}

TEST(ProgressBar, ABarIsWipedAtTheEnd) {
    Output output;
    {
        ProgressBar bar(ProgressBar::Style::Bar, {{"a", 1}}, output.stream());
        bar.show(0, 1, 2);
    }
    const std::string text = output.text();
    EXPECT_NE(text.find("50% a"), std::string::npos);
    EXPECT_EQ(text.back(), '\r');
}

}  // namespace
}  // namespace korva
