// Samples made of texts, for tests of what is computed within a sample.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "model/haplotypes.h"
#include "model/population.h"

namespace mnd_test {

// A sample with the definitions that it points to: haplotypes of these contents and counts.
template <class Sample>
struct TextSample {
    std::vector<std::unique_ptr<mnd::HaploDef>> definitions;
    Sample sample;

    TextSample(const std::vector<std::string>& contents, const std::vector<int>& counts) {
        sample.profile.MissingData = '?';
        for (std::size_t i = 0; i < contents.size(); ++i) {
            definitions.push_back(std::make_unique<mnd::HaploDef>());
            definitions.back()->name = ("h" + std::to_string(i + 1)).c_str();
            definitions.back()->content = contents[i].c_str();
            sample.hapl_list.Add(new mnd::PHaploDef(definitions.back().get(), counts[i]));
            sample.sample_size += counts[i];
        }
        if (!contents.empty()) use_all(static_cast<int>(contents.front().size()));
    }
    explicit TextSample(const std::vector<std::string>& contents)
        : TextSample(contents, std::vector<int>(contents.size(), 1)) {}

    // Makes all of n loci usable.
    void use_all(int n) {
        sample.usable_site.assign(static_cast<std::size_t>(n), 1);
        sample.nb_usable_loci = n;
    }
    void drop(int locus) {
        sample.usable_site[static_cast<std::size_t>(locus)] = 0;
        --sample.nb_usable_loci;
    }
    // Adds the alleles of each definition, by name; "?" is the missing one.
    void add_alleles(mnd::TAlleleDB& db, const std::vector<std::vector<const char*>>& alleles) {
        for (std::size_t i = 0; i < alleles.size(); ++i) {
            for (std::size_t locus = 0; locus < alleles[i].size(); ++locus) {
                definitions[i]->Add(db.insert_allele(static_cast<int>(locus), alleles[i][locus], 1.0));
            }
        }
        if (!alleles.empty()) use_all(static_cast<int>(alleles.front().size()));
    }
    double cell(int i, int j) const { return sample.dist_mat->get(i, j); }
};

}  // namespace mnd_test
