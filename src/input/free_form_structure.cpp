// The structure section in its older syntax, in which layout does not count: the reading of the groups,
// and their listing without the samples they refer to.
#include <fstream>
#include <istream>
#include <ostream>
#include <string>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/data_line.h"
#include "input/external_name.h"
#include "input/keyword_reader.h"
#include "input/structure.h"
#include "model/population.h"
#include "model/samples.h"
#include "run/errors.h"
#include "run/process.h"

namespace mnd {

namespace {

constexpr char kReadContent[] = "Structure::read_id_content()";
constexpr char kExploreContent[] = "Structure::explore_content()";

int refuse(std::string const& reader, int code) {
    report(Error, reader.c_str(), code);
    return 0;
}

std::string in_quotes(my_string const& text) {
    return "\"" + std::string(text.view()) + "\"";
}

// Consumes up to and with the next c outside of comments; false at the end of the stream. What was
// passed over to get there is added to `passed`.
bool go_behind(std::istream& is, char c, std::string& passed) {
    for (int next = peek_beyond_comments(is); next != -1; next = peek_beyond_comments(is)) {
        is.get();
        if (next == c) return true;
        passed += static_cast<char>(next);
    }
    return false;
}

// Consumes up to and with a "}" that comes before the next letter or digit; false without it. What is
// no ASCII character is taken for a letter.
bool go_behind_closing_brace(std::istream& is) {
    constexpr int kAscii = 0x80;
    for (int next = peek_data(is); next != kEndOfStream; next = peek_data(is)) {
        if (is_letter_or_digit(next) || next >= kAscii) return false;
        is.get();
        if (next == '}') return true;
    }
    return false;
}

// Takes the next name of a group; false where there is none, and with the name for one that can't be
// taken, which is told.
bool next_name(std::istream& is, my_string& name) {
    name = "";
    return peek_data(is) != '}' && get_qstring(is, name);
}

// The declared number of groups. One that is not stored is told, and the old one stays. False when
// there is no number.
bool read_number_of_groups(std::istream& is, const char* reader, std::int32_t& nb_groups) {
    long long declared = 0;
    if (!(is >> declared)) {
        if (declared == 0) return false;
        is.clear(is.rdstate() & ~std::ios_base::failbit);  // a number beyond all bounds
    }
    if (declared < 0 || declared > kMaxTokenGroups) {
        report(Error, reader, kInvalidStructureNbGroups);
    } else {
        nb_groups = static_cast<std::int32_t>(declared);
    }
    return true;
}

Population* find_sample(Samples& samples, my_string const& name) {
    for (Population* sample : samples.populations) {
        if (sample->name == name) return sample;
    }
    return nullptr;
}

// The group under work, as an origin of errors.
std::string group_origin() {
    return "Structure::read_id_content() (group#" + std::to_string(NbGroupsRead + 1) + ")";
}

}  // namespace

// ---- Reading

int Structure::open(std::ifstream& is, ProfileSettings& profile, Samples& samples) {
    reset();
    ProfileSettings::operator=(profile);
    NbGroupsRead = 0;
    my_string keyword;
    while (get_next_ident(is, keyword)) {
        if (!is_identifier(keyword)) return refuse("Structure::open()", kInvalidStructureKeyword);
        if (read_id_content(is, samples, keyword) != 0) continue;
        reset();
        return refuse("Structure::open() (" + in_quotes(keyword) + ")", kInvalidKeywordValue);
    }
    // The number may have changed behind the last group.
    if (!groups.empty()) fit_groups();
    // Kept on purpose: the report names the function that lists the groups.
    // Test: FreeFormStructure.MissingGroupsAreAnInvalidNumber
    return NbGroupsRead == NbGroups ? 1 : refuse(kExploreContent, kInvalidStructureNbGroups);
}

int Structure::read_id_content(std::ifstream& is, Samples& samples, my_string keyword) {
    if (keyword == "structurename") return read_structure_name(is);
    if (keyword == "distmatlabel") {
        return get_qstring(is, DistMatLabel) ? 1 : refuse(kReadContent, kInvalidStructureDistMatLabel);
    }
    if (keyword == "nbgroups") {
        if (!read_number_of_groups(is, kReadContent, NbGroups))
            return refuse(kReadContent, kInvalidStructureNbGroups);
        return 1;
    }
    if (keyword == "group") return read_group(is, samples);
    return read_profile_id_content(is, keyword) ? 1 : refuse(kReadContent, kInvalidStructureKeyword);
}

// Of an external file only the name is taken.
int Structure::read_structure_name(std::ifstream& is) {
    my_string name;
    if (!get_qstring(is, name)) return refuse(kReadContent, kInvalidStructureName);
    if (name == "EXTERN") {
        if (!get_qstring(is, name)) return refuse(kReadContent, kInvalidStructureName);
        char path[kPathBuffer];
        build_external_name(path, name.c_str(), the_settings);
        if (!file_opens(path)) return refuse(kReadContent, kCannotOpenExternalStructure);
        *_AOS_ << "\t\tMust read External AMOVA Group file...\n";
    }
    StructureName = name;
    return 1;
}

int Structure::read_group(std::ifstream& is, Samples& samples) {
    if (NbGroups == 0) return refuse(kReadContent, kUnknownNumberOfGroups);
    if (NbGroupsRead >= NbGroups) {
        reset();
        return refuse(kReadContent, kTooManyGroups);
    }
    if (groups.size() != static_cast<std::size_t>(NbGroups)) fit_groups();
    std::string passed;
    if (!go_behind(is, '{', passed)) return refuse(group_origin(), kMissingGroupOpeningBrace);
    if (!passed.empty() && passed != "=") {
        *_AOS_ << "\tWarning: What stands ahead of the opening brace of Group #" << NbGroupsRead + 1
               << " is passed over" << std::endl;
    }
    my_string name;
    while (next_name(is, name)) {
        if (place_sample(samples, name) == 0) return 0;
    }
    if (!name.is_null()) return refuse(group_origin(), kUnknownSampleName);
    // Kept on purpose: this report names no function.
    // Test: FreeFormStructure.MissingClosingBraceNamesBuf
    if (!go_behind_closing_brace(is)) return refuse("buf", kMissingGroupClosingBrace);
    ++NbGroupsRead;
    return 1;
}

// Puts the sample of this name into the group under work.
int Structure::place_sample(Samples& samples, my_string const& sample_name) {
    Population* sample = find_sample(samples, sample_name);
    if (sample == nullptr) {
        refuse("Structure::read_id_content() (" + in_quotes(sample_name) + ")", kUnknownSampleName);
        reset();
        NbGroupsRead = 0;
        return 0;
    }
    if (has_population(sample) != 0) {
        *_AOS_ << "\tError: Sample " << in_quotes(sample_name) << " of Group #" << NbGroupsRead + 1
               << " stands in a group already" << std::endl;
        return refuse(group_origin(), kUnknownSampleName);
    }
    const auto group = static_cast<std::size_t>(NbGroupsRead);
    groups[group].Add(sample);
    ++group_sizes[group];
    ++NbSamples;
    return 1;
}

// ---- Listing

int Structure::explore(std::ifstream& is, char const* out_name) {
    std::ofstream out(out_name);
    reset();
    NbGroupsRead = 0;
    my_string keyword;
    while (get_next_ident(is, keyword)) {
        if (!is_identifier(keyword)) return refuse(kExploreContent, kInvalidStructureKeyword);
        if (explore_content(is, keyword, out) == 0)
            return refuse("Structure::explore(" + in_quotes(keyword) + ")", kInvalidKeywordValue);
    }
    return NbGroupsRead == NbGroups ? 1 : refuse(kExploreContent, kInvalidStructureNbGroups);
}

int Structure::explore_content(std::ifstream& is, my_string keyword, std::ofstream& out) {
    my_string dropped;
    if (keyword == "structurename") {
        const bool named = get_qstring(is, dropped) && (!(dropped == "EXTERN") || get_qstring(is, dropped));
        return named ? 1 : refuse(kExploreContent, kInvalidHaplotypeStructureName);
    }
    if (keyword == "distmatlabel") {
        return get_qstring(is, dropped) ? 1 : refuse(kExploreContent, kInvalidHaplotypeDistMatLabel);
    }
    if (keyword == "nbgroups") return explore_nb_groups(is, out);
    if (keyword == "group") return explore_group(is, out);
    if (read_profile_id_content(is, keyword)) return 1;
    return refuse(kExploreContent, kInvalidStructureKeyword);
}

int Structure::explore_nb_groups(std::ifstream& is, std::ostream& out) {
    if (!read_number_of_groups(is, kExploreContent, NbGroups))
        return refuse(kExploreContent, kInvalidStructureNbGroups);
    out << NbGroups << '\n';
    return 1;
}

int Structure::explore_group(std::ifstream& is, std::ostream& out) {
    if (NbGroups == 0) return refuse(kExploreContent, kUnknownNumberOfGroups);
    std::string passed;
    if (!go_behind(is, '{', passed)) return refuse(kExploreContent, kMissingGroupOpeningBrace);
    const bool surplus = NbGroupsRead >= NbGroups;
    if (surplus) {
        go_behind(is, '}', passed);
        return 1;
    }
    out << "{\n";
    my_string sample;
    while (next_name(is, sample))
        out << sample << '\n';
    if (!sample.is_null()) return refuse(kExploreContent, kUnknownSampleName);
    // Kept on purpose: this report names no function.
    // Test: StructureExplore.MissingClosingBraceNamesBuf
    if (!go_behind_closing_brace(is)) return refuse("buf", kMissingGroupClosingBrace);
    out << "}\n";
    ++NbGroupsRead;
    return 1;
}

}  // namespace mnd
