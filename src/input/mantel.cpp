#include "input/mantel.h"

#include "input/external_name.h"

namespace mnd {

Mantel::Mantel() : X1(0), X2(0), Y(0) {
    init_YTypes();
}

Mantel::Mantel(const int& n) : X1(n), X2(n), Y(n) {
    init_YTypes();
}

void Mantel::reset() {
    static_cast<CorrelationStatistics&>(*this) = CorrelationStatistics();
    NbMatrices = 0;
    matrices_read = 0;
    X1.destroy();
    X2.destroy();
    Y.destroy();
    UsedYMatrixLabels.Flush();
    YMatrixType = "fst";
    MatrixSize = 0;
    YMatrixLabels.clear();
}

void Mantel::init_YTypes() {
    YTypes = {"fst", "log_fst", "slatkinlinearfst", "log_slatkinlinearfst", "nm", "custom"};
    NbYTypes = kNbYTypes;
}

void Mantel::build_ext_name(char* out, const char* name) const {
    build_external_name(out, name, the_settings);
}

}  // namespace mnd
