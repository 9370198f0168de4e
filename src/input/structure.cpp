#include "input/structure.h"

#include <cctype>
#include <ostream>
#include <sstream>
#include <string>

#include "foundation/escape.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/keyword_reader.h"
#include "model/population.h"

namespace mnd {

std::int32_t NbGroupsRead = 0;

namespace {

// Room of a fresh group, and its growth.
constexpr long kGroupCapacity = 11;
constexpr long kGroupGrowth = 10;

constexpr char kExploreContent[] = "Structure::explore_content()";

int refuse(const char* reader, int code) {
    report(Error, reader, code);
    return 0;
}

// Consumes up to and with the next c outside of comments; false at the end of the stream.
bool go_behind(std::istream& is, char c) {
    for (int next = peek_beyond_comments(is); next != -1; next = peek_beyond_comments(is)) {
        is.get();
        if (next == c) return true;
    }
    return false;
}

// Consumes up to and with a "}" that comes before the next letter or digit; false without it.
bool go_behind_closing_brace(std::istream& is) {
    constexpr int kAscii = 0x80;
    for (int next = peek_beyond_comments(is); next != -1; next = peek_beyond_comments(is)) {
        if (next < kAscii && std::isalnum(next) != 0) return false;
        is.get();
        if (next == '}') return true;
    }
    return false;
}

}  // namespace

Structure::Structure() = default;

Structure::Structure(ProfileSettings const& profile) {
    initialize(&profile);
}

Structure::Structure(const Structure& other) = default;

// Groups are copied in place where their number is the same.
Structure& Structure::operator=(const Structure& other) = default;

Structure::~Structure() = default;

void Structure::initialize(ProfileSettings const* profile) {
    reset();
    if (profile == nullptr) return;
    ProfileSettings::operator=(*profile);
    NbGroups = profile->NbGroups;
}

void Structure::reset() {
    groups.clear();
    group_sizes.clear();
    NbSamples = 0;
    NbGroups = 0;
}

void Structure::allocate_groups() {
    const auto size = static_cast<std::size_t>(NbGroups > 0 ? NbGroups : 0);
    MY_TIArrayAsVector<Population> empty_group(kGroupCapacity, kGroupGrowth);
    empty_group.owns_elements = 0;
    groups.assign(size, empty_group);
    group_sizes.assign(size, 0);
}

int Structure::has_population(const Population* p) const {
    for (const auto& group : groups) {
        for (const Population* member : group) {
            if (member == p) return 1;
        }
    }
    return 0;
}

int Structure::explore(std::ifstream& is, char const* out_name) {
    std::ofstream out(out_name);
    reset();
    NbGroupsRead = 0;
    my_string keyword;
    while (get_next_ident(is, keyword)) {
        if (!is_identifier(keyword)) return refuse(kExploreContent, kInvalidStructureKeyword);
        if (explore_content(is, keyword, out) == 0) {
            const std::string origin = "Structure::explore(\"" + std::string(keyword.view()) + "\")";
            return refuse(origin.c_str(), kInvalidKeywordValue);
        }
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
    long long declared = 0;
    if (!(is >> declared)) return refuse(kExploreContent, kInvalidStructureNbGroups);
    if (declared < 0 || declared > kMaxExploredGroups) {
        // Told, but reading goes on with the number as it was.
        report(Error, kExploreContent, kInvalidStructureNbGroups);
    } else {
        NbGroups = static_cast<std::int32_t>(declared);
    }
    out << NbGroups << '\n';
    return 1;
}

int Structure::explore_group(std::ifstream& is, std::ostream& out) {
    if (NbGroups == 0) return refuse(kExploreContent, kUnknownNumberOfGroups);
    if (!go_behind(is, '{')) return refuse(kExploreContent, kMissingGroupOpeningBrace);
    const bool surplus = NbGroupsRead >= NbGroups;
    if (surplus) {
        go_behind(is, '}');
        return 1;
    }
    out << "{\n";
    my_string sample;
    while (peek_beyond_comments(is) != '}' && get_qstring(is, sample))
        out << sample << '\n';
    // Kept on purpose: this report names no function.
    // Test: StructureExplore.MissingClosingBraceNamesBuf
    if (!go_behind_closing_brace(is)) return refuse("buf", kMissingGroupClosingBrace);
    out << "}\n";
    ++NbGroupsRead;
    return 1;
}

void Structure::print_structure(std::ostream& document) const {
    const std::string line(65, '=');
    std::ostringstream section;
    section << *this;
    document << '\n'
             << line << "\n  AMOVA ANALYSIS\n"
             << line << "\n\n"
             << "\n---------------------------\n"
             << "Genetic structure to test :\n"
             << "---------------------------\n\n"
             << "No. of Groups = " << NbGroups << "\n\n"
             << escape_text(section.str()) << "---------------------------\n"
             << '\n';
}

std::ostream& operator<<(std::ostream& os, Structure const& structure) {
    if (structure.NbGroups == 0) return os;
    os << "\n\t[[Structure]]\n\n"
       << "\t\tStructureName = \"" << structure.StructureName << "\"\n"
       << "\t\tNbGroups = " << structure.NbGroups << '\n';
    int number = 0;
    for (const auto& group : structure.groups) {
        os << "\t#Group" << ++number << '\n' << "\t\tGroup={\n\t\t";
        for (const Population* sample : group) {
            if (sample != nullptr) os << '"' << sample->name << "\"\n\t\t";
        }
        os << "}\n" << '\n';
    }
    return os;
}

}  // namespace mnd
