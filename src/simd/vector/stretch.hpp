// Stretch operations on vectors of any width.
#pragma once

#include "simd/x86/sse2_stretch.hpp"
#if defined(__AVX2__)
#include "simd/x86/avx2_stretch.hpp"
#endif

namespace dispconv::simd {
namespace {

template <class V>
struct VectorStretch;
template <>
struct VectorStretch<Vec<16>> : Sse2Stretch {};
#if defined(__AVX2__)
template <>
struct VectorStretch<Vec<32>> : Avx2Stretch {};
#endif

}  // namespace
}  // namespace dispconv::simd
