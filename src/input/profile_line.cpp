#include "input/profile_line.h"

#include <array>
#include <limits>
#include <string>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/keyword_reader.h"
#include "run/errors.h"

namespace mnd {

namespace {

// One line under test.
struct ProfileLine {
    my_string const& text;   // as written
    my_string const& upper;  // its upper-case copy
    int number;
};

std::ostream& log_at(ProfileLine const& line) {
    return *_AOS_ << "\tProject file, Line #" << line.number;
}

// What stands behind the "=" sign.
my_string written_value(ProfileLine const& line) {
    return line.text.extract_after('=');
}

// The text in quotes of a line that has a "=" sign. Without quotes it is false, and `value` is
// what was written, for a message.
bool quoted_value(ProfileLine const& line, my_string& value, const char* keyword) {
    if (getQuotedString(line.text, value, keyword, line.number)) return true;
    value = written_value(line);
    return false;
}

// The one character in quotes, blanks aside, of a line that has a "=" sign. `value` is what
// was written, for a message.
bool quoted_character(ProfileLine const& line, char& c, my_string& value, const char* keyword) {
    if (!quoted_value(line, value, keyword)) return false;
    my_string character = value;
    character.remove_blanks();
    if (character.length() != 1) return false;
    c = character[0];
    return true;
}

bool separator_word(my_string const& upper, char& separator) {
    struct Word {
        const char* word;
        char separator;
    };
    constexpr std::array<Word, 4> kWords = {{{"TAB", '\t'}, {"WHITESPACE", ' '}, {"NONE", 0}, {"\\0", 0}}};
    for (const Word& one : kWords) {
        if (!upper.contains(one.word)) continue;
        separator = one.separator;
        return true;
    }
    return false;
}

// A keyword that takes 0 or 1; anything else gives the default and the warning.
void take_flag(ProfileLine const& line, int& field, int default_value, const char* keyword, int code) {
    double value = -1.0;
    const int read = getValue(line.text, value, keyword, line.number) ? whole_part(value) : -1;
    if (read == 0 || read == 1) {
        field = read;
        return;
    }
    field = default_value;
    const std::string origin = std::string("ProfileSettings::read_") + keyword + "()";
    report(Warning, origin.c_str(), code);
}

LineOutcome take_title(ProfileLine const& line, ProfileSettings& profile) {
    if (!getQuotedString(line.text, profile.Title, "Title", line.number)) profile.Title = "";
    return LineOutcome::kTaken;
}

LineOutcome take_nb_samples(ProfileLine const& line, ProfileSettings& profile) {
    double value = 0.0;
    const bool read = getValue(line.text, value, "NbSamples", line.number);
    // A number that no int can hold is as bad as none.
    if (!read || value > std::numeric_limits<int>::max() || value < std::numeric_limits<int>::min()) {
        report(Error, "Project::newOpen()", kInvalidNbSamples);
        return LineOutcome::kStop;
    }
    profile.NbSamples = whole_part(value);
    return LineOutcome::kTaken;
}

LineOutcome take_data_type(ProfileLine const& line, ProfileSettings& profile) {
    if (!data_type_from_text(written_value(line), profile.DataType)) {
        profile.DataType = STANDARD;
        report(Warning, "ProfileSettings::read_DataType()", kInvalidDataTypeKeyword);
    }
    return LineOutcome::kTaken;
}

LineOutcome take_genotypic_data(ProfileLine const& line, ProfileSettings& profile) {
    take_flag(line, profile.GenotypicData, 0, "GenotypicData", kInvalidGenotypicData);
    return LineOutcome::kTaken;
}

LineOutcome take_locus_separator(ProfileLine const& line, ProfileSettings& profile) {
    if (separator_word(line.upper, profile.LocusSeparator)) return LineOutcome::kTaken;
    my_string value;
    if (quoted_character(line, profile.LocusSeparator, value, "LocusSeparator")) return LineOutcome::kTaken;
    profile.LocusSeparator = ' ';
    report(Warning, "ProfileSettings::read_LocusSeparator()", kInvalidLocusSeparator);
    log_at(line) << " : Invalid value ('" << value << "\") assigned to keyword \"LocusSeparator\""
                 << std::endl;
    return LineOutcome::kTaken;
}

LineOutcome take_gametic_phase(ProfileLine const& line, ProfileSettings& profile) {
    take_flag(line, profile.GameticPhase, 1, "GameticPhase", kInvalidGameticPhase);
    return LineOutcome::kTaken;
}

LineOutcome take_recessive_data(ProfileLine const& line, ProfileSettings& profile) {
    double value = 0.0;
    if (getValue(line.text, value, "RecessiveData", line.number)) profile.RecessiveData = whole_part(value);
    return LineOutcome::kTaken;
}

LineOutcome take_recessive_allele(ProfileLine const& line, ProfileSettings& profile) {
    my_string value;
    if (quoted_value(line, value, "RecessiveAllele") && is_recessive_allele(value)) {
        profile.RecessiveAllele = value;
        return LineOutcome::kTaken;
    }
    profile.RecessiveAllele = RecessiveAlleleDefault;
    report(Warning, "ProfileSettings::read_RecessiveAllele()", kInvalidRecessiveAllele);
    log_at(line) << " : Invalid value (\"" << value << "\") assigned to keyword \"RecessiveAllele\""
                 << std::endl;
    return LineOutcome::kTaken;
}

LineOutcome take_missing_data(ProfileLine const& line, ProfileSettings& profile) {
    my_string value;
    if (quoted_character(line, profile.MissingData, value, "MissingData")) return LineOutcome::kTaken;
    profile.MissingData = kDefaultMissingData;
    report(Warning, "ProfileSettings::read_MissingData()", kMissingMissingData);
    log_at(line) << " : Invalid value (\"" << value << "\") assigned to keyword \"MissingData\"" << std::endl;
    return LineOutcome::kTaken;
}

LineOutcome take_frequency(ProfileLine const& line, ProfileSettings& profile) {
    my_string value;
    getUnQuotedString(line.text, value, "Frequency", line.number);
    if (!frequency_from_text(value, profile.Frequency)) {
        report(Warning, "ProfileSettings::read_Frequency()", kInvalidFrequency);
        log_at(line) << " : Invalid value (\"" << value << "\") assigned to keyword \"Frequency\"\n";
    }
    return LineOutcome::kTaken;
}

LineOutcome take_comp_dist_matrix(ProfileLine const& line, [[maybe_unused]] ProfileSettings& profile) {
    log_at(line) << " : Keyword \"CompDistMatrix\" is now obsolete. "
                    "Please set this parameter directly throug the interface\n";
    return LineOutcome::kTaken;
}

LineOutcome take_frequency_threshold(ProfileLine const& line, ProfileSettings& profile) {
    if (!getValue(line.text, profile.FrequencyThreshold, "FrequencyThreshold", line.number))
        profile.FrequencyThreshold = kDefaultFrequencyThreshold;
    return LineOutcome::kTaken;
}

LineOutcome take_epsilon_value(ProfileLine const& line, ProfileSettings& profile) {
    // Kept on purpose: a bad value is told under the name of the other keyword.
    // Test: ProfileLine.BadEpsilonValueNamesFrequencyThreshold
    if (!getValue(line.text, profile.EpsilonValue, "FrequencyThreshold", line.number))
        profile.EpsilonValue = kDefaultEpsilon;
    return LineOutcome::kTaken;
}

// A keyword, its name in messages, what marks it as seen, and its reader.
struct LineKeyword {
    const char* word;
    const char* but_not;  // null, or a longer word that is not meant
    const char* name;
    bool ProfileKeywordsSeen::*seen;  // null when it is not required
    LineOutcome (*take)(ProfileLine const&, ProfileSettings&);
};

// In order of the search: the first that occurs in a line decides.
constexpr std::array<LineKeyword, 13> kLineKeywords = {{
    {"TITLE", nullptr, "Title", nullptr, take_title},
    {"NBSAMPLES", nullptr, "NbSamples", &ProfileKeywordsSeen::nb_samples, take_nb_samples},
    {"DATATYPE", nullptr, "DataType", &ProfileKeywordsSeen::data_type, take_data_type},
    {"GENOTYPICDATA", nullptr, "GenotypicData", &ProfileKeywordsSeen::genotypic_data, take_genotypic_data},
    {"LOCUSSEPARATOR", nullptr, "LocusSeparator", &ProfileKeywordsSeen::locus_separator,
     take_locus_separator},
    {"GAMETICPHASE", nullptr, "GameticPhase", &ProfileKeywordsSeen::gametic_phase, take_gametic_phase},
    {"RECESSIVEDATA", nullptr, "RecessiveData", nullptr, take_recessive_data},
    {"RECESSIVEALLELE", nullptr, "RecessiveAllele", &ProfileKeywordsSeen::recessive_allele,
     take_recessive_allele},
    {"MISSINGDATA", nullptr, "MissingData", &ProfileKeywordsSeen::missing_data, take_missing_data},
    {"FREQUENCY", "FREQUENCYTHRESHOLD", "Frequency", nullptr, take_frequency},
    {"COMPDISTMATRIX", nullptr, "CompDistMatrix", nullptr, take_comp_dist_matrix},
    {"FREQUENCYTHRESHOLD", nullptr, "FrequencyThreshold", nullptr, take_frequency_threshold},
    {"EPSILONVALUE", nullptr, "EpsilonValue", nullptr, take_epsilon_value},
}};

bool occurs(LineKeyword const& keyword, my_string const& upper) {
    if (!upper.contains(keyword.word)) return false;
    return keyword.but_not == nullptr || !upper.contains(keyword.but_not);
}

}  // namespace

LineOutcome read_profile_line(my_string const& line, my_string const& upper, int line_no,
                              ProfileSettings& profile, ProfileKeywordsSeen& seen) {
    for (const LineKeyword& keyword : kLineKeywords) {
        if (!occurs(keyword, upper)) continue;
        if (keyword.seen != nullptr) seen.*keyword.seen = true;
        if (!checkForPresenceOfEqualSign(line, keyword.name, line_no)) return LineOutcome::kTaken;
        return keyword.take({line, upper, line_no}, profile);
    }
    return LineOutcome::kNotMine;
}

bool data_type_from_text(my_string const& text, int& data_type) {
    const my_string upper = upper_copy(text);
    for (int type = DNA; type <= FREQUENCY; ++type) {
        if (!upper.contains(data_type_name(type))) continue;
        data_type = type;
        return true;
    }
    return false;
}

bool separator_from_text(my_string const& text, char& separator) {
    if (separator_word(upper_copy(text), separator)) return true;
    my_string value = text;
    value.remove_blanks();
    const bool quoted = value.length() == 3 && (value[0] == '"' || value[0] == '\'') && value[2] == value[0];
    if (quoted) separator = value[1];
    return quoted;
}

bool frequency_from_text(my_string const& text, int& frequency) {
    if (text.contains("ABS")) {
        frequency = 0;
        return true;
    }
    if (!text.contains("REL")) return false;
    frequency = 1;
    return true;
}

bool is_recessive_allele(my_string const& text) {
    return !text.is_null() && !text.contains(' ');
}

}  // namespace mnd
