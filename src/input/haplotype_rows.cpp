// The binding of haplotype definitions to the rows of a distance matrix, through their id.
#include <cstddef>
#include <ostream>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/dist_mat.h"
#include "model/haplotypes.h"
#include "run/errors.h"

namespace mnd {

namespace {

constexpr const char* kByLabel = "Haplo_DB::associate_with1()";
constexpr const char* kByPosition = "Haplo_DB::associate_with2()";

void tell_label_not_found(my_string const& label) {
    report(Warning, kByLabel, kMatrixHaplotypeNotInSamples);
    *_AOS_ << "\tHaplotype \"" << label << "\" defined in the labels of the user-defined\n"
           << "\tdistance matrix was not found in any population sample\n";
}

void tell_spare_labels(int labels) {
    *_AOS_ << "      During the association of the Distance matrix LABELS and \n"
              "      the haplotype list, "
           << labels
           << " LABELS where found\n"
              "      that did not correspond to any haplotype defined in the samples.\n"
              "      To be sure that there is no error in the data input file\n"
              "      check if all LABELS or Haplotype names are valid.\n";
}

}  // namespace

bool Haplo_DB::associate_with1(DistMat const& m) {
    for (HaploDef* definition : list)
        definition->id = -1;
    if (m.labels.empty()) {
        report(Warning, kByLabel, kNoDistanceMatrixLabels);
        return false;
    }
    int not_found = 0;
    for (std::size_t row = 0; row < m.labels.size(); ++row) {
        HaploDef* definition = find_by_name(m.labels[row]);
        if (definition == nullptr) {
            tell_label_not_found(m.labels[row]);
            ++not_found;
        } else {
            definition->id = static_cast<int32_t>(row);
        }
    }
    for (HaploDef const* definition : list) {
        if (definition->id >= 0) continue;
        report(Error, kByLabel, kHaplotypeWithoutMatrixLabel);
        return false;
    }
    if (not_found > 0) tell_spare_labels(not_found);
    return true;
}

bool Haplo_DB::associate_with2(DistMat const& m) {
    if (list.count != m.MatrixSize && m.conventional == 0) {
        report(Error, kByPosition, kInvalidDistanceMatrixSize);
        return false;
    }
    int32_t position = 0;
    for (HaploDef* definition : list)
        definition->id = position++;
    return true;
}

}  // namespace mnd
