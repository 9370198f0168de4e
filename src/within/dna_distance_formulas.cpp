#include "within/dna_distance_formulas.h"

#include <algorithm>
#include <cmath>

#include "foundation/message_codes.h"
#include "foundation/report.h"

namespace mnd {
namespace {

// A distance under gamma-distributed rates must be a positive number of single precision.
constexpr double kSmallestSingle = 1.1754943508222875e-38;
constexpr double kLargestSingle = 3.4028234663852886e+38;

double squared(double x) {
    return x * x;
}

// Zero without a sign, so that equal sequences print as 0 and not as -0.
double without_negative_zero(double x) {
    return x == 0.0 ? 0.0 : x;
}

// Variance of a function of P and Q with partial derivatives c and e (delta method).
double two_class_variance(double c, double P, double e, double Q, double L) {
    return (c * c * P + e * e * Q - squared(c * P + e * Q)) / L;
}

void set_two_class_counts(const SiteCounts& counts, DnaPair& pair) {
    pair.ts_count = counts[kTwoClassTransitions];
    pair.tv_count = counts[kTwoClassTransversions];
    pair.site_count = counts[kTwoClassCompared];
}

void set_nothing_compared(DnaPair& pair) {
    pair.distance = pair.distance_var = 0.0;
    pair.ts_rate = pair.tv_rate = 0.0;
    pair.ts_tv_ratio = pair.ts_tv_ratio_var = 0.0;
}

// Ratio of transitions to transversions and its variance, for 1 - 2P - Q (or its weighted
// form) = w1 and 1 - 2Q = w2: 2h ln w1 / ln w2 - h. Kimura's form has h = 1/2.
void set_logarithmic_ratio(double w1, double w2, double h, double L, DnaPair& pair) {
    const double l1 = std::log(w1);
    const double l2 = std::log(w2);
    const double e = -2.0 * (1.0 / w1) / l2;
    const double f = ((4.0 * (1.0 / w2) * l1) / (l2 * l2) + e) * h;
    pair.ts_tv_ratio = 2.0 * h * l1 / l2 - h;
    pair.ts_tv_ratio_var = two_class_variance(e, pair.ts_rate, f, pair.tv_rate, L);
}

void set_kimura(double w1, double w2, DnaPair& pair) {
    const double P = pair.ts_rate;
    const double Q = pair.tv_rate;
    const double L = pair.site_count;
    const double c1 = 1.0 / w1;
    const double c2 = 1.0 / w2;
    pair.distance = 0.5 * std::log(c1) + 0.25 * std::log(c2);
    pair.distance_var = two_class_variance(c1, P, (c1 + c2) / 2.0, Q, L);
    if (w2 == 1.0) {
        pair.ts_tv_ratio = pair.ts_tv_ratio_var = -1.0;
    } else {
        set_logarithmic_ratio(w1, w2, 0.5, L, pair);
    }
}

void set_kimura_gamma(double w1, double w2, double a, DnaPair& pair) {
    const double P = pair.ts_rate;
    const double Q = pair.tv_rate;
    const double t = -1.0 / a;
    const double A = std::pow(w2, t);
    const double B = std::pow(w1, t);
    const double C = std::pow(w2, t - 1.0);
    const double D = std::pow(w1, t - 1.0);
    pair.distance = a / 2.0 * (B + A / 2.0 - 1.5);
    pair.distance_var = two_class_variance(D, P, (C + D) / 2.0, Q, pair.site_count);
    pair.ts_tv_ratio = Q == 0.0 ? -1.0 : (B - 0.5 * A - 0.5) / (A - 1.0);
    pair.ts_tv_ratio_var = -1.0;
}

// Frequencies of Tamura and Nei's formulae, with the proportions of their three classes.
struct TamuraNeiTerms {
    double fC, fT, fA, fG;
    double gY, gR, kY, kR;
    double P1, P2, Q;   // C with T, A with G, transversions
    double w1, w2, w3;  // arguments of the logarithms
    double L;

    TamuraNeiTerms(const SiteCounts& counts, const std::array<double, 4>& f)
        : fC(f[kBaseC]),
          fT(f[kBaseT]),
          fA(f[kBaseA]),
          fG(f[kBaseG]),
          gY(fC + fT),
          gR(fA + fG),
          kY(2.0 * fC * fT / gY),
          kR(2.0 * fA * fG / gR),
          P1(static_cast<double>(counts[kTamuraNeiPyrimidines]) / counts[kTamuraNeiCompared]),
          P2(static_cast<double>(counts[kTamuraNeiPurines]) / counts[kTamuraNeiCompared]),
          Q(static_cast<double>(counts[kTamuraNeiTransversions]) / counts[kTamuraNeiCompared]),
          w1(1.0 - P2 / kR - Q / (2.0 * gR)),
          w2(1.0 - P1 / kY - Q / (2.0 * gY)),
          w3(1.0 - Q / (2.0 * gR * gY)),
          L(counts[kTamuraNeiCompared]) {}

    double variance(double a2, double a1, double a3) const {
        return (a2 * a2 * P2 + a1 * a1 * P1 + a3 * a3 * Q - squared(a2 * P2 + a1 * P1 + a3 * Q)) / L;
    }
};

DnaFault set_tamura_nei(const TamuraNeiTerms& t, DnaPair& pair) {
    if (!(t.w1 > 0.0 && t.w2 > 0.0 && t.w3 > 0.0)) {
        pair.distance = pair.distance_var = 0.0;
        return DnaFault::kTamuraNeiUnbalanced;
    }
    const double l3 = std::log(t.w3);
    const double D =
        -t.kR * std::log(t.w1) - t.kY * std::log(t.w2) - (2.0 * t.gR * t.gY - t.kR * t.gY - t.kY * t.gR) * l3;
    const double c1 = 2.0 * t.fC * t.fT * t.gY;
    const double e1 = c1 - t.gY * t.gY * t.P1 - t.fC * t.fT * t.Q;
    const double c2 = 2.0 * t.fA * t.fG * t.gR;
    const double e2 = c2 - t.gR * t.gR * t.P2 - t.fA * t.fG * t.Q;
    const double a3 =
        ((squared(t.fC) + squared(t.fT)) * squared(t.gR) + (squared(t.fA) + squared(t.fG)) * squared(t.gY)) /
            (2.0 * squared(t.gR) * squared(t.gY) - t.gR * t.gY * t.Q) +
        2.0 * squared(t.fA) * squared(t.fG) / (e2 * t.gR) + 2.0 * squared(t.fC) * squared(t.fT) / (e1 * t.gY);
    pair.distance = D;
    pair.distance_var = t.variance(c2 / e2, c1 / e1, a3);
    pair.ts_dist = 2.0 * t.gR * t.gY * l3 + D;
    pair.tv_dist = D - pair.ts_dist;
    pair.ts_tv_ratio = D == 0.0 ? 0.0 : pair.ts_dist / D;
    pair.ts_tv_ratio_var = -1.0;
    return DnaFault::kNone;
}

DnaFault set_tamura_nei_gamma(const TamuraNeiTerms& t, double a, DnaPair& pair) {
    const double s = -1.0 / a;
    const double D = a * (-2.0 * (t.gR * t.gY + t.fA * t.fG + t.fC * t.fT) +
                          (2.0 * t.gR * t.gY - t.kR * t.gY - t.kY * t.gR) * std::pow(t.w3, s) +
                          t.kY * std::pow(t.w2, s) + t.kR * std::pow(t.w1, s));
    if (!(D >= kSmallestSingle && D <= kLargestSingle)) {
        pair.distance = pair.distance_var = 0.0;
        return DnaFault::kTamuraNeiOutOfRange;
    }
    const double u = -(1.0 / a + 1.0);
    const double B1 = std::pow(t.w1, u);
    const double B2 = std::pow(t.w2, u);
    const double B3 = std::pow(t.w3, u);
    const double a3 = ((squared(t.fA) + squared(t.fG)) / (2.0 * squared(t.gR)) +
                       (squared(t.fT) + squared(t.fC)) / (2.0 * squared(t.gY))) *
                          B3 +
                      t.kR / (2.0 * t.gR) * B1 + t.kY / (2.0 * t.gY) * B2;
    pair.distance = D;
    pair.distance_var = t.variance(B1, B2, a3);
    return DnaFault::kNone;
}

// The unordered types of pairs of bases, in the order of their counters.
constexpr std::size_t kPairTypes = 6;
struct PairType {
    std::size_t i, j;
    bool transition;
};
constexpr PairType kPairType[kPairTypes] = {
    {kBaseT, kBaseC, true},  {kBaseA, kBaseC, false}, {kBaseA, kBaseT, false},
    {kBaseG, kBaseC, false}, {kBaseG, kBaseT, false}, {kBaseG, kBaseA, true},
};
using PairTypeValues = std::array<double, kPairTypes>;

// Differences of the classes with a weight.
int weighted_differences(const SiteCounts& counts, const DnaWeights& weights) {
    const int transitions = counts[0] + counts[5];
    const int transversions = counts[1] + counts[2] + counts[3] + counts[4];
    return (weights.transition > 0.0 ? transitions : 0) + (weights.transversion > 0.0 ? transversions : 0);
}

// Half the sum of squared proportions h of pairs over the products of frequencies.
double tajima_nei_c(const PairTypeValues& h, const std::array<double, 4>& f) {
    PairTypeValues terms;
    for (std::size_t c = 0; c < kPairTypes; ++c) {
        terms[c] = h[c] * h[c] / (f[kPairType[c].i] * f[kPairType[c].j]);
    }
    double sum = 0.0;
    for (const double term : terms)
        sum += term;
    return 0.5 * sum;
}

// Stores the types of pairs, as counts or as proportions.
void set_pair_counts(const PairTypeValues& values, DnaPair& pair) {
    for (std::size_t c = 0; c < kPairTypes; ++c)
        pair.pair_counts[kPairType[c].i][kPairType[c].j] = values[c];
}

struct FaultReport {
    ErrorType type;
    const char* origin;
    int code;
};

// In the order of DnaFault, from kJukesCantorDivergent.
constexpr FaultReport kFaultReports[] = {
    {Warning, "PopulDNA::jk_dist()", kTooDivergentForJukesCantor},
    {Warning, "PopulDNA::kim2p_dist()", kTooDivergentForKimura2P},
    {Error, "PopulDNA::tajnei_dist(s1, s2)", kNucleotideNotFound},
    {Warning, "PopulDNA::tajnei_dist(s1, s2)", kTooDivergentForTajimaNei},
    {Error, "PopulDNA::tamura_dist(s1, s2)", kTooUnbalancedForTamura},
    {Error, "PopulDNA::tamura_dist(s1, s2)", kLogOfZero},
    {Warning, "PopulDNA::tamnei_dist(s1,s2)", kTooUnbalancedForTamuraNei},
    {Warning, "PopulDNA::tamnei_dist(s1,s2)", kTooUnbalancedForTamuraNei},
};

}  // namespace

void report_dna_fault(DnaFault fault) {
    if (fault == DnaFault::kNone) return;
    const FaultReport& text = kFaultReports[static_cast<std::size_t>(fault) - 1];
    report(text.type, text.origin, text.code);
    if (fault == DnaFault::kTamuraNeiOutOfRange) report(Warning, text.origin, kDistanceMatrixNotComputed);
}

void difference_distance(const WeightedSums& sums, DnaPair& pair) {
    const double L = sums.compared;
    const double p = L == 0.0 ? 0.0 : sums.differences / L;
    pair.distance = sums.differences;
    pair.distance_var = (1.0 - p) * p * L;
}

void proportion_distance(const WeightedSums& sums, DnaPair& pair) {
    const double L = sums.compared;
    if (!(L > 0.0)) {
        set_nothing_compared(pair);
        pair.ts_tv_ratio = pair.ts_tv_ratio_var = -1.0;
        return;
    }
    const double P = sums.transitions / L;
    const double Q = sums.transversions / L;
    pair.ts_rate = P;
    pair.tv_rate = Q;
    if (Q == 0.0) {
        pair.ts_tv_ratio = pair.ts_tv_ratio_var = -1.0;
    } else {
        const double u = 1.0 / Q;
        const double v = -P / (Q * Q);
        pair.ts_tv_ratio = P / Q;
        pair.ts_tv_ratio_var = (v * v * Q + u * u * P - squared(v * Q + u * P)) / L;
    }
    const double D = (sums.transitions + sums.transversions + sums.deletions) / L;
    pair.distance = D;
    pair.distance_var = (1.0 - D) * D / L;
}

DnaFault jukes_cantor_distance(const SiteCounts& counts, double gamma_a, DnaPair& pair) {
    const double L = counts[kJukesCantorCompared];
    if (L == 0.0) {
        pair.distance = pair.distance_var = 0.0;
        return DnaFault::kNone;
    }
    const double p = counts[kJukesCantorDifferences] / L;
    if (p >= 0.75) {
        pair.distance = -p;
        return DnaFault::kJukesCantorDivergent;
    }
    const double x = 1.0 - 4.0 / 3.0 * p;
    if (gamma_a == 0.0) {
        pair.distance = without_negative_zero(-0.75 * std::log(x));
        pair.distance_var = (1.0 - p) * p / (L * x * x);
    } else {
        pair.distance = 0.75 * gamma_a * (std::pow(x, -1.0 / gamma_a) - 1.0);
        pair.distance_var = (1.0 - p) * p * std::pow(x, -2.0 * (1.0 / gamma_a + 1.0)) / L;
    }
    return DnaFault::kNone;
}

DnaFault kimura_distance(const SiteCounts& counts, double gamma_a, DnaPair& pair) {
    set_two_class_counts(counts, pair);
    if (pair.site_count == 0) {
        set_nothing_compared(pair);
        return DnaFault::kNone;
    }
    pair.ts_rate = static_cast<double>(pair.ts_count) / pair.site_count;
    pair.tv_rate = static_cast<double>(pair.tv_count) / pair.site_count;
    const double w1 = 1.0 - 2.0 * pair.ts_rate - pair.tv_rate;
    const double w2 = 1.0 - 2.0 * pair.tv_rate;
    if (w1 == 0.0 || w2 == 0.0) return DnaFault::kKimuraDivergent;
    if (gamma_a == 0.0) {
        set_kimura(w1, w2, pair);
    } else {
        set_kimura_gamma(w1, w2, gamma_a, pair);
    }
    return DnaFault::kNone;
}

DnaFault tajima_nei_distance(const SiteCounts& counts, const DnaWeights& weights,
                             const BaseComposition& composition, DnaPair& pair) {
    const std::array<double, 4>& f = composition.frequency;
    const double L = counts[kTajimaNeiCompared];
    PairTypeValues h;
    for (std::size_t c = 0; c < kPairTypes; ++c)
        h[c] = counts[kTajimaNeiPairs + c];
    const int differences = weighted_differences(counts, weights);
    if (differences == 0) {
        set_pair_counts(h, pair);
        pair.distance = pair.distance_var = 0.0;
        return DnaFault::kNone;
    }
    if (f[0] <= 0.0 || f[1] <= 0.0 || f[2] <= 0.0 || f[3] <= 0.0) {
        set_pair_counts(h, pair);
        return DnaFault::kTajimaNeiNoNucleotide;
    }
    for (double& proportion : h)
        proportion /= L;
    set_pair_counts(h, pair);
    const double homozygosity = f[0] * f[0] + f[1] * f[1] + f[2] * f[2] + f[3] * f[3];
    const double c = tajima_nei_c(h, f);
    if (c == 0.0) return DnaFault::kTajimaNeiNoNucleotide;
    const double p = differences / L;
    const double b = (p * p / c + (1.0 - homozygosity)) / 2.0;
    if (p / b >= 1.0) {
        pair.distance = pair.distance_var = 0.0;
        return DnaFault::kTajimaNeiDivergent;
    }
    const double w = 1.0 - p / b;
    pair.distance = -b * std::log(w);
    pair.distance_var = (1.0 - p) * p / (w * w * L);
    return DnaFault::kNone;
}

DnaFault tamura_distance(const SiteCounts& counts, const BaseComposition& composition, DnaPair& pair) {
    set_two_class_counts(counts, pair);
    if (pair.site_count == 0) {
        set_nothing_compared(pair);
        return DnaFault::kNone;
    }
    const double L = pair.site_count;
    const double P = pair.ts_rate = pair.ts_count / L;
    const double Q = pair.tv_rate = pair.tv_count / L;
    const double h = 2.0 * composition.gc_content * (1.0 - composition.gc_content);
    const double w1 = 1.0 - P / h - Q;
    const double w2 = 1.0 - 2.0 * Q;
    if (!(h > 0.0 && w1 > 0.0 && w2 > 0.0)) return DnaFault::kTamuraUnbalanced;
    pair.distance = without_negative_zero(-0.5 * (1.0 - h) * std::log(w2) - h * std::log(w1));
    const double c1 = 1.0 / w1;
    const double c2 = 1.0 / w2;
    pair.distance_var = two_class_variance(c1, P, (c1 - c2) * h + c2, Q, L);
    if (!(Q > 0.0)) {
        pair.ts_tv_ratio = pair.ts_tv_ratio_var = -1.0;
        return DnaFault::kNone;
    }
    if (w2 == 1.0) return DnaFault::kTamuraLogOfZero;
    set_logarithmic_ratio(w1, w2, h, L, pair);
    return DnaFault::kNone;
}

DnaFault tamura_nei_distance(const SiteCounts& counts, const BaseComposition& composition, double gamma_a,
                             DnaPair& pair) {
    pair.diff_count =
        counts[kTamuraNeiPyrimidines] + counts[kTamuraNeiPurines] + counts[kTamuraNeiTransversions];
    if (pair.diff_count == 0 || counts[kTamuraNeiCompared] == 0) {
        pair.distance = pair.distance_var = 0.0;
        pair.ts_dist = pair.tv_dist = 0.0;
        pair.ts_tv_ratio = pair.ts_tv_ratio_var = 0.0;
        return gamma_a == 0.0 ? DnaFault::kNone : DnaFault::kTamuraNeiOutOfRange;
    }
    const std::array<double, 4>& f = composition.frequency;
    pair.tv_rate = static_cast<double>(counts[kTamuraNeiTransversions]) / counts[kTamuraNeiCompared];
    if (std::find(f.begin(), f.end(), 0.0) != f.end()) {
        pair.distance = pair.distance_var = 0.0;
        return DnaFault::kTamuraNeiUnbalanced;
    }
    const TamuraNeiTerms terms(counts, f);
    return gamma_a == 0.0 ? set_tamura_nei(terms, pair) : set_tamura_nei_gamma(terms, gamma_a, pair);
}

DnaFault distance_from_counts(int method, const SiteCounts& counts, const DnaWeights& weights,
                              const BaseComposition& composition, double gamma_a, DnaPair& pair) {
    switch (method) {
        case kJukesCantor:
            return jukes_cantor_distance(counts, gamma_a, pair);
        case kKimuraTwoParameters:
            return kimura_distance(counts, gamma_a, pair);
        case kTajimaNei:
            return tajima_nei_distance(counts, weights, composition, pair);
        case kTamura:
            return tamura_distance(counts, composition, pair);
        default:
            return tamura_nei_distance(counts, composition, gamma_a, pair);
    }
}

bool is_weighted_method(int method) {
    return method == kProportionOfDifference || method == kPairwiseDifference || method < 0 ||
           method > kTamuraNei;
}

void distance_from_sums(int method, const WeightedSums& sums, DnaPair& pair) {
    if (method == kProportionOfDifference) {
        proportion_distance(sums, pair);
    } else {
        difference_distance(sums, pair);
    }
}

}  // namespace mnd
