// Whether P-values of many simulated data sets are distributed as those of a valid test.
//
// All limits follow from the number of data sets and one rate of false alarms, kFalseAlarm, by
// bounds that hold for every sample size; nothing is tuned to what was seen.
//
// Source: distance: Dvoretzky, Kiefer and Wolfowitz 1956, Annals of Mathematical Statistics
//         27:642-669, with the constant of Massart 1990, Annals of Probability 18:1269-1283;
//         rates: Chernoff 1952, Annals of Mathematical Statistics 23:493-507
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>
#include <vector>

namespace mnd_test {

// Chance that one check fails although the test it looks at is perfect, for any seed.
inline constexpr double kFalseAlarm = 1e-6;

// The levels at which rejections are counted.
inline constexpr double kLevels[] = {0.01, 0.05, 0.5};

// Distances between the distribution function of a sample of P-values and that of the uniform
// distribution.
struct UniformDistance {
    double above = 0.0;  // largest excess of P-values that are too small: liberal
    double below = 0.0;  // largest lack of them: conservative
    double both() const { return std::max(above, below); }
};

inline UniformDistance distance_from_uniform(std::vector<double> p) {
    UniformDistance d;
    std::sort(p.begin(), p.end());
    const double N = static_cast<double>(p.size());
    for (std::size_t i = 0; i < p.size(); ++i) {
        // Equal values make one step, so only the last of them stands for the function at it
        // and only the first for the function just before it.
        if (i + 1 == p.size() || p[i + 1] > p[i])
            d.above = std::max(d.above, static_cast<double>(i + 1) / N - p[i]);
        if (i == 0 || p[i - 1] < p[i]) d.below = std::max(d.below, p[i] - static_cast<double>(i) / N);
    }
    return d;
}

// What the distance from a true uniform distribution exceeds with a chance of at most kFalseAlarm.
inline double two_sided_limit(std::size_t N) {
    return std::sqrt(std::log(2.0 / kFalseAlarm) / (2.0 * static_cast<double>(N)));
}
inline double one_sided_limit(std::size_t N) {
    return std::sqrt(std::log(1.0 / kFalseAlarm) / (2.0 * static_cast<double>(N)));
}

inline double share_up_to(const std::vector<double>& p, double level) {
    const auto n = std::count_if(p.begin(), p.end(), [level](double x) { return x <= level; });
    return static_cast<double>(n) / static_cast<double>(p.size());
}

// Exponent of the bound on the chance that a share of N trials differs as much from its
// expectation: the relative entropy of the two.
inline double divergence_of_shares(double share, double expected) {
    const auto term = [](double a, double b) { return a > 0.0 ? a * std::log(a / b) : 0.0; };
    return term(share, expected) + term(1.0 - share, 1.0 - expected);
}
// Whether a share lies further from its expectation than chance allows, on one side.
inline bool differs(double share, double expected, std::size_t N) {
    return static_cast<double>(N) * divergence_of_shares(share, expected) > std::log(1.0 / kFalseAlarm);
}

// P-values of one test, one for each data set.
struct PValues {
    std::string test;         // as messages name it
    std::vector<double> p;    // as the program gives them
    double resolution = 0.0;  // a test of m permutations can't be exact below 1 / (m + 1)
};

inline void print_measured(const std::string& what, const PValues& v) {
    const UniformDistance d = distance_from_uniform(v.p);
    std::cout << std::fixed << std::setprecision(4) << "    " << std::left << std::setw(36) << v.test
              << std::right << ' ' << std::left << std::setw(12) << what << std::right << " n "
              << std::setw(6) << v.p.size() << "  too small " << d.above << "  too large " << d.below
              << "  limit " << two_sided_limit(v.p.size()) << "  share up to";
    for (const double level : kLevels)
        std::cout << ' ' << std::setprecision(2) << level << ": " << std::setprecision(4)
                  << share_up_to(v.p, level);
    std::cout << '\n' << std::defaultfloat;
}

// The faults of a sample of P-values, a line each; empty when there is none.
class Faults {
public:
    void check_distance(const char* direction, double distance, double limit) {
        if (distance <= limit) return;
        text_ << "too " << direction << ": distance " << distance << ", limit " << limit << '\n';
    }
    // Share of the values that are at most `level`; it may lie between the two expectations.
    void check_share(const std::vector<double>& p, double level, double lowest, double highest) {
        const double share = share_up_to(p, level);
        const double expected = std::clamp(share, lowest, highest);
        if (!differs(share, expected, p.size())) return;
        text_ << "share up to " << level << " is " << share << '\n';
    }
    std::string text() const { return text_.str(); }

private:
    std::ostringstream text_;
};

// A valid test rejects at a level no more often than the level says. Its P-values may be larger.
inline std::string faults_of_valid(const PValues& v) {
    Faults faults;
    faults.check_distance("small", distance_from_uniform(v.p).above,
                          one_sided_limit(v.p.size()) + v.resolution);
    for (const double level : kLevels)
        faults.check_share(v.p, level, 0.0, level + v.resolution);
    return faults.text();
}

// P-values without ties are neither too small nor too large.
inline std::string faults_of_uniform(const PValues& v) {
    Faults faults;
    const UniformDistance d = distance_from_uniform(v.p);
    const double limit = two_sided_limit(v.p.size()) + v.resolution;
    faults.check_distance("small", d.above, limit);
    faults.check_distance("large", d.below, limit);
    for (const double level : kLevels)
        faults.check_share(v.p, level, level - std::min(level / 2.0, v.resolution), level + v.resolution);
    return faults.text();
}

inline void expect_valid(const PValues& v) {
    print_measured("valid", v);
    EXPECT_EQ(faults_of_valid(v), "") << v.test;
}

inline void expect_uniform(const PValues& v) {
    print_measured("uniform", v);
    EXPECT_EQ(faults_of_uniform(v), "") << v.test;
}

// At least `power` of the P-values are 0.05 or less.
inline void expect_powerful(const PValues& v, double power) {
    print_measured("power", v);
    EXPECT_GE(share_up_to(v.p, 0.05), power) << v.test;
}

}  // namespace mnd_test
