// The [[Structure]] section: the line reader of the groups, and their copy over other samples.
#include <algorithm>
#include <cstddef>
#include <fstream>
#include <istream>
#include <ostream>
#include <sstream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/keyword_reader.h"
#include "input/structure.h"
#include "model/population.h"
#include "model/samples.h"
#include "run/errors.h"

namespace mnd {

namespace {

constexpr char kReporter[] = "Structure::NewReadStructure()";
constexpr char kMantelHeading[] = "[MANTEL]";

// Groups beyond which none are made: every group needs a sample.
constexpr int kMostGroups = 100000;

// Where the first brace of the kind stands outside of quotes; npos for none.
std::size_t find_unquoted(std::string_view text, char brace) {
    for (std::size_t at = 0; at < text.size(); ++at) {
        if (text[at] == brace) return at;
        if (text[at] != '"') continue;
        const std::size_t closing = text.find('"', at + 1);
        if (closing != std::string_view::npos) at = closing;
    }
    return std::string_view::npos;
}

// What a step of the reader says about the rest of the section.
enum class Outcome { kGoOn, kEndOfLines, kSuccess, kFailure };

// Reads the lines of the section. Each take_ function handles one keyword.
class StructureReader {
public:
    StructureReader(Structure& structure, std::ifstream& file, Samples& samples, int& line_no,
                    my_string& line)
        : structure_(structure), file_(file), line_no_(line_no), line_(line) {
        for (Population* sample : samples.populations)
            sample_named_.try_emplace(std::string(sample->name.view()), sample);
    }

    // Reads the next line; false at the end of the lines.
    bool next_line() { return file_.good() && read_project_line(file_, line_, line_no_); }
    bool line_too_long();
    Outcome take_name();
    Outcome take_number_of_groups();
    Outcome tell_obsolete_label() const;
    Outcome tell_obsolete_level() const;
    Outcome take_group();
    // The number of groups must be as declared. Returns: 1 or 0
    int judge_number_of_groups() const;
    // Makes the groups that were declared and not read, and gives up those that no longer are.
    void complete_groups();

private:
    // How far the braces of a group are.
    struct Braces {
        bool open = false;
        bool closed = false;
    };

    Outcome bad_number_of_groups();
    Outcome read_first_line(Braces& braces);
    Outcome read_group_line(Braces& braces);
    Outcome read_names(std::string_view text);
    Outcome place_sample(my_string const& name);
    Outcome refuse_sample(my_string const& name, std::string const& reason, int code) const;
    Outcome finish_group();
    bool pass_over_stray_character(std::istream& names) const;
    std::size_t group() const { return static_cast<std::size_t>(nb_read_); }

    Structure& structure_;  // not owned
    std::ifstream& file_;
    int& line_no_;
    my_string& line_;
    int nb_read_ = 0;  // groups finished
    // The first sample of each name, and the group, from 1, of each sample placed; not owned.
    std::unordered_map<std::string, Population*> sample_named_;
    std::unordered_map<const Population*, int> group_of_;
};

// Called when the lines have come to an end: true when it was a line that does not fit.
bool StructureReader::line_too_long() {
    if (!line_was_too_long(file_)) return false;
    *_AOS_ << "\tLine #" << line_no_ + 1 << " of the Structure section is longer than " << kMaxTextLength - 1
           << " characters. Aborting reading project." << std::endl;
    report(Error, kReporter, kInvalidKeywordValue);
    return true;
}

Outcome StructureReader::take_name() {
    if (!checkForPresenceOfEqualSign(line_, "StructureName", line_no_)) return Outcome::kGoOn;
    if (line_.contains("EXTERN")) {
        report(Error, kReporter, kExternalStructureNotSupported);
        *_AOS_ << "\tWarning: External definition of the GENETIC STRUCTURE is not possible anymore.\n"
               << "\tPlease incorporate it into the project. Skipping reading of the Genetic structure."
               << std::endl;
        return Outcome::kEndOfLines;
    }
    if (getQuotedString(line_, structure_.StructureName, "StructureName", line_no_)) return Outcome::kGoOn;
    file_.close();
    *_AOS_ << "\tWarning: Bad value assigned to StructureName on line " << line_no_ << std::endl;
    report(Warning, "Structure::NewReadStructure", kInvalidStructureName);
    return Outcome::kEndOfLines;
}

Outcome StructureReader::take_number_of_groups() {
    if (!checkForPresenceOfEqualSign(line_, "NbGroups", line_no_)) return Outcome::kGoOn;
    double value = 0.0;
    if (!getValue(line_, value, "NbGroups", line_no_)) return bad_number_of_groups();
    const int declared = whole_part(value);
    if (declared < 0 || declared > kMostGroups) return bad_number_of_groups();
    structure_.NbGroups = declared;
    return Outcome::kGoOn;
}

Outcome StructureReader::bad_number_of_groups() {
    file_.close();
    report(Warning, kReporter, kInvalidStructureNbGroups);
    return Outcome::kEndOfLines;
}

Outcome StructureReader::tell_obsolete_label() const {
    *_AOS_ << "\tWarning: Keyword \"DistMatLabel\" is obsolete. Skipping keyword." << std::endl;
    return Outcome::kGoOn;
}

Outcome StructureReader::tell_obsolete_level() const {
    *_AOS_ << "\tWarning: Keyword \"IndividualLevel\" defined on line " << line_no_
           << " is obsolete. Activation of this option is now made through the interface." << std::endl;
    return Outcome::kGoOn;
}

void StructureReader::complete_groups() {
    // The number may have changed behind the first group.
    if (structure_.groups.size() != static_cast<std::size_t>(structure_.NbGroups)) structure_.fit_groups();
}

Outcome StructureReader::take_group() {
    if (structure_.NbGroups == 0) {
        *_AOS_ << "\tError: Unexpected \"Group\" section found on line " << line_no_
               << ". Expected number of group is zero. Check that \"NbGroups\" has "
               << "been previously defined. Aborting reading project." << std::endl;
        report(Error, kReporter, kUnknownNumberOfGroups);
        return Outcome::kFailure;
    }
    complete_groups();
    // One group more than declared ends the section, and nothing is said.
    if (nb_read_ >= structure_.NbGroups) return Outcome::kSuccess;
    if (!checkForPresenceOfEqualSign(line_, "Group", line_no_)) return Outcome::kGoOn;
    structure_.group_sizes[group()] = 0;
    Braces braces;
    Outcome outcome = read_first_line(braces);
    while (outcome == Outcome::kGoOn && !braces.closed && next_line())
        outcome = read_group_line(braces);
    if (outcome != Outcome::kGoOn) return outcome;
    return line_was_too_long(file_) ? Outcome::kEndOfLines : finish_group();
}

Outcome StructureReader::read_first_line(Braces& braces) {
    const std::string_view text = line_.view();
    const std::size_t opening = find_unquoted(text, '{');
    braces.open = opening != std::string_view::npos;
    braces.closed = find_unquoted(text, '}') != std::string_view::npos;
    return read_names(braces.open ? text.substr(opening + 1) : text);
}

Outcome StructureReader::read_group_line(Braces& braces) {
    std::string_view text = line_.view();
    if (holds_heading(text, kMantelHeading)) return Outcome::kSuccess;
    const std::size_t opening = find_unquoted(text, '{');
    const bool opens = opening != std::string_view::npos;
    braces.closed = find_unquoted(text, '}') != std::string_view::npos;
    if (!braces.open && opens) text.remove_prefix(opening + 1);
    braces.open = braces.open || opens;
    if (braces.open) return read_names(text);
    if (!braces.closed) return Outcome::kGoOn;
    *_AOS_ << "\tError: Missing opening brace in Group #" << nb_read_ << ". Aborting reading project"
           << std::endl;
    report(Error, kReporter, kMissingGroupOpeningBrace);
    return Outcome::kFailure;
}

// Takes the names of a line, of which one at least must stand in double quotes.
Outcome StructureReader::read_names(std::string_view text) {
    if (!line_.contains('"')) return Outcome::kGoOn;
    std::istringstream names{std::string(text)};
    my_string name;
    do {
        while (get_qstring(names, name)) {
            const Outcome outcome = place_sample(name);
            if (outcome != Outcome::kGoOn) return outcome;
            name = "";
        }
        // A name that was read all the same must not get lost.
        if (!name.is_null())
            return refuse_sample(name, " stands in single quotes, which hold one character.\n",
                                 kUnknownSampleName);
    } while (pass_over_stray_character(names));
    return Outcome::kGoOn;
}

// A character between the names that can't begin one, such as a comma, must not hide the names
// behind it. False at the end of the names.
bool StructureReader::pass_over_stray_character(std::istream& names) const {
    const int c = names.good() ? names.get() : -1;
    if (c == -1 || c == '}') return false;
    *_AOS_ << "\tWarning: Character '" << static_cast<char>(c) << "' between the sample names on line "
           << line_no_ << " is passed over" << std::endl;
    return true;
}

// Puts the sample of this name into the group under work.
Outcome StructureReader::place_sample(my_string const& name) {
    const auto known = sample_named_.find(std::string(name.view()));
    if (known == sample_named_.end())
        return refuse_sample(name, " has not been defined in the [Samples] section.\n", kUnknownSampleName);
    Population* sample = known->second;
    const auto [place, is_new] = group_of_.try_emplace(sample, nb_read_ + 1);
    if (!is_new) {
        const std::string number = std::to_string(place->second);
        return refuse_sample(name, " has been alredy included in group #" + number + ".\n",
                             kSampleTwiceInGroup);
    }
    structure_.groups[group()].Add(sample);
    ++structure_.group_sizes[group()];
    ++structure_.NbSamples;
    return Outcome::kGoOn;
}

Outcome StructureReader::refuse_sample(my_string const& name, std::string const& reason, int code) const {
    *_AOS_ << "\tError: Sample \"" << name << "\" defined in Group #" << nb_read_ + 1 << " on line "
           << line_no_ << reason << "\tAborting reading project." << std::endl;
    report(Error, kReporter, code);
    return Outcome::kFailure;
}

Outcome StructureReader::finish_group() {
    if (structure_.group_sizes[group()] == 0) {
        *_AOS_ << "\t\tError while exploring structure of Group # " << nb_read_ + 1
               << ". It does not contain any population sample\n"
               << "\t\t\tCheck your [[Structure]] section, for unquoted sample names\n"
               << "\t\tAborting reading project." << std::endl;
        report(Error, kReporter, kGroupWithoutSample);
        return Outcome::kFailure;
    }
    ++nb_read_;
    return Outcome::kGoOn;
}

int StructureReader::judge_number_of_groups() const {
    if (structure_.NbGroups == nb_read_) return 1;
    *_AOS_ << "\tInvalid number of groups defined. " << structure_.NbGroups << "were expected, while "
           << nb_read_ << " have been found!\n"
           << "\tCheck your [[Structure]] section, for missing group or unquoted sample names\n"
           << "\tAborting reading project." << std::endl;
    report(Error, kReporter, kInvalidStructureNbGroups);
    return 0;
}

}  // namespace

int Structure::NewReadStructure(std::ifstream& file, ProfileSettings& profile, Samples& samples, int& line_no,
                                my_string& line, bool& name_seen, bool& nbgroups_seen,
                                bool& individual_level_seen, bool& group_seen) {
    reset();
    ProfileSettings::operator=(profile);
    NbGroupsRead = 0;
    StructureReader reader(*this, file, samples, line_no, line);
    Outcome outcome = Outcome::kGoOn;
    while (outcome == Outcome::kGoOn && reader.next_line()) {
        const my_string upper = upper_copy(line);
        if (holds_heading(line.view(), kMantelHeading)) {
            outcome = Outcome::kSuccess;
        } else if (upper.contains("STRUCTURENAME")) {
            name_seen = true;
            outcome = reader.take_name();
        } else if (upper.contains("NBGROUPS")) {
            nbgroups_seen = true;
            outcome = reader.take_number_of_groups();
        } else if (upper.contains("DISTMATLABEL")) {
            outcome = reader.tell_obsolete_label();
        } else if (upper.contains("INDIVIDUALLEVEL")) {
            individual_level_seen = true;
            outcome = reader.tell_obsolete_level();
        } else if (upper.contains("GROUP")) {
            group_seen = true;
            outcome = reader.take_group();
        }
    }
    if (outcome == Outcome::kFailure || reader.line_too_long()) return 0;
    reader.complete_groups();
    return outcome == Outcome::kSuccess ? 1 : reader.judge_number_of_groups();
}

namespace {

// Adds the samples of the groups of `source` to those of `copy`, each as the first one of its name in
// `target`. Returns: false when there is no such sample, or none at all
bool copy_groups_by_name(const Samples& target, const Structure& source, Structure& copy) {
    std::unordered_map<std::string, Population*> by_name;
    for (Population* sample : target.populations)
        by_name.try_emplace(std::string(sample->name.view()), sample);
    if (by_name.empty()) return false;
    for (std::size_t g = 0; g < source.groups.size(); ++g) {
        for (const Population* sample : source.groups[g]) {
            const auto match = by_name.find(std::string(sample->name.view()));
            if (match == by_name.end()) return false;
            copy.groups[g].Add(match->second);
        }
    }
    return true;
}

}  // namespace

int Structure::build_one_loci_str(Samples* one_locus_samples, Structure* source) {
    ProfileSettings::operator=(*one_locus_samples);
    StructureName = source->StructureName;
    NbSamples = source->NbSamples;
    NbGroups = source->NbGroups;
    allocate_groups();
    group_sizes = source->group_sizes;
    if (copy_groups_by_name(*one_locus_samples, *source, *this)) return 1;
    *_AOS_ << "\tStructure::build_one_loci_str(): impossible to reproduce structure" << std::endl;
    return 0;
}

}  // namespace mnd
