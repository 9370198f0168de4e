#include "within/mismatch_analyses.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <numeric>
#include <vector>

#include "model/popul_dna.h"
#include "model/popul_rflp.h"
#include "run/settings.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"
#include "within/mismatch_tables.h"

namespace mnd {

namespace {

constexpr double kStartOfM = 2.0;

// Distribution of the data with its fit, in arrays that start at 1.
struct Distribution {
    std::vector<double> diff, freq, fitted;
    int count = 0;
    long total = 0;

    // Slot `pairs` + 1 is that above the last possible class.
    explicit Distribution(ann_missmatch& fit)
        : diff(static_cast<std::size_t>(fit.pairs) + 10), freq(diff), fitted(diff) {
        fit.read_mismatch_pop(diff.data(), freq.data(), count, total);
        diff[static_cast<std::size_t>(fit.pairs) + 1] = fit.pairs;
        if (total <= 0) return;
        for (double& f : freq)
            f /= static_cast<double>(total);
    }

    FitTable table() const { return {diff.data(), freq.data(), fitted.data(), count, total}; }

    template <class Expected>
    void evaluate(const Expected& expected) {
        for (std::size_t k = 1; k <= static_cast<std::size_t>(count); ++k)
            fitted[k] = expected(static_cast<int>(diff[k]));
    }
};

}  // namespace

bool ann_missmatch::solve_least_square_rh(std::basic_fstream<char>& out) {
    Distribution data(*this);
    if (data.total <= 0) return true;
    hook_jeeves_rh(data.diff.data(), data.freq.data(), data.count, max_steps, epsilon);
    fitted = true;
    ssd_obs = ssd_work;
    print_sudden_estimates(out, *this);
    rag_obs = compute_raggedness_index(data.diff.data(), data.freq.data(), data.count);
    data.evaluate([this](int i) { return f_i_exp(i); });
    if (num_boot > 0 && skip_obs == 0)
        return make_bootstrap(data.diff.data(), data.freq.data(), data.fitted.data(), data.count, data.total,
                              out, num_boot);
    num_boot = 0;
    print_fit_table(out, data.table());
    return true;
}

bool mismatchSpatialExpansion::solve_least_square_spatial_expansion_3_par(std::basic_fstream<char>& out) {
    Distribution data(*this);
    M = kStartOfM;
    if (data.total <= 0) return true;
    hook_jeeves_spatial_exp_3_par(data.diff.data(), data.freq.data(), data.count, max_steps, epsilon);
    fitted = true;
    ssd_obs = ssd_work;
    print_spatial_estimates_3(out, *this);
    rag_obs = compute_raggedness_index(data.diff.data(), data.freq.data(), data.count);
    data.evaluate([this](int i) { return f_i_spatial_exp_3p(i); });
    if (num_boot > 0 && skip_obs == 0)
        return make_bootstrap_spatial_exp(data.diff.data(), data.freq.data(), data.fitted.data(), data.count,
                                          data.total, out, num_boot);
    num_boot = 0;
    print_spatial_fit_table(out, data.table());
    return true;
}

bool mismatchSpatialExpansion::solve_least_square_spatial_expansion_4_par(std::basic_fstream<char>& out) {
    Distribution data(*this);
    M = kStartOfM;
    if (data.total <= 0) return true;
    hook_jeeves_spatial_exp_4_par(data.diff.data(), data.freq.data(), data.count, max_steps, epsilon);
    fitted = true;
    ssd_obs = ssd_work;
    rag_obs = compute_raggedness_index(data.diff.data(), data.freq.data(), data.count);
    num_boot = 0;
    print_spatial_estimates_4(out, *this);
    data.evaluate([this](int i) { return f_i_spatial_exp_4p(i); });
    print_spatial_fit_table(out, data.table());
    return true;
}

namespace {

void prepare_fit(ann_missmatch& fit, const PopGenetics& sample, const settings& s) {
    fit.alpha_ci = 0.05;
    fit.transition_rate = 0.33;
    fit.num_boot = std::max(0, s.NumBootExpDem);
    fit.sample_size = static_cast<int>(sample.sample_size);
}

int fit_sudden_expansion(PopGenetics& sample, settings& s, std::basic_fstream<char>& out) {
    ann_missmatch fit(&sample, &s);
    fit.init_data(0.0, 0.0, 0.0, 1.0);
    fit.model = 2;
    prepare_fit(fit, sample, s);
    if (!fit.solve_least_square_rh(out)) return 0;
    sample.sudden_expansion = fit.result();
    if (fit.fitted) write_mismatch_row(sample);
    return 1;
}

bool fit_spatial_4(PopGenetics& sample, settings& s, std::basic_fstream<char>& out) {
    mismatchSpatialExpansion fit(&sample, &s);
    prepare_fit(fit, sample, s);
    if (!fit.solve_least_square_spatial_expansion_4_par(out)) return false;
    sample.spatial_expansion_4 = fit.result();
    if (fit.fitted) write_mismatch_sp4_row(sample);
    return true;
}

bool fit_spatial_3(PopGenetics& sample, settings& s, std::basic_fstream<char>& out) {
    mismatchSpatialExpansion fit(&sample, &s);
    prepare_fit(fit, sample, s);
    if (!fit.solve_least_square_spatial_expansion_3_par(out)) return false;
    sample.spatial_expansion_3 = fit.result();
    if (fit.fitted) write_mismatch_sp3_row(sample);
    return true;
}

int fit_spatial_expansion(PopGenetics& sample, settings& s, std::basic_fstream<char>& out) {
    switch (s.MismatchSpatialExpNumParams) {
        case 2:
            return fit_spatial_4(sample, s, out) && !s.stopped() && fit_spatial_3(sample, s, out) ? 1 : 0;
        case 3:
            return fit_spatial_3(sample, s, out) ? 1 : 0;
        case 4:
            return fit_spatial_4(sample, s, out) ? 1 : 0;
        default:
            print_no_spatial_model(out, s.MismatchSpatialExpNumParams);
            return 1;
    }
}

}  // namespace

int PopulDNA::est_demog_mis(settings* s, std::basic_fstream<char>& out) {
    return fit_sudden_expansion(*this, *s, out);
}
int PopulRFLP::est_demog_mis(settings* s, std::basic_fstream<char>& out) {
    return fit_sudden_expansion(*this, *s, out);
}
int PopulDNA::est_spatial_mis(settings* s, std::basic_fstream<char>& out) {
    return fit_spatial_expansion(*this, *s, out);
}
int PopulRFLP::est_spatial_mis(settings* s, std::basic_fstream<char>& out) {
    return fit_spatial_expansion(*this, *s, out);
}

namespace {

// Says which pairs the fits leave out. Returns: false when they leave out all
bool has_pairs_to_fit(std::ostream& out, PopGenetics& sample) {
    const int last = ann_missmatch(&sample, nullptr).last_class();
    const auto begin = sample.mm_counts.begin();
    const auto end = begin + std::min<std::ptrdiff_t>(last + 1, std::ssize(sample.mm_counts));
    const std::int64_t within = std::accumulate(begin, end, std::int64_t{0});
    const std::int64_t beyond = std::accumulate(end, sample.mm_counts.end(), std::int64_t{0});
    if (beyond > 0) print_pairs_left_out(out, beyond, within, last);
    return within > 0;
}

// A fit needs a variance, and the table of the classes. Without, the document says why.
bool allows_fit(std::ostream& out, PopGenetics& sample) {
    if (!(sample.mm_variance > kLeastMismatchVariance)) {
        print_variance_too_small(out);
        out << '\n';
        return false;
    }
    if (!sample.mm_counts.empty()) return has_pairs_to_fit(out, sample);
    out << '\n';
    print_no_classes(out, sample);
    return false;
}

template <class Sample>
bool fit_models(Sample& sample, settings& s, std::basic_fstream<char>& out) {
    write_only_mismatch_row(sample);
    if (!s.MismatchDemogExp && !s.MismatchSpatialExp) {
        print_mismatch_distribution(out, sample);
        return true;
    }
    if (s.MismatchDemogExp) print_sudden_heading(out);
    print_observed_moments(out, sample);
    if (!allows_fit(out, sample)) return true;
    if (s.MismatchDemogExp && sample.est_demog_mis(&s, out) == 0) return false;
    if (s.stopped()) return false;
    return !s.MismatchSpatialExp || sample.est_spatial_mis(&s, out) != 0;
}

}  // namespace

bool fit_expansions(PopulDNA& sample, settings& s, std::basic_fstream<char>& out) {
    return fit_models(sample, s, out);
}
bool fit_expansions(PopulRFLP& sample, settings& s, std::basic_fstream<char>& out) {
    return fit_models(sample, s, out);
}

}  // namespace mnd
