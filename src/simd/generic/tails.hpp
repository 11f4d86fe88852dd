// Tails, written once: a row operation states its step for one vector of any width, and these
// run it over the row at the widest width, then at each narrower one down to 128 bits, then
// hand the last bytes (fewer than 16) to the scalar reference. Always inlined: otherwise the
// step's captures stay in memory that every vector store may alias, and are loaded again
// each step.
#pragma once

#include <cstdint>
#include <utility>

namespace dispconv::simd {
namespace {

// The vector of half the width (Vec<16> has none).
template <class V>
struct HalfOf {
    using type = Vec<V::bytes / 2>;
};

// step.template operator()<W>(i) for blocks [i, i + W::lanes) of `blocks` 16-pixel blocks: one
// block per 128-bit lane. Every block is run at some width, so no scalar rest.
template <class V, class Step>
[[gnu::always_inline]] inline void for_blocks(uint32_t blocks, Step&& step, uint32_t first = 0) {
    uint32_t i = first;
    for (; blocks - i >= uint32_t(V::lanes); i += V::lanes) step.template operator()<V>(i);
    if constexpr (V::lanes > 1)
        if (i < blocks) for_blocks<typename HalfOf<V>::type>(blocks, step, i);
}

// step.template operator()<W>(i) for bytes [i, i + W::bytes) of n, then rest(i) for the last
// n - i < 16 (nothing when i == n).
template <class V, class Step, class Rest>
[[gnu::always_inline]] inline void for_bytes(int n, Step&& step, Rest&& rest, int first = 0) {
    int i = first;
    for (; n - i >= V::bytes; i += V::bytes) step.template operator()<V>(i);
    if constexpr (V::lanes > 1) return for_bytes<typename HalfOf<V>::type>(n, step, rest, i);
    if (i < n) rest(i);
}

// f.template operator()<k>() for each 128-bit lane k of V, in order.
template <class V, class F>
void for_lanes(F&& f) {
    [&]<int... k>(std::integer_sequence<int, k...>) { (f.template operator()<k>(), ...); }(std::make_integer_sequence<int, V::lanes>{});
}

}  // namespace
}  // namespace dispconv::simd
