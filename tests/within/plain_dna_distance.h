// The seven DNA distances as one loop over the sites of two texts: slow, plain, and written
// without a look at the engine's counts. Oracle of the tests of distances.
#pragma once

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "model/nucleotides.h"

namespace mnd_test {

struct PlainDnaDistance {
    int method = 0;
    double ts_weight = 1.0, tv_weight = 1.0, del_weight = 1.0;
    double a = 0.0;  // gamma
    char m = '?';
    double fC = 0.25, fT = 0.25, fA = 0.25, fG = 0.25;
    double gc = 0.5;

    bool done = false;  // whether there is a distance
    double distance = 0.0, variance = 0.0;
    double L = 0.0;

    void compare(const std::string& s1, const std::string& s2, const std::vector<int>& usable) {
        distance = variance = L = 0.0;
        done = true;
        if (method == 1) return jukes_cantor(s1, s2, usable);
        if (method == 2 || method == 5) return two_classes(s1, s2, usable);
        if (method == 4) return tajima_nei(s1, s2, usable);
        if (method == 6) return tamura_nei(s1, s2, usable);
        weighted(s1, s2, usable);
    }

private:
    int difference(char x, char y) const {
        return x == m || y == m ? 0 : static_cast<int>(mnd::compare_nucleotides(x, y));
    }
    bool seen(char x) const { return x != m && x != '-'; }
    static bool is_base(char x) { return x == 'A' || x == 'C' || x == 'G' || x == 'T'; }

    void weighted(const std::string& s1, const std::string& s2, const std::vector<int>& usable) {
        double d = 0.0, ts = 0.0, tv = 0.0, del = 0.0;
        for (std::size_t k = 0; k < usable.size(); ++k) {
            if (usable[k] == 0) continue;
            const char x = s1[k], y = s2[k];
            if (x == y) {
                if (x != m) L += 1.0;
                continue;
            }
            double weight = 0.0;
            double* kind = nullptr;
            switch (difference(x, y)) {
                case 1:
                    if (ts_weight > 0.0) weight = ts_weight, kind = &ts;
                    break;
                case 2:
                    if (tv_weight > 0.0) weight = tv_weight, kind = &tv;
                    break;
                case 3:
                    if (del_weight > 0.0) weight = del_weight, kind = &del;
                    break;
                case 4:
                    if (ts_weight > 0.0) {
                        weight = tv_weight < ts_weight ? tv_weight : ts_weight;
                        kind = tv_weight < ts_weight ? &tv : &ts;
                    } else if (tv_weight > 0.0) {
                        L += tv_weight;
                        continue;
                    }
                    break;
                default:
                    break;
            }
            if (kind == nullptr) {
                L += 1.0;
            } else {
                L += weight;
                d += weight;
                *kind += weight;
            }
        }
        if (method == 3) {
            if (!(L > 0.0)) return;
            distance = (ts + tv + del) / L;
            variance = (1.0 - distance) * distance / L;
        } else {
            const double p = L == 0.0 ? 0.0 : d / L;
            distance = d;
            variance = (1.0 - p) * p * L;
        }
    }

    void jukes_cantor(const std::string& s1, const std::string& s2, const std::vector<int>& usable) {
        double differences = 0.0;
        for (std::size_t k = 0; k < usable.size(); ++k) {
            if (usable[k] == 0) continue;
            const char x = s1[k], y = s2[k];
            if (x == y) {
                if (seen(x)) L += 1.0;
                continue;
            }
            const int c = difference(x, y);
            if (c == 1 || c == 4) {
                if (ts_weight > 0.0) differences += 1.0;
                L += 1.0;
            } else if (c == 2) {
                if (tv_weight > 0.0) differences += 1.0;
                L += 1.0;
            } else if ((x != m && y != '-') || (y != m && x != '-')) {
                L += 1.0;
            }
        }
        if (L == 0.0) return;
        const double p = differences / L;
        if (p >= 0.75) {
            done = false;
            distance = -p;
            return;
        }
        const double x = 1.0 - 4.0 * p / 3.0;
        distance = a == 0.0 ? -0.75 * std::log(x) : 0.75 * a * (std::pow(x, -1.0 / a) - 1.0);
        const double slope = a == 0.0 ? 1.0 / x : std::pow(x, -1.0 / a - 1.0);
        variance = slope * slope * p * (1.0 - p) / L;
    }

    // Variance of a function of proportions by the delta method; slopes and proportions by class.
    double delta(std::initializer_list<std::pair<double, double>> classes) const {
        double squares = 0.0, mean = 0.0;
        for (const auto& [slope, share] : classes) {
            squares += slope * slope * share;
            mean += slope * share;
        }
        return (squares - mean * mean) / L;
    }

    void two_classes(const std::string& s1, const std::string& s2, const std::vector<int>& usable) {
        double ts = 0.0, tv = 0.0;
        for (std::size_t k = 0; k < usable.size(); ++k) {
            if (usable[k] == 0) continue;
            const char x = s1[k], y = s2[k];
            if (x == y) {
                if (seen(x)) L += 1.0;
                continue;
            }
            const int c = difference(x, y);
            if (c == 1 && ts_weight > 0.0) ts += 1.0;
            if (c == 2 && tv_weight > 0.0) tv += 1.0;
            const bool other =
                method == 2 ? (x != m && y != '-') || (y != m && x != '-') : seen(x) && seen(y);
            if (c == 1 || c == 2 || c == 4 || other) L += 1.0;
        }
        if (L == 0.0) return;
        const double P = ts / L, Q = tv / L, w2 = 1.0 - 2.0 * Q;
        if (method == 5) {
            const double h = 2.0 * gc * (1.0 - gc);
            const double w1 = 1.0 - P / h - Q;
            done = h > 0.0 && w1 > 0.0 && w2 > 0.0;
            if (!done) return;
            distance = -h * std::log(w1) - 0.5 * (1.0 - h) * std::log(w2);
            variance = delta({{1.0 / w1, P}, {h / w1 + (1.0 - h) / w2, Q}});
            return;
        }
        const double w1 = 1.0 - 2.0 * P - Q;
        done = w1 != 0.0 && w2 != 0.0;
        if (!done) return;
        if (a == 0.0) {
            distance = -0.5 * std::log(w1) - 0.25 * std::log(w2);
            variance = delta({{1.0 / w1, P}, {0.5 / w1 + 0.5 / w2, Q}});
        } else {
            distance = a / 2.0 * (std::pow(w1, -1.0 / a) + 0.5 * std::pow(w2, -1.0 / a) - 1.5);
            const double u = -1.0 / a - 1.0;
            variance = delta({{std::pow(w1, u), P}, {0.5 * std::pow(w1, u) + 0.5 * std::pow(w2, u), Q}});
        }
    }

    double frequency(char x) const { return x == 'A' ? fA : x == 'C' ? fC : x == 'G' ? fG : fT; }
    static bool transition(char x, char y) {
        return (x == 'A' && y == 'G') || (x == 'G' && y == 'A') || (x == 'C' && y == 'T') ||
               (x == 'T' && y == 'C');
    }

    void tajima_nei(const std::string& s1, const std::string& s2, const std::vector<int>& usable) {
        double differences = 0.0, pairs[128][128] = {};
        for (std::size_t k = 0; k < usable.size(); ++k) {
            if (usable[k] == 0) continue;
            const char x = s1[k], y = s2[k];
            if (x == y && seen(x)) L += 1.0;
            if (x == y || !is_base(x) || !is_base(y) || !seen(x) || !seen(y)) continue;
            L += 1.0;
            pairs[static_cast<int>(std::min(x, y))][static_cast<int>(std::max(x, y))] += 1.0;
            if ((transition(x, y) ? ts_weight : tv_weight) > 0.0) differences += 1.0;
        }
        if (differences == 0.0) return;
        done = fA > 0.0 && fC > 0.0 && fG > 0.0 && fT > 0.0;
        if (!done) return;
        double c = 0.0;
        for (const char x : std::string("ACGT")) {
            for (const char y : std::string("ACGT")) {
                const double h = pairs[static_cast<int>(x)][static_cast<int>(y)] / L;
                c += h * h / (2.0 * frequency(x) * frequency(y));
            }
        }
        const double p = differences / L;
        const double b = 0.5 * (1.0 - fA * fA - fC * fC - fG * fG - fT * fT + p * p / c);
        done = p / b < 1.0;
        if (!done) return;
        distance = -b * std::log(1.0 - p / b);
        variance = p * (1.0 - p) / ((1.0 - p / b) * (1.0 - p / b) * L);
    }

    void tamura_nei(const std::string& s1, const std::string& s2, const std::vector<int>& usable) {
        double ct = 0.0, ag = 0.0, tv = 0.0;
        for (std::size_t k = 0; k < usable.size(); ++k) {
            if (usable[k] == 0) continue;
            const char x = s1[k], y = s2[k];
            if (x == y && seen(x)) L += 1.0;
            if (x == y || !is_base(x) || !is_base(y) || !seen(x) || !seen(y)) continue;
            L += 1.0;
            if (!transition(x, y)) {
                if (tv_weight > 0.0) tv += 1.0;
            } else if (ts_weight > 0.0) {
                (x == 'A' || x == 'G' ? ag : ct) += 1.0;
            }
        }
        if (ct + ag + tv == 0.0) {
            done = a == 0.0;
            return;
        }
        done = fA > 0.0 && fC > 0.0 && fG > 0.0 && fT > 0.0;
        if (!done) return;
        const double gR = fA + fG, gY = fC + fT, P1 = ct / L, P2 = ag / L, Q = tv / L;
        const double kR = 2.0 * fA * fG / gR, kY = 2.0 * fC * fT / gY;
        const double kRY = 2.0 * (gR * gY - fA * fG * gY / gR - fC * fT * gR / gY);
        const double wR = 1.0 - P2 / kR - Q / (2.0 * gR), wY = 1.0 - P1 / kY - Q / (2.0 * gY);
        const double wQ = 1.0 - Q / (2.0 * gR * gY);
        const auto power = [this](double w) { return a == 0.0 ? 1.0 / w : std::pow(w, -1.0 / a - 1.0); };
        const auto term = [this](double w) {
            return a == 0.0 ? -std::log(w) : a * (std::pow(w, -1.0 / a) - 1.0);
        };
        done = wR > 0.0 && wY > 0.0 && wQ > 0.0;
        if (!done) return;
        distance = kR * term(wR) + kY * term(wY) + kRY * term(wQ);
        const double slope_Q =
            kR * power(wR) / (2.0 * gR) + kY * power(wY) / (2.0 * gY) + kRY * power(wQ) / (2.0 * gR * gY);
        variance = delta({{power(wR), P2}, {power(wY), P1}, {slope_Q, Q}});
    }
};

}  // namespace mnd_test
