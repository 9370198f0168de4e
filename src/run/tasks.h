// Values of the task set `TaskNumber` of the settings; a set is their sum.
#pragma once

namespace mnd {

enum Task : int {
    kTaskStandardIndices = 1,
    kTaskMolecularDiversity = 2,
    kTaskMismatch = 4,
    kTaskHaplotypeFrequencies = 8,
    kTaskLinkageDisequilibrium = 16,
    kTaskHardyWeinberg = 32,
    kTaskTajima = 64,
    kTaskEwensWatterson = 128,
    kTaskChakraborty = 256,
    kTaskAmova = 512,
    kTaskPairwiseFst = 1024,
    kTaskDistanceFiles = 2048,      // pairwise genetic distances, one ".dis" file per sample
    kTaskAmovaPermutations = 4096,  // documented for users; nothing tests it
    kTaskExactDifferentiation = 8192,
    kTaskFuFs = 16384,
    kTaskAssignment = 32768,
    kTaskMantel = 65536,
};

// Tasks that run on each sample by itself.
inline constexpr int kPerSampleTasks = kTaskStandardIndices | kTaskMolecularDiversity | kTaskMismatch |
                                       kTaskHaplotypeFrequencies | kTaskLinkageDisequilibrium |
                                       kTaskHardyWeinberg | kTaskTajima | kTaskEwensWatterson |
                                       kTaskChakraborty | kTaskFuFs;

// Tasks that compare samples.
inline constexpr int kBetweenSampleTasks =
    kTaskAmova | kTaskPairwiseFst | kTaskMantel | kTaskExactDifferentiation;

}  // namespace mnd
