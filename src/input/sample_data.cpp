// Reading of the data of one sample, line by line.
#include <istream>
#include <memory>
#include <string>
#include <string_view>

#include "foundation/message_codes.h"
#include "input/data_line.h"
#include "input/sample_block.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"

namespace mnd {

namespace {

constexpr const char* kGametic = "Population::New_read_gametic_data()";
constexpr const char* kGenotypic = "Population::New_read_genotypic_data()";

my_string text_of(std::string_view view) {
    return my_string(std::string(view).c_str());
}

// Reads the lines of haplotypic data into one sample.
class GameticReader {
public:
    GameticReader(Population& sample, Haplo_DB& haplo, SampleBlock& block)
        : sample_(sample), haplo_(haplo), block_(block) {}

    bool read() {
        std::string_view data;
        SampleBlock::State state;
        while ((state = block_.next(data)) == SampleBlock::kLine) {
            if (!take_line(data)) return false;
        }
        if (state == SampleBlock::kFailed) return false;
        settle_block_size(sample_, sums_, 1.0, kAdjustingHaplotypicSampleSize,
                          "Population::New_read_gametic_data() sum of Relative frequencies=%f");
        return true;
    }

private:
    bool take_line(std::string_view data) {
        DataLine line(data);
        const my_string name = text_of(line.next());
        if (name.is_null()) return true;
        HaploDef* definition = haplo_.find_by_name(name);
        const bool is_new = definition == nullptr;
        if (is_new) definition = define(name);
        if (definition == nullptr) return false;
        double frequency = 0.0;
        if (!take_frequency_token(line.next(), name, frequency)) return false;
        if (sample_.profile.DataType != FREQUENCY && !take_data(*definition, is_new, line)) return false;
        if (frequency != 0.0) add_entry(*definition, integer_part(frequency));
        return true;
    }

    HaploDef* define(const my_string& name) {
        haplo_.append(new HaploDef(name));
        HaploDef* definition = haplo_.find_by_name(name);
        if (definition != nullptr) return definition;
        *_AOS_ << "\tHaplotype defined on line " << block_.line_number()
               << " could not be entered into Haplotype data base, aborting reading procedure\n";
        E.error(Error, kGametic, kUnreadableSampleData);
        return nullptr;
    }

    bool take_frequency_token(std::string_view token, const my_string& name, double& frequency) {
        double written = 0.0;
        if (token.empty()) {
            *_AOS_ << "\tUnable to read haplotype \"" << name << "\" frequency on line "
                   << block_.line_number() << ", aborting reading procedure\n";
        } else if (!parse_frequency(token, written)) {
            *_AOS_ << "\tProblem reading haplotype frequency (\"" << token << "\") on line "
                   << block_.line_number() << " . Aborting reading file\n";
        } else {
            frequency = take_frequency(written, sample_.profile.Frequency != 0, sample_.sample_size, sums_);
            return true;
        }
        E.error(Error, kGametic, kUnreadableHaplotypeFrequency);
        return false;
    }

    // The data behind the frequency: a first definition, a repeated one, or none.
    bool take_data(HaploDef& definition, bool is_new, DataLine& line) {
        const char separator = sample_.profile.LocusSeparator;
        const JoinedTokens data = join_tokens(line, separator, LeadingSeparator::kNo);
        if (data.tokens == 0) {
            if (is_new) return refuse_undefined(definition.name);
            if (!definition.content.is_null()) return true;
        }
        my_string text(data.text.c_str());
        const int loci = data.loci(separator);
        if (!definition.content.is_null()) return compare_data(definition, text, loci);
        if (!check_loci(definition.name, loci)) return false;
        if (definition.read_data(text, sample_.profile)) return true;
        return refuse_data(is_new ? kUnreadableSampleData : kUnreadableHaplotypeData);
    }

    // Data for a haplotype that has some: they must be the same.
    bool compare_data(const HaploDef& definition, my_string& text, int loci) {
        const my_string source = my_string(kGametic) + ",  " + definition.name + " : ";
        E.error(Warning, source, kDataAlreadyDefined);
        *_AOS_ << "\tHaplotype " << definition.name << " defined on line " << block_.line_number()
               << " has already been defined previously...\n";
        if (!check_loci(definition.name, loci)) return false;
        HaploDef repeated;
        if (!repeated.read_data(text, sample_.profile)) return refuse_data(kUnreadableHaplotypeData);
        if (repeated.content == definition.content) return true;
        sample_.hapl_list.Flush();
        *_AOS_ << "\tDefinition of haplotype " << definition.name << " defined on line "
               << block_.line_number()
               << " does not match its previous definition, aborting reading project.\n";
        E.error(Error, kGametic, kHaplotypeAlreadyDefined);
        return false;
    }

    bool check_loci(const my_string& name, int loci) {
        const int expected = sums_.expected_loci;
        if (sums_.same_loci(loci)) return true;
        *_AOS_ << "\tNumber of loci for haplotype \"" << name << "\" is different (" << loci
               << ") from that previously defined (" << expected << ") on line " << block_.line_number()
               << '\n';
        E.error(Error, kGametic, kPhenotypesDifferInLoci);
        return false;
    }

    bool refuse_undefined(const my_string& name) {
        *_AOS_ << "\tHaplotype \"" << name << "\" listed on line " << block_.line_number()
               << " is undefined. Aborting reading project.\n";
        E.error(Error, kGametic, kUnreadableSampleData);
        return false;
    }

    bool refuse_data(int code) {
        sample_.hapl_list.Flush();
        *_AOS_ << "\tUnable to read haplotype definition on line " << block_.line_number()
               << ", aborting reading procedure\n";
        E.error(Error, kGametic, code);
        return false;
    }

    void add_entry(HaploDef& definition, int count) {
        sample_.hapl_list.Add(new PHaploDef(&definition, count));
        definition.count = sum_of_counts(definition.count, count);
        ++sample_.nb_hapl;
    }

    Population& sample_;
    Haplo_DB& haplo_;
    SampleBlock& block_;
    BlockSums sums_;
};

// Reads the pairs of lines of genotypic data into one sample.
class GenotypicReader {
public:
    GenotypicReader(Population& sample, SampleBlock& block) : sample_(sample), block_(block) {}

    bool read() {
        std::string_view data;
        SampleBlock::State state;
        while ((state = block_.next(data)) == SampleBlock::kLine) {
            if (!take_individual(data)) return false;
        }
        if (state == SampleBlock::kFailed) return false;
        // Kept on purpose: the source of the warning about the size names the gametic reader.
        // Test: SampleData.GenotypicSizeWarningNamesTheGameticReader
        settle_block_size(sample_, sums_, 2.0, kAdjustingGenotypicSampleSize,
                          "Population::New_read_genotypic_data() sum of Relative frequencies=%f");
        return true;
    }

private:
    bool take_individual(std::string_view data) {
        DataLine line(data);
        const my_string name = text_of(line.next());
        if (name.is_null()) return refuse_name();
        double frequency = 0.0;
        if (!take_frequency_token(line.next(), frequency)) return false;
        auto phenotype = std::make_unique<TPhenotype>(name, frequency);
        if (!take_gamete(line, name, phenotype->text[0])) return false;
        std::string_view second;
        const SampleBlock::State state = block_.next_physical(second);
        if (state == SampleBlock::kFailed) return false;
        DataLine second_line(second);
        if (state == SampleBlock::kEnd || second.empty()) return refuse_data(name);
        if (!take_gamete(second_line, name, phenotype->text[1])) return false;
        if (frequency != 0.0) {
            sample_.phen_db.Add(phenotype.release());
            sample_.nb_hapl += 2;
        }
        return true;
    }

    bool refuse_name() {
        *_AOS_ << "\tUnable to read genotype ID on line " << block_.line_number()
               << ", aborting reading procedure\n";
        E.error(Error, kGenotypic, kUnreadableGenotypeFrequency);
        return false;
    }

    bool take_frequency_token(std::string_view token, double& frequency) {
        double written = 0.0;
        if (token.empty()) {
            *_AOS_ << "\tUnable to read read genotype frequency on line " << block_.line_number()
                   << ", aborting reading procedure\n";
            E.error(Error, "New_read_genotypic_data()", kUnreadableGenotypeFrequency);
            return false;
        }
        if (!parse_frequency(token, written)) {
            *_AOS_ << "\tProblem reading genotype frequency (\"" << token << "\") on line "
                   << block_.line_number() << " . Aborting reading file\n";
            E.error(Error, kGenotypic, kUnreadableGenotypeFrequency);
            return false;
        }
        frequency = take_frequency(written, sample_.profile.Frequency != 0, sample_.sample_size, sums_);
        return true;
    }

    // The data of one line. Every token has the separator before it, the first one too.
    bool take_gamete(DataLine& line, const my_string& name, my_string& text) {
        const char separator = sample_.profile.LocusSeparator;
        const JoinedTokens data = join_tokens(line, separator, LeadingSeparator::kYes);
        if (data.tokens == 0) return refuse_data(name);
        const int loci = data.loci(separator);
        const int expected = sums_.expected_loci;
        if (!sums_.same_loci(loci)) {
            *_AOS_ << "\tNumber of loci for genotype \"" << name << "\" is different (" << loci
                   << ") from that previously defined (" << expected << ") on line " << block_.line_number()
                   << '\n';
            E.error(Error, kGenotypic, kPhenotypesDifferInLoci);
            return false;
        }
        text = data.text.c_str();
        return true;
    }

    bool refuse_data(const my_string& name) {
        *_AOS_ << "\tUnable to read genotype \"" << name << "\" definition on line " << block_.line_number()
               << ", aborting reading procedure\n";
        E.error(Error, kGenotypic, kUnreadableGenotypeData);
        return false;
    }

    Population& sample_;
    SampleBlock& block_;
    BlockSums sums_;
};

// An external file that did not open.
bool refuse_stream(const Population& sample, const char* reporter, int code) {
    *_AOS_ << "\tNo data could be read for sample \"" << sample.name << "\", aborting reading procedure\n";
    E.error(Error, reporter, code);
    return false;
}

}  // namespace

int Population::New_read_gametic_data(std::istream& file, Haplo_DB& haplo, int external, int& line_no,
                                      my_string& line) {
    nb_hapl = 0;
    if (file.fail()) return refuse_stream(*this, kGametic, kHaplotypicDataReadError) ? 1 : 0;
    SampleBlock block(file, external != 0, name, kGametic, line_no, line);
    return GameticReader(*this, haplo, block).read() ? 1 : 0;
}

int Population::New_read_genotypic_data(std::istream& file, int external, int& line_no, my_string& line) {
    nb_hapl = 0;
    if (file.fail()) return refuse_stream(*this, kGenotypic, kGenotypicDataReadError) ? 1 : 0;
    SampleBlock block(file, external != 0, name, kGenotypic, line_no, line);
    return GenotypicReader(*this, block).read() ? 1 : 0;
}

}  // namespace mnd
