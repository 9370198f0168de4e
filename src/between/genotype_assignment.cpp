#include "between/genotype_assignment.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <iomanip>
#include <limits>
#include <string>
#include <string_view>

#include "foundation/escape.h"
#include "foundation/format_guard.h"
#include "model/allele_db.h"
#include "model/pop_haplotypes.h"
#include "results/citations.h"
#include "results/tree_script.h"
#include "results/xml_tags.h"
#include "run/errors.h"
#include "run/settings.h"
#include "run/settings_table.h"

namespace mnd {

namespace {

constexpr int kLeastColumnWidth = 10;
constexpr int kDecimals = 3;
constexpr double kNoFrequency = 1e-15;  // a smaller frequency is that of an allele not seen

// Outside of these bounds a product goes on as the sum of logarithms. Only samples without
// individuals, whose factors are all 1 or 2, reach the upper one.
constexpr double kSmallestProduct = 1e-280;
constexpr double kLargestProduct = 1e280;

constexpr double kCopiesOfIndividual = 2.0;

// A setting that has to be above 0, or the usual number.
int above_zero(int value, const char* key) {
    if (value > 0) return value;
    const int usual = static_cast<int>(find_setting(key)->initial);
    *_AOS_ << "\n\tAssignment of genotypes: " << key << " is " << value << ", using " << usual;
    return usual;
}

// Takes gene copies out of the size of a sample for as long as it lives.
class CopiesLeftOut {
public:
    CopiesLeftOut(Population& sample, double copies) : sample_(sample), sample_size_(sample.sample_size) {
        sample_.sample_size -= copies;
    }
    ~CopiesLeftOut() { sample_.sample_size = sample_size_; }
    CopiesLeftOut(const CopiesLeftOut&) = delete;
    CopiesLeftOut& operator=(const CopiesLeftOut&) = delete;

private:
    Population& sample_;
    double sample_size_;
};

// Holds the percentage of the progress lines back for as long as it lives: the estimate of the work
// to do takes no account of the assignment.
class NoPercentage {
public:
    NoPercentage() : to_do_(settings::global_work_to_do), done_(settings::global_work_done) {
        settings::global_work_to_do = 0.0;
    }
    ~NoPercentage() {
        settings::global_work_to_do = to_do_;
        settings::global_work_done = done_;
    }
    NoPercentage(const NoPercentage&) = delete;
    NoPercentage& operator=(const NoPercentage&) = delete;

private:
    double to_do_;
    double done_;
};

void show_progress(int sample, int nb_samples) {
    settings::set_message(("Computing likelihoods of genotypes: frequencies of sample " +
                           std::to_string(sample + 1) + " of " + std::to_string(nb_samples) + "...")
                              .c_str());
    settings::print_message();
}

// Individuals that an entry stands for, in an estimation without one of them.
double individuals_kept(const TPhenotype& entry, bool one_left_out) {
    return one_left_out ? std::max(entry.freq - 1.0, 0.0) : entry.freq;
}

// The phenotypes of a sample at one locus.
//   individual   index of the entry that has one individual less, -1: none
void take_locus(TPhenDB& part, const Population& sample, int locus, int individual) {
    const int list[] = {1, locus};
    part.create_temp_PhenDB(list, sample.phen_db);
    if (individual < 0) return;
    TPhenotype& entry = *part[individual];
    entry.freq = individuals_kept(entry, true);
    if (entry.freq == 0.0) part.Destroy(individual);
}

// Haplotypes of a sample of known phase with their frequencies.
void count_haplotypes(Population& sample, int individual) {
    sample.hapl_db.empty();
    if (sample.sample_size <= 0.0) return;
    for (int i = 0; i < sample.phen_db.count; ++i) {
        const TPhenotype& entry = *sample.phen_db[i];
        const double copies = individuals_kept(entry, i == individual);
        if (copies == 0.0) continue;
        for (const auto& haplotype : entry.pseudo_hapl) {
            if (haplotype) sample.hapl_db.insert(*haplotype, copies / sample.sample_size);
        }
    }
}

// Starts of an estimation, and iterations of each of them at most.
struct Effort {
    int starts;
    int iterations;
};

// Estimates the frequencies at one locus into the slot of the sample.
// Returns: false when the work was stopped
bool estimate_locus(Population& sample, int slot, TPhenDB& part, settings& s, const Effort& effort) {
    TPopHaploDB alleles;
    int num_lhoods = 0;
    double F = 0.0;
    sample.calc_ML_hapl_freq_hill95_LD(part, alleles, s, num_lhoods, 0, F, nullptr, nullptr, 0, effort.starts,
                                       effort.iterations, s.EpsilonValue);
    part.kill_gen_lists();
    if (s.stopped()) return false;
    for (const TPopHaplotype* haplotype : alleles)
        haplotype->allele(0)->pop_freqs[static_cast<std::size_t>(slot)] = haplotype->freq;
    return true;
}

// Estimates the frequencies at all loci of a sample, in which an individual may be left out.
//   individual   index of the entry that has one individual less, -1: none
// Returns: false when the work was stopped
bool estimate_sample(Population& sample, int slot, int individual, bool known_phase, settings& s,
                     const Effort& effort) {
    const CopiesLeftOut left_out(sample, individual >= 0 ? kCopiesOfIndividual : 0.0);
    if (known_phase) count_haplotypes(sample, individual);
    if (sample.sample_size <= 0.0) return !s.stopped();
    TPhenDB part;
    for (int locus = 0; locus < sample.phen_db.num_loci(); ++locus) {
        take_locus(part, sample, locus, individual);
        if (part.count > 0 && !estimate_locus(sample, slot, part, s, effort)) return false;
    }
    return !s.stopped();
}

bool is_seen(double frequency) {
    return frequency >= kNoFrequency;
}

bool outside_bounds(double product) {
    return product < kSmallestProduct || product > kLargestProduct;
}

// Moves what a product has grown to into a sum of logarithms.
void move_to_logarithm(double& product, double& sum) {
    sum += std::log(product);
    product = 1.0;
}

void print_value(std::ostream& out, int width, double value) {
    out << ' ' << std::setw(width - 1) << value;
}

}  // namespace

double unseen_frequency(double copies) {
    return copies > 0.0 ? 1.0 - std::exp(std::log(0.95) / copies) : 1.0;
}

IndLikelihood::IndLikelihood(Samples& all_samples, settings& s, const double& initial_min_freq)
    : min_freq(initial_min_freq), col_width(kLeastColumnWidth), sett(&s), samples(&all_samples) {}

bool IndLikelihood::has_known_phase() const {
    return samples->GenotypicData != 0 && samples->GameticPhase != 0;
}

// --- Frequencies

bool IndLikelihood::calc_alleles_freqs() {
    return estimate_frequencies(-1, -1);
}

bool IndLikelihood::calc_alleles_freqs_without_one_individual(const int& sample, const int& individual) {
    const auto& populations = samples->populations;
    const bool is_somebody = sample >= 0 && sample < populations.count && individual >= 0 &&
                             individual < populations[sample]->phen_db.count;
    return is_somebody ? estimate_frequencies(sample, individual) : calc_alleles_freqs();
}

// Frequencies of all samples, of which one lacks an individual (-1, -1: none does).
bool IndLikelihood::estimate_frequencies(int smaller_sample, int individual) {
    const int nb_samples = static_cast<int>(samples->populations.count);
    if (nb_samples == 0) return true;
    const Effort effort = {above_zero(sett->InitialConditionsEM, "InitialConditionsEM"),
                           above_zero(sett->MaximumNumOfIterationsEM, "MaximumNumOfIterationsEM")};
    samples->populations[0]->allele_db->create_pop_freq_vector(nb_samples);
    set_unseen_frequencies(smaller_sample);
    const NoPercentage plain_progress;
    bool done = true;
    for (int i = 0; i < nb_samples && done; ++i) {
        show_progress(i, nb_samples);
        const int left_out = i == smaller_sample ? individual : -1;
        done = estimate_sample(*samples->populations[i], i, left_out, has_known_phase(), *sett, effort);
    }
    return done;
}

void IndLikelihood::set_unseen_frequencies(int smaller_sample) {
    const std::size_t nb_samples = static_cast<std::size_t>(samples->populations.count);
    unseen_.clear();
    for (int i = 0; i < samples->populations.count; ++i) {
        const double left_out = i == smaller_sample ? kCopiesOfIndividual : 0.0;
        unseen_.push_back(unseen_frequency(samples->populations[i]->sample_size - left_out));
    }
    nowhere_.assign(nb_samples, 0.0);
    product_.assign(nb_samples, 1.0);
    log_.assign(nb_samples, 0.0);
}

void IndLikelihood::forget_frequencies() {
    for (Population* sample : samples->populations) {
        sample->allele_db->reset_all_pop_freqs();
        sample->hapl_db.empty();
    }
}

// --- Likelihoods

const std::vector<double>& IndLikelihood::log_likelihoods(const TPhenotype& genotype) {
    std::fill(product_.begin(), product_.end(), 1.0);
    std::fill(log_.begin(), log_.end(), 0.0);
    if (genotype.pseudo_hapl[0] == nullptr || genotype.pseudo_hapl[1] == nullptr) {
        std::fill(log_.begin(), log_.end(), std::numeric_limits<double>::quiet_NaN());
    } else if (has_known_phase()) {
        likelihoods_of_haplotypes(genotype);
    } else {
        likelihoods_of_loci(genotype);
    }
    for (std::size_t s = 0; s < log_.size(); ++s)
        log_[s] += std::log(product_[s]);
    return log_;
}

// Frequencies of an allele, one a sample.
const double* IndLikelihood::frequencies(const TAllele* allele) const {
    const bool has_all = allele != nullptr && allele->pop_freqs.size() >= nowhere_.size();
    return has_all ? allele->pop_freqs.data() : nowhere_.data();
}

void IndLikelihood::likelihoods_of_loci(const TPhenotype& genotype) {
    const auto& a = genotype.pseudo_hapl[0]->alleles;
    const auto& b = genotype.pseudo_hapl[1]->alleles;
    const std::size_t nb_samples = product_.size();
    const auto seen_or = [](double f, double unseen) { return is_seen(f) ? f : unseen; };
    for (int locus = 0; locus < genotype.num_loci(); ++locus) {
        const double* const f_a = frequencies(a.at_const(locus));
        const double* const f_b = frequencies(b.at_const(locus));
        const double orders = a.at_const(locus) != b.at_const(locus) ? 2.0 : 1.0;
        for (std::size_t s = 0; s < nb_samples; ++s) {
            const double product = product_[s] * seen_or(f_a[s], unseen_[s]) * seen_or(f_b[s], unseen_[s]);
            product_[s] = product * orders;
            if (outside_bounds(product_[s])) move_to_logarithm(product_[s], log_[s]);
        }
    }
    if (nb_samples > 0) min_freq = unseen_.back();
}

void IndLikelihood::likelihoods_of_haplotypes(const TPhenotype& genotype) {
    const TPopHaplotype& h = *genotype.pseudo_hapl[0];
    const TPopHaplotype& k = *genotype.pseudo_hapl[1];
    const double orders = h != k ? 2.0 : 1.0;
    for (std::size_t s = 0; s < product_.size(); ++s) {
        min_freq = unseen_[s];
        const TPopHaploDB& known = samples->populations[static_cast<int>(s)]->hapl_db;
        const TPopHaplotype* const found_h = known.find(h);
        const TPopHaplotype* const found_k = known.find(k);
        product_[s] = (found_h != nullptr ? found_h->freq : min_freq) *
                      (found_k != nullptr ? found_k->freq : min_freq) * orders;
    }
}

// --- The document

void IndLikelihood::run() {
    std::ostream& out = *sett->result_stream;
    const FormatGuard guard(out);
    for (const Population* sample : samples->populations)
        col_width = std::max(col_width, static_cast<int32_t>(sample->name.view().size()));
    print_head(out);
    print_labels(out);
    if (calc_alleles_freqs()) {
        print_notes(out);
        print_tables(out);
    } else {
        out << "\nThe work was stopped, no likelihood is computed.\n";
    }
    out << '\n';
    forget_frequencies();
}

void IndLikelihood::print_head(std::ostream& out) const {
    if (samples->output_by_sample) {
        print_js_doc_entry(*sett, 1, "_genot_assignment", "Genotype assignment");
    } else {
        print_js_doc_entry(*sett, 1, "_gr_genot_assignment", "Genotype assignment (samp=group)");
    }
    const std::string rule(59, '=');
    out << '\n'
        << rule << "\n== LIKELIHOOD OF INDIVIDUAL GENOTYPES IN ALL POPULATIONS ==\n"
        << rule << "\n\nReferences:\n";
    References(out, Citation::Paetkau_1995, References::kFirst);
    References(out, Citation::Waser_Strobeck_1998, References::kLast);
}

void IndLikelihood::print_labels(std::ostream& out) const {
    constexpr const char* kTitle = "\nList of labels for population samples used below:";
    out << kTitle << '\n' << std::string(std::string_view(kTitle).size() - 1, '=') << '\n';
    const TXmlTag tag{my_string("genotPopLabels")};
    open_table(out, tag);
    out << "Sample label  \tSample name\n"
        << "------------  \t----------\n";
    for (int i = 0; i < samples->populations.count; ++i) {
        out << "       " << i + 1 << ":\t" << escape_text(samples->populations[i]->name.view()) << '\n';
    }
    close_table(out, tag);
}

// Whether missing data are among the alleles that were counted.
bool IndLikelihood::has_missing_data() const {
    if (samples->populations.count == 0) return false;
    const auto is_counted = [this](const TAllele* allele) {
        const auto& f = allele->pop_freqs;
        return allele->is_char(samples->MissingData) && std::any_of(f.begin(), f.end(), is_seen);
    };
    const TAlleleDB& loci = *samples->populations[0]->allele_db;
    return std::any_of(loci.begin(), loci.end(), [&](const TLocus* locus) {
        return std::any_of(locus->begin(), locus->end(), is_counted);
    });
}

// What the numbers of the tables are, and which of them mean little.
void IndLikelihood::print_notes(std::ostream& out) const {
    out << "\nNatural logarithms of the likelihoods, "
        << (has_known_phase() ? "haplotypes being taken as wholes.\n"
                              : "locus by locus, whether the gametic phase is known or not.\n");
    if (has_missing_data()) out << "Missing data count as an allele of their own.\n";
    for (int i = 0; i < samples->populations.count; ++i) {
        if (samples->populations[i]->sample_size <= 0.0)
            out << "Sample " << i + 1 << " has no individuals, its column means nothing.\n";
    }
}

void IndLikelihood::print_tables(std::ostream& out) {
    int number = 0;
    for (Population* sample : samples->populations) {
        const TXmlTag tag(my_string("genotypeLikelihoodMatrix"), my_string("pop"), sample->name);
        open_table(out, tag);
        out << "\nSample " << ++number << "\n----------\n";
        out << std::right << std::setw(col_width) << "" << '\t';
        for (int i = 0; i < samples->populations.count; ++i)
            out << std::setw(col_width) << i + 1;
        out << '\n';
        likelihood_in_a_pop(sample);
        close_table(out, tag);
    }
}

void IndLikelihood::likelihood_in_a_pop(Population* p) {
    std::ostream& out = *sett->result_stream;
    const FormatGuard guard(out);
    out << std::fixed << std::showpoint << std::right << std::setprecision(kDecimals);
    for (const TPhenotype* genotype : p->phen_db) {
        out << escaped_right(genotype->label().view(), col_width) << '\t';
        for (const double value : log_likelihoods(*genotype))
            print_value(out, col_width, value);
        out << '\n';
    }
}

}  // namespace mnd
