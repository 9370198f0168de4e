#include "model/popul_standard.h"

#include "run/settings.h"

namespace mnd {

PopulStandard::PopulStandard() {
    initialize_Standard();
}

PopulStandard::PopulStandard(const my_string& sample_name, int sample_id,
                             const ProfileSettings& sample_profile)
    : PopGenetics(sample_name, sample_id, sample_profile) {
    initialize_Standard();
}

PopulStandard::PopulStandard(const Population& other) : PopGenetics(other) {
    initialize_Standard();
}

PopulStandard& PopulStandard::operator=(const Population& other) {
    if (this == &other) return *this;
    PopGenetics::operator=(other);
    initialize_Standard();
    return *this;
}

PopulStandard::~PopulStandard() = default;

Population* PopulStandard::clone() const {
    return new PopulStandard(static_cast<const Population&>(*this));
}

void PopulStandard::initialize_Standard() {
    initialize_results();
}

int PopulStandard::check_data() {
    if (hapl_list.count == 0) return 1;
    return check_counts("PopulStandard::check_data()") ? 1 : 0;
}

int PopulStandard::evaluate_polymorphism(const settings& s) {
    allowed_missing = s.AllowedLevelOfMissingData;
    return has_haplotypes() ? compare_haplotypes() : compare_phenotypes();
}

}  // namespace mnd
