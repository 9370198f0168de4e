// A sample of generic allele data; also of haplotype frequencies without haplotype data.
#pragma once

#include "model/population.h"

namespace mnd {

class PopulStandard : public PopGenetics {
public:
    PopulStandard();
    PopulStandard(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile);
    explicit PopulStandard(const Population& other);
    PopulStandard& operator=(const Population& other);
    PopulStandard(const PopulStandard&) = delete;
    PopulStandard& operator=(const PopulStandard&) = delete;
    ~PopulStandard() override;
    Population* clone() const override;

    void test_methods(settings& s) override;
    int check_data() override;
    int compute_distance_matrix(std::fstream* out, settings* s, int scale_by_loci) override;
    int evaluate_polymorphism(const settings& s) override;

    // Defaults of the results.
    void initialize_Standard();

    // --- Diversity (within/diversity) ---

    // mean_pairwise_diff and its standard deviation from dist_mat, which is computed if there
    // is none. Result: 1, or 0 after a report (108, 122, 136).
    int compute_molecular_diversity(settings& s);
};

}  // namespace mnd
