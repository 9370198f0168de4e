// Chakraborty's test: are there more alleles than the homozygosity of the sample lets expect, as
// there are when populations were put together?
// Source: Chakraborty 1990, American Journal of Human Genetics 47:87-94
#include <algorithm>

#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"
#include "within/ewens_sampling.h"
#include "within/ewens_watterson.h"
#include "within/neutrality_tables.h"

namespace mnd {

namespace {

// theta(Hom), and the homozygosity that it comes from, of these alleles.
void estimate_theta_Hom(PopGenetics& sample, const MY_TISArrayAsVector<AHaplFreq>& alleles) {
    MY_TISArrayAsVector<AHaplFreq> frequencies(alleles.count + 1, 1);
    for (long i = 0; i < alleles.count; ++i)
        frequencies.Add(new AHaplFreq{alleles[i]->freq / sample.sample_size, 0.0, 0.0, 0.0});
    sample.calc_theta_Hom(frequencies);
}

// Where P(K < k) comes out above 1 it is by no more than the error of its computation, and the
// complement is 0. What is further below 0 stands as it is: it would be a fault to be seen.
double without_rounding_below_0(double p) {
    return p < 0.0 && p > -kErrorOfProbabilities ? 0.0 : p;
}

}  // namespace

double PopGenetics::proba_exactly_k(int const& k, int const& n, double const& theta) {
    const bool needs_table = theta > 0.0 && theta <= kLargestSamplingTheta && k >= 1 && k < n;
    if (needs_table && !ensure_B(n, k)) return 0.0;
    return probability_of_k(k, n, theta, BMat);
}

double PopGenetics::proba_less_than_k(int const& k, int const& n, double const& theta) {
    const int last = std::min(k - 1, n);
    const bool needs_table = theta > 0.0 && theta <= kLargestSamplingTheta && last >= 1;
    if (needs_table && !ensure_B(n, last)) return 0.0;
    return static_cast<double>(probability_below_k(k, n, theta, BMat));
}

void PopGenetics::Chakraborty_neutr_test(std::ostream& out) {
    MY_TISArrayAsVector<AHaplFreq> alleles(hapl_list.count + 1, 1);
    list_of_counts(*this, alleles);
    Chakraborty_neutr_test(out, alleles);
}

void PopGenetics::Chakraborty_neutr_test(std::ostream& out, MY_TISArrayAsVector<AHaplFreq> const& alleles) {
    const int n = integer_part(sample_size);
    const int k = static_cast<int>(alleles.count);
    p_exactly_k = p_k_or_more = -1.0;
    if (k < 2) {
        print_single_haplotype(out, kChakrabortyWarning);
    } else if (k >= n) {
        print_all_different(out);
    } else if (n >= kNeutralityCopyLimit || k >= kNeutralityAlleleLimit || !ensure_B(n, k)) {
        print_too_large(out);
    } else {
        estimate_theta_Hom(*this, alleles);
        p_exactly_k = proba_exactly_k(k, n, theta_hom);
        p_k_or_more = without_rounding_below_0(1.0 - proba_less_than_k(k, n, theta_hom));
        k_est(theta_hom, n);
        print_chakraborty(out, *this, k);
    }
    write_chakraborty_row(*this, k);
}

}  // namespace mnd
