// The exact test of Hardy-Weinberg proportions written out plainly: the chain step by step, and
// the complete list of tables.
#pragma once

#include <algorithm>
#include <cmath>
#include <functional>
#include <vector>

#include "foundation/count_table.h"
#include "foundation/random.h"

namespace mnd_test {

// Genotype counts, the cell (i, j) with i <= j in use.
using GenotypeCounts = std::vector<std::vector<int>>;

inline mnd::CountTable as_table(const GenotypeCounts& counts) {
    mnd::CountTable table;
    const int n = static_cast<int>(counts.size());
    table.build(n, n);
    for (int i = 0; i < n; ++i) {
        for (int j = i; j < n; ++j)
            table[i][j] = counts[static_cast<std::size_t>(i)][static_cast<std::size_t>(j)];
    }
    return table;
}

inline GenotypeCounts as_counts(const mnd::CountTable& table) {
    const auto n = static_cast<std::size_t>(table.rows());
    GenotypeCounts counts(n, std::vector<int>(n, 0));
    for (std::size_t i = 0; i < n; ++i) {
        for (std::size_t j = 0; j < n; ++j)
            counts[i][j] = table[static_cast<int>(i)][static_cast<int>(j)];
    }
    return counts;
}

// One chain, case by case as published.
class PlainChain {
public:
    explicit PlainChain(GenotypeCounts start) : table(std::move(start)) {}

    GenotypeCounts table;
    long double log_ratio = 0.0L;
    long steps = 0;
    long impossible = 0;  // steps for which the ratio was 0

    // Returns: ratio of the new table to the old one
    double step() {
        const int i1 = draw();
        const int i2 = draw();
        int i3 = draw();
        while (i3 == i1)
            i3 = draw();
        int i4 = draw();
        while (i4 == i2)
            i4 = draw();
        const double r = ratio(i1, i2, i3, i4);
        long idum = 1;
        const double u = mnd::ran3(&idum);
        double result = 1.0;
        if (u < r) {
            --cell(i1, i2);
            --cell(i3, i4);
            ++cell(i1, i4);
            ++cell(i2, i3);
            result = r;
        }
        ++steps;
        if (r == 0.0) ++impossible;
        log_ratio += std::log(result);
        return result;
    }

    double ratio(int i1, int i2, int i3, int i4) {
        const double A = cell(i1, i2);
        const double B = cell(i3, i4);
        const double C = cell(i1, i4);
        const double D = cell(i2, i3);
        double r = 0.0;
        if (i1 == i2 && i3 == i4) {
            if (A > 0 && B > 0) r = A * B / ((C + 1) * (D + 2));
        } else if (i1 == i4 && i2 == i3) {
            if (A > 1) r = (A - 1) * A / ((C + 1) * (D + 1));
        } else if (A > 0 && B > 0) {
            r = A * B / ((C + 1) * (D + 1));
        }
        if (i1 == i2) r *= 2;
        if (i3 == i4) r *= 2;
        if (i1 == i4) r /= 2;
        if (i3 == i2) r /= 2;
        return r;
    }

    int& cell(int i, int j) {
        return table[static_cast<std::size_t>(std::min(i, j))][static_cast<std::size_t>(std::max(i, j))];
    }

private:
    int draw() {
        const int n = static_cast<int>(table.size());
        for (;;) {
            long idum = 1;
            const int i = static_cast<int>(n * mnd::ran3(&idum));
            if (i != n) return i;
        }
    }
};

struct PlainResult {
    double p = 0.0;
    double sd = 0.0;
    long steps_done = 0;
};

// One long chain; step k belongs to batch k mod B.
inline PlainResult plain_long_chain(const GenotypeCounts& observed, long steps, long burn_in) {
    const long B = static_cast<long>(std::sqrt(static_cast<double>(steps)));
    const long L = steps / B + 1;
    PlainChain chain(observed);
    for (long k = 0; k < burn_in; ++k)
        chain.step();
    std::vector<double> batch(static_cast<std::size_t>(B), 0.0);
    double hits = 0.0;
    for (long k = 0; k < B * L; ++k) {
        chain.step();
        if (chain.log_ratio <= 1e-06) {
            batch[static_cast<std::size_t>(k % B)] += 1.0;
            hits += 1.0;
        }
    }
    PlainResult result;
    result.steps_done = B * L;
    result.p = hits / static_cast<double>(B * L);
    double sum = 0.0;
    for (const double of_batch : batch) {
        const double share = of_batch / static_cast<double>(L);
        sum += (share - result.p) * (share - result.p);
    }
    if (B >= 2) result.sd = std::sqrt(sum / static_cast<double>(B * (B - 1)));
    return result;
}

// A chain for each batch, from the observed table.
inline PlainResult plain_short_chains(const GenotypeCounts& observed, long steps, long burn_in,
                                      double precision) {
    const long B = static_cast<long>(std::sqrt(static_cast<double>(steps)));
    const long L = steps / B + 1;
    PlainResult result;
    result.sd = 1.0;
    double hits = 0.0;
    std::vector<double> shares;
    for (long b = 0; b < B; ++b) {
        PlainChain chain(observed);
        for (long k = 0; k < burn_in; ++k)
            chain.step();
        double of_batch = 0.0;
        for (long k = 0; k < L; ++k) {
            chain.step();
            if (chain.log_ratio <= 1e-06) of_batch += 1.0;
        }
        shares.push_back(of_batch / static_cast<double>(L));
        hits += of_batch;
        result.steps_done += L;
        result.p = hits / static_cast<double>(result.steps_done);
        if (b < 2) continue;
        double sum = 0.0;
        for (long i = 0; i < b; ++i) {
            const double deviation = shares[static_cast<std::size_t>(i)] - result.p;
            sum += deviation * deviation;
        }
        result.sd = std::sqrt(sum / static_cast<double>((b - 1) * b));
        if (result.sd < precision) break;
    }
    return result;
}

inline std::vector<int> allele_counts(const GenotypeCounts& table) {
    std::vector<int> counts(table.size(), 0);
    for (std::size_t i = 0; i < table.size(); ++i) {
        for (std::size_t j = i; j < table.size(); ++j) {
            counts[i] += table[i][j];
            counts[j] += table[i][j];
        }
    }
    return counts;
}

// ln of 2^heterozygotes / product of the factorials of the cells, to which the probability of a
// table among those of its allele counts is proportional (Levene 1949).
inline double log_weight(const GenotypeCounts& table) {
    double result = 0.0;
    for (std::size_t i = 0; i < table.size(); ++i) {
        for (std::size_t j = i; j < table.size(); ++j) {
            const int f = table[i][j];
            if (i != j) result += f * std::log(2.0);
            for (int k = 2; k <= f; ++k)
                result -= std::log(static_cast<double>(k));
        }
    }
    return result;
}

// Calls visit for each table with these allele counts.
inline void for_each_table(const std::vector<int>& alleles,
                           const std::function<void(const GenotypeCounts&)>& visit) {
    const std::size_t n = alleles.size();
    GenotypeCounts table(n, std::vector<int>(n, 0));
    std::vector<int> left = alleles;
    std::function<void(std::size_t, std::size_t)> fill = [&](std::size_t i, std::size_t j) {
        if (i == n) {
            visit(table);
            return;
        }
        if (j == n) {
            if (left[i] == 0) fill(i + 1, i + 1);
            return;
        }
        const int largest = i == j ? left[i] / 2 : std::min(left[i], left[j]);
        for (int f = 0; f <= largest; ++f) {
            table[i][j] = f;
            left[i] -= f;
            left[j] -= f;
            fill(i, j + 1);
            left[i] += f;
            left[j] += f;
        }
        table[i][j] = 0;
    };
    fill(0, 0);
}

// P of the test from all tables.
struct Enumeration {
    double p = 0.0;        // tables no more probable than the observed one
    double p_below = 0.0;  // those that are less probable
    long tables = 0;
    long ties = 0;  // tables as probable as the observed one, itself included
};

inline Enumeration enumerate(const GenotypeCounts& observed) {
    Enumeration result;
    const double of_observed = log_weight(observed);
    double all = 0.0;
    for_each_table(allele_counts(observed), [&](const GenotypeCounts& table) {
        const double difference = log_weight(table) - of_observed;
        const double weight = std::exp(difference);
        all += weight;
        ++result.tables;
        if (std::fabs(difference) < 1e-9) {
            ++result.ties;
            result.p += weight;
        } else if (difference < 0.0) {
            result.p += weight;
            result.p_below += weight;
        }
    });
    result.p /= all;
    result.p_below /= all;
    return result;
}

}  // namespace mnd_test
