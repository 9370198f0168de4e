#include "model/popul_dna.h"

#include <gtest/gtest.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "run/settings.h"
#include "support/project_log.h"
#include "support/sample_texts.h"

namespace {

using mnd::Haplo_DB;
using mnd::PopulDNA;
using mnd::settings;
using mnd_test::haplotypic;
using mnd_test::ProjectLog;

class PopulDNASites : public ::testing::Test {
protected:
    PopulDNASites() { mnd::PopGenetics::globalSubstPolymSites.clear(); }

    // A sample of one copy of each sequence, or of as many as the number before it says.
    PopulDNA& compare(const std::vector<std::pair<int, std::string>>& sequences,
                      double allowed_missing = 0.05) {
        std::string lines;
        for (std::size_t i = 0; i < sequences.size(); ++i) {
            lines += "h" + std::to_string(i) + " " + std::to_string(sequences[i].first) + " " +
                     sequences[i].second + "\n";
        }
        db_.reset();
        mnd::Population data("s", 0, profile_);
        EXPECT_EQ(mnd_test::read_lines(data, db_, lines), 1);
        data.sample_size = 0.0;
        const auto [del, ts, tv] = weights_;
        sample_ = std::make_unique<PopulDNA>(data);
        sample_->del_weight = del;
        sample_->ts_weight = ts;
        sample_->tv_weight = tv;
        settings s;
        s.AllowedLevelOfMissingData = allowed_missing;
        EXPECT_EQ(sample_->evaluate_polymorphism(s), 1);
        return *sample_;
    }

    struct Weights {
        double del, ts, tv;
    };
    Weights weights_{1.0, 1.0, 1.0};
    mnd::ProfileSettings profile_ = haplotypic(mnd::DNA, 0);
    Haplo_DB db_;
    std::unique_ptr<PopulDNA> sample_;
};

TEST_F(PopulDNASites, DefaultsOfTheClass) {
    const PopulDNA sample;
    EXPECT_EQ(sample.del_weight, 1.0);
    EXPECT_EQ(sample.nucl_ambiguities.count, 11);
    const std::string ambiguities(sample.nucl_ambiguities.begin(), sample.nucl_ambiguities.end());
    EXPECT_EQ(ambiguities, "RYMKSWHBVDN");
    EXPECT_EQ(sample.dist_mat, nullptr);
}

TEST_F(PopulDNASites, ReferenceTakesPlainCharactersWhereItCan) {
    const PopulDNA& s = compare({{1, "?NRA-"}, {1, "?YCG-"}, {1, "?ATG-"}});
    EXPECT_STREQ(s.ref_hapl.name.c_str(), "Arbitrary reference haplotype");
    EXPECT_STREQ(s.ref_hapl.content.c_str(), "?ACA-");
}

TEST_F(PopulDNASites, ReferenceKeepsTheLastCharacterWhenNoneIsPlain) {
    EXPECT_STREQ(compare({{1, "N"}, {1, "?"}, {1, "Y"}}).ref_hapl.content.c_str(), "Y");
}

TEST_F(PopulDNASites, ReferenceIsBuiltOnce) {
    PopulDNA& s = compare({{1, "AC"}, {1, "GT"}});
    s.ref_hapl.content = "GG";
    s.build_arbitrary_haplotype();
    EXPECT_STREQ(s.ref_hapl.content.c_str(), "GG");
}

TEST_F(PopulDNASites, TransitionsTransversionsAndDeletionsAreCounted) {
    //        site:            0123456
    const PopulDNA& s = compare({{2, "AAAA-CN"}, {1, "AGC--TA"}, {1, "AATG-CA"}});
    EXPECT_EQ(s.ts_site, (std::vector<int>{0, 1, 0, 1, 0, 1, 0}));
    EXPECT_EQ(s.tv_site, (std::vector<int>{0, 0, 2, 0, 0, 0, 0}));
    EXPECT_EQ(s.del_site, (std::vector<int>{0, 0, 0, 1, 0, 0, 0}));
    // Site 2 has A, C and T: two transversions, and the transition between C and T.
    EXPECT_EQ(s.nb_ts, 4);
    EXPECT_EQ(s.nb_ts_sites, 3);
    EXPECT_EQ(s.nb_tv, 1);
    EXPECT_EQ(s.nb_tv_sites, 1);
    EXPECT_EQ(s.nb_subst, 5);
    EXPECT_EQ(s.nb_subst_sites, 4);
    EXPECT_EQ(s.nb_del, 1);
    EXPECT_EQ(s.nb_del_sites, 1);
    EXPECT_EQ(s.nb_polym_loci, 4);
    EXPECT_EQ(s.nb_observed_sites, 7);
    EXPECT_EQ(s.nb_usable_loci, 6);
    EXPECT_EQ(s.polym_locus, (std::vector<int>{0, 1, 1, 1, 0, 1, 0}));
}

TEST_F(PopulDNASites, AnAmbiguousTransversionIsNoSecondOne) {
    // Y is C or T: against A a transversion, but no further one beside C.
    EXPECT_EQ(compare({{1, "A"}, {1, "Y"}, {1, "C"}}).tv_site[0], 1);
    EXPECT_EQ(compare({{1, "A"}, {1, "C"}, {1, "Y"}}).tv_site[0], 1);
    EXPECT_EQ(compare({{1, "A"}, {1, "C"}, {1, "Y"}, {1, "T"}}).tv_site[0], 2);
}

TEST_F(PopulDNASites, AnUndeterminedSubstitutionAloneCounts) {
    const PopulDNA& alone = compare({{1, "A"}, {1, "B"}});
    EXPECT_EQ(alone.undet_site[0], 1);
    EXPECT_EQ(alone.nb_subst, 1);
    EXPECT_EQ(alone.nb_subst_sites, 1);
    EXPECT_EQ(alone.nb_polym_loci, 1);
    const PopulDNA& beside = compare({{1, "A"}, {1, "B"}, {1, "G"}});
    EXPECT_EQ(beside.nb_subst, 1);
    EXPECT_EQ(beside.nb_ts, 1);
}

TEST_F(PopulDNASites, AClassWithoutWeightIsNoPolymorphism) {
    weights_ = {0.0, 1.0, 1.0};
    EXPECT_EQ(compare({{1, "A"}, {1, "-"}}).nb_polym_loci, 0);
    weights_ = {1.0, 0.0, 1.0};
    const PopulDNA& no_ts = compare({{1, "AA"}, {1, "GC"}, {1, "GT"}});
    EXPECT_EQ(no_ts.nb_ts, 0);
    EXPECT_EQ(no_ts.nb_subst, 1);
    EXPECT_EQ(no_ts.nb_polym_loci, 1);
    weights_ = {1.0, 0.0, 1.0};
    // A site with both kinds is a substitution site by its transversion alone.
    EXPECT_EQ(compare({{1, "A"}, {1, "G"}, {1, "C"}}).nb_subst_sites, 1);
    weights_ = {1.0, 1.0, 0.0};
    const PopulDNA& no_tv = compare({{1, "A"}, {1, "C"}});
    EXPECT_EQ(no_tv.nb_tv, 0);
    EXPECT_EQ(no_tv.nb_polym_loci, 0);
}

TEST_F(PopulDNASites, WithNoMissingDataAllowedOneMissingCopyDropsASite) {
    const PopulDNA& s = compare({{9, "AC"}, {1, "?C"}}, 0.0);
    EXPECT_EQ(s.usable_site, (std::vector<int>{0, 1}));
    EXPECT_EQ(s.nb_usable_loci, 1);
    EXPECT_DOUBLE_EQ(s.missing_level[0], 0.1);
}

TEST_F(PopulDNASites, ALevelOfMissingDataMayReachWhatIsAllowed) {
    EXPECT_EQ(compare({{9, "A"}, {1, "?"}}, 0.1).nb_usable_loci, 1);
    EXPECT_EQ(compare({{8, "A"}, {2, "?"}}, 0.1).nb_usable_loci, 0);
}

TEST_F(PopulDNASites, AColumnOfMissingDataIsNotUsableEvenIfAllMayBeMissing) {
    const PopulDNA& s = compare({{1, "?A"}, {1, "?A"}}, 1.0);
    EXPECT_EQ(s.usable_site[0], 0);
    EXPECT_EQ(s.missing_level[0], 1.0);
}

TEST_F(PopulDNASites, AColumnOfGapsIsNoUsableSiteAndNoDeletion) {
    const PopulDNA& s = compare({{1, "-A"}, {1, "-A"}});
    EXPECT_EQ(s.usable_site, (std::vector<int>{0, 1}));
    EXPECT_EQ(s.nb_usable_loci, 1);
    EXPECT_EQ(s.nb_del, 0);
    EXPECT_EQ(s.nb_polym_loci, 0);
}

TEST_F(PopulDNASites, SeparatorsAreNoSites) {
    profile_.LocusSeparator = ',';
    const PopulDNA& s = compare({{1, "A,C"}, {1, "A,G"}});
    EXPECT_EQ(s.nb_observed_sites, 2);
    EXPECT_EQ(s.usable_site, (std::vector<int>{1, 0, 1}));
    EXPECT_EQ(s.nb_usable_loci, 2);
}

TEST_F(PopulDNASites, AShorterSequenceIsMissingBeyondItsEnd) {
    const ProjectLog log;
    db_.append(new mnd::HaploDef("a"))->content = "ACG";
    db_.append(new mnd::HaploDef("b"))->content = "A";
    mnd::Population data("s", 0, profile_);
    for (mnd::HaploDef* definition : db_.list)
        data.hapl_list.Add(new mnd::PHaploDef(definition, 1));
    PopulDNA s(data);
    settings settings_in_force;
    settings_in_force.AllowedLevelOfMissingData = 0.4;
    EXPECT_EQ(s.check_data(), 0);
    EXPECT_TRUE(log.reports("WARNING", "PopulDNA::check_data()", "DNA sequences have different lengths"));
    EXPECT_EQ(s.evaluate_polymorphism(settings_in_force), 1);
    EXPECT_EQ(s.usable_site, (std::vector<int>{1, 0, 0}));
    EXPECT_EQ(s.missing_level[2], 0.5);
}

TEST_F(PopulDNASites, SitesWithTransitionsAreGatheredOverSamples) {
    compare({{1, "AAA"}, {1, "GAA"}});
    compare({{1, "AAAA"}, {1, "AACG"}});
    EXPECT_EQ(mnd::PopGenetics::globalSubstPolymSites, (std::vector<bool>{true, false, false, true}));
}

TEST_F(PopulDNASites, NoHaplotypesNoComparison) {
    PopulDNA s("s", 0, profile_);
    EXPECT_EQ(s.check_data(), 1);
    EXPECT_EQ(s.compare_DNA_sequences(), 0);
}

// The same by sets of characters, for plain bases, gaps and missing data.
struct PlainSite {
    bool usable = false, ts = false, tv = false, del = false;
    std::size_t kinds_of_tv = 0;
    double missing = 0.0;
};

bool is_transition(char a, char b) {
    const std::set<char> pair{a, b};
    return pair == std::set<char>{'A', 'G'} || pair == std::set<char>{'C', 'T'};
}

PlainSite plain_site(const std::vector<std::pair<int, std::string>>& sequences, std::size_t site,
                     double allowed) {
    PlainSite result;
    char reference = '?';
    double n = 0.0;
    std::set<char> transversions;
    for (const auto& [count, text] : sequences) {
        n += count;
        if (reference == '?') reference = text[site];
    }
    for (const auto& [count, text] : sequences) {
        const char c = text[site];
        if (c == '?') {
            result.missing += count / n;
        } else if (c == '-' || reference == '-') {
            result.del |= c != reference;
        } else if (is_transition(c, reference)) {
            result.ts = true;
        } else if (c != reference) {
            transversions.insert(c);
        }
    }
    result.tv = !transversions.empty();
    result.kinds_of_tv = transversions.size();
    result.usable = reference != '?' && result.missing <= allowed && !(reference == '-' && !result.del);
    return result;
}

TEST_F(PopulDNASites, AgreesWithAPlainComparisonOnRandomSequences) {
    std::mt19937 random(20260);
    const std::string characters = "AACCGGTT-?";
    for (int round = 0; round < 200; ++round) {
        const std::size_t sites = 1 + random() % 12;
        std::vector<std::pair<int, std::string>> sequences(2 + random() % 5);
        for (auto& [count, text] : sequences) {
            // Powers of two keep the proportions of missing data exact in both sums.
            count = 1;
            for (std::size_t i = 0; i < sites; ++i)
                text += characters[random() % characters.size()];
        }
        sequences.resize(4, sequences.front());
        const PopulDNA& s = compare(sequences, 0.25);
        int usable = 0, polymorphic = 0, nb_ts = 0, nb_tv = 0, nb_del = 0, subst_sites = 0;
        for (std::size_t i = 0; i < sites; ++i) {
            const PlainSite plain = plain_site(sequences, i, 0.25);
            EXPECT_EQ(s.usable_site[i] != 0, plain.usable) << "round " << round << " site " << i;
            usable += plain.usable;
            if (!plain.usable) continue;
            polymorphic += plain.ts || plain.tv || plain.del;
            nb_ts += plain.ts + (plain.kinds_of_tv > 1 ? 1 : 0);
            nb_tv += plain.tv;
            nb_del += plain.del;
            subst_sites += plain.ts || plain.tv;
        }
        EXPECT_EQ(s.nb_usable_loci, usable) << round;
        EXPECT_EQ(s.nb_polym_loci, polymorphic) << round;
        EXPECT_EQ(s.nb_ts, nb_ts) << round;
        EXPECT_EQ(s.nb_tv, nb_tv) << round;
        EXPECT_EQ(s.nb_del, nb_del) << round;
        EXPECT_EQ(s.nb_subst_sites, subst_sites) << round;
    }
}

}  // namespace
