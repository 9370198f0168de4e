#include "model/phenotypes.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <new>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "foundation/message_codes.h"
#include "foundation/random.h"
#include "foundation/report.h"
#include "foundation/special_functions.h"
#include "model/compact_list.h"
#include "model/first_match_index.h"
#include "model/genotype_builder.h"
#include "model/integer_part.h"
#include "model/text_tokens.h"

namespace mnd {

namespace {

// Stands for the logarithm of 0.
constexpr double kLowestLogLikelihood = -3.4028234663852886e+38;

using AllelePair = std::pair<TAllele*, TAllele*>;

// The alleles at one locus, in an order that does not depend on the string they stand in.
AllelePair unordered_pair(TPhenotype const& phenotype, long locus) {
    TAllele* a = phenotype.pseudo_hapl[0]->allele(locus);
    TAllele* b = phenotype.pseudo_hapl[1]->allele(locus);
    return std::less<>{}(b, a) ? AllelePair{b, a} : AllelePair{a, b};
}

bool has_both_strings(TPhenotype const& phenotype) {
    return phenotype.pseudo_hapl[0] != nullptr && phenotype.pseudo_hapl[1] != nullptr;
}

// Hash of a pair of pointers.
struct PairHash {
    template <class T>
    std::size_t operator()(std::pair<T*, T*> const& pair) const {
        return hash_address(hash_address(0, pair.first), pair.second);
    }
};

std::size_t hash_pairs(TPhenotype const& phenotype) {
    std::size_t hash = 0;
    for (long l = 0; l < shared_loci(phenotype); ++l) {
        const auto [a, b] = unordered_pair(phenotype, l);
        hash = hash_address(hash_address(hash, a), b);
    }
    return hash;
}

}  // namespace

// ---- TPhenotype: construction

TPhenotype::TPhenotype() : genotypes(16, 50) {}

TPhenotype::TPhenotype(my_string const& id, double const& f) : my_string(id), freq(f), genotypes(16, 50) {}

TPhenotype::TPhenotype(TPopHaplotype const* a, TPopHaplotype const* b, int const& id) : TPhenotype() {
    my_string::operator=(id);
    freq = 1.0;
    if (a != nullptr) set_pseudo_hapl(*a, 0);
    if (b != nullptr) set_pseudo_hapl(*b, 1);
}

TPhenotype::TPhenotype(TPhenotype const& other) : TPhenotype() {
    *this = other;
}

TPhenotype& TPhenotype::operator=(TPhenotype const& other) {
    if (this == &other) return *this;
    copy_scalars(other);
    phen_prob = other.phen_prob;
    nb_genotypes = other.nb_genotypes;
    redundant = other.redundant;
    nb_het_loci = other.nb_het_loci;
    fully_homozygous = other.fully_homozygous;
    for (std::size_t k = 0; k < pseudo_hapl.size(); ++k) {
        pseudo_hapl[k] =
            other.pseudo_hapl[k] ? std::make_unique<TPopHaplotype>(*other.pseudo_hapl[k]) : nullptr;
        text[k] = other.text[k];
    }
    genotypes = other.genotypes;
    return *this;
}

void TPhenotype::copy_scalars(TPhenotype const& src) {
    my_string::operator=(src);
    freq = src.freq;
    real_freq = src.real_freq;
}

int TPhenotype::num_loci() const {
    return pseudo_hapl[0] ? pseudo_hapl[0]->num_loci() : 0;
}

void TPhenotype::set_pseudo_hapl(TPopHaplotype const& h, int const& k) {
    if (k != 0 && k != 1) return;
    pseudo_hapl[static_cast<std::size_t>(k)] = std::make_unique<TPopHaplotype>(h);
}

void TPhenotype::read_pseudo_hapl(int k, TAlleleDB& db, char sep) {
    if (k != 0 && k != 1) return;
    const std::string_view data_text = text[static_cast<std::size_t>(k)].view();
    auto haplotype = std::make_unique<TPopHaplotype>(sep);
    haplotype->alleles.Reallocate(count_locus_texts(data_text, sep));
    const double weight = real_freq / 2.0;
    int locus = 0;
    for_each_locus_text(data_text, sep, [&](std::string_view name) {
        haplotype->alleles.Add(db.insert_allele(locus++, name, weight));
    });
    pseudo_hapl[static_cast<std::size_t>(k)] = std::move(haplotype);
}

template <class Build>
void TPhenotype::take_part(TPhenotype const& src, Build build) {
    kill_gen_list();
    copy_scalars(src);
    for (std::size_t k = 0; k < pseudo_hapl.size(); ++k) {
        std::unique_ptr<TPopHaplotype> part;
        if (src.pseudo_hapl[k]) {
            part = std::make_unique<TPopHaplotype>();
            build(*part, *src.pseudo_hapl[k]);
        }
        pseudo_hapl[k] = std::move(part);
    }
}

void TPhenotype::build_sub_phenotype(int const* mask, TPhenotype const& src) {
    take_part(src, [mask](TPopHaplotype& part, TPopHaplotype const& whole) {
        part.build_sub_haplotype(mask, whole);
    });
}

void TPhenotype::copy_restricted_pheno(int const* list, TPhenotype const& src) {
    take_part(src, [list](TPopHaplotype& part, TPopHaplotype const& whole) {
        part.copy_restricted_hapl(list, whole);
    });
}

void TPhenotype::kill_gen_list() {
    genotypes.Flush();
    nb_genotypes = 0;
}

void TPhenotype::delete_pheno() {
    for (auto& haplotype : pseudo_hapl) {
        if (haplotype) haplotype->alleles.Flush();
    }
    my_string::operator=("");
    for (my_string& one_text : text)
        one_text = "";
    kill_gen_list();
}

// ---- TPhenotype: comparison

bool TPhenotype::operator==(TPhenotype const& other) const {
    if (!has_both_strings(*this) || !has_both_strings(other)) return freq == other.freq;
    for (std::size_t k = 0; k < pseudo_hapl.size(); ++k) {
        if (pseudo_hapl[k]->alleles.count != other.pseudo_hapl[k]->alleles.count) return false;
    }
    for (long l = 0; l < shared_loci(*this); ++l) {
        if (unordered_pair(*this, l) != unordered_pair(other, l)) return false;
    }
    return true;
}

bool TPhenotype::is_all_missing(char c) const {
    if (!has_both_strings(*this) || num_loci() == 0) return false;
    const auto is_missing = [c](TAllele const* allele) { return allele->is_char(c); };
    return std::all_of(pseudo_hapl.begin(), pseudo_hapl.end(), [&](auto const& haplotype) {
        return std::all_of(haplotype->alleles.begin(), haplotype->alleles.end(), is_missing);
    });
}

void TPhenotype::count_hetero_loci() {
    nb_het_loci = 0;
    if (!has_both_strings(*this)) return;
    for (long l = 0; l < shared_loci(*this); ++l) {
        if (pseudo_hapl[0]->allele(l) != pseudo_hapl[1]->allele(l)) ++nb_het_loci;
    }
}

void TPhenotype::binary_inc(int* bits, int const& n) {
    int i = 0;
    for (; i < n && bits[i] != 0; ++i)
        bits[i] = 0;
    bits[i] = 1;
}

// ---- TPhenotype: genotypes

void TPhenotype::update_gen_prob() {
    phen_prob = 0.0;
    for (TGenotype* genotype : genotypes) {
        const double f_1 = genotype->hapl_1->freq;
        genotype->prob = fully_homozygous != 0 ? f_1 * f_1 : 2.0 * f_1 * genotype->hapl_2->freq;
        phen_prob += genotype->prob;
    }
    if (phen_prob == 0.0) return;
    for (TGenotype* genotype : genotypes)
        genotype->rel_prob = genotype->prob / phen_prob;
}

void TPhenotype::update_posteriors(double F) {
    phen_prob = 0.0;
    for (TGenotype* genotype : genotypes) {
        const double p_1 = genotype->hapl_1->freq;
        const double p_2 = genotype->hapl_2->freq;
        genotype->prob = genotype->hapl_1 == genotype->hapl_2 ? p_1 * F + (1.0 - F) * p_1 * p_1
                                                              : 2.0 * (1.0 - F) * p_1 * p_2;
        phen_prob += genotype->prob;
    }
    for (TGenotype* genotype : genotypes)
        genotype->rel_prob = phen_prob > 0.0 ? genotype->prob / phen_prob : 0.0;
}

void TPhenotype::update_hapl_freq_in_genotypes() {
    for (TGenotype* genotype : genotypes) {
        const double share = real_freq * genotype->rel_prob;
        genotype->hapl_1->freq += share;
        genotype->hapl_2->freq += share;
    }
}

double TPhenotype::link_equil_pheno_prob() const {
    double probability = 1.0;
    if (!has_both_strings(*this)) return probability;
    for (long l = 0; l < shared_loci(*this); ++l) {
        TAllele const* a = pseudo_hapl[0]->allele(l);
        TAllele const* b = pseudo_hapl[1]->allele(l);
        if (a->selected == 0) {
            report(Warning, "TPhenotype::link_equil_pheno_prob()", kNonSelectedAlleles);
        } else {
            probability *= a->freq * b->freq;
        }
        if (a != b) probability *= 2.0;
    }
    return probability;
}

namespace {

// Entry of a cumulative distribution whose interval holds u: the one below lies strictly
// below u, the entry itself at u or above.
TAllele* allele_at(double u, double const* cumulative, int n, TPopHaploDB const& db) {
    const long i = std::lower_bound(cumulative, cumulative + n, u) - cumulative;
    const TPopHaplotype* haplotype = db.at_const(std::min<long>(i, n - 1));
    return haplotype == nullptr ? nullptr : haplotype->alleles.at_const(0);
}

}  // namespace

void TPhenotype::build_resam_pheno(int nb, int k, double const* cum1, int n1, double const* cum2, int n2,
                                   TPopHaploDB const& db1, TPopHaploDB const& db2, long& seed, TAlleleDB*,
                                   TAllele* a1, TAllele* a2) {
    kill_gen_list();
    my_string::operator=(k);
    freq = 1.0;
    real_freq = nb > 0 ? 1.0 / nb : 0.0;
    nb_het_loci = 2;
    TAllele* first[2];
    TAllele* second[2];
    first[0] = allele_at(ran3(&seed), cum1, n1, db1);
    second[0] = allele_at(ran3(&seed), cum1, n1, db1);
    first[1] = allele_at(ran3(&seed), cum2, n2, db2);
    second[1] = allele_at(ran3(&seed), cum2, n2, db2);
    if (a1 != nullptr && first[0] == a1) first[0] = second[0];
    if (a2 != nullptr && first[1] == a2) first[1] = second[1];
    for (auto& haplotype : pseudo_hapl)
        haplotype = std::make_unique<TPopHaplotype>();
    pseudo_hapl[0]->build_sampled_haplo(k, first[0], first[1]);
    pseudo_hapl[1]->build_sampled_haplo(k + 1, second[0], second[1]);
    for (my_string& one_text : text)
        one_text = "";
}

// ---- TPhenDB: the list

TPhenDB::TPhenDB() : MY_TIArrayAsVector<TPhenotype>(10, 100) {}

namespace {

// What one individual takes, without its texts.
double bytes_of_individual(long loci) {
    constexpr double kWithoutAlleles = 1000.0;
    constexpr double kBothAlleles = 2.0 * sizeof(TAllele*);
    return kWithoutAlleles + kBothAlleles * static_cast<double>(loci);
}

// A count of the data decides how many individuals there are to be. A system that promises more
// memory than it has would rather end the program than refuse.
void require_room(double bytes) {
    constexpr double kMaxBytes = 4.0 * (1 << 30);
    if (bytes > kMaxBytes) throw std::bad_alloc();
}

}  // namespace

TPhenDB::TPhenDB(int const& n, TPopHaploDB const& db) : TPhenDB() {
    constexpr int kMaxFailures = 100;
    require_room(n * bytes_of_individual(db.count > 0 ? db.data[0]->num_loci() : 0));
    const HaplotypeSampler sampler(db);
    int failures = 0;
    for (int id = 0; id < n;) {
        const TPopHaplotype* a = sampler.select(ran3());
        const TPopHaplotype* b = sampler.select(ran3());
        if (a == nullptr || b == nullptr) {
            report(Error, "TPhenDB::create_random_list()", kSpecifiedAlleleNotFound);
            if (++failures >= kMaxFailures) return;
            continue;
        }
        Add(std::make_unique<TPhenotype>(a, b, id).release());
        ++id;
    }
}

TPhenDB::TPhenDB(TPhenDB const& other)
    : MY_TIArrayAsVector<TPhenotype>(other),
      cursor(other.cursor),
      ln_likelihood(other.ln_likelihood),
      identity_coeff(other.identity_coeff),
      inbreeding(other.inbreeding) {}

TPhenDB& TPhenDB::operator=(TPhenDB const& other) = default;

void TPhenDB::destroy() {
    Flush();
}

int TPhenDB::num_loci() const {
    return count > 0 ? data[0]->num_loci() : 0;
}

int TPhenDB::nb_individuals() const {
    int n = 0;
    for (TPhenotype const* phenotype : *this)
        n = sum_of_counts(n, integer_part(phenotype->freq));
    return n;
}

void TPhenDB::convert_freq_to_real() {
    double sum = 0.0;
    for (TPhenotype const* phenotype : *this)
        sum += phenotype->freq;
    for (TPhenotype* phenotype : *this)
        phenotype->real_freq = sum > 0.0 ? phenotype->freq / sum : 0.0;
}

void TPhenDB::build_sub_PhenDB(int const* mask, TPhenDB const& src) {
    Flush();
    for (TPhenotype const* phenotype : src) {
        auto part = std::make_unique<TPhenotype>();
        part->build_sub_phenotype(mask, *phenotype);
        Add(part.release());
    }
}

void TPhenDB::create_temp_PhenDB(int const* list, TPhenDB const& src) {
    Flush();
    for (TPhenotype const* phenotype : src) {
        auto part = std::make_unique<TPhenotype>();
        part->copy_restricted_pheno(list, *phenotype);
        Add(part.release());
    }
}

// ---- TPhenDB: estimation

namespace {

// build(phenotype, room) for each phenotype; at the first that fails all lists are emptied.
template <class Build>
bool build_all(TPhenDB& phenotypes, Build build) {
    int64_t room = kMaxGenotypes;
    for (TPhenotype* phenotype : phenotypes) {
        if (!build(*phenotype, room)) {
            phenotypes.kill_gen_lists();
            return false;
        }
        room -= phenotype->genotypes.count;
    }
    return true;
}

}  // namespace

bool TPhenDB::build_all_genotypes(TPopHaploDB& db, TAlleleDB* alleles, int const& recessive) {
    return build_all(*this, [&](TPhenotype& phenotype, int64_t room) {
        return phenotype.build_genotypes(db, alleles, recessive, false, room);
    });
}

bool TPhenDB::build_all_compatible_genotypes(TPopHaploDB& prev_haplo, int* prev_loci, TPopHaploDB& haplo,
                                             TAlleleDB* alleles, int const& mode, double const& threshold) {
    return build_all(*this, [&](TPhenotype& phenotype, int64_t room) {
        return phenotype.build_compatible_genotypes(prev_haplo, prev_loci, haplo, alleles, mode, threshold,
                                                    room);
    });
}

void TPhenDB::kill_gen_lists() {
    for (TPhenotype* phenotype : *this)
        phenotype->kill_gen_list();
}

void TPhenDB::update_genotypes() {
    for (TPhenotype* phenotype : *this)
        phenotype->update_gen_prob();
}

void TPhenDB::update_hapl_freq(TPopHaploDB& db) {
    db.reset_freq();
    for (TPhenotype* phenotype : *this)
        phenotype->update_hapl_freq_in_genotypes();
}

double TPhenDB::calc_ln_likelihood() {
    double sum = 0.0;
    for (TPhenotype const* phenotype : *this) {
        if (!(phenotype->phen_prob > 0.0)) return ln_likelihood = kLowestLogLikelihood;
        sum += phenotype->freq * std::log(phenotype->phen_prob);
    }
    return ln_likelihood = sum;
}

double TPhenDB::link_equil_ln_likelihood() const {
    double sum = 0.0;
    for (TPhenotype const* phenotype : *this) {
        const double probability = phenotype->link_equil_pheno_prob();
        if (!(probability > 0.0)) return kLowestLogLikelihood;
        sum += phenotype->freq * std::log(probability);
    }
    return sum;
}

double TPhenDB::calc_ln_multinom() const {
    int total = 0;
    double sum = 0.0;
    for (TPhenotype const* phenotype : *this) {
        const int k = integer_part(phenotype->freq);
        sum += factln(k);
        total = sum_of_counts(total, k);
    }
    return factln(total) - sum;
}

namespace {

// Relative frequencies of the haplotypes that the strings show.
TPopHaploDB counted_haplotypes(TPhenDB const& phenotypes) {
    TPopHaploDB counted;
    for (TPhenotype const* phenotype : phenotypes) {
        for (auto const& haplotype : phenotype->pseudo_hapl) {
            if (haplotype) counted.insert(*haplotype, 1.0);
        }
    }
    for (TPopHaplotype* haplotype : counted)
        haplotype->freq /= 2.0 * static_cast<double>(phenotypes.count);
    return counted;
}

double difference_to(TPopHaplotype const& haplotype, TPopHaplotype const* equal) {
    return equal == nullptr ? haplotype.freq : std::fabs(haplotype.freq - equal->freq);
}

}  // namespace

double TPhenDB::compute_IF_coeff(TPopHaploDB* db) {
    const TPopHaploDB counted = counted_haplotypes(*this);
    for (TPopHaplotype* haplotype : *db)
        haplotype->visited = 0;
    double sum = 0.0;
    long found = 0;
    for (TPopHaplotype const* haplotype : counted) {
        TPopHaplotype* equal = db->find(*haplotype);
        sum += difference_to(*haplotype, equal);
        if (equal == nullptr) continue;
        equal->visited = 1;
        ++found;
    }
    if (found != db->count) {
        for (TPopHaplotype const* haplotype : *db) {
            if (haplotype->visited == 0) sum += difference_to(*haplotype, counted.find(*haplotype));
        }
    }
    return identity_coeff = 1.0 - 0.5 * sum;
}

// ---- TPhenDB: rearranging

namespace {

// Individuals of a class; its count may be short of a whole number by an error of rounding.
int individuals_of(TPhenotype const& phenotype) {
    constexpr double kRounding = 0.0001;
    return integer_part(phenotype.freq + kRounding);
}

double bytes_of_exploded(TPhenDB const& db) {
    double bytes = 0.0;
    for (TPhenotype const* phenotype : db) {
        const auto texts = static_cast<double>(phenotype->text[0].len + phenotype->text[1].len);
        bytes += individuals_of(*phenotype) * (bytes_of_individual(phenotype->num_loci()) + texts);
    }
    return bytes;
}

}  // namespace

void TPhenDB::explode_base() {
    require_room(bytes_of_exploded(*this));
    const long entries = count;
    int64_t individuals = 0;
    for (long e = 0; e < entries; ++e) {
        TPhenotype& phenotype = *data[e];
        const int k = individuals_of(phenotype);
        individuals += k;
        if (k > 1) phenotype.real_freq /= k;
        phenotype.freq = 1.0;
        for (int copy = 1; copy < k; ++copy)
            Add(std::make_unique<TPhenotype>(phenotype).release());
    }
    if (individuals != count) report(Error, "TPhenDB::explode_base()", kNumberOfPhenotypesChanged);
}

namespace {

void merge_into(TPhenotype& first, TPhenotype& later) {
    first.freq += later.freq;
    first.real_freq += later.real_freq;
    later.redundant = 1;
}

// Pair by pair, as needed where phenotypes without strings are equal by their growing freq.
void mark_by_comparing_all(TPhenDB& db) {
    for (long i = 0; i < db.count; ++i) {
        if (db.data[i]->redundant != 0) continue;
        for (long j = i + 1; j < db.count; ++j) {
            if (db.data[j]->redundant == 0 && *db.data[i] == *db.data[j])
                merge_into(*db.data[i], *db.data[j]);
        }
    }
}

void mark_by_hash(TPhenDB& db) {
    FirstMatchIndex index;
    const auto same = [&](long i, long j) { return *db.data[i] == *db.data[j]; };
    std::vector<std::size_t> hashes;
    for (TPhenotype const* phenotype : db)
        hashes.push_back(hash_pairs(*phenotype));
    index.cover(
        db.count, [&](long i) { return hashes[static_cast<std::size_t>(i)]; }, same);
    for (long i = 0; i < db.count; ++i) {
        const long first =
            index.first(hashes[static_cast<std::size_t>(i)], [&](long j) { return same(i, j); });
        if (first != i) merge_into(*db.data[first], *db.data[i]);
    }
}

}  // namespace

void TPhenDB::check_pheno_redundancy() {
    for (TPhenotype* phenotype : *this)
        phenotype->redundant = 0;
    if (std::all_of(begin(), end(), [](TPhenotype const* p) { return has_both_strings(*p); })) {
        mark_by_hash(*this);
    } else {
        mark_by_comparing_all(*this);
    }
    drop_elements(*this, [](TPhenotype const& phenotype) { return phenotype.redundant != 0; });
}

namespace {

std::vector<double> cumulative_frequencies(TPopHaploDB const& db) {
    std::vector<double> cumulative;
    double sum = 0.0;
    for (TPopHaplotype const* haplotype : db)
        cumulative.push_back(sum += haplotype->freq);
    if (sum > 0.0) {
        for (double& c : cumulative)
            c /= sum;
    }
    return cumulative;
}

}  // namespace

void TPhenDB::resample(int nb, TPopHaploDB const& db1, TPopHaploDB const& db2, long& seed,
                       TAlleleDB* alleles) {
    resample(nb, db1, db2, seed, alleles, nullptr, nullptr);
}

void TPhenDB::resample(int nb, TPopHaploDB const& db1, TPopHaploDB const& db2, long& seed, TAlleleDB* alleles,
                       TAllele* a1, TAllele* a2) {
    Flush();
    const std::vector<double> cum1 = cumulative_frequencies(db1);
    const std::vector<double> cum2 = cumulative_frequencies(db2);
    if (cum1.empty() || cum2.empty()) return;
    for (int k = 0; k < nb; ++k) {
        auto phenotype = std::make_unique<TPhenotype>();
        phenotype->build_resam_pheno(nb, k, cum1.data(), static_cast<int>(cum1.size()), cum2.data(),
                                     static_cast<int>(cum2.size()), db1, db2, seed, alleles, a1, a2);
        Add(phenotype.release());
    }
}

namespace {

// Both alleles of every phenotype that has them at this position, pair by pair.
std::vector<TAllele**> allele_slots(TPhenDB const& db, long position) {
    std::vector<TAllele**> slots;
    for (TPhenotype const* phenotype : db) {
        for (auto const& haplotype : phenotype->pseudo_hapl) {
            if (haplotype && position < haplotype->alleles.count) {
                slots.push_back(&haplotype->alleles.data[position]);
            }
        }
    }
    return slots;
}

}  // namespace

void TPhenDB::permute_alleles(int const* loci, long& seed) {
    constexpr const char* kSource = "TPhenDB::permute_alleles()";
    const int selected = loci[0];
    if (selected != 1 && selected != 2) report(Error, kSource, kInvalidNumberOfSelectedLoci);
    for (long position = 0; position < std::min(selected, num_loci()); ++position) {
        const std::vector<TAllele**> slots = allele_slots(*this, position);
        const int n = static_cast<int>(slots.size());
        int remaining = n;
        for (int i = 0; i < n; ++i, --remaining) {
            const int r = static_cast<int>(i + remaining * ran3(&seed));
            if (r >= n) {
                report(Error, kSource, kAlleleIndexExceedsVector);
                return;
            }
            std::swap(*slots[static_cast<std::size_t>(i)], *slots[static_cast<std::size_t>(r)]);
        }
        if (n != 2 * count) report(Error, kSource, kNumberOfAllelesChanged);
    }
}

// ---- TPhenDB: tests

namespace {

// n ln n, with its limit 0 at n = 0.
double n_ln_n(double n) {
    return n > 0.0 ? n * std::log(n) : 0.0;
}

// Counts of pairs of alleles, kept in order of first appearance: a sum over them is the same in
// every run.
class PairCounts {
public:
    void add(AllelePair const& pair, double n) {
        const auto [place, is_new] = place_.try_emplace(pair, counts_.size());
        if (is_new) counts_.push_back(0.0);
        counts_[place->second] += n;
    }
    std::size_t kinds() const { return counts_.size(); }
    // start + sum of n ln n, added in order.
    double add_n_ln_n(double start) const {
        for (const double n : counts_)
            start += n_ln_n(n);
        return start;
    }

private:
    std::unordered_map<AllelePair, std::size_t, PairHash> place_;
    std::vector<double> counts_;
};

}  // namespace

double TPhenDB::hw_chi_stat(TAlleleDB*, int, char c, int& df) const {
    constexpr double kFailed = -1000.0;
    PairCounts genotypes;
    PairCounts alleles;
    double n = 0.0;
    double heterozygotes = 0.0;
    df = 0;
    for (TPhenotype const* phenotype : *this) {
        if (!has_both_strings(*phenotype) || phenotype->pseudo_hapl[0]->num_loci() != 1 ||
            phenotype->pseudo_hapl[1]->num_loci() != 1) {
            report(Error, "TPhenDB::hw_chi_stat()", kInvalidNumberOfSelectedLoci);
            return kFailed;
        }
        const AllelePair pair = unordered_pair(*phenotype, 0);
        if (pair.first->is_char(c) || pair.second->is_char(c)) continue;
        genotypes.add(pair, phenotype->freq);
        alleles.add({pair.first, nullptr}, phenotype->freq);
        alleles.add({pair.second, nullptr}, phenotype->freq);
        if (pair.first != pair.second) heterozygotes += phenotype->freq;
        n += phenotype->freq;
    }
    const auto k = static_cast<double>(alleles.kinds());
    if (k < 2.0) return 0.0;
    df = integer_part(k * (k - 1.0) / 2.0);
    const double observed = genotypes.add_n_ln_n(-n_ln_n(n));
    const double expected = alleles.add_n_ln_n(heterozygotes * std::log(2.0) - n_ln_n(2.0 * n));
    return 2.0 * (observed - expected);
}

int TPhenDB::get_num_of_deg_freed() const {
    std::unordered_set<TAllele const*> seen[2];
    for (TPhenotype const* phenotype : *this) {
        for (auto const& haplotype : phenotype->pseudo_hapl) {
            for (long l = 0; l < 2; ++l) {
                if (haplotype && l < haplotype->alleles.count) seen[l].insert(haplotype->allele(l));
            }
        }
    }
    if (seen[0].empty() || seen[1].empty()) return 0;
    return integer_part(static_cast<double>(seen[0].size() - 1) * static_cast<double>(seen[1].size() - 1));
}

}  // namespace mnd
