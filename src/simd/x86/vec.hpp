// x86 primitives: Vec<16> on SSE2 registers and, in units built for AVX2, Vec<32>. Each is the
// same thin set of operations (one macro body serves every width), with the semantics of the
// x86 instructions: unpacks, packs, byte shifts and byte shuffles work within each 128-bit
// lane. Composites written on these run unchanged at every width, each lane doing what one
// 128-bit step does; the few operations that cross lanes are at the end, per width.
#pragma once

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

namespace dispconv::simd {
namespace {

template <int Bytes>
struct Vec;

// Whether this unit has in-lane byte shuffles (SSSE3 and later; not plain SSE2).
#if defined(__SSSE3__)
inline constexpr bool has_byte_shuffle = true;
#else
inline constexpr bool has_byte_shuffle = false;
#endif

// 16 bytes repeated in every lane, built at compile time (shuffle controls, masks).
struct LaneTable {
    alignas(16) int8_t bytes[16];
};
template <class F>
constexpr LaneTable lane_table(F byte_at) {
    LaneTable t{};
    for (int i = 0; i < 16; ++i) t.bytes[i] = static_cast<int8_t>(byte_at(i));
    return t;
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
        static Vec set1_u8(uint8_t x) { return {P##set1_epi8(static_cast<char>(x))}; }                 \
        static Vec set1_i16(int16_t x) { return {P##set1_epi16(x)}; }                                   \
        static Vec set1_i32(int32_t x) { return {P##set1_epi32(x)}; }                                   \
        static Vec set1_i64(int64_t x) { return {P##set1_epi64x(x)}; }                                  \
        /* The 16 bytes of a lane table in every lane. */                                              \
        static Vec table(const LaneTable& t);                                                           \
        /* The half-width run that goes with a full vector (chroma beside luma): lane k takes bytes  */ \
        /* 8k .. 8k + 7 in its low half; the high half is unspecified. */                               \
        static Vec load_half(const void* p);                                                            \
        /* The half-width run dealt as the full vector it goes with would be by deal<G>. */            \
        template <int G>                                                                                \
        static Vec load_half_dealt(const void* p);                                                      \
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
    inline Vec<W> cmpeq_u8(Vec<W> a, Vec<W> b) { return {P##cmpeq_epi8(a.r, b.r)}; }                   \
    inline Vec<W> cmpgt_i8(Vec<W> a, Vec<W> b) { return {P##cmpgt_epi8(a.r, b.r)}; }                   \
    inline Vec<W> add_i16(Vec<W> a, Vec<W> b) { return {P##add_epi16(a.r, b.r)}; }                     \
    inline Vec<W> sub_i16(Vec<W> a, Vec<W> b) { return {P##sub_epi16(a.r, b.r)}; }                     \
    inline Vec<W> adds_i16(Vec<W> a, Vec<W> b) { return {P##adds_epi16(a.r, b.r)}; }                   \
    inline Vec<W> subs_i16(Vec<W> a, Vec<W> b) { return {P##subs_epi16(a.r, b.r)}; }                   \
    inline Vec<W> mullo_i16(Vec<W> a, Vec<W> b) { return {P##mullo_epi16(a.r, b.r)}; }                 \
    inline Vec<W> mulhi_i16(Vec<W> a, Vec<W> b) { return {P##mulhi_epi16(a.r, b.r)}; }                 \
    inline Vec<W> average_u16(Vec<W> a, Vec<W> b) { return {P##avg_epu16(a.r, b.r)}; }                     \
    inline Vec<W> min_i16(Vec<W> a, Vec<W> b) { return {P##min_epi16(a.r, b.r)}; }                     \
    inline Vec<W> max_i16(Vec<W> a, Vec<W> b) { return {P##max_epi16(a.r, b.r)}; }                     \
    inline Vec<W> cmpeq_i16(Vec<W> a, Vec<W> b) { return {P##cmpeq_epi16(a.r, b.r)}; }                 \
    inline Vec<W> cmpgt_i16(Vec<W> a, Vec<W> b) { return {P##cmpgt_epi16(a.r, b.r)}; }                 \
    /* Pairs of 16-bit products summed into 32 bits. */                                                \
    inline Vec<W> madd_i16(Vec<W> a, Vec<W> b) { return {P##madd_epi16(a.r, b.r)}; }                   \
    inline Vec<W> add_i32(Vec<W> a, Vec<W> b) { return {P##add_epi32(a.r, b.r)}; }                     \
    inline Vec<W> cmpeq_i32(Vec<W> a, Vec<W> b) { return {P##cmpeq_epi32(a.r, b.r)}; }                 \
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
    /* Bytes of each lane moved down (srli) or up (slli), zeros shifted in. */                          \
    template <int n>                                                                                    \
    inline Vec<W> bsrli(Vec<W> a) { return {P##srli_##SI(a.r, n)}; }                                  \
    template <int n>                                                                                    \
    inline Vec<W> bslli(Vec<W> a) { return {P##slli_##SI(a.r, n)}; }                                  \
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
    inline Vec<W> shuffle_u32(Vec<W> a) { return {P##shuffle_epi32(a.r, imm)}; }                       \
    template <int imm>                                                                                  \
    inline Vec<W> shufflelo_u16(Vec<W> a) { return {P##shufflelo_epi16(a.r, imm)}; }                   \
    template <int imm>                                                                                  \
    inline Vec<W> shufflehi_u16(Vec<W> a) { return {P##shufflehi_epi16(a.r, imm)}; }                   \
    /* One bit per byte: the top bit of each. */                                                        \
    inline uint32_t movemask_u8(Vec<W> a) { return static_cast<uint32_t>(P##movemask_epi8(a.r)); }

DISPCONV_X86_VEC(16, __m128i, _mm_, si128)
#if defined(__AVX2__)
DISPCONV_X86_VEC(32, __m256i, _mm256_, si256)
#endif
#undef DISPCONV_X86_VEC

inline Vec<16> Vec<16>::table(const LaneTable& t) { return load(t.bytes); }
inline Vec<16> Vec<16>::load_half(const void* p) { return {_mm_loadl_epi64(static_cast<const __m128i*>(p))}; }

// Bytes of b where the mask byte is set (all ones), else bytes of a.
inline Vec<16> blend_u8(Vec<16> a, Vec<16> b, Vec<16> mask) {
#if defined(__SSE4_1__)
    return {_mm_blendv_epi8(a.r, b.r, mask.r)};
#else
    return (mask & b) | andnot(mask, a);
#endif
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

#if defined(__AVX2__)
inline Vec<32> Vec<32>::table(const LaneTable& t) {
    return {_mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(t.bytes)))};
}
inline Vec<32> Vec<32>::load_half(const void* p) {
    return {_mm256_permute4x64_epi64(_mm256_castsi128_si256(_mm_loadu_si128(static_cast<const __m128i*>(p))), 0x50)};
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
inline void store_low_halves(uint8_t* d, Vec<32> v) {
    _mm_storeu_si128(reinterpret_cast<__m128i*>(d), _mm256_castsi256_si128(_mm256_permute4x64_epi64(v.r, 0x08)));
}
#endif

// Primitives first needed by the stretch operations.

// Primitives first needed by the sub-picture operations.

// Lane k loaded from p + k * stride (blocks that are not back to back).
template <class V>
V load_lanes(const void* p, ptrdiff_t stride);
template <>
inline Vec<16> load_lanes<Vec<16>>(const void* p, ptrdiff_t) { return Vec<16>::load(p); }
// Lane by lane, 32-bit words 0 and 2 of a then of b (even) or words 1 and 3 (odd).
inline Vec<16> even_u32(Vec<16> a, Vec<16> b) {
    return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.r), _mm_castsi128_ps(b.r), 0x88))};
}
inline Vec<16> odd_u32(Vec<16> a, Vec<16> b) {
    return {_mm_castps_si128(_mm_shuffle_ps(_mm_castsi128_ps(a.r), _mm_castsi128_ps(b.r), 0xDD))};
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
inline Vec<32> odd_u32(Vec<32> a, Vec<32> b) {
    return {_mm256_castps_si256(_mm256_shuffle_ps(_mm256_castsi256_ps(a.r), _mm256_castsi256_ps(b.r), 0xDD))};
}
#endif

// Primitives first needed by the mix operations.

// Four vectors whose lane k holds the four 16-byte parts of block k, stored as consecutive
// blocks of 64 bytes.
inline void store_block_quads(uint8_t* d, Vec<16> a, Vec<16> b, Vec<16> c, Vec<16> e) {
    store_block_pairs(d, a, b), store_block_pairs(d + 32, c, e);
}
#if defined(__AVX2__)
inline void store_block_quads(uint8_t* d, Vec<32> a, Vec<32> b, Vec<32> c, Vec<32> e) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d), _mm256_permute2x128_si256(a.r, b.r, 0x20));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 32), _mm256_permute2x128_si256(c.r, e.r, 0x20));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 64), _mm256_permute2x128_si256(a.r, b.r, 0x31));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(d + 96), _mm256_permute2x128_si256(c.r, e.r, 0x31));
}
#endif

}  // namespace
}  // namespace dispconv::simd
