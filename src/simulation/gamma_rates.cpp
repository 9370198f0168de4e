#include "simulation/gamma_rates.h"

#include <algorithm>
#include <cstddef>

#include "foundation/random.h"

namespace mnd {
namespace {

// Number of sites that have the other rate; any share is brought within the sites there are.
std::size_t num_fixed_sites(std::size_t n, double p_fixed) {
    const double sites = static_cast<double>(n);
    const double share = sites * p_fixed;
    if (!(share > -1.0)) return 0;
    if (share >= sites) return n;
    return std::min(n, 1 + static_cast<std::size_t>(std::max(share, 0.0)));
}

}  // namespace

void GammaRates::build(int n, double const& a, double const& p_fixed, double const& v) {
    rates.assign(static_cast<std::size_t>(std::max(n, 0)), 1.0);
    shape_ = a;
    p_fixed_ = p_fixed;
    fixed_rate_ = v;
    get_new_rates();
}

void GammaRates::get_new_rates(double const& a, double const& p_fixed, double const& v) {
    if (a > 0.0) {
        for (double& rate : rates)
            rate = gamma_dev(a);
    } else {
        std::fill(rates.begin(), rates.end(), 1.0);
        std::fill_n(rates.begin(), num_fixed_sites(rates.size(), p_fixed), v);
    }
    double sum = 0.0;
    for (const double rate : rates)
        sum += rate;
    if (sum == 0.0) return;  // all rates are 0: there is nothing to mutate
    for (double& rate : rates)
        rate /= sum;
}

}  // namespace mnd
