// The uniform stream of the program, and the deviates drawn from it.
//
// There is one stream for the whole process. The order of draws is part of every
// result: the same seed and project give the same numbers, to the last digit. Each
// function therefore says how many numbers it takes ("Draws").
//
// The generator is the subtractive one of Knuth 1981, The Art of Computer Programming 2,
// 2nd ed., 3.2-3.3: x[n] = x[n-55] - x[n-24] modulo 1e9. It is held as whole rounds of 55
// numbers, so that a draw is a load and a product, and a round is made by two plain loops.
#pragma once

#include <cstdint>

namespace mnd {

// Modulus of the stream; its numbers are the multiples of 1e-9 below 1.
constexpr std::int64_t MBIG = 1000000000;
// A seed -MSEED gives the start value 0; seeds below -MSEED are not in range.
constexpr std::int64_t MSEED = 161803398;
constexpr std::int64_t MZ = 0;
constexpr double FAC = 1e-9;

// Numbers in one round of the stream.
constexpr int kStreamLag = 55;

// State of the stream, one for the process.
struct UniformStream {
    std::int64_t ma[kStreamLag + 1] = {};  // slots 1 to 55: the numbers of this round; slot 0 unused
    std::int32_t inext = kStreamLag;       // slot last handed out; the lagged slot is inext + 31, wrapped
    bool iff = false;                      // true once the table has been filled
};
inline UniformStream uniform_stream;

#ifdef MENDCORE_COUNT_DRAWS
inline std::uint64_t uniform_draw_count = 0;
#endif

// Numbers taken from the stream since the start or the last reset. Counted only in builds
// with MENDCORE_COUNT_DRAWS; without it always 0.
std::uint64_t draws_taken();
// Sets the count of draws back to 0.
void reset_draws_taken();

// Fills the table of the stream from a seed: the start value is (MSEED - |seed|) modulo
// MBIG, truncated towards zero. No absolute value is taken of that difference, on purpose:
// |seed| above MSEED gives a negative start, which initialize_ran3 rules out.
// Draws:    none; the next number is the first of the new stream
void seed_stream(long seed);

// Makes the next 55 numbers of the stream; seeds it as from the value 1 when nothing has
// seeded it yet. For ran3 and ran3_block only.
void advance_round();

// Writes " ** strange ran3:" and the number to standard output (a number of 1.0 or more,
// possible only after a seed out of range). For ran3 and ran3_block only.
void report_strange_ran3(double u);

// Next number of the stream, in [0, 1).
// Draws:    1
inline double ran3() {
    UniformStream& s = uniform_stream;
    if (s.inext == kStreamLag) advance_round();
    const double u = static_cast<double>(s.ma[++s.inext]) * FAC;
#ifdef MENDCORE_COUNT_DRAWS
    ++uniform_draw_count;
#endif
    if (u >= 1.0) [[unlikely]]
        report_strange_ran3(u);
    return u;
}

// Next number of the stream, in [0, 1).
//   idum    negative: the stream is seeded anew from it, and it becomes 1; so does a value
//           of any sign as long as nothing has seeded the stream;
//           otherwise a dummy (pass a local set to 1)
// Draws:    1, the first of the new stream when it seeds
inline double ran3(long* idum) {
    if (*idum < 0 || !uniform_stream.iff) {
        seed_stream(*idum);
        *idum = 1;
    }
    return ran3();
}

// The next n numbers of the stream, in the order in which n calls of ran3 would give them,
// into u[0..n-1].
// Draws:    n; n below 1 draws none
void ran3_block(double* u, int n);

// Seeds the stream; called by the driver once per project, before any analysis.
//   seed >= 0             seeds from the clocks (my_rand); the seed used, a number with its minus
//                         sign, goes to standard output and to "randseed.txt" in the current directory
//   -MSEED <= seed < 0    seeds from it and says so on standard output; no file
//   seed < -MSEED         warning 181, then as the first case, but nothing on standard output, no file
// Should the clocks give a value of 0 or less, the stream runs on as it was: a number that
// is not negative seeds nothing.
// Draws:    1 (the seeding call)
void initialize_ran3(const long& seed);

// A seed made of the clocks: the processor time used and the time of day.
// Draws:    none
long my_rand();

// The value that my_rand makes of its clocks:
//   v mod (2000000 - r),  v = (long)(microseconds seconds + (ticks - r) r)
// with r a fixed number below 1000.
//   ticks         processor time in clock ticks
//   microseconds  of the time of day, 0 to 999999
//   seconds       of the time of day, modulo 1000
long clock_seed(double ticks, long microseconds, long seconds);

// Whole number, uniform in 0 to n - 1; n must be at least 1. Truncates, without correction.
//   n       handed on to ran3: a negative value seeds the stream anew
// Draws:    1
long rand_long(long* n);

// n draws with replacement from 0 to n - 1, into index[0..n-1].
// Draws:    n
void bootstrap_index(int* index, const int& n);

// Shuffles a[0..n-1] in place, from the last element down.
// Draws:    n, of which the last decides nothing; n = 0 draws none
void permute(int* a, int n);

// Number of failures before the first success when each trial succeeds with probability p:
// log(1 - u) / log(1 - p), truncated. Geometric, whatever its name suggests.
//   p       in (0, 1]; 0 has no finite answer and gives INT_MAX
// Draws:    1
int expdev(const double& p);

// Number of trials that succeed before the first failure when each succeeds with
// probability p: floor(log(u) / log(p)); 0 when p is below 1e-10 or exactly 1.
// Draws:    1, or none in those two cases
int geometric(const double& p);

// Gamma deviate of whole order ia and unit scale; 0 when ia is below 1.
// Draws:    ia below 6: ia; otherwise 3 or more for each try (rejection)
// Source:   waiting time for the ia-th event; Ahrens and Dieter 1974, Computing 12:223-246, as
//           given by Knuth 1981, 3.4.1 (tangent method, polar form)
double igamma_dev(int ia);

// Gamma deviate of order a and unit scale; 0 when a is not above 0, drawing nothing.
// Draws:    those of igamma_dev(floor(a)), then 2 for each try for the fraction of a
// Source:   Ahrens and Dieter 1974, Computing 12:223-246 (algorithm GS)
double gamma_dev(double a);

// Poisson deviate of mean xm, a whole number held as float; single precision where told.
//   xm      not finite: 0, drawing nothing
//   idum    handed on to ran3; not negative
// Draws:    xm below 12: the result + 1; otherwise 2 or more for each try (rejection)
// Source:   product of uniforms; Ahrens and Dieter 1974 for the Lorentzian comparison function
float poidev(float xm, long* idum);

}  // namespace mnd
