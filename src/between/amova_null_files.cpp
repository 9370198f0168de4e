#include "between/amova_null_files.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <fstream>
#include <iomanip>
#include <sstream>
#include <string>

#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "input/structure.h"
#include "model/population.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

namespace {

constexpr std::int64_t kMostClassBounds = 20;
constexpr std::int64_t kFewestClassBounds = 3;
constexpr std::size_t kCellWidth = 10;

constexpr MessageCode kMissingFile[] = {kMissingVarANullDistribution, kMissingVarBNullDistribution,
                                        kMissingVarCNullDistribution, kMissingVarDNullDistribution};

// The texts that name a component.
constexpr const char* kResultsOf[] = {"Results : Va\n", "Results : Vb\n", "Results : Vc\n", "Results : Vd\n"};
constexpr const char* kColumnOf[] = {"Va", "Vb", "Vc", "Vd"};
constexpr const char* kObservedOf[] = {"\nVa : ", "\nVb : ", "\nVc : ", "\nVd : "};

// Ascending; what is not a number comes last.
bool comes_before(double a, double b) {
    return a < b || (std::isnan(b) && !std::isnan(a));
}

// Samples in the order of their numbers.
std::vector<Population*> by_number(std::vector<Population*> samples) {
    std::stable_sort(samples.begin(), samples.end(), [](const Population* a, const Population* b) {
        return a->amova.amova_id < b->amova.amova_id;
    });
    return samples;
}

std::vector<std::int32_t> sizes_of_groups(const Amova& analysis) {
    std::vector<std::int32_t> sizes;
    for (const std::vector<Population*>& group : analysis.group_pops)
        sizes.push_back(static_cast<std::int32_t>(group.size()));
    return sizes;
}

// A cell of the table of histograms; one that is too wide keeps a blank before it.
void print_cell(std::ostream& out, const std::string& text) {
    if (text.size() >= kCellWidth) out << ' ';
    out << std::setw(static_cast<int>(kCellWidth)) << text;
}

std::string fixed_text(double value) {
    std::ostringstream text;
    text << std::fixed << std::setprecision(5) << value;
    return text.str();
}

void print_histogram_row(std::ostream& out, const std::vector<NullHistogram>& histograms, std::size_t k) {
    for (const NullHistogram& histogram : histograms) {
        const bool has_class = k < histogram.counts.size();
        print_cell(out, has_class ? fixed_text(histogram.centre(k)) : "");
        print_cell(out, has_class ? std::to_string(histogram.counts[k]) : "");
    }
    out << '\n';
}

void print_observed(std::ostream& out, const std::vector<const NullDistribution*>& nulls) {
    out << "\nObserved  values:"
           "\n-----------------";
    for (const NullDistribution* null : nulls)
        out << kObservedOf[null->component] << null->observed;
    out << '\n';
}

std::vector<const NullDistribution*> in_order_of_components(const std::vector<NullDistribution>& tested) {
    std::vector<const NullDistribution*> nulls;
    for (const NullDistribution& null : tested)
        nulls.push_back(&null);
    std::stable_sort(nulls.begin(), nulls.end(), [](const NullDistribution* a, const NullDistribution* b) {
        return a->component < b->component;
    });
    return nulls;
}

}  // namespace

void NullDistribution::sort() {
    std::stable_sort(values.begin(), values.end(), comes_before);
    std::stable_sort(
        arrangements.begin(), arrangements.end(),
        [](const FloatsAndPops& a, const FloatsAndPops& b) { return comes_before(a.value, b.value); });
}

void print_MND_DOUBLE(std::ostream& out, double value) {
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::showpos << std::setw(13) << std::setprecision(10)
        << std::setfill('0') << value;
}

void print_popvect(std::ostream& out, const std::vector<Population*>& samples) {
    const FormatGuard guard(out);
    out << "\nList of populations:\n\n";
    for (const Population* sample : samples)
        out << "   " << sample->amova.amova_id + 1 << " : " << sample->name << '\n';
    out << "\n\n";
}

void print_p(std::ostream& out, const FloatsAndPops& entry, const std::vector<std::int32_t>& group_sizes) {
    {
        const FormatGuard guard(out);
        out << '[';
        std::size_t next = 0;
        for (std::size_t g = 0; g < group_sizes.size(); ++g) {
            if (g > 0) out << "],[";
            for (int i = 0; i < group_sizes[g] && next < entry.pops.size(); ++i, ++next)
                out << (i > 0 ? "," : "") << entry.pops[next] + 1;
        }
        out << "]\t\t";
    }
    print_MND_DOUBLE(out, entry.value);
    out << '\n';
}

void print_null_distribution(std::ostream& out, const Amova& analysis, const NullDistribution& null,
                             long milliseconds) {
    const FormatGuard guard(out);
    out << "File creation time    " << analysis.time_string << '\n'
        << "===============================================\n\n"
        << "Number of permutations : " << null.size() << '\n'
        << "Time for computation   : " << milliseconds << " ms\n\n"
        << kResultsOf[null.component] << "============\n\n";
    for (const double value : null.values) {
        print_MND_DOUBLE(out, value);
        out << '\n';
    }
    if (!null.of_arrangements()) return;
    print_popvect(out, by_number(analysis.all_pops));
    const std::vector<std::int32_t> sizes = sizes_of_groups(analysis);
    for (const FloatsAndPops& entry : null.arrangements)
        print_p(out, entry, sizes);
}

bool write_null_file(const Amova& analysis, const NullDistribution& null, long milliseconds,
                     const char* origin) {
    const my_string& name = analysis.sett->sigm_histo_f_name[null.component];
    std::ofstream file;
    if (name.length() > 0) file.open(name.c_str(), std::ios::trunc);
    if (!file.is_open()) {
        E.error(Warning, origin, kMissingFile[null.component]);
        return false;
    }
    print_null_distribution(file, analysis, null, milliseconds);
    *_AOS_ << "\t\tdone ! (" << milliseconds << " ms)"
           << "\tResults in file : \"" << name << "\"\n";
    return true;
}

NullHistogram null_histogram(const NullDistribution& null) {
    NullHistogram histogram;
    if (null.size() == 0) return histogram;
    const std::int64_t B = std::clamp(static_cast<std::int64_t>(std::sqrt(static_cast<double>(null.size()))),
                                      kFewestClassBounds, kMostClassBounds);
    const float smallest = static_cast<float>(null.value(0));
    const float range = static_cast<float>(null.value(null.size() - 1)) - smallest;
    for (std::int64_t k = 0; k < B; ++k)
        histogram.bound.push_back(smallest + static_cast<float>(k) * range / static_cast<float>(B - 2));
    histogram.counts.assign(static_cast<std::size_t>(B - 1), 0);
    for (std::size_t i = 0; i < null.size(); ++i) {
        // Compared as a bound is held: else the smallest value could fall below its own bound.
        const float value = static_cast<float>(null.value(i));
        for (std::size_t k = 0; k < histogram.counts.size(); ++k) {
            if (histogram.bound[k] <= value && value < histogram.bound[k + 1]) ++histogram.counts[k];
        }
    }
    return histogram;
}

void print_null_histograms(std::ostream& out, const std::vector<NullDistribution>& tested) {
    if (tested.empty()) return;
    const FormatGuard guard(out);
    const std::vector<const NullDistribution*> nulls = in_order_of_components(tested);
    std::vector<NullHistogram> histograms;
    std::size_t rows = 0;
    for (const NullDistribution* null : nulls) {
        histograms.push_back(null_histogram(*null));
        rows = std::max(rows, histograms.back().counts.size());
    }
    out << std::fixed << std::right << std::setprecision(8)
        << "\n\nHistogram of variance components null distributions\n"
        << std::string(51, '=') << '\n';
    for (const NullDistribution* null : nulls) {
        print_cell(out, " ");
        print_cell(out, kColumnOf[null->component]);
    }
    out << '\n';
    for (std::size_t k = 0; k < rows; ++k)
        print_histogram_row(out, histograms, k);
    print_observed(out, nulls);
}

}  // namespace mnd
