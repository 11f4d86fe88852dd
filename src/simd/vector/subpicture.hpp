// Sub-picture operations on vectors of any width.
#pragma once

#include "simd/x86/sse2_subpicture.hpp"
#if defined(__AVX2__)
#include "simd/x86/avx2_subpicture.hpp"
#endif

namespace dispconv::simd {
namespace {

template <class V>
struct VectorSubpicture;
template <>
struct VectorSubpicture<Vec<16>> : Sse2Subpicture {};
#if defined(__AVX2__)
template <>
struct VectorSubpicture<Vec<32>> : Avx2Subpicture {};
#endif

}  // namespace
}  // namespace dispconv::simd
