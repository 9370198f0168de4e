// Samples of gene copies in groups, made in memory, and the sums of squares over all their pairs.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "between/amova.h"
#include "input/dist_mat.h"
#include "input/mantel.h"
#include "input/structure.h"
#include "model/allele_db.h"
#include "model/haplotypes.h"
#include "model/samples.h"
#include "run/settings.h"
#include "run/tasks.h"

namespace mnd_test {

// Matrix rows of the gene copies of one sample; individuals are pairs of neighbours.
using Copies = std::vector<int>;
using Group = std::vector<Copies>;

// A squared distance between two matrix rows.
using Distance = std::function<double(int, int)>;

// What a project hands to an analysis. Samples are named "pop1", "pop2", ... in the order of the
// groups and numbered so.
struct AmovaData {
    mnd::settings s;
    mnd::Samples samples;
    mnd::Structure structure;
    mnd::DistMat dist;
    mnd::Haplo_DB haplotypes;
    mnd::TAlleleDB alleles;
    mnd::Mantel mantel;
    std::vector<std::unique_ptr<mnd::HaploDef>> definitions;  // one per matrix row

    // A null distance asks for the conventional matrix.
    AmovaData(const std::vector<Group>& groups, int rows, const Distance& distance, bool genotypic = false) {
        s.TaskNumber = mnd::kTaskAmova;
        s.HaplAMOVA = 1;
        s.ComputePairwiseFST = 0;
        s.ComputeDeltaMuSqr = 0;
        s.PrintMissIntermatchs = 0;
        s.NumPermutationsAMOVA = 0;
        s.KeepNullDistrib = 0;
        samples.GenotypicData = genotypic ? 1 : 0;
        samples.GameticPhase = 1;
        fill_matrix(rows, distance);
        for (int row = 0; row < rows; ++row) {
            definitions.push_back(std::make_unique<mnd::HaploDef>());
            definitions.back()->id = row;
        }
        structure.NbGroups = static_cast<int>(groups.size());
        structure.allocate_groups();
        for (std::size_t g = 0; g < groups.size(); ++g) {
            for (const Copies& copies : groups[g])
                add_sample(copies, g);
        }
    }

    // Runs the whole constructor.
    std::unique_ptr<mnd::Amova> analyse(int print = 0, mnd::amova_results* record = nullptr) {
        return std::make_unique<mnd::Amova>(s, &structure, &samples, &dist, &haplotypes, &alleles, &mantel,
                                            print, 0, record);
    }

    // An analysis that stands as it does before its design is chosen.
    std::unique_ptr<mnd::Amova> prepare() {
        auto analysis = std::make_unique<mnd::Amova>();
        analysis->sett = &s;
        analysis->structure = &structure;
        analysis->samples = &samples;
        analysis->dist = &dist;
        for (mnd::Population* sample : samples.populations)
            sample->amova.work_list = samples.GenotypicData == 0 ? &sample->hapl_list : &sample->gamete_list;
        analysis->initialize();
        return analysis;
    }

private:
    void fill_matrix(int rows, const Distance& distance) {
        if (distance) {
            dist.initializeMatrixAndArrays(rows);
            for (int i = 0; i < rows; ++i) {
                for (int j = 0; j <= i; ++j)
                    dist(i, j) = distance(i, j);
            }
        } else {
            dist.conventional = 1;
        }
        dist.MatrixSize = rows;
    }

    void add_sample(const Copies& copies, std::size_t g) {
        const int number = static_cast<int>(samples.populations.count);
        const std::string name = "pop" + std::to_string(number + 1);
        auto* sample = new mnd::Population(name.c_str(), number, samples);
        sample->sample_size = static_cast<double>(copies.size());
        sample->amova.amova_id = number;
        for (const int row : copies) {
            sample->gamete_list.Add(new mnd::PHaploDef(definitions[static_cast<std::size_t>(row)].get(), 1));
            add_copy(*sample, row);
        }
        samples.populations.Add(sample);
        structure.groups[g].Add(sample);
        ++structure.group_sizes[g];
        ++structure.NbSamples;
        ++samples.NbSamples;
    }

    void add_copy(mnd::Population& sample, int row) {
        mnd::HaploDef* const definition = definitions[static_cast<std::size_t>(row)].get();
        for (mnd::PHaploDef* entry : sample.hapl_list) {
            if (entry->def == definition) {
                ++entry->freq;
                return;
            }
        }
        sample.hapl_list.Add(new mnd::PHaploDef(definition, 1));
    }
};

// Every gene copy with its place in the hierarchy; the numbers run over the whole data.
struct PlacedCopy {
    int row, individual, sample, group;
};

inline std::vector<PlacedCopy> place_copies(const std::vector<Group>& groups) {
    std::vector<PlacedCopy> all;
    int sample = 0;
    int individual = 0;
    for (std::size_t g = 0; g < groups.size(); ++g) {
        for (const Copies& copies : groups[g]) {
            for (std::size_t k = 0; k < copies.size(); ++k)
                all.push_back({copies[k], individual + static_cast<int>(k / 2), sample, static_cast<int>(g)});
            individual += static_cast<int>((copies.size() + 1) / 2);
            ++sample;
        }
    }
    return all;
}

// Squared distance between two gene copies, by whatever of them.
using CopyDistance = std::function<double(const PlacedCopy&, const PlacedCopy&)>;
// The unit that a copy belongs to.
using Unit = std::function<int(const PlacedCopy&)>;

inline int no_unit(const PlacedCopy&) {
    return 0;
}
inline int group_unit(const PlacedCopy& c) {
    return c.group;
}
inline int sample_unit(const PlacedCopy& c) {
    return c.sample;
}
inline int individual_unit(const PlacedCopy& c) {
    return c.individual;
}

// Sum of squares within the units, from all pairs: sum over units of (sum over pairs of d) / size.
inline double ss_within(const std::vector<PlacedCopy>& copies, const Unit& unit, const CopyDistance& d) {
    double ss = 0.0;
    for (const PlacedCopy& a : copies) {
        double sum = 0.0;
        int size = 0;
        for (const PlacedCopy& b : copies) {
            if (unit(a) != unit(b)) continue;
            sum += &a == &b ? 0.0 : d(a, b);
            ++size;
        }
        ss += sum / size / 2.0;
    }
    return ss;
}

// Sums of squares of a nested hierarchy from the top row to the bottom one. `levels` are the units
// from the coarsest to the finest; the first row is among the coarsest, the last within the finest.
inline std::vector<double> nested_ss(const std::vector<PlacedCopy>& copies, const std::vector<Unit>& levels,
                                     const CopyDistance& d) {
    std::vector<double> rows;
    double above = ss_within(copies, no_unit, d);
    for (const Unit& unit : levels) {
        const double within = ss_within(copies, unit, d);
        rows.push_back(above - within);
        above = within;
    }
    rows.push_back(above);
    return rows;
}

// Solves the equations of a square system by elimination.
inline std::vector<double> solve(std::vector<std::vector<double>> m, std::vector<double> v) {
    const std::size_t size = v.size();
    for (std::size_t c = 0; c < size; ++c) {
        std::size_t pivot = c;
        for (std::size_t r = c; r < size; ++r) {
            if (std::abs(m[r][c]) > std::abs(m[pivot][c])) pivot = r;
        }
        std::swap(m[c], m[pivot]);
        std::swap(v[c], v[pivot]);
        for (std::size_t r = 0; r < size; ++r) {
            if (r == c) continue;
            const double factor = m[r][c] / m[c][c];
            for (std::size_t k = c; k < size; ++k)
                m[r][k] -= factor * m[c][k];
            v[r] -= factor * v[c];
        }
    }
    for (std::size_t c = 0; c < size; ++c)
        v[c] /= m[c][c];
    return v;
}

// Variance components by equating each sum of squares to its expectation. That of a component
// is the sum of squares of the copies placed at the corners of a simplex, one corner per unit of
// its level (squared distance 2 between corners), the last one a corner per copy.
inline std::vector<double> nested_components(const std::vector<PlacedCopy>& copies,
                                             const std::vector<Unit>& levels, const CopyDistance& d) {
    const std::vector<double> observed = nested_ss(copies, levels, d);
    std::vector<std::vector<double>> expected(observed.size(), std::vector<double>(observed.size()));
    for (std::size_t c = 0; c < observed.size(); ++c) {
        const CopyDistance corner = [&](const PlacedCopy& a, const PlacedCopy& b) {
            return c < levels.size() && levels[c](a) == levels[c](b) ? 0.0 : 2.0;
        };
        const std::vector<double> column = nested_ss(copies, levels, corner);
        for (std::size_t r = 0; r < observed.size(); ++r)
            expected[r][c] = column[r];
    }
    return solve(expected, observed);
}

// Random groups of samples of different sizes, of an even number of copies when asked for.
inline std::vector<Group> random_groups(std::mt19937& random, int nb_groups, int rows, bool even) {
    std::vector<Group> groups(static_cast<std::size_t>(nb_groups));
    for (Group& group : groups) {
        group.resize(2 + random() % 3);
        for (Copies& copies : group) {
            copies.resize((even ? 4 : 3) + (even ? 2 : 1) * (random() % 4));
            for (int& row : copies)
                row = static_cast<int>(random() % static_cast<unsigned>(rows));
        }
    }
    return groups;
}

// A matrix of distances that are no metric, with a diagonal of 0.
inline Distance random_distance(std::mt19937& random, int rows) {
    std::vector<double> cells(static_cast<std::size_t>(rows * rows), 0.0);
    for (int i = 0; i < rows; ++i) {
        for (int j = 0; j < i; ++j) {
            const double d = static_cast<double>(random() % 1000) / 128.0;
            cells[static_cast<std::size_t>(i * rows + j)] = d;
            cells[static_cast<std::size_t>(j * rows + i)] = d;
        }
    }
    return [cells, rows](int i, int j) { return cells[static_cast<std::size_t>(i * rows + j)]; };
}

}  // namespace mnd_test
