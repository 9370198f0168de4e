#include "between/spanning_tree.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>
#include <random>
#include <set>
#include <sstream>
#include <utility>
#include <vector>

#include "results/xml_tags.h"

namespace mnd {
namespace {

// A symmetric matrix from the cells below the diagonal, row by row.
void fill(RectMat& matrix, const std::vector<double>& lower) {
    std::size_t next = 0;
    for (int i = 1; i < matrix.rows; ++i) {
        for (int j = 0; j < i; ++j) {
            matrix.data[i][j] = matrix.data[j][i] = lower[next];
            ++next;
        }
    }
}

// Whole distances from 1 to `largest`, so that ties abound.
void fill_at_random(RectMat& matrix, int largest, std::mt19937& generator) {
    std::uniform_int_distribution<int> draw(1, largest);
    std::vector<double> lower(static_cast<std::size_t>(matrix.rows * (matrix.rows - 1) / 2));
    for (double& d : lower)
        d = draw(generator);
    fill(matrix, lower);
}

// Length of the minimum spanning tree by the method of Kruskal 1956.
double kruskal_length(const RectMat& matrix) {
    struct Edge {
        double d;
        int i, j;
    };
    std::vector<Edge> edges;
    for (int i = 1; i < matrix.rows; ++i)
        for (int j = 0; j < i; ++j)
            edges.push_back({matrix.data[i][j], i, j});
    std::sort(edges.begin(), edges.end(), [](const Edge& a, const Edge& b) { return a.d < b.d; });
    std::vector<int> part(static_cast<std::size_t>(matrix.rows));
    std::iota(part.begin(), part.end(), 0);
    double total = 0.0;
    for (const Edge& edge : edges) {
        const int a = part[static_cast<std::size_t>(edge.i)];
        const int b = part[static_cast<std::size_t>(edge.j)];
        if (a == b) continue;
        std::replace(part.begin(), part.end(), a, b);
        total += edge.d;
    }
    return total;
}

// Whether some minimum spanning tree holds the edge: no way of strictly shorter edges joins its
// ends.
bool is_in_some_tree(const RectMat& matrix, int a, int b) {
    const double d = matrix.data[a][b];
    std::set<int> reached = {a};
    for (bool grows = true; grows;) {
        grows = false;
        for (const int i : std::set<int>(reached)) {
            for (int j = 0; j < matrix.rows; ++j) {
                if (j != i && matrix.data[i][j] < d && reached.insert(j).second) grows = true;
            }
        }
    }
    return reached.count(b) == 0;
}

std::set<std::pair<int, int>> listed_alternatives(const TMinSpaNet& network) {
    std::set<std::pair<int, int>> pairs;
    for (int i = 0; i < network.number_of_OTUs(); ++i) {
        for (const int j : network.alternatives[static_cast<std::size_t>(i)]) {
            const bool is_new = pairs.insert(std::minmax(i, j)).second;
            EXPECT_TRUE(is_new) << "a pair stands once: " << i << " " << j;
        }
    }
    return pairs;
}

TEST(TMinSpaNet, ThreeEquallyDistantOTUsHaveTwoLinksAndOneAlternative) {
    RectMat matrix(3, 3);
    fill(matrix, {1, 1, 1});
    TMinSpaNet network(&matrix);
    network.MakeNetwork();
    ASSERT_EQ(network.to.size(), 2u);
    // Ties: the later place of the order (0, 1, 2) wins, so OTU 2 is linked before OTU 1.
    EXPECT_EQ(network.to, (std::vector<int>{2, 1}));
    EXPECT_EQ(network.from, (std::vector<int>{0, 0}));
    EXPECT_EQ(listed_alternatives(network), (std::set<std::pair<int, int>>{{1, 2}}));
}

TEST(TMinSpaNet, ThirdSideThatIsLongerIsNoAlternative) {
    RectMat matrix(3, 3);
    fill(matrix, {1, 2, 1});  // 0-1: 1, 0-2: 2, 1-2: 1
    TMinSpaNet network(&matrix);
    network.MakeNetwork();
    EXPECT_TRUE(listed_alternatives(network).empty());
    EXPECT_EQ(network.from, (std::vector<int>{0, 1}));
    EXPECT_EQ(network.to, (std::vector<int>{1, 2}));
}

TEST(TMinSpaNet, OneOTUHasNoLink) {
    RectMat matrix(1, 1);
    TMinSpaNet network(&matrix);
    network.MakeNetwork();
    EXPECT_TRUE(network.to.empty());
    std::ostringstream out;
    network.PrintNetwork(out);
    EXPECT_EQ(out.str(),
              "\n\nMinimum spanning tree between 1 OTUs"
              "\n\n     OTU 1     OTU 2   Connection length   Original Distance"
              "\n     =====     =====   =================   =================\n");
}

TEST(TMinSpaNet, SmallerDimensionCounts) {
    RectMat matrix(2, 5);
    matrix.data[1][0] = 3.0;
    TMinSpaNet network(&matrix);
    network.MakeNetwork();
    EXPECT_EQ(network.number_of_OTUs(), 2);
    EXPECT_EQ(network.length, std::vector<double>{3.0});
}

TEST(TMinSpaNet, TreeIsAsShortAsKruskals) {
    std::mt19937 generator(7);
    for (int round = 0; round < 200; ++round) {
        const int n = 2 + round % 12;
        RectMat matrix(n, n);
        fill_at_random(matrix, 1 + round % 9, generator);
        TMinSpaNet network(&matrix);
        network.MakeNetwork();
        EXPECT_EQ(std::accumulate(network.length.begin(), network.length.end(), 0.0), kruskal_length(matrix));
        std::set<int> linked = {0};
        for (std::size_t s = 0; s < network.to.size(); ++s) {
            EXPECT_EQ(linked.count(network.from[s]), 1u);
            EXPECT_TRUE(linked.insert(network.to[s]).second);
            EXPECT_EQ(network.length[s], matrix.data[network.from[s]][network.to[s]]);
        }
    }
}

TEST(TMinSpaNet, EveryAlternativeBelongsToSomeMinimumSpanningTree) {
    std::mt19937 generator(11);
    int met = 0;
    for (int round = 0; round < 200; ++round) {
        const int n = 3 + round % 9;
        RectMat matrix(n, n);
        fill_at_random(matrix, 1 + round % 5, generator);
        TMinSpaNet network(&matrix);
        network.MakeNetwork();
        for (const auto& [i, j] : listed_alternatives(network)) {
            ++met;
            EXPECT_TRUE(is_in_some_tree(matrix, i, j)) << i << " " << j;
            for (std::size_t s = 0; s < network.to.size(); ++s)
                EXPECT_NE(std::minmax(network.from[s], network.to[s]), std::minmax(i, j));
        }
    }
    EXPECT_GT(met, 100);
}

TEST(TMinSpaNet, ChainOfManyOTUsNeedsNoRecursion) {
    constexpr int kN = 1500;
    RectMat matrix(kN, kN);
    for (int i = 0; i < kN; ++i)
        for (int j = 0; j < kN; ++j)
            matrix.data[i][j] = std::abs(i - j);
    TMinSpaNet network(&matrix);
    network.MakeNetwork();
    EXPECT_EQ(network.to.back(), kN - 1);
    EXPECT_TRUE(listed_alternatives(network).empty());
    std::ostringstream out;
    network.printMST(out, "chain", MY_TIArrayAsVector<PHaploDef>());
    EXPECT_EQ(std::count(out.view().begin(), out.view().end(), '('), kN - 1);
}

TEST(TMinSpaNet, NotANumberDoesNotStopTheSearch) {
    RectMat matrix(3, 3);
    fill(matrix, {std::nan(""), std::nan(""), 1});
    TMinSpaNet network(&matrix);
    network.MakeNetwork();
    EXPECT_EQ(network.to.size(), 2u);
}

TEST(TMinSpaNet, NexusTreeNamesItsLeaves) {
    // 0-1: 1, 0-2: 4, 1-2: 3. The link 0-1 comes first; its leaf 1 then takes 2 at length 3.
    RectMat matrix(3, 3);
    fill(matrix, {1, 4, 3});
    HaploDef a(my_string("a"));
    HaploDef b(my_string("b"));
    HaploDef c(my_string("c<d"));
    MY_TIArrayAsVector<PHaploDef> list;
    for (HaploDef* definition : {&a, &b, &c})
        list.Add(new PHaploDef(definition, 1));
    TMinSpaNet network(&matrix);
    network.MakeNetwork();
    std::ostringstream out;
    network.printMST(out, "My tree", list);
    EXPECT_EQ(out.str(),
              "#NEXUS\n"
              "begin trees;  [NEXUS Treefile section generated by Mendrake]\n"
              "tree Mytree_MST = [&amp;U] (a:0, (b:0, c&lt;d:0):1.00000);\n"
              "end;\n");
}

TEST(SpanningNetworkBlock, ListsLinksAndAlternativesByName) {
    xmlOutput = false;
    RectMat matrix(3, 3);
    fill(matrix, {1, 1, 1});
    Haplo_DB db;
    for (const char* name : {"x", "y", "z"})
        db.append(new HaploDef(my_string(name)));
    std::ostringstream out;
    print_spanning_network(out, matrix, db, "MST_AMOVA", "MST_AMOVA");
    const std::string text = out.str();
    EXPECT_NE(text.find("\nMINIMUM SPANNING TREE between 3 OTUs\n====================================\n"),
              std::string::npos);
    EXPECT_NE(text.find("             OTU 1               OTU 2    Connection length\n"
                        "                   x                   z             1.00000\n"
                        "                   x                   y             1.00000\n"),
              std::string::npos);
    EXPECT_NE(text.find("tree MST_AMOVA_MST = [&amp;U] ((x:0, y:0):1.00000, z:0);\n"), std::string::npos);
    EXPECT_NE(text.find("\nAlternative connections between OTUs\n"
                        "to extend the minimum spanning tree into a MINIMUM SPANNING NETWORK\n"),
              std::string::npos);
    EXPECT_NE(text.find("                 OTU  List of alternative links\n"
                        "                   x\n"
                        "                   y  z (1.00000)\n"
                        "                   z\n"),
              std::string::npos)
        << "every OTU has its line";
}

}  // namespace
}  // namespace mnd
