// The model of a sudden expansion, fitted to the distribution of pairwise differences.
//
// A population of size theta0 grows at once to theta1, tau units of mutational time ago. The
// expected share of pairs with i differences is that of Li 1977 (Genetics 85:331-337), used by
// Rogers and Harpending 1992 (Mol. Biol. Evol. 9:552-569). Its parameters are found by least
// squares (Schneider and Excoffier 1999, Genetics 152:1079-1089), their intervals by a parametric
// bootstrap: samples are simulated under the fitted parameters and fitted as the data are.
//
// A distribution is a pair of arrays that start at 1: diff[k] is a number of differences, freq[k]
// its pairs or their share, k = 1 .. count - 1; diff[k] = k - 1 throughout. Slot `count` is the
// class above the last one, with no pairs.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <memory>
#include <vector>

#include "model/mismatch_result.h"
#include "within/curve_tables.h"

namespace mnd {

class MutatedSites;
class PopGenetics;
class settings;

// Results of the replicates that count, in the order in which they came; sorted by
// make_bootstrap before it reads percentiles.
struct ReplicateResults {
    std::vector<double> Tau;
    std::vector<double> Theta0;
    std::vector<double> Theta1;
    std::vector<double> M;
    std::vector<double> growth;               // Theta1 / Theta0, where Theta0 is above 0
    std::vector<double> mean;                 // mean number of pairwise differences
    std::vector<double> sites;                // polymorphic sites
    std::vector<std::vector<double>> shares;  // per class 0 .. count - 1, of the simulated pairs
    int kept = 0;                             // replicates that count
    int ssd_hits = 0;                         // of these, as badly fitted as the data, or worse
    int rag_hits = 0;                         // and as ragged, or more

    void sort();
};

class ann_missmatch {
public:
    // Length of the tables of a curve; classes above are evaluated one by one.
    static constexpr int kTableSize = 1005;

    double Theta0 = 1.0;
    double Theta1 = 5.0;
    double Tau = 3.0;
    double r = 1.0;
    double r1 = 1.0;
    double r2 = 1.0;
    double alpha = -1.0;                // shape of gamma distributed rates of simulated sites; -1: none
    std::vector<double> f_vect;         // owned: the expected shares, kTableSize
    std::vector<double> f0_vect;        // owned: shares of a stable population of Theta0
    std::vector<double> f1_vect;        // owned: of Theta1
    PopGenetics* pop = nullptr;         // not owned: the sample
    mnd::settings* settings = nullptr;  // not owned
    int pairs = 500;                    // classes at most
    int max_steps = 2000;               // rounds of a search at most
    double epsilon = 0.001;             // a search ends when its steps are that small
    int N = 4000000;                    // size of the simulated population
    int sample_size = 0;                // gene copies, by the number of pairs
    int m1 = 400;                       // simulated sites
    int m2 = 0;
    int m3 = 0;
    int model = 2;
    int use_rh = 1;
    int not_converged = 0;  // 1: the last search did not end on small steps
    int skip_obs = 0;       // not 0: no replicates, whatever num_boot
    double ssd_work = 0.0;  // sum of squared deviations at the end of the last search
    double transition_rate = 0.33;
    double alpha_ci = 0.05;
    bool fitted = false;  // a fit was made: the sample has pairs
    int num_boot = 0;     // replicates asked for; after the bootstrap those that count
    double ssd_obs = 0.0;
    double p_ssd = 0.0;
    double rag_obs = 0.0;
    double p_rag = 0.0;
    ParameterPercentiles tau_percentiles;
    ParameterPercentiles theta0_percentiles;
    ParameterPercentiles theta1_percentiles;

    ann_missmatch();
    ann_missmatch(PopGenetics* sample, mnd::settings* run_settings);
    virtual ~ann_missmatch();
    ann_missmatch(const ann_missmatch&) = delete;
    ann_missmatch& operator=(const ann_missmatch&) = delete;

    // Sets the parameters; N, max_steps and epsilon to their defaults.
    void init_data(double const& theta0, double const& theta1, double const& tau, double const& r_value);

    // Last class of `pop` that a fit can take in: last_expected_class (max_diff if that is 0), but no
    // further than `pairs` - 1.
    int last_class() const;
    // The observed distribution of `pop` up to last_class(), but no further than the last class with
    // pairs.
    //   diff, freq   slots 1 .. pairs are written; freq holds counts
    //   count        written: classes + 1
    //   total        written: their pairs
    // Writes: the start of the search, sample_size
    void read_mismatch_pop(double* diff, double* freq, int& count, long& total);

    // Fits the model to the sample and writes estimates, fit and replicates to the document.
    // Returns: false when the work was stopped
    bool solve_least_square_rh(std::basic_fstream<char>& out);

    // Pattern search for the parameters with the least sum of squared deviations from freq, from
    // the present ones on. A step grows by 4 when it gains and halves when it does not.
    //   freq         shares
    //   step_limit   rounds at most
    //   threshold    the search ends when all steps are no larger
    // A trial starts from the values at the top of the round. Theta0 never ends up above Theta1: the
    // parameter on trial takes the other along, whichever way it moves; Theta0 may pass Theta1 on its
    // way down, too, when Theta1 has come down below the Theta0 of the top of the round. Both meet at a
    // size above 0. A step below the threshold becomes 0, and its parameter rests.
    // Writes:  Theta0, Theta1, Tau, not_converged, ssd_work
    // Returns: true when it ended on small steps. A sum that is not finite ends it as a failure.
    // Source:  Hooke and Jeeves 1961, J. ACM 8:212-229
    bool hook_jeeves_rh(double* diff, double* freq, int const& count, int const& step_limit,
                        double const& threshold);

    // Expected share of pairs with i differences. A Theta0 or Tau that is not positive becomes
    // 1e-07 (and stays so); Theta1 becomes Theta0 if it is not above it and Tau was not positive.
    double f_i_exp(int const& i);
    // The same for i = 0 .. top, below kTableSize, into f_vect: identical to the last bit, since
    // each sum has the same terms in the same order.
    void compute_curve(int top);
    // Sum of squared deviations of freq from the expected shares; 0 for a count below 2.
    double f_SRod_Harp(double* diff, double* freq, int const& count);

    // Raggedness of freq[1..k]: squared steps between neighbours, with the one behind the last
    // class, over the squared sum of freq.
    // Source: Harpending 1994, Hum. Biol. 66:591-600
    static double compute_raggedness_index(double* diff, double* freq, int k);
    // Mean number of differences: sum of diff freq over slots 1 .. count.
    static double calc_mean_mssm(double* diff, double* freq, int const& count);

    // Simulates a sample under the present parameters, and its distribution into diff and freq
    // (shares). Returns: 1; 0 when Theta1 is not positive or no sample came about.
    virtual int simulate_miss(double* diff, double* freq, int& count);
    // The theta that founders have in simulate_miss: Theta0, unless it is larger than they can be, or
    // smaller than one of the N individuals is with such a Theta1.
    double founder_theta() const;
    // Distribution of the simulated sample of `pop`, and its number of polymorphic sites.
    //   copies   gene copies that it should have; another number is said in the log
    //   count    as of the data: pairs with more than count - 2 differences have no class, but
    //            count in the divisor
    void calc_mismatch(double* diff, double* freq, int copies, int count);
    int simulated_sites() const { return simulated_sites_; }

    // Replicates of the simulation and its fit, their P-values and percentiles, and their block.
    //   freq     observed shares
    //   fitted_shares    shares of the fitted curve, slots 1 .. count
    //   total    observed pairs
    //   asked    replicates
    // Writes:  num_boot, p_ssd, p_rag, percentiles; settings::global_work_done, 1 a replicate
    // Returns: false, without results, when the work was stopped. The parameters are the fitted
    //          ones again.
    bool make_bootstrap(double* diff, double* freq, double* fitted_shares, int& count, long const& total,
                        std::basic_fstream<char>& out, int asked);

    // Estimates and results in one record.
    virtual ExpansionFit result() const;

protected:
    // What the models differ in, once per replicate.
    virtual bool simulate_replicate(double* diff, double* freq, int& count);
    virtual bool fit_replicate(double* diff, double* freq, int count);
    virtual void keep_parameters(ReplicateResults& results) const;
    // Largest share that a class keeps; larger ones are left out of its list.
    virtual double largest_share() const;

    struct Parameters {
        double Theta0, Theta1, Tau, M;
    };
    virtual Parameters parameters() const;
    virtual void set_parameters(const Parameters& values);

    // Replicates of the present parameters, which are put back before each fit and at the end.
    // Returns: false when the work was stopped
    bool run_replicates(int count, int asked, ReplicateResults& results);
    // Room for the trees of the sample, and no trace of the simulations of another analysis.
    void begin_simulations();
    // num_boot, p_ssd, p_rag and percentiles from sorted results.
    void summarise(const ReplicateResults& results);
    // Sum of squared deviations of freq from a curve, over slots 1 .. count - 1; 0 for a count below 2.
    //   fill       fill(top) leaves the shares of the classes 0 .. top in f_vect
    //   expected   expected(i) is the share of class i, for a curve that is longer than the table
    template <class Fill, class Expected>
    double squared_deviations(const double* diff, const double* freq, int count, const Fill& fill,
                              const Expected& expected) {
        if (count < 2) return 0.0;
        int top = 0;
        for (int k = 1; k < count; ++k)
            top = std::max(top, static_cast<int>(diff[k]));
        const bool has_table = top < kTableSize;
        if (has_table) fill(top);
        double ssd = 0.0;
        for (int k = 1; k < count; ++k) {
            const int i = static_cast<int>(diff[k]);
            const double share = has_table ? f_vect[static_cast<std::size_t>(i)] : expected(i);
            ssd += (share - freq[k]) * (share - freq[k]);
        }
        return ssd;
    }

    std::unique_ptr<MutatedSites> simulated_;  // owned: of the last replicate; null before the first

private:
    // f_i_exp for a Tau of hundreds, whose Poisson terms are beyond the range of a double: with the
    // factor of the sum in each of them.
    double share_after_long_time(int i) const;
    void keep_replicate(double* diff, double* freq, int count, double raggedness,
                        ReplicateResults& results) const;

    KeptTables weights_;                         // Poisson terms of Tau, without exp(-Tau)
    KeptTables shares0_;                         // of a stable population of Theta0
    KeptTables shares1_;                         // of Theta1
    std::vector<double> step_vect_;              // owned: f0_vect - f1_vect, with room for lanes
    std::vector<std::int64_t> simulated_pairs_;  // owned: pairs of the last replicate, by difference
    int simulated_sites_ = 0;
};

}  // namespace mnd
