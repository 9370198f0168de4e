#include "input/mantel.h"

#include <gtest/gtest.h>

namespace {

using namespace mnd;

TEST(Mantel, StartsEmpty) {
    const Mantel mantel;
    EXPECT_EQ(mantel.NbMatrices, 0);
    EXPECT_EQ(mantel.matrices_read, 0);
    EXPECT_EQ(mantel.MatrixSize, 0);
    EXPECT_EQ(mantel.X1.dim, 0);
    EXPECT_EQ(mantel.UsedYMatrixLabels.count, 0);
    EXPECT_TRUE(mantel.YMatrixLabels.empty());
    EXPECT_EQ(mantel.YMatrixType.view(), "fst");
    EXPECT_EQ(mantel.rY1, 0.0);
    EXPECT_EQ(mantel.num_perm, 0);
}

TEST(Mantel, KnowsSixKindsOfY) {
    const Mantel mantel;
    const char* const expected[] = {"fst", "log_fst", "slatkinlinearfst", "log_slatkinlinearfst",
                                    "nm",  "custom"};
    ASSERT_EQ(mantel.NbYTypes, 6);
    for (std::size_t i = 0; i < 6; ++i)
        EXPECT_EQ(mantel.YTypes[i].view(), expected[i]);
}

TEST(Mantel, SizedConstructorMakesThreeTriangles) {
    const Mantel mantel(4);
    EXPECT_EQ(mantel.X1.dim, 4);
    EXPECT_EQ(mantel.X2.dim, 4);
    EXPECT_EQ(mantel.Y.dim, 4);
    EXPECT_EQ(mantel.Y(3, 0), 0.0);
}

TEST(Mantel, CopyAndReset) {
    Mantel mantel(2);
    mantel.X1(1, 0) = 3.0;
    mantel.NbMatrices = 2;
    mantel.MatrixSize = 2;
    mantel.YMatrixType = "nm";
    mantel.YMatrixLabels = {"a", "b"};
    mantel.UsedYMatrixLabels.Add("b");
    mantel.rY1 = 0.5;
    mantel.equal_Y2_1 = 7;
    Mantel copy;
    copy = mantel;
    EXPECT_EQ(copy.X1(1, 0), 3.0);
    EXPECT_EQ(copy.UsedYMatrixLabels.count, 1);
    EXPECT_EQ(copy.YMatrixLabels[1].view(), "b");
    EXPECT_EQ(copy.rY1, 0.5);
    copy.reset();
    copy.reset();
    EXPECT_EQ(copy.X1.dim, 0);
    EXPECT_EQ(copy.UsedYMatrixLabels.count, 0);
    EXPECT_TRUE(copy.YMatrixLabels.empty());
    EXPECT_EQ(copy.NbMatrices, 0);
    EXPECT_EQ(copy.YMatrixType.view(), "fst");
    EXPECT_EQ(copy.rY1, 0.0);
    EXPECT_EQ(copy.equal_Y2_1, 0);
    EXPECT_EQ(mantel.X1(1, 0), 3.0);
}

}  // namespace
