#include "within/curve_tables.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <limits>
#include <vector>

#include "support/seeded_stream.h"

namespace {

using mnd::CurveTable;

class CurveTables : public mnd_test::SeededStream {};

void expect_powers(double base, int top) {
    std::vector<double> powers(static_cast<std::size_t>(top) + 1);
    mnd::fill_powers(base, top, powers.data());
    for (int k = 0; k <= top; ++k) {
        const double expected = std::pow(base, k);
        const double got = powers[static_cast<std::size_t>(k)];
        EXPECT_TRUE(got == expected || (std::isnan(got) && std::isnan(expected)))
            << base << ' ' << k << ' ' << got - expected;
    }
}

// Ratios theta / (theta + 1) of thetas between 1e-7 and 1e9: a million powers.
TEST_F(CurveTables, HoldThePowersOfTheLibraryToTheLastBit) {
    for (int i = 0; i < 20000; ++i) {
        const double theta = std::pow(10.0, 16.0 * next() - 7.0);
        expect_powers(theta / (theta + 1.0), 49);
    }
}

TEST_F(CurveTables, HoldPowersDownToNothing) {
    for (int i = 0; i < 200; ++i)
        expect_powers(next(), 1004);
    expect_powers(0x1p-1, 1004);
    expect_powers(0x1p-3, 400);
}

// Powers next to a power of two: 1 less than the square root of 1/2 and its neighbours.
TEST_F(CurveTables, HoldPowersOnTheBorderOfTwoUnits) {
    for (const double root : {std::sqrt(0.5), std::cbrt(0.5), std::pow(0.5, 0.1), std::pow(0.5, 1.0 / 7.0)}) {
        double base = root;
        for (int i = 0; i < 50; ++i) {
            expect_powers(base, 100);
            base = std::nextafter(base, i % 2 == 0 ? 0.0 : 1.0) - (i - 25) * 1e-16;
        }
    }
    expect_powers(std::nextafter(1.0, 0.0), 1004);
}

TEST_F(CurveTables, HoldPowersOfAnyBase) {
    for (const double base : {0.0, 1.0, 1.5, -0.25, -3.0, std::numeric_limits<double>::infinity(),
                              std::numeric_limits<double>::quiet_NaN()})
        expect_powers(base, 20);
}

// Room of a table: zeros in front, and what an earlier table left behind.
struct Room {
    std::vector<double> all;
    explicit Room(int top) : all(static_cast<std::size_t>(top + 1 + 2 * CurveTable::kLanes)) {
        for (std::size_t k = all.size() - CurveTable::kLanes; k < all.size(); ++k)
            all[k] = 777.0;
    }
    double* values() { return all.data() + CurveTable::kLanes; }
};

void expect_products(Room& a, bool finite, Room& b, int top) {
    std::vector<double> sums(static_cast<std::size_t>(top) + 2, -5.0);
    mnd::add_products({a.values(), finite}, {b.values(), true}, top, sums.data());
    for (int i = 0; i <= top; ++i) {
        double expected = 0.0;
        for (int j = 0; j <= i; ++j)
            expected += a.values()[j] * b.values()[i - j];
        const double got = sums[static_cast<std::size_t>(i)];
        EXPECT_TRUE(got == expected || (std::isnan(got) && std::isnan(expected))) << top << ' ' << i;
    }
    EXPECT_EQ(sums.back(), -5.0);
}

TEST_F(CurveTables, AddProductsInTheOrderOfTheSum) {
    for (int top = 0; top <= 60; ++top) {
        Room a(top), b(top);
        for (int k = 0; k <= top; ++k) {
            a.values()[k] = std::pow(10.0, 6.0 * next() - 3.0);
            b.values()[k] = next() - 0.5;
        }
        expect_products(a, true, b, top);
        expect_products(a, false, b, top);
    }
}

TEST_F(CurveTables, AddProductsOfNumbersWithoutEnd) {
    Room a(20), b(20);
    for (int k = 0; k <= 20; ++k) {
        a.values()[k] = k < 12 ? 1.0 + k : std::numeric_limits<double>::infinity();
        b.values()[k] = 0.5 / (k + 1);
    }
    expect_products(a, false, b, 20);
    for (int k = 0; k < 20; ++k)
        a.values()[k] = 1.0;
    a.values()[20] = 2.0;
    b.values()[7] = std::numeric_limits<double>::quiet_NaN();
    expect_products(a, true, b, 20);
}

struct Counted {
    mnd::KeptTables tables;
    int filled = 0;

    CurveTable of(double first, double second, int top) {
        return tables.get(first, second, top, [&](double* values) {
            ++filled;
            for (int k = 0; k <= top; ++k)
                values[k] = first * 1000.0 + second + k;
        });
    }
};

TEST_F(CurveTables, AreComputedOnceForTheSameParameters) {
    Counted tables;
    EXPECT_EQ(tables.of(2.0, 3.0, 5).values[5], 2008.0);
    EXPECT_EQ(tables.of(2.0, 3.0, 5).values[5], 2008.0);
    EXPECT_EQ(tables.of(2.0, 3.0, 4).values[4], 2007.0);
    EXPECT_EQ(tables.filled, 1);
    // More values than there are.
    EXPECT_EQ(tables.of(2.0, 3.0, 9).values[9], 2012.0);
    EXPECT_EQ(tables.filled, 2);
}

TEST_F(CurveTables, FollowTheirParametersHoweverMany) {
    Counted tables;
    for (int i = 0; i < 3000; ++i) {
        const double first = std::floor(40.0 * next());
        const double second = std::floor(40.0 * next());
        const int top = static_cast<int>(3.0 * next());
        for (int k = 0; k <= top; ++k)
            EXPECT_EQ(tables.of(first, second, top).values[k], first * 1000.0 + second + k);
        EXPECT_EQ(tables.of(first, second, top).values[-1], 0.0);
        EXPECT_EQ(tables.of(first, second, top).values[-CurveTable::kLanes], 0.0);
    }
}

TEST_F(CurveTables, KnowWhetherTheirValuesAreFinite) {
    Counted tables;
    EXPECT_TRUE(tables.of(2.0, 3.0, 5).finite);
    EXPECT_FALSE(tables.of(2.0, std::numeric_limits<double>::infinity(), 5).finite);
    const double none = std::numeric_limits<double>::quiet_NaN();
    EXPECT_FALSE(tables.of(none, 0.0, 5).finite);
    tables.of(none, 0.0, 5);
    EXPECT_EQ(tables.filled, 3);
}

}  // namespace
