// The resolutions of a phenotype by going through every setting of one digit per locus, and
// through every pair listed before: slow, and plain enough to be read at a glance.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <utility>
#include <vector>

#include "model/phenotypes.h"

namespace mnd_test {

using Alleles = std::vector<mnd::TAllele*>;

inline Alleles alleles_of(const mnd::TPopHaplotype& h) {
    return {h.alleles.begin(), h.alleles.end()};
}

// A store and a list of genotypes of one or several phenotypes, as indices into the store.
struct PlainResolutions {
    std::vector<std::pair<Alleles, double>> store;             // with the number of occurrences
    std::vector<std::vector<std::pair<int, int>>> phenotypes;  // first, second haplotype

    // Whether a pair of haplotypes counts.
    using Keep = std::function<bool(const Alleles&, const Alleles&)>;

    void add(const mnd::TPhenotype& p, const mnd::TAlleleDB& db, bool recessive, const Keep& keep) {
        const Alleles first = alleles_of(*p.pseudo_hapl[0]);
        const Alleles second = alleles_of(*p.pseudo_hapl[1]);
        const int loci = static_cast<int>(first.size());
        std::vector<int> heterozygous;
        for (int l = 0; l < loci; ++l) {
            if (first[at(l)] != second[at(l)]) heterozygous.push_back(l);
        }
        const int h = static_cast<int>(heterozygous.size());
        const bool varies = recessive && h != loci;
        const long n = varies ? 1L << loci : 1L << std::max(h - 1, 0);
        phenotypes.emplace_back();
        for (long g = 0; g < n; ++g) {
            Alleles a = first, b = second;
            for (int k = 1; !varies && k < h; ++k) {
                if ((g >> (k - 1) & 1) != 0)
                    std::swap(a[at(heterozygous[at(k)])], b[at(heterozygous[at(k)])]);
            }
            for (int l = 0; varies && l < loci; ++l) {
                if ((g >> l & 1) == 0) continue;
                if (a[at(l)] != b[at(l)]) {
                    std::swap(a[at(l)], b[at(l)]);
                } else {
                    b[at(l)] = db(a[at(l)]->locus, 0);
                }
            }
            if (keep(a, b)) add_pair(a, b);
        }
    }

    // The database and the lists of the phenotypes hold the same in the same order.
    void expect_same(const mnd::TPopHaploDB& db, const std::vector<const mnd::TPhenotype*>& built) const {
        ASSERT_EQ(db.count, static_cast<long>(store.size()));
        for (std::size_t i = 0; i < store.size(); ++i) {
            ASSERT_EQ(alleles_of(*db.data[i]), store[i].first) << "haplotype " << i;
            ASSERT_EQ(db.data[i]->freq, store[i].second) << "haplotype " << i;
        }
        ASSERT_EQ(built.size(), phenotypes.size());
        for (std::size_t p = 0; p < built.size(); ++p) {
            const auto& expected = phenotypes[p];
            ASSERT_EQ(built[p]->genotypes.count, static_cast<long>(expected.size()));
            ASSERT_EQ(built[p]->nb_genotypes, built[p]->genotypes.count);
            for (std::size_t g = 0; g < expected.size(); ++g) {
                const mnd::TGenotype* genotype = built[p]->genotypes.data[g];
                ASSERT_EQ(genotype->hapl_1, db.data[expected[g].first]) << "genotype " << g;
                ASSERT_EQ(genotype->hapl_2, db.data[expected[g].second]) << "genotype " << g;
            }
        }
    }

private:
    static std::size_t at(int i) { return static_cast<std::size_t>(i); }

    int place_of(const Alleles& haplotype) {
        for (std::size_t i = 0; i < store.size(); ++i) {
            if (store[i].first != haplotype) continue;
            store[i].second += 1.0;
            return static_cast<int>(i);
        }
        store.emplace_back(haplotype, 1.0);
        return static_cast<int>(store.size()) - 1;
    }

    void add_pair(const Alleles& a, const Alleles& b) {
        const int in_b = place_of(b);
        const int in_a = place_of(a);
        auto& pairs = phenotypes.back();
        for (const auto& [first, second] : pairs) {
            if ((first == in_a && second == in_b) || (first == in_b && second == in_a)) return;
        }
        pairs.emplace_back(in_a, in_b);
    }
};

}  // namespace mnd_test
