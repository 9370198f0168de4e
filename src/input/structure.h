// The genetic structure of a project: its samples divided into groups.
#pragma once

#include <cstdint>
#include <fstream>
#include <iosfwd>
#include <vector>

#include "foundation/arrays.h"
#include "foundation/my_string.h"
#include "input/profile.h"

namespace mnd {

class Population;
class Samples;

// Groups finished so far by the token reader.
extern std::int32_t NbGroupsRead;

// Most groups that the token readers store.
inline constexpr int kMaxTokenGroups = 1000;

// The groups of samples to compare. They refer to samples of `Samples`, which must outlive
// this; nothing here deletes a sample.
class Structure : public ProfileSettings {
public:
    my_string StructureName;
    std::int32_t NbSamples = 0;             // samples placed in all groups
    std::int32_t NbGroups = 0;              // declared number of groups
    std::vector<std::int32_t> group_sizes;  // samples in each group; NbGroups long, or empty
    // Samples of each group in reading order, not owned; NbGroups long, or empty.
    std::vector<MY_TIArrayAsVector<Population>> groups;

    // No groups and no samples.
    Structure();
    // Takes the profile, and NbGroups from it.
    explicit Structure(ProfileSettings const& profile);
    // Copies all; the groups refer to the same samples.
    Structure(const Structure& other);
    Structure& operator=(const Structure& other);
    ~Structure();

    // Gives up all groups, then takes the profile, and NbGroups from it, with NbSamples 0; null
    // sets both counts to 0.
    void initialize(ProfileSettings const* profile);

    // Gives up all groups; both counts become 0.
    void reset();

    // Makes NbGroups empty groups of size 0.
    void allocate_groups();

    // Makes or gives up groups until there are NbGroups. Those that stay keep their samples, and
    // NbSamples counts these.
    void fit_groups();

    // 1 when that very sample stands in a group, else 0.
    int has_population(const Population* p) const;

    // Reads the section line by line, from the line behind its heading up to "[MANTEL]", a group
    // more than declared, or the end of the file (structure_section.cpp). Names of samples stand in
    // double quotes.
    //   line_no  running line number of the project
    //   line     holds the line that stopped the reader, which the caller goes on to classify
    //   *_seen   set when the keyword was met
    // Result: 1, or 0 after a report and a text in the log. On success every declared group is there,
    //         though it may be empty when "[MANTEL]" came first.
    int NewReadStructure(std::ifstream& file, ProfileSettings& profile, Samples& samples, int& line_no,
                         my_string& line, bool& name_seen, bool& nbgroups_seen, bool& individual_level_seen,
                         bool& group_seen);

    // Makes this the structure `source` over other samples, found by their names (structure_section.cpp).
    // Result: 1, or 0 after a text in the log when a sample is not among them
    int build_one_loci_str(Samples* one_locus_samples, Structure* source);

    // Reads the section in its older syntax, in which layout does not count and names need no quotes
    // (free_form_structure.cpp). The stream stands behind "[[Structure]]" and is left at the next section.
    // Result: 1, or 0 after a report: for a word that is no keyword, a keyword that is refused (nothing is
    //         left of the structure then), and groups that are not as many as declared
    int open(std::ifstream& is, ProfileSettings& profile, Samples& samples);

    // Reads the value of one lower-case keyword for `open`; groups count in NbGroupsRead. A number of
    // groups that is not stored is told, and reading goes on. Result: 1, or 0 after a report.
    int read_id_content(std::ifstream& is, Samples& samples, my_string keyword);

    // Lists the structure without knowing its samples: writes NbGroups and, between braces,
    // the sample names of each group, a line each, to the file out_name, which is truncated.
    // The stream stands behind "[[Structure]]".
    // Returns: 1; 0 when a keyword is refused or the groups are not as many as declared
    int explore(std::ifstream& is, char const* out_name);

    // Handles one lower-case keyword for `explore`. Returns: 1, or 0 after its error.
    int explore_content(std::ifstream& is, my_string keyword, std::ofstream& out);

    // Writes heading, number of groups and the groups, as they are written in a project file, to
    // the result document; names are escaped.
    void print_structure(std::ostream& document) const;

private:
    int read_structure_name(std::ifstream& is);
    int read_group(std::ifstream& is, Samples& samples);
    int place_sample(Samples& samples, my_string const& sample_name);
    int explore_nb_groups(std::ifstream& is, std::ostream& out);
    int explore_group(std::ifstream& is, std::ostream& out);
};

// Writes the [[Structure]] section in the form that is read again; nothing without groups.
std::ostream& operator<<(std::ostream& os, Structure const& structure);

}  // namespace mnd
