#include "input/sample_block.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <string>

#include "foundation/message_codes.h"
#include "input/data_line.h"
#include "input/keyword_reader.h"
#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"

namespace mnd {

namespace {

// How far a sum of proportions may be from 1.
constexpr double kRelativeTolerance = 0.001;

// A number for a message: whole ones without a point.
std::string plain_number(double value) {
    char text[40];
    std::snprintf(text, sizeof text, "%.10g", value);
    return text;
}

bool begins_next_section(std::string_view text) {
    return holds_word(text, "SAMPLENAME") || holds_word(text, "[STRUCTURE]") || holds_word(text, "[MANTEL]");
}

}  // namespace

SampleBlock::State SampleBlock::next(std::string_view& data) {
    for (;;) {
        const State state = next_physical(data);
        if (state != kLine || !data.empty()) return state;
    }
}

SampleBlock::State SampleBlock::next_physical(std::string_view& data) {
    if (closed_) return kEnd;
    if (!read_project_line(file_, line_, line_no_)) return end_of_stream();
    data = line_.view();
    data.remove_prefix(std::min(data.find_first_not_of(" \t"), data.size()));
    const std::size_t brace = data.find('}');
    closed_ = brace != std::string_view::npos;
    if (brace == 0) return kEnd;
    data = data.substr(0, brace);
    return begins_next_section(data) ? refuse_section() : kLine;
}

SampleBlock::State SampleBlock::end_of_stream() {
    if (line_was_too_long(file_)) {
        *_AOS_ << "\tLine #" << line_no_ + 1 << " of sample \"" << sample_ << "\" is longer than "
               << kMaxTextLength - 1 << " characters, aborting reading procedure\n";
        return kFailed;
    }
    if (file_.bad()) {  // such as the name of a folder
        *_AOS_ << "\tUnable to read the data of sample \"" << sample_ << "\", aborting reading procedure\n";
        return kFailed;
    }
    if (external_) return kEnd;
    *_AOS_ << "\tMissing closing brace for sample \"" << sample_ << "\", aborting reading procedure\n";
    E.error(Error, reporter_, kMissingSampleDataClosingBrace);
    return kFailed;
}

SampleBlock::State SampleBlock::refuse_section() {
    *_AOS_ << "\tMissing closing brace for sample \"" << sample_ << "\". New section found on line "
           << line_no_ << " before finding closing brace.  Aborting reading procedure\n";
    E.error(Error, reporter_, kMissingSampleDataClosingBrace);
    return kFailed;
}

bool parse_frequency(std::string_view token, double& value) {
    const std::string text(token);
    char* end = nullptr;
    const double number = std::strtod(text.c_str(), &end);
    const bool is_whole_token = !text.empty() && end == text.c_str() + text.size();
    if (!is_whole_token || !(number >= 0.0) ||
        number > static_cast<double>(std::numeric_limits<int>::max())) {
        return false;
    }
    value = number;
    return true;
}

double take_frequency(double written, bool relative, double stated_size, BlockSums& sums) {
    double count = written;
    if (relative) {
        sums.relative += written;
        count = integer_part(written * stated_size + 0.5);
    }
    sums.frequencies += count;
    return count;
}

void settle_block_size(Population& sample, const BlockSums& sums, double copies, int size_code,
                       const char* relative_source) {
    if (sample.profile.Frequency != 0) {
        if (std::fabs(1.0 - sums.relative) > kRelativeTolerance) {
            char source[120];
            std::snprintf(source, sizeof source, relative_source, sums.relative);
            E.error(Warning, source, kSumOfElementsNotOne);
        }
    } else if (sums.frequencies != sample.sample_size) {
        const std::string source =
            "Population::New_read_gametic_data() (SampleSize=" + plain_number(sample.sample_size) +
            "; Sum. Freq.=" + plain_number(sums.frequencies) + ")";
        E.error(Warning, source.c_str(), size_code);
    }
    sample.sample_size = copies * sums.frequencies;
    sample.inv_sample_size = sample.sample_size > 0.0 ? 1.0 / sample.sample_size : 1.0;
}

}  // namespace mnd
