#include "simulation/mutated_sites.h"

#include <algorithm>
#include <bit>

#include "foundation/random.h"
#include "simulation/coalescent_tree.h"
#include "simulation/mutation_process.h"

namespace mnd {
namespace {

constexpr int kWordBits = 64;

std::int64_t pairs_between(std::int64_t a, std::int64_t b) {
    return a * b;
}

bool is_transition(int a, int b) {
    return (a ^ b) == 1;
}

int bits_for(int codes) {
    return std::bit_width(static_cast<unsigned>(codes - 1));
}

}  // namespace

long MutatedSites::sprinkle(TTree& tree, const MutationModel& model) {
    start(tree, model);
    if (!tree.is_built() || !prepare_sites(model) || model.sites < 1) return 0;
    drop_mutations(tree, model);
    for (const int site : mutated_)
        count_site(site);
    TNode::_tot_mut += num_mutations_;
    return num_mutations_;
}

void MutatedSites::start(const TTree& tree, const MutationModel& model) {
    num_leaves_ = tree.sample_size;
    num_sites_ = std::max(model.sites, 0);
    nucleotides_ = model.type == kNucleotideMutation;
    always_new_ = model.type == kNewStateMutation;
    num_mutations_ = 0;
    pair_differences_ = pair_transitions_ = 0;
    haplotypes_counted_ = false;
    sites_.clear();
    states_.clear();
    events_.clear();
    for (const int site : mutated_)
        last_event_[static_cast<std::size_t>(site)] = kNone;
    mutated_.clear();
    last_event_.resize(static_cast<std::size_t>(num_sites_), kNone);
    root_draws_.resize(nucleotides_ ? static_cast<std::size_t>(num_sites_) : 0);
    leaf_at_.clear();
    place_of_.assign(static_cast<std::size_t>(num_leaves_), 0);
}

void MutatedSites::drop_mutations(TTree& tree, const MutationModel& model) {
    const MutationProcess process(model);
    ran3_block(root_draws_.data(), static_cast<int>(root_draws_.size()));
    tree.count_leaves(below_);
    long seed = 1;
    stack_.assign(1, tree.root());
    while (!stack_.empty()) {
        TNode& node = *stack_.back();
        stack_.pop_back();
        const int number = node.ancestor == nullptr
                               ? 0
                               : mutations_on_branch(model.mu, node.ancestor->time - node.time, &seed);
        node.num_mutations = number;
        num_mutations_ += number;
        const int index = static_cast<int>(&node - tree.nodes.data());
        const int first = static_cast<int>(leaf_at_.size());
        for (int i = 0; i < number; ++i)
            mutate(process, first, first + below_[static_cast<std::size_t>(index)]);
        if (node.is_leaf()) {
            place_of_[static_cast<std::size_t>(index)] = first;
            leaf_at_.push_back(index);
            continue;
        }
        stack_.push_back(node.desc2);
        stack_.push_back(node.desc1);
    }
}

// One mutation on the branch above the leaves at the places first to end - 1.
void MutatedSites::mutate(const MutationProcess& process, int first, int end) {
    const int site = process.draw_site();
    const auto s = static_cast<std::size_t>(site);
    const long hits = ++TNode::hits[s];
    const int last = last_event_[s];
    if (last == kNone) mutated_.push_back(site);
    // The event that gave the branch its state: those of subtrees that were left do not hold here.
    int enclosing = last;
    while (enclosing != kNone && events_[static_cast<std::size_t>(enclosing)].end <= first)
        enclosing = events_[static_cast<std::size_t>(enclosing)].enclosing;
    const int before =
        enclosing == kNone ? root_state(site) : events_[static_cast<std::size_t>(enclosing)].state;
    last_event_[s] = static_cast<int>(events_.size());
    events_.push_back({first, end, process.new_state(before, hits), enclosing, last});
}

int MutatedSites::root_state(int site) const {
    return nucleotides_ ? MutationProcess::nucleotide_of(root_draws_[static_cast<std::size_t>(site)]) : 0;
}

void MutatedSites::count_site(int site) {
    const int last = last_event_[static_cast<std::size_t>(site)];
    if (events_[static_cast<std::size_t>(last)].previous == kNone) {
        count_single(site, last);
    } else {
        count_multiple(site, last);
    }
}

void MutatedSites::count_single(int site, int last) {
    const Event& event = events_[static_cast<std::size_t>(last)];
    const int derived = event.end - event.first;
    const int ancestral = num_leaves_ - derived;
    const int old_state = root_state(site);
    if (ancestral == 0 || event.state == old_state) return;
    const std::int64_t pairs = pairs_between(derived, ancestral);
    pair_differences_ += pairs;
    if (nucleotides_ && is_transition(event.state, old_state)) pair_transitions_ += pairs;
    sites_.push_back({site, 2, static_cast<int>(states_.size()), last, 1, 2});
    states_.push_back({old_state, ancestral});
    states_.push_back({event.state, derived});
}

// Code of a state of the site at hand, in order of appearance.
int MutatedSites::code_of(int state) {
    if (!always_new_) {
        const auto found = std::find(values_.begin(), values_.end(), state);
        if (found != values_.end()) return static_cast<int>(found - values_.begin());
    }
    values_.push_back(state);
    return static_cast<int>(values_.size()) - 1;
}

// Fills column_ with the code of the state at each place, and values_ with the states by code.
int MutatedSites::fill_column(int site, int last) {
    chain_.clear();
    for (int e = last; e != kNone; e = events_[static_cast<std::size_t>(e)].previous)
        chain_.push_back(e);
    values_.assign(1, root_state(site));
    column_.assign(static_cast<std::size_t>(num_leaves_), 0);
    for (auto e = chain_.rbegin(); e != chain_.rend(); ++e) {
        const Event& event = events_[static_cast<std::size_t>(*e)];
        std::fill(column_.begin() + event.first, column_.begin() + event.end, code_of(event.state));
    }
    return static_cast<int>(chain_.size());
}

void MutatedSites::count_multiple(int site, int last) {
    const int num_events = fill_column(site, last);
    code_counts_.assign(values_.size(), 0);
    for (const int code : column_)
        ++code_counts_[static_cast<std::size_t>(code)];
    const std::size_t first = states_.size();
    for (std::size_t code = 0; code < values_.size(); ++code) {
        if (code_counts_[code] > 0) states_.push_back({values_[code], code_counts_[code]});
    }
    const int num_states = static_cast<int>(states_.size() - first);
    if (num_states < 2) {
        states_.resize(first);
        return;
    }
    sites_.push_back(
        {site, num_states, static_cast<int>(first), last, num_events, static_cast<int>(values_.size())});
    std::int64_t alike = 0;
    std::int64_t transitions = 0;
    for (std::size_t i = first; i < states_.size(); ++i) {
        alike += pairs_between(states_[i].leaves, states_[i].leaves);
        for (std::size_t j = first; nucleotides_ && j < i; ++j) {
            if (is_transition(states_[i].state, states_[j].state))
                transitions += pairs_between(states_[i].leaves, states_[j].leaves);
        }
    }
    pair_differences_ += (pairs_between(num_leaves_, num_leaves_) - alike) / 2;
    pair_transitions_ += transitions;
}

// Gives the leaves at the places first to end - 1 new classes, one for each class they are in.
void MutatedSites::split_classes(int first, int end) {
    renamed_.assign(static_cast<std::size_t>(num_classes_), kNone);
    for (int place = first; place < end; ++place) {
        int& c = class_of_[static_cast<std::size_t>(place)];
        int& renamed = renamed_[static_cast<std::size_t>(c)];
        if (renamed == kNone) renamed = num_classes_++;
        c = renamed;
    }
}

// Splits the classes by the codes of column_.
void MutatedSites::split_by_column(int num_codes) {
    const auto codes = static_cast<std::size_t>(num_codes);
    renamed_.assign(static_cast<std::size_t>(num_classes_) * codes, kNone);
    int classes = 0;
    for (std::size_t place = 0; place < class_of_.size(); ++place) {
        const auto key =
            static_cast<std::size_t>(class_of_[place]) * codes + static_cast<std::size_t>(column_[place]);
        if (renamed_[key] == kNone) renamed_[key] = classes++;
        class_of_[place] = renamed_[key];
    }
    num_classes_ = classes;
}

// Numbers the classes anew, so that none is empty. Their number bounds the work of a split.
void MutatedSites::compact_classes() {
    renamed_.assign(static_cast<std::size_t>(num_classes_), kNone);
    num_classes_ = 0;
    for (int& c : class_of_) {
        int& renamed = renamed_[static_cast<std::size_t>(c)];
        if (renamed == kNone) renamed = num_classes_++;
        c = renamed;
    }
}

const std::vector<int>& MutatedSites::haplotype_counts() {
    if (haplotypes_counted_) return haplotype_counts_;
    haplotypes_counted_ = true;
    class_of_.assign(static_cast<std::size_t>(num_leaves_), 0);
    num_classes_ = num_leaves_ > 0 ? 1 : 0;
    for (const Segregating& s : sites_) {
        if (s.num_events == 1) {
            const Event& event = events_[static_cast<std::size_t>(s.last_event)];
            split_classes(event.first, event.end);
        } else {
            fill_column(s.site, s.last_event);
            split_by_column(static_cast<int>(values_.size()));
        }
        if (num_classes_ > 2 * num_leaves_) compact_classes();
    }
    count_classes();
    return haplotype_counts_;
}

void MutatedSites::count_classes() {
    renamed_.assign(static_cast<std::size_t>(num_classes_), kNone);
    haplotype_counts_.clear();
    for (int leaf = 0; leaf < num_leaves_; ++leaf) {
        const int place = place_of_[static_cast<std::size_t>(leaf)];
        int& haplotype = renamed_[static_cast<std::size_t>(class_of_[static_cast<std::size_t>(place)])];
        if (haplotype == kNone) {
            haplotype = static_cast<int>(haplotype_counts_.size());
            haplotype_counts_.push_back(0);
        }
        ++haplotype_counts_[static_cast<std::size_t>(haplotype)];
    }
}

// Lays the sites out in blocks of up to 64 with the same number of bits; a block has one word per bit
// for each place.
void MutatedSites::build_planes() {
    plane_bits_.clear();
    planes_.clear();
    order_.clear();
    for (std::size_t i = 0; i < sites_.size(); ++i)
        order_.push_back(static_cast<int>(i));
    const auto bits_of = [this](int i) { return bits_for(sites_[static_cast<std::size_t>(i)].num_codes); };
    std::sort(order_.begin(), order_.end(),
              [&](int a, int b) { return bits_of(a) != bits_of(b) ? bits_of(a) < bits_of(b) : a < b; });
    int used = kWordBits;
    for (const int i : order_) {
        const int bits = bits_of(i);
        if (used == kWordBits || plane_bits_.back() != bits) {
            plane_bits_.push_back(bits);
            planes_.resize(
                planes_.size() + static_cast<std::size_t>(bits) * static_cast<std::size_t>(num_leaves_), 0);
            used = 0;
        }
        set_plane_bits(sites_[static_cast<std::size_t>(i)], bits, used++);
    }
}

// Writes the codes of a site into bit `shift` of the words of the last block.
void MutatedSites::set_plane_bits(const Segregating& s, int bits, int shift) {
    const auto n = static_cast<std::size_t>(num_leaves_);
    const auto width = static_cast<std::size_t>(bits);
    std::uint64_t* const block = planes_.data() + planes_.size() - n * width;
    if (s.num_events == 1) {
        const Event& event = events_[static_cast<std::size_t>(s.last_event)];
        for (int place = event.first; place < event.end; ++place)
            block[static_cast<std::size_t>(place) * width] |= std::uint64_t{1} << shift;
        return;
    }
    fill_column(s.site, s.last_event);
    for (std::size_t place = 0; place < n; ++place) {
        for (std::size_t b = 0; b < width; ++b) {
            const std::uint64_t bit = static_cast<unsigned>(column_[place]) >> b & 1U;
            block[place * width + b] |= bit << shift;
        }
    }
}

namespace {

// Bits that are set, by sums of neighbours: unlike a call per word, this is done for several words at once.
int count_bits(std::uint64_t x) {
    x -= (x >> 1) & 0x5555555555555555U;
    x = (x & 0x3333333333333333U) + ((x >> 2) & 0x3333333333333333U);
    x = (x + (x >> 4)) & 0x0F0F0F0F0F0F0F0FU;
    return static_cast<int>((x * 0x0101010101010101U) >> 56);
}

// Sites of a block at which two leaves differ.
int differences(const std::uint64_t* a, const std::uint64_t* b, int bits) {
    std::uint64_t differ = 0;
    for (int i = 0; i < bits; ++i)
        differ |= a[i] ^ b[i];
    return count_bits(differ);
}

}  // namespace

void MutatedSites::count_pair_differences(std::vector<std::int64_t>& pairs) {
    pairs.assign(sites_.size() + 1, 0);
    build_planes();
    const auto n = static_cast<std::size_t>(num_leaves_);
    for (std::size_t i = 1; i < n; ++i) {
        row_.assign(i, 0);
        const std::uint64_t* block = planes_.data();
        for (const int bits : plane_bits_) {
            const auto width = static_cast<std::size_t>(bits);
            for (std::size_t j = 0; j < i; ++j)
                row_[j] += differences(block + i * width, block + j * width, bits);
            block += n * width;
        }
        for (const int d : row_)
            ++pairs[static_cast<std::size_t>(d)];
    }
}

int MutatedSites::state(int leaf, int site) const {
    const int place = place_of_[static_cast<std::size_t>(leaf)];
    for (int e = last_event_[static_cast<std::size_t>(site)]; e != kNone;) {
        const Event& event = events_[static_cast<std::size_t>(e)];
        if (event.first <= place && place < event.end) return event.state;
        e = event.previous;
    }
    return root_state(site);
}

}  // namespace mnd
