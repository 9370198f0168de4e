// Samples of given allele counts, for the tests of neutrality on them.
#pragma once

#include <string>
#include <vector>

#include "model/popul_standard.h"
#include "support/seeded_stream.h"
#include "within/analysed_sample.h"

namespace mnd_test {

// A sample with these numbers of gene copies, whose loci have been compared.
inline mnd::PopulStandard& add_counts(AnalysedSamples<mnd::PopulStandard>& samples,
                                      const std::vector<int>& counts, const std::string& name = "Lake") {
    std::string lines;
    for (std::size_t i = 0; i < counts.size(); ++i)
        lines += "h" + std::to_string(i) + ' ' + std::to_string(counts[i]) + " a" + std::to_string(i) + '\n';
    mnd::PopulStandard& sample = samples.add(name, lines);
    samples.prepare();
    sample.evaluate_polymorphism(samples.s);
    return sample;
}

class AlleleSample : public SeededStream {
protected:
    AnalysedSamples<mnd::PopulStandard> a{haplotypic(mnd::STANDARD, ' ')};

    mnd::PopulStandard& add(const std::vector<int>& counts, const std::string& name = "Lake") {
        return add_counts(a, counts, name);
    }
};

}  // namespace mnd_test
