#include "foundation/random.h"

#include <sys/time.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <ctime>
#include <fstream>
#include <iostream>

#include "foundation/message_codes.h"
#include "foundation/report.h"
#include "foundation/special_functions.h"

namespace mnd {

namespace {

constexpr int kLongLag = kStreamLag;            // x[n] is made of x[n - 55] ...
constexpr int kShortLag = 24;                   // ... and x[n - 24]
constexpr int kLagSpan = kLongLag - kShortLag;  // slots between the two in the table
constexpr int kWarmUpPasses = 4;                // over the fresh table
constexpr long kClockSeedOffset = 383;          // fixed: first number of the C library's rand, modulo 1000
constexpr long kClockSeedModulus = 2000000 - kClockSeedOffset;
constexpr int kMaxPoissonTries = 1000000;  // see poidev

// a - b, brought back above 0 by one modulus. Wraps where a start out of range has made the
// table grow without bound.
std::int64_t subtract_modulo(std::int64_t a, std::int64_t b) {
    const auto d = static_cast<std::int64_t>(static_cast<std::uint64_t>(a) - static_cast<std::uint64_t>(b));
    return d + (d < 0 ? MBIG : MZ);
}

// x truncated to int, held within its range; 0 when x is not a number.
int truncate_to_int(double x) {
    if (std::isnan(x)) return 0;
    if (x >= static_cast<double>(INT_MAX)) return INT_MAX;
    if (x <= static_cast<double>(INT_MIN)) return INT_MIN;
    return static_cast<int>(x);
}

}  // namespace

std::uint64_t draws_taken() {
#ifdef MENDCORE_COUNT_DRAWS
    return uniform_draw_count;
#else
    return 0;
#endif
}

void reset_draws_taken() {
#ifdef MENDCORE_COUNT_DRAWS
    uniform_draw_count = 0;
#endif
}

void seed_stream(long seed) {
    UniformStream& s = uniform_stream;
    std::int64_t mj = (seed < 0 ? MSEED + seed : MSEED - seed) % MBIG;
    std::int64_t mk = 1;
    s.iff = true;
    s.ma[kLongLag] = mj;
    for (int i = 1; i < kLongLag; ++i) {
        const int slot = (21 * i) % kLongLag;
        s.ma[slot] = mk;
        mk = subtract_modulo(mj, mk);
        mj = s.ma[slot];
    }
    for (int pass = 0; pass < kWarmUpPasses; ++pass) {
        for (int i = 1; i <= kLongLag; ++i) {
            s.ma[i] = subtract_modulo(s.ma[i], s.ma[1 + (i + kLagSpan - 1) % kLongLag]);
        }
    }
    s.inext = kLongLag;
}

// The first 24 numbers need the last of the round before, the others those just made: two
// loops without a wrap, in which no step needs one of the 24 before it.
void advance_round() {
    UniformStream& s = uniform_stream;
    if (!s.iff) seed_stream(1);
    for (int i = 1; i <= kShortLag; ++i) {
        s.ma[i] = subtract_modulo(s.ma[i], s.ma[i + kLagSpan]);
    }
    for (int i = kShortLag + 1; i <= kLongLag; ++i) {
        s.ma[i] = subtract_modulo(s.ma[i], s.ma[i - kShortLag]);
    }
    s.inext = 0;
}

void report_strange_ran3(double u) {
    std::cout << " ** strange ran3:" << u;
}

void ran3_block(double* u, int n) {
    UniformStream& s = uniform_stream;
    int done = 0;
    while (done < n) {
        if (s.inext == kStreamLag) advance_round();
        const int here = std::min(n - done, kStreamLag - s.inext);
        const std::int64_t* const from = s.ma + s.inext + 1;
        bool strange = false;
        for (int k = 0; k < here; ++k) {
            u[done + k] = static_cast<double>(from[k]) * FAC;
            strange |= from[k] >= MBIG;
        }
        for (int k = 0; strange && k < here; ++k) {
            if (u[done + k] >= 1.0) report_strange_ran3(u[done + k]);
        }
        s.inext += here;
        done += here;
    }
#ifdef MENDCORE_COUNT_DRAWS
    uniform_draw_count += static_cast<std::uint64_t>(done);
#endif
}

long clock_seed(double ticks, long microseconds, long seconds) {
    constexpr auto r = static_cast<double>(kClockSeedOffset);
    constexpr double kLongLimit = 9.2e18;  // keeps the cast defined where the clock has failed
    const double v = static_cast<double>(microseconds * seconds) + (ticks - r) * r;
    return static_cast<long>(std::clamp(v, -kLongLimit, kLongLimit)) % kClockSeedModulus;
}

long my_rand() {
    timeval now{};
    gettimeofday(&now, nullptr);
    const auto ticks = static_cast<double>(static_cast<unsigned long>(std::clock()));
    return clock_seed(ticks, static_cast<long>(now.tv_usec), static_cast<long>(now.tv_sec % 1000));
}

void initialize_ran3(const long& seed) {
    if (seed < 0 && seed >= -MSEED) {
        long given = seed;
        ran3(&given);
        std::cout << "Random generator initialized with seed=" << seed << '\n';
        return;
    }
    const bool too_large = seed < 0;
    if (too_large) report(Warning, "initialize_ran3(const int seed) ", kSeedTooLarge);
    long lidum = -my_rand();
    if (!too_large) {
        constexpr const char* kSeedText = "Random number generator initialized with lidum=";
        std::cout << kSeedText << lidum << '\n';
        std::ofstream("randseed.txt") << kSeedText << lidum << '\n';
    }
    ran3(&lidum);
}

long rand_long(long* n) {
    const long range = *n;
    const auto v = static_cast<long>(static_cast<double>(range) * ran3(n));
    return v == range ? range - 1 : v;
}

void bootstrap_index(int* index, const int& n) {
    const int size = n;
    for (int i = 0; i < size; ++i) {
        index[i] = static_cast<int>(size * ran3());
    }
}

void permute(int* a, int n) {
    for (int m = n; m >= 1; --m) {
        const int j = static_cast<int>(m * ran3());
        std::swap(a[j], a[m - 1]);
    }
}

int expdev(const double& p) {
    const double log_survival = std::log(1.0 - p);
    const double u = ran3();
    if (log_survival == 0.0) return INT_MAX;
    return truncate_to_int(std::log(1.0 - u) / log_survival);
}

int geometric(const double& p) {
    if (p < 1e-10 || p == 1.0) return 0;
    return truncate_to_int(std::floor(std::log(ran3()) / std::log(p)));
}

namespace {

// Waiting time for the ia-th event: minus the logarithm of a product of uniforms.
double gamma_by_product(int ia) {
    double product = 1.0;
    for (int i = 0; i < ia; ++i) {
        product *= ran3();
    }
    return -std::log(product);
}

// Tangent of a random direction, from a point in the unit disc. A point on the axis has no
// tangent and is drawn anew.
double random_tangent() {
    double w = 0.0;
    double z = 0.0;
    do {
        w = 2.0 * ran3() - 1.0;
        z = 2.0 * ran3() - 1.0;
    } while (w * w + z * z > 1.0 || w == 0.0);
    return z / w;
}

double gamma_by_rejection(int ia) {
    const double am = ia - 1.0;
    const double s = std::sqrt(2.0 * am + 1.0);
    while (true) {
        const double y = random_tangent();
        const double x = s * y + am;
        if (x <= 0.0) continue;
        const double u = ran3();
        const double e = (1.0 + y * y) * std::exp(am * std::log(x / am) - s * y);
        if (u <= e) return x;
    }
}

// Gamma deviate of an order f between 0 and 1.
double gamma_of_fraction(double f) {
    constexpr double e = 2.718281828459;
    const double b = (f + e) / e;
    while (true) {
        const double p = ran3() * b;
        const double v = ran3();
        const double x = p <= 1.0 ? std::pow(p, 1.0 / f) : -std::log((b - p) / f);
        const double q = p <= 1.0 ? std::exp(-x) : std::pow(x, f - 1.0);
        if (!(q < v)) return x;
    }
}

}  // namespace

double igamma_dev(int ia) {
    if (ia < 1) return 0.0;
    return ia < 6 ? gamma_by_product(ia) : gamma_by_rejection(ia);
}

double gamma_dev(double a) {
    if (!(a > 0.0)) return 0.0;
    const double whole = std::floor(a);
    const double f = a - whole;
    const double g = whole >= 1.0 ? igamma_dev(truncate_to_int(whole)) : 0.0;
    if (!(f > 0.0)) return g;
    return gamma_of_fraction(f) + g;
}

namespace {

// Constants of poidev for the mean used last; one oldm for both branches.
struct PoissonConstants {
    float oldm = -1.0F;
    float sq = 0.0F;
    float alxm = 0.0F;
    float g = 0.0F;
};

float poisson_by_product(float g, long* idum) {
    float em = -1.0F;
    float t = 1.0F;
    do {
        em += 1.0F;
        t = static_cast<float>(t * ran3(idum));
    } while (t > g);
    return em;
}

// A mean near 1e9 leaves single precision no digit for the exponent, and every try could
// fail: the mean itself is returned when a million have.
float poisson_by_rejection(float xm, const PoissonConstants& c, long* idum) {
    for (int tries = 0; tries < kMaxPoissonTries; ++tries) {
        float y = 0.0F;
        float em = -1.0F;
        do {
            y = static_cast<float>(std::tan(3.141592654 * ran3(idum)));
            em = c.sq * y + xm;
        } while (em < 0.0F);
        em = std::floor(em);
        const double log_ratio = em * c.alxm - gammln(em + 1.0) - c.g;
        const auto t = static_cast<float>(0.9 * (1.0 + y * y) * std::exp(log_ratio));
        if (ran3(idum) <= t) return em;
    }
    return std::floor(xm);
}

}  // namespace

float poidev(float xm, long* idum) {
    static PoissonConstants c;
    if (!std::isfinite(xm)) return 0.0F;
    const bool new_mean = xm != c.oldm;
    c.oldm = xm;
    if (xm < 12.0F) {
        if (new_mean) c.g = static_cast<float>(std::exp(-static_cast<double>(xm)));
        return poisson_by_product(c.g, idum);
    }
    if (new_mean) {
        c.sq = static_cast<float>(std::sqrt(2.0 * xm));
        c.alxm = static_cast<float>(std::log(static_cast<double>(xm)));
        c.g = static_cast<float>(xm * c.alxm - gammln(xm + 1.0));
    }
    return poisson_by_rejection(xm, c, idum);
}

}  // namespace mnd
