// What all analyses shall do, and with which numbers.
//
// The fields named like keys come from the settings file (docs/settings_file.md describes each
// for users); the table of run/settings_table.h joins a key to its field. Besides, the object
// carries the state of the run under way that has no place in the file.
#pragma once

#include <cstdint>
#include <fstream>
#include <memory>
#include <ostream>
#include <vector>

#include "foundation/my_string.h"

namespace mnd {

class DistMat;
class Haplo_DB;
class Samples;
class Structure;
class TAlleleDB;

// Names of the molecular distances: the seven of DNA sequences by their method number, then
// the two of microsatellites. RFLP data use the numbers 0 and 3.
inline constexpr int kNumDistanceNames = 9;
extern const char DistanceNames[kNumDistanceNames][40];

class settings {
public:
    // Sets the defaults of `reset_initial_values`, no data seen yet (FREQUENCY, haplotypic).
    settings();
    ~settings();
    settings(const settings&) = delete;
    // Copies every value, name and pointer; the phase output streams stay where they are.
    settings& operator=(const settings& other);

    // True when the work shall stop.
    bool stopped() const { return stop_computations != 0; }

    // --- the settings file ------------------------------------------------------------------

    // Gives every key its default; `MarkovChainStepsLD` depends on `genotypic_data` and
    // `gametic_phase`. Also the defaults of the stop flag, `append_results`, `has_em_task`,
    // `silent_simulation` and `ld_file_name`.
    void reset_initial_values();

    // Takes the value of every key from a settings file, each from the first line that holds
    // the key and has a value (see GetPrivateProfileString). A key that the file lacks becomes
    // 0 or empty, or keeps its value where the table says so; a file that can't be opened lacks
    // every key. Nothing is reported and no range is checked.
    // Writes: all fields with a key; has_em_task
    void read_settings(const my_string& file_name);

    // Writes the complete settings file, with its explanations, over any file of that name.
    void print_settings(const my_string& file_name);

    // First value of a key in a file of lines "key=value". The key is looked for as a substring
    // of every line that has a "=", comments included, and sections are not told apart: the
    // order of lines is part of the format.
    //   section, default_value  not used
    //   buffer                  size bytes; the value, or empty. The limit counts from the
    //                           start of the line: what stands behind its character size - 1
    //                           is cut. A CR at the end of a line is dropped. An empty value is
    //                           no match, and the search goes on.
    // Returns: 1 when the key has a value, else 0, also when the file can't be opened
    int GetPrivateProfileString(const char* section, const char* key, const char* default_value, char* buffer,
                                const int& size, const char* file);

    // Stands in the interface and does nothing. Returns: 1
    int GetPrivateProfileSection([[maybe_unused]] const char* section = nullptr) { return 1; }

    // Writes key, "=", value and a line end.
    void aWritePrivateProfileString(const char* key, const char* value, std::ostream& out);

    // --- texts ------------------------------------------------------------------------------

    // The block that opens the results of a run: general settings, then each task that is set
    // with its parameters (results/settings_block.cpp).
    void print_pretty_settings(std::ostream& results);

    // Name of a molecular distance for data of `data_type`, and a line end; nothing for a
    // method that the type does not have.
    void print_distance_method(std::ostream& results, int method);

    // Sets the text that the next progress line shows; cut at the size of the buffer.
    static void set_message(const char* text);

    // Progress on standard output: the share of the work done, when an estimate exists, and
    // `message`. A line that would repeat the one before is left out; silentMendrake silences all.
    static void print_message();

    // Makes `text` the message and writes it and a line end to the log.
    static void print_info(const char* text);

    // --- names of files ---------------------------------------------------------------------

    // Derives `sigm_histo_f_name` from `result_file_name`.
    void build_sigm_histo_f_name();

    // Derives the names of the result folder and its files from the path of a project, as
    // XMLOutput demands, and copies the path to `input_file`.
    void buildFilenamesFromCurrentProjectName(const char* project);

    // --- state of the run -------------------------------------------------------------------

    int stop_computations = 0;              // non-zero stops the work
    std::fstream* result_stream = nullptr;  // not owned: the result document of the run
    int data_type = 4;                      // copies of the profile's DataType,
    int genotypic_data = 0;                 // GenotypicData
    int gametic_phase = 0;                  // and GameticPhase

    Samples* current_samples = nullptr;      // not owned: objects of the pass under way
    Structure* current_structure = nullptr;  // not owned
    DistMat* current_matrix = nullptr;       // not owned
    Haplo_DB* current_haplo_db = nullptr;    // not owned
    TAlleleDB* current_allele_db = nullptr;  // not owned

    my_string ld_file_name;        // summary file of the linkage tests
    my_string result_directory;    // folder ending in ".res/"
    my_string result_file_name;    // the result document
    my_string backup_file_name;    // written copy of the project, extension ".bac"
    my_string project_directory;   // folder of the project
    my_string settings_file_name;  // the file read again at the end of a group pass
    my_string program_directory;   // directory of the control files, with slashes

    my_string result_file_copy;      // names of the frame files of the result folder
    my_string tree_file_name;        //
    my_string js_file_name;          //
    my_string main_file_name;        //
    my_string style_file_name;       //
    my_string tree_script_name;      //
    my_string run_time_stamp;        // time of the run without blanks; goes into anchors
    my_string graphics_directory;    //
    my_string sigm_histo_f_name[4];  // null distributions: ".va", ".vb", ".vc", ".vd"

    int append_results = 1;              // set by the run file, no key
    int has_em_task = 1;                 // an estimation of haplotypes or alleles is selected
    std::uint8_t silent_simulation = 0;  // silences the between-sample texts of simulated data
    bool print_em_results = true;        // estimated haplotypes go to the result document
    int gibbs_window_size = 0;           // printed by the phase estimation; steers nothing
    double hw_p_value = 1.0;             // result of the last Hardy-Weinberg test
    double ld_p_value = 1.0;             // result of the last linkage test

    std::vector<std::unique_ptr<std::fstream>> gibbs_streams;  // phase output files
    std::vector<my_string> gibbs_stream_names;                 // and their names

    static constexpr int kInputFileSize = 401;
    static constexpr int kMessageSize = 500;
    static char* input_file;            // not owned: static buffer of kInputFileSize bytes, the project
                                        // path that the pipeline works on
    static double global_work_to_do;    // estimate of the work, in arbitrary units; 0: none
    static double global_work_done;     // share of it that is done
    static char message[kMessageSize];  // text of the next progress line
    static char old_message[kMessageSize + 20];  // the progress line shown last
    static int num_proj_done;                    // projects handled so far in this walk
    static my_string gibbs_BatchFilename;        // list of the phase output files

    // --- the keys, in the order of the file -------------------------------------------------

    long TaskNumber = 0;  // sum of task bits (run/tasks.h)

    // General settings
    int XMLOutput = 0;
    double DeletionWeight = 0.0;
    double TransitionWeight = 0.0;
    double TranversionWeight = 0.0;
    int ComputeSumStatsWithinGroups = 0;
    int InferHaplotypeDefinitionFromDistanceMatrix = 0;
    int EliminateRedondHaplodefs = 0;
    double AllowedLevelOfMissingData = 0.0;  // share of the copies at a locus, 0 to 1
    int GameticPhaseIsKnown = 0;             // kept for the file; no analysis reads it
    int KeepNullDistrib = 0;

    // Hardy-Weinberg equilibrium
    int MakeHWExactTest = 0;
    int HardyWeinbergTestType = 0;  // deprecated, TypeOfTestHW counts
    int TypeOfTestHW = 0;
    long MarkovChainStepsHW = 0;
    long MarkovChainDememorisationStepsHW = 0;
    double PrecisionOnPValueHW = 0.0;
    int SignificanceLevelHW = 0;

    // Linkage disequilibrium
    int LinkageDisequilibriumTestType = 0;
    int MakeExactTestLD = 0;
    long MarkovChainDememorisationStepsLD = 0;
    long MarkovChainStepsLD = 0;
    double PrecisionOnPValueLD = 0.0;
    double SignificanceLevelLD = 0.0;
    int PrintFlagHistogramLD = 0;
    int InitialCondEMLD = 0;
    int ComputeDvalues = 0;

    // Diversity indices
    int ComputeStandardDiversityIndices = 0;  // kept for the file; no analysis reads it
    bool ComputeAllAlleleFreqs = false;
    int DistanceMethod = 0;
    double GammaAValue = 0.0;  // shape; 0: equal rates at all sites
    int ComputeTheta = 0;      // kept for the file; no analysis reads it
    int PrintHaplDistMat = 0;
    int PrintPopDistMat = 0;
    int PrintMinSpannNetworkPop = 0;

    // Mismatch distribution
    bool MismatchDemogExp = false;
    bool MismatchSpatialExp = false;
    int MismatchDistanceMethod = 0;
    double MismatchGammaAValue = 0.0;
    int NumBootExpDem = 0;
    int MismatchSpatialExpNumParams = 0;

    // Haplotype frequency estimation
    int ComputeAllHaplotypesEM = 0;
    int ComputeAllAllelesEM = 0;
    int InitialConditionsEM = 0;
    int MaximumNumOfIterationsEM = 0;
    int RecessiveAllelesEM = 0;
    int CompactHaplotypeDataBaseEM = 0;
    int NumBootstrapReplicatesEM = 0;
    int NumInitCondBootstrapEM = 0;
    int ComputeAllSubHaplotypesEM = 0;
    int EMCheckPhenRedundancy = 0;
    double EpsilonValue = 0.0;
    double FrequencyThreshold = 0.0;
    int EMEstimateInbreedingCoeff = 0;
    double EMInbreedingFixedVal = 0.0;
    int EMUseZipper = 0;
    int EMLociRandOrder = 0;  // kept for the file; no analysis reads it
    int EMNumZipRandOrders = 0;
    int GibbsInferGamPhase = 0;
    int GibbsBurnIn = 0;
    int GibbsSamplingInterval = 0;
    int GibbsNumSamples = 0;
    double GibbsAlphaInitValue = 0.0;
    double GibbsEpsilonValue = 0.0;
    double GibbsGamma = 0.0;
    int GibbsHetSiteInfluenceZone = 0;
    double GibbsPercentageOfRecSteps = 0.0;  // a fraction, 0 to 1
    int GibbsOutputGamPhase = 0;

    // AMOVA
    int HaplAMOVA = 0;
    int LocByLocAMOVA = 0;
    int PopSpecificFST = 0;
    int PopSpecificFIS = 0;
    int TestSignificanceAMOVA = 0;  // kept for the file; NumPermutationsAMOVA alone decides
    long NumPermutationsAMOVA = 0;
    int ComputeConventionalFST = 0;
    int IncludeIndividualLevel = 0;
    int ComputeDistanceMatrixAMOVA = 0;
    int DistanceMethodAMOVA = 0;
    double GammaAValueAMOVA = 0.0;
    int PrintDistanceMatrix = 0;
    int PrintMinSpannNetworkGlob = 0;

    // Pairwise distances
    int TestSignificancePairewiseFST = 0;
    long NumPermutationsFST = 0;
    int ComputePairwiseFST = 0;
    int ComputeDeltaMuSqr = 0;
    double FSTSignifLevel = 0.0;
    int PrintFstVals = 0;
    int PrintConcestryCoeff = 0;
    int PrintSlatkinsDist = 0;
    int PrintMissIntermatchs = 0;
    int UnequalPopSizeDiv = 0;

    // Population differentiation
    long NumPermutPopDiff = 0;
    long NumDememoPopDiff = 0;
    double PrecProbPopDiff = 0.0;
    int PrintHistoPopDiff = 0;
    double SignLevelPopDiff = 0.0;

    // Detection of selected loci
    int DetectSelectedLoci = 0;
    int UseHierarchicalIslandModel = 0;
    int NumberOfGroupsForFDist2 = 0;
    int NumberOfDemesForFDist2 = 0;
    int NumberOfSimsForFDist2 = 0;
    int UseSimFileForFDist2 = 0;
    my_string SimFileNameForFDist2;
    double TargetHetLowBound = 0.0;
    double TargetHetHighBound = 0.0;
    double MinDafFreq = 0.0;
    int IterativeProcForFDist2 = 0;

    // Neutrality tests
    int EwensWattersonHomozygosityTest = 0;
    int NumIterationsNeutralityTests = 0;
    int NumSimulFuTest = 0;

    // Mantel test
    long NumPermMantel = 0;

    // Keys that are read and never written; only EMWinSize and EMEstimHaplFreqs steer anything.
    int Divergencetime = 0;
    int IsFontKnown = 0;
    int NbFrontSegments = 0;
    int SegmentLength = 0;
    int NumOfGroups = 0;
    int DiffusionMode = 0;
    int NbFrontPerm = 0;
    int EMWinSize = 0;  // loci in the window of the zipper; below 1 or too large: all loci
    int EMInbreedingEachLocus = 0;
    int EMCompGamPhaseForAllInitConds = 0;

    // Second names of fields. The tests leave the s.d. of a P-value in the field of the required
    // precision; their callers put the setting back.
    int& EMEstimHaplFreqs = ComputeAllHaplotypesEM;
    double& hw_precision = PrecisionOnPValueHW;
    double& ld_precision = PrecisionOnPValueLD;

private:
    void copy_run_state(const settings& other);
    void copy_names(const settings& other);
    void update_has_em_task();
};

}  // namespace mnd
