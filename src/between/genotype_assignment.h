// Assignment of individuals to samples by the likelihood of their genotypes.
//
// For each individual the log-likelihood of its genotype in each sample of a project: it is most
// likely from the sample where this is the largest. Loci are taken as independent and in
// Hardy-Weinberg proportions in each sample; where gametic phase is known, an individual is two
// haplotypes drawn as wholes.
//
// An individual is not taken out of its own sample, whose frequencies it has a part in. Missing data
// count as an allele of their own, in the frequencies and so in the likelihoods.
//
// Source: Paetkau et al. 1995, Molecular Ecology 4:347-354; Waser and Strobeck 1998, Trends in
//         Ecology and Evolution 13:43-44
#pragma once

#include <cstdint>
#include <ostream>
#include <vector>

#include "model/phenotypes.h"
#include "model/samples.h"

namespace mnd {

class settings;

// Frequency given to an allele or haplotype that is not among n gene copies:
//
//   1 - exp(ln(0.95)/n)
//
// One that is as frequent stays out of them with probability 0.95. 1 for no copies.
double unseen_frequency(double copies);

class IndLikelihood {
public:
    double min_freq;    // frequency of what was not seen in a sample; set for each genotype and sample
    int32_t col_width;  // column width: the longest name of a sample, at least 10
    settings* sett;     // not owned: settings, with the result document
    Samples* samples;   // not owned: genotypic samples whose alleles are in one store

    // Nothing is computed yet. The samples have their allele vectors (build_all_vectors).
    //   initial_min_freq   min_freq until a likelihood is computed
    IndLikelihood(Samples& all_samples, settings& s, const double& initial_min_freq);

    // Computes and prints everything: the entry of the tree, citations, labels of the samples, notes on
    // what the numbers are, and for each sample a table of its individuals. A run that is stopped gets
    // a text in place of the tables.
    // Reads:    GenotypicData and GameticPhase of the samples
    // Writes:   the result stream of sett. At the end no allele has pop_freqs, and hapl_db of the
    //           samples is empty
    // Draws:    those of calc_alleles_freqs
    void run();

    // Estimates the frequencies of the alleles of each locus in each sample, into slot i of their
    // pop_freqs for the sample of index i. With known phase the haplotypes of each sample are counted
    // into its hapl_db too.
    //   Each sample and locus has an estimation of its own, with InitialConditionsEM starts of at most
    //   MaximumNumOfIterationsEM iterations. For a number below 1 the usual one is taken, which the log
    //   says: settings without these keys are those of somebody who asked for no other estimation.
    // Returns:  false when the work was stopped, the frequencies are then of no use
    // Draws:    a start takes one an allele of the sample, codominant ones too, although counting them
    //           is all there is to do; sample by sample, locus by locus
    bool calc_alleles_freqs();

    // The same with one individual left out of its sample.
    //   sample, individual   index of the sample, and of the entry of its phen_db; of an entry of
    //                        several individuals one is left out. An index of nobody leaves out nobody
    // Likelihoods from these frequencies take that sample as two gene copies smaller.
    bool calc_alleles_freqs_without_one_individual(const int& sample, const int& individual);

    // Prints a row of each individual of a sample: its name and its log-likelihood in each sample.
    void likelihood_in_a_pop(Population* p);

    // Log-likelihoods of a genotype in all samples, in their order, from the frequencies estimated.
    //
    //   unknown phase   ln prod_l (2 if a and b differ) f_a f_b over the alleles a, b of locus l
    //   known phase     ln (2 if h and k differ) f_h f_k for its haplotypes h, k
    //
    // An allele with a frequency below 1e-15, or a haplotype that is not found, has min_freq instead:
    // 1 in a sample without individuals, which so seems to be the most likely one.
    // Returns:  valid until the next call; not numbers for a genotype without allele vectors
    // Writes:   min_freq
    const std::vector<double>& log_likelihoods(const TPhenotype& genotype);

private:
    bool has_known_phase() const;
    bool estimate_frequencies(int smaller_sample, int individual);
    void set_unseen_frequencies(int smaller_sample);
    void forget_frequencies();
    const double* frequencies(const TAllele* allele) const;
    void likelihoods_of_loci(const TPhenotype& genotype);
    void likelihoods_of_haplotypes(const TPhenotype& genotype);
    void print_head(std::ostream& out) const;
    void print_labels(std::ostream& out) const;
    bool has_missing_data() const;
    void print_notes(std::ostream& out) const;
    void print_tables(std::ostream& out);

    std::vector<double> unseen_;   // owned: min_freq of each sample
    std::vector<double> nowhere_;  // owned: zeros, the frequencies of an allele without pop_freqs
    std::vector<double> product_;  // owned: working products, one a sample
    std::vector<double> log_;      // owned: working logarithms, then the log-likelihoods
};

}  // namespace mnd
