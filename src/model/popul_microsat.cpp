#include "model/popul_microsat.h"

#include "run/settings.h"

namespace mnd {

PopulMicrosat::PopulMicrosat() {
    initialize_Microsat();
}

PopulMicrosat::PopulMicrosat(const my_string& sample_name, int sample_id,
                             const ProfileSettings& sample_profile)
    : PopGenetics(sample_name, sample_id, sample_profile) {
    initialize_Microsat();
}

PopulMicrosat::PopulMicrosat(const Population& other) : PopGenetics(other) {
    initialize_Microsat();
}

PopulMicrosat& PopulMicrosat::operator=(const Population& other) {
    if (this == &other) return *this;
    PopGenetics::operator=(other);
    initialize_Microsat();
    return *this;
}

PopulMicrosat::~PopulMicrosat() = default;

Population* PopulMicrosat::clone() const {
    return new PopulMicrosat(static_cast<const Population&>(*this));
}

void PopulMicrosat::initialize_Microsat() {
    initialize_results();
}

int PopulMicrosat::check_data() {
    if (hapl_list.count == 0) return 1;
    return check_counts("PopulMicrosat::check_data()") ? 1 : 0;
}

int PopulMicrosat::evaluate_polymorphism(const settings& s) {
    allowed_missing = s.AllowedLevelOfMissingData;
    return has_haplotypes() ? compare_haplotypes() : compare_phenotypes();
}

}  // namespace mnd
