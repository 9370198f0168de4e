// Whether standard deviations that the program reports are those of what it reports them for.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <iomanip>
#include <iostream>
#include <string>
#include <vector>

namespace mnd_test {

// Limits in standard errors: passed by chance once in 500 million checks where errors are normal.
inline constexpr double kStandardErrors = 6.0;

inline double mean(const std::vector<double>& values) {
    double sum = 0.0;
    for (const double value : values)
        sum += value;
    return sum / static_cast<double>(values.size());
}

inline double central_moment(const std::vector<double>& values, int power) {
    const double m = mean(values);
    double sum = 0.0;
    for (const double value : values)
        sum += std::pow(value - m, power);
    return sum / static_cast<double>(values.size());
}

// What was estimated again and again, and the variance that was reported each time.
struct Repeated {
    std::vector<double> value;
    std::vector<double> variance;

    void add(double v, double sd) {
        value.push_back(v);
        variance.push_back(sd * sd);
    }
    double spread() const { return std::sqrt(central_moment(value, 2)); }
    double reported() const { return std::sqrt(mean(variance)); }
};

// Reported over seen standard deviation is 1.
//   allowance   what may lie between them beside chance
inline void expect_spread(const std::string& name, const Repeated& r, double allowance) {
    const double n = static_cast<double>(r.value.size());
    const double ratio = r.reported() / r.spread();
    // The relative variance of a variance of n values is (kurtosis - 1) / n; a root halves its error.
    const double kurtosis = central_moment(r.value, 4) / std::pow(r.spread(), 4);
    const double limit = allowance + kStandardErrors * std::sqrt((kurtosis - 1.0) / n) / 2.0;
    std::cout << std::fixed << std::setprecision(4) << "    " << std::left << std::setw(28) << name
              << std::right << " n " << r.value.size() << "  mean " << mean(r.value) << "  s.d. seen "
              << r.spread() << "  reported " << r.reported() << "  ratio " << ratio << "  limit 1 +- "
              << limit << '\n'
              << std::defaultfloat;
    EXPECT_LE(std::fabs(ratio - 1.0), limit) << name;
}

// The mean of the values is the true one.
inline void expect_unbiased(const std::string& name, const Repeated& r, double truth) {
    const double limit = kStandardErrors * r.spread() / std::sqrt(static_cast<double>(r.value.size()));
    EXPECT_NEAR(mean(r.value), truth, limit) << name;
}

}  // namespace mnd_test
