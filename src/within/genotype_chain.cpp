#include "within/genotype_chain.h"

#include <algorithm>
#include <cmath>

#include "foundation/random.h"

namespace mnd {

namespace {

// Genotypes (i1, i2) and (i3, i4) become (i1, i4) and (i2, i3).
struct Indices {
    int i1, i2, i3, i4;

    bool all_below(int n) const {
        const auto limit = static_cast<unsigned>(n);
        return static_cast<unsigned>(i1) < limit && static_cast<unsigned>(i2) < limit &&
               static_cast<unsigned>(i3) < limit && static_cast<unsigned>(i4) < limit;
    }
};

// The cells that a replacement takes from (a, b) and adds to (c, d), and its probability ratio.
struct Replacement {
    std::size_t a, b, c, d;
    double ratio;
};

// A number that gives n itself is passed over.
int draw_index(int n) {
    int i;
    do {
        i = static_cast<int>(n * ran3());
    } while (i == n);
    return i;
}

int draw_other_index(int n, int avoided) {
    int i;
    do {
        i = draw_index(n);
    } while (i == avoided);
    return i;
}

Indices draw_indices(int n) {
    Indices x;
    x.i1 = draw_index(n);
    x.i2 = draw_index(n);
    x.i3 = draw_other_index(n, x.i1);
    x.i4 = draw_other_index(n, x.i2);
    return x;
}

std::size_t cell(int n, int i, int j) {
    return static_cast<std::size_t>(std::min(i, j)) * static_cast<std::size_t>(n) +
           static_cast<std::size_t>(std::max(i, j));
}

// One expression without branches serves all cases. Where one genotype is taken or made twice, its
// two cells are one, and the second count stands one below or above the first; without the
// genotypes the product is 0. A table is the more probable by 2 for each of its heterozygotes.
Replacement weigh(const std::int32_t* cells, int n, const Indices& x) {
    static constexpr double kHeterozygoteFactors[5] = {0.25, 0.5, 1.0, 2.0, 4.0};
    const int taken_homozygotes = (x.i1 == x.i2 ? 1 : 0) + (x.i3 == x.i4 ? 1 : 0);
    const int made_homozygotes = (x.i1 == x.i4 ? 1 : 0) + (x.i2 == x.i3 ? 1 : 0);
    Replacement r{cell(n, x.i1, x.i2), cell(n, x.i3, x.i4), cell(n, x.i1, x.i4), cell(n, x.i2, x.i3), 0.0};
    const double A = cells[r.a];
    const double B = cells[r.b] - (made_homozygotes == 2 ? 1.0 : 0.0);
    const double C = cells[r.c] + 1.0;
    const double D = cells[r.d] + (taken_homozygotes == 2 ? 2.0 : 1.0);
    r.ratio = A * B / (C * D) * kHeterozygoteFactors[2 + taken_homozygotes - made_homozygotes];
    return r;
}

void replace(std::int32_t* cells, const Replacement& r) {
    --cells[r.a];
    --cells[r.b];
    ++cells[r.c];
    ++cells[r.d];
}

}  // namespace

double genotype_swap_ratio(const CountTable& table, int i1, int i2, int i3, int i4) {
    return weigh(table.cells().data(), table.rows(), {i1, i2, i3, i4}).ratio;
}

bool GenotypeChain::walk(std::int64_t steps, std::int64_t* hits, std::ptrdiff_t stride) {
    std::int32_t* const cells = table_.cells().data();
    const int n = table_.rows();
    long double log_ratio = log_ratio_;
    double last_ratio = last_ratio_;
    std::int64_t hit = log_ratio <= kEquiprobableLogRatio ? 1 : 0;
    for (; steps > 0; --steps, hits += stride) {
        const Indices x = draw_indices(n);
        if (!x.all_below(n)) return false;
        const Replacement r = weigh(cells, n, x);
        last_ratio = 1.0;
        if (ran3() < r.ratio) {
            replace(cells, r);
            last_ratio = r.ratio;
            if (r.ratio != 1.0) {  // the logarithm of 1 adds nothing
                log_ratio += std::log(r.ratio);
                hit = log_ratio <= kEquiprobableLogRatio ? 1 : 0;
            }
        }
        *hits += hit;
    }
    log_ratio_ = log_ratio;
    last_ratio_ = last_ratio;
    return true;
}

bool GenotypeChain::run(std::int64_t steps) {
    std::int64_t passed_over = 0;
    return walk(steps, &passed_over, 0);
}

bool GenotypeChain::run(std::span<std::int64_t> hits) {
    return walk(static_cast<std::int64_t>(hits.size()), hits.data(), 1);
}

bool GenotypeChain::run(std::int64_t steps, std::int64_t& hits) {
    return walk(steps, &hits, 0);
}

}  // namespace mnd
