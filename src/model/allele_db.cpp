#include "model/allele_db.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <iomanip>
#include <memory>
#include <ostream>
#include <string>

#include "foundation/format_guard.h"
#include "foundation/random.h"
#include "model/integer_part.h"

namespace mnd {

namespace {

// Up to here a scan of the names beats the hash index.
constexpr long kLongestScan = 16;

my_string text_of(std::string_view text) {
    return my_string(std::string(text).c_str());
}

}  // namespace

// ---- TAllele

int32_t TAllele::numPop = 0;
int32_t TAllele::numGroup = 0;

TAllele::TAllele() : my_string("UNDEF") {}

TAllele::TAllele(my_string const& allele_name) : my_string(allele_name) {}

TAllele::TAllele(TAllele const& other) : my_string() {
    *this = other;
}

TAllele& TAllele::operator=(TAllele const& other) {
    if (this == &other) return *this;
    my_string::operator=(other);
    freq = other.freq;
    selected = other.selected;
    locus = other.locus;
    exp_freq = other.exp_freq;
    pop_freqs = other.pop_freqs;
    group_freqs = other.group_freqs;
    inbreeding_freqs = other.inbreeding_freqs;
    return *this;
}

std::ostream& operator<<(std::ostream& out, TAllele const& allele) {
    return out << allele.view();
}

bool sorts_before(TAllele const& a, TAllele const& b) {
    return std::strcmp(a.c_str(), b.c_str()) < 0;
}

// ---- TLocus

TLocus::TLocus() : MY_TIArrayAsVector<TAllele>(1, 5) {}

TLocus::TLocus(my_string const& locus_name) : TLocus() {
    name = locus_name;
}

TLocus::TLocus(TLocus const& other)
    : MY_TIArrayAsVector<TAllele>(other),
      name(other.name),
      print_width(other.print_width),
      amova_values(other.amova_values) {}

TLocus& TLocus::operator=(TLocus const& other) {
    if (this == &other) return *this;
    MY_TIArrayAsVector<TAllele>::operator=(other);
    name = other.name;
    print_width = other.print_width;
    amova_values = other.amova_values;
    index_.forget();
    return *this;
}

void TLocus::Flush() {
    MY_TIArrayAsVector<TAllele>::Flush();
    index_.forget();
}

int TLocus::find_index(std::string_view allele_name) const {
    if (count <= kLongestScan) {
        for (long i = 0; i < count; ++i) {
            if (data[i]->view() == allele_name) return static_cast<int>(i);
        }
        return -1;
    }
    const std::size_t hash = hash_text(allele_name);
    const auto is_wanted = [&](long i) { return data[i]->view() == allele_name; };
    const auto cover = [&] {
        index_.cover(
            count, [&](long i) { return hash_text(data[i]->view()); },
            [&](long i, long j) { return data[i]->view() == data[j]->view(); });
    };
    cover();
    long found = index_.first(hash, is_wanted);
    if (found < 0 && index_.knows(hash)) {
        index_.forget();
        cover();
        found = index_.first(hash, is_wanted);
    }
    return static_cast<int>(found);
}

int TLocus::insert(std::string_view allele_name, double weight, int locus_index) {
    const int found = find_index(allele_name);
    if (found >= 0) {
        data[found]->freq += weight;
        return found;
    }
    auto allele = std::make_unique<TAllele>(text_of(allele_name));
    allele->freq = weight;
    allele->locus = locus_index;
    Add(allele.get());
    allele.release();
    return static_cast<int>(count - 1);
}

TAllele* TLocus::find_allele_by_name(my_string const& allele_name) const {
    return at_const(find_index(allele_name.view()));
}

int TLocus::get_allele_index(TAllele* allele) const {
    for (long i = 0; i < count; ++i) {
        if (data[i] == allele) return static_cast<int>(i);
    }
    return -1;
}

bool TLocus::is_polymorph(char c) const {
    // Written for a locus whose blank stands at index 0, where it counts as an allele.
    if (count < 3) return false;
    if (count > 3) return true;
    return std::none_of(begin(), end(), [c](TAllele const* allele) { return allele->is_char(c); });
}

// ---- TAlleleDB

TAlleleDB::TAlleleDB() : TAlleleDB(10) {}

TAlleleDB::TAlleleDB(int const& n)
    : MY_TIArrayAsVector<TLocus>(static_cast<long>(n) + 1, 100), not_found("Allele not found") {}

TAlleleDB::TAlleleDB(TAlleleDB const& other) = default;

TAlleleDB& TAlleleDB::operator=(TAlleleDB const& other) = default;

TLocus& TAlleleDB::locus_for_insertion(int index) {
    if (index >= count) {
        my_string number;
        number = index;
        Add(std::make_unique<TLocus>(my_string("Locus ") + number).release());
        return *data[count - 1];
    }
    return *data[index];
}

TAllele* TAlleleDB::insert_allele(int locus, std::string_view allele_name, double freq) {
    if (locus < 0) return nullptr;
    TLocus& place = locus_for_insertion(locus);
    return place.data[place.insert(allele_name, freq, locus)];
}

int32_t TAlleleDB::InsertAllPos(int const& locus, my_string const& allele_name, double freq) {
    if (locus < 0) return -1;
    return locus_for_insertion(locus).insert(allele_name.view(), freq, locus);
}

int32_t TAlleleDB::InsertAllPos(int const& locus, my_string const& allele_name, double& freq, int const&) {
    return InsertAllPos(locus, allele_name, freq);
}

int32_t TAlleleDB::InsertAllPos(my_string const& locus_name, my_string const& allele_name, double freq) {
    for (long i = 0; i < count; ++i) {
        if (data[i]->name == locus_name)
            return data[i]->insert(allele_name.view(), freq, static_cast<int>(i));
    }
    Add(std::make_unique<TLocus>(locus_name).release());
    return data[count - 1]->insert(allele_name.view(), freq, static_cast<int>(count - 1));
}

TLocus* TAlleleDB::find_locus(my_string const& locus_name) const {
    for (TLocus* locus : *this) {
        if (locus->name == locus_name) return locus;
    }
    return nullptr;
}

TAllele* TAlleleDB::operator()(int const& locus, int const& allele) const {
    const TLocus* place = at_const(locus);
    return place == nullptr ? nullptr : place->at_const(allele);
}

TAllele* TAlleleDB::operator()(int const& locus, my_string const& allele_name) const {
    const TLocus* place = at_const(locus);
    return place == nullptr ? nullptr : place->find_allele_by_name(allele_name);
}

TAllele* TAlleleDB::operator()(my_string const& locus_name, int const& allele) const {
    const TLocus* place = find_locus(locus_name);
    return place == nullptr ? nullptr : place->at_const(allele);
}

TAllele* TAlleleDB::operator()(my_string const& locus_name, my_string const& allele_name) const {
    const TLocus* place = find_locus(locus_name);
    return place == nullptr ? nullptr : place->find_allele_by_name(allele_name);
}

void TAlleleDB::create_pop_freq_vector(int const& n) {
    const int slots = std::max(n, 0);
    for (TLocus* locus : *this) {
        for (TAllele* allele : *locus)
            allele->pop_freqs.assign(static_cast<std::size_t>(slots), 0.0);
    }
    TAllele::numPop = slots;
}

void TAlleleDB::create_group_freq_vector(int const& n) {
    const int slots = std::max(n, 0);
    for (TLocus* locus : *this) {
        for (TAllele* allele : *locus)
            allele->group_freqs.assign(static_cast<std::size_t>(slots), 0.0);
    }
    TAllele::numGroup = slots;
}

void TAlleleDB::flush_pop_freq_vector() {
    reset_all_pop_freqs();
}

void TAlleleDB::reset_all_pop_freqs() {
    for (TLocus* locus : *this) {
        for (TAllele* allele : *locus)
            std::vector<double>().swap(allele->pop_freqs);
    }
}

void TAlleleDB::flush_group_freq_vector() {
    for (TLocus* locus : *this) {
        for (TAllele* allele : *locus)
            std::vector<double>().swap(allele->group_freqs);
    }
}

void TAlleleDB::reset_exp_freq() {
    for (TLocus* locus : *this) {
        for (TAllele* allele : *locus)
            allele->exp_freq = allele->exp_freq_acc = 0.0;
    }
}

void TAlleleDB::assign_rand_exp_freq() {
    for (TLocus* locus : *this) {
        double sum = 0.0;
        for (TAllele* allele : *locus)
            sum += allele->exp_freq = ran3();
        if (!(sum > 0.0)) continue;
        for (TAllele* allele : *locus)
            allele->exp_freq /= sum;
    }
}

double TAlleleDB::update_all_freq_with_inbreeding(double const& F) {
    if (!(F > 0.0)) return -1.0;
    double change = 0.0;
    for (TLocus* locus : *this) {
        for (TAllele* allele : *locus) {
            const double updated = (allele->inbreeding_freqs[0] - allele->exp_freq_acc) / F;
            const double old = allele->inbreeding_freqs[1];
            allele->exp_freq = allele->inbreeding_freqs[1] = updated;
            allele->exp_freq_acc = 0.0;
            change += std::fabs(updated - old);
        }
    }
    return change;
}

void TAlleleDB::destroy() {
    Flush();
    blanks_done = 0;
}

// ---- The table

namespace {

void print_cell(std::ostream& out, TLocus const& locus, long row) {
    constexpr int kPercentWidth = 4;
    const TAllele* allele = locus.at_const(row);
    if (allele == nullptr) {
        out << std::setw(locus.print_width) << "" << std::setw(kPercentWidth) << ""
            << " |";
        return;
    }
    out << std::setw(locus.print_width) << allele->view() << std::setw(kPercentWidth)
        << integer_part(100.0 * allele->freq) << "%|";
}

}  // namespace

std::ostream& operator<<(std::ostream& out, TAlleleDB& db) {
    const FormatGuard guard(out);
    out << std::right;
    long rows = 0;
    for (TLocus* locus : db) {
        int longest = 0;
        for (TAllele const* allele : *locus)
            longest = std::max(longest, allele->length());
        locus->print_width = longest + 1;
        rows = std::max<long>(rows, locus->count);
    }
    for (long row = 0; row < rows; ++row) {
        for (TLocus const* locus : db)
            print_cell(out, *locus, row);
        out << '\n';
    }
    return out;
}

}  // namespace mnd
