// Mix operations on vectors of any width.
#pragma once

#include "simd/x86/sse2_mix.hpp"
#if defined(__AVX2__)
#include "simd/x86/avx2_mix.hpp"
#endif

namespace dispconv::simd {
namespace {

template <class V>
struct VectorMix;
template <>
struct VectorMix<Vec<16>> : Sse2Mix {};
#if defined(__AVX2__)
template <>
struct VectorMix<Vec<32>> : Avx2Mix {};
#endif

}  // namespace
}  // namespace dispconv::simd
