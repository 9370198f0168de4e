// The samples section in its older syntax, in which layout does not count: identifiers with
// values anywhere, and data in braces or in an external file.
#include <array>
#include <fstream>
#include <istream>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/message_codes.h"
#include "input/data_line.h"
#include "input/external_name.h"
#include "input/keyword_reader.h"
#include "input/sample_block.h"
#include "model/integer_part.h"
#include "model/samples.h"
#include "run/errors.h"
#include "run/process.h"

namespace mnd {

namespace {

constexpr const char* kSectionReader = "Samples::Read()";

// Keywords of the profile that a sample may set for itself.
constexpr std::array<const char*, 12> kProfileKeywords = {
    "nbloci",      "genotypicdata", "datatype",        "locusseparator", "locilabels", "usedhapllist",
    "missingdata", "locuslisting",  "individuallevel", "interleave",     "frequency",  "gameticphase"};

bool is_profile_keyword(const my_string& ident) {
    for (const char* keyword : kProfileKeywords) {
        if (ident == keyword) return true;
    }
    return false;
}

bool fail(const char* reporter, int code) {
    E.error(Error, reporter, code);
    return false;
}

// Begins an entry of a data block. False at the end of the block; `failed` after a report of a
// character that can't begin one.
bool begins_entry(std::istream& in, const char* console_text, const char* reporter, bool& failed) {
    const int c = peek_data(in);
    if (c == kEndOfStream || c == '}') return false;
    if (is_letter_or_digit(c) || c == '"' || c == '\'') return true;
    *_AOS_ << console_text << static_cast<char>(c) << '\n';
    failed = true;
    return fail(reporter, kInvalidInputCharacter);
}

// Identifier and frequency of an entry.
bool read_entry_head(std::istream& in, my_string& name, double& written) {
    my_string token;
    if (!get_qstring(in, name)) return false;
    return get_plain_word(in, token) && parse_frequency(token.view(), written);
}

// The samples of the section, one after the other.
class FreeFormReader {
public:
    FreeFormReader(Samples& samples, Haplo_DB& haplo, std::ifstream& file)
        : samples_(samples), haplo_(haplo), file_(file) {}

    bool read() {
        my_string ident;
        while (get_next_ident(file_, ident)) {
            if (!take(ident)) return false;
        }
        finish_sample();
        return samples_.populations.count >= samples_.NbSamples;
    }

private:
    bool take(const my_string& ident) {
        if (ident == "samplename") return take_name();
        if (!sample_) return fail(kSectionReader, kSamplesMustBeginWithSampleName);
        if (ident == "samplesize") return take_size();
        if (ident == "samplelocation") return take_location();
        if (ident == "sampledata") return take_data();
        if (is_profile_keyword(ident)) return sample_->profile.read_profile_id_content(file_, ident);
        return fail(kSectionReader, kInvalidSamplesKeyword);
    }

    bool take_name() {
        finish_sample();
        my_string name;
        if (!get_qstring(file_, name)) return fail(kSectionReader, kInvalidSampleName);
        sample_ = std::make_unique<Population>(name, static_cast<int>(samples_.populations.count), samples_);
        return true;
    }

    bool take_size() {
        int size = 0;
        if (!get_int(file_, size)) return fail(kSectionReader, kInvalidSampleSize);
        sample_->sample_size = size;
        return true;
    }

    // A pair in parentheses; nothing works on it.
    bool take_location() {
        std::string pair;
        std::getline(file_, pair, ')');
        return file_.good();
    }

    bool take_data() {
        const int c = peek_data(file_);
        if (c == '{') {
            file_.get();
            if (!read_block(file_, false)) return fail(kSectionReader, kUnreadableSampleData);
            if (peek_data(file_) == '}') file_.get();
            return true;
        }
        if (c == '"' || is_letter_or_digit(c)) return take_external_data();
        return fail(kSectionReader, kMissingBracesAfterHaplList);
    }

    bool take_external_data() {
        my_string word;
        my_string file_name;
        const bool has_word = get_qstring(file_, word);
        word.Upper();
        if (!has_word || !(word == "EXTERN") || !get_qstring(file_, file_name)) {
            return fail(kSectionReader, kInvalidHaplListKeyword);
        }
        E.error(Info, kSectionReader, kReadingExternalHaplotypeList);
        char path[kPathBuffer];
        build_external_name(path, file_name.c_str(), samples_.the_settings);
        std::ifstream external(path);
        if (!external.is_open()) return fail(kSectionReader, kCannotOpenExternalHaplotypes);
        return read_block(external, true) || fail(kSectionReader, kExternalHaplotypesReadError);
    }

    bool read_block(std::istream& in, bool external) {
        if (sample_->profile.GenotypicData != 0) return sample_->read_genotypic_data(in, external) != 0;
        return sample_->read_gametic_data(in, haplo_, external) != 0;
    }

    void finish_sample() {
        if (!sample_) return;
        samples_.populations.Add(Samples::new_sample(sample_->profile.DataType, *sample_).release());
        sample_.reset();
    }

    Samples& samples_;
    Haplo_DB& haplo_;
    std::ifstream& file_;
    std::unique_ptr<Population> sample_;  // owned: the sample being read; null before the first
};

HaploDef* refuse_definition(const char* reporter, int code) {
    E.error(Error, reporter, code);
    return nullptr;
}

// The definition of an entry: the known one, or a new one read from what follows. Data for one
// that has some must be the same. Null after a report.
HaploDef* read_definition(std::istream& in, Haplo_DB& haplo, const my_string& name, ProfileSettings& profile,
                          const char* reporter) {
    HaploDef* definition = haplo.find_by_name(name);
    const bool has_data = profile.DataType != FREQUENCY && !test_end_of_line(in);
    if (definition == nullptr) definition = haplo.append(new HaploDef(name));
    if (!has_data) {
        const bool is_undefined = profile.DataType != FREQUENCY && definition->content.is_null();
        return is_undefined ? refuse_definition(reporter, kUnreadableHaplotypeData) : definition;
    }
    const bool is_repeated = !definition->content.is_null();
    if (is_repeated) {
        E.error(Warning, my_string(reporter) + ",  " + definition->name + " : ", kDataAlreadyDefined);
    }
    HaploDef read;
    if (!read.read_data(in, profile)) return refuse_definition(reporter, kUnreadableHaplotypeData);
    if (!is_repeated) definition->content = read.content;
    if (definition->content == read.content) return definition;
    return refuse_definition(reporter, kHaplotypeAlreadyDefined);
}

// Ends a block: sums must be what was stated, but for proportions.
bool finish_block(Population& sample, const BlockSums& sums, double copies, const char* reporter) {
    const double stated = sample.sample_size;
    sample.sample_size = copies * sums.frequencies;
    sample.inv_sample_size = sample.sample_size > 0.0 ? 1.0 / sample.sample_size : 1.0;
    if (sample.profile.Frequency != 0 || sums.frequencies == stated) return true;
    return fail(reporter, kHaplotypicDataReadError);
}

}  // namespace

int Samples::Read(std::ifstream& file, ProfileSettings& profile, Haplo_DB& haplo) {
    clean();
    set_profile(profile);
    return FreeFormReader(*this, haplo, file).read() ? 1 : 0;
}

int Population::read_gametic_data(std::istream& file, Haplo_DB& haplo, bool) {
    constexpr const char* kReporter = "Population::read_gametic_data()";
    BlockSums sums;
    bool failed = false;
    while (begins_entry(
        file, " ** read gametic data1_l_172:the character is not the expected one c:", kReporter, failed)) {
        my_string entry_name;
        double written = 0.0;
        if (!read_entry_head(file, entry_name, written))
            return fail(kReporter, kUnreadableHaplotypeFrequency) ? 1 : 0;
        HaploDef* definition = read_definition(file, haplo, entry_name, profile, kReporter);
        if (definition == nullptr) return 0;
        const int count = integer_part(take_frequency(written, profile.Frequency != 0, sample_size, sums));
        if (count == 0) continue;
        hapl_list.Add(new PHaploDef(definition, count));
        definition->count = sum_of_counts(definition->count, count);
        ++nb_hapl;
    }
    return !failed && finish_block(*this, sums, 1.0, kReporter) ? 1 : 0;
}

int Population::read_genotypic_data(std::istream& file, bool) {
    constexpr const char* kReporter = "Population::read_genotypic_data()";
    BlockSums sums;
    bool failed = false;
    while (begins_entry(
        file, " ** read gametic data2_l_285:the character is not the expected one c:", kReporter, failed)) {
        my_string entry_name;
        double written = 0.0;
        if (!read_entry_head(file, entry_name, written))
            return fail(kReporter, kUnreadableGenotypeFrequency) ? 1 : 0;
        const double count = take_frequency(written, profile.Frequency != 0, sample_size, sums);
        auto phenotype = std::make_unique<TPhenotype>(entry_name, count);
        const auto type = static_cast<TDataType>(profile.DataType);
        if (!phenotype->read_data(file, type, profile.LocusSeparator)) {
            return fail(kReporter, kUnreadableGenotypeData) ? 1 : 0;
        }
        phen_db.Add(phenotype.release());
        nb_hapl += 2;
    }
    return !failed && finish_block(*this, sums, 2.0, kReporter) ? 1 : 0;
}

// Both lines of an individual; a comment ends a line.
bool TPhenotype::read_data(std::istream& in, TDataType, char separator) {
    for (my_string& gamete : text) {
        std::string line;
        if (!std::getline(in, line)) return false;
        DataLine tokens(std::string_view(line).substr(0, line.find('#')));
        const JoinedTokens data = join_tokens(tokens, separator, LeadingSeparator::kYes);
        if (data.tokens == 0) return false;
        gamete = data.text.c_str();
    }
    return true;
}

}  // namespace mnd
