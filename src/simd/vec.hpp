// The vector type and primitives of the unit's processor.
#pragma once

// Composites over vectors are always inlined: one left out of line passes and returns its
// vectors through memory, which costs far more than its few instructions.
#define DISPCONV_VECTOR_INLINE [[gnu::always_inline]] inline
// The same for the step lambdas handed to the tails helpers, which the compiler otherwise
// leaves out of line when they are large, paying a call and every constant each vector.
#define DISPCONV_VECTOR_STEP __attribute__((always_inline))

#include <cstdint>

namespace dispconv::simd { namespace {

template <int Bytes>
struct Vec;

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
// A lane table repeated over a vector of W bytes.
template <int W>
struct WideTable {
    alignas(W) int8_t bytes[W];
};
template <int W>
constexpr WideTable<W> widen(const LaneTable& t) {
    WideTable<W> w{};
    for (int i = 0; i < W; ++i) w.bytes[i] = t.bytes[i % 16];
    return w;
}

} }  // namespace dispconv::simd

#if defined(__x86_64__) || defined(__i386__)
#include "simd/x86/vec.hpp"
#elif defined(__aarch64__)
#include "simd/neon/vec.hpp"
#else
#error "no vector primitives for this processor"
#endif
