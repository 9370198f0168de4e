// Samples without data but with sizes, and a structure over them, to simulate.
#pragma once

#include <initializer_list>
#include <string>

#include "input/structure.h"
#include "model/popul_standard.h"
#include "model/samples.h"

namespace mnd_test {

// Appends empty samples of these numbers of gene copies, named "s1", "s2", ...
inline void add_samples(mnd::Samples& samples, std::initializer_list<int> sizes) {
    for (const int size : sizes) {
        auto* sample = new mnd::PopulStandard;
        sample->name = ("s" + std::to_string(samples.populations.count + 1)).c_str();
        sample->profile = samples;
        sample->sample_size = size;
        samples.populations.Add(sample);
    }
}

// Groups of samples by their numbers from 0.
inline void add_groups(mnd::Structure& structure, const mnd::Samples& samples,
                       std::initializer_list<std::initializer_list<int>> groups) {
    structure.NbGroups = static_cast<int>(groups.size());
    structure.allocate_groups();
    std::size_t g = 0;
    for (const auto& members : groups) {
        for (const int i : members)
            structure.groups[g].Add(samples.populations.at_const(i));
        structure.group_sizes[g] = static_cast<int>(members.size());
        structure.NbSamples += static_cast<int>(members.size());
        ++g;
    }
}

}  // namespace mnd_test
