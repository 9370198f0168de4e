#include "model/haplotypes.h"

#include <algorithm>
#include <ostream>
#include <string>

#include "model/text_tokens.h"
#include "run/errors.h"
#include "run/process.h"
#include "run/settings.h"

namespace mnd {

// ---- HaploDef

HaploDef::HaploDef() : MY_TIArrayAsVector<TAllele>(11, 10) {
    owns_elements = 0;
}

HaploDef::HaploDef(my_string const& haplotype_name) : HaploDef() {
    name = haplotype_name;
}

HaploDef::HaploDef(HaploDef const& other) : HaploDef() {
    *this = other;
}

HaploDef& HaploDef::operator=(HaploDef const& other) {
    if (this == &other) return *this;
    name = other.name;
    id = other.id;
    content = other.content;
    count = other.count;
    Flush();
    Reallocate(static_cast<int>(other.num_alleles()));
    for (TAllele* allele : other)
        Add(allele);
    return *this;
}

void HaploDef::build_haplovect(TAlleleDB* db, char const& sep, int, double weight) {
    // Begun anew each time, so that a second call adds weight to the alleles and leaves the
    // haplotype as it is.
    Reallocate(sep == 0 ? content.length() : static_cast<int>(db->count));
    int locus = 0;
    for_each_locus_text(content.view(), sep,
                        [&](std::string_view text) { Add(db->insert_allele(locus++, text, weight)); });
}

bool HaploDef::hasSameAllelicContent(HaploDef const& other) const {
    return num_alleles() <= other.num_alleles() && std::equal(begin(), end(), other.begin());
}

bool HaploDef::is_all_missing(char c) const {
    return num_alleles() > 0 &&
           std::all_of(begin(), end(), [c](TAllele const* allele) { return allele->is_char(c); });
}

std::ostream& operator<<(std::ostream& out, HaploDef const& def) {
    if (def.content.is_null()) return out << ' ' << def.name;
    return out << def.name << '\t' << def.content;
}

// ---- Haplo_DB

Haplo_DB::Haplo_DB() : name("no_name"), list(10, 100) {}

Haplo_DB::Haplo_DB(Haplo_DB const& other) : ProfileSettings(other), name(other.name), list(other.list) {}

Haplo_DB& Haplo_DB::operator=(Haplo_DB const& other) {
    if (this == &other) return *this;
    ProfileSettings::operator=(other);
    name = other.name;
    list = other.list;
    by_name_.forget();
    by_content_.forget();
    return *this;
}

HaploDef* Haplo_DB::search(FirstMatchIndex& index, my_string HaploDef::*field, my_string const& text) const {
    const auto text_at = [&](long i) { return (list.data[i]->*field).view(); };
    const std::string_view wanted = text.view();
    const std::size_t hash = hash_text(wanted);
    const auto look_up = [&] {
        index.cover(
            list.count, [&](long i) { return hash_text(text_at(i)); },
            [&](long i, long j) { return text_at(i) == text_at(j); });
        return index.first(hash, [&](long i) { return text_at(i) == wanted; });
    };
    long found = look_up();
    if (found < 0 && index.knows(hash)) {
        index.forget();
        found = look_up();
    }
    return list.at_const(found);
}

HaploDef* Haplo_DB::find(my_string const& text) const {
    return search(by_content_, &HaploDef::content, text);
}

HaploDef* Haplo_DB::find_by_name(my_string const& haplotype_name) const {
    return search(by_name_, &HaploDef::name, haplotype_name);
}

HaploDef* Haplo_DB::append(HaploDef* definition) {
    list.Add(definition);
    return definition;
}

void Haplo_DB::content_changed() const {
    by_content_.forget();
}

void Haplo_DB::reset() {
    name = "no_name";
    list.Flush();
    by_name_.forget();
    by_content_.forget();
}

void Haplo_DB::rm_separators(char sep) {
    if (list.count == 0) return;
    const auto first_length = static_cast<std::size_t>(list.data[0]->content.length());
    std::string kept;
    kept.reserve(first_length);
    for (HaploDef* definition : list) {
        kept.clear();
        for (const char c : definition->content.view().substr(0, first_length)) {
            if (c != sep) kept += c;
        }
        definition->content = kept.c_str();
    }
    content_changed();
}

void Haplo_DB::build_ext_name(char* out, char const* file) const {
    const std::string_view file_name(file);
    my_string path(file);
    if (file_name.find_first_of("\\/") == std::string_view::npos) {
        if (the_settings != nullptr) {
            path = the_settings->project_directory + path;
        } else {
            *_AOS_ << "Pointer to project dir is not initialized. ERROR";
        }
    }
    const std::string_view whole = path.view().substr(0, kPathBuffer - 1);
    out[whole.copy(out, whole.size())] = '\0';
}

}  // namespace mnd
