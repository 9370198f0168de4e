#include "within/sample_distances.h"

#include <iomanip>
#include <memory>
#include <new>
#include <string>

#include "foundation/format_guard.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "model/integer_part.h"
#include "model/samples.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

std::vector<std::string_view> haplotype_texts(const Population& sample) {
    std::vector<std::string_view> texts;
    texts.reserve(static_cast<std::size_t>(sample.hapl_list.count));
    for (const PHaploDef* entry : sample.hapl_list) {
        const bool defined = entry != nullptr && entry->def != nullptr;
        texts.push_back(defined ? entry->def->content.view() : std::string_view{});
    }
    return texts;
}

std::vector<int> usable_loci(const PopGenetics& sample, int length) {
    std::vector<int> loci;
    const bool compared = !sample.usable_site.empty();
    const int last = compared ? static_cast<int>(sample.usable_site.size()) : length;
    for (int locus = 0; locus < last; ++locus) {
        if (!compared || sample.usable_site[static_cast<std::size_t>(locus)] != 0) loci.push_back(locus);
    }
    return loci;
}

bool prepare_distance_matrix(PopGenetics& sample, bool keep) {
    sample.nb_hapl = static_cast<int>(sample.hapl_list.count);
    const bool fits = sample.dist_mat && sample.dist_mat->data != nullptr &&
                      sample.dist_mat->rows == sample.nb_hapl && sample.dist_mat->cols == sample.nb_hapl;
    sample.max_dist = 0;
    if (keep && fits) return true;
    sample.dist_mat.reset();
    try {
        sample.dist_mat = std::make_unique<RectMat>(sample.nb_hapl, sample.nb_hapl);
    } catch (const std::bad_alloc&) {
        report(Memory, "prepare_distance_matrix()", kNotEnoughMemory);
    }
    return sample.dist_mat != nullptr;
}

void note_distance(PopGenetics& sample, double distance) {
    if (std::isfinite(distance) && distance > sample.max_dist) sample.max_dist = integer_part(distance);
}

bool row_is_done(const settings* s) {
    settings::print_message();
    return s == nullptr || !s->stopped();
}

void report_no_haplotypes(const char* origin) {
    report(Error, origin, kHaplotypeListIsEmpty);
}

void report_no_distance(const char* origin) {
    report(Error, origin, kDistanceMatrixNotComputed);
}

void print_distance_matrix(std::ostream& out, const RectMat& matrix) {
    constexpr int kWidth = 8;
    constexpr int kDecimals = 4;
    const FormatGuard guard(out);
    out << std::fixed << std::right << std::setprecision(kDecimals);
    for (int i = 0; i < matrix.rows; ++i) {
        for (int j = 0; j < matrix.cols; ++j) {
            if (i == j) {
                out << std::setw(kWidth) << ' ';
            } else {
                out << std::setw(kWidth) << matrix.get(i, j);
            }
        }
        out << '\n';
    }
}

void write_distance_matrix(std::ostream* out, const PopGenetics& sample) {
    if (out == nullptr || !sample.dist_mat) return;
    *_AOS_ << "\t\t\tWriting matrix to file ...\n";
    *out << "\nInter-haplotypic distance matrix:\n\n";
    print_distance_matrix(*out, *sample.dist_mat);
}

my_string get_small_name(const Population& sample, const settings& s) {
    std::string name(sample.name.view());
    for (char& c : name) {
        if (c == ' ' || c == '/' || c == '\\' || c == ':') c = '_';
    }
    return s.result_directory + name.c_str();
}

namespace {

// Samples whose names differ only in characters that a file name can't have share a file.
void warn_of_overwriting(const PopGenetics& sample, const settings& s, const my_string& path) {
    if (s.current_samples == nullptr) return;
    const my_string own = get_small_name(sample, s);
    for (const Population* other : s.current_samples->populations) {
        if (other == &sample) return;
        if (other->hapl_list.count == 0 || get_small_name(*other, s).view() != own.view()) continue;
        *_AOS_ << "\t\tWarning: the distances of sample \"" << sample.name << "\" overwrite those of \""
               << other->name << "\" in the file \"" << path << "\"\n";
        return;
    }
}

}  // namespace

int write_distance_file(PopGenetics& sample, settings& s) {
    sample.distance_method = s.DistanceMethodAMOVA;
    sample.gamma_a = s.GammaAValueAMOVA;
    const my_string path = get_small_name(sample, s) + ".dis";
    warn_of_overwriting(sample, s, path);
    std::fstream file(path.c_str(), std::ios::out | std::ios::trunc);
    if (!file) {
        *_AOS_ << "\t\tUnable to write the distance file \"" << path << "\"\n";
        return 0;
    }
    return sample.compute_distance_matrix(&file, &s, 0);
}

}  // namespace mnd
