// Reading and writing of the [[HaplotypeDefinition]] section.
#include <algorithm>
#include <fstream>
#include <istream>
#include <memory>
#include <ostream>
#include <string>
#include <string_view>

#include "foundation/message_codes.h"
#include "input/data_line.h"
#include "input/keyword_reader.h"
#include "model/haplotypes.h"
#include "run/errors.h"
#include "run/process.h"

namespace mnd {

namespace {

constexpr const char* kReadData = "HaploDef::read_data()";
constexpr const char* kListReader = "Haplo_DB::NewReadHaplotypeList()";
constexpr char kClosingBrace = '}';

// Words that begin another section, and so end a list that lacks its brace.
constexpr std::string_view kNextSections[] = {"DISTANCEMATRIX", "[SAMPLES]", "[STRUCTURE]", "[MANTEL]"};

bool begins_next_section(std::string_view line) {
    for (const std::string_view word : kNextSections) {
        if (holds_word(line, word)) return true;
    }
    return false;
}

bool is_letter(char c) {
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
}
bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

// Characters that data of a type consist of, and the report of any other one.
struct DataAlphabet {
    bool (*accepts)(char c);
    int code;
};

const DataAlphabet* alphabet_of(int data_type) {
    static constexpr DataAlphabet kDna = {[](char c) { return is_letter(c) || c == '-'; }, kInvalidDNAData};
    static constexpr DataAlphabet kRflp = {[](char c) { return c == '0' || c == '1' || c == '-'; },
                                           kInvalidRFLPData};
    static constexpr DataAlphabet kMicrosat = {[](char c) { return is_digit(c); }, kInvalidMICROSATData};
    switch (data_type) {
        case DNA:
            return &kDna;
        case RFLP:
            return &kRflp;
        case MICROSAT:
            return &kMicrosat;
        default:
            return nullptr;
    }
}

// Keeps the characters that belong to data of this alphabet, up to a number sign or a line
// feed; blanks are passed over. False after a report when another one stands there.
bool take_characters(std::string_view text, const DataAlphabet& alphabet, const ProfileSettings& profile,
                     std::string& kept) {
    for (const char c : text) {
        const bool is_mark =
            (profile.LocusSeparator != 0 && c == profile.LocusSeparator) || c == profile.MissingData;
        if (is_mark || alphabet.accepts(c)) {
            kept += c;
        } else if (c == '#' || c == '\n') {
            return true;
        } else if (c != ' ') {
            E.error(Error, kReadData, alphabet.code);
            return false;
        }
    }
    return true;
}

void trim_end(std::string& text) {
    if (text.empty() || text.back() != ' ') return;
    const std::size_t last = text.find_last_not_of(" \t");
    text.erase(last == std::string::npos ? 0 : last + 1);
}

// The content that a text gives for these data; false if it is not usable.
bool parse_content(std::string_view text, const ProfileSettings& profile, my_string& content) {
    std::string kept;
    bool usable = true;
    if (const DataAlphabet* alphabet = alphabet_of(profile.DataType)) {
        usable = take_characters(text, *alphabet, profile, kept) && !kept.empty();
    } else if (profile.DataType != FREQUENCY) {
        kept = text;
    }
    trim_end(kept);
    content = kept.c_str();
    return usable;
}

// Empties the list and keeps its name.
void flush_list(Haplo_DB& db) {
    const my_string name = db.name;
    db.reset();
    db.name = name;
}

// Reads the definitions of one list, line by line.
class ListReader {
public:
    ListReader(Haplo_DB& db, ProfileSettings& profile, const int& line_no)
        : db_(db), profile_(profile), line_no_(line_no) {}

    // Takes one definition; false after a report.
    bool take(std::string_view text) {
        DataLine line(text);
        const my_string name(std::string(line.next()).c_str());
        if (name.is_null()) return true;
        if (db_.find_by_name(name) != nullptr) return refuse_name(name);
        const JoinedTokens data = join_tokens(line, profile_.LocusSeparator, LeadingSeparator::kNo);
        if (!check_loci(name, data.loci(profile_.LocusSeparator))) return false;
        auto definition = std::make_unique<HaploDef>(name);
        my_string data_text(data.text.c_str());
        if (!definition->read_data(data_text, profile_)) return refuse_data();
        db_.append(definition.release());
        return true;
    }

private:
    bool refuse_name(const my_string& name) {
        flush_list(db_);
        *_AOS_ << "\tHaplotype \"" << name << "\" listed on line " << line_no_
               << " is already defined previously, aborting reading procedure...\n";
        E.error(Error, kListReader, kHaplotypeAlreadyDefined);
        return false;
    }

    bool check_loci(const my_string& name, int loci) {
        if (expected_loci_ < 0) expected_loci_ = loci;
        if (loci == expected_loci_) return true;
        *_AOS_ << "\tNumber of loci for haplotype \"" << name << "\" is different (" << loci
               << ") from that previously defined (" << expected_loci_ << ") on line " << line_no_ << '\n';
        E.error(Error, "Population::NewReadHaplotypeList()", kPhenotypesDifferInLoci);
        return false;
    }

    bool refuse_data() {
        flush_list(db_);
        *_AOS_ << "\tUnable to read haplotype definition on line " << line_no_
               << ", aborting reading procedure\n";
        E.error(Error, kListReader, kUnreadableHaplotypeData);
        return false;
    }

    Haplo_DB& db_;
    ProfileSettings& profile_;
    const int& line_no_;
    int expected_loci_ = -1;
};

int refuse_list() {
    *_AOS_ << "\tUnable to read haplotype list, aborting reading procedure\n";
    E.error(Error, kListReader, kHaplotypeListReadError);
    return 0;
}

// A report whose source names a haplotype.
void report_haplotype(const my_string& name, int code) {
    const std::string source = "Haplo_DB::read_haplotype() (\"" + std::string(name.view()) + "\")";
    E.error(Error, source.c_str(), code);
}

bool list_failure(int code) {
    E.error(Error, "Haplo_DB::read_id_content()", code);
    return false;
}

bool read_braced_list(std::ifstream& file, Haplo_DB& db) {
    file.get();
    if (db.read_haplotype(file) == 0 || peek_data(file) != kClosingBrace) {
        return list_failure(kHaplotypeListReadError);
    }
    file.get();
    return true;
}

bool read_external_list(std::ifstream& file, Haplo_DB& db) {
    my_string word;
    const bool has_word = get_qstring(file, word);
    word.Upper();
    if (!has_word || !(word == "EXTERN")) return list_failure(kInvalidHaplListKeyword);
    my_string file_name;
    if (!get_qstring(file, file_name)) return list_failure(kInvalidHaplListKeyword);
    E.error(Info, "Haplo_DB::read_id_content()", kReadingExternalHaplotypeList);
    char path[kPathBuffer];
    db.build_ext_name(path, file_name.c_str());
    std::ifstream external(path);
    if (!external.is_open()) return list_failure(kCannotOpenExternalHaplotypes);
    if (db.read_haplotype(external) == 0) return list_failure(kExternalHaplotypesReadError);
    return true;
}

}  // namespace

bool HaploDef::read_data(my_string& text, ProfileSettings& profile) {
    return parse_content(text.view(), profile, content);
}

bool HaploDef::read_data(std::istream& in, ProfileSettings& profile) {
    if (in.fail()) return false;
    if (profile.DataType == FREQUENCY) {
        content = "";
        peek_data(in);
        return true;
    }
    std::string line;
    std::getline(in, line);
    // TABs and a carriage return stand where a user would write a blank or nothing.
    for (char& c : line) {
        if ((c == '\t' || c == '\r') && c != profile.LocusSeparator) c = ' ';
    }
    return parse_content(line, profile, content);
}

int Haplo_DB::NewReadHaplotypeList(std::istream& in, ProfileSettings& profile, bool external, int& line_no) {
    if (!in.good()) return refuse_list();
    ListReader reader(*this, profile, line_no);
    my_string line;
    bool closed = false;
    while (!closed && read_project_line(in, line, line_no)) {
        std::string_view text = line.view();
        text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
        if (begins_next_section(text)) break;
        const std::size_t brace = text.find(kClosingBrace);
        closed = brace != std::string_view::npos;
        if (brace == 0) break;
        // Kept on purpose: a brace behind data stays in the line and becomes part of its last token.
        // Test: HaplotypeSection.BraceBehindDataBecomesPartOfIt
        if (!reader.take(closed ? text.substr(0, brace + 1) : text)) return 0;
    }
    if (closed) return 1;
    if (in.bad() || line_was_too_long(in)) return refuse_list();  // a folder is bad
    if (external) return 1;
    *_AOS_ << "\tMissing closing brace in Haplotype definition list, aborting reading procedure\n";
    E.error(Error, "Population::New_read_gametic_data()", kMissingSampleDataClosingBrace);
    return 0;
}

bool Haplo_DB::open(std::ifstream& file, ProfileSettings const& profile) {
    ProfileSettings::operator=(profile);
    flush_list(*this);
    return get_settings(file);
}

bool Haplo_DB::get_settings(std::ifstream& file) {
    my_string ident;
    while (get_next_ident(file, ident)) {
        if (is_identifier(ident) && !read_id_content(file, ident)) return false;
    }
    return true;
}

bool Haplo_DB::read_id_content(std::ifstream& file, my_string id) {
    if (id == "hapllistname") return get_qstring(file, name) || list_failure(kBadHaplListName);
    if (id == "hapllist") {
        const int c = peek_data(file);
        if (c == '{') return read_braced_list(file, *this);
        const bool is_word =
            c != kEndOfStream && (is_letter(static_cast<char>(c)) || is_digit(static_cast<char>(c)));
        if (is_word || c == '"') return read_external_list(file, *this);
        return list_failure(kMissingBracesAfterHaplList);
    }
    if (!read_profile_id_content(file, id)) {
        E.error(Warning, "Haplo_DB::read_id_content()", kInvalidHaplotypeDefinitionKeyword);
    }
    return true;
}

int Haplo_DB::read_haplotype(std::ifstream& file) {
    for (;;) {
        my_string haplotype_name;
        const int c = peek_data(file);
        if (c == kEndOfStream || c == kClosingBrace || !get_qstring(file, haplotype_name)) return 1;
        if (find_by_name(haplotype_name) != nullptr) {
            flush_list(*this);
            report_haplotype(haplotype_name, kHaplotypeAlreadyDefined);
            return 0;
        }
        if (test_end_of_line(file)) {
            flush_list(*this);
            report_haplotype(haplotype_name, kMissingHaplotypeData);
            return 0;
        }
        auto definition = std::make_unique<HaploDef>(haplotype_name);
        if (!definition->read_data(file, *this)) {
            flush_list(*this);
            report_haplotype(haplotype_name, kUnreadableHaplotypeData);
            return 0;
        }
        append(definition.release());
    }
}

std::ostream& operator<<(std::ostream& out, Haplo_DB& db) {
    if (db.list.count == 0) return out;
    out << "\n\t[[HaplotypeDefinition]]\n\n"
        << "\t\tHaplListName=";
    // Kept on purpose: no line end behind the generated name.
    // Test: HaplotypeSection.GeneratedNameHasNoLineEnd
    if (db.name == "UNKNOWN") {
        out << "\"generated by mendrake\"";
    } else {
        out << '"' << db.name << "\"\n";
    }
    out << "\t\tHaplList={\n";
    for (const HaploDef* definition : db.list)
        out << *definition << '\n';
    return out << "\t\t}\n" << std::endl;
}

}  // namespace mnd
