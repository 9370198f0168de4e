// Sums of squared distances between gene copies, within and between the samples of a structure.
#include <cstddef>

#include "between/amova.h"
#include "input/dist_mat.h"
#include "input/structure.h"
#include "model/integer_part.h"
#include "model/population.h"

namespace mnd {

namespace {

// Whether all rows of a tally can be read from the rows of the triangle.
bool has_rows(const DistMat& D, const Population::AmovaWork& tally) {
    return D.conventional == 0 && tally.perm_size <= D.dim;
}

// Different haplotypes are at distance 1: all pairs of copies less those of one haplotype.
double conventional_ssd(const Population::AmovaWork& tally) {
    double copies = 0.0;
    double squares = 0.0;
    for (int a = 0; a < tally.num_existing; ++a) {
        const double f_r = tally.perm_freq[tally.perm_list[a]];
        copies += f_r;
        squares += f_r * f_r;
    }
    return (copies * copies - squares) / 2.0;
}

double conventional_ssd_between(const Population::AmovaWork& i, const Population::AmovaWork& j) {
    double copies_i = 0.0;
    double shared = 0.0;
    for (int a = 0; a < i.num_existing; ++a) {
        const int r = i.perm_list[a];
        copies_i += i.perm_freq[r];
        shared += i.perm_freq[r] * j.perm_freq[r];
    }
    double copies_j = 0.0;
    for (int b = 0; b < j.num_existing; ++b)
        copies_j += j.perm_freq[j.perm_list[b]];
    return copies_i * copies_j - shared;
}

double ssd_within(const DistMat& D, const Population::AmovaWork& tally) {
    if (D.conventional != 0) return conventional_ssd(tally);
    const bool direct = has_rows(D, tally);
    double ssd = 0.0;
    for (int a = 0; a < tally.num_existing; ++a) {
        const int r = tally.perm_list[a];
        const double f_r = tally.perm_freq[r];
        const double* const D_r = direct ? D.data[r] : nullptr;
        ssd += f_r * (f_r - 1.0) / 2.0 * (direct ? D_r[r] : D(r, r));
        for (int b = 0; b < a; ++b) {
            const int s = tally.perm_list[b];
            ssd += f_r * tally.perm_freq[s] * (direct ? D_r[s] : D(r, s));
        }
    }
    return ssd;
}

// Gene copies of a sample that stand in haplo_index.
int whole_size(const Population& sample) {
    return integer_part(sample.sample_size);
}

}  // namespace

void Population::ComputeSSDWP(const DistMat& D) {
    amova.SSD = ssd_within(D, amova);
    amova.SSD_div_n = sample_size > 0.0 ? amova.SSD / sample_size : 0.0;
}

double Population::ComputeSSDAP(const Population* other, const DistMat& D) const {
    const AmovaWork& i = amova;
    const AmovaWork& j = other->amova;
    if (D.conventional != 0) return conventional_ssd_between(i, j);
    const bool direct = has_rows(D, i) && has_rows(D, j);
    double ssd = 0.0;
    for (int a = 0; a < i.num_existing; ++a) {
        const int r = i.perm_list[a];
        const double f_ir = i.perm_freq[r];
        const double* const D_r = direct ? D.data[r] : nullptr;
        for (int b = 0; b < j.num_existing; ++b) {
            const int s = j.perm_list[b];
            const double d = !direct ? D(r, s) : s <= r ? D_r[s] : D.data[s][r];
            ssd += f_ir * j.perm_freq[s] * d;
        }
    }
    return ssd;
}

double Population::SSDWP_div_freq(const DistMat& D) {
    ComputeSSDWP(D);
    return amova.SSD_div_n;
}

void Amova::compute_SSDP() {
    for (std::size_t a = 0; a < all_pops.size(); ++a) {
        Population& sample = *all_pops[a];
        sample.ComputeSSDWP(*dist);
        SSD_pops(sample.amova.amova_id, sample.amova.amova_id) = sample.amova.SSD;
        for (std::size_t b = 0; b < a; ++b) {
            const Population* const other = all_pops[b];
            SSD_pops(sample.amova.amova_id, other->amova.amova_id) = sample.ComputeSSDAP(other, *dist);
        }
    }
}

void Amova::compute_total_SSD() {
    SSD_total = 0.0;
    for (int a = 0; a < SSD_pops.dim; ++a) {
        for (int b = 0; b <= a; ++b)
            SSD_total += SSD_pops.data[a][b];
    }
}

void Amova::compute_SSDWP() {
    SSDWP = 0.0;
    for (Population* sample : all_pops) {
        sample->ComputeSSDWP(*dist);
        SSDWP += sample->amova.SSD_div_n;
    }
}

void Amova::compute_SSDAP() {
    SSDAP = 0.0;
    for (std::size_t g = 0; g < group_pops.size(); ++g) {
        if (group_size[g] > 0.0) {
            const int row = static_cast<int>(g);
            SSDAP += SSD_groups(row, row) / group_size[g];
        }
        for (const Population* sample : group_pops[g])
            SSDAP -= sample->amova.SSD_div_n;
    }
}

void Amova::compute_SSDAG() {
    double among_and_within_samples = 0.0;
    for (std::size_t g = 0; g < group_pops.size(); ++g) {
        const int row = static_cast<int>(g);
        if (group_size[g] > 0.0) among_and_within_samples += SSD_groups(row, row) / group_size[g];
    }
    SSDAG = SSD_total / N_genes - among_and_within_samples;
}

double Amova::group_sum_of_squares(const std::vector<Population*>& group) const {
    double ssd = 0.0;
    for (std::size_t a = 0; a < group.size(); ++a) {
        for (std::size_t b = 0; b <= a; ++b)
            ssd += SSD_pops(group[a]->amova.amova_id, group[b]->amova.amova_id);
    }
    return ssd;
}

void Amova::compute_SSDG_SSDAG() {
    for (std::size_t g = 0; g < group_pops.size(); ++g) {
        const int row = static_cast<int>(g);
        group_size[g] = 0.0;
        for (const Population* sample : group_pops[g])
            group_size[g] += sample->sample_size;
        SSD_groups(row, row) = group_sum_of_squares(group_pops[g]);
        group_SSD[g] = group_size[g] > 0.0 ? SSD_groups(row, row) / group_size[g] : 0.0;
        for (std::size_t h = 0; h < g; ++h) {
            // Kept on purpose: each sample of group g replaces what the one before left.
            // Test: AmovaSums.GroupsKeepTheLastSampleOffTheDiagonal
            for (const Population* sample : group_pops[g]) {
                double between = 0.0;
                for (const Population* other : group_pops[h])
                    between += SSD_pops(sample->amova.amova_id, other->amova.amova_id);
                SSD_groups(row, static_cast<int>(h)) = between;
            }
        }
    }
    compute_SSDAG();
}

void Amova::compute_SSDWI() {
    SSDWI = 0.0;
    int first = 0;
    std::size_t individual = 0;
    for (Population* sample : all_pops) {
        double& within = sample->amova.SSD_within_ind;
        within = 0.0;
        const int size = whole_size(*sample);
        for (int k = first; k + 1 < first + size; k += 2, ++individual) {
            const double d = (*dist)(haplo_index[k], haplo_index[k + 1]);
            within += d;
            if (individual < ind_d.size()) ind_d[individual] = d;
        }
        within /= 2.0;
        SSDWI += within;
        first += size;
    }
}

double Amova::half_pair_sum() const {
    double sum = 0.0;
    int first = 0;
    for (const Population* sample : all_pops) {
        const int size = whole_size(*sample);
        for (int k = first; k + 1 < first + size; k += 2)
            sum += (*dist)(haplo_index[k], haplo_index[k + 1]);
        first += size;
    }
    return sum / 2.0;
}

// Groups without samples have no place in group_pops.
void Amova::distribute_populations() {
    std::size_t next = 0;
    std::size_t g = 0;
    for (const MY_TIArrayAsVector<Population>& group : structure->groups) {
        if (group.count == 0 || g == group_pops.size()) continue;
        group_pops[g].clear();
        for (std::int64_t i = 0; i < group.count && next < all_pops.size(); ++i)
            group_pops[g].push_back(all_pops[next++]);
        ++g;
    }
}

}  // namespace mnd
