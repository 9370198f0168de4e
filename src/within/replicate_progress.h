// Progress of a test by simulated samples.
#pragma once

#include <algorithm>

#include "run/settings.h"

namespace mnd {

// The work done advances by 1 after so many simulated samples, and the display with it. The estimate
// of the whole work counts in the same units.
class ReplicateProgress {
public:
    explicit constexpr ReplicateProgress(int replicates_per_unit)
        : replicates_per_unit_(replicates_per_unit) {}

    // After each sample; `done` counts from 1.
    void note(int done) const {
        if (done % replicates_per_unit_ == 0) advance(1);
    }
    // In place of samples that were planned and are not needed: the estimate has them.
    void skip(int planned) const { advance(std::max(planned, 0) / replicates_per_unit_); }

private:
    static void advance(int units) {
        if (units == 0) return;
        settings::global_work_done += units;
        settings::print_message();
    }

    int replicates_per_unit_;
};

// Of the tests on allele counts, and of those on sequences.
inline constexpr ReplicateProgress kAlleleTestProgress{100};
inline constexpr ReplicateProgress kSequenceTestProgress{50};

}  // namespace mnd
