#include "foundation/count_table.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

namespace {

using mnd::CountTable;

TEST(CountTable, DoesNotExistUntilItIsBuilt) {
    CountTable table;
    EXPECT_FALSE(table.exists());
    EXPECT_EQ(table.rows() + table.columns(), 0);
    table.clear();
    EXPECT_FALSE(table.exists());
}

TEST(CountTable, HasItsRowsInOneBlock) {
    CountTable table;
    table.build(2, 3);
    EXPECT_TRUE(table.exists());
    EXPECT_EQ(table.rows(), 2);
    EXPECT_EQ(table.columns(), 3);
    EXPECT_EQ(table.cells(), (std::vector<std::int32_t>(6, 0)));
    table[0][2] = 5;
    table[1][0] = -7;
    EXPECT_EQ(table.cells(), (std::vector<std::int32_t>{0, 0, 5, -7, 0, 0}));
    const CountTable copy = table;
    EXPECT_EQ(copy[1][0], -7);
    EXPECT_EQ(copy, table);
}

TEST(CountTable, IsBuiltAnewWithZeros) {
    CountTable table;
    table.build(2, 2);
    table[1][1] = 4;
    table.build(2, 2);
    EXPECT_EQ(table[1][1], 0);
    table.clear();
    EXPECT_FALSE(table.exists());
    EXPECT_EQ(table.rows() + table.columns(), 0);
}

TEST(CountTable, OfNoRowsOrColumnsDoesNotExist) {
    CountTable table;
    for (const auto& [rows, columns] : {std::pair{0, 3}, {3, 0}, {-1, 3}, {3, -1}, {-2, -2}}) {
        table.build(2, 2);
        table.build(rows, columns);
        EXPECT_FALSE(table.exists());
        EXPECT_EQ(table.rows() + table.columns(), 0);
    }
}

}  // namespace
