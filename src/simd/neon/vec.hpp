// NEON primitives: Vec<16> on one Advanced SIMD register, with the semantics of the x86
// primitives of the same names (a NEON register is one 128-bit lane), so that every composite
// written over the primitives runs here unchanged and gives the same bytes.
#pragma once
// Included through simd/vec.hpp, which declares Vec and the lane tables.

#include <arm_neon.h>

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace dispconv::simd { namespace {

// TBL gives zero for an out-of-range index, as a byte shuffle with the top control bit does.
inline constexpr bool has_byte_shuffle = true;
// No multiply-add of byte pairs into words; widening byte multiplies instead.
inline constexpr bool has_byte_madd = false;
inline constexpr bool has_widening_byte_multiply = true;

// Interleaving stores of two to four registers (ST3, ST4).
inline constexpr bool has_structure_stores = true;
// No one-instruction high half of an unsigned 16-bit product.
inline constexpr bool has_mulhi_u16 = false;
// One loop for both rows of a pair: a pass per row loads and interleaves the chroma twice, extra
// instructions that only timing on ARM hardware could justify.
inline constexpr bool pairs_in_row_passes = false;

template <>
struct Vec<16> {
    static constexpr int bytes = 16;
    static constexpr int lanes = 1;
    uint8x16_t r;
    static Vec load(const void* p) { return {vld1q_u8(static_cast<const uint8_t*>(p))}; }
    static void store(void* p, Vec v) { vst1q_u8(static_cast<uint8_t*>(p), v.r); }
    static Vec zero() { return {vdupq_n_u8(0)}; }
    static Vec set1_u8(uint8_t x) { return {vdupq_n_u8(x)}; }
    static Vec set1_i16(int16_t x) { return {vreinterpretq_u8_s16(vdupq_n_s16(x))}; }
    static Vec set1_i32(int32_t x) { return {vreinterpretq_u8_s32(vdupq_n_s32(x))}; }
    static Vec set1_i64(int64_t x) { return {vreinterpretq_u8_s64(vdupq_n_s64(x))}; }
    template <const LaneTable& t>
    static Vec table() { return load(t.bytes); }
    static Vec load_half(const void* p) { return {vcombine_u8(vld1_u8(static_cast<const uint8_t*>(p)), vdup_n_u8(0))}; }
    static Vec load_half_words(const void* p) { return {vreinterpretq_u8_u16(vmovl_u8(vld1_u8(static_cast<const uint8_t*>(p))))}; }
    template <int G>
    static Vec load_half_dealt(const void* p) { return load_half(p); }
    // The 8 bytes at p as words, each repeated for both pixels of its pair: lo pixels 0..7.
    template <int G>
    static void load_pixel_chroma(const void* p, Vec& lo, Vec& hi) {
        static constexpr uint8_t first[16] = {0, 255, 0, 255, 1, 255, 1, 255, 2, 255, 2, 255, 3, 255, 3, 255};
        static constexpr uint8_t second[16] = {4, 255, 4, 255, 5, 255, 5, 255, 6, 255, 6, 255, 7, 255, 7, 255};
        const uint8x16_t c = load_half(p).r;
        lo = {vqtbl1q_u8(c, vld1q_u8(first))}, hi = {vqtbl1q_u8(c, vld1q_u8(second))};
    }
};
using V16 = Vec<16>;

inline int16x8_t s16(V16 a) { return vreinterpretq_s16_u8(a.r); }
inline uint16x8_t u16(V16 a) { return vreinterpretq_u16_u8(a.r); }
inline int32x4_t s32(V16 a) { return vreinterpretq_s32_u8(a.r); }
inline uint32x4_t u32(V16 a) { return vreinterpretq_u32_u8(a.r); }
inline uint64x2_t u64(V16 a) { return vreinterpretq_u64_u8(a.r); }
inline V16 of(int16x8_t x) { return {vreinterpretq_u8_s16(x)}; }
inline V16 of(uint16x8_t x) { return {vreinterpretq_u8_u16(x)}; }
inline V16 of(int32x4_t x) { return {vreinterpretq_u8_s32(x)}; }
inline V16 of(uint32x4_t x) { return {vreinterpretq_u8_u32(x)}; }
inline V16 of(uint64x2_t x) { return {vreinterpretq_u8_u64(x)}; }
inline V16 of(int8x16_t x) { return {vreinterpretq_u8_s8(x)}; }

inline V16 operator&(V16 a, V16 b) { return {vandq_u8(a.r, b.r)}; }
inline V16 operator|(V16 a, V16 b) { return {vorrq_u8(a.r, b.r)}; }
inline V16 operator^(V16 a, V16 b) { return {veorq_u8(a.r, b.r)}; }
inline V16 andnot(V16 a, V16 b) { return {vbicq_u8(b.r, a.r)}; }  // ~a & b
inline V16 average_u8(V16 a, V16 b) { return {vrhaddq_u8(a.r, b.r)}; }
inline V16 adds_u8(V16 a, V16 b) { return {vqaddq_u8(a.r, b.r)}; }
inline V16 subs_u8(V16 a, V16 b) { return {vqsubq_u8(a.r, b.r)}; }
inline V16 min_u8(V16 a, V16 b) { return {vminq_u8(a.r, b.r)}; }
inline V16 max_u8(V16 a, V16 b) { return {vmaxq_u8(a.r, b.r)}; }
inline V16 cmpeq_u8(V16 a, V16 b) { return {vceqq_u8(a.r, b.r)}; }
inline V16 cmpgt_i8(V16 a, V16 b) { return {vcgtq_s8(vreinterpretq_s8_u8(a.r), vreinterpretq_s8_u8(b.r))}; }
inline V16 add_i16(V16 a, V16 b) { return of(vaddq_s16(s16(a), s16(b))); }
inline V16 sub_i16(V16 a, V16 b) { return of(vsubq_s16(s16(a), s16(b))); }
inline V16 adds_i16(V16 a, V16 b) { return of(vqaddq_s16(s16(a), s16(b))); }
inline V16 subs_i16(V16 a, V16 b) { return of(vqsubq_s16(s16(a), s16(b))); }
inline V16 subs_u16(V16 a, V16 b) { return of(vqsubq_u16(u16(a), u16(b))); }
inline V16 mullo_i16(V16 a, V16 b) { return of(vmulq_s16(s16(a), s16(b))); }
// The high halves of the 32-bit products are their odd 16-bit halves.
inline V16 mulhi_i16(V16 a, V16 b) {
    const int32x4_t lo = vmull_s16(vget_low_s16(s16(a)), vget_low_s16(s16(b)));
    const int32x4_t hi = vmull_high_s16(s16(a), s16(b));
    return of(vuzp2q_s16(vreinterpretq_s16_s32(lo), vreinterpretq_s16_s32(hi)));
}
// The high 16 bits of (a << n) * k, where a << n fits in 16 bits: for n > 0 one doubling
// multiply of a << (n - 1), which is exact because it cannot saturate with k positive.
template <int n>
inline V16 mulhi_scaled_i16(V16 a, V16 k) {
    if constexpr (n == 0) return mulhi_i16(a, k);
    else if constexpr (n == 1) return of(vqdmulhq_s16(s16(a), s16(k)));
    else return of(vqdmulhq_s16(vshlq_n_s16(s16(a), n - 1), s16(k)));
}
inline V16 average_u16(V16 a, V16 b) { return of(vrhaddq_u16(u16(a), u16(b))); }
inline V16 min_i16(V16 a, V16 b) { return of(vminq_s16(s16(a), s16(b))); }
inline V16 max_i16(V16 a, V16 b) { return of(vmaxq_s16(s16(a), s16(b))); }
inline V16 cmpeq_i16(V16 a, V16 b) { return of(vceqq_s16(s16(a), s16(b))); }
inline V16 cmpgt_i16(V16 a, V16 b) { return of(vcgtq_s16(s16(a), s16(b))); }
inline V16 madd_i16(V16 a, V16 b) {
    return of(vpaddq_s32(vmull_s16(vget_low_s16(s16(a)), vget_low_s16(s16(b))), vmull_high_s16(s16(a), s16(b))));
}
inline V16 add_i32(V16 a, V16 b) { return of(vaddq_s32(s32(a), s32(b))); }
inline V16 cmpeq_i32(V16 a, V16 b) { return of(vceqq_s32(s32(a), s32(b))); }

// Shifts by immediates, one body per element width; a count of the width or more gives what the
// x86 forms give (zero, or the sign for arithmetic shifts).
#define DISPCONV_NEON_SHIFTS(bits, u, as_u, s, as_s)                                           \
    template <int n>                                                                          \
    inline V16 slli_i##bits(V16 a) {                                                          \
        if constexpr (n >= bits) return V16::zero();                                          \
        else return of(vshlq_n_##u(as_u(a), n));                                              \
    }                                                                                         \
    template <int n>                                                                          \
    inline V16 srli_i##bits(V16 a) {                                                          \
        if constexpr (n == 0) return a;                                                       \
        else if constexpr (n >= bits) return V16::zero();                                     \
        else return of(vshrq_n_##u(as_u(a), n));                                              \
    }                                                                                         \
    template <int n>                                                                          \
    inline V16 srai_i##bits(V16 a) {                                                          \
        if constexpr (n == 0) return a;                                                       \
        else return of(vshrq_n_##s(as_s(a), n < bits ? n : bits - 1));                       \
    }
inline int64x2_t s64(V16 a) { return vreinterpretq_s64_u8(a.r); }
inline V16 of(int64x2_t x) { return {vreinterpretq_u8_s64(x)}; }
DISPCONV_NEON_SHIFTS(16, u16, u16, s16, s16)
DISPCONV_NEON_SHIFTS(32, u32, u32, s32, s32)
DISPCONV_NEON_SHIFTS(64, u64, u64, s64, s64)
#undef DISPCONV_NEON_SHIFTS
inline V16 sll_i16(V16 a, int n) { return n > 15 ? V16::zero() : of(vshlq_u16(u16(a), vdupq_n_s16(int16_t(n)))); }
inline V16 srl_i16(V16 a, int n) { return n > 15 ? V16::zero() : of(vshlq_u16(u16(a), vdupq_n_s16(int16_t(-n)))); }
template <int n>
inline V16 bsrli(V16 a) {
    if constexpr (n >= 16) return V16::zero();
    else return {vextq_u8(a.r, vdupq_n_u8(0), n)};
}
template <int n>
inline V16 bslli(V16 a) {
    if constexpr (n == 0) return a;
    else if constexpr (n >= 16) return V16::zero();
    else return {vextq_u8(vdupq_n_u8(0), a.r, 16 - n)};
}
template <int n>
inline V16 alignr(V16 hi, V16 lo) {
    if constexpr (n == 0) return lo;
    else if constexpr (n >= 16) return bsrli<n - 16>(hi);
    else return {vextq_u8(lo.r, hi.r, n)};
}

inline V16 packus_i16(V16 a, V16 b) { return {vcombine_u8(vqmovun_s16(s16(a)), vqmovun_s16(s16(b)))}; }
inline V16 packs_i32(V16 a, V16 b) { return of(vcombine_s16(vqmovn_s32(s32(a)), vqmovn_s32(s32(b)))); }
inline V16 unpacklo_u8(V16 a, V16 b) { return {vzip1q_u8(a.r, b.r)}; }
inline V16 unpackhi_u8(V16 a, V16 b) { return {vzip2q_u8(a.r, b.r)}; }
inline V16 unpacklo_u16(V16 a, V16 b) { return of(vzip1q_u16(u16(a), u16(b))); }
inline V16 unpackhi_u16(V16 a, V16 b) { return of(vzip2q_u16(u16(a), u16(b))); }
inline V16 unpacklo_u32(V16 a, V16 b) { return of(vzip1q_u32(u32(a), u32(b))); }
inline V16 unpackhi_u32(V16 a, V16 b) { return of(vzip2q_u32(u32(a), u32(b))); }
inline V16 unpacklo_u64(V16 a, V16 b) { return of(vzip1q_u64(u64(a), u64(b))); }
inline V16 unpackhi_u64(V16 a, V16 b) { return of(vzip2q_u64(u64(a), u64(b))); }
template <int imm>
inline V16 shuffle_u32(V16 a) {
    const uint32x4_t x = u32(a);
    return of(uint32x4_t(__builtin_shufflevector(x, x, imm & 3, (imm >> 2) & 3, (imm >> 4) & 3, (imm >> 6) & 3)));
}
template <int imm>
inline V16 shufflelo_u16(V16 a) {
    const uint16x8_t x = u16(a);
    return of(uint16x8_t(__builtin_shufflevector(x, x, imm & 3, (imm >> 2) & 3, (imm >> 4) & 3, (imm >> 6) & 3, 4, 5, 6, 7)));
}
template <int imm>
inline V16 shufflehi_u16(V16 a) {
    const uint16x8_t x = u16(a);
    return of(uint16x8_t(__builtin_shufflevector(x, x, 0, 1, 2, 3, 4 + (imm & 3), 4 + ((imm >> 2) & 3),
                                                 4 + ((imm >> 4) & 3), 4 + ((imm >> 6) & 3))));
}
// The top bit of each byte, byte i giving bit i.
inline uint64_t movemask_u8(V16 a) {
    static constexpr uint8_t weights[16] = {1, 2, 4, 8, 16, 32, 64, 128, 1, 2, 4, 8, 16, 32, 64, 128};
    const uint8x16_t bits = vandq_u8(vreinterpretq_u8_s8(vshrq_n_s8(vreinterpretq_s8_u8(a.r), 7)), vld1q_u8(weights));
    return vaddv_u8(vget_low_u8(bits)) | unsigned(vaddv_u8(vget_high_u8(bits))) << 8;
}
inline V16 blend_u8(V16 a, V16 b, V16 mask) { return {vbslq_u8(mask.r, b.r, a.r)}; }
// A control byte with its top bit set gives zero; otherwise its low four bits pick the byte.
inline V16 shuffle_u8(V16 a, V16 control) { return {vqtbl1q_u8(a.r, vandq_u8(control.r, vdupq_n_u8(0x8F)))}; }

// Bytes of the registers interleaved: a0 b0 c0 (d0) a1 b1 ...
inline void store_interleaved(uint8_t* d, V16 a, V16 b, V16 c) {
    const uint8x16x3_t x = {{a.r, b.r, c.r}};
    vst3q_u8(d, x);
}
inline void store_interleaved(uint8_t* d, V16 a, V16 b, V16 c, V16 e) {
    const uint8x16x4_t x = {{a.r, b.r, c.r, e.r}};
    vst4q_u8(d, x);
}

// One lane: nothing crosses.
template <int G>
inline V16 deal(V16 v) { return v; }
template <int G>
inline V16 undeal(V16 v) { return v; }
template <int k>
inline V16 lane(V16 v) { return v; }
inline void store_block_pairs(uint8_t* d, V16 first, V16 second) { V16::store(d, first), V16::store(d + 16, second); }
inline void store_block_triples(uint8_t* d, V16 a, V16 b, V16 c) {
    V16::store(d, a), V16::store(d + 16, b), V16::store(d + 32, c);
}
template <int G>
inline void deal_pair(V16 a, V16 b, V16& lo, V16& hi) { lo = a, hi = b; }
inline void store_low_halves(uint8_t* d, V16 v) { vst1_u8(d, vget_low_u8(v.r)); }
inline V16 next_lanes(V16, V16 b) { return b; }
inline void interleave_lanes(V16 lo, V16 hi, V16& first, V16& second) { first = lo, second = hi; }
// Each pair of bytes summed into a word: byte 2k plus byte 2k + 1.
inline V16 sum_pairs_u8(V16 a) { return of(vpaddlq_u8(a.r)); }

// Primitives first needed by the sub-picture operations.

template <class V>
V load_lanes(const void* p, ptrdiff_t stride);
template <>
inline V16 load_lanes<V16>(const void* p, ptrdiff_t) { return V16::load(p); }
inline V16 even_u32(V16 a, V16 b) { return of(vuzp1q_u32(u32(a), u32(b))); }
inline V16 add_pairs_i32(V16 a, V16 b) { return of(vpaddq_s32(s32(a), s32(b))); }
inline void store_low_u32(uint8_t* d, V16 v) {
    const uint32_t w = vgetq_lane_u32(u32(v), 0);
    std::memcpy(d, &w, 4);
}
inline void store_repeated_u32(uint8_t* d, uint32_t word, size_t count) {
    const uint8x16_t w = vreinterpretq_u8_u32(vdupq_n_u32(word));
    for (; count >= 4; count -= 4, d += 16) vst1q_u8(d, w);
    for (; count; --count, d += 4) std::memcpy(d, &word, 4);
}

// Primitives first needed by the mix operations.

// Products of the unsigned bytes of a and b as words: the low 8 pairs (lo) or the high 8 (hi).
inline V16 mul_widen_lo_u8(V16 a, V16 b) { return of(vmull_u8(vget_low_u8(a.r), vget_low_u8(b.r))); }
inline V16 mul_widen_hi_u8(V16 a, V16 b) { return of(vmull_high_u8(a.r, b.r)); }
// Whether any unsigned byte of a is above its byte of limit.
inline bool any_above_u8(V16 a, V16 limit) { return vmaxvq_u8(vcgtq_u8(a.r, limit.r)) != 0; }

} }  // namespace dispconv::simd
