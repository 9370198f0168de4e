// A sample of RFLP haplotypes: presence and absence of restriction sites.
#pragma once

#include <vector>

#include "model/population.h"

namespace mnd {

class PopulRFLP : public PopGenetics {
public:
    double del_weight = 1.0;  // DeletionWeight; 0 or less: a deletion is no difference

    // Per site, against ref_hapl.
    std::vector<int> subst_site;  // owned: 1 if both states are seen
    std::vector<int> del_site;    // owned: 1 if a deletion is seen

    // Over the usable sites.
    int nb_subst = 0;           // observed substitutions
    int nb_del = 0;             // observed indels, if they have a weight
    int nb_subst_sites = 0;     // sites with substitutions
    int nb_del_sites = 0;       // sites with indels, if they have a weight
    int nb_observed_sites = 0;  // sites, separators left out

    PopulRFLP();
    PopulRFLP(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile);
    explicit PopulRFLP(const Population& other);
    PopulRFLP& operator=(const Population& other);
    PopulRFLP(const PopulRFLP&) = delete;
    PopulRFLP& operator=(const PopulRFLP&) = delete;
    ~PopulRFLP() override;
    Population* clone() const override;

    void test_methods(settings& s) override;
    int check_data() override;
    int compute_distance_matrix(std::fstream* out, settings* s, int scale_by_loci) override;
    int evaluate_polymorphism(const settings& s) override;
    // Slot 8. If ref_hapl has no content: the first haplotype, in which a missing character
    // gives way to the first one of the next haplotypes that is not, if there is any.
    virtual void build_arbitrary_haplotype();

    // Defaults of the fields of this class and of the results.
    void initialize_RFLP();
    // Compares every haplotype with ref_hapl site by site: usable and polymorphic sites, site
    // flags and counters. Sites beyond the end of a haplotype count as missing in it.
    // Result: 1, or 0 without haplotypes
    int compare_RFLP_haplotypes();

    // --- Distances (within/) ---
    // Each compares two haplotypes at the usable sites and sets distance and distance_var.
    // Result: 1, or 0 if no site is usable.

    int diff_no_weight(const char* s1, const char* s2);  // number of differences
    int p_diff(const char* s1, const char* s2);          // proportion of differences

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
    void compare_with_reference(const PHaploDef& entry);
    void count_sites();
};

}  // namespace mnd
