// Minimum spanning tree of a distance matrix, and the links of equal length that extend it into
// a minimum spanning network.
#pragma once

#include <deque>
#include <ostream>
#include <string>
#include <vector>

#include "foundation/arrays.h"
#include "foundation/my_string.h"
#include "foundation/rect_mat.h"
#include "model/haplotypes.h"

namespace mnd {

// A node of the binary tree of links: each inner node is one link, the leaves below it are the
// OTUs that the link joins.
struct TListElem {
    TListElem(TListElem* parent_node, int otu)
        : parent(parent_node), OTU(otu), depth(parent_node == nullptr ? 0 : parent_node->depth + 1) {}

    bool is_leaf() const { return left == nullptr; }

    TListElem* parent;           // not owned; null at the root
    TListElem* left = nullptr;   // not owned: the first OTU of the link; null in a leaf
    TListElem* right = nullptr;  // not owned: the OTU that the link added; null in a leaf
    int OTU;                     // number of the OTU, from 0
    double length = 0.0;         // of the link, in an inner node
    int depth;                   // nodes above this one
};

// The tree and the network of one matrix.
class TMinSpaNet {
public:
    // `distances` must outlive this; only its lower triangle is read, over as many OTUs as the
    // smaller of its two dimensions.
    explicit TMinSpaNet(const RectMat* distances);

    // Finds the links. Among equally near OTUs the one at the later place of the search order is
    // linked first.
    // Reports:  a warning when a link finds no place in the tree
    // Cost:     O(n^2), and O(depth) for each alternative link
    // Source:   Prim 1957, Bell System Technical Journal 36:1389-1401 (tree); alternatives: a
    //           link outside the tree that is as long as one on the way between its ends
    void MakeNetwork();

    // The table of the links of the tree, by numbers from 1.
    void PrintNetwork(std::ostream& out) const;

    // The tree as a NEXUS block; a leaf is the name of its haplotype.
    //   title   name of the tree; its blanks are left out
    void printMST(std::ostream& out, const char* title, const Haplo_DB& db) const;
    void printMST(std::ostream& out, const char* title, const MY_TIArrayAsVector<PHaploDef>& list) const;

    // True when a link of exactly this length stands on the way between two OTUs in the tree.
    bool CheckGivenLinkLength(int a, int b, double length_sought) const;

    int number_of_OTUs() const { return n_; }

    std::vector<int> from;                       // first OTU of each link of the tree
    std::vector<int> to;                         // OTU that the link adds
    std::vector<double> length;                  // lengths of the links
    std::vector<std::vector<int>> alternatives;  // per OTU, ascending; a pair stands once
    const RectMat* matrix;                       // not owned
    TListElem* root = nullptr;                   // not owned: first of the nodes below

private:
    double distance(int i, int j) const { return i > j ? matrix->data[i][j] : matrix->data[j][i]; }
    void start();
    bool AddSon(int from_otu, int to_otu, double link_length);
    void find_links(std::vector<std::vector<bool>>& is_alternative);
    void note_alternatives(int otu, int nearest, double link_length, std::vector<bool>& row) const;
    void settle_alternatives(std::vector<std::vector<bool>>& is_alternative);
    void print_tree_structure(std::ostream& out, const std::vector<std::string>& names) const;
    void print_nexus(std::ostream& out, const char* title, const std::vector<std::string>& names) const;

    int n_ = 0;
    std::deque<TListElem> nodes_;      // all nodes; a deque, since nodes point to each other
    std::vector<TListElem*> leaf_of_;  // not owned: per OTU, its leaf; null while it is not linked
};

// The block of the result document on one matrix: the tree as a table with the names of the
// haplotypes, in NEXUS notation, and the alternative links.
//   xml_tag   element around the NEXUS notation under XML output; empty for none
//   title     name of the NEXUS tree
void print_spanning_network(std::ostream& out, const RectMat& distances, const Haplo_DB& db,
                            const char* title, const char* xml_tag);
void print_spanning_network(std::ostream& out, const RectMat& distances,
                            const MY_TIArrayAsVector<PHaploDef>& list, const char* title,
                            const char* xml_tag);

}  // namespace mnd
