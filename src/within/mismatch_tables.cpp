#include "within/mismatch_tables.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <iomanip>
#include <numeric>

#include "foundation/data_type.h"
#include "foundation/format_guard.h"
#include "model/population.h"
#include "results/citations.h"
#include "results/xml_tags.h"
#include "run/settings.h"
#include "within/mismatch_fit.h"
#include "within/mismatch_spatial.h"

namespace mnd {

std::ofstream* ofs_mismatch = nullptr;
std::ofstream* ofs_mismatch_sp3 = nullptr;
std::ofstream* ofs_mismatch_sp4 = nullptr;
std::ofstream* ofs_only_mismatch = nullptr;

namespace {

constexpr int kClassWidth = 13;
constexpr int kValueWidth = 12;
constexpr int kFitWidth = 10;
constexpr int kLabelWidth = 27;
constexpr int kIntervalWidth = 16;
constexpr double kLevels[] = {0.01, 0.05, 0.10};

constexpr const char* kSuddenHeading = "Parameters estimated under the sudden expansion model:";
constexpr const char* kSpatial3Heading = "Parameters of the spatial expansion assuming constant deme size\n";
constexpr const char* kSpatial4Heading =
    "\n\nParameters of the spatial expansion assuming different deme size before (theta0) and after "
    "(theta1) expansion\n";
constexpr const char* kFitTitles = "        #Diff     Observed    Model Freq.\n";
constexpr const char* kSpatialFitTitles = "          #Diff     Observed    Model Freq.\n";
constexpr const char* kSimulatedTitles = "        #Diff     Observed    Simulated   Model Freq.\n";
constexpr const char* kIntervalTitles =
    "                  Variable:       Est. val:     Low. bound:      Up. bound:     Mean Value:\n";
constexpr const char* kRegionTitles = "        #Diff     Observed    Low. bound  Up. bound   Model Freq.\n";

std::string rule(char c, const char* text) {
    std::size_t length = 0;
    for (const char* p = text; *p != '\0'; ++p)
        length += *p != '\n' ? 1 : 0;
    return std::string(length, c);
}

constexpr double kWidestFixed = 1e10;  // from there on a column takes a number in scientific form only

// A number of a table; one that there is not, or that the data do not allow, is "N.A.".
struct Cell {
    double value;
    bool present = true;
};
std::ostream& operator<<(std::ostream& out, Cell cell) {
    return cell.present && std::isfinite(cell.value) ? out << cell.value : out << "N.A.";
}

void print_value(std::ostream& out, const char* label, double value) {
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::setprecision(3) << label << std::setw(kValueWidth) << Cell{value};
}

void print_class_row(std::ostream& out, double diff, std::initializer_list<double> values) {
    out << std::setw(kClassWidth) << static_cast<int>(diff);
    for (const double value : values)
        out << std::setw(kClassWidth) << Cell{value};
    out << '\n';
}

void set_class_format(std::ostream& out) {
    out << std::fixed << std::right << std::setprecision(1);
}

double mean_of(const std::vector<double>& values) {
    if (values.empty()) return 0.0;
    return std::accumulate(values.begin(), values.end(), 0.0) / static_cast<double>(values.size());
}

// Percentile bounds of level 1 - alpha in a sorted list: those at (int)(alpha/2 n) and
// (int)((1 - alpha/2) n), the second one less when it is n.
struct Bounds {
    double low = 0.0;
    double high = 0.0;
};

Bounds bounds_of(const std::vector<double>& sorted, double alpha) {
    if (sorted.empty()) return {};
    const auto n = static_cast<int>(sorted.size());
    const int low = static_cast<int>(alpha / 2.0 * n);
    int high = static_cast<int>((1.0 - alpha / 2.0) * n);
    if (high == n) --high;
    return {sorted[static_cast<std::size_t>(std::clamp(low, 0, n - 1))],
            sorted[static_cast<std::size_t>(std::clamp(high, 0, n - 1))]};
}

}  // namespace

// --- The distribution alone

namespace {

void print_moment_fit(std::ostream& out, const PopGenetics& sample) {
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::setprecision(3);
    const bool tested = sample.mm_chi2_df >= 1;
    out << "\nChi-square                          : " << std::setw(kValueWidth)
        << Cell{sample.mm_chi2, tested};
    out << "\nDegrees of freedom                  : " << std::setw(kValueWidth);
    if (tested) {
        out << sample.mm_chi2_df;
    } else {
        out << "N.A.";
    }
    out << "\nP(Chi-square)                       : " << std::setw(kValueWidth)
        << Cell{sample.mm_chi2_p, tested};
    out << std::setprecision(5) << "\nHarpending's Raggedness index       : " << std::setw(kValueWidth)
        << sample.mm_raggedness << '\n';
}

// Squared differences of allele sizes may run into millions of classes, of which few have pairs.
constexpr int kMostRows = 10000;

void print_moment_table(std::ostream& out, const PopGenetics& sample) {
    const FormatGuard guard(out);
    const int last = std::clamp(std::max(sample.last_expected_class, sample.max_diff), 0,
                                static_cast<int>(sample.mm_counts.size()) - 1);
    const bool all = last < kMostRows;
    if (!all) out << "\nOf the classes 0 to " << last << " only those with pairs are listed.\n";
    out << '\n' << rule('-', kFitTitles) << '\n' << kFitTitles;
    set_class_format(out);
    for (int i = 0; i <= last; ++i) {
        const auto k = static_cast<std::size_t>(i);
        if (all || sample.mm_counts[k] != 0)
            print_class_row(out, i, {static_cast<double>(sample.mm_counts[k]), sample.mm_expected[k]});
    }
}

}  // namespace

void print_observed_moments(std::ostream& out, const PopGenetics& sample) {
    print_value(out, "\n\nMismatch observed mean              : ", sample.mm_mean);
    print_value(out, "\nMismatch observed variance          : ", sample.mm_variance);
    if (sample.pairs_without_distance > 0) {
        out << "\n\nPairs that are too divergent for the correction of distances, and left out: "
            << sample.pairs_without_distance << '\n';
    }
}

void print_mismatch_distribution(std::ostream& out, const PopGenetics& sample) {
    print_observed_moments(out, sample);
    print_value(out, "\nTheta_0                             : ", sample.mm_theta);
    print_value(out, "\nTau                                 : ", sample.mm_tau);
    if (sample.max_diff == 0) {
        out << (sample.hapl_list.count > 1 ? "\n\nNo pair of gene copies has a distance of 1 or more.\n"
                                           : "\n\nAll gene copies are identical.\n");
    } else {
        print_moment_fit(out, sample);
        if (sample.mm_counts.empty()) {
            print_no_classes(out, sample);
        } else {
            print_moment_table(out, sample);
        }
    }
    const int type = sample.profile.DataType;
    if (type != DNA && type != RFLP)
        out << "\nModels of expansion are fitted to DNA sequences and RFLP haplotypes only.\n";
}

// --- Headings and estimates

void print_sudden_heading(std::ostream& out) {
    const std::string stars = rule('*', kSuddenHeading);
    out << "\n\n" << stars << '\n' << kSuddenHeading << '\n' << stars;
}

void print_variance_too_small(std::ostream& out) {
    out << "\n\n    The variance of the mismatch distribution is to small,\n"
        << "    no demographic parameters can be estimated.";
}

void print_no_classes(std::ostream& out, const PopGenetics& sample) {
    out << "\nThe classes up to " << sample.max_diff
        << " differences are too many for a table: no model is fitted to them, and no fit is tested.\n";
}

void print_pairs_left_out(std::ostream& out, std::int64_t left_out, std::int64_t total, int last_class) {
    out << "\n\nPairs with more than " << last_class << " differences do not enter the fit: " << left_out
        << " of " << left_out + total << '\n';
    if (total == 0) out << "No demographic parameters can be estimated.\n";
}

void print_no_spatial_model(std::ostream& out, int num_params) {
    out << "\n\nNo spatial expansion is fitted: " << num_params
        << " is none of the numbers of parameters 2, 3 and 4.\n";
}

void print_sudden_estimates(std::ostream& out, const ann_missmatch& fit) {
    print_value(out, "\nTau                                 : ", fit.Tau);
    print_value(out, "\nTheta0                              : ", fit.Theta0);
    print_value(out, "\nTheta1                              : ", fit.Theta1);
    if (fit.not_converged != 0) {
        out << "\nLeast-square procedure to fit expected and observed"
            << "\nmismatch distribution did not converge after " << fit.max_steps << "steps \n";
    }
}

void print_spatial_estimates_3(std::ostream& out, const mismatchSpatialExpansion& fit) {
    const std::string line = rule('=', kSpatial3Heading);
    out << "\n\n" << line << '\n' << kSpatial3Heading << line << '\n';
    if (fit.not_converged != 0) {
        out << "\nLeast-square procedure to fit expected to observed mismatch distribution\n"
            << "did not converge after " << fit.max_steps << " steps\n";
    }
    print_value(out, "\nTau                                 : ", fit.Tau);
    print_value(out, "\nTheta                               : ", fit.Theta1);
    print_value(out, "\nM                                   : ", fit.M);
}

void print_spatial_estimates_4(std::ostream& out, const mismatchSpatialExpansion& fit) {
    out << kSpatial4Heading;
    if (fit.not_converged != 0) {
        out << "\nLeast square procedure to fit model mismatch distribution\n"
            << "and observed distribution did not converge after " << fit.max_steps << "steps\n";
    }
    print_value(out, "\nTau                                 : ", fit.Tau);
    print_value(out, "\nTheta0                              : ", fit.Theta0);
    print_value(out, "\nTheta1                              : ", fit.Theta1);
    print_value(out, "\nM                                   : ", fit.M);
}

namespace {

void print_fit_classes(std::ostream& out, const FitTable& table) {
    const FormatGuard guard(out);
    set_class_format(out);
    const auto total = static_cast<double>(table.total);
    for (int k = 1; k <= table.count; ++k)
        print_class_row(out, table.diff[k], {table.observed[k] * total, table.expected[k] * total});
}

}  // namespace

void print_fit_table(std::ostream& out, const FitTable& table) {
    out << '\n' << rule('-', kFitTitles) << '\n' << kFitTitles;
    print_fit_classes(out, table);
}

void print_spatial_fit_table(std::ostream& out, const FitTable& table) {
    out << '\n' << kSpatialFitTitles;
    print_fit_classes(out, table);
}

// --- Replicates

namespace {

void print_goodness_of_fit(std::ostream& out, const ReplicateBlock& block, const ExpansionFit& fit,
                           int kept) {
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::setprecision(8);
    const bool tested = kept > 0;
    out << "\nTest of goodness-of-fit:";
    if (block.region_heading == nullptr) out << "\n------------------------\n";
    out << "\n         Sum of Squared deviation: " << std::setw(kFitWidth) << Cell{fit.ssd}
        << "\n          P(Sim. Ssd >= Obs. Ssd): " << std::setw(kFitWidth) << Cell{fit.p_ssd, tested}
        << "\n    Harpending's Raggedness index: " << std::setw(kFitWidth) << Cell{fit.rag}
        << "\n        P(Sim. Rag. >= Obs. Rag.): " << std::setw(kFitWidth) << Cell{fit.p_rag, tested};
    if (!block.founder_theta) return;
    out << std::setprecision(3) << "\nTheta1 is too large to be simulated: even one founder of "
        << block.founders_of << " individuals has a theta of\n"
        << *block.founder_theta
        << ", which stands in for Theta0. The replicates do not test the model as it was fitted.";
}

void print_simulated_classes(std::ostream& out, const ReplicateBlock& block, const ReplicateResults& results,
                             const FitTable& table) {
    const TXmlTag tag(block.table_tag, "pop", block.sample.c_str());
    out << "\nMismatch distributions:\n";
    open_table(out, tag);
    {
        const FormatGuard guard(out);
        out << kSimulatedTitles;
        set_class_format(out);
        const auto total = static_cast<double>(table.total);
        for (int k = 1; k <= table.count; ++k) {
            const double simulated = mean_of(results.shares[static_cast<std::size_t>(k - 1)]);
            print_class_row(out, table.diff[k],
                            {table.observed[k] * total, simulated * total, table.expected[k] * total});
        }
    }
    close_table(out, tag);
}

// A size after an expansion has no upper bound.
void print_interval_value(std::ostream& out, double value) {
    out << (std::fabs(value) < kWidestFixed ? std::fixed : std::scientific) << std::setw(kIntervalWidth)
        << Cell{value};
}

void print_interval_rows(std::ostream& out, const ReplicateBlock& block, double alpha) {
    const FormatGuard guard(out);
    out << kIntervalTitles;
    out << std::fixed << std::right << std::setprecision(3);
    for (const IntervalRow& row : block.rows) {
        const Bounds bounds = bounds_of(*row.replicates, alpha);
        out << std::setw(kLabelWidth) << row.label;
        for (const double value : {row.estimate, bounds.low, bounds.high, mean_of(*row.replicates)})
            print_interval_value(out, value);
        out << '\n';
    }
}

void print_region(std::ostream& out, const ReplicateBlock& block, const ReplicateResults& results,
                  const FitTable& table, double alpha) {
    const TXmlTag tag(block.region_tag, "pop", block.sample.c_str());
    out << (block.region_heading == nullptr ? "\n" : block.region_heading);
    open_table(out, tag);
    {
        const FormatGuard guard(out);
        out << kRegionTitles;
        set_class_format(out);
        const auto total = static_cast<double>(table.total);
        for (int k = 1; k <= table.count; ++k) {
            const Bounds bounds = bounds_of(results.shares[static_cast<std::size_t>(k - 1)], alpha);
            print_class_row(out, table.diff[k],
                            {table.observed[k] * total, bounds.low * total, bounds.high * total,
                             table.expected[k] * total});
        }
    }
    close_table(out, tag);
}

}  // namespace

void print_replicates(std::ostream& out, const ReplicateBlock& block, const ExpansionFit& fit,
                      const ReplicateResults& results, const FitTable& table, int asked) {
    print_goodness_of_fit(out, block, fit, results.kept);
    if (results.kept == 0) {
        out << "\nThe fit converged in none of " << asked
            << " replicates: there are no P-values and no confidence intervals.\n";
        if (block.region_heading == nullptr) {
            print_fit_table(out, table);
        } else {
            print_spatial_fit_table(out, table);
        }
        return;
    }
    print_simulated_classes(out, block, results, table);
    for (const double alpha : kLevels) {
        out << "\n\nConfidence intervals (Percentile method):\t alpha=\t";
        {
            const FormatGuard guard(out);
            out << std::fixed << std::setprecision(2) << alpha;
        }
        out << "\nBased on " << results.kept << " replicates\n";
        print_interval_rows(out, block, alpha);
        print_region(out, block, results, table, alpha);
    }
}

void cite_mismatch(std::ostream& out, bool sudden, bool spatial) {
    std::vector<Citation> publications = {Citation::Li_1977, Citation::Rogers_Harpending_1992,
                                          Citation::Rogers_1995, Citation::Harpending_1994};
    if (sudden) {
        publications.insert(publications.end(),
                            {Citation::Slatkin_Hudson_1991, Citation::Schneider_Excoffier_1999});
    }
    if (spatial) publications.insert(publications.end(), {Citation::Ray_2003, Citation::Excoffier_2004});
    out << '\n';
    cite(out, publications);
}

// --- Batch summaries

namespace {

// Pairs of the classes 0 .. max_diff, tabs between them; nothing when there is no table.
//   before   what stands ahead of the first one
void write_classes(std::ostream& out, const PopGenetics& sample, const char* before) {
    for (int i = 0; i <= sample.max_diff && i < static_cast<int>(sample.mm_counts.size()); ++i)
        out << (i == 0 ? before : "\t") << sample.mm_counts[static_cast<std::size_t>(i)];
}

void write_row(std::ofstream* file, const PopGenetics& sample, std::initializer_list<double> parameters) {
    if (file == nullptr) return;
    const FormatGuard guard(*file);
    const char* const project = settings::input_file;
    *file << std::fixed << std::showpoint << std::setprecision(5);
    *file << '"' << (project == nullptr ? "" : project) << "\"\t\"" << sample.name.view() << '"';
    const int method = std::clamp(sample.distance_method, 0, kNumDistanceNames - 1);
    *file << '\t' << DistanceNames[method] << '\t' << sample.gamma_a << '\t' << sample.mm_mean << '\t'
          << sample.mm_variance;
    for (const double value : parameters)
        *file << '\t' << Cell{value};
    write_classes(*file, sample, "\t");
    *file << std::endl;
}

}  // namespace

void write_mismatch_row(const PopGenetics& sample) {
    const ExpansionFit& fit = sample.sudden_expansion;
    write_row(ofs_mismatch, sample, {fit.Theta0, fit.Tau});
}

void write_mismatch_sp3_row(const PopGenetics& sample) {
    const ExpansionFit& fit = sample.spatial_expansion_3;
    write_row(ofs_mismatch_sp3, sample, {fit.Tau, fit.Theta1, fit.M});
}

void write_mismatch_sp4_row(const PopGenetics& sample) {
    const ExpansionFit& fit = sample.spatial_expansion_4;
    write_row(ofs_mismatch_sp4, sample, {fit.Theta0, fit.Tau, fit.Theta1, fit.M});
}

void write_only_mismatch_row(const PopGenetics& sample) {
    if (ofs_only_mismatch == nullptr) return;
    write_classes(*ofs_only_mismatch, sample, "");
    *ofs_only_mismatch << std::endl;
}

}  // namespace mnd
