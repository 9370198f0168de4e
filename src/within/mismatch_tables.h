// The mismatch distribution in the result document and in the batch summaries.
#pragma once

#include <fstream>
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

// Distribution, moments and what they expect, for a sample to which no model is fitted.
void print_mismatch_distribution(std::ostream& out, const PopGenetics& sample);
// Headings of the fits, with observed mean and variance under the first.
void print_sudden_expansion_heading(std::ostream& out, const PopGenetics& sample);
void print_spatial_expansion_heading(std::ostream& out, int num_params);
void print_variance_too_small(std::ostream& out);

// Estimates, and whether the search failed to end.
void print_sudden_estimates(std::ostream& out, const ann_missmatch& fit);
void print_spatial_estimates(std::ostream& out, const mismatchSpatialExpansion& fit, int num_params);

// Observed and fitted pairs by class, slots 1 .. count.
//   observed, fitted   shares, of total pairs
//   heading            line of column titles
void print_fit_table(std::ostream& out, const char* heading, const double* diff, const double* observed,
                     const double* fitted, int count, double total);

// What replicates say of a fit: a row of the intervals.
struct IntervalRow {
    const char* label;
    double estimate;
    const std::vector<double>* replicates;  // not owned: sorted
};

// Words of a block of replicates that differ between the models.
struct ReplicateBlock {
    const char* table_tag;
    const char* region_tag;
    const char* region_heading;  // null: none
    std::string sample;
    std::vector<IntervalRow> rows;
};

// Goodness of fit, simulated classes, percentile intervals and region. The arguments are those of
// make_bootstrap.
//   asked   replicates that were simulated
void print_replicates(std::ostream& out, const ReplicateBlock& block, const ExpansionFit& fit,
                      const ReplicateResults& results, const double* diff, const double* observed,
                      const double* fitted, int count, double total, int asked);

// Publications of the methods of the step.
void cite_mismatch(std::ostream& out, bool sudden, bool spatial);

// Batch summaries; null while they are not asked for. not owned. A row has the names of project
// and sample in double quotes, then values behind tabs.
extern std::ofstream* ofs_mismatch;       // "mismatch.sum": distance, gamma a, mean, variance, Theta0, Tau,
                                          // then Theta1, SSD, P, raggedness, P, and the classes from 0 on
extern std::ofstream* ofs_mismatch_sp3;   // "mismatch_sp3.sum": the same with Tau, Theta, M
extern std::ofstream* ofs_mismatch_sp4;   // "mismatch_sp4.sum": the same with Theta0, Tau, Theta1, M
extern std::ofstream* ofs_only_mismatch;  // "only_mismatch_sp.txt": the classes alone

void write_mismatch_rows(const PopGenetics& sample, const settings& s);

}  // namespace mnd
