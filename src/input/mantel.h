// The [[Mantel]] section: the matrices whose correlation is tested.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "foundation/arrays.h"
#include "foundation/my_string.h"
#include "foundation/tri_mat.h"
#include "input/profile.h"

namespace mnd {

// Statistics of the correlation of a matrix Y with one or two matrices X1, X2. A suffix such
// as Y1_2 is partial: Y with X1, X2 being held constant.
struct CorrelationStatistics {
    double ZY1 = 0.0, ZY2 = 0.0, Z12 = 0.0;                     // cross products
    double SPY1 = 0.0, SPY2 = 0.0, SP12 = 0.0;                  // sums of products
    double bY1 = 0.0, bY2 = 0.0, b12 = 0.0, b21 = 0.0;          // regression coefficients
    double bY1_2 = 0.0, bY2_1 = 0.0;                            // partial regression coefficients
    double rY1 = 0.0, rY2 = 0.0, r12 = 0.0;                     // correlation coefficients
    double rY1_2 = 0.0, rY2_1 = 0.0;                            // partial correlations
    double pY1 = 0.0, pY2 = 0.0, pY1_2 = 0.0, pY2_1 = 0.0;      // one-tail probabilities
    double beta1 = 0.0, beta2 = 0.0;                            // standard regression weights
    double R2 = 0.0, one_minus_R2 = 0.0;                        // determination, complement
    double meanY = 0.0, SSY = 0.0;                              // of Y, lower triangle
    double meanX1 = 0.0, SSX1 = 0.0, meanX2 = 0.0, SSX2 = 0.0;  // of X1 and X2
    // Replicates equal to, above and below the observed value of each coefficient.
    std::int32_t equal_Y1 = 0, larger_Y1 = 0, smaller_Y1 = 0;
    std::int32_t equal_Y2 = 0, larger_Y2 = 0, smaller_Y2 = 0;
    std::int32_t equal_Y1_2 = 0, larger_Y1_2 = 0, smaller_Y1_2 = 0;
    std::int32_t equal_Y2_1 = 0, larger_Y2_1 = 0, smaller_Y2_1 = 0;
    std::int32_t num_perm = 0;  // permutations done
};

inline constexpr int kNbYTypes = 6;

// What a project declares for a Mantel test, and the statistics of that test.
class Mantel : public CorrelationStatistics, public ProfileSettings {
public:
    std::int32_t NbMatrices = 0;     // 2 or 3 once read
    std::int32_t matrices_read = 0;  // matrices so far; counts from 1 unless Y is a custom one
    TriMat X1, X2, Y;
    MY_TArrayAsVector<my_string> UsedYMatrixLabels;  // labels used in the test, in order
    my_string YMatrixType = "fst";                   // lower-case kind of Y, one of YTypes
    std::array<my_string, kNbYTypes> YTypes;
    std::int32_t NbYTypes = kNbYTypes;
    std::int32_t MatrixSize = 0;           // rows of the matrices
    std::vector<my_string> YMatrixLabels;  // labels of the rows, MatrixSize long; or empty

    // No matrices.
    Mantel();
    // Three triangles of n zeroed rows.
    explicit Mantel(const int& n);
    Mantel(const Mantel&) = default;
    Mantel& operator=(const Mantel&) = default;
    ~Mantel() = default;

    // Gives up all matrices, labels and statistics.
    void reset();

    // Fills the table of the kinds of Y.
    void init_YTypes();

    // Puts the project's folder before a name without slash and backslash, as
    // DistMat::build_ext_name does.
    void build_ext_name(char* out, const char* name) const;
};

}  // namespace mnd
