// The frame of a block of sample data, and the numbers and sums that its readers share.
#pragma once

#include <istream>
#include <string_view>

#include "foundation/my_string.h"
#include "input/profile.h"

namespace mnd {

class Population;

// The lines of one block, up to its closing brace, or of one external file. Comments are cut,
// and so is the brace with all that follows it.
class SampleBlock {
public:
    enum State { kLine, kEnd, kFailed };

    //   sample    name in messages
    //   reporter  source of reports
    //   line_no   raised for each line taken
    //   line      working line; a view that next() gives lives until the next call
    SampleBlock(std::istream& file, bool external, const my_string& sample, const char* reporter,
                int& line_no, my_string& line)
        : file_(file),
          external_(external),
          sample_(sample),
          reporter_(reporter),
          line_no_(line_no),
          line_(line) {}

    // The next line that holds anything. kFailed after a report: the brace is missing.
    State next(std::string_view& data);
    // The next line, even if nothing stands in it.
    State next_physical(std::string_view& data);

    int line_number() const { return line_no_; }

private:
    State end_of_stream();
    State refuse_section();

    std::istream& file_;
    bool external_;
    const my_string& sample_;
    const char* reporter_;
    int& line_no_;
    my_string& line_;
    bool closed_ = false;
};

// Sums over the entries of a block.
struct BlockSums {
    double frequencies = 0.0;  // counts, fractions included
    double relative = 0.0;     // proportions as written
    int expected_loci = -1;    // of the first line; -1 before it

    // Whether a line has as many loci as the first one.
    bool same_loci(int loci) {
        if (expected_loci < 0) expected_loci = loci;
        return loci == expected_loci;
    }
};

// A frequency as written. False unless all of the token is a finite number, at least 0 and
// small enough for a count.
bool parse_frequency(std::string_view token, double& value);

// Turns a frequency as written into a count and adds it to the sums; a proportion becomes the
// nearest count in a sample of this size.
double take_frequency(double written, bool relative, double stated_size, BlockSums& sums);

// Compares the sums with what was stated, warns, and sets size and inverse size of the sample.
//   copies           gene copies per unit of frequency
//   size_code        report of a different size
//   relative_source  source of the warning about proportions, with the place of their sum (%f)
void settle_block_size(Population& sample, const BlockSums& sums, double copies, int size_code,
                       const char* relative_source);

}  // namespace mnd
