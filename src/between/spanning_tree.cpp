#include "between/spanning_tree.h"

#include <algorithm>
#include <iomanip>
#include <numeric>
#include <utility>

#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "results/citations.h"
#include "results/xml_tags.h"

namespace mnd {

namespace {

constexpr double kFarthest = 3.4028234663852886e+38;

std::string document_name(const HaploDef* definition) {
    return definition == nullptr ? std::string() : escape_text(definition->name.view());
}

std::vector<std::string> names_of(const Haplo_DB& db) {
    std::vector<std::string> names;
    for (const HaploDef* definition : db.list)
        names.push_back(document_name(definition));
    return names;
}

std::vector<std::string> names_of(const MY_TIArrayAsVector<PHaploDef>& list) {
    std::vector<std::string> names;
    for (const PHaploDef* entry : list)
        names.push_back(document_name(entry == nullptr ? nullptr : entry->def));
    return names;
}

// The name of an OTU; its number from 1 where the list has none.
std::string name_of(const std::vector<std::string>& names, int otu) {
    const auto index = static_cast<std::size_t>(otu);
    return index < names.size() ? names[index] : std::to_string(otu + 1);
}

std::string without_blanks(const char* title) {
    my_string text(title);
    text.remove_blanks();
    return text.c_str();
}

void print_links(std::ostream& out, const TMinSpaNet& network, const std::vector<std::string>& names) {
    const FormatGuard guard(out);
    constexpr int kNameWidth = 20;
    out << std::right << std::setw(kNameWidth) << "OTU 1  " << std::setw(kNameWidth) << "OTU 2  "
        << "  Connection length\n";
    out << std::fixed << std::setprecision(5);
    for (std::size_t s = 0; s < network.length.size(); ++s) {
        out << std::setw(kNameWidth) << name_of(names, network.from[s]) << std::setw(kNameWidth)
            << name_of(names, network.to[s]) << std::setw(kNameWidth) << network.length[s] << '\n';
    }
}

void print_alternatives(std::ostream& out, const TMinSpaNet& network, const std::vector<std::string>& names) {
    const FormatGuard guard(out);
    constexpr int kNameWidth = 20;
    out << "\nAlternative connections between OTUs\n"
        << "to extend the minimum spanning tree into a MINIMUM SPANNING NETWORK\n\n"
        << std::right << std::setw(kNameWidth) << "OTU"
        << "  List of alternative links\n"
        << std::fixed << std::setprecision(5);
    for (int i = 0; i < network.number_of_OTUs(); ++i) {
        const std::vector<int>& links = network.alternatives[static_cast<std::size_t>(i)];
        out << std::setw(kNameWidth) << name_of(names, i) << (links.empty() ? "" : " ");
        for (const int j : links)
            out << ' ' << name_of(names, j) << " (" << network.matrix->data[std::max(i, j)][std::min(i, j)]
                << ')';
        out << '\n';
    }
}

template <typename List>
void print_network_block(std::ostream& out, const RectMat& distances, const List& list, const char* title,
                         const char* xml_tag) {
    TMinSpaNet network(&distances);
    network.MakeNetwork();
    const std::vector<std::string> names = names_of(list);
    const std::string heading =
        "MINIMUM SPANNING TREE between " + std::to_string(network.number_of_OTUs()) + " OTUs";
    out << '\n' << heading << '\n' << std::string(heading.size(), '=') << "\n\n";
    References(out, Citation::Prim_1957);
    out << '\n';
    print_links(out, network, names);
    const std::string section = "NEXUS notation for MST";
    out << '\n' << section << '\n' << std::string(section.size(), '-') << "\n\n";
    const TXmlTag tag{my_string(xml_tag)};
    if (*xml_tag != 0) open_table(out, tag);
    network.printMST(out, title, list);
    if (*xml_tag != 0) close_table(out, tag);
    print_alternatives(out, network, names);
}

}  // namespace

TMinSpaNet::TMinSpaNet(const RectMat* distances)
    : matrix(distances), n_(std::max(0, std::min(distances->rows, distances->cols))) {}

void TMinSpaNet::start() {
    const auto n = static_cast<std::size_t>(n_);
    from.clear();
    to.clear();
    length.clear();
    alternatives.assign(n, {});
    nodes_.clear();
    leaf_of_.assign(n, nullptr);
    root = nullptr;
    if (n_ == 0) return;
    root = &nodes_.emplace_back(nullptr, 0);
    leaf_of_[0] = root;
}

// Splits the leaf of an OTU into two: the OTU itself and the one that is linked to it.
// Returns: false when that OTU is not in the tree
bool TMinSpaNet::AddSon(int from_otu, int to_otu, double link_length) {
    TListElem* const link = leaf_of_[static_cast<std::size_t>(from_otu)];
    if (link == nullptr) return false;
    link->left = &nodes_.emplace_back(link, from_otu);
    link->right = &nodes_.emplace_back(link, to_otu);
    link->length = link_length;
    leaf_of_[static_cast<std::size_t>(from_otu)] = link->left;
    leaf_of_[static_cast<std::size_t>(to_otu)] = link->right;
    return true;
}

// Marks the OTUs that are exactly as far from `otu` as the one it is linked to, linked or not.
void TMinSpaNet::note_alternatives(int otu, int nearest, double link_length, std::vector<bool>& row) const {
    for (int j = 0; j < n_; ++j) {
        if (j == nearest || j == otu) continue;
        if (distance(otu, j) == link_length) row[static_cast<std::size_t>(j)] = true;
    }
}

void TMinSpaNet::find_links(std::vector<std::vector<bool>>& is_alternative) {
    const auto n = static_cast<std::size_t>(n_);
    std::vector<double> best(n, kFarthest);
    std::vector<int> nearest(n, 0);
    std::vector<int> order(n);
    std::iota(order.begin(), order.end(), 0);
    for (std::size_t s = 0; s + 1 < n; ++s) {
        const int last = order[s];
        std::size_t chosen = s + 1;
        for (std::size_t p = s + 1; p < n; ++p) {
            const auto q = static_cast<std::size_t>(order[p]);
            const double d = distance(order[p], last);
            if (d < best[q]) {
                best[q] = d;
                nearest[q] = last;
            }
            if (best[q] <= best[static_cast<std::size_t>(order[chosen])]) chosen = p;
        }
        std::swap(order[s + 1], order[chosen]);
        const auto added = static_cast<std::size_t>(order[s + 1]);
        to.push_back(order[s + 1]);
        from.push_back(nearest[added]);
        length.push_back(best[added]);
        if (!AddSon(from[s], to[s], length[s]))
            report(Warning, "TMinSpaNet::MakeNetwork()", kNoConnectionsInSpanningTree);
        note_alternatives(to[s], from[s], length[s], is_alternative[added]);
    }
}

// Drops the links of the tree, keeps each pair once (with its lower number where both OTUs list
// it), and drops what is longer than every link that it would go round.
void TMinSpaNet::settle_alternatives(std::vector<std::vector<bool>>& is_alternative) {
    for (std::size_t s = 0; s < to.size(); ++s) {
        const auto a = static_cast<std::size_t>(from[s]);
        const auto b = static_cast<std::size_t>(to[s]);
        is_alternative[a][b] = false;
        is_alternative[b][a] = false;
    }
    for (int i = 0; i < n_; ++i) {
        const auto row = static_cast<std::size_t>(i);
        for (int j = 0; j < n_; ++j) {
            const auto column = static_cast<std::size_t>(j);
            if (!is_alternative[row][column]) continue;
            if (j < i && is_alternative[column][row]) continue;
            if (CheckGivenLinkLength(i, j, distance(i, j))) alternatives[row].push_back(j);
        }
    }
}

void TMinSpaNet::MakeNetwork() {
    start();
    std::vector<std::vector<bool>> is_alternative(static_cast<std::size_t>(n_),
                                                  std::vector<bool>(static_cast<std::size_t>(n_), false));
    find_links(is_alternative);
    settle_alternatives(is_alternative);
}

bool TMinSpaNet::CheckGivenLinkLength(int a, int b, double length_sought) const {
    const TListElem* x = leaf_of_[static_cast<std::size_t>(a)];
    const TListElem* y = leaf_of_[static_cast<std::size_t>(b)];
    if (x == nullptr || y == nullptr) return false;
    // The way climbs from both leaves to the first node that they share, which counts too.
    while (x != y) {
        const TListElem*& lower = x->depth >= y->depth ? x : y;
        lower = lower->parent;
        if (lower->length == length_sought) return true;
    }
    return false;
}

void TMinSpaNet::PrintNetwork(std::ostream& out) const {
    const FormatGuard guard(out);
    out << "\n\nMinimum spanning tree between " << n_ << " OTUs"
        << "\n\n     OTU 1     OTU 2   Connection length   Original Distance"
        << "\n     =====     =====   =================   =================\n"
        << std::fixed << std::right << std::setprecision(5);
    for (std::size_t s = 0; s < length.size(); ++s) {
        out << std::setw(10) << from[s] + 1 << std::setw(10) << to[s] + 1 << std::setw(20) << length[s]
            << std::setw(20) << distance(from[s], to[s]) << '\n';
    }
}

// Walks the tree with a stack of its own, since its depth may be the number of OTUs.
void TMinSpaNet::print_tree_structure(std::ostream& out, const std::vector<std::string>& names) const {
    struct Visit {
        const TListElem* node;
        int children_done;
    };
    std::vector<Visit> stack;
    if (root != nullptr) stack.push_back({root, 0});
    while (!stack.empty()) {
        Visit& visit = stack.back();
        const TListElem* node = visit.node;
        if (node->is_leaf()) {
            out << name_of(names, node->OTU) << ":0";
            stack.pop_back();
            continue;
        }
        const int child = visit.children_done++;
        if (child < 2) {
            out << (child == 0 ? "(" : ", ");
            stack.push_back({child == 0 ? node->left : node->right, 0});
            continue;
        }
        out << ')';
        if (node->parent != nullptr) out << ':' << node->parent->length;
        stack.pop_back();
    }
}

void TMinSpaNet::print_nexus(std::ostream& out, const char* title,
                             const std::vector<std::string>& names) const {
    const FormatGuard guard(out);
    out << "#NEXUS\n"
        << "begin trees;  [NEXUS Treefile section generated by Mendrake]\n"
        << "tree " << escape_text(without_blanks(title)) << "_MST = [&amp;U] " << std::fixed
        << std::setprecision(5);
    print_tree_structure(out, names);
    out << ";\n"
        << "end;\n";
}

void TMinSpaNet::printMST(std::ostream& out, const char* title, const Haplo_DB& db) const {
    print_nexus(out, title, names_of(db));
}

void TMinSpaNet::printMST(std::ostream& out, const char* title,
                          const MY_TIArrayAsVector<PHaploDef>& list) const {
    print_nexus(out, title, names_of(list));
}

void print_spanning_network(std::ostream& out, const RectMat& distances, const Haplo_DB& db,
                            const char* title, const char* xml_tag) {
    print_network_block(out, distances, db, title, xml_tag);
}

void print_spanning_network(std::ostream& out, const RectMat& distances,
                            const MY_TIArrayAsVector<PHaploDef>& list, const char* title,
                            const char* xml_tag) {
    print_network_block(out, distances, list, title, xml_tag);
}

}  // namespace mnd
