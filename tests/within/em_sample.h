// Samples of unphased genotypes, and a plain estimation of their haplotype frequencies that
// shares nothing with the program but the stream of random numbers.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "foundation/random.h"
#include "model/popul_standard.h"
#include "run/process.h"
#include "run/settings.h"
#include "support/seeded_stream.h"

namespace mnd_test {

// Individuals of one kind: two strings with one character per locus, in no known phase.
struct Individuals {
    std::string first;
    std::string second;
    double count = 1.0;
};

// A sample of them, with its alleles. Each locus begins with the recessive allele "0", unless that
// is left out.
struct GenotypeSample {
    mnd::TAlleleDB alleles;
    mnd::PopulStandard sample;

    explicit GenotypeSample(const std::vector<Individuals>& all, bool with_recessive = true)
        : with_recessive_(with_recessive) {
        sample.allele_db = &alleles;
        sample.profile.MissingData = '?';
        for (const Individuals& kind : all)
            add(kind);
        sample.phen_db.convert_freq_to_real();
    }

    void add(const Individuals& kind) {
        const int loci = static_cast<int>(kind.first.size());
        for (int l = static_cast<int>(alleles.count); with_recessive_ && l < loci; ++l)
            alleles.insert_allele(l, "0", 0.0);
        auto phenotype = std::make_unique<mnd::TPhenotype>(mnd::my_string("id"), kind.count);
        phenotype->set_pseudo_hapl(haplotype(kind.first), 0);
        phenotype->set_pseudo_hapl(haplotype(kind.second), 1);
        sample.phen_db.Add(phenotype.release());
        sample.sample_size += 2.0 * kind.count;
    }

    mnd::TPopHaplotype haplotype(const std::string& text) {
        mnd::TPopHaplotype result('\0');
        for (std::size_t l = 0; l < text.size(); ++l)
            result.alleles.Add(alleles.insert_allele(static_cast<int>(l), std::string(1, text[l]), 0.0));
        return result;
    }

private:
    bool with_recessive_;
};

inline std::string text_of(const mnd::TPopHaplotype& haplotype) {
    std::string text;
    for (const mnd::TAllele* allele : haplotype.alleles)
        text += std::string(allele->view());
    return text;
}

// The estimation as it is defined, on texts and with searches from end to end.
class PlainEm {
public:
    struct Genotype {
        std::size_t h_1;
        std::size_t h_2;
        double prob = 0.0;
    };
    struct Phenotype {
        double count;
        bool homozygous;
        std::vector<Genotype> genotypes;
        double prob = 0.0;
    };

    std::vector<std::string> haplotypes;
    std::vector<Phenotype> phenotypes;
    std::vector<double> freq;
    std::vector<double> best;
    std::vector<double> ibd;
    double gene_copies = 0.0;
    double best_likelihood = -3.4028234663852886e+38;
    double best_F = 0.0;
    std::vector<double> likelihoods;

    explicit PlainEm(const std::vector<Individuals>& all) {
        for (const Individuals& kind : all)
            resolve(kind);
        ibd.assign(haplotypes.size(), 0.0);
        best.assign(haplotypes.size(), 0.0);
    }

    // fixed_F: to be held; 0 asks for an estimate.
    void run(bool inbreeding, double fixed_F, int starts, int max_iter, double epsilon) {
        const bool estimate = inbreeding && fixed_F == 0.0;
        for (int start = 0; start < starts; ++start) {
            draw_start();
            double F = estimate ? mnd::ran3() / 3.0 : inbreeding ? fixed_F : 0.0;
            for (int i = 0; i < max_iter; ++i) {
                if (iterate(inbreeding, estimate, F) < epsilon) break;
            }
            const double likelihood = log_likelihood();
            if (likelihood > best_likelihood) {
                best_likelihood = likelihood;
                best = freq;
                best_F = F;
            }
            if (std::all_of(likelihoods.begin(), likelihoods.end(),
                            [&](double known) { return std::fabs(known - likelihood) >= 1e-06; }))
                likelihoods.push_back(likelihood);
        }
    }

    void draw_start() {
        freq.assign(haplotypes.size(), 0.0);
        double sum = 0.0;
        for (double& f : freq)
            sum += f = 1.0 + 1000.0 * mnd::ran3();
        for (double& f : freq)
            f /= sum;
    }

    double log_likelihood() const {
        double sum = 0.0;
        for (const Phenotype& phenotype : phenotypes) {
            if (!(phenotype.prob > 0.0)) return -3.4028234663852886e+38;
            sum += phenotype.count * std::log(phenotype.prob);
        }
        return sum;
    }

    // Log likelihood of any frequencies and any F.
    double log_likelihood_of(const std::vector<double>& p, double F) const {
        double sum = 0.0;
        for (const Phenotype& phenotype : phenotypes) {
            double prob = 0.0;
            for (const Genotype& g : phenotype.genotypes)
                prob += g.h_1 == g.h_2 ? p[g.h_1] * F + (1 - F) * p[g.h_1] * p[g.h_1]
                                       : 2 * (1 - F) * p[g.h_1] * p[g.h_2];
            sum += phenotype.count * std::log(prob);
        }
        return sum;
    }

    // Returns the sum of absolute changes.
    double iterate(bool inbreeding, bool estimate, double& F) {
        double ibd_sum = 0.0;
        if (inbreeding) {
            std::vector<double> expected(haplotypes.size(), 0.0);
            for (const Phenotype& phenotype : phenotypes) {
                if (!phenotype.homozygous) continue;
                const std::size_t h = phenotype.genotypes[0].h_1;
                expected[h] += phenotype.count * F / (freq[h] * (1 - F) + F);
            }
            for (const double e : expected)
                ibd_sum += e;
            ibd = expected;
            if (estimate) F = ibd_sum / (gene_copies / 2);
        }
        std::vector<double> counts(haplotypes.size(), 0.0);
        for (Phenotype& phenotype : phenotypes) {
            phenotype.prob = 0.0;
            for (Genotype& g : phenotype.genotypes) {
                const double p_1 = freq[g.h_1];
                const double p_2 = freq[g.h_2];
                const double f = inbreeding ? F : 0.0;
                g.prob = g.h_1 == g.h_2 ? p_1 * f + (1 - f) * p_1 * p_1 : 2 * (1 - f) * p_1 * p_2;
                phenotype.prob += g.prob;
            }
            for (const Genotype& g : phenotype.genotypes) {
                counts[g.h_1] += phenotype.count * g.prob / phenotype.prob;
                counts[g.h_2] += phenotype.count * g.prob / phenotype.prob;
            }
        }
        double change = 0.0;
        for (std::size_t h = 0; h < freq.size(); ++h) {
            const double next = (counts[h] - (inbreeding ? ibd[h] : 0.0)) / (gene_copies - ibd_sum);
            change += std::fabs(next - freq[h]);
            freq[h] = next;
        }
        return change;
    }

private:
    std::size_t number_of(const std::string& text) {
        const auto found = std::find(haplotypes.begin(), haplotypes.end(), text);
        if (found != haplotypes.end()) return static_cast<std::size_t>(found - haplotypes.begin());
        haplotypes.push_back(text);
        return haplotypes.size() - 1;
    }

    // All ways of exchanging the alleles of heterozygous loci but for the first of them; the
    // second string enters the list before the first.
    void resolve(const Individuals& kind) {
        std::vector<std::size_t> het;
        for (std::size_t l = 0; l < kind.first.size(); ++l)
            if (kind.first[l] != kind.second[l]) het.push_back(l);
        Phenotype phenotype{kind.count, het.empty(), {}};
        const unsigned ways = het.size() > 1 ? 1U << (het.size() - 1) : 1U;
        for (unsigned way = 0; way < ways; ++way) {
            std::string a = kind.first;
            std::string b = kind.second;
            for (std::size_t k = 1; k < het.size(); ++k)
                if ((way >> (k - 1)) & 1U) std::swap(a[het[k]], b[het[k]]);
            const std::size_t in_b = number_of(b);
            const std::size_t in_a = number_of(a);
            phenotype.genotypes.push_back({in_a, in_b});
        }
        phenotypes.push_back(phenotype);
        gene_copies += 2.0 * kind.count;
    }
};

// Draws individuals from haplotypes of these frequencies, which sum to 1.
//   F   share of the individuals whose copies are identical by descent
inline std::vector<Individuals> simulate(int n, const std::vector<std::pair<std::string, double>>& haplotypes,
                                         double F = 0.0) {
    const auto draw = [&haplotypes] {
        double u = mnd::ran3();
        for (const auto& [text, freq] : haplotypes) {
            if (u < freq) return text;
            u -= freq;
        }
        return haplotypes.back().first;
    };
    std::vector<Individuals> all;
    for (int i = 0; i < n; ++i) {
        Individuals one{draw(), draw(), 1.0};
        if (F > 0.0 && mnd::ran3() < F) one.second = one.first;
        // The phase is lost: at each locus the alleles stand in the order of the alphabet.
        for (std::size_t l = 0; l < one.first.size(); ++l)
            if (one.second[l] < one.first[l]) std::swap(one.first[l], one.second[l]);
        all.push_back(one);
    }
    return all;
}

// An estimation by the program, with what it returns.
class Estimated : public GenotypeSample {
public:
    using GenotypeSample::GenotypeSample;

    mnd::settings s;
    mnd::TPopHaploDB haplo;
    int num_lhoods = -1;
    double F = 0.0;
    double likelihood = 0.0;

    double run(int starts, int max_iter, double epsilon, bool inbreeding = false, bool compact = false) {
        likelihood =
            sample.calc_ML_hapl_freq_hill95_LD(sample.phen_db, haplo, s, num_lhoods, inbreeding ? 1 : 0, F,
                                               nullptr, nullptr, compact ? 1 : 0, starts, max_iter, epsilon);
        return likelihood;
    }
    double sum_of_freq() const {
        double sum = 0.0;
        for (const mnd::TPopHaplotype* haplotype : haplo)
            sum += haplotype->freq;
        return sum;
    }
    // Frequency of a haplotype; -1 when the store does not have it.
    double freq(const std::string& text) const {
        for (const mnd::TPopHaplotype* haplotype : haplo)
            if (text_of(*haplotype) == text) return haplotype->freq;
        return -1.0;
    }
};

// The stream at a fixed place, and nothing on the console.
class EmTest : public SeededStream {
protected:
    EmTest() : silent_(mnd::silentMendrake) { mnd::silentMendrake = true; }
    ~EmTest() override { mnd::silentMendrake = silent_; }

private:
    bool silent_;
};

}  // namespace mnd_test
