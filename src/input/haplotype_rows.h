// Haplotype definitions and the rows of a distance matrix.
//
// Haplo_DB::associate_with1 and associate_with2 bind the definitions to rows, through their
// id; what follows groups those rows.
#pragma once

#include <vector>

#include "input/dist_mat.h"

namespace mnd {

// Class of each row of a distance matrix: rows at distance exactly 0 belong together, and
// two texts that differ at sites of missing data only can be such a pair.
//
// Each row starts in the class of its own number. Then, for each i in ascending order, every
// row j above i at distance 0 takes the class of i: so the class of j is that of the last i
// that matched. At last, of two rows in one class whose distance is not 0, in either triangle
// of the matrix, both return to their own number.
//   n   rows looked at, not more than the matrix has
// Cost: O(n^2)
std::vector<int> classes_of_identical_rows(DistMat const& distances, int n);

}  // namespace mnd
