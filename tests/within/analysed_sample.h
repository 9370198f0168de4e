// A sample read from lines of data and analysed, with the document that this writes.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "model/haplotypes.h"
#include "model/samples.h"
#include "results/xml_tags.h"
#include "run/process.h"
#include "run/settings.h"
#include "support/sample_texts.h"
#include "support/temp_folder.h"

namespace mnd_test {

// A result document in a folder of its own, lent to settings; nothing goes to the console, and
// no anchor is written, unless htmlOutput is set.
class Document {
public:
    explicit Document(mnd::settings& s)
        : settings_(s),
          stream_(path(), std::ios::out | std::ios::trunc),
          silent_(mnd::silentMendrake),
          html_(mnd::htmlOutput),
          xml_(mnd::xmlOutput) {
        s.result_stream = &stream_;
        s.result_directory = (folder_.path().string() + "/").c_str();
        s.result_file_name = path().string().c_str();
        s.js_file_name = (folder_ / "document.js").string().c_str();
        mnd::silentMendrake = true;
        mnd::htmlOutput = false;
        mnd::xmlOutput = false;
    }
    ~Document() {
        settings_.result_stream = nullptr;
        mnd::silentMendrake = silent_;
        mnd::htmlOutput = html_;
        mnd::xmlOutput = xml_;
    }
    Document(const Document&) = delete;
    Document& operator=(const Document&) = delete;

    std::filesystem::path path() const { return folder_ / "document.htm"; }
    const TempFolder& folder() const { return folder_; }
    std::fstream& stream() { return stream_; }
    std::string text() {
        stream_.flush();
        return read_text(path());
    }

private:
    mnd::settings& settings_;
    TempFolder folder_;
    std::fstream stream_;
    bool silent_;
    bool html_;
    bool xml_;
};

// Samples of one class, read and prepared as a run does it.
template <class Sample>
class AnalysedSamples {
public:
    explicit AnalysedSamples(const mnd::ProfileSettings& profile) : profile_(profile), document(s) {
        samples.set_profile(profile);
        s.data_type = profile.DataType;
        s.genotypic_data = profile.GenotypicData;
        s.gametic_phase = profile.GameticPhase;
        s.current_samples = &samples;
    }

    // Reads a sample; its lines are those of a data block.
    Sample& add(const std::string& name, const std::string& lines) {
        auto* sample =
            new Sample(mnd::my_string(name.c_str()), static_cast<int>(samples.populations.count), profile_);
        samples.populations.Add(sample);
        sample->allele_db = &alleles;
        EXPECT_EQ(read_lines(*sample, definitions, lines), 1);
        return *sample;
    }

    // Alleles and gametes of all samples, after the last add.
    void prepare() {
        const char separator = profile_.LocusSeparator;
        if (profile_.GenotypicData != 0) {
            samples.build_all_vectors(separator);
            samples.phen_to_gam(&definitions, &profile_, &s);
        }
        for (mnd::HaploDef* definition : definitions.list)
            definition->build_haplovect(&alleles, separator, 0, 0.1);
    }

    // Runs tasks on all samples; returns what the document holds.
    std::string analyse(long tasks) {
        s.TaskNumber = tasks;
        for (mnd::Population* sample : samples.populations)
            sample->test_methods(s);
        return document.text();
    }

private:
    mnd::ProfileSettings profile_;

public:
    mnd::settings s;
    mnd::TAlleleDB alleles;
    mnd::Haplo_DB definitions;
    mnd::Samples samples;
    Document document;
};

}  // namespace mnd_test
