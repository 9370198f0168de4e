// What kind of data a project holds: the values of its [Profile] section.
#pragma once

#include <fstream>
#include <iosfwd>
#include <vector>

#include "foundation/data_type.h"
#include "foundation/my_string.h"

namespace mnd {

class settings;

// Texts that stand when the keyword is absent or bad: "null" and "NONE".
extern const my_string RecessiveAlleleDefault;
extern const my_string UsedHaplListDefault;

// Values that stand when the keyword is absent or bad.
inline constexpr double kDefaultEpsilon = 1e-7;
inline constexpr double kDefaultFrequencyThreshold = 1e-5;
inline constexpr char kDefaultMissingData = '?';

// The values of the [Profile] section. Project, Samples, Structure, Haplo_DB, DistMat and
// Mantel derive from it: each carries a copy, taken by assignment when its section starts,
// and so sees what stands above it in the file.
class ProfileSettings {
public:
    ProfileSettings() = default;
    ProfileSettings(const ProfileSettings&) = default;
    ProfileSettings& operator=(const ProfileSettings&) = default;
    ~ProfileSettings() = default;

    // Puts every field back to its default, the pointer to null.
    void initialize();

    // Token reader of the whole section, from the start of the stream: goes to "[Profile]"
    // and reads keywords until a "[". False when the section is missing, for a word that is
    // no keyword and for one that does not belong here (error 98).
    bool get_profile_settings(std::ifstream& is);

    // Reads the value of one lower-case keyword, the stream standing behind its "=" sign. A bad
    // value is warned of and replaced by the default. False only for a keyword that does not
    // belong here and for a bad `nbsamples` or `nbgroups`.
    bool read_profile_id_content(std::ifstream& is, my_string keyword);

    // One keyword each; true when the value was good (else the default stands).
    bool read_Title(std::ifstream& is);
    bool read_NbSamples(std::ifstream& is);
    bool read_NbGroups(std::ifstream& is);
    bool read_NbLoci(std::ifstream& is);
    bool read_GenotypicData(std::ifstream& is);
    bool read_DataType(std::ifstream& is);
    bool read_LocusSeparator(std::ifstream& is);
    bool read_LociLabels(std::ifstream& is);
    bool read_UsedHaplList(std::ifstream& is);
    bool read_MissingData(std::ifstream& is);
    bool read_LocusListing(std::ifstream& is);
    bool read_IndividualLevel(std::ifstream& is);
    bool read_Interleave(std::ifstream& is);
    bool read_Frequency(std::ifstream& is);
    bool read_GameticPhase(std::ifstream& is);
    bool read_RecessiveData(std::ifstream& is);
    bool read_RecessiveAllele(std::ifstream& is);
    bool read_freq_threshold(std::ifstream& is);
    bool read_eps_val(std::ifstream& is);
    bool read_dist_mat(std::ifstream& is);

    my_string Title;                                         // title of the project
    int NbSamples = 0;                                       // samples to read
    int NbGroups = 0;                                        // groups, older files
    int GenotypicData = 0;                                   // 1 for genotypes, 0 for haplotypes
    int GameticPhase = 1;                                    // 1 when the phase of genotypes is known
    int DataType = STANDARD;                                 // a DataTypeCode
    int LocusListing = 0;                                    // older files
    int NbLoci = 0;                                          // older files
    std::vector<my_string> LociLabels;                       // one per locus, or empty; older files
    char LocusSeparator = ' ';                               // between the loci of a data line; 0 for none
    char MissingData = kDefaultMissingData;                  // the mark of missing data
    my_string DistMatLabel;                                  // label of the matrix to use
    my_string UsedHaplList = "NONE";                         // name of the haplotype list to use
    my_string ExtHaplFile;                                   // external haplotype file
    int Interleave = 0;                                      // data of several lines are interleaved
    int IndividualLevel = 0;                                 // data hold individuals
    int Frequency = 0;                                       // 0 for absolute, 1 for relative frequencies
    int RecessiveData = 0;                                   // non-zero: a recessive allele is present
    my_string RecessiveAllele = "null";                      // its text
    int GivenDistMat = 1;                                    // a matrix is given
    double EpsilonValue = kDefaultEpsilon;                   // copied into the settings
    double FrequencyThreshold = kDefaultFrequencyThreshold;  // copied into the settings
    settings* the_settings = nullptr;                        // not owned: the settings in force
};

// Name of a DataTypeCode as files and documents have it ("DNA" to "FREQUENCY"); "STANDARD" for
// any other number.
const char* data_type_name(int data_type);

// Writes the section in the form that is read again.
std::ostream& operator<<(std::ostream& os, ProfileSettings const& profile);

}  // namespace mnd
