// Comparisons of all pairs of samples of a project, and their tests.
//
// Each pair is an analysis of variance of its own. The samples are taken in the order of the
// structure, those that stand in no group behind the others.
#include <algorithm>
#include <cstddef>
#include <ctime>
#include <exception>
#include <memory>
#include <vector>

#include "between/amova.h"
#include "between/amova_designs.h"
#include "between/amova_tests.h"
#include "between/pairwise_block.h"
#include "between/pairwise_statistics.h"
#include "between/pairwise_tables.h"
#include "between/pairwise_tests.h"
#include "foundation/clock_time.h"
#include "input/dist_mat.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "model/samples.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

namespace {

constexpr const char* kReporter = "Amova::CalcPairDist()";
constexpr int kNoRow = -1;  // matrix row of a gene copy that no haplotype stands for

int copies_of(const Population& sample) {
    return std::max(integer_part(sample.sample_size), 0);
}

// Decides whether the pairs are tested, which depends on what is computed.
void settle_test(settings& s) {
    const bool compares = s.ComputePairwiseFST != 0 || s.PrintMissIntermatchs != 0;
    s.TestSignificancePairewiseFST = s.NumPermutationsFST >= 1 && compares ? 1 : 0;
}

// Writes the rows of the copies of one sample. Rows that its haplotypes do not fill are kNoRow.
void fill_rows(const Population& sample, bool haplotypic, int* out) {
    const MY_TIArrayAsVector<PHaploDef>& list = haplotypic ? sample.hapl_list : sample.gamete_list;
    int* const end = out + copies_of(sample);
    for (const PHaploDef* entry : list) {
        const int row = entry->def != nullptr ? entry->def->id : kNoRow;
        for (int copy = 0; copy < entry->freq && out < end; ++copy)
            *out++ = row;
    }
    std::fill(out, end, kNoRow);
}

// The comparison of all pairs of one project.
class PairwiseComparison {
public:
    explicit PairwiseComparison(Amova& analysis) : a_(analysis), s_(*analysis.sett) {}

    // Sizes all tables and tallies. Throws: std::bad_alloc
    void allocate();
    // Checks that the matrix has a row for every gene copy. Report: see
    // Population::SetUpVectorsAfterPermutation
    void check_rows();
    // Fills the tables. Returns: false after a report or when the work was stopped
    bool compare_all();
    const PairwiseResults& results() const { return *results_; }

private:
    Amova& a_;
    settings& s_;
    PairTestPlan plan_;
    std::unique_ptr<PairwiseResults> results_;
    std::vector<int> rows_;  // work vector: rows of the copies of a pair

    void compute_mean_sizes();
    double delta_mu(const Population& first, const Population& second) const;
    bool compare_pair(int i, int j);
    void compare_copies_of_one();
    void store_observed(int i, int j, const PairObserved& observed);
    void store_test(int i, int j, const PairTestResult& test);
};

void PairwiseComparison::allocate() {
    const Samples& samples = *a_.samples;
    a_.all_pops.assign(samples.populations.begin(), samples.populations.end());
    std::stable_sort(a_.all_pops.begin(), a_.all_pops.end(), [](const Population* x, const Population* y) {
        return x->amova.amova_id < y->amova.amova_id;
    });
    plan_.permutations = plan_batches(s_.NumPermutationsFST);
    plan_.shuffles_individuals = samples.GenotypicData != 0 && samples.GameticPhase == 0;
    plan_.solves_divergence = s_.UnequalPopSizeDiv != 0;
    results_ = std::make_unique<PairwiseResults>(static_cast<int>(a_.all_pops.size()),
                                                 s_.UnequalPopSizeDiv != 0, s_.ComputeDeltaMuSqr != 0);
    results_->compared = s_.ComputePairwiseFST != 0 || s_.PrintMissIntermatchs != 0;
    results_->tested = s_.TestSignificancePairewiseFST != 0;
    results_->num_perm = plan_.permutations.total;
    std::size_t largest = 0;
    for (Population* sample : a_.all_pops) {
        results_->names.emplace_back(sample->name.view());
        sample->CreatePermutationVectors(a_.dist->MatrixSize);
        largest = std::max(largest, static_cast<std::size_t>(copies_of(*sample)));
    }
    rows_.assign(2 * largest, kNoRow);
}

void PairwiseComparison::check_rows() {
    if (!results_->compared) return;
    const bool haplotypic = a_.samples->GenotypicData == 0;
    for (Population* sample : a_.all_pops) {
        fill_rows(*sample, haplotypic, rows_.data());
        sample->SetUpVectorsAfterPermutation(rows_.data());
    }
}

void PairwiseComparison::compute_mean_sizes() {
    for (Population* sample : a_.all_pops) {
        if (auto* genetic = dynamic_cast<PopGenetics*>(sample)) genetic->computeMeanAlleleSizes();
    }
}

double PairwiseComparison::delta_mu(const Population& first, const Population& second) const {
    const auto* const x = dynamic_cast<const PopGenetics*>(&first);
    const auto* const y = dynamic_cast<const PopGenetics*>(&second);
    if (x == nullptr || y == nullptr) return 0.0;
    return delta_mu_square(x->mean_allele_sizes, y->mean_allele_sizes);
}

bool PairwiseComparison::compare_all() {
    if (s_.ComputeDeltaMuSqr != 0) compute_mean_sizes();
    const int P = results_->P;
    if (P == 1 && results_->compared) compare_copies_of_one();
    for (int i = 0; i < P; ++i) {
        for (int j = i + 1; j < P; ++j) {
            if (s_.stopped() || !compare_pair(i, j)) return false;
        }
    }
    return true;
}

bool PairwiseComparison::compare_pair(int i, int j) {
    Population& first = *a_.all_pops[static_cast<std::size_t>(i)];
    Population& second = *a_.all_pops[static_cast<std::size_t>(j)];
    if (s_.ComputeDeltaMuSqr != 0) results_->delta_mu(i, j) = delta_mu(first, second);
    if (!results_->compared) return true;
    const PairDesign design = pair_design(first.sample_size, second.sample_size);
    if (design.n == 0.0) {
        E.error(Error, kReporter, kNoDegreesOfFreedomLeft);
        return false;
    }
    a_.fill_bipop_vector(&first, &second, rows_.data());
    const std::ptrdiff_t nb_copies = std::ptrdiff_t{copies_of(first)} + copies_of(second);
    PairBlock block(*a_.dist, {rows_.begin(), rows_.begin() + nb_copies}, copies_of(first));
    const PairSSD ssd = block.sums();
    PairObserved observed;
    observed.variance = pair_variance(design, ssd);
    observed.differences = pair_differences(design, ssd);
    if (plan_.solves_divergence) observed.divergence = pair_divergence(observed.differences);
    store_observed(i, j, observed);
    if (!results_->tested) return true;
    PairTestResult test;
    if (!test_pair(block, design, observed, plan_, s_, test)) return false;
    store_test(i, j, test);
    return true;
}

// A single sample is in no pair and has its differences all the same.
void PairwiseComparison::compare_copies_of_one() {
    const Population& sample = *a_.all_pops.front();
    fill_rows(sample, a_.samples->GenotypicData == 0, rows_.data());
    const int nb_copies = copies_of(sample);
    PairBlock block(*a_.dist, {rows_.begin(), rows_.begin() + nb_copies}, nb_copies);
    results_->pi(0, 0) = pair_differences(pair_design(nb_copies, 0.0), block.sums()).pi_X;
}

void PairwiseComparison::store_observed(int i, int j, const PairObserved& observed) {
    PairwiseResults& r = *results_;
    r.pi(i, i) = observed.differences.pi_X;
    r.pi(j, j) = observed.differences.pi_Y;
    r.pi(i, j) = observed.differences.pi_XY;
    r.pi(j, i) = observed.differences.corrected;
    r.fst(i, j) = observed.variance.FST;
    r.fst_var(i, j) = observed.variance.Va;
    if (!plan_.solves_divergence) return;
    r.tau(i, j) = observed.divergence.tau;
    r.k_ratio(i, j) = observed.divergence.k_ratio;
    r.theta0(i, j) = observed.divergence.theta0;
    r.not_converged(i, j) = observed.divergence.not_converged;
}

void PairwiseComparison::store_test(int i, int j, const PairTestResult& test) {
    PairwiseResults& r = *results_;
    r.fst_p(i, j) = test.fst_p;
    r.fst_sd(i, j) = test.fst_sd;
    r.pi_p(i, j) = test.pi_p;
    r.pi_corr_p(i, j) = test.pi_corr_p;
    if (!plan_.solves_divergence) return;
    r.tau_p(i, j) = test.tau_p;
    r.k_p(i, j) = test.k_p;
    r.theta0_p(i, j) = test.theta0_p;
}

// Releases the tallies of all samples when the comparison ends, in whatever way.
class TallyGuard {
public:
    explicit TallyGuard(Samples& samples) : samples_(samples) {}
    ~TallyGuard() {
        for (Population* sample : samples_.populations)
            sample->DeletePermutationVectors();
    }
    TallyGuard(const TallyGuard&) = delete;
    TallyGuard& operator=(const TallyGuard&) = delete;

private:
    Samples& samples_;
};

// Runs a step of the comparison. Report: Memory 0, when there is no memory for it.
template <class Step>
auto run_or_report(Step step) {
    try {
        return step();
    } catch (const std::exception&) {
        E.error(Memory, kReporter, kNotEnoughMemory);
        throw Amova::AmovaFatalError();
    }
}

}  // namespace

void Amova::fill_bipop_vector(Population* a, Population* b, int* out) {
    const bool haplotypic = samples->GenotypicData == 0;
    fill_rows(*a, haplotypic, out);
    fill_rows(*b, haplotypic, out + copies_of(*a));
}

void Amova::CalcPairDist() {
    settings& s = *sett;
    std::ostream& document = document_of(*this);
    settle_test(s);
    if (samples->GenotypicData != 0 && samples->GameticPhase == 0 && s.RecessiveAllelesEM != 0) {
        document << "\nPopulation pairwise FSTs not possible with recessive Data\n";
        return;
    }
    const std::clock_t begin = std::clock();
    settings::set_message("Computing pairwise distances...");
    const TallyGuard tallies(*samples);
    PairwiseComparison comparison(*this);
    run_or_report([&] { comparison.allocate(); });
    comparison.check_rows();
    if (!run_or_report([&] { return comparison.compare_all(); })) return;
    *_AOS_ << "\t\t" << milliseconds_since(begin) << " ms to compute pairwise differences"
           << (comparison.results().tested ? " and test significance" : "") << '\n';
    print_pairwise_tables(document, s, comparison.results());
    write_pairwise_rows(s, comparison.results(), settings::input_file);
    *_AOS_ << "\nAll FST distances have been computed and written to file\n";
}

}  // namespace mnd
