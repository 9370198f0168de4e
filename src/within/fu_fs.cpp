#include "within/fu_fs.h"

#include <cmath>

#include "model/integer_part.h"
#include "model/population.h"
#include "run/errors.h"
#include "within/ewens_sampling.h"

namespace mnd {

namespace {

constexpr const char* kReporter = "PopGenetics::Fu_Fs()";

void warn(bool report_it, MessageCode code) {
    if (report_it) E.error(Warning, kReporter, code);
}

}  // namespace

int PopGenetics::Fu_Fs(double const& theta, int const& k, double& Fs, bool report) {
    if (theta <= 0.0) {
        Fs = kNumericalInfinity;
        warn(report, kNoDiversityInFuTest);
        return 0;
    }
    const int n = integer_part(sample_size);
    if (n >= kNeutralityCopyLimit || k >= kNeutralityAlleleLimit || n < 1 || k < 1 || !ensure_B(n, k)) {
        warn(report, kTooManyAllelesOrTooLargeSample);
        return 0;
    }
    const double S = static_cast<double>(1.0L - probability_below_k(k, n, theta, BMat));
    if (S > 0.0 && S < 1.0) {
        Fs = std::log(S / (1.0 - S));
        return 1;
    }
    if (S == 0.0) {
        Fs = -kNumericalInfinity;
    } else if (S == 1.0) {
        Fs = kNumericalInfinity;
        warn(report, kNoDiversityInFuTest);
    } else {
        warn(report, kNegativeSInFs);
    }
    return 0;
}

}  // namespace mnd
