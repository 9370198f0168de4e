// The dictionary of distinct haplotype texts of a project, and a sample's counts of them.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "foundation/arrays.h"
#include "foundation/my_string.h"
#include "input/profile.h"
#include "model/allele_db.h"
#include "model/first_match_index.h"

namespace mnd {

class DistMat;  // input/dist_mat.h

// One haplotype definition: as an array, the alleles of its loci (not owned, they belong to the
// allele database); empty until build_haplovect has run.
class HaploDef : public MY_TIArrayAsVector<TAllele> {
public:
    int32_t id = -1;    // row in the haplotype distance matrix
    my_string name;     // identifier, as written in the data
    my_string content;  // text; with a locus separator, the tokens joined by it
    int32_t count = 0;  // gene copies over the whole project

    // Alleles in the vector; `count` is the number of gene copies here, not that of the base.
    long num_alleles() const { return static_cast<long>(MY_TIArrayAsVector<TAllele>::count); }

    HaploDef();
    explicit HaploDef(my_string const& haplotype_name);
    HaploDef(HaploDef const& other);
    // Copies name, id, content, count and the allele pointers.
    HaploDef& operator=(HaploDef const& other);

    // Parse content by data type; true if it is usable. Defined with the haplotype section.
    bool read_data(std::istream& in, ProfileSettings& profile);
    bool read_data(my_string& text, ProfileSettings& profile);

    // Turns content into allele pointers, inserting each allele with this weight.
    //   sep     0: one character per locus; else tokens between separators, of which empty
    //           ones are skipped and do not advance the locus
    //   int     no effect
    // Called again, it adds the weight again and leaves the vector as long as it was.
    // Cost:   O(loci); no allocation per locus for known alleles
    void build_haplovect(TAlleleDB* db, char const& sep, int, double weight);

    // Whether the other holds the same allele at each position of this one. Positions that
    // the other lacks differ; those that it has beyond are not looked at.
    bool hasSameAllelicContent(HaploDef const& other) const;
    // Whether every locus holds the one-character allele c; false for no locus.
    bool is_all_missing(char c) const;
};

// Name, tab and content; without content, a blank and the name.
std::ostream& operator<<(std::ostream& out, HaploDef const& def);

// A haplotype of one sample with its absolute count there.
class PHaploDef {
public:
    HaploDef* def = nullptr;  // not owned: belongs to the project's Haplo_DB
    int32_t freq = 0;         // gene copies in the sample

    PHaploDef() = default;
    PHaploDef(HaploDef* definition, int32_t count) : def(definition), freq(count) {}
};

// All haplotype definitions of a project, in order of first appearance.
//
// Two searches exist and are not the same: find() goes by content, find_by_name() by name. Both
// are hashed and give the first match. The name of a listed definition must not change. After
// the content of listed definitions has changed, call content_changed() before find().
class Haplo_DB : public ProfileSettings {
public:
    my_string name;                     // value of HaplListName
    MY_TIArrayAsVector<HaploDef> list;  // owned definitions

    Haplo_DB();
    Haplo_DB(Haplo_DB const& other);
    // Copies profile, name and definitions (deep).
    Haplo_DB& operator=(Haplo_DB const& other);

    // The first definition whose content equals the text, or null.
    HaploDef* find(my_string const& text) const;
    // The first definition of this name, or null.
    HaploDef* find_by_name(my_string const& haplotype_name) const;
    // Appends a definition and owns it from now on; returns it.
    HaploDef* append(HaploDef* definition);
    // Says that contents of listed definitions were changed.
    void content_changed() const;

    // List name "no_name", no definitions.
    void reset();
    // Removes every sep from all contents. The length of the first content counts for all:
    // what a longer one has beyond it is dropped.
    void rm_separators(char sep);
    // Path of an external file: a name with a slash or backslash as it is, else behind the
    // project's directory.
    //   out   room for the result, at least 400 characters; a longer path is cut there
    void build_ext_name(char* out, char const* file) const;

    // Bind definitions to rows of a distance matrix by setting id; false, with a report, when
    // it can't be done. By label: every definition needs one, spare labels are only told.
    bool associate_with1(DistMat const& m);
    // By position: the sizes must agree, but for a conventional matrix, which has no cells.
    bool associate_with2(DistMat const& m);

    // Readers of the definition section and its writing; defined with that section.
    bool open(std::ifstream& file, ProfileSettings const& profile);
    bool get_settings(std::ifstream& file);
    bool read_id_content(std::ifstream& file, my_string id);
    int read_haplotype(std::ifstream& file);
    int NewReadHaplotypeList(std::istream& in, ProfileSettings& profile, bool external, int& line_no);

private:
    HaploDef* search(FirstMatchIndex& index, my_string HaploDef::*field, my_string const& text) const;

    mutable FirstMatchIndex by_name_;
    mutable FirstMatchIndex by_content_;
};

// The definition section as in a project file; nothing for an empty list.
std::ostream& operator<<(std::ostream& out, Haplo_DB& db);

}  // namespace mnd
