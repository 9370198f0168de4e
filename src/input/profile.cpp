#include "input/profile.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <ostream>
#include <string>

#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/keyword_reader.h"
#include "input/profile_line.h"

namespace mnd {

const my_string RecessiveAlleleDefault("null");
const my_string UsedHaplListDefault("NONE");

namespace {

constexpr std::array<const char*, 5> kDataTypeNames = {"DNA", "RFLP", "MICROSAT", "STANDARD", "FREQUENCY"};

// Labels beyond this are not taken: no project has as many loci in a list of labels.
constexpr std::size_t kMaxLociLabels = 1000000;

bool warn(const char* reader, int code) {
    report(Warning, reader, code);
    return false;
}

bool fail(const char* reader, int code) {
    report(Error, reader, code);
    return false;
}

// A number from the stream, which stays usable when there is none.
template <class Number>
bool read_number(std::istream& is, Number& value) {
    Number read{};
    if (is >> read) {
        value = read;
        return true;
    }
    if (!is.eof()) is.clear();
    return false;
}

// What is left of this line, without its comment and the white space at its ends.
my_string rest_of_line(std::istream& is) {
    my_string text;
    text.read_to_delim(is, '\n');
    clearLineAfterPoundSign(text);
    text.remove_eol_and_lf();
    const auto is_white = [](char c) { return c == ' ' || c == '\t'; };
    while (!text.is_null() && is_white(text[text.length() - 1]))
        text.remove(text.length() - 1, 1);
    while (!text.is_null() && is_white(text[0]))
        text.remove(0, 1);
    return text;
}

// A keyword that takes 0 or 1; anything else leaves the default and warns.
bool read_flag(std::istream& is, int& field, int default_value, const char* reader, int missing,
               int invalid) {
    field = default_value;
    int read = 0;
    if (!read_number(is, read)) return warn(reader, missing);
    if (read != 0 && read != 1) return warn(reader, invalid);
    field = read;
    return true;
}

const char* separator_name(char separator) {
    switch (separator) {
        case '\0':
            return "NONE";
        case ' ':
            return "WHITESPACE";
        case '\t':
            return "TAB";
        default:
            return nullptr;
    }
}

// The text in the kind of quotes that it does not hold itself.
void write_quoted(std::ostream& os, my_string const& text) {
    const char quote = text.contains('"') ? '\'' : '"';
    os << quote << text << quote << '\n';
}

// The shortest text that is read as the same number again.
std::string shortest(double value) {
    std::array<char, 32> text{};
    const std::to_chars_result end =
        std::to_chars(text.data(), text.data() + text.size(), value, std::chars_format::general);
    return std::string(text.data(), end.ptr);
}

void write_separator(std::ostream& os, char separator) {
    os << "\tLocusSeparator=";
    if (const char* const word = separator_name(separator)) {
        os << word << '\n';
    } else {
        write_quoted(os, my_string(std::array<char, 2>{separator, '\0'}.data()));
    }
}

}  // namespace

void ProfileSettings::initialize() {
    *this = ProfileSettings();
}

const char* data_type_name(int data_type) {
    const bool known = data_type >= DNA && data_type <= FREQUENCY;
    return kDataTypeNames[static_cast<std::size_t>(known ? data_type : int{STANDARD})];
}

bool ProfileSettings::get_profile_settings(std::ifstream& is) {
    const char* const self = "ProfileSettings::get_profile_settings(ifstream& ifs";
    skip_comments(is);
    if (!position_after(is, "Profile", "", "")) return false;
    my_string keyword;
    // The section ends at the next bracket, or with the file.
    while (get_next_ident(is, keyword)) {
        if (!is_identifier(keyword)) return fail(self, kInvalidProfileKeyword);
        if (!read_profile_id_content(is, keyword)) return fail(self, kInvalidProfileKeyword);
    }
    return true;
}

namespace {

// A bad value of these leaves the section readable, a bad one of the others does not.
struct ProfileKeyword {
    const char* keyword;
    bool (ProfileSettings::*reader)(std::ifstream&);
    bool decisive;
};

constexpr std::array<ProfileKeyword, 20> kProfileKeywords = {{
    {"title", &ProfileSettings::read_Title, false},
    {"nbsamples", &ProfileSettings::read_NbSamples, true},
    {"nbgroups", &ProfileSettings::read_NbGroups, true},
    {"nbloci", &ProfileSettings::read_NbLoci, false},
    {"genotypicdata", &ProfileSettings::read_GenotypicData, false},
    {"datatype", &ProfileSettings::read_DataType, false},
    {"locusseparator", &ProfileSettings::read_LocusSeparator, false},
    {"locilabels", &ProfileSettings::read_LociLabels, false},
    {"usedhapllist", &ProfileSettings::read_UsedHaplList, false},
    {"missingdata", &ProfileSettings::read_MissingData, false},
    {"locuslisting", &ProfileSettings::read_LocusListing, false},
    {"individuallevel", &ProfileSettings::read_IndividualLevel, false},
    {"interleave", &ProfileSettings::read_Interleave, false},
    {"frequency", &ProfileSettings::read_Frequency, false},
    {"gameticphase", &ProfileSettings::read_GameticPhase, false},
    {"recessivedata", &ProfileSettings::read_RecessiveData, false},
    {"recessiveallele", &ProfileSettings::read_RecessiveAllele, false},
    {"frequencythreshold", &ProfileSettings::read_freq_threshold, false},
    {"epsilonvalue", &ProfileSettings::read_eps_val, false},
    {"compdistmatrix", &ProfileSettings::read_dist_mat, false},
}};

}  // namespace

bool ProfileSettings::read_profile_id_content(std::ifstream& is, my_string keyword) {
    for (const ProfileKeyword& entry : kProfileKeywords) {
        if (!(keyword == entry.keyword)) continue;
        const bool good = (this->*entry.reader)(is);
        return good || !entry.decisive;
    }
    return false;
}

bool ProfileSettings::read_Title(std::ifstream& is) {
    return get_qstring(is, Title) || fail("ProfileSettings::read_Title()", kUnreadableProjectTitle);
}

bool ProfileSettings::read_NbSamples(std::ifstream& is) {
    const char* const self = "ProfileSettings::read_NbSamples()";
    if (!read_number(is, NbSamples)) return fail(self, kMissingNbSamples);
    return NbSamples > 0 || fail(self, kInvalidNbSamples);
}

bool ProfileSettings::read_NbGroups(std::ifstream& is) {
    const char* const self = "ProfileSettings::read_NbGroups()";
    if (!read_number(is, NbGroups)) return fail(self, kMissingNbGroups);
    return NbGroups >= 0 || fail(self, kInvalidNbGroups);
}

bool ProfileSettings::read_NbLoci(std::ifstream& is) {
    if (read_number(is, NbLoci) && NbLoci >= 0) return true;
    NbLoci = 0;
    return warn("ProfileSettings::read_NbLoci()", kInvalidNbLoci);
}

bool ProfileSettings::read_GenotypicData(std::ifstream& is) {
    return read_flag(is, GenotypicData, 0, "ProfileSettings::read_GenotypicData()", kMissingGenotypicData,
                     kInvalidGenotypicData);
}

bool ProfileSettings::read_DataType(std::ifstream& is) {
    // The whole line, since a word may be set apart from its comment by a TAB.
    if (data_type_from_text(rest_of_line(is), DataType)) return true;
    DataType = STANDARD;
    return warn("ProfileSettings::read_DataType()", kInvalidDataTypeKeyword);
}

bool ProfileSettings::read_LocusSeparator(std::ifstream& is) {
    if (separator_from_text(rest_of_line(is), LocusSeparator)) return true;
    LocusSeparator = ' ';
    return warn("ProfileSettings::read_LocusSeparator()", kInvalidLocusSeparator);
}

bool ProfileSettings::read_LociLabels(std::ifstream& is) {
    LociLabels.clear();
    if (peek_beyond_comments(is) != '{') {
        return warn("ProfileSettings::read_LociLabels()", kMissingLociLabels);
    }
    is.get();
    my_string label;
    while (LociLabels.size() < kMaxLociLabels && peek_beyond_comments(is) != '}' && get_qstring(is, label)) {
        LociLabels.push_back(label);
    }
    if (is.peek() == '}') is.get();
    return !LociLabels.empty() || warn("ProfileSettings::read_LociLabels()", kMissingLociLabels);
}

bool ProfileSettings::read_UsedHaplList(std::ifstream& is) {
    if (get_qstring(is, UsedHaplList)) return true;
    UsedHaplList = UsedHaplListDefault;
    return warn("ProfileSettings::read_UsedHaplList()", kMissingUsedHaplList);
}

bool ProfileSettings::read_MissingData(std::ifstream& is) {
    if (get_qchar(is, MissingData)) return true;
    MissingData = kDefaultMissingData;
    return warn("ProfileSettings::read_MissingData()", kMissingMissingData);
}

bool ProfileSettings::read_LocusListing(std::ifstream& is) {
    return read_flag(is, LocusListing, 0, "ProfileSettings::read_LocusListing()", kMissingLocusListing,
                     kInvalidLocusListing);
}

bool ProfileSettings::read_IndividualLevel(std::ifstream& is) {
    return read_flag(is, IndividualLevel, 0, "ProfileSettings::read_IndividualLevel()",
                     kMissingIndividualLevel, kInvalidIndividualLevel);
}

bool ProfileSettings::read_Interleave(std::ifstream& is) {
    return read_flag(is, Interleave, 0, "ProfileSettings::read_Interleave()", kMissingInterleave,
                     kInvalidInterleave);
}

bool ProfileSettings::read_Frequency(std::ifstream& is) {
    const my_string word = rest_of_line(is);
    return frequency_from_text(word, Frequency) ||
           warn("ProfileSettings::read_Frequency()", kInvalidFrequency);
}

bool ProfileSettings::read_GameticPhase(std::ifstream& is) {
    return read_flag(is, GameticPhase, 1, "ProfileSettings::read_GameticPhase()", kMissingGameticPhase,
                     kInvalidGameticPhase);
}

bool ProfileSettings::read_RecessiveData(std::ifstream& is) {
    double value = 0.0;
    if (read_number(is, value)) RecessiveData = whole_part(value);
    return true;
}

bool ProfileSettings::read_RecessiveAllele(std::ifstream& is) {
    if (get_qstring(is, RecessiveAllele) && is_recessive_allele(RecessiveAllele)) return true;
    RecessiveAllele = RecessiveAlleleDefault;
    return warn("ProfileSettings::read_RecessiveAllele()", kInvalidRecessiveAllele);
}

bool ProfileSettings::read_freq_threshold(std::ifstream& is) {
    if (read_number(is, FrequencyThreshold)) return true;
    FrequencyThreshold = kDefaultFrequencyThreshold;
    return warn("ProfileSettings::read_freq_threshold()", kInvalidFrequencyThreshold);
}

bool ProfileSettings::read_eps_val(std::ifstream& is) {
    if (read_number(is, EpsilonValue)) return true;
    EpsilonValue = kDefaultEpsilon;
    return warn("ProfileSettings::read_eps_val()", kInvalidEpsilonValue);
}

bool ProfileSettings::read_dist_mat(std::ifstream& is) {
    // Obsolete: whether a matrix is computed is a matter of the settings. The value is dropped.
    rest_of_line(is);
    return true;
}

std::ostream& operator<<(std::ostream& os, ProfileSettings const& profile) {
    const FormatGuard guard(os);
    os << std::dec << std::noshowpos << "[Profile]\n\n\tTitle=";
    write_quoted(os, profile.Title);
    os << "\tNbSamples=" << profile.NbSamples << '\n'
       << "\tGenotypicData=" << profile.GenotypicData << '\n'
       << "\tDataType=" << data_type_name(profile.DataType) << '\n';
    write_separator(os, profile.LocusSeparator);
    os << "\tMissingData=";
    write_quoted(os, my_string(std::array<char, 2>{profile.MissingData, '\0'}.data()));
    os << "\tGameticPhase=" << profile.GameticPhase << '\n'
       << "\tFrequency=" << (profile.Frequency == 1 ? "REL" : "ABS") << '\n'
       << "\tRecessiveData=" << profile.RecessiveData << '\n'
       << "\tRecessiveAllele=";
    write_quoted(os, profile.RecessiveAllele);
    os << "\tFrequencyThreshold=" << shortest(profile.FrequencyThreshold) << '\n'
       << "\tEpsilonValue=" << shortest(profile.EpsilonValue) << "\n\n";
    return os;
}

}  // namespace mnd
