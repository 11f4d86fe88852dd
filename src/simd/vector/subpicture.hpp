// Subpicture operations on vectors of any width (interim: the old x86 code, the reference elsewhere).
#pragma once

#include "simd/portable/subpicture.hpp"
#include "simd/vec.hpp"
#if defined(__x86_64__) || defined(__i386__)
#include "simd/x86/sse2_subpicture.hpp"
#endif
#if defined(__AVX2__)
#include "simd/x86/avx2_subpicture.hpp"
#endif

namespace dispconv::simd {
namespace {

#if defined(__AVX2__)
template <class V>
struct VectorSubpicture : Avx2Subpicture {};
template <>
struct VectorSubpicture<Vec<16>> : Sse2Subpicture {};
#elif defined(__x86_64__) || defined(__i386__)
template <class V>
struct VectorSubpicture : Sse2Subpicture {};
#else
template <class V>
struct VectorSubpicture : PortableSubpicture {};
#endif

}  // namespace
}  // namespace dispconv::simd
