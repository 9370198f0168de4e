#include "model/pop_haplotypes.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <new>
#include <ostream>
#include <string>
#include <unordered_map>

#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/random.h"
#include "foundation/report.h"
#include "foundation/special_functions.h"
#include "model/compact_list.h"
#include "model/integer_part.h"

namespace mnd {

namespace {

// Stands at positions for which there is no allele of the data.
TAllele& default_allele() {
    static TAllele allele;
    return allele;
}

bool same_alleles(TPopHaplotype const& a, TPopHaplotype const& b) {
    return a.alleles.count == b.alleles.count &&
           std::equal(a.alleles.begin(), a.alleles.end(), b.alleles.begin());
}

// Takes out the positions for which keep(i) is false, in one pass.
template <class Keep>
void keep_positions(TPopHaplotype& haplotype, Keep keep) {
    auto& alleles = haplotype.alleles;
    long kept = 0;
    for (long i = 0; i < alleles.count; ++i) {
        if (keep(i)) alleles.data[kept++] = alleles.data[i];
    }
    std::fill(alleles.data.get() + kept, alleles.data.get() + alleles.count, nullptr);
    alleles.count = kept;
}

}  // namespace

// ---- TPopHaplotype

TPopHaplotype::TPopHaplotype() : my_string("UNKNOWN"), alleles(10, 50) {
    alleles.owns_elements = 0;
}

TPopHaplotype::TPopHaplotype(char const& sep) : TPopHaplotype() {
    separator = sep;
}

TPopHaplotype::TPopHaplotype(TPopHaplotype const& other) = default;

TPopHaplotype& TPopHaplotype::operator=(TPopHaplotype const& other) {
    if (this == &other) return *this;
    copy_frequency_fields(other);
    ld_d = other.ld_d;
    ld_d_prime = other.ld_d_prime;
    homo_flag = other.homo_flag;
    homo_freq = other.homo_freq;
    homo_count = other.homo_count;
    visited = other.visited;
    rank = other.rank;
    try {
        alleles = other.alleles;
    } catch (const std::bad_alloc&) {
        report(Memory, "TPopHaplotype::operator=()", kNotEnoughMemory);
    }
    return *this;
}

void TPopHaplotype::copy_frequency_fields(TPopHaplotype const& src) {
    my_string::operator=(src);
    freq = src.freq;
    prev_freq = src.prev_freq;
    sum_sq_freq = src.sum_sq_freq;
    sum_freq = src.sum_freq;
    separator = src.separator;
}

bool TPopHaplotype::operator==(TPopHaplotype const& other) const {
    return same_alleles(*this, other);
}

bool TPopHaplotype::operator<(TPopHaplotype const& other) const {
    const long shared = std::min(alleles.count, other.alleles.count);
    for (long i = 0; i < shared; ++i) {
        if (allele(i) == other.allele(i)) continue;
        const int order = std::strcmp(allele(i)->c_str(), other.allele(i)->c_str());
        if (order != 0) return order < 0;
    }
    return false;
}

void TPopHaplotype::build_sampled_haplo(int id, TAllele* a, TAllele* b) {
    my_string::operator=(id);
    freq = prev_freq = sum_sq_freq = sum_freq = homo_freq = 0.0;
    ld_d = ld_d_prime = 0.0;
    separator = ' ';
    alleles.Flush();
    alleles.Add(a);
    alleles.Add(b);
}

void TPopHaplotype::build_sub_haplotype(int const* mask, TPopHaplotype const& src) {
    copy_frequency_fields(src);
    ld_d = ld_d_prime = 0.0;
    std::vector<TAllele*> kept;
    for (long i = 0; i < src.alleles.count; ++i) {
        TAllele* allele_i = src.allele(i);
        if (mask[allele_i->locus] == 0) continue;
        allele_i->hapl_pos = static_cast<int32_t>(i);
        kept.push_back(allele_i);
    }
    alleles.Reallocate(static_cast<int>(kept.size()));
    for (TAllele* allele_i : kept)
        alleles.Add(allele_i);
}

void TPopHaplotype::copy_restricted_hapl(int const* list, TPopHaplotype const& src) {
    copy_frequency_fields(src);
    ld_d = ld_d_prime = 0.0;
    std::vector<TAllele*> kept;
    for (int k = 1; k <= list[0]; ++k) {
        if (list[k] >= 0 && list[k] < src.alleles.count) kept.push_back(src.allele(list[k]));
    }
    alleles.Reallocate(static_cast<int>(kept.size()));
    for (TAllele* allele_k : kept)
        alleles.Add(allele_k);
}

std::ostream& operator<<(std::ostream& out, TPopHaplotype const& haplotype) {
    for (TAllele const* allele : haplotype.alleles) {
        out << *allele;
        if (haplotype.separator != 0) out << haplotype.separator;
    }
    return out;
}

void shrink(TPopHaplotype& haplotype, void* arg) {
    const ShrinkArg& shrink_arg = *static_cast<ShrinkArg*>(arg);
    keep_positions(haplotype, [&](long i) { return i >= shrink_arg.n || shrink_arg.mask[i] != 0; });
}

std::size_t hash_alleles(TPopHaplotype const& haplotype) {
    auto hash = static_cast<std::size_t>(haplotype.alleles.count);
    for (TAllele const* allele : haplotype.alleles)
        hash = hash_address(hash, allele);
    return hash;
}

// ---- TPopHaploDB: the list

TPopHaploDB::TPopHaploDB() : MY_TIArrayAsVector<TPopHaplotype>(10, 100) {}

TPopHaploDB::TPopHaploDB(TPopHaploDB const& other) : MY_TIArrayAsVector<TPopHaplotype>(10, 100) {
    *this = other;
}

TPopHaploDB& TPopHaploDB::operator=(TPopHaploDB const& other) {
    if (this == &other) return *this;
    MY_TIArrayAsVector<TPopHaplotype>::operator=(other);
    content_changed();
    cursor = other.cursor;
    poly_mask.reset();
    poly_mask_size = other.poly_mask_size;
    if (other.poly_mask) {
        poly_mask = std::make_unique<int32_t[]>(static_cast<std::size_t>(poly_mask_size));
        std::copy_n(other.poly_mask.get(), poly_mask_size, poly_mask.get());
    }
    reference = other.reference ? std::make_unique<TPopHaplotype>(*other.reference) : nullptr;
    return *this;
}

void TPopHaploDB::content_changed() const {
    index_.forget();
}

void TPopHaploDB::cover() const {
    index_.cover(
        count, [this](long i) { return hash_alleles(*data[i]); },
        [this](long i, long j) { return same_alleles(*data[i], *data[j]); });
}

TPopHaplotype* TPopHaploDB::find(TPopHaplotype const& haplotype) const {
    return find(haplotype, hash_alleles(haplotype));
}

TPopHaplotype* TPopHaploDB::find(TPopHaplotype const& haplotype, std::size_t hash) const {
    const auto is_wanted = [&](long i) { return same_alleles(*data[i], haplotype); };
    cover();
    long found = index_.first(hash, is_wanted);
    if (found < 0 && index_.knows(hash)) {
        content_changed();
        cover();
        found = index_.first(hash, is_wanted);
    }
    return at_const(found);
}

TPopHaplotype* TPopHaploDB::insert(TPopHaplotype const& haplotype, double const& f) {
    const std::size_t hash = hash_alleles(haplotype);
    if (TPopHaplotype* known = find(haplotype, hash)) {
        known->freq += f;
        return known;
    }
    auto copy = std::make_unique<TPopHaplotype>(haplotype);
    copy->freq = f;
    Add(copy.get());
    TPopHaplotype* added = copy.release();
    // All entries but this one were covered by the search.
    index_.cover(
        count, [hash](long) { return hash; },
        [this](long i, long j) { return same_alleles(*data[i], *data[j]); });
    return added;
}

void TPopHaploDB::Flush() {
    MY_TIArrayAsVector<TPopHaplotype>::Flush();
    content_changed();
}

bool TPopHaploDB::Destroy(int const& i) {
    content_changed();
    return MY_TIArrayAsVector<TPopHaplotype>::Destroy(i);
}

bool TPopHaploDB::Detach(int const& i) {
    content_changed();
    return MY_TIArrayAsVector<TPopHaplotype>::Detach(i);
}

void TPopHaploDB::flush_haplotypes() {
    if (count > 0) Flush();
}

void TPopHaploDB::empty() {
    flush_haplotypes();
    poly_mask.reset();
    poly_mask_size = 0;
    reference.reset();
}

std::ostream& operator<<(std::ostream& out, TPopHaploDB const& db) {
    const FormatGuard guard(out);
    out << std::fixed << std::setprecision(5);
    for (TPopHaplotype const* haplotype : db)
        out << *haplotype << "  " << haplotype->freq << '\n';
    return out << '\n';
}

// ---- TPopHaploDB: frequencies

TPopHaplotype* TPopHaploDB::select_haplotype(double const& r) const {
    double sum = 0.0;
    for (TPopHaplotype* haplotype : *this) {
        sum += haplotype->freq;
        if (sum > r) return haplotype;
    }
    return nullptr;
}

void TPopHaploDB::reset_freq() {
    for (TPopHaplotype* haplotype : *this)
        haplotype->freq = 0.0;
}

void TPopHaploDB::reset_homo_count() {
    for (TPopHaplotype* haplotype : *this)
        haplotype->homo_count = 0;
}

bool TPopHaploDB::convergence(double const& eps) {
    double change = 0.0;
    for (TPopHaplotype* haplotype : *this) {
        change += std::fabs(haplotype->freq - haplotype->prev_freq);
        haplotype->prev_freq = haplotype->freq;
    }
    return change < eps;
}

void draw_start_frequencies(std::vector<double>& freq, std::vector<char> const& is_fixed, int k) {
    freq.resize(is_fixed.size());
    double sum = 0.0;
    for (std::size_t h = 0; h < freq.size(); ++h) {
        freq[h] = is_fixed[h] == 0 ? k * ran3() + 1.0 : 1.0;
        sum += freq[h];
    }
    for (double& f : freq)
        f /= sum;
}

std::vector<char> TPopHaploDB::fixed_starts() const {
    std::vector<char> is_fixed;
    is_fixed.reserve(static_cast<std::size_t>(count));
    for (TPopHaplotype const* haplotype : *this)
        is_fixed.push_back(haplotype->homo_flag == 0 ? 0 : 1);
    return is_fixed;
}

void TPopHaploDB::assign_rand_init_freq(int const& k) {
    std::vector<double> start;
    draw_start_frequencies(start, fixed_starts(), k);
    for (long h = 0; h < count; ++h)
        data[h]->freq = data[h]->prev_freq = start[static_cast<std::size_t>(h)];
}

namespace {

// Per position, the sum of freq over the entries that carry the allele there, in entry order.
using Marginals = std::vector<std::unordered_map<TAllele const*, double>>;

Marginals marginal_frequencies(TPopHaploDB const& db) {
    Marginals marginals;
    for (TPopHaplotype const* haplotype : db) {
        const auto positions = static_cast<std::size_t>(haplotype->alleles.count);
        if (marginals.size() < positions) marginals.resize(positions);
        for (std::size_t p = 0; p < positions; ++p) {
            marginals[p][haplotype->allele(static_cast<long>(p))] += haplotype->freq;
        }
    }
    return marginals;
}

// Largest |D| that the marginals p1 and p2 of two loci allow, on the side of D.
double bound_of_d(double d, double p1, double p2) {
    return d > 0.0 ? std::min((1.0 - p1) * p2, (1.0 - p2) * p1) : std::min((1.0 - p1) * (1.0 - p2), p1 * p2);
}

}  // namespace

void TPopHaploDB::update_lk_equil() {
    constexpr double kLeastBound = 1e-06;
    const Marginals marginals = marginal_frequencies(*this);
    for (TPopHaplotype* haplotype : *this) {
        double product = 1.0;
        double first_two[2] = {0.0, 0.0};
        for (long p = 0; p < haplotype->alleles.count; ++p) {
            const double m = marginals[static_cast<std::size_t>(p)].at(haplotype->allele(p));
            product *= m;
            if (p < 2) first_two[p] = m;
        }
        haplotype->ld_d = haplotype->freq - product;
        haplotype->ld_d_prime = 0.0;
        if (haplotype->alleles.count < 2) continue;
        const double d_max = bound_of_d(haplotype->ld_d, first_two[0], first_two[1]);
        if (std::fabs(d_max) > kLeastBound) haplotype->ld_d_prime = haplotype->ld_d / d_max;
    }
}

void TPopHaploDB::comp_link_equil_hapl_freq() {
    for (TPopHaplotype* haplotype : *this) {
        double product = 1.0;
        for (TAllele const* allele : haplotype->alleles)
            product *= allele->exp_freq;
        haplotype->freq = product;
    }
}

void TPopHaploDB::sums_hapl_frequencies(TPopHaploDB& other, double thr) {
    for (TPopHaplotype* haplotype : *this) {
        if (!(haplotype->freq > thr)) continue;
        const TPopHaplotype* found = other.find(*haplotype);
        if (found == nullptr) continue;
        haplotype->sum_freq += found->freq;
        haplotype->sum_sq_freq += found->freq * found->freq;
    }
}

void TPopHaploDB::calc_sd(int const& n) {
    if (n <= 1) return;
    double v = 0.0;
    for (TPopHaplotype* haplotype : *this) {
        if (haplotype->freq > 0.0) {
            v = (haplotype->sum_sq_freq - haplotype->sum_freq * haplotype->sum_freq / n) / (n - 1);
        }
        haplotype->sum_sq_freq = v > 0.0 ? std::sqrt(v) : 0.0;
    }
}

double TPopHaploDB::sum_homoz_inbreeding(double const& F) const {
    double sum = 0.0;
    for (TPopHaplotype const* haplotype : *this) {
        if (haplotype->homo_count == 0) continue;
        sum += haplotype->homo_count / ((1.0 - haplotype->freq) * F + haplotype->freq);
    }
    return sum;
}

double TPopHaploDB::calc_hapl_lk_dis() const {
    double sum = 0.0;
    for (TPopHaplotype const* haplotype : *this)
        sum += factln(integer_part(haplotype->freq));
    return sum;
}

// ---- TPopHaploDB: rearranging

void TPopHaploDB::permute(int* n_loci) {
    content_changed();
    const int n = static_cast<int>(count);
    for (long l = 0; l < *n_loci; ++l) {
        const bool all_have_it =
            std::all_of(begin(), end(), [l](TPopHaplotype const* h) { return l < h->alleles.count; });
        if (!all_have_it) return;
        int remaining = n;
        for (int i = 0; i < n; ++i, --remaining) {
            const int r = static_cast<int>(i + remaining * ran3());
            if (r >= n) {
                report(Error, "TPopHaploDB::permute_alleles()", kAlleleIndexExceedsVector);
                return;
            }
            std::swap(data[i]->alleles.data[l], data[r]->alleles.data[l]);
        }
    }
}

void TPopHaploDB::check_redundancy() {
    content_changed();
    std::vector<std::size_t> hashes;
    for (TPopHaplotype const* haplotype : *this)
        hashes.push_back(hash_alleles(*haplotype));
    const auto equal = [&](long i, long j) {
        return hashes[static_cast<std::size_t>(i)] == hashes[static_cast<std::size_t>(j)] &&
               same_alleles(*data[i], *data[j]);
    };
    for (long i = count - 1; i > 0; --i) {
        for (long j = i - 1; j >= 0; --j) {
            if (!equal(i, j)) continue;
            data[j]->freq += data[i]->freq;
            Destroy(static_cast<int>(i));
            hashes.erase(hashes.begin() + i);
            // The scan goes on at i - 1 and i - 3: one pair is passed over on purpose.
            --i;
            j = i - 1;
        }
    }
}

void TPopHaploDB::cleanDB(double& thr) {
    content_changed();
    drop_elements(*this, [thr](TPopHaplotype const& haplotype) { return haplotype.freq < thr; });
}

void TPopHaploDB::explode_base() {
    constexpr double kRounding = 0.1;
    constexpr double kTolerance = 0.0001;
    const long entries = count;
    for (long e = 0; e < entries; ++e) {
        TPopHaplotype& haplotype = *data[e];
        const int k = integer_part(haplotype.freq + kRounding);
        if (std::fabs(k - haplotype.freq) > kTolerance) {
            report(Warning, "TPopHaploDB::explode_base()", kFrequenciesNotAbsolute);
        }
        if (k <= 1) continue;
        haplotype.freq = 1.0;
        for (int copy = 1; copy < k; ++copy)
            Add(std::make_unique<TPopHaplotype>(haplotype).release());
    }
}

void TPopHaploDB::build_reference_haplotype(TAlleleDB* db, char const& c) {
    const auto is_variable = [](TLocus const* locus) { return locus->count > 1; };
    if (std::none_of(db->begin(), db->end(), is_variable)) return;
    const char separator = count > 0 ? data[0]->separator : ' ';
    reference = std::make_unique<TPopHaplotype>(separator);
    poly_mask_size = static_cast<int32_t>(db->count);
    poly_mask = std::make_unique<int32_t[]>(static_cast<std::size_t>(poly_mask_size));
    for (int32_t l = 0; l < poly_mask_size; ++l) {
        const TLocus& locus = *db->data[l];
        poly_mask[l] = is_variable(&locus) ? 1 : 0;
        TAllele* chosen = locus.at_const(0);
        if (is_variable(&locus) && chosen->is_char(c)) chosen = locus.data[1];
        reference->alleles.Add(chosen == nullptr ? &default_allele() : chosen);
    }
}

void TPopHaploDB::compact(TAlleleDB* db, char const& c) {
    build_reference_haplotype(db, c);
    if (!poly_mask) return;
    ShrinkArg arg{poly_mask_size, poly_mask.get()};
    for (TPopHaplotype* haplotype : *this)
        shrink(*haplotype, &arg);
    content_changed();
}

void TPopHaploDB::init_ref_hapl(int const* n) {
    reference = std::make_unique<TPopHaplotype>();
    for (int i = 0; i < *n; ++i)
        reference->alleles.Add(&default_allele());
}

// ---- TPopHaploDB: the table

std::string allele_text(TPopHaplotype const& haplotype, TPopHaploDB const* compacted) {
    std::string text;
    const auto append = [&](TAllele const* allele) {
        if (allele != nullptr) text += allele->view();
        if (haplotype.separator != 0) text += haplotype.separator;
    };
    if (compacted == nullptr) {
        std::for_each(haplotype.alleles.begin(), haplotype.alleles.end(), append);
        return text;
    }
    long own = 0;
    for (long l = 0; l < compacted->reference->alleles.count; ++l) {
        const bool is_kept = l < compacted->poly_mask_size && compacted->poly_mask[l] != 0;
        append(is_kept ? haplotype.alleles.at_const(own++) : compacted->reference->allele(l));
    }
    return text;
}

namespace {

constexpr const char* kTableRule = "---------------------------------------\n";

void print_table_head(std::ostream& out, long entries, double thr) {
    const FormatGuard guard(out);
    out << "\n------------------------------------------\n"
           "Maximum-likelihood haplotype frequencies :\n"
           "------------------------------------------\n\n"
        << "Total number of possible haplotypes      :" << std::setw(15) << entries << '\n'
        << "Minimum frequency to reach for output    :" << std::scientific << std::setw(15)
        << std::setprecision(3) << thr << '\n'
        << kTableRule << std::setw(5) << "#" << std::setw(12) << "Haplotype" << std::setw(10) << "Freq."
        << std::setw(10) << "s.d." << '\n'
        << kTableRule;
}

// One row; with a compacted database, over all loci of its reference.
void print_row(std::ostream& out, TPopHaplotype const& haplotype, TPopHaploDB const* compacted) {
    out << std::setw(5) << haplotype.rank << escaped_right(haplotype.view(), 12) << '\t' << std::setw(10)
        << haplotype.freq << std::setw(10) << haplotype.sum_sq_freq << '\t'
        << escape_text(allele_text(haplotype, compacted)) << '\n';
}

}  // namespace

void TPopHaploDB::print(std::ostream& out, int use_compact, double thr) {
    std::vector<TPopHaplotype*> sorted;
    try {
        sorted.assign(begin(), end());
    } catch (const std::bad_alloc&) {
        report(Memory, "TPopHaploDB::print()", kNotEnoughMemory);
        return;
    }
    std::stable_sort(sorted.begin(), sorted.end(),
                     [](TPopHaplotype const* a, TPopHaplotype const* b) { return sorts_before(*a, *b); });
    print_table_head(out, count, thr);
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::setprecision(6);
    int listed = 0;
    int passed_over = 0;
    double sum_all = 0.0;
    double sum_listed = 0.0;
    for (TPopHaplotype* haplotype : sorted) {
        sum_all += haplotype->freq;
        if (!(haplotype->freq > thr)) {
            haplotype->rank = -(++passed_over);
            continue;
        }
        haplotype->rank = ++listed;
        sum_listed += haplotype->freq;
        print_row(out, *haplotype, use_compact != 0 && poly_mask && reference ? this : nullptr);
    }
    out << "Sum of all " << count << " haplotype frequencies : " << sum_all << '\n'
        << "Sum of " << listed << " listed frequencies : " << sum_listed << '\n';
}

// ---- HaplotypeSampler

HaplotypeSampler::HaplotypeSampler(TPopHaploDB const& db) : db_(&db) {
    sums_.reserve(static_cast<std::size_t>(db.count));
    double sum = 0.0;
    for (TPopHaplotype const* haplotype : db)
        sums_.push_back(sum += haplotype->freq);
}

TPopHaplotype* HaplotypeSampler::select(double r) const {
    return db_->at_const(std::upper_bound(sums_.begin(), sums_.end(), r) - sums_.begin());
}

// ---- AHaplFreq

AHaplFreq& AHaplFreq::operator+=(AHaplFreq const& other) {
    freq += other.freq;
    sd += other.sd;
    return *this;
}

void AHaplFreq::calc_mean_freq(int const& n, int const& size) {
    if (size == 0 || n == 0) {
        *this = AHaplFreq{};
        return;
    }
    mean_count = freq / n;
    sd_count = n < 2 ? 0.0 : std::sqrt(std::max(0.0, (sd - freq * freq / n) / (n - 1)));
    freq = mean_count / size;
    sd = sd_count / size;
}

std::ostream& operator<<(std::ostream& out, AHaplFreq const& record) {
    const FormatGuard guard(out);
    return out << std::fixed << std::showpoint << std::right << std::setprecision(7) << std::setw(12)
               << record.freq << std::setw(12) << record.sd << std::setprecision(4) << std::setw(16)
               << record.mean_count << std::setw(12) << record.sd_count << '\n';
}

}  // namespace mnd
