// What a project file holds, told without analysing it.
#include <fstream>
#include <string>

#include "input/keyword_reader.h"
#include "input/profile.h"
#include "run/errors.h"
#include "run/process.h"
#include "run/project.h"

namespace mnd {

namespace {

constexpr const char* kReporter = "Project::explore()";
constexpr const char* kGroupsFile = "groups.txt";
constexpr int kMostSubsections = 4;

my_string separator_word(char separator) {
    switch (separator) {
        case 0:
            return my_string("NONE");
        case ' ':
            return my_string("WHITESPACE");
        case '\t':
            return my_string("TAB");
        default: {
            const char word[2] = {separator, 0};
            return my_string(word);
        }
    }
}

// The values of the profile for a front end, one a line, value first.
void write_profile_report(const ProfileSettings& p, std::ostream& out) {
    out << p.Title << "=Title;\n"
        << p.NbSamples << "=NbSamples;\n"
        << p.NbGroups << "=NbGroups; \n"
        << p.GenotypicData << "=GenotypicData;\n"
        << p.GameticPhase << "=GameticPhase;\n"
        << data_type_name(p.DataType) << "=DataType;\n"
        << separator_word(p.LocusSeparator) << "=LocusSeparator;\n"
        << p.MissingData << "=MissingData;\n"
        << p.DistMatLabel << "=DistMatLabel;\n"
        << p.UsedHaplList << "=UsedHaplList; \n"
        << p.ExtHaplFile << "=ExtHaplFile; \n"
        << p.Interleave << "=Interleave; \n"
        << p.IndividualLevel << "=IndividualLevel;\n"
        << p.Frequency << "=Frequency; \n"
        << p.RecessiveData << "=RecessiveData; \n"
        << p.RecessiveAllele << "=RecessiveAllele;\n"
        << p.GivenDistMat << "=GivenDistMat; \n"
        << p.EpsilonValue << "=EpsilonValue;\n"
        << p.FrequencyThreshold << "=FrequencyThreshold;\n";
}

}  // namespace

bool Project::refuse(int code) {
    E.error(Error, kReporter, code);
    failure_reason = E.messages[code];
    return false;
}

// Acts on one subsection of the data section.
// Returns: false when its content can't be explored
bool Project::explore_subsection(std::ifstream& file, int subsection) {
    switch (subsection) {
        case kSubDistanceMatrix:
            *_AOS_ << "\tReading distance matrix ...\n";
            dist_mat.get_mat_name(file);
            DistMatLabel = dist_mat.MatrixName;
            return true;
        case kSubSamples:
            *_AOS_ << "\tExploring Samples...\n";
            failure_reason = "its samples can't be listed";
            return samples->explore(file, *this) != 0;
        case kSubStructure:
            *_AOS_ << "\tExploring genetic structure...\n";
            failure_reason = "its structure can't be listed";
            return structure->explore(file, kGroupsFile) != 0;
        default:
            return true;  // lists and Mantel matrices are no part of the report
    }
}

bool Project::explore(char* dir) {
    failure_reason = "";
    initialize();  // nothing of the project before may pass for a value of this one
    ProfileSettings::the_settings = &the_settings;
    DistMatLabel = "none";
    std::ofstream(kGroupsFile, std::ios::trunc) << "0\n";
    std::ifstream file(settings::input_file);
    if (!file.is_open()) return refuse(kCannotOpenProject);
    *_AOS_ << "Reading general settings in input file ...\n";
    if (!get_profile_settings(file)) return refuse(kUnreadableProfile);
    *_AOS_ << "done ! \n";
    go_to_section(file, my_string("data"));
    for (int found = 0; found <= kMostSubsections; ++found) {
        skip_comments(file);
        my_string name;
        const int subsection = get_next_subsection(file, name);
        if (subsection == kNoSubSection) {
            if (found == 0) return refuse(kNoSubsectionsFound);
            std::ofstream report(std::string(dir) + "mnd_pro.txt", std::ios::trunc);
            write_profile_report(*this, report);
            return true;
        }
        if (!explore_subsection(file, subsection)) return false;
    }
    return refuse(kTooManySubsections);
}

}  // namespace mnd
