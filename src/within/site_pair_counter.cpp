#include "within/site_pair_counter.h"

#include <algorithm>
#include <bit>
#include <cassert>
#include <cstddef>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace mnd {
namespace {

constexpr int kWordBits = 64;

std::size_t index_of(char c) {
    return static_cast<unsigned char>(c);
}

int words_for(std::size_t sites) {
    return (static_cast<int>(sites) + kWordBits - 1) / kWordBits;
}

bool is_base(char c) {
    return c == 'A' || c == 'C' || c == 'G' || c == 'T';
}

char character_at(std::string_view sequence, int site, char missing) {
    const auto position = static_cast<std::size_t>(site);
    return position < sequence.size() ? sequence[position] : missing;
}

// A rectangle of ordered character pairs: every row with every column.
template <class Set>
struct Rectangle {
    Set rows, columns;
};

// Covers the marked pairs by rectangles that do not overlap, one for each distinct non-empty
// column of `marked` (marked[column] is the set of its rows).
template <class Set>
std::vector<Rectangle<Set>> cover_by_columns(const std::array<Set, 256>& marked) {
    std::vector<Rectangle<Set>> cover;
    for (std::size_t column = 0; column < marked.size(); ++column) {
        if (marked[column].none()) continue;
        const auto same = [&](const Rectangle<Set>& r) { return r.rows == marked[column]; };
        auto found = std::find_if(cover.begin(), cover.end(), same);
        if (found == cover.end()) found = cover.insert(cover.end(), Rectangle<Set>{marked[column], Set{}});
        found->columns.set(column);
    }
    return cover;
}

template <class Set>
std::array<Set, 256> transposed(const std::array<Set, 256>& marked) {
    std::array<Set, 256> result{};
    for (std::size_t column = 0; column < 256; ++column) {
        if (marked[column].none()) continue;
        for (std::size_t row = 0; row < 256; ++row) {
            if (marked[column].test(row)) result[row].set(column);
        }
    }
    return result;
}

// The smaller of the covers by columns and by rows.
template <class Set>
std::vector<Rectangle<Set>> smallest_cover(const std::array<Set, 256>& marked) {
    auto by_columns = cover_by_columns(marked);
    auto by_rows = cover_by_columns(transposed(marked));
    if (by_rows.size() >= by_columns.size()) return by_columns;
    for (Rectangle<Set>& r : by_rows)
        std::swap(r.rows, r.columns);
    return by_rows;
}

// Planes are padded to whole blocks of this many words.
constexpr int kBlockWords = 4;

// Bits in the union of N products, or of n if N is 0.
template <int N, class Term>
int bits_of_terms(const std::uint64_t* first, const std::uint64_t* second, const Term* terms, int n,
                  int words) {
    const int num_terms = N > 0 ? N : n;
    int total = 0;
    for (int w = 0; w < words; ++w) {
        std::uint64_t any = 0;
        for (int t = 0; t < num_terms; ++t)
            any |= first[terms[t].row + w] & second[terms[t].column + w];
        total += std::popcount(any);
    }
    return total;
}

#if defined(__x86_64__)

// Number of bits set in each byte, by a table of the sixteen half bytes.
[[gnu::target("avx2"), gnu::always_inline]] inline __m256i bits_of_bytes(__m256i x) {
    const __m256i table = _mm256_setr_epi8(0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4,  //
                                           0, 1, 1, 2, 1, 2, 2, 3, 1, 2, 2, 3, 2, 3, 3, 4);
    const __m256i half = _mm256_set1_epi8(15);
    const __m256i low = _mm256_shuffle_epi8(table, _mm256_and_si256(x, half));
    const __m256i high = _mm256_shuffle_epi8(table, _mm256_and_si256(_mm256_srli_epi16(x, 4), half));
    return _mm256_add_epi8(low, high);
}

[[gnu::target("avx2"), gnu::always_inline]] inline __m256i load_block(const std::uint64_t* words) {
    return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(words));
}

[[gnu::target("avx2"), gnu::always_inline]] inline int sum_of_words(__m256i x) {
    const __m128i halves = _mm_add_epi64(_mm256_castsi256_si128(x), _mm256_extracti128_si256(x, 1));
    return static_cast<int>(_mm_cvtsi128_si64(halves) + _mm_extract_epi64(halves, 1));
}

// The same as bits_of_terms, a block at a time; words is a multiple of kBlockWords.
template <int N, class Term>
[[gnu::target("avx2"), gnu::always_inline]] inline int bits_of_blocks(const std::uint64_t* first,
                                                                      const std::uint64_t* second,
                                                                      const Term* terms, int n, int words) {
    constexpr int kMostBlocks = 31;  // whose bits a byte can count
    const int num_terms = N > 0 ? N : n;
    __m256i total = _mm256_setzero_si256();
    for (int w = 0; w < words;) {
        const int end = std::min(words, w + kMostBlocks * kBlockWords);
        __m256i bytes = _mm256_setzero_si256();
        for (; w < end; w += kBlockWords) {
            __m256i any = _mm256_setzero_si256();
            for (int t = 0; t < num_terms; ++t) {
                any = _mm256_or_si256(any, _mm256_and_si256(load_block(first + terms[t].row + w),
                                                            load_block(second + terms[t].column + w)));
            }
            bytes = _mm256_add_epi8(bytes, bits_of_bytes(any));
        }
        total = _mm256_add_epi64(total, _mm256_sad_epu8(bytes, _mm256_setzero_si256()));
    }
    return sum_of_words(total);
}

// The same where the processor counts the bits of words itself.
template <int N, class Term>
[[gnu::target("avx512vl,avx512vpopcntdq"), gnu::always_inline]] inline int bits_of_counted_blocks(
    const std::uint64_t* first, const std::uint64_t* second, const Term* terms, int n, int words) {
    const int num_terms = N > 0 ? N : n;
    __m256i total = _mm256_setzero_si256();
    for (int w = 0; w < words; w += kBlockWords) {
        __m256i any = _mm256_setzero_si256();
        for (int t = 0; t < num_terms; ++t) {
            any = _mm256_or_si256(any, _mm256_and_si256(load_block(first + terms[t].row + w),
                                                        load_block(second + terms[t].column + w)));
        }
        total = _mm256_add_epi64(total, _mm256_popcnt_epi64(any));
    }
    return sum_of_words(total);
}

#endif

}  // namespace

// The count of a pair in one group of sites, for any processor, for those with AVX2 and for those that
// also count the bits of four words at once.
struct SitePairCounter::Kernels {
    struct Pair {
        const std::uint64_t* first;
        const std::uint64_t* second;
        Pair(const Group& group, int i, int j)
            : first(group.bits.data() + static_cast<std::size_t>(group.stride) * static_cast<std::size_t>(i)),
              second(group.bits.data() +
                     static_cast<std::size_t>(group.stride) * static_cast<std::size_t>(j)) {}
    };

    static int added(const Group& group, const CounterTerms& counter, int inside) {
        return counter.complement ? static_cast<int>(group.sites.size()) - inside : inside;
    }

    static void portable(const Group& group, int i, int j, Counts& counts) {
        const Pair pair(group, i, j);
        for (std::size_t c = 0; c < group.counters.size(); ++c) {
            const CounterTerms& counter = group.counters[c];
            const Term* terms = counter.terms.data();
            const int n = static_cast<int>(counter.terms.size());
            const int inside = n == 1   ? bits_of_terms<1>(pair.first, pair.second, terms, n, group.words)
                               : n == 2 ? bits_of_terms<2>(pair.first, pair.second, terms, n, group.words)
                               : n == 4 ? bits_of_terms<4>(pair.first, pair.second, terms, n, group.words)
                               : n > 0  ? bits_of_terms<0>(pair.first, pair.second, terms, n, group.words)
                                        : 0;
            counts[c] += added(group, counter, inside);
        }
    }

#if defined(__x86_64__)
    [[gnu::target("avx2")]] static void with_avx2(const Group& group, int i, int j, Counts& counts) {
        const Pair pair(group, i, j);
        for (std::size_t c = 0; c < group.counters.size(); ++c) {
            const CounterTerms& counter = group.counters[c];
            const Term* terms = counter.terms.data();
            const int n = static_cast<int>(counter.terms.size());
            const int inside = n == 1   ? bits_of_blocks<1>(pair.first, pair.second, terms, n, group.words)
                               : n == 2 ? bits_of_blocks<2>(pair.first, pair.second, terms, n, group.words)
                               : n == 4 ? bits_of_blocks<4>(pair.first, pair.second, terms, n, group.words)
                               : n > 0  ? bits_of_blocks<0>(pair.first, pair.second, terms, n, group.words)
                                        : 0;
            counts[c] += added(group, counter, inside);
        }
    }
    [[gnu::target("avx512vl,avx512vpopcntdq")]] static void with_avx512(const Group& group, int i, int j,
                                                                        Counts& counts) {
        const Pair pair(group, i, j);
        for (std::size_t c = 0; c < group.counters.size(); ++c) {
            const CounterTerms& counter = group.counters[c];
            const Term* terms = counter.terms.data();
            const int n = static_cast<int>(counter.terms.size());
            const int inside =
                n == 1   ? bits_of_counted_blocks<1>(pair.first, pair.second, terms, n, group.words)
                : n == 2 ? bits_of_counted_blocks<2>(pair.first, pair.second, terms, n, group.words)
                : n == 4 ? bits_of_counted_blocks<4>(pair.first, pair.second, terms, n, group.words)
                : n > 0  ? bits_of_counted_blocks<0>(pair.first, pair.second, terms, n, group.words)
                         : 0;
            counts[c] += added(group, counter, inside);
        }
    }
    static GroupCounter of(Code code) {
        const bool counts_words =
            __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512vpopcntdq");
        if (code == Code::kBest && counts_words) return with_avx512;
        return code != Code::kPortable && __builtin_cpu_supports("avx2") ? with_avx2 : portable;
    }
#else
    static GroupCounter of(Code) {
        return portable;
    }
#endif
};

SitePairCounter::SitePairCounter(const std::vector<std::string_view>& sequences,
                                 const std::vector<int>& sites, char missing, int num_counters,
                                 const Rule& rule, Order order, Code code)
    : missing_(missing),
      num_counters_(num_counters),
      num_sites_(static_cast<int>(sites.size())),
      kernel_(Kernels::of(code)) {
    assert(num_counters >= 0 && num_counters <= kMaxCounters);
    sort_sites(sequences, sites, rule, order);
    for (Group& group : groups_) {
        compile(group, rule);
        encode(group, sequences);
    }
}

// Splits the sites into those that do not vary, those with plain bases only, and the rest.
void SitePairCounter::sort_sites(const std::vector<std::string_view>& sequences,
                                 const std::vector<int>& sites, const Rule& rule, Order order) {
    std::vector<unsigned char> varies(sites.size(), 0);
    std::vector<unsigned char> beyond_bases(sites.size(), 0);
    std::vector<char> first(sites.size(), missing_);
    for (std::size_t s = 0; s < sites.size() && !sequences.empty(); ++s) {
        first[s] = character_at(sequences.front(), sites[s], missing_);
    }
    for (const std::string_view sequence : sequences) {
        for (std::size_t s = 0; s < sites.size(); ++s) {
            const char c = character_at(sequence, sites[s], missing_);
            varies[s] |= static_cast<unsigned char>(c != first[s]);
            beyond_bases[s] |= static_cast<unsigned char>(!is_base(c));
        }
    }
    groups_.assign(order == Order::kAny ? 2 : 1, Group{});
    for (std::size_t s = 0; s < sites.size(); ++s) {
        if (order == Order::kKept) {
            groups_[0].sites.push_back(sites[s]);
        } else if (varies[s] != 0) {
            groups_[beyond_bases[s]].sites.push_back(sites[s]);
        } else {
            const unsigned grown = rule(first[s], first[s]);
            for (int c = 0; c < num_counters_; ++c) {
                constant_[static_cast<std::size_t>(c)] += static_cast<int>((grown >> c) & 1U);
            }
        }
    }
    for (Group& group : groups_) {
        for (const std::string_view sequence : sequences) {
            for (const int site : group.sites) {
                group.symbols.set(index_of(character_at(sequence, site, missing_)));
            }
        }
    }
    std::erase_if(groups_, [](const Group& group) { return group.sites.empty(); });
}

void SitePairCounter::compile(Group& group, const Rule& rule) const {
    const int blocks = (words_for(group.sites.size()) + kBlockWords - 1) / kBlockWords;
    group.words = blocks * kBlockWords;
    for (int c = 0; c < num_counters_; ++c)
        group.counters.push_back(compile_counter(group, rule, c));
    group.stride = group.words * static_cast<int>(group.planes.size());
}

SitePairCounter::CounterTerms SitePairCounter::compile_counter(Group& group, const Rule& rule,
                                                               int counter) const {
    std::array<SymbolSet, 256> grows{};
    std::array<SymbolSet, 256> stays{};
    for (std::size_t column = 0; column < 256; ++column) {
        if (!group.symbols.test(column)) continue;
        for (std::size_t row = 0; row < 256; ++row) {
            if (!group.symbols.test(row)) continue;
            const unsigned grown = rule(static_cast<char>(row), static_cast<char>(column));
            (((grown >> counter) & 1U) != 0 ? grows : stays)[column].set(row);
        }
    }
    auto cover = smallest_cover(grows);
    auto cover_of_rest = smallest_cover(stays);
    CounterTerms result;
    result.complement = cover_of_rest.size() < cover.size();
    for (const auto& r : result.complement ? cover_of_rest : cover) {
        const int row = plane_of(group, r.rows);
        const int column = plane_of(group, r.columns);
        result.terms.push_back({row * group.words, column * group.words});
    }
    return result;
}

// Number of the plane of these characters, which is added when there is none.
int SitePairCounter::plane_of(Group& group, const SymbolSet& symbols) {
    const auto found = std::find(group.planes.begin(), group.planes.end(), symbols);
    const auto number = static_cast<int>(found - group.planes.begin());
    if (found == group.planes.end()) group.planes.push_back(symbols);
    return number;
}

void SitePairCounter::encode(Group& group, const std::vector<std::string_view>& sequences) const {
    const auto words = static_cast<std::size_t>(group.words);
    std::array<std::size_t, 256> offset{};  // place of each occurring character's own plane
    std::vector<std::size_t> occurring;
    for (std::size_t symbol = 0; symbol < 256; ++symbol) {
        if (!group.symbols.test(symbol)) continue;
        offset[symbol] = occurring.size() * words;
        occurring.push_back(symbol);
    }
    std::vector<std::uint64_t> single(occurring.size() * words);
    group.bits.assign(static_cast<std::size_t>(group.stride) * sequences.size(), 0);
    std::uint64_t* plane = group.bits.data();
    for (const std::string_view sequence : sequences) {
        std::fill(single.begin(), single.end(), 0);
        for (std::size_t s = 0; s < group.sites.size(); ++s) {
            const std::size_t symbol = index_of(character_at(sequence, group.sites[s], missing_));
            single[offset[symbol] + s / kWordBits] |= std::uint64_t{1} << (s % kWordBits);
        }
        for (const SymbolSet& members : group.planes) {
            for (const std::size_t symbol : occurring) {
                if (!members.test(symbol)) continue;
                for (std::size_t w = 0; w < words; ++w)
                    plane[w] |= single[offset[symbol] + w];
            }
            plane += words;
        }
    }
}

SitePairCounter::Counts SitePairCounter::count(int i, int j) const {
    Counts counts = constant_;
    for (const Group& group : groups_)
        kernel_(group, i, j, counts);
    return counts;
}

int SitePairCounter::num_words() const {
    return words_for(static_cast<std::size_t>(num_sites_));
}

std::uint64_t SitePairCounter::site_mask(int i, int j, int counter, int w) const {
    const Group& group = groups_.front();
    const auto stride = static_cast<std::size_t>(group.stride);
    const std::uint64_t* first = group.bits.data() + stride * static_cast<std::size_t>(i) + w;
    const std::uint64_t* second = group.bits.data() + stride * static_cast<std::size_t>(j) + w;
    const CounterTerms& terms = group.counters[static_cast<std::size_t>(counter)];
    std::uint64_t inside = 0;
    for (const Term& t : terms.terms)
        inside |= first[t.row] & second[t.column];
    if (!terms.complement) return inside;
    const int last = static_cast<int>(group.sites.size()) - w * kWordBits;
    return ~inside & (last >= kWordBits ? ~std::uint64_t{0} : (std::uint64_t{1} << last) - 1);
}

}  // namespace mnd
