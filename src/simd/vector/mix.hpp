// Mix operations on vectors of any width (interim: the old x86 code, the reference elsewhere).
#pragma once

#include "simd/portable/mix.hpp"
#include "simd/vec.hpp"
#if defined(__x86_64__) || defined(__i386__)
#include "simd/x86/sse2_mix.hpp"
#endif
#if defined(__AVX2__)
#include "simd/x86/avx2_mix.hpp"
#endif

namespace dispconv::simd {
namespace {

#if defined(__AVX2__)
template <class V>
struct VectorMix : Avx2Mix {};
template <>
struct VectorMix<Vec<16>> : Sse2Mix {};
#elif defined(__x86_64__) || defined(__i386__)
template <class V>
struct VectorMix : Sse2Mix {};
#else
template <class V>
struct VectorMix : PortableMix {};
#endif

}  // namespace
}  // namespace dispconv::simd
