// Individuals whose alleles are single letters.
#pragma once

#include <string>

#include "model/phenotypes.h"

namespace mnd_test {

// An allele store, and individuals made of it.
struct Letters {
    mnd::TAlleleDB db;

    mnd::TPhenotype individual(const std::string& first, const std::string& second, double freq = 1.0) {
        mnd::TPhenotype p("id", freq);
        p.real_freq = freq;
        p.text[0] = first.c_str();
        p.text[1] = second.c_str();
        p.read_pseudo_hapl(0, db, '\0');
        p.read_pseudo_hapl(1, db, '\0');
        return p;
    }
    void append(mnd::TPhenDB& list, const std::string& first, const std::string& second, double freq = 1.0) {
        list.Add(new mnd::TPhenotype(individual(first, second, freq)));
    }
    // The recessive allele "0" as the first of each locus.
    void make_blanks(int loci) {
        for (int l = 0; l < loci; ++l)
            db.InsertAllPos(l, mnd::my_string("0"), 0.0);
    }
};

inline std::string letters_of(const mnd::TPopHaplotype& h) {
    std::string letters;
    for (const mnd::TAllele* allele : h.alleles)
        letters += allele->c_str();
    return letters;
}

inline std::string letters_of(const mnd::TPhenotype& p) {
    return letters_of(*p.pseudo_hapl[0]) + "/" + letters_of(*p.pseudo_hapl[1]);
}

}  // namespace mnd_test
