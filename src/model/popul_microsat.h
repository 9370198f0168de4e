// A sample of microsatellite data: alleles are numbers of repeats.
#pragma once

#include "model/population.h"

namespace mnd {

class PopulMicrosat : public PopGenetics {
public:
    PopulMicrosat();
    PopulMicrosat(const my_string& sample_name, int sample_id, const ProfileSettings& sample_profile);
    explicit PopulMicrosat(const Population& other);
    PopulMicrosat& operator=(const Population& other);
    PopulMicrosat(const PopulMicrosat&) = delete;
    PopulMicrosat& operator=(const PopulMicrosat&) = delete;
    ~PopulMicrosat() override;
    Population* clone() const override;

    void test_methods(settings& s) override;
    int check_data() override;
    int compute_distance_matrix(std::fstream* out, settings* s, int scale_by_loci) override;
    int evaluate_polymorphism(const settings& s) override;

    // Defaults of the results.
    void initialize_Microsat();

    // --- Diversity (within/diversity) ---

    // mean_pairwise_diff and its standard deviation from dist_mat, which is computed if there
    // is none. Result: 1, or 0 after a report (108, 122, 136).
    int compute_molecular_diversity(settings& s);
};

}  // namespace mnd
