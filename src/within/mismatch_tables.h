// The mismatch distribution in the result document and in the batch summaries.
#pragma once

#include <cstdint>
#include <fstream>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace mnd {

class PopGenetics;
class ann_missmatch;
class mismatchSpatialExpansion;
class settings;
struct ExpansionFit;
struct ReplicateResults;

// A variance of no more does not allow a fit.
inline constexpr double kLeastMismatchVariance = 1e-07;

// Classes of a distribution and of its fit, slots 1 .. count of each array.
struct FitTable {
    const double* diff;      // not owned: numbers of differences
    const double* observed;  // not owned: shares of total pairs
    const double* expected;  // not owned: shares by the fitted model
    int count;
    long total;
};

// What the replicates say of one parameter.
struct IntervalRow {
    const char* label;
    double estimate;
    const std::vector<double>* replicates;  // not owned: sorted
};

// Words of a block of replicates in which the models differ: that of a sudden expansion has a rule
// under the title of its test, that of a spatial one a heading over each region.
struct ReplicateBlock {
    const char* table_tag;
    const char* region_tag;
    const char* region_heading;  // null: a sudden expansion
    std::string sample;
    std::vector<IntervalRow> rows;
    std::optional<double> founder_theta = {};  // of the replicates, where it is far from Theta0
    int founders_of = 0;                       // individuals of their population
};

// Moments, their fit and the distribution, for a sample to which no model of expansion is fitted.
void print_mismatch_distribution(std::ostream& out, const PopGenetics& sample);

// Heading of the model of a sudden expansion.
void print_sudden_heading(std::ostream& out);
void print_observed_moments(std::ostream& out, const PopGenetics& sample);
// In place of a fit.
void print_variance_too_small(std::ostream& out);
void print_no_classes(std::ostream& out, const PopGenetics& sample);
// Beside a fit, or in place of one when no pair enters it.
//   total   pairs that enter it, of which none has more than last_class differences
void print_pairs_left_out(std::ostream& out, std::int64_t left_out, std::int64_t total, int last_class);
void print_no_spatial_model(std::ostream& out, int num_params);

// Estimates, and whether the search failed to end; for a spatial expansion, under their heading.
void print_sudden_estimates(std::ostream& out, const ann_missmatch& fit);
void print_spatial_estimates_3(std::ostream& out, const mismatchSpatialExpansion& fit);
void print_spatial_estimates_4(std::ostream& out, const mismatchSpatialExpansion& fit);

// Observed and fitted pairs by class, under a line of column titles, which has a rule above it but for
// spatial expansions.
void print_fit_table(std::ostream& out, const FitTable& table);
void print_spatial_fit_table(std::ostream& out, const FitTable& table);

// Goodness of fit, simulated classes, percentile intervals and region.
//   results   sorted
//   asked     replicates that were simulated; when none of them counts, that is said, and there are
//             neither P-values nor intervals
void print_replicates(std::ostream& out, const ReplicateBlock& block, const ExpansionFit& fit,
                      const ReplicateResults& results, const FitTable& table, int asked);

// Publications of the methods.
void cite_mismatch(std::ostream& out, bool sudden, bool spatial);

// Batch summaries; null while they are not asked for. not owned. A row has a column for each of the
// header of its file: the names of project and sample in double quotes, then distance, gamma a, mean
// and variance of the distribution, the parameters, and the pairs of each class from 0 differences on
// (none where these are too many for a table). Tabs separate them.
extern std::ofstream* ofs_mismatch;       // "mismatch.sum": Theta0, Tau; Theta1 is in the document
extern std::ofstream* ofs_mismatch_sp3;   // "mismatch_sp3.sum": Tau, Theta, M
extern std::ofstream* ofs_mismatch_sp4;   // "mismatch_sp4.sum": Theta0, Tau, Theta1, M
extern std::ofstream* ofs_only_mismatch;  // "only_mismatch_sp.txt": the classes alone

void write_mismatch_row(const PopGenetics& sample);
void write_mismatch_sp3_row(const PopGenetics& sample);
void write_mismatch_sp4_row(const PopGenetics& sample);
void write_only_mismatch_row(const PopGenetics& sample);

}  // namespace mnd
