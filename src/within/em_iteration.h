// One iteration of the estimation of haplotype frequencies, on flat arrays.
//
// The resolutions of all phenotypes are listed once; an iteration then touches nothing but
// arrays of numbers, in the order in which phenotypes and genotypes are listed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace mnd {

class TPhenDB;
class TPopHaploDB;

// Stands for the logarithm of 0.
inline constexpr double kLowestLogLikelihood = -3.4028234663852886e+38;

// The genotypes behind each phenotype, as numbers of haplotypes in their store.
class EmResolutions {
public:
    enum Kind : std::uint8_t {
        kNone,        // no genotype: the phenotype is impossible
        kHomozygous,  // one genotype, twice the same haplotype at every locus as read
        kOne,         // one genotype
        kMany,
    };

    EmResolutions() = default;
    // Of the genotypes built in phen, whose haplotypes all stand in haplo.
    EmResolutions(TPhenDB const& phen, TPopHaploDB const& haplo);

    // Begins the next phenotype, n individuals strong; its genotypes follow.
    void begin_phenotype(double n, bool homozygous);
    void add_genotype(std::uint32_t hapl_1, std::uint32_t hapl_2);

    std::size_t phenotypes() const { return counts_.size(); }
    double count(std::size_t p) const { return counts_[p]; }
    Kind kind(std::size_t p) const { return kinds_[p]; }
    // The genotypes of phenotype p are numbered begin(p) to end(p) - 1.
    std::size_t begin(std::size_t p) const { return p == 0 ? 0 : ends_[p - 1]; }
    std::size_t end(std::size_t p) const { return ends_[p]; }
    // Haplotypes of a genotype.
    std::uint32_t hapl_1(std::size_t g) const { return hapl_1_[g]; }
    std::uint32_t hapl_2(std::size_t g) const { return hapl_2_[g]; }
    // Genotypes of the phenotype that has most.
    std::size_t most_genotypes() const { return most_genotypes_; }

private:
    std::vector<double> counts_;         // per phenotype: individuals
    std::vector<bool> homozygous_;       // per phenotype: no heterozygous locus
    std::vector<Kind> kinds_;            // per phenotype
    std::vector<std::size_t> ends_;      // per phenotype: one past its last genotype
    std::vector<std::uint32_t> hapl_1_;  // per genotype
    std::vector<std::uint32_t> hapl_2_;
    std::size_t most_genotypes_ = 0;
};

// The state of one start, and the step from one vector of frequencies to the next.
//
// Gene counting: Ceppellini, Siniscalco and Smith 1955, Ann. Hum. Genet. 20:97-115; for haplotypes
// Excoffier and Slatkin 1995, Mol. Biol. Evol. 12:921-927.
class EmIteration {
public:
    struct Model {
        double gene_copies;  // twice the individuals
        bool inbreeding;     // copies may be identical by descent within individuals
        bool estimate_F;     // F follows in each step from the homozygotes; else it is held
    };

    // All vectors stand at 0. The resolutions must outlive this.
    EmIteration(EmResolutions const& resolutions, std::size_t haplotypes, Model const& model);

    // Takes freq to the next estimate.
    // With inbreeding, first the copies identical by descent expected among the homozygotes, with
    // the F so far, then, if it is estimated, F anew; then the genotypes.
    // Writes:  freq, old_freq, prob; ibd of haplotypes seen in homozygotes, F
    // Returns: the sum over all haplotypes of |new freq - old_freq|
    double step();
    // Of the probabilities in prob, which stem from the frequencies before the last step; the
    // lowest value as soon as one is not above 0.
    double ln_likelihood() const;

    std::vector<double> freq;      // per haplotype
    std::vector<double> old_freq;  // per haplotype: freq at the last test of convergence
    std::vector<double> ibd;       // per haplotype: copies identical by descent; 0 without homozygotes
    std::vector<double> prob;      // per phenotype
    double F = 0.0;

private:
    double expect_ibd();
    template <bool kInbreeding>
    double probability(std::uint32_t hapl_1, std::uint32_t hapl_2) const;
    template <bool kInbreeding>
    void count_genes();
    template <bool kInbreeding>
    void count_among_one(std::size_t p, bool homozygous);
    template <bool kInbreeding>
    void count_among_many(std::size_t p);
    double renew_frequencies(double ibd_sum);

    EmResolutions const& resolutions_;
    Model model_;
    std::vector<double> next_;              // per haplotype: genes counted in this step
    std::vector<double> weights_;           // per genotype of one phenotype
    std::vector<std::size_t> homozygotes_;  // the phenotypes that are homozygous
};

}  // namespace mnd
