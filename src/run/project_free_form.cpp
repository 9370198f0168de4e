// Opening of a project file in its older syntax, in which layout does not count.
//
// The file is read token by token: a profile, then the subsections of the data in the order
// that the file has them. The first fault ends the reading.

#include <fstream>
#include <limits>

#include "foundation/message_codes.h"
#include "foundation/my_string.h"
#include "foundation/report.h"
#include "input/keyword_reader.h"
#include "run/errors.h"
#include "run/process.h"
#include "run/project.h"
#include "run/section_order.h"

namespace mnd {

namespace {

constexpr char kOrigin[] = "Project::open()";
constexpr int kMostSubsections = 4;

// Passes over the content of a subsection, up to a line that begins with a bracket. That line
// stays in the stream.
void pass_over_content(std::istream& is) {
    constexpr int kEnd = std::char_traits<char>::eof();
    for (int c = peek_beyond_comments(is); c != kEnd && c != '['; c = peek_beyond_comments(is))
        is.ignore(std::numeric_limits<std::streamsize>::max(), '\n');
}

// One pass over a project file. Every step is false when the reading has to stop.
class FreeFormProject {
public:
    explicit FreeFormProject(Project& project) : project_(project), file_(settings::input_file) {}

    bool read_all();

private:
    bool read_data();
    bool read_subsection(int subsection);
    bool read_distance_matrix();
    bool read_haplotypes();
    bool read_samples();
    bool read_structure();
    void pass_over_mantel();
    bool stop(const char* reason);
    bool fail(int code, const char* reason);

    Project& project_;  // not owned
    std::ifstream file_;
    bool samples_read_ = false;
};

bool FreeFormProject::stop(const char* reason) {
    project_.failure_reason = reason;
    return false;
}

bool FreeFormProject::fail(int code, const char* reason) {
    report(Error, kOrigin, code);
    return stop(reason);
}

bool FreeFormProject::read_all() {
    if (!file_.is_open() || !file_opens(settings::input_file)) {
        return fail(kCannotOpenProject, "the project file can't be opened");
    }
    *_AOS_ << "Reading general settings in input file ..." << std::endl;
    if (!project_.get_profile_settings(file_)) {
        return fail(kUnreadableProfile, "the [Profile] section can't be read");
    }
    *_AOS_ << "Reading data section in input file ..." << std::endl;
    go_to_section(file_, "data");
    return read_data();
}

bool FreeFormProject::read_data() {
    for (int read = 0;; ++read) {
        skip_comments(file_);
        my_string name;
        const int subsection = get_next_subsection(file_, name);
        if (subsection == kNoSubSection) {
            return read > 0 || fail(kNoSubsectionsFound, "the project file has no subsections");
        }
        // Four is the limit although there are five kinds: kept on purpose.
        // Test: FreeFormProject.FifthSubsectionIsError131
        if (read == kMostSubsections) {
            return fail(kTooManySubsections, "the project file has too many subsections");
        }
        if (!read_subsection(subsection)) return false;
    }
}

bool FreeFormProject::read_subsection(int subsection) {
    switch (subsection) {
        case kSubDistanceMatrix:
            return read_distance_matrix();
        case kSubHaplotypeDefinition:
            return read_haplotypes();
        case kSubSamples:
            return read_samples();
        case kSubStructure:
            return read_structure();
        default:
            pass_over_mantel();
            return true;
    }
}

bool FreeFormProject::read_distance_matrix() {
    static_cast<ProfileSettings&>(project_.dist_mat) = project_;
    *_AOS_ << "\tReading distance matrix ..." << std::endl;
    return project_.dist_mat.get_settings(file_) != 0 || stop("the distance matrix can't be read");
}

bool FreeFormProject::read_haplotypes() {
    *_AOS_ << "\tReading haplotype list ..." << std::endl;
    return project_.haplo_db.open(file_, project_) || stop("the haplotype list can't be read");
}

bool FreeFormProject::read_samples() {
    *_AOS_ << "\tReading sample data ..." << std::endl;
    if (project_.samples->Read(file_, project_, project_.haplo_db) == 0) {
        *_AOS_ << "\n\tUnable to read the specified number of populations.\n";
        return stop("the samples can't be read");
    }
    samples_read_ = true;
    // Kept on purpose: told of every list that is named, whatever it holds.
    // Test: FreeFormProject.NamedHaplotypeListIsWarning130
    if (!(project_.UsedHaplList == UsedHaplListDefault)) report(Warning, kOrigin, kHaplotypeListFoundEmpty);
    return true;
}

bool FreeFormProject::read_structure() {
    if (!samples_stand_before(kStructureSection, samples_read_, *project_.samples)) {
        return stop("a section that needs samples stands before them");
    }
    *_AOS_ << "\tReading genetic structure ..." << std::endl;
    return project_.structure->open(file_, project_, *project_.samples) != 0 ||
           stop("the genetic structure can't be read");
}

void FreeFormProject::pass_over_mantel() {
    *_AOS_ << "\tReading mantel section ..." << std::endl;
    static_cast<ProfileSettings&>(project_.mantel) = project_;
    pass_over_content(file_);
    *_AOS_ << "\tThe Mantel section of the project is passed over, none of its matrices is used\n";
}

}  // namespace

bool Project::open() {
    dist_matrix_computed = false;
    return FreeFormProject(*this).read_all();
}

}  // namespace mnd
