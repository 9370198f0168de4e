// Null distributions of variance components as files and as a histogram.
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include "between/amova.h"

namespace mnd {

// What the permutations of one test gave, in ascending order. A test that permutes samples
// among groups keeps the arrangement with each value, any other the values alone.
struct NullDistribution {
    int component = 0;  // 0 to 3 for Va to Vd
    double observed = 0.0;
    std::vector<double> values;
    std::vector<FloatsAndPops> arrangements;

    bool of_arrangements() const { return !arrangements.empty(); }
    std::size_t size() const { return of_arrangements() ? arrangements.size() : values.size(); }
    double value(std::size_t i) const { return of_arrangements() ? arrangements[i].value : values[i]; }
    // Brings both lists into ascending order, equals in the order of the permutations. What is
    // not a number comes last.
    void sort();
};

// Number of a null distribution file: fixed, right-aligned, with its sign, in a width of 13
// filled with zeros, 10 decimals.
void print_MND_DOUBLE(std::ostream& out, double value);

// List of the samples by the numbers that arrangements use.
void print_popvect(std::ostream& out, const std::vector<Population*>& samples);

// One arrangement: the numbers of the samples of each group, from 1, and the value.
//   group_sizes   samples in each group; they cut entry.pops
void print_p(std::ostream& out, const FloatsAndPops& entry, const std::vector<std::int32_t>& group_sizes);

// Text of the file of one component, of a sorted distribution.
//   milliseconds  computing time of the test
void print_null_distribution(std::ostream& out, const Amova& analysis, const NullDistribution& null,
                             long milliseconds);

// Writes it to the file that the settings name for the component, over any file of that name,
// and says so in the log.
//   origin     function that reports
// Returns:  false after a warning, when the settings name no file or it can't be opened
// Report:   kMissingVarANullDistribution to kMissingVarDNullDistribution
bool write_null_file(const Amova& analysis, const NullDistribution& null, long milliseconds,
                     const char* origin);

// Classes of equal width over the range of a null distribution, in single precision. Class k
// holds the values from bound[k] up to, but not including, bound[k + 1]; the last one begins at
// the largest value. Values that are all the same fall into no class.
struct NullHistogram {
    std::vector<float> bound;          // classes + 1, or empty
    std::vector<std::int64_t> counts;  // values in each class

    // Middle of class k.
    float centre(std::size_t k) const { return bound[k] + (bound[1] - bound[0]) / 2; }
};

// The histogram of a sorted distribution; without classes when it has no values. The number of
// classes is the whole part of the square root of the number of values, held between 3 and 20,
// less one.
NullHistogram null_histogram(const NullDistribution& null);

// Table of the histograms of all tested components, in the order of the components, and their
// observed values. Nothing without a distribution.
void print_null_histograms(std::ostream& out, const std::vector<NullDistribution>& nulls);

}  // namespace mnd
