// A sample of DNA sequences: comparison by nucleotide classes and the seven distances.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "model/population.h"

namespace mnd {

class PopulDNA : public PopGenetics {
public:
    // Weights of the classes of differences; 0 or less removes the class.
    double del_weight = 1.0;  // DeletionWeight
    double ts_weight = 1.0;   // TransitionWeight
    double tv_weight = 1.0;   // TranversionWeight

    // Composition of the sample, of all sites: relative frequencies in the order C, T, A, G.
    std::array<double, 4> nucl_freq{};
    double gc_content = 0.0;  // frequency of C plus G

    // Working values of the last pair of sequences.
    std::array<std::array<double, 4>, 4> pair_counts{};  // pair types of Tajima-Nei; row i uses i entries
    int ts_count = 0;                                    // sites that differ by a transition
    int tv_count = 0;                                    // sites that differ by a transversion
    int site_count = 0;                                  // sites compared
    int diff_count = 0;                                  // sites that differ
    double ts_dist = 0.0;                                // transition part of the Tamura-Nei distance
    double tv_dist = 0.0;                                // transversion part
    double ts_rate = 0.0;                                // P, transitions per site
    double tv_rate = 0.0;                                // Q, transversions per site
    double ts_tv_ratio = 0.0;                            // -1: not available
    double ts_tv_ratio_var = 0.0;                        // -1: not available

    MY_TArrayAsVector<char> nucl_ambiguities;  // R, Y, M, K, S, W, H, B, V, D, N

    // Per site, against ref_hapl.
    std::vector<int> ts_site;     // owned: 1 if a transition is seen
    std::vector<int> tv_site;     // owned: 1 if a transversion is seen, 2 if two different ones
    std::vector<int> del_site;    // owned: 1 if a deletion is seen
    std::vector<int> undet_site;  // owned: 1 if an undetermined substitution is seen

    // Over the usable sites, of classes with a weight above 0.
    int nb_ts = 0;              // observed transitions
    int nb_tv = 0;              // observed transversions
    int nb_subst = 0;           // observed substitutions
    int nb_del = 0;             // observed indels
    int nb_ts_sites = 0;        // sites with transitions
    int nb_tv_sites = 0;        // sites with transversions
    int nb_subst_sites = 0;     // sites with substitutions
    int nb_del_sites = 0;       // sites with indels
    int nb_observed_sites = 0;  // nucleotide sites, separators left out

    PopulDNA();
    PopulDNA(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile);
    explicit PopulDNA(const Population& other);
    PopulDNA& operator=(const Population& other);
    PopulDNA(const PopulDNA&) = delete;
    PopulDNA& operator=(const PopulDNA&) = delete;
    ~PopulDNA() override;
    Population* clone() const override;

    void test_methods(settings& s) override;
    int check_data() override;
    int compute_distance_matrix(std::fstream* out, settings* s, int scale_by_loci) override;
    int evaluate_polymorphism(const settings& s) override;
    // Slot 8. If ref_hapl has no content: the first sequence, in which an ambiguous or missing
    // character gives way to the first plain one of the next sequences, if there is any.
    virtual void build_arbitrary_haplotype();

    // Defaults of the fields of this class and of the results.
    void initialize_DNA();
    // Compares every sequence with ref_hapl site by site: usable and polymorphic sites, site
    // flags and counters. Sites beyond the end of a sequence count as missing in it.
    // Reads:   hapl_list, sample_size, allowed_missing, weights
    // Writes:  the fields above, globalSubstPolymSites for sites with transitions
    // Result:  1, or 0 without haplotypes
    int compare_DNA_sequences();
    // Class of the difference of a against b; see NucleotideClass.
    int compare_nucleotides(const char& a, const char& b) const;

    // --- Distances (within/) ---
    // Each compares two sequences at the usable sites and sets distance and distance_var.
    // Result: 1, or 0 after a report when the sequences are beyond the method.

    int diff_dist(const char* s1, const char* s2);    // weighted number of differences
    int p_dist(const char* s1, const char* s2);       // proportion of differences
    int jk_dist(const char* s1, const char* s2);      // Jukes and Cantor 1969
    int kim2p_dist(const char* s1, const char* s2);   // Kimura 1980, two parameters
    int tajnei_dist(const char* s1, const char* s2);  // Tajima and Nei 1984
    int tamura_dist(const char* s1, const char* s2);  // Tamura 1992
    int tamnei_dist(const char* s1, const char* s2);  // Tamura and Nei 1993
    // nucl_freq of two sequences at the usable sites; zeros if they have no base there.
    void compute_pairwise_nucl_freq(const char* s1, const char* s2);
    // nucl_freq and gc_content of the sample, once: does nothing if nucl_freq is not all 0.
    // Result: 1, or 0 after report 108 without haplotypes.
    int comp_nucl_freq();

    // --- Diversity (within/diversity) ---

    // mean_pairwise_diff, nucl_diversity and their standard deviations from dist_mat, which is
    // computed if there is none. Result: 1, or 0 after a report (108, 122, 136).
    int compute_molecular_diversity(settings& s);

    // --- Expansions (within/mismatch_analyses.cpp) ---

    // Fit the models of a sudden and of a spatial expansion to the mismatch distribution, which is
    // computed before, and write their blocks. Result: 1, or 0 when the work was stopped.
    int est_demog_mis(settings* s, std::basic_fstream<char>& out);
    int est_spatial_mis(settings* s, std::basic_fstream<char>& out);

private:
    void reset_counters();
    void close_empty_sites();
    void compare_with_reference(const PHaploDef& entry, std::string& first_tv);
    void mark_difference(std::size_t site, char c, int nucleotide_class, char& first_tv);
    void count_sites();
    void count_differences(std::size_t site);
    void count_transversions(std::size_t site);
};

}  // namespace mnd
