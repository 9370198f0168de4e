// The shuffles of the permutation tests, and the tallies of the samples by haplotype.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>

#include "between/amova.h"
#include "foundation/random.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"

namespace mnd {

namespace {

// Random position in [first, k] from one draw: the product is rounded to single precision, so
// that k itself comes out when the draw is within half a unit of single precision below 1. Held
// at k, since a span above 2^24 may round beyond it.
// Draws:    1
constexpr auto position_single = [](int first, int k) {
    const int span = k - first;
    return first + std::min(static_cast<int>(static_cast<float>(ran3() * span)), span);
};

// Random position in [first, k) from one draw, in double precision.
// Draws:    1
constexpr auto position_double = [](int first, int k) {
    return first + static_cast<int>(ran3() * (k - first));
};

// Swaps the cells of position k with those of a random earlier one, for k from `last` down to
// `stop`, but never for the first position.
// Draws:    last - stop + 1, or 0
template <class Position, class Swap>
void shuffle_down(int last, int first, int stop, Position position, Swap swap) {
    const int end = std::max(stop, first + 1);
    for (int k = last; k >= end; --k)
        swap(k, position(first, k));
}

void shuffle_genes(std::vector<int>& genes, int last, int first, int stop) {
    int* const cells = genes.data();
    shuffle_down(last, first, stop, position_single,
                 [cells](int k, int r) { std::swap(cells[k], cells[r]); });
}

void shuffle_individuals(std::vector<int>& genes, int last, int first, int stop) {
    int* const cells = genes.data();
    shuffle_down(last, first, stop, position_double, [cells](int k, int r) {
        std::swap(cells[2 * k], cells[2 * r]);
        std::swap(cells[2 * k + 1], cells[2 * r + 1]);
    });
}

int copies_of(const Population& sample) {
    return integer_part(sample.sample_size);
}

int copies_of(const std::vector<Population*>& samples) {
    int copies = 0;
    for (const Population* sample : samples)
        copies += copies_of(*sample);
    return copies;
}

void print_abnormal_row(const Population& sample, int position, int row) {
    *_AOS_ << "\nAbnormal behaviour for pop:" << sample.name << "\nnb_gene_copies=" << copies_of(sample)
           << "\nHDB.Nb_haplo=" << sample.amova.perm_size << "\ni=" << position << " H_vect:" << row << '\n';
}

// Reports the first of n rows that the tally of the sample does not have. Before there is a log
// such a report does not throw.
// Returns: true when there is none
bool check_rows(const Population& sample, const int* genes, int n) {
    for (int i = 0; i < n; ++i) {
        if (genes[i] >= 0 && genes[i] < sample.amova.perm_size) continue;
        print_abnormal_row(sample, i, genes[i]);
        E.error(Memory, "Population::SetUpVectorsAfterPermutation", kArrayOutOfBounds);
        return false;
    }
    return true;
}

}  // namespace

// ---- Tallies

void Population::CreatePermutationVectors(const int& size) {
    amova.perm_size = std::max(size, 0);
    amova.perm_freq.assign(static_cast<std::size_t>(amova.perm_size), 0.0);
    amova.perm_list.assign(static_cast<std::size_t>(amova.perm_size), 0);
    amova.num_existing = 0;
}

void Population::SetUpVectorOfExistingHaplotypes() {
    amova.num_existing = 0;
    for (int row = 0; row < amova.perm_size; ++row) {
        if (amova.perm_freq[row] != 0.0) amova.perm_list[amova.num_existing++] = row;
    }
}

// Clears and visits only the rows of the old and of the new tally, of which a sample has few.
void Population::SetUpVectorsAfterPermutation(int* genes) {
    const int n = copies_of(*this);
    if (!check_rows(*this, genes, n)) return;
    double* const freq = amova.perm_freq.data();
    int* const list = amova.perm_list.data();
    for (int a = 0; a < amova.num_existing; ++a)
        freq[list[a]] = 0.0;
    int existing = 0;
    for (int i = 0; i < n; ++i) {
        if (freq[genes[i]] == 0.0) list[existing++] = genes[i];
        freq[genes[i]] += 1.0;
    }
    std::sort(list, list + existing);
    amova.num_existing = existing;
}

void Amova::load_HaplotypeIndexVector() {
    const std::size_t room = haplo_index.size();
    std::size_t next = 0;
    for (const Population* sample : all_pops) {
        if (sample->amova.work_list == nullptr) continue;
        for (const PHaploDef* entry : *sample->amova.work_list) {
            for (int copy = 0; copy < entry->freq && next < room; ++copy)
                haplo_index[next++] = entry->def->id;
        }
    }
    distribute_HaplotypeIndexVector();
}

void Amova::distribute_HaplotypeIndexVector() {
    int* genes = haplo_index.data();
    for (Population* sample : all_pops) {
        sample->SetUpVectorsAfterPermutation(genes);
        genes += copies_of(*sample);
    }
}

// ---- Shuffles

void Amova::PHAPAG() {
    if (all_pops.empty()) return;
    shuffle_genes(haplo_index, integer_part(N_genes) - 1, 0, copies_of(*all_pops.front()));
}

void Amova::PHAPWG() {
    int first = 0;
    for (const std::vector<Population*>& group : group_pops) {
        if (group.empty()) continue;
        const int behind = first + copies_of(group);
        shuffle_genes(haplo_index, behind - 1, first, first + copies_of(*group.front()));
        first = behind;
    }
}

void Amova::PHAIWP() {
    int first = 0;
    for (const Population* sample : all_pops) {
        const int behind = first + copies_of(*sample);
        shuffle_genes(haplo_index, behind - 1, first, first + 2);
        first = behind;
    }
}

void Amova::PIAPAG() {
    if (all_pops.empty()) return;
    shuffle_individuals(haplo_index, integer_part(N_genes) / 2 - 1, 0, copies_of(*all_pops.front()) / 2);
}

void Amova::PIAPWG() {
    int first = 0;
    for (const std::vector<Population*>& group : group_pops) {
        if (group.empty()) continue;
        const int behind = first + copies_of(group) / 2;
        shuffle_individuals(haplo_index, behind - 1, first, first + copies_of(*group.front()) / 2);
        first = behind;
    }
}

void Amova::PPAG() {
    if (group_pops.empty()) return;
    shuffle_down(static_cast<int>(all_pops.size()) - 1, 0, static_cast<int>(group_pops.front().size()),
                 position_double, [this](int k, int r) { std::swap(all_pops[k], all_pops[r]); });
}

void Amova::permute_genes(int last, int first, int stop) {
    shuffle_genes(haplo_index, last, first, stop);
}

void Amova::permute_indiv(int last, int first, int stop) {
    shuffle_individuals(haplo_index, last, first, stop);
}

void Amova::permute_phenotypes(int last, int first, int stop) {
    shuffle_down(last, first, stop, position_double,
                 [this](int k, int r) { std::swap(phen_vector[k], phen_vector[r]); });
}

void Amova::PPAPAG() {
    if (all_pops.empty()) return;
    permute_phenotypes(static_cast<int>(phen_vector.count) - 1, 0, copies_of(*all_pops.front()) / 2);
}

void Amova::PPAPWG() {
    int first = 0;
    for (const std::vector<Population*>& group : group_pops) {
        if (group.empty()) continue;
        const int behind = std::min(first + copies_of(group) / 2, static_cast<int>(phen_vector.count));
        permute_phenotypes(behind - 1, first, first + copies_of(*group.front()) / 2);
        first = behind;
    }
}

void Amova::Load_Phen_Vector() {
    phen_vector.Flush();
    for (const Population* sample : all_pops) {
        std::int64_t individuals = 0;
        for (TPhenotype* phenotype : sample->phen_db) {
            for (int copy = 0; copy < integer_part(phenotype->freq); ++copy, ++individuals)
                phen_vector.Add(phenotype);
        }
        if (std::fabs(2.0 * static_cast<double>(individuals) - sample->sample_size) > 0.5)
            *_AOS_ << "     Amova::Load_Phen_Vector() Population size incompatibility during the load";
    }
}

}  // namespace mnd
