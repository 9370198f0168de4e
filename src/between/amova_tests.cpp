#include "between/amova_tests.h"

#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <cstddef>
#include <ctime>
#include <iomanip>
#include <span>
#include <utility>

#include "between/amova_designs.h"
#include "between/amova_fast_sums.h"
#include "between/amova_null_files.h"
#include "between/amova_tables.h"
#include "foundation/clock_time.h"
#include "foundation/format_guard.h"
#include "input/dist_mat.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

namespace {

constexpr std::int64_t kPermutationsPerStep = 100;  // between two looks at the stop flag
constexpr std::int64_t kMostReserved = 1'000'000;   // values that room is made for beforehand
constexpr double kTooManyUnits = INT_MAX;           // fewer elements than this can be permuted

class DesignTests;

// One test of a design.
struct ComponentTest {
    void (Amova::*shuffle)();
    double (DesignTests::*statistic)();  // the component under the present permutation
    Tail tail;
    const char* prefix;
    int component;                   // 0 to 3 for Va to Vd
    double amova_results::*p_value;  // where the result goes
};

struct DesignPlan {
    std::int32_t design;
    const char* origin;   // function that reports
    ErrorType too_large;  // report when there are more elements than can be permuted
    MessageCode too_large_code;
    int nb_tests;
    std::array<ComponentTest, 4> tests;  // in the order of running
};

constexpr std::array<double Amova::*, 4> kComponents = {&Amova::Va, &Amova::Vb, &Amova::Vc, &Amova::Vd};

constexpr std::array<std::vector<double> amova_results::*, 4> kNullArrays = {
    &amova_results::null_Va, &amova_results::null_Vb, &amova_results::null_Vc, &amova_results::null_Vd};

// The tests of one design on one set of data. What no shuffle of a test changes is computed
// once, from the observed arrangement.
class DesignTests {
public:
    DesignTests(Amova& analysis, const DesignPlan& plan, const BatchPlan& permutations);

    // Runs all tests and writes their results. Returns: false when stopped or without a file
    bool run();
    const std::vector<double>& p_values() const { return p_values_; }

    // The statistics: components from the sums that their shuffle changes. W is the sum of
    // SSD / n_i, A the sum of group_SSD, T the total of all SSD.

    // W / df c
    double within_samples();
    // (A - W) / (df b n) - W / (df c n)
    double among_samples_in_groups();
    // (SSDT - W) / (df a n) - W / (df b n)
    double among_samples();
    // (W - SSDWI) / (2 df b) - SSDWI / (2 df c), and the same one row up and down
    double among_individuals_rows_bc();
    double among_individuals_rows_cd();
    double among_individuals_rows_ab();
    // (T / n_1 - W) / (df a n) - (W - SSDWI) / (2 n df b), with n_1 the size of the first group
    double among_samples_of_individuals();
    // (A - W) / (df b n) - (W - SSDWI) / (df c n)
    double among_samples_of_individuals_in_groups();
    // Half the distances within all individuals over df c or df d.
    double within_individuals_row_c();
    double within_individuals_row_d();
    // (SSDT - A) / (n'' df a) - (A - SSDWP) n' / (n n'' df b) + SSDWP (n' - n) / (df c n n''), with
    // A, n, n' and n'' of the groups as they are now
    double among_groups();
    // (T / N - A) / (df a n'') - (A - W) n' / (n n'' df b) + SSDWP / (df c n'') (n' / n - 1)
    double among_groups_of_individuals();

private:
    Amova& a_;
    const DesignPlan& plan_;
    BatchPlan permutations_;
    std::vector<int> sizes_;  // gene copies of each sample, in the order of all_pops
    PairSums sums_;
    std::vector<double> ssd_;  // of each sample, as the last permutation gave them
    double observed_W_;
    double observed_A_;
    double observed_SSDWI_;
    std::vector<double> p_values_;
    std::vector<NullDistribution> nulls_;  // of the tests done, when they are kept

    bool run_test(int number);
    bool permute(const ComponentTest& test, HitCounter& hits, NullDistribution& null);
    bool keeps_nulls() const { return a_.sett->KeepNullDistrib != 0; }
    std::vector<double>& null_array(const NullDistribution& null) const {
        return a_.results->*kNullArrays[static_cast<std::size_t>(null.component)];
    }
    void reserve_values(NullDistribution& null, bool with_arrangement) const;
    void keep_value(double value, std::size_t number, NullDistribution& null, bool with_arrangement) const;
    void publish(const ComponentTest& test, const HitCounter& hits);

    double sum_within();
    double within_of(const int* first_copy, int size) const;
    double half_pair_sum() const;
    double sum_within_individuals();
    double among_individuals(std::size_t row);
    void count_fis(Population& sample, double within);
};

std::vector<int> sizes_of(const std::vector<Population*>& samples) {
    std::vector<int> sizes;
    for (const Population* sample : samples)
        sizes.push_back(integer_part(sample->sample_size));
    return sizes;
}

std::vector<int> copies_of(const Amova& analysis) {
    const std::size_t n = static_cast<std::size_t>(std::max(integer_part(analysis.N_genes), 0));
    const auto first = analysis.haplo_index.begin();
    return {first, first + static_cast<std::ptrdiff_t>(std::min(n, analysis.haplo_index.size()))};
}

DesignTests::DesignTests(Amova& analysis, const DesignPlan& plan, const BatchPlan& permutations)
    : a_(analysis),
      plan_(plan),
      permutations_(permutations),
      sizes_(sizes_of(analysis.all_pops)),
      sums_(*analysis.dist, copies_of(analysis)),
      observed_W_(sum_within()),
      observed_A_(0.0),
      observed_SSDWI_(analysis.SSDWI) {
    for (const double ssd : analysis.group_SSD)
        observed_A_ += ssd;
}

// ---- Sums of the present arrangement

double DesignTests::sum_within() {
    sums_.within_each(a_.haplo_index.data(), sizes_, ssd_);
    double W = 0.0;
    for (std::size_t i = 0; i < sizes_.size(); ++i) {
        if (sizes_[i] > 0) W += ssd_[i] / a_.all_pops[i]->sample_size;
    }
    return W;
}

// Sum of the distances within the individuals of one sample; an odd copy is left out.
double DesignTests::within_of(const int* first_copy, int size) const {
    double sum = 0.0;
    for (int k = 0; k + 1 < size; k += 2)
        sum += sums_.between(first_copy[k], first_copy[k + 1]);
    return sum;
}

double DesignTests::half_pair_sum() const {
    double sum = 0.0;
    const int* copies = a_.haplo_index.data();
    for (const int size : sizes_) {
        for (int k = 0; k + 1 < size; k += 2)
            sum += sums_.between(copies[k], copies[k + 1]);
        copies += size;
    }
    return sum / 2.0;
}

double DesignTests::sum_within_individuals() {
    double SSDWI = 0.0;
    const int* copies = a_.haplo_index.data();
    const bool counts_fis = a_.sett->PopSpecificFIS != 0;
    for (std::size_t i = 0; i < sizes_.size(); ++i) {
        const double within = within_of(copies, sizes_[i]) / 2.0;
        if (counts_fis) count_fis(*a_.all_pops[i], within);
        SSDWI += within;
        copies += sizes_[i];
    }
    return SSDWI;
}

// Counts the permutation for the sample, if it gave an index not below the observed one. The
// SSD of the sample is that observed, for its copies stay within it.
void DesignTests::count_fis(Population& sample, double within) {
    sample.amova.SSD_within_ind = within;
    const double fis = population_fis(sample);
    const std::size_t id = static_cast<std::size_t>(sample.amova.amova_id);
    if (fis != kUndefinedFis && a_.pop_Fis[id] <= fis) a_.pop_Fis_hits[id] += 1.0;
}

// ---- Components

double DesignTests::within_samples() {
    return sum_within() / a_.df[2];
}

double DesignTests::among_samples_in_groups() {
    const double W = sum_within();
    return (observed_A_ - W) / (a_.df[1] * a_.n) - W / (a_.df[2] * a_.n);
}

double DesignTests::among_samples() {
    const double W = sum_within();
    return (a_.SSDT - W) / (a_.df[0] * a_.n) - W / (a_.df[1] * a_.n);
}

double DesignTests::among_individuals(std::size_t row) {
    const double SSDWI = sum_within_individuals();
    return (observed_W_ - SSDWI) / (2.0 * a_.df[row]) - SSDWI / (2.0 * a_.df[row + 1]);
}

double DesignTests::among_individuals_rows_ab() {
    return among_individuals(0);
}

double DesignTests::among_individuals_rows_bc() {
    return among_individuals(1);
}

double DesignTests::among_individuals_rows_cd() {
    return among_individuals(2);
}

// Kept on purpose: the factor 2 of the second term, which the observed component does not have.
// Test: AmovaTests.AmongSamplesOfIndividualsHalvesItsSecondTerm
double DesignTests::among_samples_of_individuals() {
    const double W = sum_within();
    return (a_.SSD_total / a_.group_size[0] - W) / (a_.df[0] * a_.n) -
           (W - observed_SSDWI_) / (2.0 * a_.n * a_.df[1]);
}

double DesignTests::among_samples_of_individuals_in_groups() {
    const double W = sum_within();
    return (observed_A_ - W) / (a_.df[1] * a_.n) - (W - observed_SSDWI_) / (a_.df[2] * a_.n);
}

double DesignTests::within_individuals_row_c() {
    return half_pair_sum() / a_.df[2];
}

double DesignTests::within_individuals_row_d() {
    return half_pair_sum() / a_.df[3];
}

// Samples keep their SSD, and pairs of samples theirs: only the sums over groups change.
double DesignTests::among_groups() {
    a_.distribute_populations();
    const double A = sum_of_group_ssd(a_);
    set_haplotype_coefficients(a_);
    return (a_.SSDT - A) / (a_.n_second * a_.df[0]) -
           (A - a_.SSDWP) * a_.n_prime / (a_.n * a_.n_second * a_.df[1]) +
           a_.SSDWP * (a_.n_prime - a_.n) / (a_.df[2] * a_.n * a_.n_second);
}

double DesignTests::among_groups_of_individuals() {
    a_.distribute_populations();
    const double A = sum_of_group_ssd(a_);
    set_individual_coefficients(a_);
    return (a_.SSD_total / a_.N_genes - A) / (a_.df[0] * a_.n_second) -
           (A - observed_W_) * a_.n_prime / (a_.n * a_.n_second * a_.df[1]) +
           a_.SSDWP / (a_.df[2] * a_.n_second) * (a_.n_prime / a_.n - 1.0);
}

// ---- The tests of each design

constexpr ComponentTest kNoTest = {nullptr, nullptr, Tail::kLower, "", 0, nullptr};

constexpr std::array<DesignPlan, 7> kPlans = {{
    {kDesignGPH,
     "Amova::AMOVA_G_P_H()",
     Memory,
     kNotEnoughMemory,
     3,
     {{{&Amova::PHAPAG, &DesignTests::within_samples, Tail::kLower, "Vc and FST :", 2,
        &amova_results::FST_pvalue},
       {&Amova::PHAPWG, &DesignTests::among_samples_in_groups, Tail::kUpper, "Vb and FSC :", 1,
        &amova_results::FSC_pvalue},
       {&Amova::PPAG, &DesignTests::among_groups, Tail::kUpper, "Va and FCT :", 0,
        &amova_results::FCT_pvalue},
       kNoTest}}},
    {kDesignGPIH,
     "Amova::AMOVA_G_P_IH()",
     Memory,
     kNotEnoughMemory,
     3,
     {{{&Amova::PIAPAG, &DesignTests::within_samples, Tail::kLower, "Vc and FST :", 2,
        &amova_results::FST_pvalue},
       {&Amova::PIAPWG, &DesignTests::among_samples_in_groups, Tail::kUpper, "Vb and FSC :", 1,
        &amova_results::FSC_pvalue},
       {&Amova::PPAG, &DesignTests::among_groups, Tail::kUpper, "Va and FCT :", 0,
        &amova_results::FCT_pvalue},
       kNoTest}}},
    {kDesign1GPH,
     "Amova::AMOVA_1G_P_H()",
     Error,
     kTooManyElementsToPermute,
     1,
     {{{&Amova::PHAPWG, &DesignTests::among_samples, Tail::kUpper, "Va and FST :", 0,
        &amova_results::FST_pvalue},
       kNoTest,
       kNoTest,
       kNoTest}}},
    {kDesign1GPIH,
     "Amova::AMOVA_1G_P_IH()",
     Error,
     kTooManyElementsToPermute,
     1,
     {{{&Amova::PIAPWG, &DesignTests::among_samples, Tail::kUpper, "Va and FST :", 0,
        &amova_results::FST_pvalue},
       kNoTest,
       kNoTest,
       kNoTest}}},
    {kDesign1GPI,
     "Amova::AMOVA_1G_P_I()",
     Error,
     kTooManyElementsToPermute,
     3,
     {{{&Amova::PHAIWP, &DesignTests::among_individuals_rows_bc, Tail::kUpper, "Vb and FIS :", 1,
        &amova_results::FIS_pvalue},
       {&Amova::PIAPWG, &DesignTests::among_samples_of_individuals, Tail::kUpper, "Va and FST :", 0,
        &amova_results::FST_pvalue},
       {&Amova::PHAPWG, &DesignTests::within_individuals_row_c, Tail::kLower, "Vc and FIT :", 2,
        &amova_results::FIT_pvalue},
       kNoTest}}},
    {kDesignGPI,
     "Amova::AMOVA_G_P_I()",
     Error,
     kTooManyElementsToPermute,
     4,
     {{{&Amova::PHAPAG, &DesignTests::within_individuals_row_d, Tail::kLower, "Vd and FIT :", 3,
        &amova_results::FIT_pvalue},
       {&Amova::PHAIWP, &DesignTests::among_individuals_rows_cd, Tail::kUpper, "Vc and FIS :", 2,
        &amova_results::FIS_pvalue},
       {&Amova::PIAPWG, &DesignTests::among_samples_of_individuals_in_groups, Tail::kUpper, "Vb and FSC :", 1,
        &amova_results::FSC_pvalue},
       {&Amova::PPAG, &DesignTests::among_groups_of_individuals, Tail::kUpper, "Va and FCT :", 0,
        &amova_results::FCT_pvalue}}}},
    {kDesign1G1PI,
     "Amova::AMOVA_1G_1P_I()",
     Memory,
     kNotEnoughMemory,
     1,
     {{{&Amova::PHAIWP, &DesignTests::among_individuals_rows_ab, Tail::kUpper, "Va and FIS :", 0,
        &amova_results::FIS_pvalue},
       kNoTest,
       kNoTest,
       kNoTest}}},
}};

const DesignPlan* plan_of_design(std::int32_t design) {
    const auto* const found = std::find_if(kPlans.begin(), kPlans.end(),
                                           [design](const DesignPlan& p) { return p.design == design; });
    return found == kPlans.end() ? nullptr : found;
}

// ---- Running

bool permutes_samples(const ComponentTest& test) {
    return test.shuffle == &Amova::PPAG;
}

// Makes room for the values of a test, so that its permutations find it there. More than
// kMostReserved make their own as they come.
void DesignTests::reserve_values(NullDistribution& null, bool with_arrangement) const {
    const auto room = static_cast<std::size_t>(std::min(permutations_.total, kMostReserved));
    if (a_.results != nullptr) null_array(null).reserve(room);
    if (!keeps_nulls()) return;
    if (!with_arrangement) {
        null.values.reserve(room);
        return;
    }
    FloatsAndPops blank;
    blank.count = static_cast<std::int32_t>(a_.all_pops.size());
    blank.pops.resize(a_.all_pops.size());
    null.arrangements.assign(room, blank);
}

// Keeps the component of the permutation `number`, counted from 0.
void DesignTests::keep_value(double value, std::size_t number, NullDistribution& null,
                             bool with_arrangement) const {
    if (a_.results != nullptr) null_array(null).push_back(value);
    if (!keeps_nulls()) return;
    if (!with_arrangement) {
        null.values.push_back(value);
        return;
    }
    if (number == null.arrangements.size()) null.arrangements.push_back(null.arrangements.back());
    FloatsAndPops& entry = null.arrangements[number];
    entry.value = value;
    for (std::size_t i = 0; i < entry.pops.size(); ++i)
        entry.pops[i] = a_.all_pops[i]->amova.amova_id;
}

// All permutations of one test. Returns: false when the work was stopped
bool DesignTests::permute(const ComponentTest& test, HitCounter& hits, NullDistribution& null) {
    const bool with_arrangement = permutes_samples(test);
    reserve_values(null, with_arrangement);
    for (std::int64_t done = 1; done <= permutations_.total; ++done) {
        (a_.*test.shuffle)();
        const double value = (this->*test.statistic)();
        hits.add(value);
        keep_value(value, static_cast<std::size_t>(done - 1), null, with_arrangement);
        if (done % kPermutationsPerStep != 0) continue;
        settings::global_work_done += 1.0;
        settings::print_message();
        if (a_.sett->stopped()) return false;
    }
    return true;
}

void DesignTests::publish(const ComponentTest& test, const HitCounter& hits) {
    std::ostream& out = document_of(a_);
    if (p_values_.empty()) print_tests_heading(out, permutations_.total);
    print_test(out, test.prefix, test.tail, hits);
    p_values_.push_back(hits.p_value());
    if (a_.results != nullptr) a_.results->*test.p_value = hits.p_value();
}

// The first test of G_P_H begins with the data as initialize left them.
bool DesignTests::run_test(int number) {
    const ComponentTest& test = plan_.tests[static_cast<std::size_t>(number)];
    if (number > 0 || plan_.design != kDesignGPH) a_.load_HaplotypeIndexVector();
    if (test.shuffle == &Amova::PHAIWP) std::fill(a_.pop_Fis_hits.begin(), a_.pop_Fis_hits.end(), 0.0);
    const std::clock_t begin = std::clock();
    NullDistribution null;
    null.component = test.component;
    null.observed = a_.*kComponents[static_cast<std::size_t>(test.component)];
    HitCounter hits(null.observed, test.tail, permutations_);
    if (!permute(test, hits, null)) return false;
    // Samples that move keep their copies.
    if (!permutes_samples(test)) a_.distribute_HaplotypeIndexVector();
    if (keeps_nulls()) {
        null.sort();
        if (!write_null_file(a_, null, milliseconds_since(begin), plan_.origin)) return false;
        nulls_.push_back(std::move(null));
    }
    publish(test, hits);
    return true;
}

bool DesignTests::run() {
    for (int number = 0; number < plan_.nb_tests; ++number) {
        if (!run_test(number)) return false;
    }
    print_null_histograms(document_of(a_), nulls_);
    return true;
}

void clear_null_arrays(amova_results* results) {
    if (results == nullptr) return;
    for (std::vector<double> amova_results::*const array : kNullArrays)
        (results->*array).clear();
}

bool too_large(const Amova& analysis) {
    return analysis.N_units >= kTooManyUnits || analysis.dist->MatrixSize == INT_MAX;
}

// Whether every gene copy stands for a row of the matrix. If not, that was reported when the
// copies were tallied.
bool has_all_rows(const Amova& analysis) {
    const std::vector<int> copies = copies_of(analysis);
    const int rows = analysis.dist->MatrixSize;
    return std::all_of(copies.begin(), copies.end(), [rows](int row) { return row >= 0 && row < rows; });
}

void end_summary_row(std::int64_t num_perm, const std::vector<double>& p_values) {
    if (ofs_amova_res != nullptr) write_amova_summary_tests(*ofs_amova_res, num_perm, p_values);
}

}  // namespace

HitCounter::HitCounter(double observed, Tail tail, const BatchPlan& plan)
    : observed_(observed),
      tail_(tail),
      plan_(plan),
      hits_(static_cast<std::size_t>(plan.batches) + 2, 0.0F) {}

void HitCounter::add(double value) {
    const bool equal = std::fabs(value - observed_) < kAmovaEpsilon;
    const bool less = !equal && value < observed_;
    const bool greater = !equal && value > observed_;
    equal_ += equal ? 1 : 0;
    less_ += less ? 1 : 0;
    greater_ += greater ? 1 : 0;
    const bool is_hit = equal || (tail_ == Tail::kLower ? less : greater);
    if (is_hit) hits_[static_cast<std::size_t>(cell_)] += 1.0F;
    if (++cell_ >= plan_.batches) cell_ = 0;
}

double HitCounter::proportion(std::int64_t hits) const {
    return plan_.total > 0 ? static_cast<double>(hits) / static_cast<double>(plan_.total) : 0.0;
}

float HitCounter::error() const {
    const auto batches = static_cast<std::size_t>(plan_.batches);
    return batch_error(std::span(hits_).first(batches), plan_.per_batch, static_cast<float>(p_value()));
}

void print_tests_heading(std::ostream& out, std::int64_t num_perm) {
    const FormatGuard guard(out);
    out << "\nSignificance tests (" << num_perm << " permutations)\n"
        << "------------------\n\n";
}

void print_test(std::ostream& out, const char* prefix, Tail tail, const HitCounter& hits) {
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::setprecision(5) << prefix
        << (tail == Tail::kLower ? " P(rand. value &lt; obs. value)  = " : " P(rand. value > obs. value)  = ")
        << std::setw(8) << hits.beyond() << '\n'
        << "             P(rand. value = obs. value)  = " << std::setw(8) << hits.equal() << '\n'
        << "                                  P-value = " << std::setw(8) << hits.p_value() << "+-"
        << std::setw(8) << hits.error() << "\n\n";
}

int test_components(Amova& analysis, std::int32_t design) {
    const DesignPlan* const plan = plan_of_design(design);
    const BatchPlan permutations = plan_batches(analysis.num_perm);
    analysis.num_perm = 0;
    clear_null_arrays(analysis.results);
    if (plan == nullptr || permutations.total == 0) {
        end_summary_row(0, {});
        return 1;
    }
    if (too_large(analysis)) {
        end_summary_row(0, {});
        E.error(plan->too_large, plan->origin, plan->too_large_code);
        return 1;
    }
    if (!has_all_rows(analysis)) {
        end_summary_row(0, {});
        return 0;
    }
    analysis.num_perm = permutations.total;
    DesignTests tests(analysis, *plan, permutations);
    const bool done = tests.run();
    end_summary_row(done ? permutations.total : 0, tests.p_values());
    return done ? 1 : 0;
}

}  // namespace mnd
