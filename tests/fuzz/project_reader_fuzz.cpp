// Runs arbitrary bytes as the project of a walk: pre-pass, reading of all sections, checks,
// standard and molecular diversity, comparison of groups and of pairs of samples, result document.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "run/driver.h"
#include "scratch_file.h"

namespace {

// A walk over one project, "fuzz.mnp", with the settings "fuzz.mns".
void write_control_files(const std::string& folder) {
    mnd_fuzz::write_file(folder + "mnd_run.txt", folder + "\nuse_spe_settings\n" + folder + "fuzz.mns\n" +
                                                     folder + "fuzz.mnp\n0\n0\nEND\n");
    mnd_fuzz::write_file(folder + "fuzz.mns",
                         "[Settings]\nTaskNumber=1539\nHaplAMOVA=1\nNumPermutationsAMOVA=5\n"
                         "IncludeIndividualLevel=1\nPopSpecificFST=1\nPopSpecificFIS=1\n"
                         "ComputePairwiseFST=1\nPrintMissIntermatchs=1\nNumPermutationsFST=5\n"
                         "ComputeSumStatsWithinGroups=1\nEliminateRedondHaplodefs=1\n"
                         "InferHaplotypeDefinitionFromDistanceMatrix=1\nPrintDistanceMatrix=1\n"
                         "PrintMinSpannNetworkGlob=1\nPrintMinSpannNetworkPop=1\n"
                         "AllowedLevelOfMissingData=0.5\n");
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    mnd_fuzz::silence_streams();
    ::setenv("MENDCORE_SEED", "12345", 1);
    write_control_files(mnd_fuzz::scratch_folder());
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    std::string folder = mnd_fuzz::scratch_folder();
    mnd_fuzz::write_file(folder + "fuzz.mnp", mnd_fuzz::as_text(bytes, size));
    mnd::mendstart(folder.data());
    return 0;
}
