#include "input/structure.h"

#include <algorithm>
#include <cstddef>
#include <numeric>
#include <ostream>
#include <sstream>
#include <string>

#include "foundation/escape.h"
#include "model/population.h"

namespace mnd {

std::int32_t NbGroupsRead = 0;

namespace {

// Room of a fresh group, and its growth.
constexpr long kGroupCapacity = 11;
constexpr long kGroupGrowth = 10;

MY_TIArrayAsVector<Population> empty_group() {
    MY_TIArrayAsVector<Population> group(kGroupCapacity, kGroupGrowth);
    group.owns_elements = 0;
    return group;
}

}  // namespace

Structure::Structure() = default;

Structure::Structure(ProfileSettings const& profile) {
    initialize(&profile);
}

Structure::Structure(const Structure& other) = default;

// Groups are copied in place where their number is the same.
Structure& Structure::operator=(const Structure& other) = default;

Structure::~Structure() = default;

void Structure::initialize(ProfileSettings const* profile) {
    reset();
    if (profile == nullptr) return;
    ProfileSettings::operator=(*profile);
    NbGroups = profile->NbGroups;
}

void Structure::reset() {
    groups.clear();
    group_sizes.clear();
    NbSamples = 0;
    NbGroups = 0;
}

void Structure::allocate_groups() {
    const auto size = static_cast<std::size_t>(std::max(NbGroups, 0));
    groups.assign(size, empty_group());
    group_sizes.assign(size, 0);
}

void Structure::fit_groups() {
    const auto size = static_cast<std::size_t>(std::max(NbGroups, 0));
    groups.resize(size, empty_group());
    group_sizes.resize(size);
    for (std::size_t g = 0; g < size; ++g)
        group_sizes[g] = static_cast<std::int32_t>(groups[g].count);
    NbSamples = std::accumulate(group_sizes.begin(), group_sizes.end(), std::int32_t{0});
}

int Structure::has_population(const Population* p) const {
    for (const auto& group : groups) {
        for (const Population* member : group) {
            if (member == p) return 1;
        }
    }
    return 0;
}

void Structure::print_structure(std::ostream& document) const {
    const std::string line(65, '=');
    std::ostringstream section;
    section << *this;
    document << '\n'
             << line << "\n  AMOVA ANALYSIS\n"
             << line << "\n\n"
             << "\n---------------------------\n"
             << "Genetic structure to test :\n"
             << "---------------------------\n\n"
             << "No. of Groups = " << NbGroups << "\n\n"
             << escape_text(section.str()) << "---------------------------\n"
             << '\n';
}

std::ostream& operator<<(std::ostream& os, Structure const& structure) {
    if (structure.NbGroups == 0) return os;
    os << "\n\t[[Structure]]\n\n"
       << "\t\tStructureName = \"" << structure.StructureName << "\"\n"
       << "\t\tNbGroups = " << structure.NbGroups << '\n';
    int number = 0;
    for (const auto& group : structure.groups) {
        os << "\t#Group" << ++number << '\n' << "\t\tGroup={\n\t\t";
        for (const Population* sample : group) {
            if (sample != nullptr) os << '"' << sample->name << "\"\n\t\t";
        }
        os << "}\n" << '\n';
    }
    return os;
}

}  // namespace mnd
