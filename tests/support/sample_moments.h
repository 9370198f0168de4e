// Mean and variance of simulated values, with how far they may lie from theory.
#pragma once

#include <cmath>

namespace mnd_test {

class SampleMoments {
public:
    void add(double x) {
        ++n_;
        sum_ += x;
        sum2_ += x * x;
    }
    double mean() const { return sum_ / n_; }
    double variance() const { return sum2_ / n_ - mean() * mean(); }
    // Standard error of the mean.
    double mean_error() const { return std::sqrt(variance() / n_); }

private:
    double n_ = 0.0;
    double sum_ = 0.0;
    double sum2_ = 0.0;
};

}  // namespace mnd_test
