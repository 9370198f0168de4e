// The [[Samples]] section as a whole: its keywords, its checks, its writing.
#include <cmath>
#include <ctime>
#include <fstream>
#include <iomanip>
#include <limits>
#include <string>
#include <unordered_set>

#include "foundation/clock_time.h"
#include "foundation/message_codes.h"
#include "input/data_line.h"
#include "input/external_file.h"
#include "input/keyword_reader.h"
#include "model/compact_list.h"
#include "model/integer_part.h"
#include "model/samples.h"
#include "run/errors.h"

namespace mnd {

namespace {

constexpr const char* kReporter = "Samples::NewReadSamples()";
constexpr int kMaxRenamings = 100;

// The value of a size line, if it is one: a number of gene copies that an int can hold.
bool usable_size(double value) {
    return value >= 0.0 && value <= static_cast<double>(std::numeric_limits<int>::max());
}

// Reads the lines of the section. Each take_ function handles one keyword and tells whether
// and how reading ends.
class SectionReader {
public:
    enum Outcome { kGoOn, kStopGood, kStopBad };

    SectionReader(Samples& samples, ProfileSettings& profile, Haplo_DB& haplo, std::ifstream& file,
                  int& line_no, my_string& line)
        : samples_(samples), profile_(profile), haplo_(haplo), file_(file), line_no_(line_no), line_(line) {}

    Outcome take_name() {
        if (!checkForPresenceOfEqualSign(line_, "SampleName", line_no_)) return kGoOn;
        if (!getQuotedString(line_, sample_name_, "SampleName", line_no_)) return refuse_keyword();
        ++num_samples_;
        name_seen_ = true;
        return kGoOn;
    }

    Outcome take_size() {
        if (!checkForPresenceOfEqualSign(line_, "SampleSize", line_no_)) return kGoOn;
        double value = 0.0;
        if (!getValue(line_, value, "SampleSize", line_no_) || !usable_size(value)) return refuse_keyword();
        sample_size_ = std::trunc(value);
        return kGoOn;
    }

    // found   set unless the data have no name
    Outcome take_data(bool& found) {
        if (!name_seen_) {
            E.error(Warning, kReporter, kSampleNameNotFound);
            *_AOS_ << "Warning: Keyword \"SampleName\" not found while data is defined for population #"
                   << num_samples_ + 1 << '\n';
            return kStopGood;
        }
        found = true;
        Population sample("noName", -1, profile_);
        sample.id = num_samples_ - 1;
        sample.sample_size = sample_size_;
        sample.inv_sample_size = sample_size_ > 0.0 ? 1.0 / sample_size_ : 1.0;
        sample.name = sample_name_;
        if (!read_block(sample)) {
            E.error(Error, kReporter, kUnreadableSampleData);
            return kStopBad;
        }
        settle_name(sample.name);
        samples_.populations.Add(Samples::new_sample(profile_.DataType, sample).release());
        name_seen_ = false;
        return kGoOn;
    }

    // The end of the file: the number of samples is what was met.
    void end_of_file() {
        if (num_samples_ == samples_.NbSamples) return;
        warn_of_number(" samples are actually listed in project file, while \n",
                       " are defined in the [[Profile]] section. Adjusting no. of samples...\n");
        samples_.NbSamples = profile_.NbSamples = num_samples_;
    }

    // The next section. The number stays as it was declared: kept on purpose.
    // Test: SamplesSection.NbSamplesStaysAtTheNextSection
    void next_section() {
        if (num_samples_ == samples_.NbSamples) return;
        warn_of_number(" samples are actually listed in project file, while ",
                       " are defined in the [[Profile]] section\n");
    }

    Outcome line_too_long() {
        *_AOS_ << "\tLine #" << line_no_ + 1 << " of the Samples section is longer than "
               << kMaxTextLength - 1 << " characters, aborting reading procedure\n";
        E.error(Error, kReporter, kUnreadableSampleData);
        return kStopBad;
    }

private:
    Outcome refuse_keyword() {
        file_.close();
        E.error(Warning, kReporter, kInvalidSampleName);
        return kStopBad;
    }

    void warn_of_number(const char* met, const char* declared) {
        E.error(Warning, "Samples::NewRead()", kInvalidNbSamples);
        *_AOS_ << "Warning: " << num_samples_ << met << samples_.NbSamples << declared;
    }

    bool read_block(Population& sample) {
        const std::clock_t start = std::clock();
        std::ifstream external;
        const bool is_external = holds_word(line_.view(), "EXTERN");
        if (is_external) open_external(external, sample.name);
        *_AOS_ << "\tReading " << sample.name << " ... ";
        int lines_read = is_external ? 0 : line_no_;
        std::istream& source = is_external ? external : file_;
        const bool done =
            profile_.GenotypicData != 0
                ? sample.New_read_genotypic_data(source, is_external, lines_read, line_) != 0
                : sample.New_read_gametic_data(source, haplo_, is_external, lines_read, line_) != 0;
        if (!done) return false;
        if (!is_external) line_no_ = lines_read;
        *_AOS_ << "\tdone ! (" << milliseconds_since(start) << " ms)\n";
        return true;
    }

    // Without a name in quotes, and when the file does not open, the stream has failed.
    void open_external(std::ifstream& external, const my_string& name) {
        E.error(Info, kReporter, kReadingExternalSampleData);
        my_string file_name;
        external.setstate(std::ios_base::failbit);
        if (!getQuotedString(line_, file_name, "Extern sample data", line_no_)) return;
        external = open_external_file(file_name, profile_.the_settings);
        if (external.is_open()) {
            *_AOS_ << "\tReading sample data for population \"" << name << "\" in external file\""
                   << file_name << "\"\n";
        } else {
            *_AOS_ << "\tWarning: External file \"" << file_name << "\" listed on line " << line_no_
                   << " cannot be open. Check that it exists...\n";
        }
    }

    // A name that is taken gets the digits 0, 1, 2 and so on behind it until it is free.
    void settle_name(my_string& name) {
        for (int k = 0; k < kMaxRenamings && names_.contains(std::string(name.view())); ++k) {
            name += std::to_string(k).c_str();
            E.error(Warning, kReporter, kDuplicateSampleName);
        }
        names_.emplace(name.view());
    }

    Samples& samples_;
    ProfileSettings& profile_;
    Haplo_DB& haplo_;
    std::ifstream& file_;
    int& line_no_;
    my_string& line_;
    int num_samples_ = 0;       // names met so far
    my_string sample_name_;     // the last one
    double sample_size_ = 0.0;  // the last size met, also when it stands before an earlier sample
    bool name_seen_ = false;    // a name without data yet
    std::unordered_set<std::string> names_;
};

// ---- Checks across the data

bool fail_check(int code) {
    E.error(Error, "Samples::verify_data()", code);
    return false;
}

// Takes gene copies and haplotypes off a sample; the number of haplotypes may become negative.
void lower_size(Population& sample, double copies, double haplotypes) {
    sample.sample_size -= copies;
    sample.nb_hapl = integer_part(sample.nb_hapl - haplotypes);
    if (sample.sample_size > 0.0) sample.inv_sample_size = 1.0 / sample.sample_size;
}

bool verify_genotypes(Population& sample, char missing) {
    if (sample.phen_db.count == 0) return fail_check(kPopulationWithoutData);
    const int loci = sample.phen_db.num_loci();
    for (const TPhenotype* phenotype : sample.phen_db) {
        if (phenotype->num_loci() != loci) return fail_check(kPhenotypesDifferInLoci);
    }
    drop_elements(sample.phen_db, [&sample, missing](TPhenotype& phenotype) {
        if (!phenotype.is_all_missing(missing)) return false;
        const double copies = 2.0 * integer_part(phenotype.freq);
        lower_size(sample, copies, copies);
        phenotype.delete_pheno();
        return true;
    });
    sample.phen_db.convert_freq_to_real();
    return true;
}

bool verify_haplotypes(Population& sample, char missing) {
    if (sample.hapl_list.count == 0) return true;
    const long loci = sample.hapl_list.data[0]->def->num_alleles();
    for (const PHaploDef* entry : sample.hapl_list) {
        if (entry->def->num_alleles() != loci) return fail_check(kHaplotypesDifferInLoci);
    }
    // A definition without a locus, as frequency data have them, is not missing.
    drop_elements(sample.hapl_list, [&sample, missing](const PHaploDef& entry) {
        if (!entry.def->is_all_missing(missing)) return false;
        entry.def->count = 0;
        lower_size(sample, entry.freq, 1.0);
        return true;
    });
    return true;
}

// Loci of the first haplotype or phenotype; -1 for a sample that holds none any more.
long loci_of(const Population& sample, bool genotypic) {
    if (genotypic) return sample.phen_db.count == 0 ? -1 : sample.phen_db.num_loci();
    return sample.hapl_list.count == 0 ? -1 : sample.hapl_list.data[0]->def->num_alleles();
}

// ---- Writing

// Digits that bring every double back unchanged.
constexpr int kFullPrecision = std::numeric_limits<double>::max_digits10;

// A count as the section has it: absolute, or its share of the size.
void write_frequency(std::ostream& out, double count, double size, int relative) {
    if (relative != 0 && size > 0.0) {
        out << std::setprecision(kFullPrecision) << count / size;
    } else {
        out << std::setprecision(kFullPrecision) << count;
    }
}

// The data of a text without the separator before its first token.
std::string_view without_leading(const my_string& text, char separator) {
    std::string_view data = text.view();
    if (separator != 0 && !data.empty() && data.front() == separator) data.remove_prefix(1);
    return data;
}

void write_genotypes(std::ostream& out, const Population& sample, double individuals) {
    const char separator = sample.profile.LocusSeparator;
    for (const TPhenotype* phenotype : sample.phen_db) {
        out << "\t\t\t" << phenotype->label() << '\t';
        write_frequency(out, phenotype->freq, individuals, sample.profile.Frequency);
        out << '\t' << without_leading(phenotype->text[0], separator) << "\n\t\t\t\t\t"
            << without_leading(phenotype->text[1], separator) << '\n';
    }
}

void write_haplotypes(std::ostream& out, const Population& sample) {
    for (const PHaploDef* entry : sample.hapl_list) {
        out << "\t\t\t" << entry->def->name << '\t';
        write_frequency(out, entry->freq, sample.sample_size, sample.profile.Frequency);
        if (!entry->def->content.is_null()) out << '\t' << entry->def->content;
        out << '\n';
    }
}

}  // namespace

int Samples::NewReadSamples(std::ifstream& file, ProfileSettings& profile, Haplo_DB& haplo, int& line_no,
                            my_string& line, bool& found_name, bool& found_size, bool& found_data) {
    clean();
    set_profile(profile);
    SectionReader reader(*this, profile, haplo, file, line_no, line);
    SectionReader::Outcome outcome = SectionReader::kGoOn;
    while (outcome == SectionReader::kGoOn && read_project_line(file, line, line_no)) {
        const std::string_view text = line.view();
        if (holds_heading(text, "[STRUCTURE]") || holds_heading(text, "[MANTEL]")) {
            reader.next_section();
            return 1;
        }
        if (holds_word(text, "SAMPLENAME")) {
            found_name = true;
            outcome = reader.take_name();
        } else if (holds_word(text, "SAMPLESIZE")) {
            found_size = true;
            outcome = reader.take_size();
        } else if (holds_word(text, "SAMPLEDATA")) {
            outcome = reader.take_data(found_data);
        }
    }
    if (outcome == SectionReader::kGoOn && line_was_too_long(file)) outcome = reader.line_too_long();
    if (outcome == SectionReader::kGoOn) reader.end_of_file();
    return outcome == SectionReader::kStopBad ? 0 : 1;
}

bool Samples::verify_data() {
    const bool genotypic = GenotypicData != 0;
    for (Population* sample : populations) {
        const bool good =
            genotypic ? verify_genotypes(*sample, MissingData) : verify_haplotypes(*sample, MissingData);
        if (!good) return false;
    }
    long expected = -1;
    for (const Population* sample : populations) {
        const long loci = loci_of(*sample, genotypic);
        if (loci < 0) continue;
        if (expected < 0) expected = loci;
        if (loci != expected) return fail_check(kSamplesDifferInLoci);
    }
    return true;
}

int Samples::explore(std::ifstream& file, ProfileSettings& profile) {
    std::ofstream names("samples.txt");
    names << profile.NbSamples << '\n';
    my_string line;
    int line_no = 0;
    for (int found = 0; found < profile.NbSamples;) {
        if (!read_project_line(file, line, line_no)) {
            E.error(Error, "Samples::explore(): Unable to extract all population names",
                    kUnreadableSampleData);
            return 0;
        }
        if (!holds_word(line.view(), "SAMPLENAME")) continue;
        names << line.extract_after('=').extract_after('"').extract_before('"') << '\n';
        ++found;
    }
    return 1;
}

void Print(Population& sample, void* arg) {
    std::ostream& out = *static_cast<std::ostream*>(arg);
    const bool genotypic = sample.profile.GenotypicData != 0;
    const double size = genotypic ? sample.sample_size / 2.0 : sample.sample_size;
    PrintName(sample, arg);
    out << "\t\tSampleSize=" << std::setprecision(kFullPrecision) << size << "\n\t\tSampleData={\n";
    if (genotypic) {
        write_genotypes(out, sample, size);
    } else {
        write_haplotypes(out, sample);
    }
    out << "\t\t}\n";
}

void PrintName(Population& sample, void* arg) {
    std::ostream& out = *static_cast<std::ostream*>(arg);
    out << "\t\tSampleName=\"" << sample.name << "\"\n";
}

std::ostream& operator<<(std::ostream& out, Samples& samples) {
    const std::streamsize precision = out.precision();
    out << "\n\t[[Samples]]\n\n";
    for (Population* sample : samples.populations)
        Print(*sample, &out);
    out.precision(precision);
    return out;
}

}  // namespace mnd
