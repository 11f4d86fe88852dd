// x86 primitives: Vec<16> on SSE2 registers and, in units built for AVX2, Vec<32>. Each is the
// same thin set of operations (one macro body serves every width), with the semantics of the
// x86 instructions: unpacks, packs, byte shifts and byte shuffles work within each 128-bit
// lane. Composites written on these run unchanged at every width, each lane doing what one
// 128-bit step does; the few operations that cross lanes are at the end, per width.
#pragma once
// Included through simd/vec.hpp, which declares Vec and the lane tables.

#include <emmintrin.h>
#if defined(__SSSE3__)
#include <tmmintrin.h>
#endif
#if defined(__AVX2__)
#include <immintrin.h>
#endif

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace dispconv::simd { namespace {

// Whether this unit has in-lane byte shuffles (SSSE3 and later; not plain SSE2).
#if defined(__SSSE3__)
inline constexpr bool has_byte_shuffle = true;
#else
inline constexpr bool has_byte_shuffle = false;
#endif

// No stores that interleave several registers byte by byte (NEON has them).
inline constexpr bool has_structure_stores = false;
// The high half of an unsigned 16-bit product in one instruction (NEON takes three).
inline constexpr bool has_mulhi_u16 = true;
// A row pair that only interleaves and stores (YV12 to YUY2) measured 3-9% faster as a pass per
// row than as one loop at 128 and 256 bits; 512-bit vectors keep the one loop.
inline constexpr bool pairs_in_row_passes = true;

// Which of the W / 2 chroma bytes pixel word w (0..7) of half `half` of lane `lane` takes when
// W lumas are placed as deal<G> places them (lanes: W / 16).
constexpr int pixel_chroma_index(int G, int lanes, int lane, int half, int w) {
    const int q = 8 * half + w;
    return ((q / G * lanes + lane) * G + q % G) / 2;
}

#define DISPCONV_X86_VEC(W, T, P, SI)                                                                   \
    template <>                                                                                         \
    struct Vec<W> {                                                                                     \
        static constexpr int bytes = W;                                                                 \
        static constexpr int lanes = W / 16;                                                            \
        T r;                                                                                            \
        static Vec load(const void* p) { return {P##loadu_##SI(static_cast<const T*>(p))}; }           \
        static void store(void* p, Vec v) { P##storeu_##SI(static_cast<T*>(p), v.r); }                 \
        static Vec zero() { return {P##setzero_##SI()}; }                                               \
        /* Narrow values broadcast as 32-bit ones: where GCC moves them through memory, a narrow */    \
        /* store read back 32 bits wide cannot be forwarded and stalls. */                              \
        static Vec set1_u8(uint8_t x) { return {P##set1_epi32(int32_t(x * 0x01010101u))}; }            \
        static Vec set1_i16(int16_t x) { return {P##set1_epi32(int32_t(uint16_t(x) * 0x10001u))}; }    \
        static Vec set1_i32(int32_t x) { return {P##set1_epi32(x)}; }                                   \
        static Vec set1_i64(int64_t x);                                                                 \
        /* The 16 bytes of a lane table in every lane, as one constant of the full width: a load */     \
        /* the shuffles and masks take as their memory operand rather than a register each. */          \
        template <const LaneTable& t>                                                                   \
        static Vec table() {                                                                            \
            static constexpr WideTable<W> wide = widen<W>(t);                                           \
            return load(wide.bytes);                                                                    \
        }                                                                                               \
        /* The half-width run that goes with a full vector (chroma beside luma): lane k takes bytes  */ \
        /* 8k .. 8k + 7 in its low half; the high half is unspecified. */                               \
        static Vec load_half(const void* p);                                                            \
        /* The same run widened to words: lane k's 8 words are bytes 8k .. 8k + 7. */                  \
        static Vec load_half_words(const void* p);                                                      \
        /* The half-width run dealt as the full vector it goes with would be by deal<G>. */            \
        template <int G>                                                                                \
        static Vec load_half_dealt(const void* p);                                                      \
        /* The W / 2 bytes at p (chroma beside W lumas) as words, each repeated for both pixels of */   \
        /* its pair, the pixels placed as deal<G> places lumas: lo each lane's first 8, hi the rest. */ \
        template <int G>                                                                                \
        static void load_pixel_chroma(const void* p, Vec& lo, Vec& hi);                                 \
    };                                                                                                  \
    inline Vec<W> operator&(Vec<W> a, Vec<W> b) { return {P##and_##SI(a.r, b.r)}; }                    \
    inline Vec<W> operator|(Vec<W> a, Vec<W> b) { return {P##or_##SI(a.r, b.r)}; }                     \
    inline Vec<W> operator^(Vec<W> a, Vec<W> b) { return {P##xor_##SI(a.r, b.r)}; }                    \
    /* ~a & b */                                                                                        \
    inline Vec<W> andnot(Vec<W> a, Vec<W> b) { return {P##andnot_##SI(a.r, b.r)}; }                    \
    inline Vec<W> average_u8(Vec<W> a, Vec<W> b) { return {P##avg_epu8(a.r, b.r)}; }                       \
    inline Vec<W> adds_u8(Vec<W> a, Vec<W> b) { return {P##adds_epu8(a.r, b.r)}; }                     \
    inline Vec<W> subs_u8(Vec<W> a, Vec<W> b) { return {P##subs_epu8(a.r, b.r)}; }                     \
    inline Vec<W> min_u8(Vec<W> a, Vec<W> b) { return {P##min_epu8(a.r, b.r)}; }                       \
    inline Vec<W> max_u8(Vec<W> a, Vec<W> b) { return {P##max_epu8(a.r, b.r)}; }                       \
    inline Vec<W> add_i16(Vec<W> a, Vec<W> b) { return {P##add_epi16(a.r, b.r)}; }                     \
    inline Vec<W> sub_i16(Vec<W> a, Vec<W> b) { return {P##sub_epi16(a.r, b.r)}; }                     \
    inline Vec<W> adds_i16(Vec<W> a, Vec<W> b) { return {P##adds_epi16(a.r, b.r)}; }                   \
    inline Vec<W> subs_i16(Vec<W> a, Vec<W> b) { return {P##subs_epi16(a.r, b.r)}; }                   \
    inline Vec<W> subs_u16(Vec<W> a, Vec<W> b) { return {P##subs_epu16(a.r, b.r)}; }                   \
    inline Vec<W> mullo_i16(Vec<W> a, Vec<W> b) { return {P##mullo_epi16(a.r, b.r)}; }                 \
    inline Vec<W> mulhi_i16(Vec<W> a, Vec<W> b) { return {P##mulhi_epi16(a.r, b.r)}; }                 \
    inline Vec<W> mulhi_u16(Vec<W> a, Vec<W> b) { return {P##mulhi_epu16(a.r, b.r)}; }                 \
    inline Vec<W> average_u16(Vec<W> a, Vec<W> b) { return {P##avg_epu16(a.r, b.r)}; }                     \
    inline Vec<W> min_i16(Vec<W> a, Vec<W> b) { return {P##min_epi16(a.r, b.r)}; }                     \
    inline Vec<W> max_i16(Vec<W> a, Vec<W> b) { return {P##max_epi16(a.r, b.r)}; }                     \
    /* Pairs of 16-bit products summed into 32 bits. */                                                \
    inline Vec<W> madd_i16(Vec<W> a, Vec<W> b) { return {P##madd_epi16(a.r, b.r)}; }                   \
    inline Vec<W> add_i32(Vec<W> a, Vec<W> b) { return {P##add_epi32(a.r, b.r)}; }                     \
    template <int n>                                                                                    \
    inline Vec<W> slli_i16(Vec<W> a) { return {P##slli_epi16(a.r, n)}; }                               \
    template <int n>                                                                                    \
    inline Vec<W> srli_i16(Vec<W> a) { return {P##srli_epi16(a.r, n)}; }                               \
    template <int n>                                                                                    \
    inline Vec<W> srai_i16(Vec<W> a) { return {P##srai_epi16(a.r, n)}; }                               \
    template <int n>                                                                                    \
    inline Vec<W> slli_i32(Vec<W> a) { return {P##slli_epi32(a.r, n)}; }                               \
    template <int n>                                                                                    \
    inline Vec<W> srli_i32(Vec<W> a) { return {P##srli_epi32(a.r, n)}; }                               \
    template <int n>                                                                                    \
    inline Vec<W> srai_i32(Vec<W> a) { return {P##srai_epi32(a.r, n)}; }                               \
    template <int n>                                                                                    \
    inline Vec<W> slli_i64(Vec<W> a) { return {P##slli_epi64(a.r, n)}; }                               \
    template <int n>                                                                                    \
    inline Vec<W> srli_i64(Vec<W> a) { return {P##srli_epi64(a.r, n)}; }                               \
    /* Shifts by a count known only at run time. */                                                    \
    inline Vec<W> sll_i16(Vec<W> a, int n) { return {P##sll_epi16(a.r, _mm_cvtsi32_si128(n))}; }      \
    inline Vec<W> srl_i16(Vec<W> a, int n) { return {P##srl_epi16(a.r, _mm_cvtsi32_si128(n))}; }      \
    inline Vec<W> packus_i16(Vec<W> a, Vec<W> b) { return {P##packus_epi16(a.r, b.r)}; }               \
    inline Vec<W> packs_i32(Vec<W> a, Vec<W> b) { return {P##packs_epi32(a.r, b.r)}; }                 \
    inline Vec<W> unpacklo_u8(Vec<W> a, Vec<W> b) { return {P##unpacklo_epi8(a.r, b.r)}; }             \
    inline Vec<W> unpackhi_u8(Vec<W> a, Vec<W> b) { return {P##unpackhi_epi8(a.r, b.r)}; }             \
    inline Vec<W> unpacklo_u16(Vec<W> a, Vec<W> b) { return {P##unpacklo_epi16(a.r, b.r)}; }           \
    inline Vec<W> unpackhi_u16(Vec<W> a, Vec<W> b) { return {P##unpackhi_epi16(a.r, b.r)}; }           \
    inline Vec<W> unpacklo_u32(Vec<W> a, Vec<W> b) { return {P##unpacklo_epi32(a.r, b.r)}; }           \
    inline Vec<W> unpackhi_u32(Vec<W> a, Vec<W> b) { return {P##unpackhi_epi32(a.r, b.r)}; }           \
    inline Vec<W> unpacklo_u64(Vec<W> a, Vec<W> b) { return {P##unpacklo_epi64(a.r, b.r)}; }           \
    inline Vec<W> unpackhi_u64(Vec<W> a, Vec<W> b) { return {P##unpackhi_epi64(a.r, b.r)}; }           \
    template <int imm>                                                                                  \
    inline Vec<W> shufflelo_u16(Vec<W> a) { return {P##shufflelo_epi16(a.r, imm)}; }                   \
    template <int imm>                                                                                  \
    inline Vec<W> shufflehi_u16(Vec<W> a) { return {P##shufflehi_epi16(a.r, imm)}; }                   \


// Compares give all-ones lanes; AVX-512 spells these with masks (below).
#define DISPCONV_X86_VEC_COMPARES(W, P, SI)                                                             \
    inline Vec<W> cmpeq_u8(Vec<W> a, Vec<W> b) { return {P##cmpeq_epi8(a.r, b.r)}; }                   \
    inline Vec<W> cmpgt_i8(Vec<W> a, Vec<W> b) { return {P##cmpgt_epi8(a.r, b.r)}; }                   \
    inline Vec<W> cmpeq_i16(Vec<W> a, Vec<W> b) { return {P##cmpeq_epi16(a.r, b.r)}; }                 \
    inline Vec<W> cmpgt_i16(Vec<W> a, Vec<W> b) { return {P##cmpgt_epi16(a.r, b.r)}; }                 \
    inline Vec<W> cmpeq_i32(Vec<W> a, Vec<W> b) { return {P##cmpeq_epi32(a.r, b.r)}; }                 \
    /* Bytes of each lane moved down (srli) or up (slli), zeros shifted in. */                          \
    template <int n>                                                                                    \
    inline Vec<W> bsrli(Vec<W> a) { return {P##srli_##SI(a.r, n)}; }                                  \
    template <int n>                                                                                    \
    inline Vec<W> bslli(Vec<W> a) { return {P##slli_##SI(a.r, n)}; }                                  \
    template <int imm>                                                                                  \
    inline Vec<W> shuffle_u32(Vec<W> a) { return {P##shuffle_epi32(a.r, imm)}; }                       \
    inline Vec<W> Vec<W>::set1_i64(int64_t x) { return {P##set1_epi64x(x)}; }                           \
    /* One bit per byte: the top bit of each. */                                                        \
    inline uint64_t movemask_u8(Vec<W> a) { return static_cast<uint32_t>(P##movemask_epi8(a.r)); }

DISPCONV_X86_VEC(16, __m128i, _mm_, si128)
DISPCONV_X86_VEC_COMPARES(16, _mm_, si128)
#if defined(__AVX2__)
DISPCONV_X86_VEC(32, __m256i, _mm256_, si256)
DISPCONV_X86_VEC_COMPARES(32, _mm256_, si256)
#endif
#if defined(__AVX512BW__)
DISPCONV_X86_VEC(64, __m512i, _mm512_, si512)
inline Vec<64> cmpeq_u8(Vec<64> a, Vec<64> b) { return {_mm512_movm_epi8(_mm512_cmpeq_epi8_mask(a.r, b.r))}; }
inline Vec<64> cmpgt_i8(Vec<64> a, Vec<64> b) { return {_mm512_movm_epi8(_mm512_cmpgt_epi8_mask(a.r, b.r))}; }
inline Vec<64> cmpeq_i16(Vec<64> a, Vec<64> b) { return {_mm512_movm_epi16(_mm512_cmpeq_epi16_mask(a.r, b.r))}; }
inline Vec<64> cmpgt_i16(Vec<64> a, Vec<64> b) { return {_mm512_movm_epi16(_mm512_cmpgt_epi16_mask(a.r, b.r))}; }
// Without AVX512DQ (no movm for 32-bit lanes): all ones set under the mask.
inline Vec<64> cmpeq_i32(Vec<64> a, Vec<64> b) { return {_mm512_maskz_set1_epi32(_mm512_cmpeq_epi32_mask(a.r, b.r), -1)}; }
template <int n>
inline Vec<64> bsrli(Vec<64> a) { return {_mm512_bsrli_epi128(a.r, n)}; }
template <int n>
inline Vec<64> bslli(Vec<64> a) { return {_mm512_bslli_epi128(a.r, n)}; }
template <int imm>
inline Vec<64> shuffle_u32(Vec<64> a) { return {_mm512_shuffle_epi32(a.r, static_cast<_MM_PERM_ENUM>(imm))}; }
inline Vec<64> Vec<64>::set1_i64(int64_t x) { return {_mm512_set1_epi64(x)}; }
inline uint64_t movemask_u8(Vec<64> a) { return _mm512_movepi8_mask(a.r); }
#endif
#undef DISPCONV_X86_VEC
#undef DISPCONV_X86_VEC_COMPARES

inline Vec<16> Vec<16>::load_half(const void* p) { return {_mm_loadl_epi64(static_cast<const __m128i*>(p))}; }
inline Vec<16> Vec<16>::load_half_words(const void* p) {
#if defined(__SSE4_1__)
    return {_mm_cvtepu8_epi16(load_half(p).r)};
#else
    return {_mm_unpacklo_epi8(load_half(p).r, _mm_setzero_si128())};
#endif
}

// The high 16 bits of (a << n) * k, where a << n fits in 16 bits: the form of every fixed-point
// scale here (NEON does it in one doubling multiply).
template <int n, int W>
inline Vec<W> mulhi_scaled_i16(Vec<W> a, Vec<W> k) { return mulhi_i16(slli_i16<n>(a), k); }

// Bytes of b where the mask byte is set (all ones), else bytes of a.
inline Vec<16> blend_u8(Vec<16> a, Vec<16> b, Vec<16> mask) {
#if defined(__SSE4_1__)
    return {_mm_blendv_epi8(a.r, b.r, mask.r)};
#else
    return (mask & b) | andnot(mask, a);
#endif
}

// The low 64 bits of a under the high 64 bits of b, in one move (plain SSE2's RGB24 packing).
inline Vec<16> merge_u64(Vec<16> a, Vec<16> b) {
    return {_mm_castpd_si128(_mm_move_sd(_mm_castsi128_pd(b.r), _mm_castsi128_pd(a.r)))};
}

#if defined(__SSSE3__)
// Bytes of each lane picked by the control's bytes (a negative control byte gives zero).
inline Vec<16> shuffle_u8(Vec<16> a, Vec<16> control) { return {_mm_shuffle_epi8(a.r, control.r)}; }
// Lane by lane: the 16 bytes of hi and lo concatenated (hi above), moved down n bytes.
template <int n>
inline Vec<16> alignr(Vec<16> hi, Vec<16> lo) { return {_mm_alignr_epi8(hi.r, lo.r, n)}; }
#endif

// Crossing lanes. `deal<G>` reorders groups of G bytes so that lane k holds groups k, k + L,
// k + 2L ... (L lanes): after in-lane interleaves that widen each group by the same factor,
// every lane's output is a run of the row. One lane: nothing moves.
template <int G>
inline Vec<16> deal(Vec<16> v) { return v; }
template <int G>
inline Vec<16> Vec<16>::load_half_dealt(const void* p) { return load_half(p); }
template <int G>
inline void Vec<16>::load_pixel_chroma(const void* p, Vec<16>& lo, Vec<16>& hi) {
    const Vec<16> c = load_half(p);
#if defined(__SSSE3__)
    static constexpr LaneTable first = lane_table([](int i) { return i & 1 ? -1 : pixel_chroma_index(G, 1, 0, 0, i / 2); });
    static constexpr LaneTable second = lane_table([](int i) { return i & 1 ? -1 : pixel_chroma_index(G, 1, 0, 1, i / 2); });
    lo = {_mm_shuffle_epi8(c.r, table<first>().r)}, hi = {_mm_shuffle_epi8(c.r, table<second>().r)};
#else
    const __m128i pairs = _mm_unpacklo_epi8(c.r, c.r);
    lo = {_mm_unpacklo_epi8(pairs, _mm_setzero_si128())}, hi = {_mm_unpackhi_epi8(pairs, _mm_setzero_si128())};
#endif
}
// Two vectors whose lane k holds the two 16-byte halves of block k, stored as consecutive
// blocks of 32 bytes.
inline void store_block_pairs(uint8_t* d, Vec<16> first, Vec<16> second) {
    Vec<16>::store(d, first), Vec<16>::store(d + 16, second);
}
// Three vectors whose lane k holds the three 16-byte parts of block k, stored as consecutive
// blocks of 48 bytes.
inline void store_block_triples(uint8_t* d, Vec<16> a, Vec<16> b, Vec<16> c) {
    Vec<16>::store(d, a), Vec<16>::store(d + 16, b), Vec<16>::store(d + 32, c);
}
// Lane k's low 8 bytes stored at d + 8k.
inline void store_low_halves(uint8_t* d, Vec<16> v) { _mm_storel_epi64(reinterpret_cast<__m128i*>(d), v.r); }
// The inverse of deal<G>.
template <int G>
inline Vec<16> undeal(Vec<16> v) { return v; }
// The 128-bit lane k.
template <int k>
inline Vec<16> lane(Vec<16> v) { return v; }
// Two consecutive vectors of a row (a first) dealt as one vector of twice the width would be
// with deal<G>: lo takes each lane's first half of that, hi the second.
template <int G>
inline void deal_pair(Vec<16> a, Vec<16> b, Vec<16>& lo, Vec<16>& hi) { lo = a, hi = b; }
// Lanes of lo and hi taken in turn (lo's lane 0, hi's lane 0, lo's lane 1 ...) as two vectors
// of a row: what store_block_pairs stores, kept in registers.
inline void interleave_lanes(Vec<16> lo, Vec<16> hi, Vec<16>& first, Vec<16>& second) { first = lo, second = hi; }

#if defined(__AVX2__)
inline Vec<32> Vec<32>::load_half_words(const void* p) {
    return {_mm256_cvtepu8_epi16(_mm_loadu_si128(static_cast<const __m128i*>(p)))};
}
inline Vec<32> Vec<32>::load_half(const void* p) {
    return {_mm256_permute4x64_epi64(_mm256_castsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(p))), 0x50)};
}
template <int G>
inline void Vec<32>::load_pixel_chroma(const void* p, Vec<32>& lo, Vec<32>& hi) {
    // The 16 bytes in both lanes; each lane's table picks its pixels' bytes.
    struct Table {
        alignas(32) int8_t bytes[32];
    };
    auto make = [](int half) {
        Table t{};
        for (int i = 0; i < 32; ++i) t.bytes[i] = static_cast<int8_t>(i & 1 ? -1 : pixel_chroma_index(G, 2, i / 16, half, i % 16 / 2));
        return t;
    };
    static constexpr Table first = make(0), second = make(1);
    const __m256i c = _mm256_broadcastsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(p)));
    lo = {_mm256_shuffle_epi8(c, _mm256_load_si256(reinterpret_cast<const __m256i*>(first.bytes)))};
    hi = {_mm256_shuffle_epi8(c, _mm256_load_si256(reinterpret_cast<const __m256i*>(second.bytes)))};
}
inline Vec<32> blend_u8(Vec<32> a, Vec<32> b, Vec<32> mask) { return {_mm256_blendv_epi8(a.r, b.r, mask.r)}; }
inline Vec<32> shuffle_u8(Vec<32> a, Vec<32> control) { return {_mm256_shuffle_epi8(a.r, control.r)}; }
template <int n>
inline Vec<32> alignr(Vec<32> hi, Vec<32> lo) { return {_mm256_alignr_epi8(hi.r, lo.r, n)}; }
template <int G>
inline Vec<32> deal(Vec<32> v) {
    if constexpr (G == 4) return {_mm256_permutevar8x32_epi32(v.r, _mm256_setr_epi32(0, 2, 4, 6, 1, 3, 5, 7))};
    else if constexpr (G == 8) return {_mm256_permute4x64_epi64(v.r, 0xD8)};
    else return v;
}
template <int G>
inline Vec<32> Vec<32>::load_half_dealt(const void* p) {
    __m128i c = _mm_loadu_si128(static_cast<const __m128i*>(p));
    if constexpr (G == 4) c = _mm_shuffle_epi8(c, _mm_setr_epi8(0, 1, 4, 5, 8, 9, 12, 13, 2, 3, 6, 7, 10, 11, 14, 15));
    else if constexpr (G == 8) c = _mm_shuffle_epi32(c, 0xD8);
    return {_mm256_permute4x64_epi64(_mm256_castsi128_si256(c), 0x50)};
}
inline void store_block_pairs(uint8_t* d, Vec<32> first, Vec<32> second) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_permute2x128_si256(first.r, second.r, 0x20));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32), _mm256_permute2x128_si256(first.r, second.r, 0x31));
}
inline void store_block_triples(uint8_t* d, Vec<32> a, Vec<32> b, Vec<32> c) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_permute2x128_si256(a.r, b.r, 0x20));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32), _mm256_permute2x128_si256(c.r, a.r, 0x30));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 64), _mm256_permute2x128_si256(b.r, c.r, 0x31));
}
template <int G>
inline void deal_pair(Vec<32> a, Vec<32> b, Vec<32>& lo, Vec<32>& hi) {
    if constexpr (G == 32) {
        lo = {_mm256_permute2x128_si256(a.r, b.r, 0x20)}, hi = {_mm256_permute2x128_si256(a.r, b.r, 0x31)};
    } else {
        lo = deal<G>(a), hi = deal<G>(b);
    }
}
template <int G>
inline Vec<32> undeal(Vec<32> v) {
    if constexpr (G == 4) return {_mm256_permutevar8x32_epi32(v.r, _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7))};
    else return deal<G>(v);  // swapping the middle 64-bit quarters undoes itself
}
template <int k>
inline Vec<16> lane(Vec<32> v) {
    if constexpr (k == 0) return {_mm256_castsi256_si128(v.r)};
    else return {_mm256_extracti128_si256(v.r, k)};
}
inline void interleave_lanes(Vec<32> lo, Vec<32> hi, Vec<32>& first, Vec<32>& second) {
    first = {_mm256_permute2x128_si256(lo.r, hi.r, 0x20)}, second = {_mm256_permute2x128_si256(lo.r, hi.r, 0x31)};
}
inline void store_low_halves(uint8_t* d, Vec<32> v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(_mm256_permute4x64_epi64(v.r, 0x08)));
}
#endif

#if defined(__AVX512BW__)
// 512 bits: four lanes; the deals and block stores are single permutes where AVX2 needs one
// per pair of lanes.
inline Vec<64> Vec<64>::load_half(const void* p) {
    return {_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 0, 1, 1, 2, 2, 3, 3),
                                     _mm512_castsi256_si512(_mm256_loadu_si256(static_cast<const __m256i*>(p))))};
}
inline Vec<64> Vec<64>::load_half_words(const void* p) {
    return {_mm512_cvtepu8_epi16(_mm256_loadu_si256(static_cast<const __m256i*>(p)))};
}
template <int G>
inline Vec<64> Vec<64>::load_half_dealt(const void* p) {
    const __m512i c = _mm512_castsi256_si512(_mm256_loadu_si256(static_cast<const __m256i*>(p)));
    if constexpr (G == 4)  // lane k: 2-byte groups k, k + 4, k + 8, k + 12
        return {_mm512_permutexvar_epi16(_mm512_set_epi16(0, 0, 0, 0, 15, 11, 7, 3, 0, 0, 0, 0, 14, 10, 6, 2,
                                                          0, 0, 0, 0, 13, 9, 5, 1, 0, 0, 0, 0, 12, 8, 4, 0), c)};
    else if constexpr (G == 8)  // lane k: 4-byte groups k, k + 4
        return {_mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 0, 0, 1, 5, 0, 0, 2, 6, 0, 0, 3, 7, 0, 0), c)};
    else
        return load_half(p);
}
template <int G>
inline void Vec<64>::load_pixel_chroma(const void* p, Vec<64>& lo, Vec<64>& hi) {
    // The 32 bytes as words, then one word permute per half.
    struct Index {
        alignas(64) int16_t words[32];
    };
    auto make = [](int half) {
        Index t{};
        for (int k = 0; k < 32; ++k) t.words[k] = static_cast<int16_t>(pixel_chroma_index(G, 4, k / 8, half, k % 8));
        return t;
    };
    static constexpr Index first = make(0), second = make(1);
    const __m512i words = _mm512_cvtepu8_epi16(_mm256_loadu_si256(static_cast<const __m256i*>(p)));
    lo = {_mm512_permutexvar_epi16(_mm512_load_si512(first.words), words)};
    hi = {_mm512_permutexvar_epi16(_mm512_load_si512(second.words), words)};
}
inline Vec<64> blend_u8(Vec<64> a, Vec<64> b, Vec<64> mask) {
    return {_mm512_mask_blend_epi8(_mm512_movepi8_mask(mask.r), a.r, b.r)};
}
inline Vec<64> shuffle_u8(Vec<64> a, Vec<64> control) { return {_mm512_shuffle_epi8(a.r, control.r)}; }
template <int n>
inline Vec<64> alignr(Vec<64> hi, Vec<64> lo) { return {_mm512_alignr_epi8(hi.r, lo.r, n)}; }
template <int G>
inline Vec<64> deal(Vec<64> v) {
    if constexpr (G == 4)
        return {_mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), v.r)};
    else if constexpr (G == 8)
        return {_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 4, 1, 5, 2, 6, 3, 7), v.r)};
    else
        return v;
}
template <int G>
inline Vec<64> undeal(Vec<64> v) {
    if constexpr (G == 4)
        return {_mm512_permutexvar_epi32(_mm512_setr_epi32(0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15), v.r)};
    else if constexpr (G == 8)
        return {_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), v.r)};
    else
        return v;
}
template <int k>
inline Vec<16> lane(Vec<64> v) {
    return {_mm512_extracti32x4_epi32(v.r, k)};
}
inline void interleave_lanes(Vec<64> lo, Vec<64> hi, Vec<64>& first, Vec<64>& second) {
    first = {_mm512_permutex2var_epi64(lo.r, _mm512_setr_epi64(0, 1, 8, 9, 2, 3, 10, 11), hi.r)};
    second = {_mm512_permutex2var_epi64(lo.r, _mm512_setr_epi64(4, 5, 12, 13, 6, 7, 14, 15), hi.r)};
}
inline void store_block_pairs(uint8_t* d, Vec<64> first, Vec<64> second) {
    Vec<64> a, b;
    interleave_lanes(first, second, a, b);
    Vec<64>::store(d, a), Vec<64>::store(d + 64, b);
}
inline void store_block_triples(uint8_t* d, Vec<64> a, Vec<64> b, Vec<64> c) {
    auto two = [](__m512i x, __m512i y, __m512i idx) { return _mm512_permutex2var_epi64(x, idx, y); };
    const __m512i v0 = two(two(a.r, b.r, _mm512_setr_epi64(0, 1, 8, 9, 0, 0, 2, 3)), c.r, _mm512_setr_epi64(0, 1, 2, 3, 8, 9, 6, 7));
    const __m512i v1 = two(two(b.r, c.r, _mm512_setr_epi64(2, 3, 10, 11, 0, 0, 4, 5)), a.r, _mm512_setr_epi64(0, 1, 2, 3, 12, 13, 6, 7));
    const __m512i v2 = two(two(a.r, b.r, _mm512_setr_epi64(6, 7, 14, 15, 6, 7, 14, 15)), c.r, _mm512_setr_epi64(12, 13, 0, 1, 2, 3, 14, 15));
    _mm512_storeu_si512(d, v0), _mm512_storeu_si512(d + 64, v1), _mm512_storeu_si512(d + 128, v2);
}
template <int G>
inline void deal_pair(Vec<64> a, Vec<64> b, Vec<64>& lo, Vec<64>& hi) {
    if constexpr (G == 32) {
        lo = {_mm512_shuffle_i64x2(a.r, b.r, _MM_SHUFFLE(2, 0, 2, 0))}, hi = {_mm512_shuffle_i64x2(a.r, b.r, _MM_SHUFFLE(3, 1, 3, 1))};
    } else {
        lo = deal<G>(a), hi = deal<G>(b);
    }
}
inline void store_low_halves(uint8_t* d, Vec<64> v) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d),
                        _mm512_castsi512_si256(_mm512_permutexvar_epi64(_mm512_setr_epi64(0, 2, 4, 6, 1, 3, 5, 7), v.r)));
}
#endif

// Primitives first needed by the stretch operations.

// The vector one lane further along the run a, b: lane k holds a's lane k + 1, the top lane
// b's lane 0. One lane: b.
inline Vec<16> next_lanes(Vec<16>, Vec<16> b) { return b; }
// Each pair of bytes summed into a word: byte 2k plus byte 2k + 1.
inline Vec<16> sum_pairs_u8(Vec<16> a) {
#if defined(__SSSE3__)
    return {_mm_maddubs_epi16(a.r, _mm_set1_epi8(1))};
#else
    return {_mm_add_epi16(_mm_and_si128(a.r, _mm_set1_epi16(0xFF)), _mm_srli_epi16(a.r, 8))};
#endif
}
#if defined(__AVX2__)
inline Vec<32> next_lanes(Vec<32> a, Vec<32> b) { return {_mm256_permute2x128_si256(a.r, b.r, 0x21)}; }
inline Vec<32> sum_pairs_u8(Vec<32> a) { return {_mm256_maddubs_epi16(a.r, _mm256_set1_epi8(1))}; }
#endif
#if defined(__AVX512BW__)
inline Vec<64> next_lanes(Vec<64> a, Vec<64> b) {
    return {_mm512_permutex2var_epi64(a.r, _mm512_setr_epi64(2, 3, 4, 5, 6, 7, 8, 9), b.r)};
}
inline Vec<64> sum_pairs_u8(Vec<64> a) { return {_mm512_maddubs_epi16(a.r, _mm512_set1_epi8(1))}; }
#endif

// Primitives first needed by the mix operations.

// Whether madd_u8_i8 is one instruction; no widening byte multiplies (NEON has them).
inline constexpr bool has_byte_madd = has_byte_shuffle;
inline constexpr bool has_widening_byte_multiply = false;
#if defined(__SSSE3__)
// The unsigned bytes of a times the signed bytes of b, each pair of products summed into a word
// with signed saturation.
inline Vec<16> madd_u8_i8(Vec<16> a, Vec<16> b) { return {_mm_maddubs_epi16(a.r, b.r)}; }
#endif
// Whether any unsigned byte of a is above its byte of limit.
inline bool any_above_u8(Vec<16> a, Vec<16> limit) {
    return _mm_movemask_epi8(_mm_cmpeq_epi8(_mm_subs_epu8(a.r, limit.r), _mm_setzero_si128())) != 0xFFFF;
}
#if defined(__AVX2__)
inline Vec<32> madd_u8_i8(Vec<32> a, Vec<32> b) { return {_mm256_maddubs_epi16(a.r, b.r)}; }
inline bool any_above_u8(Vec<32> a, Vec<32> limit) {
    const __m256i over = _mm256_subs_epu8(a.r, limit.r);
    return !_mm256_testz_si256(over, over);
}
#endif
#if defined(__AVX512BW__)
inline Vec<64> madd_u8_i8(Vec<64> a, Vec<64> b) { return {_mm512_maddubs_epi16(a.r, b.r)}; }
inline bool any_above_u8(Vec<64> a, Vec<64> limit) { return _mm512_cmpgt_epu8_mask(a.r, limit.r) != 0; }
#endif

// Primitives first needed by the sub-picture operations.

// Lane k loaded from p + k * stride (blocks that are not back to back).
template <class V>
V load_lanes(const void* p, ptrdiff_t stride);
template <>
inline Vec<16> load_lanes<Vec<16>>(const void* p, ptrdiff_t) { return Vec<16>::load(p); }
// Lane by lane, 32-bit words 0 and 2 of a then of b.
inline Vec<16> even_u32(Vec<16> a, Vec<16> b) {
    return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.r), _mm_castsi128_ps(b.r), 0x88))};
}
// Lane by lane, neighbouring 32-bit words summed: a's two pairs, then b's.
inline Vec<16> add_pairs_i32(Vec<16> a, Vec<16> b) {
#if defined(__SSSE3__)
    return {_mm_hadd_epi32(a.r, b.r)};
#else
    return {_mm_add_epi32(even_u32(a, b).r, _mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.r), _mm_castsi128_ps(b.r), 0xDD)))};
#endif
}
// The low 4 bytes stored at d.
inline void store_low_u32(uint8_t* d, Vec<16> v) {
    const int32_t w = _mm_cvtsi128_si32(v.r);
    std::memcpy(d, &w, 4);
}
// `count` copies of a 32-bit word from d on (a string store on x86).
inline void store_repeated_u32(uint8_t* d, uint32_t word, size_t count) {
    asm volatile("rep stosl" : "+D"(d), "+c"(count) : "a"(word) : "memory");
}
#if defined(__AVX2__)
template <>
inline Vec<32> load_lanes<Vec<32>>(const void* p, ptrdiff_t stride) {
    const auto* b = static_cast<const uint8_t*>(p);
    return {_mm256_loadu2_m128i(reinterpret_cast<const __m128i*>(b + stride), reinterpret_cast<const __m128i*>(b))};
}
inline Vec<32> even_u32(Vec<32> a, Vec<32> b) {
    return {_mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a.r), _mm256_castsi256_ps(b.r), 0x88))};
}
inline Vec<32> add_pairs_i32(Vec<32> a, Vec<32> b) { return {_mm256_hadd_epi32(a.r, b.r)}; }
#endif
#if defined(__AVX512BW__)
template <>
inline Vec<64> load_lanes<Vec<64>>(const void* p, ptrdiff_t stride) {
    const auto* b = static_cast<const uint8_t*>(p);
    auto at = [&](int k) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(b + k * stride)); };
    __m512i v = _mm512_castsi128_si512(at(0));
    v = _mm512_inserti32x4(v, at(1), 1), v = _mm512_inserti32x4(v, at(2), 2);
    return {_mm512_inserti32x4(v, at(3), 3)};
}
inline Vec<64> even_u32(Vec<64> a, Vec<64> b) {
    return {_mm512_castps_si512(_mm512_shuffle_ps(_mm512_castsi512_ps(a.r), _mm512_castsi512_ps(b.r), 0x88))};
}
inline Vec<64> add_pairs_i32(Vec<64> a, Vec<64> b) {  // no 512-bit horizontal add
    return {_mm512_add_epi32(even_u32(a, b).r, _mm512_castps_si512(_mm512_shuffle_ps(_mm512_castsi512_ps(a.r), _mm512_castsi512_ps(b.r), 0xDD)))};
}
#endif

} }  // namespace dispconv::simd
