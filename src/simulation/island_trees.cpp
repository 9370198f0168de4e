// Genealogies of samples from demes that exchange migrants.
#include <algorithm>
#include <climits>
#include <cmath>
#include <new>
#include <numeric>

#include "foundation/random.h"
#include "input/structure.h"
#include "model/samples.h"
#include "run/errors.h"
#include "simulation/coalescent_tree.h"
#include "simulation/random_index.h"

namespace mnd {
namespace {

// One of n, but not `other`; n is at least 2. Draws: 1 a try
int random_index_but(int n, int other) {
    int drawn = random_index(n);
    while (drawn == other)
        drawn = random_index(n);
    return drawn;
}

// Takes a random entry out of a list that keeps its order. Draws: 1
std::int32_t take_random(std::vector<std::int32_t>& free) {
    const int place = random_index(static_cast<int>(free.size()));
    const std::int32_t taken = free[static_cast<std::size_t>(place)];
    free.erase(free.begin() + place);
    return taken;
}

// The numbers 0 to n - 1, n not below 0.
void fill_with_numbers(std::vector<std::int32_t>& numbers, int n) {
    numbers.resize(static_cast<std::size_t>(n));
    std::iota(numbers.begin(), numbers.end(), 0);
}

std::int64_t sum_of_gene_copies(const MY_TIArrayAsVector<Population>& samples) {
    std::int64_t sum = 0;
    for (const Population* sample : samples)
        sum += leaves_of(*sample);
    return sum;
}

// The number of leaves as an int. Throws: std::bad_alloc when an int cannot number their nodes, twice as many
int numbered_leaves(std::int64_t leaves) {
    if (leaves > INT_MAX / 2) throw std::bad_alloc();
    return static_cast<int>(leaves);
}

int demes_of_model(migrationModel model, int number) {
    if (number < 1) return 0;
    if (model == kIslandMigration) return number;
    if (model != kSteppingStoneMigration) return 0;
    return static_cast<int>(std::min<long>(static_cast<long>(number) * number, INT_MAX));
}

bool is_open_unit(double m) {
    return m > 0.0 && m < 1.0;  // false when m is not a number
}

}  // namespace

void TTree::createDemes(migrationModel model, int const& number) {
    group_demes.clear();
    group_lineages.clear();
    num_groups = demes_per_group = 0;
    start_demes(demes_of_model(model, number));
}

void TTree::createDemes(migrationModel model, int per_group, int groups) {
    num_groups = std::max(groups, 0);
    demes_per_group = demes_of_model(model, per_group);
    make_group_demes(demes_per_group, num_groups);
    start_demes(static_cast<int>(std::min<long>(static_cast<long>(num_groups) * demes_per_group, INT_MAX)));
}

void TTree::make_group_demes(int per_group, int groups) {
    group_lineages.assign(static_cast<std::size_t>(groups), 0);
    group_demes.resize(static_cast<std::size_t>(groups));
    for (int g = 0; g < groups; ++g) {
        std::vector<std::int32_t>& demes = group_demes[static_cast<std::size_t>(g)];
        demes.resize(static_cast<std::size_t>(per_group));
        std::iota(demes.begin(), demes.end(), g * per_group);
    }
}

void TTree::start_demes(int number) {
    num_demes = number;
    const auto n = static_cast<std::size_t>(number);
    while (deme_nodes.size() < n) {
        deme_nodes.emplace_back(0L, 10L);
        deme_nodes.back().owns_elements = 0;
    }
    deme_nodes.resize(n);
    deme_lineages.resize(n);
    deme_coal_rate.resize(n);
    occupied.resize(n);
    empty_demes();
}

void TTree::empty_demes() {
    for (MY_TIArrayAsVector<TNode>& deme : deme_nodes)
        deme.Flush();
    std::fill(deme_lineages.begin(), deme_lineages.end(), 0);
    std::fill(deme_coal_rate.begin(), deme_coal_rate.end(), 0.0);
    std::fill(group_lineages.begin(), group_lineages.end(), 0);
    num_occupied = lineages = 0;
    total_coal_rate = total_mig_rate = 0.0;
}

void TTree::cleanDemes() {
    deme_nodes.clear();
    deme_lineages.clear();
    deme_coal_rate.clear();
    occupied.clear();
    group_demes.clear();
    group_lineages.clear();
    leaf_blocks.clear();
    num_groups = demes_per_group = num_occupied = lineages = 0;
    total_coal_rate = total_mig_rate = 0.0;
}

// What both models reset before a tree.
void TTree::start_islands() {
    deme_size = kDemeSize;
    TNode::node_count = 0;
    TNode::_tot_mut = 0;
    matchingNodes.Flush();
    nodeWeights.Flush();
}

void TTree::take_gene_copies(int number) {
    no_migration = 0;
    set_sample_size(number);
    leaf_blocks.clear();
    empty_demes();
}

void TTree::place_sample(const Population& sample, int deme, int group, int& leaf) {
    const int copies = leaves_of(sample);
    leaf_blocks.push_back({&sample, leaf, copies});
    for (int i = 0; i < copies; ++i) {
        TNode* lineage = node(leaf++);
        lineage->deme = group;
        put_lineage(lineage, deme);
    }
    lineages += copies;
    const auto g = static_cast<std::size_t>(group);
    if (g < group_lineages.size()) group_lineages[g] += copies;
}

void TTree::createInitialNodes(Samples& samples) {
    const int copies = numbered_leaves(sum_of_gene_copies(samples.populations));
    const int needed = static_cast<int>(samples.populations.count);
    const int demes = std::max(static_cast<int>(num_demes), needed);
    if (demes != static_cast<int>(deme_nodes.size()) || num_groups != 0) createDemes(kIslandMigration, demes);
    num_demes = demes;
    take_gene_copies(copies);
    fill_with_numbers(free_demes_, demes);
    int leaf = 0;
    for (const Population* sample : samples.populations)
        place_sample(*sample, take_random(free_demes_), 0, leaf);
}

void TTree::createInitialNodes(Structure const& structure, int per_group, int groups) {
    std::int64_t total = 0;
    int largest = 0;
    for (const MY_TIArrayAsVector<Population>& group : structure.groups) {
        total += sum_of_gene_copies(group);
        largest = std::max(largest, static_cast<int>(group.count));
    }
    const int copies = numbered_leaves(total);
    const int demes = std::max(per_group, largest);
    const int all_groups = std::max(groups, static_cast<int>(structure.groups.size()));
    if (demes != demes_per_group || all_groups != num_groups ||
        deme_nodes.size() != static_cast<std::size_t>(demes) * static_cast<std::size_t>(all_groups)) {
        createDemes(kIslandMigration, demes, all_groups);
    }
    num_demes = static_cast<double>(demes) * all_groups;
    take_gene_copies(copies);
    fill_with_numbers(free_groups_, all_groups);
    int leaf = 0;
    for (const MY_TIArrayAsVector<Population>& samples : structure.groups) {
        const int group = take_random(free_groups_);
        free_demes_ = group_demes[static_cast<std::size_t>(group)];
        for (const Population* sample : samples)
            place_sample(*sample, take_random(free_demes_), group, leaf);
    }
}

void TTree::set_coal_rate(int deme) {
    const auto d = static_cast<std::size_t>(deme);
    const double k = deme_lineages[d];
    total_coal_rate -= deme_coal_rate[d];
    deme_coal_rate[d] = deme_size == 0.0 ? 0.0 : k * (k - 1.0) / 2.0;
    total_coal_rate += deme_coal_rate[d];
}

void TTree::update_mig_rate() {
    total_mig_rate = lineages * migration_rate * deme_size;
}

// Where in `occupied` the deme stands that holds the lineage at a place in the concatenation of the
// occupied demes; slot is its place within the deme.
int TTree::locate_lineage(int place, int& slot) const {
    slot = place;
    int i = 0;
    for (; i < num_occupied - 1; ++i) {
        const int k = deme_lineages[static_cast<std::size_t>(occupied[static_cast<std::size_t>(i)])];
        if (slot < k) break;
        slot -= k;
    }
    return i;
}

// Removes a lineage from its deme, whose last one takes its slot.
TNode* TTree::take_lineage(int place_in_occupied, int slot) {
    const auto i = static_cast<std::size_t>(place_in_occupied);
    const int deme = occupied[i];
    const auto d = static_cast<std::size_t>(deme);
    MY_TIArrayAsVector<TNode>& list = deme_nodes[d];
    TNode* lineage = list.data[slot];
    --list.count;
    list.data[slot] = list.data[list.count];
    list.data[list.count] = nullptr;
    --deme_lineages[d];
    if (deme_lineages[d] == 0) occupied[i] = occupied[static_cast<std::size_t>(--num_occupied)];
    set_coal_rate(deme);
    return lineage;
}

void TTree::put_lineage(TNode* lineage, int deme) {
    const auto d = static_cast<std::size_t>(deme);
    deme_nodes[d].Add(lineage);
    if (++deme_lineages[d] == 1) occupied[static_cast<std::size_t>(num_occupied++)] = deme;
    set_coal_rate(deme);
}

// The occupied deme in which the sum of rates reaches u; one with a pair of lineages in any case,
// or -1 if there is none.
int TTree::coalescing_deme(double u) const {
    int last = -1;
    double sum = 0.0;
    for (int i = 0; i < num_occupied; ++i) {
        const int deme = occupied[static_cast<std::size_t>(i)];
        const double rate = deme_coal_rate[static_cast<std::size_t>(deme)];
        if (!(rate > 0.0)) continue;
        sum += rate;
        last = deme;
        if (sum >= u) break;
    }
    return last;
}

void TTree::coalesceWithinAPop(double const& t) {
    if (!(total_coal_rate > 0.0)) return;
    const int deme = coalescing_deme(ran3() * total_coal_rate);
    if (deme < 0) return;
    const auto d = static_cast<std::size_t>(deme);
    MY_TIArrayAsVector<TNode>& list = deme_nodes[d];
    const int k = deme_lineages[d];
    TNode* parent = node(2 * sample_size - lineages);
    join_lineages(list.data.get(), k, parent);
    list.data[--list.count] = nullptr;
    parent->time = t;
    parent->deme = parent->desc1->deme;
    const auto group = static_cast<std::size_t>(parent->deme);
    if (group < group_lineages.size()) --group_lineages[group];
    --lineages;
    --deme_lineages[d];
    set_coal_rate(deme);
    update_mig_rate();
}

void TTree::sendMigrant() {
    const int demes = static_cast<int>(deme_nodes.size());
    if (no_migration != 0 || lineages < 1 || demes < 2) return;
    int slot = 0;
    const int place = locate_lineage(random_index(lineages), slot);
    const int source = occupied[static_cast<std::size_t>(place)];
    TNode* lineage = take_lineage(place, slot);
    put_lineage(lineage, random_index_but(demes, source));
}

void TTree::sendMigrant2Levels(double m1, double m2, int per_group, int groups) {
    if (no_migration != 0 || m1 + m2 == 0.0 || lineages < 1) return;
    if (per_group < 2 || groups < 2) return;
    const double p = m1 / (m1 + m2);
    const double u1 = ran3();
    int slot = 0;
    const int place = locate_lineage(random_index(lineages), slot);
    const int source = occupied[static_cast<std::size_t>(place)];
    const int group = source / per_group;
    TNode* lineage = take_lineage(place, slot);
    if (u1 < p) {
        put_lineage(lineage, group * per_group + random_index_but(per_group, source % per_group));
        return;
    }
    const int destination = random_index_but(groups, group);
    ran3();  // would choose the position in the group, but is cut to 0 before it is scaled
    --group_lineages[static_cast<std::size_t>(group)];
    ++group_lineages[static_cast<std::size_t>(destination)];
    lineage->deme = destination;
    put_lineage(lineage, destination * per_group);
}

// Events until one lineage is left; 0 when none is possible before.
template <class Migrate>
int TTree::run_islands(Migrate migrate) {
    double t = 0.0;
    update_mig_rate();
    while (lineages > 1) {
        const double total_rate = total_mig_rate + total_coal_rate;
        if (!(total_rate > 0.0)) return 0;
        t -= std::log(1.0 - ran3()) / total_rate;
        if (ran3() * total_rate >= total_coal_rate) {
            migrate();
        } else {
            coalesceWithinAPop(t);
        }
    }
    return lineages == 1 ? 1 : 0;
}

int TTree::build_tree_struct_pop(Samples& samples, double const&, double const& F, int demes) {
    start_islands();
    num_demes = demes;
    createInitialNodes(samples);
    if (demes == 0 || F == 0.0) {
        *_AOS_ << "\tTTree::build_tree_struct_pop(): unable to build Tree\n";
        return 0;
    }
    const double D = num_demes;
    migration_rate = (D - 1.0) * (1.0 / F - 1.0) / (2.0 * deme_size * D);
    if (!(migration_rate >= 0.0) || std::isinf(migration_rate)) return 0;
    return run_islands([this] { sendMigrant(); });
}

int TTree::build_tree_struct_pop(Samples&, Structure const& structure, double const&, double const& F_st,
                                 double const& F_ct, int per_group, int groups) {
    start_islands();
    createInitialNodes(structure, per_group, groups);
    const double d = demes_per_group;
    const double g = num_groups;
    double F_sc = 0.0;
    double m1 = 0.0;
    if (F_ct != 1.0) {
        F_sc = 1.0 - (1.0 - F_st) / (1.0 - F_ct);
        if (d != 0.0 && F_sc != 0.0) m1 = (d - 1.0) * (1.0 / F_sc - 1.0) / (2.0 * d * deme_size);
    }
    const double m2 = (g - 1.0) * (1.0 - F_ct) * F_sc * m1 / ((d - 1.0) * g * F_ct);
    migration_rate = m1 + m2;
    if (!is_open_unit(m1) || !is_open_unit(m2)) return 0;
    return run_islands([this, m1, m2] { sendMigrant2Levels(m1, m2, demes_per_group, num_groups); });
}

}  // namespace mnd
