// The model of a spatial expansion, fitted to the distribution of pairwise differences.
//
// An infinity of demes that exchange migrants was founded, tau units of mutational time ago, by one
// population of theta0; demes have theta1 and exchange M migrants (Excoffier 2004, Mol. Ecol.
// 13:853-864; Ray, Currat and Excoffier 2003, Mol. Biol. Evol. 20:76-86). The form of three
// parameters has one theta, in both fields. Distributions are held as told in mismatch_fit.h.
#pragma once

#include <fstream>

#include "within/mismatch_fit.h"

namespace mnd {

class mismatchSpatialExpansion : public ann_missmatch {
public:
    double M = 0.0;                      // gene copies exchanged by a deme per generation (2Nm)
    ParameterPercentiles m_percentiles;  // written by the bootstrap

    mismatchSpatialExpansion();
    mismatchSpatialExpansion(PopGenetics* sample, mnd::settings* run_settings);

    // Sets the parameters; N, max_steps and epsilon to their defaults.
    void init_data(double const& theta0, double const& theta1, double const& tau, double const& migrants,
                   double const& r_value);

    // Fit the model to the sample and write it to the document, with replicates for the form of
    // three parameters. Returns: false when the work was stopped
    bool solve_least_square_spatial_expansion_3_par(std::basic_fstream<char>& out);
    bool solve_least_square_spatial_expansion_4_par(std::basic_fstream<char>& out);

    // Pattern searches from random starts, 3 or 10 of them; the best one's parameters stay. The
    // arguments are those of hook_jeeves_rh.
    // Draws:   3 a start (theta, Tau, M), or 4 (Theta1, Theta0, Tau, M), also for a start that
    //          cannot gain
    // Writes:  parameters, not_converged; ssd_work, the sum of the best start
    // Returns: whether the last start ended on small steps; kept on purpose, though it need not be
    //          the best one. Test: SpatialSearch.ReturnsTheConvergenceOfTheLastStart
    bool hook_jeeves_spatial_exp_3_par(double* diff, double* freq, int const& count, int const& step_limit,
                                       double const& threshold);
    bool hook_jeeves_spatial_exp_4_par(double* diff, double* freq, int const& count, int const& step_limit,
                                       double const& threshold);

    // Expected share of pairs with i differences. Parameters that are not positive become 0.01
    // (thetas) or 1e-05 (M, Tau) and stay so.
    double f_i_spatial_exp_3p(int const& i);
    double f_i_spatial_exp_4p(int const& i);
    // The same for i = 0 .. top, below kTableSize, into f_vect; identical to the last bit.
    void compute_curve_3p(int top);
    void compute_curve_4p(int top);
    double f_S_Spatial_Exp_3p(double* diff, double* freq, int const& count);
    double f_S_Spatial_Exp_4p(double* diff, double* freq, int const& count);

    // As simulate_miss, of a deme after a range expansion.
    int simulate_spatial_exp(double* diff, double* freq, int& count);
    // As make_bootstrap, for the form of three parameters.
    bool make_bootstrap_spatial_exp(double* diff, double* freq, double* fitted_shares, int& count,
                                    long const& total, std::basic_fstream<char>& out, int asked);

    ExpansionFit result() const override;

protected:
    bool simulate_replicate(double* diff, double* freq, int& count) override;
    bool fit_replicate(double* diff, double* freq, int count) override;
    void keep_parameters(ReplicateResults& results) const override;
    double largest_share() const override;
    Parameters parameters() const override;
    void set_parameters(const Parameters& values) override;

private:
    struct Curve;
    void raise_parameters();
    Curve curve(bool cut_after) const;
    double share(const Curve& c, int i) const;
    // The same for a Tau of hundreds, whose Poisson terms are beyond the range of a double: with the
    // factor of each sum in its terms.
    double share_after_long_time(const Curve& c, int i) const;
    void fill_curve(const Curve& c, int top);

    KeptTables poisson_;       // T^k / k!
    KeptTables before_;        // powers of theta0 / (theta0 + 1)
    KeptTables within_;        // powers of theta1 / D
    KeptTables still_;         // shares of pairs that coalesce within their deme, without an end
    std::vector<double> sum_;  // owned: second sums of fill_curve
};

}  // namespace mnd
