#include "input/dist_mat.h"

#include <ostream>
#include <string>

#include "foundation/escape.h"
#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "input/external_name.h"
#include "results/xml_tags.h"
#include "run/errors.h"
#include "run/settings.h"

namespace mnd {

DistMat::DistMat() : TriMat(0) {}

DistMat::DistMat(const int& n) : TriMat(n) {}

DistMat::DistMat(const DistMat& other) : TriMat(0), ProfileSettings() {
    *this = other;
}

DistMat& DistMat::operator=(const DistMat& other) {
    if (this == &other) return *this;
    reset();
    ProfileSettings::operator=(other);
    MatrixName = other.MatrixName;
    MatrixSize = other.MatrixSize;
    LabelPosition = other.LabelPosition;
    labels = other.labels;
    TriMat::operator=(other);
    return *this;
}

void DistMat::initializeMatrixAndArrays(const int& n) {
    create(n);
    TriMat::initialize();
    labels.assign(static_cast<std::size_t>(n > 0 ? n : 0), my_string());
    MatrixSize = n;
}

void DistMat::reset() {
    MatrixSize = 0;
    MatrixName = "";
    labels.clear();
    TriMat::initialize();
    conventional = 0;
}

void DistMat::build_ext_name(char* out, const char* name) const {
    build_external_name(out, name, the_settings);
}

void DistMat::write_section(std::ostream& file) const {
    write(file, false);
}

void DistMat::write(std::ostream& os, bool in_document) const {
    if (MatrixSize == 0) return;
    const auto shown = [in_document](my_string const& text) {
        return in_document ? escape_text(text.view()) : std::string(text.view());
    };
    os << "\t[[DistanceMatrix]]\n\n"
       << "\t\tMatrixName= \"" << shown(MatrixName) << "\"\n"
       << "\t\tMatrixSize= " << MatrixSize << '\n'
       << "\t\tLabelPosition="
       << "LINE" << '\n'
       << "\t\tMatrixData={\n";
    if (labels.empty()) report(Info, "operator<<(ostream& os, DistMat& D)", kMissingHaplotypeLabels);
    const bool tagged = in_document && xmlOutput;
    const TXmlTag label_tag("hapDistMatrixLabels");
    os << '\n';
    if (tagged) open_table(os, label_tag);
    for (my_string const& label : labels)
        os << shown(label) << ' ';
    os << '\n';
    if (tagged) close_table(os, label_tag);
    if (conventional != 0) {
        // The letter O is meant. Test: DistMatText.ConventionalMatrixIsASentence
        os << "\nConventional FST Matrix: Dij=1 if i!=j and O else:\n" << '\n';
    } else {
        const TXmlTag tag("hapDistMatrix");
        if (tagged) open_table(os, tag);
        print_data(os);
        if (tagged) close_table(os, tag);
    }
    os << "\n\t\t}" << '\n';
}

std::ostream& operator<<(std::ostream& document, DistMat const& matrix) {
    matrix.write(document, true);
    return document;
}

}  // namespace mnd
