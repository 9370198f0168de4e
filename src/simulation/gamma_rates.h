// Relative mutation rates of the sites of a sequence.
#pragma once

#include <vector>

namespace mnd {

// Rates that sum to 1 over the sites, drawn from a gamma distribution, or with a share of the
// sites at another rate than the rest.
class GammaRates {
public:
    std::vector<double> rates;  // owned: one per site

    // Makes the rates of n sites.
    //   a        shape of the gamma distribution; 0 or less: two classes of sites
    //   p_fixed  without a gamma distribution, the first 1 + (int)(n p_fixed) sites, but not
    //            more than there are,
    //   v        have this rate, and the others the rate 1, before the division by the sum
    // Draws:  those of gamma_dev(a) for each site, in order; none without a gamma distribution
    void build(int n, double const& a, double const& p_fixed, double const& v);

    // New rates for the same number of sites. Draws as build does.
    void get_new_rates(double const& a, double const& p_fixed, double const& v);

    // The same with the parameters of the last build.
    void get_new_rates() { get_new_rates(shape_, p_fixed_, fixed_rate_); }

private:
    double shape_ = 0.0;
    double p_fixed_ = 0.0;
    double fixed_rate_ = 1.0;
};

}  // namespace mnd
