// Haplotypes that samples share, by the classes of identical definitions.
#include <iomanip>
#include <unordered_map>
#include <vector>

#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "input/dist_mat.h"
#include "model/compact_list.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "model/samples.h"

namespace mnd {

namespace {

// Class of a definition; one that has no row in the matrix is in a class of its own.
int class_of_definition(const HaploDef& definition, const std::vector<int>& class_of) {
    const bool has_row = definition.id >= 0 && static_cast<std::size_t>(definition.id) < class_of.size();
    return has_row ? class_of[static_cast<std::size_t>(definition.id)] : -1;
}

// Moves the counts of b, in the sample and in the project, to a.
void merge_into(PHaploDef& a, PHaploDef& b) {
    a.freq = sum_of_counts(a.freq, b.freq);
    b.freq = 0;
    if (a.def == b.def) return;
    a.def->count = sum_of_counts(a.def->count, b.def->count);
    b.def->count = 0;
}

// Entries of a list by class, in order. Definitions without a row are left out.
std::unordered_map<int, std::vector<PHaploDef*>> entries_by_class(const MY_TIArrayAsVector<PHaploDef>& list,
                                                                  const std::vector<int>& class_of) {
    std::unordered_map<int, std::vector<PHaploDef*>> groups;
    for (PHaploDef* entry : list) {
        const int its_class = class_of_definition(*entry->def, class_of);
        if (its_class >= 0) groups[its_class].push_back(entry);
    }
    return groups;
}

// Copies of each class in a sample.
std::unordered_map<int, int> copies_by_class(const Population& sample, const std::vector<int>& class_of) {
    std::unordered_map<int, int> copies;
    for (const PHaploDef* entry : sample.hapl_list) {
        int& sum = copies[class_of_definition(*entry->def, class_of)];
        sum = sum_of_counts(sum, entry->freq);
    }
    return copies;
}

}  // namespace

void Population::IdentifyIdenticalHaplotypes(const std::vector<int>& class_of, const DistMat& distances) {
    nb_orig_hapl = static_cast<int>(hapl_list.count);
    for (auto& [its_class, entries] : entries_by_class(hapl_list, class_of)) {
        for (std::size_t a = 0; a < entries.size(); ++a) {
            for (std::size_t b = a + 1; b < entries.size(); ++b) {
                if (distances.get(entries[b]->def->id, entries[a]->def->id) != 0.0) continue;
                merge_into(*entries[a], *entries[b]);
            }
        }
    }
    drop_elements(hapl_list, [](const PHaploDef& entry) { return entry.freq == 0; });
    nb_hapl = static_cast<int>(hapl_list.count);
}

void Population::print_out_redondant(std::ostream& out, const Population& other,
                                     const std::vector<int>& class_of) const {
    const FormatGuard guard(out);
    const auto others = entries_by_class(other.hapl_list, class_of);
    out << "\nHaplotypes shared with " << escape_text(other.name.view()) << " :\n";
    int shared = 0;
    for (const PHaploDef* entry : hapl_list) {
        const auto group = others.find(class_of_definition(*entry->def, class_of));
        if (group == others.end()) continue;
        for (const PHaploDef* match : group->second) {
            if (match == entry) continue;
            ++shared;
            out << "\t" << escaped_left(entry->def->name.view(), 20) << std::setw(8) << entry->freq << "    "
                << escaped_left(match->def->name.view(), 20) << std::setw(8) << match->freq << '\n';
        }
    }
    if (shared == 0) out << "\tnone\n";
}

void Samples::IdentifyIdenticalHaplotypes(const std::vector<int>& class_of, const DistMat& distances) {
    for (Population* sample : populations)
        sample->IdentifyIdenticalHaplotypes(class_of, distances);
}

void Samples::print_out_haplo_cl(std::ostream& out, const Haplo_DB& db,
                                 const std::vector<int>& class_of) const {
    const FormatGuard guard(out);
    std::unordered_map<int, std::vector<const HaploDef*>> members;
    std::vector<int> order;
    for (const HaploDef* definition : db.list) {
        const int its_class = class_of_definition(*definition, class_of);
        if (its_class < 0) continue;
        auto& group = members[its_class];
        if (group.empty()) order.push_back(its_class);
        group.push_back(definition);
    }
    std::vector<std::unordered_map<int, int>> copies;
    for (const Population* sample : populations)
        copies.push_back(copies_by_class(*sample, class_of));
    out << "\nClasses of identical haplotypes, with their copies in each sample :\n\n";
    for (const int its_class : order) {
        const auto& group = members[its_class];
        out << escaped_left(group.front()->name.view(), 20);
        for (auto& of_sample : copies)
            out << std::setw(8) << of_sample[its_class];
        for (std::size_t i = 1; i < group.size(); ++i)
            out << (i == 1 ? "    = " : ", ") << escape_text(group[i]->name.view());
        out << '\n';
    }
}

}  // namespace mnd
