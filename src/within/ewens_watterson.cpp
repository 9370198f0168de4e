#include "within/ewens_watterson.h"

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"
#include "run/settings.h"
#include "within/ewens_sampling.h"
#include "within/neutrality_tables.h"
#include "within/replicate_progress.h"

namespace mnd {

namespace {

using AlleleList = MY_TISArrayAsVector<AHaplFreq>;

std::vector<int> counts_of(const AlleleList& alleles) {
    std::vector<int> counts;
    counts.reserve(static_cast<std::size_t>(alleles.count));
    for (long i = 0; i < alleles.count; ++i)
        counts.push_back(integer_part(alleles[i]->freq));
    return counts;
}

void fill_with_empty_records(AlleleList& ranks, int k) {
    for (int i = 0; i < k; ++i)
        ranks.Add(new AHaplFreq);
}

// Whether there are B numbers for the test; if not, the document says why.
bool has_b_numbers(std::ostream& out, int n, int k) {
    const bool too_large = n >= kNeutralityCopyLimit || k >= kNeutralityAlleleLimit;
    if (!too_large && PopGenetics::ensure_B(n, k)) return true;
    print_watterson_limits(out);
    if (too_large) return false;
    *_AOS_ << "\t\tFile 500k100.bnb not found... skipping task !\n";
    print_too_large(out);
    return false;
}

// Means and deviations of num_sim counts; a single one gives neither.
void settle_ranks(AlleleList& ranks, int num_sim, int n) {
    for (long i = 0; i < ranks.count; ++i) {
        if (num_sim < 2) {
            *ranks[i] = AHaplFreq{};
        } else {
            ranks[i]->calc_mean_freq(num_sim, n);
        }
    }
}

// The test of one sample that is within the limits.
class EwensWattersonTest {
public:
    EwensWattersonTest(PopGenetics& sample, const settings& s, const AlleleList& alleles)
        : sample_(sample),
          s_(s),
          n_(integer_part(sample.sample_size)),
          k_(static_cast<int>(alleles.count)),
          class_counts_(static_cast<std::size_t>(n_) + 1),
          ranks_(k_ + 1, 1) {
        sample_.sampler = std::make_shared<ConfigurationSampler>(n_, k_, PopGenetics::BMat);
        fill_with_empty_records(ranks_, k_);
        const std::vector<int> counts = counts_of(alleles);
        sample_.obs_F = homozygosity_of_counts(counts.data(), k_, n_);
        sample_.slatkin_obs =
            slatkin_statistic(counts.data(), k_, n_, class_counts_.data(), sample_.sampler->log_of_product());
        sample_.slatkin_test = 1;
    }
    ~EwensWattersonTest() {
        sample_.slatkin_test = 0;
        sample_.sampler.reset();
    }
    EwensWattersonTest(const EwensWattersonTest&) = delete;
    EwensWattersonTest& operator=(const EwensWattersonTest&) = delete;

    // Returns: false when the run was stopped, with no result
    bool run(int num_sim) {
        double count_F = 0.0;
        double count_slatkin = 0.0;
        double sum_F = 0.0;
        int* class_counts = class_counts_.data();
        for (int i = 0; i < num_sim; ++i) {
            sum_F += sample_.compute_rand_frequencies_and_F(ranks_, sample_.obs_F, count_F, class_counts,
                                                            count_slatkin);
            kAlleleTestProgress.note(i + 1);
            if (s_.stopped()) return false;
        }
        settle_ranks(ranks_, num_sim, n_);
        if (num_sim < 1) return true;
        sample_.exp_F = sum_F / num_sim;
        sample_.ew_p = count_F / num_sim;
        sample_.slatkin_p = count_slatkin / num_sim;
        return true;
    }

    const AlleleList& ranks() const { return ranks_; }

private:
    PopGenetics& sample_;
    const settings& s_;
    int n_;
    int k_;
    std::vector<int> class_counts_;  // owned: alleles of each count, of the last configuration
    AlleleList ranks_;               // owned entries: sums over configurations, by rank
};

}  // namespace

double homozygosity_of_counts(const int* counts, int k, int n) {
    std::int64_t sum_of_squares = 0;
    for (int i = 0; i < k; ++i)
        sum_of_squares += std::int64_t{counts[i]} * counts[i];
    return static_cast<double>(sum_of_squares) / (static_cast<double>(n) * n);
}

double slatkin_statistic(const int* counts, int k, int n, int* class_counts, LogOfProduct& product) {
    std::fill_n(class_counts, n + 1, 0);
    for (int i = k - 1; i >= 0;) {
        const int c = counts[i];
        int& a = class_counts[c];
        for (; i >= 0 && counts[i] == c; --i)
            ++a;
        product.multiply(c, a);
    }
    return -product.take();
}

int number_of_alleles(const Population& sample) {
    int k = 0;
    for (const PHaploDef* entry : sample.hapl_list) {
        if (entry != nullptr && entry->freq > 0) ++k;
    }
    return k;
}

void list_of_counts(const Population& sample, AlleleList& list) {
    list.Flush();
    for (const PHaploDef* entry : sample.hapl_list) {
        if (entry == nullptr || entry->freq < 1) continue;
        const double count = entry->freq;
        list.Add(new AHaplFreq{count, count * count, 0.0, 0.0});
    }
}

double PopGenetics::compute_rand_frequencies_and_F(AlleleList& ranks, double const& observed_F,
                                                   double& count_F, int*& class_counts,
                                                   double& count_slatkin) {
    const int n = integer_part(sample_size);
    const int k = static_cast<int>(ranks.count);
    // Each time: the table may have been shrunk since the sampler was made.
    if (k < 1 || k > n || !ensure_B(n, k)) return 0.0;
    if (sampler == nullptr || sampler->n() != n || sampler->k() != k)
        sampler = std::make_shared<ConfigurationSampler>(n, k, BMat);
    const int* const counts = sampler->draw_sorted();
    for (int i = 0; i < k; ++i) {
        const double count = counts[i];
        ranks.data[i]->freq += count;
        ranks.data[i]->sd += count * count;
    }
    const double F = homozygosity_of_counts(counts, k, n);
    if (F <= observed_F) count_F += 1.0;
    if (slatkin_test != 0) {
        const double s = slatkin_statistic(counts, k, n, class_counts, sampler->log_of_product());
        if (s <= slatkin_obs) count_slatkin += 1.0;
    }
    return F;
}

void PopGenetics::get_first_rand_freq(AHaplFreq& first, int const& k, int const& n) {
    first = AHaplFreq{};
    if (k < 1 || k > n || !ensure_B(n, k)) return;
    first.freq = ConfigurationSampler(n, k, BMat, 0).draw_first();
    first.sd = first.freq * first.freq;
}

void PopGenetics::EW_neutrality_tests(settings& s, std::ostream& out, AlleleList const& alleles) {
    if (s.stopped()) return;
    const int n = integer_part(sample_size);
    const int k = static_cast<int>(alleles.count);
    obs_F = exp_F = slatkin_obs = 0.0;
    ew_p = slatkin_p = -1.0;
    const AlleleCountFault fault = allele_count_fault(k, n);
    const int num_sim = std::max(s.NumIterationsNeutralityTests, 0);
    if (fault != AlleleCountFault::kNone) {
        kAlleleTestProgress.skip(num_sim);
        print_impossible(out, *this, s, fault, k);
        write_ewens_watterson_row(*this, fault);
        return;
    }
    if (!has_b_numbers(out, n, k)) {
        kAlleleTestProgress.skip(num_sim);
        write_ewens_watterson_row(*this, k);
        return;
    }
    EwensWattersonTest test(*this, s, alleles);
    if (!test.run(num_sim)) return;
    print_ewens_watterson(out, *this, s, k, num_sim);
    print_rank_frequencies(out, *this, alleles, test.ranks());
    write_ewens_watterson_row(*this, k);
}

}  // namespace mnd
