// Stretch operations on vectors of any width (interim: the old x86 code, the reference elsewhere).
#pragma once

#include "simd/portable/stretch.hpp"
#include "simd/vec.hpp"
#if defined(__x86_64__) || defined(__i386__)
#include "simd/x86/sse2_stretch.hpp"
#endif
#if defined(__AVX2__)
#include "simd/x86/avx2_stretch.hpp"
#endif

namespace dispconv::simd {
namespace {

#if defined(__AVX2__)
template <class V>
struct VectorStretch : Avx2Stretch {};
template <>
struct VectorStretch<Vec<16>> : Sse2Stretch {};
#elif defined(__x86_64__) || defined(__i386__)
template <class V>
struct VectorStretch : Sse2Stretch {};
#else
template <class V>
struct VectorStretch : PortableStretch {};
#endif

}  // namespace
}  // namespace dispconv::simd
