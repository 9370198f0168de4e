// Profiles and samples for tests, built from short texts.
#pragma once

#include <sstream>
#include <string>

#include "input/profile.h"
#include "model/haplotypes.h"
#include "model/population.h"

namespace mnd_test {

inline mnd::ProfileSettings haplotypic(int data_type, char separator) {
    mnd::ProfileSettings profile;
    profile.DataType = data_type;
    profile.LocusSeparator = separator;
    return profile;
}

inline mnd::ProfileSettings genotypic(int data_type, char separator, int phase) {
    mnd::ProfileSettings profile = haplotypic(data_type, separator);
    profile.GenotypicData = 1;
    profile.GameticPhase = phase;
    return profile;
}

// Reads the lines of a data block into a sample, as from an external file.
inline int read_lines(mnd::Population& sample, mnd::Haplo_DB& db, const std::string& lines) {
    std::istringstream in(lines);
    mnd::my_string line;
    int line_no = 0;
    if (sample.profile.GenotypicData != 0) return sample.New_read_genotypic_data(in, 1, line_no, line);
    return sample.New_read_gametic_data(in, db, 1, line_no, line);
}

// The vectors of alleles of a sample's data, as a run builds them.
inline void build_vectors(mnd::Population& sample, mnd::Haplo_DB& db, mnd::TAlleleDB& alleles) {
    sample.allele_db = &alleles;
    if (sample.profile.GenotypicData != 0) sample.build_allele_vectors(sample.profile.LocusSeparator);
    for (mnd::HaploDef* definition : db.list)
        definition->build_haplovect(&alleles, sample.profile.LocusSeparator, 0, 0.1);
}

}  // namespace mnd_test
