#include "simulation/project_writer.h"

#include <ostream>

namespace mnd {
namespace {

constexpr const char* kSimulatedTitle = "\tTitle=\"A series of simulated samples\"\n";

const char* name_of(TDataType data_type) {
    switch (data_type) {
        case DNA:
            return "DNA\n";
        case RFLP:
            return "RFLP\n";
        case MICROSAT:
            return "MICROSAT\n";
        default:
            return "STANDARD\n";
    }
}

void write_profile_heading(std::ostream& out) {
    out << "\n[Profile]\n";
}

// What stands behind the line of the title.
void write_profile(int num_samples, TDataType data_type, std::ostream& out) {
    const bool sequences = data_type == DNA || data_type == RFLP;
    out << "\tNbSamples=" << num_samples << '\n'
        << "\tGenotypicData=1\n"
        << "\tGameticPhase=0\n"
        << "\tRecessiveData=0\n"
        << "\tDataType=" << name_of(data_type)
        << (sequences ? "\tLocusSeparator=NONE\n" : "\tLocusSeparator=TAB\n") << "\tMissingData='?'\n"
        << "\n[Data]\n"
        << "\t[[Samples]]\n\n";
}

void write_size(int size, std::ostream& out) {
    out << "\t\tSampleSize=" << size << "\n\t\tSampleData= {\n";
}

}  // namespace

void write_Mendrake_header(int const& num_samples, TDataType const& data_type, std::ostream& out) {
    write_profile_heading(out);
    out << kSimulatedTitle;
    write_profile(num_samples, data_type, out);
}

void write_Mendrake_sample_header(int const& number, int const& size, std::ostream& out) {
    out << "\t\tSampleName=\"Sample " << number << "\"\n";
    write_size(size, out);
}

void write_Mendrake_sample_footer(std::ostream& out) {
    out << "}\n";
}

void write_Mendrake_header_gibbs(int const& num_samples, TDataType const& data_type, my_string const& title,
                                 std::ostream& out) {
    write_profile_heading(out);
    out << "\tTitle=\"" << title << "\"\n";
    write_profile(num_samples, data_type, out);
}

void write_Mendrake_sample_header_gibbs(my_string const& name, int const& size, std::ostream& out) {
    out << "\t\tSampleName=\"" << name << "\"\n";
    write_size(size, out);
}

void write_Mendrake_sample_footer_gibbs(std::ostream& out) {
    write_Mendrake_sample_footer(out);
}

}  // namespace mnd
