#include "within/allele_counts.h"

#include <algorithm>

namespace mnd {

namespace {

// Up to here a scan of the addresses beats a hash index.
constexpr std::size_t kLongestScan = 16;

class LocusTallies {
public:
    // Counts one string of alleles.
    void add(const MY_TIArrayAsVector<TAllele>& alleles, double copies) {
        const auto length = static_cast<std::size_t>(alleles.end() - alleles.begin());
        if (length > tallies_.size()) tallies_.resize(length);
        auto tally = tallies_.begin();
        for (const TAllele* allele : alleles)
            (tally++)->add(allele, copies);
    }

    void add(const Population& sample) {
        if (sample.phen_db.count > 0) {
            for (const TPhenotype* phenotype : sample.phen_db) {
                for (const auto& string : phenotype->pseudo_hapl)
                    if (string != nullptr) add(string->alleles, phenotype->freq);
            }
            return;
        }
        for (const PHaploDef* entry : sample.hapl_list)
            add(*entry->def, entry->freq);
    }

    // Appends the alleles that are not missing, with their copies as freq.
    void write_to(TAlleleDB& counts, char missing) const {
        for (std::size_t i = 0; i < tallies_.size(); ++i) {
            const int locus = static_cast<int>(i);
            my_string number;
            number = locus;
            counts.Add(std::make_unique<TLocus>(my_string("Locus ") + number).release());
            for (const AlleleTally::Entry& entry : tallies_[i].entries()) {
                if (entry.copies <= 0.0 || entry.allele->is_char(missing)) continue;
                counts.insert_allele(locus, entry.allele->view(), entry.copies);
            }
        }
    }

private:
    std::vector<AlleleTally> tallies_;  // one per locus
};

}  // namespace

AlleleTally::Entry* AlleleTally::find(const TAllele* allele) {
    if (index_) {
        const auto place = index_->find(allele);
        return place == index_->end() ? nullptr : &entries_[place->second];
    }
    for (Entry& entry : entries_) {
        if (entry.allele == allele) return &entry;
    }
    return nullptr;
}

void AlleleTally::add(const TAllele* allele, double copies) {
    if (allele == nullptr) return;
    if (Entry* known = find(allele)) {
        known->copies += copies;
        return;
    }
    entries_.push_back({allele, copies});
    if (index_) {
        index_->emplace(allele, entries_.size() - 1);
    } else if (entries_.size() > kLongestScan) {
        index_ = std::make_unique<Index>();
        for (std::size_t i = 0; i < entries_.size(); ++i)
            index_->emplace(entries_[i].allele, i);
    }
}

TAlleleDB count_alleles(const Population& sample) {
    LocusTallies tallies;
    tallies.add(sample);
    TAlleleDB counts;
    tallies.write_to(counts, sample.profile.MissingData);
    return counts;
}

void count_global_alleles(const Samples& samples) {
    LocusTallies tallies;
    for (const Population* sample : samples.populations)
        tallies.add(*sample);
    PopGenetics::globalAllelicDB.destroy();
    if (samples.populations.count == 0) return;
    tallies.write_to(PopGenetics::globalAllelicDB, samples.populations[0]->profile.MissingData);
}

}  // namespace mnd
