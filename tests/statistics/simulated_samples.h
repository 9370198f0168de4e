// Samples of gene copies drawn at random, with or without structure.
//
// Every copy comes from common frequencies unless a level of the structure claims it: with the
// probability of that level it is one of the few founders of its group or sample instead, or
// the same as the other copy of its individual. With all three at 0, copies are independent draws
// from one distribution, whatever group, sample and individual they are put in.
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "between/amova_data.h"

namespace mnd_test {

// The random numbers of the simulation. They have nothing to do with the stream of the program,
// and are the same with every standard library.
class Simulation {
public:
    explicit Simulation(std::uint64_t seed) : bits_(seed) {}

    // In [0, 1).
    double uniform() { return static_cast<double>(bits_() >> 11) * 0x1p-53; }
    // In [0, n).
    int below(int n) { return static_cast<int>(uniform() * n); }
    bool happens(double probability) { return uniform() < probability; }
    double normal() {
        return std::sqrt(-2.0 * std::log(1.0 - uniform())) * std::cos(6.283185307179586 * uniform());
    }

private:
    std::mt19937_64 bits_;
};

// Kinds of distances between haplotypes: each has its own way of being summed.
enum class Distances {
    kConventional,  // 1 between any two of a few alleles: values of a statistic are often equal
    kWhole,         // loci that differ: whole numbers
    kReal           // squared distance of points in space: equal values are rare
};

inline const char* name_of(Distances kind) {
    static constexpr const char* kNames[] = {"Alleles", "Loci", "Points"};
    return kNames[static_cast<int>(kind)];
}

// Haplotypes with their frequencies.
class Haplotypes {
public:
    Haplotypes(Distances kind, Simulation& random) : rows_(kind == Distances::kConventional ? 5 : 40) {
        double sum = 0.0;
        for (int row = 0; row < rows_; ++row) {
            sum += 1.0 / (row + 2.0);
            up_to_.push_back(sum);
        }
        if (kind == Distances::kWhole) scatter(8, [&random] { return static_cast<double>(random.below(3)); });
        if (kind == Distances::kReal) scatter(3, [&random] { return random.normal(); });
        whole_ = kind == Distances::kWhole;
    }

    int rows() const { return rows_; }

    // Row of a random haplotype.
    int draw(Simulation& random) const {
        const double u = random.uniform() * up_to_.back();
        return static_cast<int>(std::upper_bound(up_to_.begin(), up_to_.end() - 1, u) - up_to_.begin());
    }

    // Null for the conventional matrix.
    Distance distance() const {
        if (points_.empty()) return {};
        return [this](int i, int j) {
            return between(static_cast<std::size_t>(i), static_cast<std::size_t>(j));
        };
    }

private:
    int rows_;
    std::vector<double> up_to_;                // sums of the frequencies
    std::vector<std::vector<double>> points_;  // alleles or coordinates of each row
    bool whole_ = false;

    template <class Value>
    void scatter(int length, Value value) {
        points_.resize(static_cast<std::size_t>(rows_));
        for (std::vector<double>& point : points_) {
            for (int k = 0; k < length; ++k)
                point.push_back(value());
        }
    }

    double between(std::size_t i, std::size_t j) const {
        double sum = 0.0;
        for (std::size_t k = 0; k < points_[i].size(); ++k) {
            const double difference = points_[i][k] - points_[j][k];
            sum += whole_ ? (difference != 0.0 ? 1.0 : 0.0) : difference * difference;
        }
        return sum;
    }
};

// Probabilities with which the levels claim a copy.
struct Structured {
    double by_group = 0.0;
    double by_sample = 0.0;
    double by_individual = 0.0;
};

// Numbers of groups, of samples in each, and of copies, or individuals, in each sample. Sizes are
// drawn anew for each sample, so that samples without structure can be exchanged with all they
// have.
struct Layout {
    std::vector<int> samples_in_group;
    int smallest = 0;
    int largest = 0;
    bool individuals = false;
};

class SampleMaker {
public:
    SampleMaker(const Haplotypes& haplotypes, const Structured& structure, Simulation& random)
        : haplotypes_(haplotypes), structure_(structure), random_(random) {}

    std::vector<Group> make(const Layout& layout) {
        std::vector<Group> groups;
        for (const int nb_samples : layout.samples_in_group) {
            const Copies group_founders = founders();
            groups.emplace_back();
            for (int i = 0; i < nb_samples; ++i)
                groups.back().push_back(sample(layout, group_founders));
        }
        return groups;
    }

private:
    static constexpr int kFounders = 2;

    const Haplotypes& haplotypes_;
    const Structured& structure_;
    Simulation& random_;

    Copies founders() {
        Copies rows;
        for (int i = 0; i < kFounders; ++i)
            rows.push_back(haplotypes_.draw(random_));
        return rows;
    }

    int copy(const Copies& group_founders, const Copies& sample_founders) {
        const double u = random_.uniform();
        const std::size_t founder = static_cast<std::size_t>(random_.below(kFounders));
        if (u < structure_.by_group) return group_founders[founder];
        if (u < structure_.by_group + structure_.by_sample) return sample_founders[founder];
        return haplotypes_.draw(random_);
    }

    Copies sample(const Layout& layout, const Copies& group_founders) {
        const Copies own = founders();
        const int size = layout.smallest + random_.below(layout.largest - layout.smallest + 1);
        Copies copies;
        for (int i = 0; i < size; ++i) {
            copies.push_back(copy(group_founders, own));
            if (!layout.individuals) continue;
            const bool twice = random_.happens(structure_.by_individual);
            copies.push_back(twice ? copies.back() : copy(group_founders, own));
        }
        return copies;
    }
};

}  // namespace mnd_test
