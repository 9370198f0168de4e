#include "results/citations.h"

#include <array>
#include <cstddef>

#include "results/xml_tags.h"

namespace mnd {

namespace {

struct CitationRow {
    Citation citation;
    std::string_view key;
    std::string_view text;
};

// clang-format off
constexpr std::array<CitationRow, kCitationCount> kCitations = {{
    {Citation::Beaumont_Nichols_1996, "Beaumont_Nichols_1996",
     "Beaumont, M. A., and R. A. Nichols (1996) Evaluating loci for use in the genetic "
     "analysis of population structure. Proc. R. Soc. Lond. B 263:1619-1626."},
    {Citation::Broyden_1965, "Broyden_1965",
     "Broyden, C. G. (1965) A class of methods for solving nonlinear simultaneous equations. "
     "Math. Comput. 19:577-593."},
    {Citation::Ceppellini_1955, "Ceppellini_1955",
     "Ceppellini, R., M. Siniscalco, and C. A. B. Smith (1955) The estimation of gene "
     "frequencies in a random-mating population. Ann. Hum. Genet. 20:97-115."},
    {Citation::Chakraborty_1990, "Chakraborty_1990",
     "Chakraborty, R. (1990) Mitochondrial DNA polymorphism reveals hidden heterogeneity "
     "within some Asian populations. Am. J. Hum. Genet. 47:87-94."},
    {Citation::Chakraborty_Weiss_1991, "Chakraborty_Weiss_1991",
     "Chakraborty, R., and K. M. Weiss (1991) Genetic variation of the mitochondrial DNA "
     "genome in American Indians is at mutation-drift equilibrium. Am. J. Phys. Anthropol. "
     "86:497-506."},
    {Citation::Cockerham_1969, "Cockerham_1969",
     "Cockerham, C. C. (1969) Variance of gene frequencies. Evolution 23:72-84."},
    {Citation::Cockerham_1973, "Cockerham_1973",
     "Cockerham, C. C. (1973) Analyses of gene frequencies. Genetics 74:679-700."},
    {Citation::Dempster_1977, "Dempster_1977",
     "Dempster, A. P., N. M. Laird, and D. B. Rubin (1977) Maximum likelihood from incomplete "
     "data via the EM algorithm. J. R. Stat. Soc. B 39:1-38."},
    {Citation::Efron_Tibshirani_1993, "Efron_Tibshirani_1993",
     "Efron, B., and R. J. Tibshirani (1993) An Introduction to the Bootstrap. Chapman and "
     "Hall, New York."},
    {Citation::Ewens_1972, "Ewens_1972",
     "Ewens, W. J. (1972) The sampling theory of selectively neutral alleles. Theor. Popul. "
     "Biol. 3:87-112."},
    {Citation::Excoffier_1992, "Excoffier_1992",
     "Excoffier, L., P. E. Smouse, and J. M. Quattro (1992) Analysis of molecular variance "
     "inferred from metric distances among DNA haplotypes: application to human mitochondrial "
     "DNA restriction data. Genetics 131:479-491."},
    {Citation::Excoffier_2003, "Excoffier_2003",
     "Excoffier, L., G. Laval, and D. Balding (2003) Gametic phase estimation over large "
     "genomic regions using an adaptive window approach. Hum. Genomics 1:7-19."},
    {Citation::Excoffier_2004, "Excoffier_2004",
     "Excoffier, L. (2004) Patterns of DNA sequence diversity and genetic structure after a "
     "range expansion: lessons from the infinite-island model. Mol. Ecol. 13:853-864."},
    {Citation::Excoffier_2009, "Excoffier_2009",
     "Excoffier, L., T. Hofer, and M. Foll (2009) Detecting loci under selection in a "
     "hierarchically structured population. Heredity 103:285-298."},
    {Citation::Excoffier_Slatkin_1995, "Excoffier_Slatkin_1995",
     "Excoffier, L., and M. Slatkin (1995) Maximum-likelihood estimation of molecular "
     "haplotype frequencies in a diploid population. Mol. Biol. Evol. 12:921-927."},
    {Citation::Excoffier_Smouse_1994, "Excoffier_Smouse_1994",
     "Excoffier, L., and P. E. Smouse (1994) Using allele frequencies and geographic "
     "subdivision to reconstruct gene trees within a species: molecular variance parsimony. "
     "Genetics 136:343-359."},
    {Citation::Fu_1997, "Fu_1997",
     "Fu, Y.-X. (1997) Statistical tests of neutrality of mutations against population growth,"
     " hitchhiking and background selection. Genetics 147:915-925."},
    {Citation::Gaggiotti_Excoffier_2000, "Gaggiotti_Excoffier_2000",
     "Gaggiotti, O., and L. Excoffier (2000) A simple method of removing the effect of a "
     "bottleneck and unequal population sizes on pairwise genetic distances. Proc. R. Soc. "
     "Lond. B 267:81-87."},
    {Citation::Garza_Williamson_2001, "Garza_Williamson_2001",
     "Garza, J. C., and E. G. Williamson (2001) Detection of reduction in population size "
     "using data from microsatellite loci. Mol. Ecol. 10:305-318."},
    {Citation::Goldstein_1995, "Goldstein_1995",
     "Goldstein, D. B., A. Ruiz Linares, L. L. Cavalli-Sforza, and M. W. Feldman (1995) "
     "Genetic absolute dating based on microsatellites and the origin of modern humans. Proc. "
     "Natl. Acad. Sci. USA 92:6723-6727."},
    {Citation::Goudet_1996, "Goudet_1996",
     "Goudet, J., M. Raymond, T. de Meeus, and F. Rousset (1996) Testing differentiation in "
     "diploid populations. Genetics 144:1933-1940."},
    {Citation::Guo_Thompson_1992, "Guo_Thompson_1992",
     "Guo, S. W., and E. A. Thompson (1992) Performing the exact test of Hardy-Weinberg "
     "proportion for multiple alleles. Biometrics 48:361-372."},
    {Citation::Harpending_1994, "Harpending_1994",
     "Harpending, H. C. (1994) Signature of ancient population growth in a low-resolution "
     "mitochondrial DNA mismatch distribution. Hum. Biol. 66:591-600."},
    {Citation::Hill_Robertson_1968, "Hill_Robertson_1968",
     "Hill, W. G., and A. Robertson (1968) Linkage disequilibrium in finite populations. "
     "Theor. Appl. Genet. 38:226-231."},
    {Citation::Hudson_1990, "Hudson_1990",
     "Hudson, R. R. (1990) Gene genealogies and the coalescent process. Oxf. Surv. Evol. Biol."
     " 7:1-44."},
    {Citation::Jin_Nei_1990, "Jin_Nei_1990",
     "Jin, L., and M. Nei (1990) Limitations of the evolutionary parsimony method of "
     "phylogenetic analysis. Mol. Biol. Evol. 7:82-102."},
    {Citation::Jukes_Cantor_1969, "Jukes_Cantor_1969",
     "Jukes, T. H., and C. R. Cantor (1969) Evolution of protein molecules. In: Munro, H. N. "
     "(ed.) Mammalian Protein Metabolism. Academic Press, New York, pp. 21-132."},
    {Citation::Kimura_1980, "Kimura_1980",
     "Kimura, M. (1980) A simple method for estimating evolutionary rates of base "
     "substitutions through comparative studies of nucleotide sequences. J. Mol. Evol. "
     "16:111-120."},
    {Citation::Kimura_Crow_1964, "Kimura_Crow_1964",
     "Kimura, M., and J. F. Crow (1964) The number of alleles that can be maintained in a "
     "finite population. Genetics 49:725-738."},
    {Citation::Levene_1949, "Levene_1949",
     "Levene, H. (1949) On a matching problem arising in genetics. Ann. Math. Stat. 20:91-94."},
    {Citation::Lewontin_1964, "Lewontin_1964",
     "Lewontin, R. C. (1964) The interaction of selection and linkage. I. General "
     "considerations; heterotic models. Genetics 49:49-67."},
    {Citation::Lewontin_Kojima_1960, "Lewontin_Kojima_1960",
     "Lewontin, R. C., and K. Kojima (1960) The evolutionary dynamics of complex "
     "polymorphisms. Evolution 14:458-472."},
    {Citation::Li_1977, "Li_1977",
     "Li, W.-H. (1977) Distribution of nucleotide differences between two randomly chosen "
     "cistrons in a finite population. Genetics 85:331-337."},
    {Citation::Long_1986, "Long_1986",
     "Long, J. C. (1986) The allelic correlation structure of Gainj- and Kalam-speaking "
     "people. I. The estimation and interpretation of Wright's F-statistics. Genetics "
     "112:629-647."},
    {Citation::Mantel_1967, "Mantel_1967",
     "Mantel, N. (1967) The detection of disease clustering and a generalized regression "
     "approach. Cancer Res. 27:209-220."},
    {Citation::Michalakis_Excoffier_1996, "Michalakis_Excoffier_1996",
     "Michalakis, Y., and L. Excoffier (1996) A generic estimation of population subdivision "
     "using distances between alleles with special reference for microsatellite loci. Genetics"
     " 142:1061-1064."},
    {Citation::Nei_1987, "Nei_1987",
     "Nei, M. (1987) Molecular Evolutionary Genetics. Columbia University Press, New York."},
    {Citation::Nei_Li_1979, "Nei_Li_1979",
     "Nei, M., and W.-H. Li (1979) Mathematical model for studying genetic variation in terms "
     "of restriction endonucleases. Proc. Natl. Acad. Sci. USA 76:5269-5273."},
    {Citation::Nei_Tajima_1981, "Nei_Tajima_1981",
     "Nei, M., and F. Tajima (1981) DNA polymorphism detectable by restriction endonucleases. "
     "Genetics 97:145-163."},
    {Citation::Ohta_Kimura_1973, "Ohta_Kimura_1973",
     "Ohta, T., and M. Kimura (1973) A model of mutation appropriate to estimate the number of"
     " electrophoretically detectable alleles in a finite population. Genet. Res. 22:201-204."},
    {Citation::Paetkau_1995, "Paetkau_1995",
     "Paetkau, D., W. Calvert, I. Stirling, and C. Strobeck (1995) Microsatellite analysis of "
     "population structure in Canadian polar bears. Mol. Ecol. 4:347-354."},
    {Citation::Paetkau_1997, "Paetkau_1997",
     "Paetkau, D., L. P. Waits, P. L. Clarkson, L. Craighead, and C. Strobeck (1997) An "
     "empirical evaluation of genetic distance statistics using microsatellite data from bear "
     "(Ursidae) populations. Genetics 147:1943-1957."},
    {Citation::Prim_1957, "Prim_1957",
     "Prim, R. C. (1957) Shortest connection networks and some generalizations. Bell Syst. "
     "Tech. J. 36:1389-1401."},
    {Citation::Ray_2003, "Ray_2003",
     "Ray, N., M. Currat, and L. Excoffier (2003) Intra-deme molecular diversity in spatially "
     "expanding populations. Mol. Biol. Evol. 20:76-86."},
    {Citation::Raymond_Rousset_1995, "Raymond_Rousset_1995",
     "Raymond, M., and F. Rousset (1995) An exact test for population differentiation. "
     "Evolution 49:1280-1283."},
    {Citation::Reynolds_1983, "Reynolds_1983",
     "Reynolds, J., B. S. Weir, and C. C. Cockerham (1983) Estimation of the coancestry "
     "coefficient: basis for a short-term genetic distance. Genetics 105:767-779."},
    {Citation::Rogers_1995, "Rogers_1995",
     "Rogers, A. R. (1995) Genetic evidence for a Pleistocene population explosion. Evolution "
     "49:608-615."},
    {Citation::Rogers_Harpending_1992, "Rogers_Harpending_1992",
     "Rogers, A. R., and H. Harpending (1992) Population growth makes waves in the "
     "distribution of pairwise genetic differences. Mol. Biol. Evol. 9:552-569."},
    {Citation::Rohlf_1973, "Rohlf_1973",
     "Rohlf, F. J. (1973) Algorithm 76. Hierarchical clustering using the minimum spanning "
     "tree. Comput. J. 16:93-95."},
    {Citation::Schneider_Excoffier_1999, "Schneider_Excoffier_1999",
     "Schneider, S., and L. Excoffier (1999) Estimation of past demographic parameters from "
     "the distribution of pairwise differences when the mutation rates vary among sites: "
     "application to human mitochondrial DNA. Genetics 152:1079-1089."},
    {Citation::Slatkin_1991, "Slatkin_1991",
     "Slatkin, M. (1991) Inbreeding coefficients and coalescence times. Genet. Res. "
     "58:167-175."},
    {Citation::Slatkin_1993, "Slatkin_1993",
     "Slatkin, M. (1993) Isolation by distance in equilibrium and non-equilibrium populations."
     " Evolution 47:264-279."},
    {Citation::Slatkin_1994, "Slatkin_1994",
     "Slatkin, M. (1994) An exact test for neutrality based on the Ewens sampling "
     "distribution. Genet. Res. 64:71-74."},
    {Citation::Slatkin_1995, "Slatkin_1995",
     "Slatkin, M. (1995) A measure of population subdivision based on microsatellite allele "
     "frequencies. Genetics 139:457-462."},
    {Citation::Slatkin_1996, "Slatkin_1996",
     "Slatkin, M. (1996) A correction to the exact test based on the Ewens sampling "
     "distribution. Genet. Res. 68:259-260."},
    {Citation::Slatkin_Excoffier_1996, "Slatkin_Excoffier_1996",
     "Slatkin, M., and L. Excoffier (1996) Testing for linkage disequilibrium in genotypic "
     "data using the expectation-maximization algorithm. Heredity 76:377-383."},
    {Citation::Slatkin_Hudson_1991, "Slatkin_Hudson_1991",
     "Slatkin, M., and R. R. Hudson (1991) Pairwise comparisons of mitochondrial DNA sequences"
     " in stable and exponentially growing populations. Genetics 129:555-562."},
    {Citation::Smouse_1986, "Smouse_1986",
     "Smouse, P. E., J. C. Long, and R. R. Sokal (1986) Multiple regression and correlation "
     "extensions of the Mantel test of matrix correspondence. Syst. Zool. 35:627-632."},
    {Citation::Stewart_1977, "Stewart_1977",
     "Stewart, F. M. (1977) Computer algorithm for obtaining a random set of allele "
     "frequencies for a locus in an equilibrium population. Genetics 86:482-483."},
    {Citation::Strobeck_1987, "Strobeck_1987",
     "Strobeck, C. (1987) Average number of nucleotide differences in a sample from a single "
     "subpopulation: a test for population subdivision. Genetics 117:149-153."},
    {Citation::Tajima_1983, "Tajima_1983",
     "Tajima, F. (1983) Evolutionary relationship of DNA sequences in finite populations. "
     "Genetics 105:437-460."},
    {Citation::Tajima_1989, "Tajima_1989",
     "Tajima, F. (1989) Statistical method for testing the neutral mutation hypothesis by DNA "
     "polymorphism. Genetics 123:585-595."},
    {Citation::Tajima_1993, "Tajima_1993",
     "Tajima, F. (1993) Measurement of DNA polymorphism. In: Takahata, N., and A. G. Clark "
     "(eds.) Mechanisms of Molecular Evolution. Sinauer Associates, Sunderland, MA, pp. 37-59."},
    {Citation::Tajima_Nei_1984, "Tajima_Nei_1984",
     "Tajima, F., and M. Nei (1984) Estimation of evolutionary distance between nucleotide "
     "sequences. Mol. Biol. Evol. 1:269-285."},
    {Citation::Tamura_1992, "Tamura_1992",
     "Tamura, K. (1992) Estimation of the number of nucleotide substitutions when there are "
     "strong transition-transversion and G+C-content biases. Mol. Biol. Evol. 9:678-687."},
    {Citation::Tamura_Nei_1993, "Tamura_Nei_1993",
     "Tamura, K., and M. Nei (1993) Estimation of the number of nucleotide substitutions in "
     "the control region of mitochondrial DNA in humans and chimpanzees. Mol. Biol. Evol. "
     "10:512-526."},
    {Citation::Waser_Strobeck_1998, "Waser_Strobeck_1998",
     "Waser, P. M., and C. Strobeck (1998) Genetic signatures of interpopulation dispersal. "
     "Trends Ecol. Evol. 13:43-44."},
    {Citation::Watterson_1975, "Watterson_1975",
     "Watterson, G. A. (1975) On the number of segregating sites in genetical models without "
     "recombination. Theor. Popul. Biol. 7:256-276."},
    {Citation::Watterson_1978, "Watterson_1978",
     "Watterson, G. A. (1978) The homozygosity test of neutrality. Genetics 88:405-417."},
    {Citation::Weir_1996, "Weir_1996",
     "Weir, B. S. (1996) Genetic Data Analysis II: Methods for Discrete Population Genetic "
     "Data. Sinauer Associates, Sunderland, MA."},
    {Citation::Weir_Cockerham_1984, "Weir_Cockerham_1984",
     "Weir, B. S., and C. C. Cockerham (1984) Estimating F-statistics for the analysis of "
     "population structure. Evolution 38:1358-1370."},
    {Citation::Wright_1951, "Wright_1951",
     "Wright, S. (1951) The genetical structure of populations. Ann. Eugen. 15:323-354."},
    {Citation::Zouros_1979, "Zouros_1979",
     "Zouros, E. (1979) Mutation rates, population sizes and amounts of electrophoretic "
     "variation of enzyme loci in natural populations. Genetics 92:623-646."},
}};
// clang-format on

constexpr bool rows_follow_enumerators() {
    for (std::size_t i = 0; i < kCitations.size(); ++i) {
        if (kCitations[i].citation != static_cast<Citation>(i)) return false;
    }
    return true;
}
static_assert(rows_follow_enumerators());

const CitationRow& row_of(Citation citation) {
    return kCitations[static_cast<std::size_t>(citation)];
}

void print_alone(std::ostream& out, std::string_view text) {
    if (xmlOutput) {
        out << "Reference: </data>\n<Reference>" << text << "</Reference>\n<data>\n";
    } else {
        out << "Reference: <i>" << text << "</i>" << '\n';
    }
}

void print_in_list(std::ostream& out, std::string_view text, int mode) {
    if (!xmlOutput) {
        out << "           <i>" << text << "</i>" << '\n';
        return;
    }
    switch (mode) {
        case References::kFirst:
            out << "</data>\n<Reference>" << text << "</Reference>\n";
            break;
        case References::kMiddle:
            out << "<Reference>" << text << "</Reference>\n";
            break;
        case References::kLast:
            out << "<Reference>" << text << "</Reference>\n<data>\n";
            break;
        default:
            break;
    }
}

}  // namespace

std::string_view citation_key(Citation citation) {
    return row_of(citation).key;
}

std::string_view References::get_reference(std::string_view key) {
    for (const CitationRow& row : kCitations) {
        if (row.key == key) return row.text;
    }
    return {};
}

References::References(std::ostream& out, std::string_view key) {
    print_alone(out, get_reference(key));
}

References::References(std::ostream& out, Citation citation) {
    print_alone(out, row_of(citation).text);
}

References::References(std::ostream& out, std::string_view key, int mode) {
    print_in_list(out, get_reference(key), mode);
}

References::References(std::ostream& out, Citation citation, int mode) {
    print_in_list(out, row_of(citation).text, mode);
}

void cite(std::ostream& out, const std::vector<Citation>& publications) {
    if (publications.size() == 1) {
        References(out, publications.front());
        return;
    }
    out << "References:\n";
    for (std::size_t i = 0; i < publications.size(); ++i) {
        const int mode = i == 0                         ? References::kFirst
                         : i + 1 == publications.size() ? References::kLast
                                                        : References::kMiddle;
        References(out, publications[i], mode);
    }
}

}  // namespace mnd
