#include "within/hardy_weinberg.h"

#include <algorithm>
#include <climits>
#include <iomanip>
#include <new>
#include <numeric>
#include <span>
#include <unordered_map>
#include <vector>

#include "foundation/batch_stat.h"
#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "foundation/special_functions.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"
#include "run/settings.h"
#include "within/genotype_chain.h"

namespace mnd {

std::ofstream* ofs_HW = nullptr;

// --- The table

namespace {

constexpr int kNotFound = -1;

// Kinds of alleles or haplotypes, numbered by first appearance.
template <class Kind, class Hash, class Equal>
class Numbering {
public:
    void add(const Kind* kind) { numbers_.try_emplace(kind, static_cast<int>(numbers_.size())); }
    int size() const { return static_cast<int>(numbers_.size()); }
    int number_of(const Kind* kind) const {
        const auto found = numbers_.find(kind);
        return found == numbers_.end() ? kNotFound : found->second;
    }

private:
    std::unordered_map<const Kind*, int, Hash, Equal> numbers_;
};

struct SameHaplotype {
    bool operator()(const TPopHaplotype* a, const TPopHaplotype* b) const { return *a == *b; }
};
struct HashHaplotype {
    std::size_t operator()(const TPopHaplotype* haplotype) const { return hash_alleles(*haplotype); }
};

using AlleleNumbers = Numbering<TAllele, std::hash<const TAllele*>, std::equal_to<const TAllele*>>;
using HaplotypeNumbers = Numbering<TPopHaplotype, HashHaplotype, SameHaplotype>;

// The two alleles or haplotypes of individuals of one phenotype.
template <class Kind>
struct Pair {
    const Kind* first;   // not owned
    const Kind* second;  // not owned
    int individuals;
};

using AllelePairs = std::vector<Pair<TAllele>>;
using HaplotypePairs = std::vector<Pair<TPopHaplotype>>;

// Adds the pairs to a table of zeros. Cells that may hold all individuals do not overflow later on.
// Returns: false for a kind without a number, or for more individuals than a cell can count
template <class Kind, class Numbers>
bool fill_table(CountTable& table, const std::vector<Pair<Kind>>& pairs, const Numbers& numbers) {
    int individuals = 0;
    for (const Pair<Kind>& pair : pairs) {
        const int i = pair.first == nullptr ? kNotFound : numbers.number_of(pair.first);
        const int j = pair.second == nullptr ? kNotFound : numbers.number_of(pair.second);
        if (i == kNotFound || j == kNotFound || pair.individuals > INT_MAX - individuals) return false;
        individuals += pair.individuals;
        table[std::min(i, j)][std::max(i, j)] += pair.individuals;
    }
    return true;
}

// Builds and fills the table of these kinds.
// Returns: 1, or 0 after a report
template <class Kind, class Numbers>
int build_table(CountTable& table, const std::vector<Pair<Kind>>& pairs, const Numbers& numbers) {
    constexpr const char* kReporter = "Population::make_hw_table()";
    try {
        table.build(numbers.size(), numbers.size());
    } catch (const std::bad_alloc&) {
        report(Error, kReporter, kNotEnoughMemory);
        return 0;
    }
    if (fill_table(table, pairs, numbers)) return 1;
    table.clear();
    report(Error, kReporter, kInvalidContingencyTableIndex);
    return 0;
}

int individuals_of(const TPhenotype& phenotype) {
    return std::max(integer_part(phenotype.freq), 0);
}

HaplotypePairs haplotype_pairs(const TPhenDB& phenotypes) {
    HaplotypePairs pairs;
    for (const TPhenotype* phenotype : phenotypes) {
        pairs.push_back(
            {phenotype->pseudo_hapl[0].get(), phenotype->pseudo_hapl[1].get(), individuals_of(*phenotype)});
    }
    return pairs;
}

bool has_locus(const TPhenotype& phenotype, int locus) {
    for (const auto& haplotype : phenotype.pseudo_hapl) {
        if (haplotype == nullptr || locus >= haplotype->num_loci()) return false;
    }
    return true;
}

bool is_present(const TAllele* allele, char missing) {
    return allele != nullptr && !allele->is_char(missing);
}

// The alleles at a locus of all individuals with both of them.
// Returns: false after a report
bool allele_pairs(const TPhenDB& phenotypes, int locus, char missing, AllelePairs& pairs) {
    for (const TPhenotype* phenotype : phenotypes) {
        if (!has_locus(*phenotype, locus)) {
            report(Error, "Population::make_hw_table() ", kInvalidContingencyTableIndex);
            return false;
        }
        const TAllele* const first = phenotype->pseudo_hapl[0]->allele(locus);
        const TAllele* const second = phenotype->pseudo_hapl[1]->allele(locus);
        if (!is_present(first, missing) || !is_present(second, missing)) continue;
        pairs.push_back({first, second, individuals_of(*phenotype)});
    }
    return true;
}

template <class Numbers, class Kind>
Numbers numbered(const std::vector<Pair<Kind>>& pairs) {
    Numbers numbers;
    for (const Pair<Kind>& pair : pairs) {
        if (pair.first != nullptr) numbers.add(pair.first);
        if (pair.second != nullptr) numbers.add(pair.second);
    }
    return numbers;
}

}  // namespace

int Population::make_hw_table(int* hw_info) {
    const int locus = hw_info[1];
    monomorphic = 0;
    table.clear();
    hw_info[0] = 0;
    if (locus < 0) {
        const HaplotypePairs pairs = haplotype_pairs(phen_db);
        const auto numbers = numbered<HaplotypeNumbers>(pairs);
        if (numbers.size() < 2) return 1;
        hw_info[0] = numbers.size();
        return build_table(table, pairs, numbers);
    }
    AllelePairs pairs;
    if (!allele_pairs(phen_db, locus, profile.MissingData, pairs)) return 0;
    const auto numbers = numbered<AlleleNumbers>(pairs);
    if (numbers.size() < 2) {
        monomorphic = 1;
        return 0;
    }
    hw_info[0] = numbers.size();
    return build_table(table, pairs, numbers);
}

void Population::clear_table(int*) {
    table.clear();
}

// --- The chains

namespace {

constexpr double kWorkUnitsPerStep = 0.001;

// Batches that a long chain counts hits for. More would take the memory of the machine, for chains
// of 10^16 steps and more, which take years.
constexpr std::int64_t kMostSlots = 100'000'000;

void report_swap_failure() {
    report(Error, "Population::swap_in_table2()", kInvalidContingencyTableIndex);
}

void add_work(double units) {
    settings::global_work_done += units;
    settings::print_message();
}

// Makes the table of a test.
// Returns: false when there is nothing to run a chain on
bool begin_test(Population& sample, long steps, int* hw_info) {
    if (sample.make_hw_table(hw_info) == 0) return false;
    if (hw_info[0] >= 2) return true;
    // Kept on purpose: a test that needs no chain adds its steps, a chain their thousandth.
    // Test: HardyWeinbergChain.OneHaplotypeNeedsNoChain
    add_work(static_cast<double>(steps));
    return false;
}

double share(std::int64_t hits, std::int64_t steps) {
    return static_cast<double>(hits) / static_cast<double>(steps);
}

// The work of make_hw_test2 on its table.
//   result   stays without a chain or after a stop
// Throws:   std::bad_alloc for more batches than there can be
void run_long_chain(CountTable& table, const BatchPlan& plan, const settings& s, ChainResult& result) {
    if (plan.batches > kMostSlots) throw std::bad_alloc();
    GenotypeChain chain(table);
    std::vector<std::int64_t> hits(static_cast<std::size_t>(plan.batches), 0);
    bool in_range = chain.run(s.MarkovChainDememorisationStepsLD);
    for (std::int64_t i = 0; i < plan.per_batch && in_range; ++i) {
        in_range = chain.run(hits);
        add_work(kWorkUnitsPerStep * static_cast<double>(plan.batches));
        if (s.stopped()) return;
    }
    if (!in_range) {
        report_swap_failure();
        return;
    }
    const std::int64_t total = std::accumulate(hits.begin(), hits.end(), std::int64_t{0});
    result.steps_done = plan.total;
    result.p_value = share(total, plan.total);
    result.sd = batch_error(std::span(hits), plan.per_batch, result.p_value);
}

// The work of make_hw_test3 on its table.
//   result   stays without a chain or after a stop
// Throws:   std::bad_alloc for more batches than there can be
void run_short_chains(CountTable& table, const BatchPlan& plan, const settings& s, ChainResult& result) {
    const double precision = s.PrecisionOnPValueHW;
    const std::vector<std::int32_t> observed = table.cells();
    ChainResult so_far{0.0, 1.0, 0};
    std::vector<std::int64_t> hits;
    std::int64_t total = 0;
    bool is_last = false;
    for (std::int64_t b = 0; b < plan.batches && !is_last; ++b) {
        table.cells() = observed;
        GenotypeChain chain(table);
        std::int64_t of_batch = 0;
        if (!chain.run(s.MarkovChainDememorisationStepsLD) || !chain.run(plan.per_batch, of_batch)) {
            report_swap_failure();
            return;
        }
        total += of_batch;
        so_far.steps_done += plan.per_batch;
        so_far.p_value = share(total, so_far.steps_done);
        // The error is that of the batches before this one.
        if (b > 1) so_far.sd = batch_error(std::span(hits), plan.per_batch, so_far.p_value);
        is_last = b > 1 && so_far.sd < precision;
        hits.push_back(of_batch);
        add_work(kWorkUnitsPerStep * static_cast<double>(plan.per_batch));
        if (s.stopped()) return;
    }
    result = so_far;
}

void report_no_memory(const char* reporter, long steps, const BatchPlan& plan) {
    report(Error, reporter, kNotEnoughMemory);
    *_AOS_ << "\t\tThe Hardy-Weinberg test of " << steps << " steps goes in " << plan.batches
           << " batches, for which there is no memory: test not done\n";
}

struct ChainDesign {
    const char* reporter;
    void (*run)(CountTable&, const BatchPlan&, const settings&, ChainResult&);
};
constexpr ChainDesign kLongChain = {"Population::make_hw_test2()", run_long_chain};
constexpr ChainDesign kShortChains = {"Population::make_hw_test3()", run_short_chains};

// A test from its table to its results in s.
ChainResult run_test(Population& sample, long steps, settings& s, int* hw_info, const ChainDesign& design) {
    ChainResult result{s.hw_p_value, 0.0, 0};
    if (begin_test(sample, steps, hw_info)) {
        const BatchPlan plan = plan_batches(steps);
        if (plan.batches == 0) result.p_value = 0.0;
        try {
            if (plan.batches > 0) design.run(sample.table, plan, s, result);
        } catch (const std::bad_alloc&) {
            report_no_memory(design.reporter, steps, plan);
        }
    }
    sample.clear_table(hw_info);
    s.hw_p_value = result.p_value;
    s.hw_precision = result.sd;
    return result;
}

}  // namespace

double Population::swap_in_table2(int* hw_info, long&) {
    const int n = hw_info[0];
    GenotypeChain chain(table);
    if (n < 2 || table.rows() != n || table.columns() != n || !chain.run(1)) {
        report_swap_failure();
        return 1.0;
    }
    return chain.last_ratio();
}

void Population::make_hw_test2(long const& steps, double& stat, settings& s, long& steps_done, int* hw_info) {
    stat = 0.0;
    steps_done = run_test(*this, steps, s, hw_info, kLongChain).steps_done;
}

void Population::make_hw_test3(long const& steps, double& stat, settings& s, long& steps_done, int* hw_info) {
    stat = 0.0;
    steps_done = run_test(*this, steps, s, hw_info, kShortChains).steps_done;
}

int Population::make_hw_test1(TPhenDB const& phen, double& stat, settings& s, int* hw_info) {
    const int locus[2] = {1, hw_info[1]};
    TPhenDB of_locus;
    of_locus.create_temp_PhenDB(locus, phen);
    if (s.EMCheckPhenRedundancy != 0) of_locus.check_pheno_redundancy();
    int df = 0;
    stat = of_locus.hw_chi_stat(allele_db, hw_info[1], profile.MissingData, df);
    s.hw_p_value = 1.0;
    if (df > 0)
        s.hw_p_value = Prob_of_chi_sq(static_cast<float>(df), static_cast<float>(std::max(stat, 0.0)));
    return df;
}

// --- The analysis of a sample

namespace {

class HardyWeinbergAnalysis {
public:
    HardyWeinbergAnalysis(Population& sample, std::ostream& out, long steps, settings& s)
        : sample_(sample), out_(out), steps_(steps), s_(s) {}

    void run(int nb_loci) {
        const bool tests_loci = is_on() && selects_loci();
        if (selects_loci()) print_hw_loci_heading(out_, steps_, s_);
        if (tests_loci) begin_summary_row();
        print_hw_columns(out_);
        for (int locus = 0; locus < nb_loci && !s_.stopped(); ++locus) {
            s_.hw_p_value = 1.0;
            if (tests_loci) test_locus(locus);
            out_ << '\n';
        }
        print_hw_rule(out_);
        if (tests_loci) end_summary_row();
        if (is_on() && selects_haplotypes() && nb_loci > 0 && !s_.stopped()) test_haplotypes();
        out_ << '\n' << std::flush;
    }

private:
    Population& sample_;
    std::ostream& out_;
    long steps_;
    settings& s_;

    bool is_on() const { return s_.MakeHWExactTest != 0; }
    bool phased() const { return sample_.profile.GameticPhase != 0; }
    bool selects_loci() const { return s_.TypeOfTestHW != kHaplotypesAloneHW || !phased(); }
    bool selects_haplotypes() const {
        const int hw_type = s_.TypeOfTestHW;
        return phased() && (hw_type == kHaplotypesAloneHW || hw_type == kLociAndHaplotypesHW);
    }

    using Test = void (Population::*)(long const&, double&, settings&, long&, int*);

    // The result of a test; the setting that it leaves its s.d. in is put back.
    ChainResult result_of(Test test, int locus) {
        const double precision = s_.hw_precision;
        int hw_info[2] = {0, locus};
        ChainResult result;
        double stat = 0.0;
        (sample_.*test)(steps_, stat, s_, result.steps_done, hw_info);
        result.p_value = s_.hw_p_value;
        result.sd = s_.hw_precision;
        s_.hw_precision = precision;
        return result;
    }

    void test_locus(int locus) {
        print_hw_locus(out_, locus + 1);
        HardyWeinbergRow row;
        row.test = result_of(&Population::make_hw_test2, locus);
        if (sample_.monomorphic != 0) {
            print_hw_monomorphic(out_);
            add_to_summary_row(row.test);
            return;
        }
        sample_.compute_locus_heterozygosity(locus, row.observed, row.expected, row.individuals);
        print_hw_row(out_, row);
        add_to_summary_row(row.test);
    }

    void test_haplotypes() {
        print_hw_haplotypes_heading(out_, steps_, s_);
        print_hw_haplotypes_label(out_);
        s_.hw_p_value = 1.0;
        const bool in_one_piece = steps_ <= kLongestSingleChainHW;
        print_hw_haplotypes(
            out_, result_of(in_one_piece ? &Population::make_hw_test2 : &Population::make_hw_test3, -1));
    }

    void begin_summary_row() const {
        if (ofs_HW == nullptr) return;
        const char* const project = settings::input_file;
        *ofs_HW << '"' << (project == nullptr ? "" : project) << "\"\t\"" << sample_.name.view() << '"';
    }

    void add_to_summary_row(const ChainResult& test) const {
        if (ofs_HW == nullptr) return;
        if (test.steps_done == 0) {
            *ofs_HW << "\tN.A.\tN.A.";
            return;
        }
        const FormatGuard guard(*ofs_HW);
        *ofs_HW << std::fixed << std::showpoint << std::setprecision(5) << '\t' << test.p_value << '\t'
                << test.sd;
    }

    void end_summary_row() const {
        if (ofs_HW != nullptr) *ofs_HW << std::endl;
    }
};

}  // namespace

void Population::make_all_hw(std::basic_fstream<char>& out, TPhenDB const& phen, long const& steps,
                             settings& s) {
    HardyWeinbergAnalysis(*this, out, steps, s).run(phen.num_loci());
}

}  // namespace mnd
