// Project and settings files for tests of the run, small enough to see what comes out.
#pragma once

#include <string>

namespace mnd_test {

// Two samples of three DNA sequences each.
inline std::string dna_project(const std::string& title = "Small") {
    return "[Profile]\n\tTitle=\"" + title +
           "\"\n\tNbSamples=2\n\tGenotypicData=0\n\tDataType=DNA\n\tLocusSeparator=NONE\n"
           "\tMissingData=\"?\"\n[Data]\n\t[[Samples]]\n"
           "\t\tSampleName=\"North\"\n\t\tSampleSize=3\n\t\tSampleData={\n"
           "\t\t\ta 2 ACGTACGT\n\t\t\tb 1 ACGTACGA\n\t\t}\n"
           "\t\tSampleName=\"South\"\n\t\tSampleSize=3\n\t\tSampleData={\n"
           "\t\t\tc 1 ACGTACCT\n\t\t\td 2 ACTTACGT\n\t\t}\n";
}

// Settings with some tasks, and further lines that come before those of the rest. Weights and levels are those of a usual run.
inline std::string settings_of(long tasks, const std::string& more = "") {
    return "TaskNumber=" + std::to_string(tasks) + '\n' + more +
           "DeletionWeight=1.0\nTransitionWeight=1.0\nTranversionWeight=1.0\n"
           "AllowedLevelOfMissingData=0.05\nEpsilonValue=0.0000001\nFrequencyThreshold=0.00001\n"
           "MarkovChainDememorisationStepsLD=1000\nMarkovChainDememorisationStepsHW=1000\n";
}

}  // namespace mnd_test
