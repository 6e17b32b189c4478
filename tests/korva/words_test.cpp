// SPDX-License-Identifier: MIT
#include "korva/files/words.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

namespace korva::test {

namespace {

float floatOf(std::string_view word) {
    float value = 77;
    EXPECT_TRUE(parseFloat(word, value)) << word;
    return value;
}

}  // namespace

TEST(Words, FloatsMayHaveAPlusButNothingElseAround) {
    EXPECT_EQ(floatOf("+.5"), .5F);
    EXPECT_EQ(floatOf("-1.E2"), -100);
    for (const char* word :
         {"", "+", "-", "+-1", "++1", "1,5", "1.5f", "0x10", "1e", "e5", "1.#INF"}) {
        float value = 0;
        EXPECT_FALSE(parseFloat(word, value)) << word;
    }
}

TEST(Words, FloatsAreRoundedOnce) {
    // In the middle between two floats but for a digit that a double does not hold.
    EXPECT_EQ(floatOf("1.00000005960464477539062500000000001"), 1.00000011920929F);
    EXPECT_EQ(floatOf("1.000000059604644775390625"), 1);
}

TEST(Words, CountsAreWhole) {
    std::size_t count = 0;
    EXPECT_TRUE(parseCount("+12", count));
    EXPECT_EQ(count, 12U);
    for (const char* word : {"", "-1", "1.0", "1e3", "99999999999999999999", "1x"})
        EXPECT_FALSE(parseCount(word, count)) << word;
}

TEST(Words, QuotesOnlyWhatCanBePrinted) {
    EXPECT_EQ(quoted("a\x01\xFF"), std::string("'a") + "?" + "?'");
    EXPECT_EQ(quoted("abcdefghijklmnopqrstuvwxyz"), "'abcdefghijklmnopqrstuvwx...'");
}

}  // namespace korva::test
