#include "foundation/number_text.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>

using mnd::my_atof;
using mnd::my_atoi;
using mnd::my_atol;

TEST(MyAtol, CollectsTheDigitsWhateverStandsBetweenThem) {
    EXPECT_EQ(my_atol("12"), 12);
    EXPECT_EQ(my_atol("1 2"), 12);
    EXPECT_EQ(my_atol("1a2"), 12);
    EXPECT_EQ(my_atol("12.5"), 125);
    EXPECT_EQ(my_atol("0.01"), 1);
    EXPECT_EQ(my_atol("1000\r"), 1000);
}

TEST(MyAtol, TextWithoutDigitsIsZero) {
    EXPECT_EQ(my_atol(""), 0);
    EXPECT_EQ(my_atol("abc"), 0);
    EXPECT_EQ(my_atol("-"), 0);
    EXPECT_EQ(my_atol(nullptr), 0);
}

TEST(MyAtol, MinusFlipsTheDigitsBehindItAndNegatesTheTotalAtTheEnd) {
    EXPECT_EQ(my_atol("-5"), -5);
    EXPECT_EQ(my_atol("5-"), -5);
    EXPECT_EQ(my_atol("--5"), 5);
    EXPECT_EQ(my_atol("1e-07"), 93);  // 7 and 0 x 10, negated, then 1 x 100
}

TEST(MyAtol, OverlongTextsWrapAround64Bits) {
    // 10^19 + 1 = 2^64 - 8446744073709551615
    EXPECT_EQ(my_atol("10000000000000000001"), -8446744073709551615LL);
    EXPECT_NO_FATAL_FAILURE(my_atol(std::string(100000, '9').c_str()));
}

TEST(MyAtoi, CutsTheNumberTo32Bits) {
    EXPECT_EQ(my_atoi("2147483647"), INT32_MAX);
    EXPECT_EQ(my_atoi("4294967297"), 1);  // 2^32 + 1
    EXPECT_EQ(my_atoi("-9"), -9);
}

TEST(MyAtof, ReadsWholePartFractionAndExponent) {
    EXPECT_EQ(my_atof("12.5"), 12.5);
    EXPECT_EQ(my_atof("0.05"), 0.05);
    EXPECT_EQ(my_atof(".25"), 0.25);
    EXPECT_EQ(my_atof("3"), 3.0);
    EXPECT_EQ(my_atof("1.0e-07"), 1e-07);
    EXPECT_EQ(my_atof("1.500000e+02"), 150.0);
    EXPECT_EQ(my_atof("2.5d3"), 2500.0);
    EXPECT_EQ(my_atof(""), 0.0);
    EXPECT_EQ(my_atof(nullptr), 0.0);
}

TEST(MyAtof, WithoutAPointTheExponentsDigitsJoinTheNumber) {
    EXPECT_DOUBLE_EQ(my_atof("1e-07"), 93e-07);
    EXPECT_DOUBLE_EQ(my_atof("1e5"), 15e5);
}

TEST(MyAtof, NegativeNumbersLoseTheirLastWholeDigit) {
    EXPECT_EQ(my_atof("-12.5"), -1.5);
    EXPECT_EQ(my_atof("-0.5"), 0.5);
    EXPECT_EQ(my_atof("-.5"), 0.5);
    EXPECT_EQ(my_atof("-"), 0.0);
}

TEST(MyAtof, AnExponentAppliesTheSignOnceMore) {
    EXPECT_DOUBLE_EQ(my_atof("-12.5e2"), 150.0);  // -1.5, times 100, times -1
    EXPECT_EQ(my_atof("-12.5e0"), -1.5);          // an exponent of 0 applies nothing
}

TEST(MyAtof, StrayFractionCharactersCountAsDigitsButBlanksDoNot) {
    EXPECT_EQ(my_atof("0.5  "), 0.5);
    EXPECT_EQ(my_atof("0. 5"), 0.5);
    EXPECT_EQ(my_atof("0.5x"), 0.05);
    EXPECT_EQ(my_atof("0.5\r"), 0.05);
    EXPECT_EQ(my_atof("1.5E2"), 1.052);  // only a lower-case letter begins an exponent
}

TEST(MyAtof, LongFractionsKeepTheirValue) {
    EXPECT_DOUBLE_EQ(my_atof("0.1000000000000000055511151231257827"), 0.1);
    EXPECT_DOUBLE_EQ(my_atof("0.333333333333333333333333333333333"), 1.0 / 3.0);
}

TEST(MyAtof, ExtremeExponentsGiveZeroOrInfinityNeverNaN) {
    EXPECT_EQ(my_atof("0.0e999"), 0.0);
    EXPECT_EQ(my_atof("1.0e-999"), 0.0);
    EXPECT_EQ(my_atof("1.0e999"), HUGE_VAL);
    EXPECT_EQ(my_atof("0.0e-99999999999999999999999"), 0.0);
}

TEST(MyAtof, SixDecimalsReadAsTheNearestDouble) {
    char text[32];
    for (int i = 0; i < 1000000; i += 37) {
        std::snprintf(text, sizeof text, "0.%06d", i);
        ASSERT_EQ(my_atof(text), std::strtod(text, nullptr)) << text;
    }
}
