// Fixture of every test that draws random numbers.
#pragma once

#include <gtest/gtest.h>

#include "foundation/random.h"

namespace mnd_test {

// Starts every test at the same place of the stream, whatever ran before.
class SeededStream : public ::testing::Test {
protected:
    void SetUp() override { seed(); }
    static void seed() {
        long idum = -12345;
        mnd::ran3(&idum);
    }
    static double next() {
        long idum = 1;
        return mnd::ran3(&idum);
    }
};

}  // namespace mnd_test
